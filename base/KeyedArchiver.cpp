#include "base/KeyedArchiver.hpp"

#include "base/Exception.hpp"
#include "base/PropertyList.hpp"

namespace tav {
namespace {

constexpr std::string_view rootKey = "root";

/// Keys that begin with "$" are the archive's own; another "$" before them makes them the object's.
std::string archivedKey(std::string_view key) {
    return (key.starts_with('$') ? "$" : "") + std::string(key);
}

[[noreturn]] void fail(std::string_view reason) {
    throw Exception(KeyedArchiver::invalidArchiveOperation, reason);
}

} // namespace

KeyedArchiver::KeyedArchiver() { objects_.emplace_back("$null"); }

KeyedArchiver::~KeyedArchiver() = default;

void KeyedArchiver::set(std::string_view key, Value value) {
    current_->set(archivedKey(key), std::move(value));
}

/// A place among the objects, to be filled.
std::uint64_t KeyedArchiver::place() {
    objects_.emplace_back();
    return objects_.size() - 1;
}

void KeyedArchiver::encodeObject(std::string_view key, const Coding* object) {
    set(key, objectUID(object));
}

void KeyedArchiver::encodeSharedObject(std::string_view key, std::shared_ptr<const Coding> object) {
    set(key, objectUID(object.get()));
    kept_.push_back(std::move(object));
}

void KeyedArchiver::encodeObjects(std::string_view key, std::span<const Coding* const> objects) {
    const std::uint64_t uid = place();
    Value::Array uids;
    uids.reserve(objects.size());
    for (const Coding* object : objects) {
        uids.emplace_back(objectUID(object));
    }
    objects_[uid] = Value::Dictionary{{"$class", foundationClassUID("NSArray")},
                                      {"NS.objects", std::move(uids)}};
    set(key, Value::UID{uid});
}

void KeyedArchiver::encodeValue(std::string_view key, const Value& value) {
    set(key, valueUID(value, 0));
}

void KeyedArchiver::encodeText(std::string_view key, std::string_view text) {
    set(key, textUID(std::string(text)));
}

void KeyedArchiver::encodeClass(std::string_view key, const std::string& name,
                                const std::vector<std::string>& superclassNames) {
    set(key, classUID(name, superclassNames));
}

void KeyedArchiver::encodeBool(std::string_view key, bool value) { set(key, value); }
void KeyedArchiver::encodeInt32(std::string_view key, std::int32_t value) { set(key, value); }
void KeyedArchiver::encodeInt64(std::string_view key, std::int64_t value) { set(key, value); }
void KeyedArchiver::encodeFloat(std::string_view key, float value) { set(key, value); }
void KeyedArchiver::encodeDouble(std::string_view key, double value) { set(key, value); }
void KeyedArchiver::encodeBytes(std::string_view key, BytesView bytes) {
    set(key, Data(bytes.begin(), bytes.end()));
}

Value::UID KeyedArchiver::objectUID(const Coding* object) {
    if (object == nullptr) {
        return {};
    }
    const auto [entry, isNew] = uids_.try_emplace(object, 0);
    if (isNew) {
        if (depth_ >= maximumDepth) {
            fail("objects nested too deep");
        }
        entry->second = place();
        pending_.push_back({object, entry->second, depth_ + 1});
    }
    return {entry->second};
}

Value::UID KeyedArchiver::textUID(const std::string& text) {
    if (const Value* uid = texts_.find(text)) {
        return *uid->asUID();
    }
    const Value::UID uid{place()};
    objects_[uid.value] = text;
    texts_.set(text, uid);
    return uid;
}

Value::UID KeyedArchiver::valueUID(const Value& value, std::size_t level) {
    if (const std::string* text = value.asString()) {
        return textUID(*text);
    }
    if (value.asUID() != nullptr) {
        fail("a reference is no value that can be archived");
    }
    const Value::UID uid{place()};
    if (const Date* date = value.asDate()) {
        objects_[uid.value] = Value::Dictionary{{"$class", foundationClassUID("NSDate")},
                                                {"NS.time", date->secondsSinceReferenceDate()}};
        return uid;
    }
    const Value::Array* array = value.asArray();
    const Value::Dictionary* dictionary = value.asDictionary();
    if (array == nullptr && dictionary == nullptr) {
        objects_[uid.value] = value;
        return uid;
    }
    if (level >= PropertyList::maximumDepth) {
        fail("a value nested too deep");
    }
    Value::Array keys;
    Value::Array elements;
    if (array != nullptr) {
        elements.reserve(array->size());
        for (const Value& element : *array) {
            elements.emplace_back(valueUID(element, level + 1));
        }
        objects_[uid.value] = Value::Dictionary{{"$class", foundationClassUID("NSArray")},
                                                {"NS.objects", std::move(elements)}};
        return uid;
    }
    keys.reserve(dictionary->size());
    elements.reserve(dictionary->size());
    for (const Value::Dictionary::Entry* entry : dictionary->sorted()) {
        keys.emplace_back(textUID(entry->first));
        elements.emplace_back(valueUID(entry->second, level + 1));
    }
    objects_[uid.value] = Value::Dictionary{{"$class", foundationClassUID("NSDictionary")},
                                            {"NS.keys", std::move(keys)},
                                            {"NS.objects", std::move(elements)}};
    return uid;
}

Value::UID KeyedArchiver::foundationClassUID(const char* name) {
    return classUID(name, {"NSObject"});
}

Value::UID KeyedArchiver::classUID(const std::string& name,
                                   const std::vector<std::string>& superclassNames) {
    if (const Value* uid = classes_.find(name)) {
        return *uid->asUID();
    }
    const Value::UID uid{place()};
    Value::Array chain;
    chain.emplace_back(name);
    chain.insert(chain.end(), superclassNames.begin(), superclassNames.end());
    objects_[uid.value] = Value::Dictionary{{"$classname", name}, {"$classes", std::move(chain)}};
    classes_.set(name, uid);
    return uid;
}

Data KeyedArchiver::finishEncoding() {
    while (!pending_.empty()) {
        const Pending next = pending_.front();
        pending_.pop_front();
        Value::Dictionary content;
        content.set("$class", classUID(next.object->className(), next.object->superclassNames()));
        current_ = &content;
        depth_ = next.depth;
        try {
            next.object->encode(*this);
        } catch (...) {
            current_ = &top_;
            throw;
        }
        current_ = &top_;
        objects_[next.uid] = std::move(content);
    }
    Value::Dictionary archive{{"$version", 100000}, {"$archiver", "NSKeyedArchiver"}};
    archive.set("$top", std::move(top_));
    archive.set("$objects", std::move(objects_));
    PropertyList::Error error;
    std::optional<Data> data =
        PropertyList::write(std::move(archive), PropertyList::Form::Binary, &error);
    if (!data) {
        fail(error.reason);
    }
    return std::move(*data);
}

Data archivedDataWithRootObject(const Coding* object) {
    KeyedArchiver archiver;
    archiver.encodeObject(rootKey, object);
    return archiver.finishEncoding();
}

Data archivedDataWithRootObject(const Value& value) {
    KeyedArchiver archiver;
    archiver.encodeValue(rootKey, value);
    return archiver.finishEncoding();
}

Data archivedDataWithRootClass(const std::string& name,
                               const std::vector<std::string>& superclassNames) {
    KeyedArchiver archiver;
    archiver.encodeClass(rootKey, name, superclassNames);
    return archiver.finishEncoding();
}

} // namespace tav
