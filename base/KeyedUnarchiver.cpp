#include "base/KeyedUnarchiver.hpp"

#include "base/Exception.hpp"
#include "base/KeyedArchiver.hpp"
#include "base/PropertyList.hpp"

#include <limits>
#include <utility>

namespace tav {
namespace {

// Objects may be shared, so a few hundred bytes can describe a value of any size. Values may have
// this many parts and bytes of text for each byte of the archive, as in binary property lists.
constexpr std::size_t valuesForEachByte = 4;
constexpr std::size_t valuesAlways = 8192;
constexpr std::size_t payloadForEachByte = 256;
constexpr std::size_t payloadAlways = std::size_t{16} << 20;

[[noreturn]] void fail(std::string_view reason) {
    throw Exception(KeyedUnarchiver::invalidUnarchiveOperation, reason);
}

Value::UID uidOf(const Value& reference) {
    const Value::UID* uid = reference.asUID();
    if (uid == nullptr) {
        fail("something that is no reference where one belongs");
    }
    return *uid;
}

} // namespace

KeyedUnarchiver::KeyedUnarchiver(BytesView archive)
    : valuesLeft_(valuesForEachByte * archive.size() + valuesAlways),
      payloadLeft_(payloadForEachByte * archive.size() + payloadAlways) {
    PropertyList::Error error;
    std::optional<Value> list = PropertyList::read(archive, &error);
    if (!list) {
        fail("no property list: " + error.reason);
    }
    archive_ = std::move(*list);
    const Value::Dictionary* root = archive_.asDictionary();
    const std::string* archiver = root == nullptr ? nullptr : root->findString("$archiver");
    if (archiver == nullptr || *archiver != "NSKeyedArchiver") {
        fail("no keyed archive");
    }
    const Value* version = root->find("$version");
    if (version == nullptr || !version->isNumber() || version->longLongValue() > 100000) {
        fail("a keyed archive of an unknown version");
    }
    const Value* top = root->find("$top");
    const Value* objects = root->find("$objects");
    current_ = top == nullptr ? nullptr : top->asDictionary();
    objects_ = objects == nullptr ? nullptr : objects->asArray();
    if (current_ == nullptr || objects_ == nullptr) {
        fail("a keyed archive without $top or $objects");
    }
    states_.resize(objects_->size());
    made_.resize(objects_->size());
}

KeyedUnarchiver::~KeyedUnarchiver() = default;

const Value* KeyedUnarchiver::find(std::string_view key) const {
    return key.starts_with('$') ? current_->find("$" + std::string(key)) : current_->find(key);
}

const Value* KeyedUnarchiver::objectAt(Value::UID uid) const {
    if (uid.value == 0) {
        return nullptr;
    }
    if (uid.value >= objects_->size()) {
        fail("a reference to a missing object");
    }
    return &(*objects_)[static_cast<std::size_t>(uid.value)];
}

bool KeyedUnarchiver::containsValue(std::string_view key) const { return find(key) != nullptr; }

/// The first class of the chain that is known.
KeyedUnarchiver::Class KeyedUnarchiver::classAt(Value::UID uid) {
    static constexpr std::pair<std::string_view, Kind> foundation[] = {
        {"NSString", Kind::Text},        {"NSData", Kind::Bytes},
        {"NSArray", Kind::Array},        {"NSDictionary", Kind::Dictionary},
        {"NSDate", Kind::Time},          {"NSNull", Kind::Null},
        {"NSMutableString", Kind::Text}, {"NSMutableData", Kind::Bytes},
        {"NSMutableArray", Kind::Array}, {"NSMutableDictionary", Kind::Dictionary},
    };
    if (const auto known = classes_.find(uid.value); known != classes_.end()) {
        return known->second;
    }
    const Value* record = objectAt(uid);
    const Value::Dictionary* entries = record == nullptr ? nullptr : record->asDictionary();
    const std::string* className = entries == nullptr ? nullptr : entries->findString("$classname");
    if (className == nullptr) {
        fail("a class without a name");
    }
    std::vector<const std::string*> names = {className};
    if (const Value* chain = entries->find("$classes")) {
        if (chain->asArray() == nullptr) {
            fail("a class whose chain is no array");
        }
        for (const Value& name : *chain->asArray()) {
            if (name.asString() == nullptr) {
                fail("a class whose chain has something that is no name");
            }
            names.push_back(name.asString());
        }
    }
    for (const std::string* name : names) {
        for (const auto& [foundationName, kind] : foundation) {
            if (*name == foundationName) {
                return classes_[uid.value] = {kind, nullptr};
            }
        }
        if (const ArchivedClassMaker maker = archivedClassMaker(*name)) {
            return classes_[uid.value] = {Kind::Registered, maker};
        }
    }
    fail("an object of the unknown class " + *className);
}

KeyedUnarchiver::Class KeyedUnarchiver::classOf(const Value::Dictionary& object) {
    return classAt(uidOf(part(object, "$class")));
}

const Value& KeyedUnarchiver::part(const Value::Dictionary& object, std::string_view key) const {
    const Value* found = object.find(key);
    if (found == nullptr) {
        fail("an object without " + std::string(key));
    }
    return *found;
}

const Value::Array& KeyedUnarchiver::references(const Value::Dictionary& object,
                                                std::string_view key) const {
    const Value::Array* array = part(object, key).asArray();
    if (array == nullptr) {
        fail("an object whose " + std::string(key) + " is no array");
    }
    return *array;
}

Archived KeyedUnarchiver::decode(std::string_view key) {
    const Value* inner = find(key);
    if (inner == nullptr) {
        return {};
    }
    if (inner->asUID() == nullptr) {
        return value(*inner, 0);
    }
    const Value* object = objectAt(*inner->asUID());
    if (object == nullptr) {
        return {};
    }
    if (const Value::Dictionary* entries = object->asDictionary()) {
        if (entries->find("$class") == nullptr) {
            if (const std::string* name = entries->findString("$classname")) {
                return ArchivedClass{*name};
            }
        }
        const Kind kind = classOf(*entries).kind;
        if (kind == Kind::Null) {
            return {};
        }
        if (kind == Kind::Registered) {
            if (std::shared_ptr<Coding> made = this->made(*inner->asUID())) {
                return made;
            }
            return {};
        }
    }
    return value(*object, 0);
}

std::shared_ptr<Coding> KeyedUnarchiver::decodeObject(std::string_view key) {
    const Value* inner = find(key);
    return inner == nullptr ? nullptr : made(uidOf(*inner));
}

std::shared_ptr<Coding> KeyedUnarchiver::made(Value::UID uid) {
    const Value* object = objectAt(uid);
    if (object == nullptr) {
        return nullptr;
    }
    const auto index = static_cast<std::size_t>(uid.value);
    if (states_[index] == State::Made) {
        return made_[index];
    }
    if (states_[index] == State::Open) {
        fail("an object that contains itself");
    }
    const Value::Dictionary* entries = object->asDictionary();
    if (entries == nullptr) {
        fail("a value where an object belongs");
    }
    const Class objectClass = classOf(*entries);
    if (objectClass.kind == Kind::Null) {
        return nullptr;
    }
    if (objectClass.kind != Kind::Registered) {
        fail("a value where an object belongs");
    }
    return make(uid, objectClass.maker);
}

std::shared_ptr<Coding> KeyedUnarchiver::make(Value::UID uid, ArchivedClassMaker maker) {
    if (depth_ >= KeyedArchiver::maximumDepth) {
        fail("objects nested too deep");
    }
    const auto index = static_cast<std::size_t>(uid.value);
    /// The keys of the object, for as long as it is made.
    struct Scope {
        KeyedUnarchiver& unarchiver;
        const Value::Dictionary* outer = unarchiver.current_;
        explicit Scope(KeyedUnarchiver& of) : unarchiver(of) { ++unarchiver.depth_; }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope() {
            unarchiver.current_ = outer;
            --unarchiver.depth_;
        }
    } const scope(*this);
    current_ = (*objects_)[index].asDictionary();
    states_[index] = State::Open;
    made_[index] = maker(*this);
    states_[index] = State::Made;
    return made_[index];
}

std::optional<std::vector<std::shared_ptr<Coding>>>
KeyedUnarchiver::decodeObjects(std::string_view key) {
    const Value* inner = find(key);
    const Value* object = inner == nullptr ? nullptr : objectAt(uidOf(*inner));
    if (object == nullptr) {
        return std::nullopt;
    }
    const Value::Dictionary* entries = object->asDictionary();
    if (entries == nullptr || classOf(*entries).kind != Kind::Array) {
        fail("no array where one belongs");
    }
    const Value::Array& uids = references(*entries, "NS.objects");
    if (uids.size() > valuesLeft_) {
        fail("shared objects make the archive too large");
    }
    valuesLeft_ -= uids.size();
    std::vector<std::shared_ptr<Coding>> objects;
    objects.reserve(uids.size());
    for (const Value& uid : uids) {
        objects.push_back(made(uidOf(uid)));
    }
    return objects;
}

std::optional<Value> KeyedUnarchiver::decodeValue(std::string_view key) {
    Archived archived = decode(key);
    if (Value* value = std::get_if<Value>(&archived)) {
        return std::move(*value);
    }
    if (!std::holds_alternative<std::monostate>(archived)) {
        fail("an object where a value belongs");
    }
    return std::nullopt;
}

std::optional<std::string> KeyedUnarchiver::decodeText(std::string_view key) {
    const std::optional<Value> value = decodeValue(key);
    const std::string* text = value ? value->asString() : nullptr;
    return text == nullptr ? std::nullopt : std::optional<std::string>(*text);
}

std::optional<Data> KeyedUnarchiver::decodeBytes(std::string_view key) {
    const std::optional<Value> value = decodeValue(key);
    const Data* bytes = value ? value->asData() : nullptr;
    return bytes == nullptr ? std::nullopt : std::optional<Data>(*bytes);
}

const Value& KeyedUnarchiver::number(const Value& inner) const {
    const Value* found = inner.asUID() == nullptr ? &inner : objectAt(*inner.asUID());
    static const Value zero(0);
    if (found == nullptr) {
        return zero;
    }
    if (!found->isNumber()) {
        fail("something that is no number where one belongs");
    }
    return *found;
}

bool KeyedUnarchiver::decodeBool(std::string_view key) {
    const Value* inner = find(key);
    return inner != nullptr && number(*inner).boolValue();
}

std::int64_t KeyedUnarchiver::decodeInt64(std::string_view key) {
    const Value* inner = find(key);
    if (inner == nullptr) {
        return 0;
    }
    const Value& found = number(*inner);
    if (found.type() != Value::Type::Real && !found.asSigned()) {
        fail("an integer that does not fit");
    }
    return found.longLongValue();
}

std::int32_t KeyedUnarchiver::decodeInt32(std::string_view key) {
    const std::int64_t integer = decodeInt64(key);
    if (!std::in_range<std::int32_t>(integer)) {
        fail("an integer that does not fit");
    }
    return static_cast<std::int32_t>(integer);
}

double KeyedUnarchiver::decodeDouble(std::string_view key) {
    const Value* inner = find(key);
    return inner == nullptr ? 0 : number(*inner).doubleValue();
}

float KeyedUnarchiver::decodeFloat(std::string_view key) {
    const double real = decodeDouble(key);
    constexpr double most = std::numeric_limits<float>::max();
    // Beyond the range of the type the conversion is undefined.
    if (real > most || real < -most) {
        return real > 0 ? std::numeric_limits<float>::infinity()
                        : -std::numeric_limits<float>::infinity();
    }
    return static_cast<float>(real);
}

void KeyedUnarchiver::spend(const Value& leaf) {
    std::size_t payload = 0;
    if (const std::string* text = leaf.asString()) {
        payload = text->size();
    } else if (const Data* bytes = leaf.asData()) {
        payload = bytes->size();
    }
    if (valuesLeft_ == 0 || payload > payloadLeft_) {
        fail("shared objects make the archive too large");
    }
    --valuesLeft_;
    payloadLeft_ -= payload;
}

Value KeyedUnarchiver::referencedValue(const Value& reference, std::size_t level) {
    const Value* object = objectAt(uidOf(reference));
    if (object == nullptr) {
        fail("nil inside a value");
    }
    return value(*object, level);
}

/// The value that an entry of the objects stands for.
Value KeyedUnarchiver::value(const Value& object, std::size_t level) {
    spend(object);
    if (object.asArray() != nullptr || object.asUID() != nullptr) {
        fail("an object of a wrong shape");
    }
    const Value::Dictionary* entries = object.asDictionary();
    if (entries == nullptr) {
        return object;
    }
    const Kind kind = classOf(*entries).kind;
    switch (kind) {
    case Kind::Text:
        return text(*entries);
    case Kind::Bytes:
        return bytes(*entries);
    case Kind::Time: {
        const Value& time = part(*entries, "NS.time");
        if (!time.isNumber()) {
            fail("a date without a time");
        }
        return Date(time.doubleValue());
    }
    case Kind::Array:
    case Kind::Dictionary:
        // This ends containers that contain themselves, too.
        if (level >= PropertyList::maximumDepth) {
            fail("values nested too deep");
        }
        return container(*entries, kind, level + 1);
    case Kind::Null:
        fail("a null object inside a value");
    default:
        fail("an object where a value belongs");
    }
}

Value KeyedUnarchiver::text(const Value::Dictionary& object) {
    const Value& inner = part(object, "NS.string");
    const Value* content = inner.asUID() == nullptr ? &inner : objectAt(*inner.asUID());
    if (content == nullptr || content->asString() == nullptr) {
        fail("a mutable text without a text");
    }
    spend(*content);
    return *content;
}

Value KeyedUnarchiver::bytes(const Value::Dictionary& object) {
    const Value& inner = part(object, "NS.data");
    const Value* content = inner.asUID() == nullptr ? &inner : objectAt(*inner.asUID());
    if (content == nullptr || content->asData() == nullptr) {
        fail("mutable data without bytes");
    }
    spend(*content);
    return *content;
}

Value KeyedUnarchiver::container(const Value::Dictionary& object, Kind kind, std::size_t level) {
    const Value::Array& elements = references(object, "NS.objects");
    if (kind == Kind::Array) {
        Value::Array array;
        for (const Value& element : elements) {
            array.push_back(referencedValue(element, level));
        }
        return array;
    }
    const Value::Array& keys = references(object, "NS.keys");
    if (keys.size() != elements.size()) {
        fail("a dictionary whose keys and objects differ in number");
    }
    Value::Dictionary dictionary;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        Value key = referencedValue(keys[i], level);
        if (key.asString() == nullptr) {
            fail("a dictionary with a key that is no text");
        }
        dictionary.set(*key.asString(), referencedValue(elements[i], level));
    }
    return dictionary;
}

Archived unarchiveObjectWithData(BytesView archive) {
    KeyedUnarchiver unarchiver(archive);
    if (!unarchiver.containsValue("root")) {
        fail("a keyed archive without a root");
    }
    return unarchiver.decode("root");
}

} // namespace tav
