#include "base/BinaryPropertyListWriter.hpp"

#include "base/ByteBuffer.hpp"
#include "base/SipHash.hpp"
#include "base/Unicode.hpp"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

namespace tav::PropertyList::internal {
namespace {

constexpr unsigned dateMarker = 0x33;
constexpr unsigned realMarker = 0x23;

enum class Kind : std::uint8_t {
    False,
    True,
    Signed,
    Unsigned,
    Real,
    Date,
    UID,
    Text,
    Bytes,
    Array,
    Dictionary
};

/// An object of the list: a number by its bits, a text or bytes by where they are in the caller's
/// tree, a container by where its references begin.
struct Object {
    Kind kind = Kind::False;
    std::uint32_t hash = 0;
    std::uint64_t number = 0;
    std::string_view content;
    std::size_t count = 0; ///< Of a container's elements or entries.

    [[nodiscard]] bool sameAs(const Object& other) const {
        return hash == other.hash && kind == other.kind && number == other.number &&
               content == other.content;
    }
};

/// The smallest of 1, 2, 4 and 8 bytes that holds a number.
std::size_t widthOf(std::uint64_t number) {
    if (number < 0x100) {
        return 1;
    }
    if (number < 0x10000) {
        return 2;
    }
    return number < 0x100000000U ? 4 : 8;
}

class Writer {
  public:
    explicit Writer(Error& error) : error_(error), slots_(256) {}

    std::optional<Data> document(const Value& root);

  private:
    bool add(const Value& value, std::size_t level, std::uint32_t& id);
    bool addArray(const Value::Array& array, std::size_t level, std::uint32_t& id);
    bool addDictionary(const Value::Dictionary& dictionary, std::size_t level, std::uint32_t& id);
    std::uint32_t addNumber(Kind kind, std::uint64_t number);
    std::uint32_t addContent(Kind kind, std::string_view content);
    std::uint32_t addOnce(const Object& object);
    std::size_t addContainer(Kind kind, std::size_t count, std::size_t references);
    void growSlots();

    void write(const Object& object);
    void writeInteger(std::uint64_t number, bool isSigned);
    void writeText(std::string_view text);
    void writeMarker(unsigned kind, std::size_t count);
    void writeReferences(std::size_t first, std::size_t count);

    bool fail(const char* reason) {
        error_.reason = reason;
        return false;
    }

    Error& error_;
    std::vector<Object> objects_;
    std::vector<std::uint32_t> references_;
    std::vector<std::uint32_t> slots_; ///< Open addressing: objects from 1; 0 is free.
    std::size_t used_ = 0;
    std::size_t referenceSize_ = 1;
    SipHashKey key_ = processSipHashKey();
    ByteBuffer out_;
};

std::optional<Data> Writer::document(const Value& root) {
    std::uint32_t top = 0;
    if (!add(root, 0, top)) {
        return std::nullopt;
    }
    if (objects_.size() >= std::numeric_limits<std::uint32_t>::max()) {
        fail("too many values");
        return std::nullopt;
    }
    referenceSize_ = widthOf(objects_.size() - 1);
    std::vector<std::uint64_t> offsets;
    offsets.reserve(objects_.size());
    out_.append("bplist00");
    for (const Object& object : objects_) {
        offsets.push_back(out_.size());
        write(object);
    }
    const std::size_t table = out_.size();
    const std::size_t offsetSize = widthOf(table);
    for (const std::uint64_t offset : offsets) {
        out_.appendBigEndian(offset, offsetSize);
    }
    out_.appendBigEndian(0, 6);
    out_.appendBigEndian(offsetSize, 1);
    out_.appendBigEndian(referenceSize_, 1);
    out_.appendBigEndian(objects_.size(), 8);
    out_.appendBigEndian(top, 8);
    out_.appendBigEndian(table, 8);
    return out_.take();
}

bool Writer::add(const Value& value, std::size_t level, std::uint32_t& id) {
    switch (value.type()) {
    case Value::Type::Boolean:
        id = addNumber(value.boolValue() ? Kind::True : Kind::False, 0);
        return true;
    case Value::Type::Integer:
        id = addNumber(value.asSigned() ? Kind::Signed : Kind::Unsigned,
                       value.unsignedLongLongValue());
        return true;
    case Value::Type::Real:
        id = addNumber(Kind::Real, std::bit_cast<std::uint64_t>(value.doubleValue()));
        return true;
    case Value::Type::Date:
        id = addNumber(Kind::Date,
                       std::bit_cast<std::uint64_t>(value.asDate()->secondsSinceReferenceDate()));
        return true;
    case Value::Type::UID:
        id = addNumber(Kind::UID, value.asUID()->value);
        return true;
    case Value::Type::String:
        id = addContent(Kind::Text, *value.asString());
        return true;
    case Value::Type::Bytes:
        id = addContent(Kind::Bytes, textOf(*value.asData()));
        return true;
    case Value::Type::Array:
        return addArray(*value.asArray(), level, id);
    case Value::Type::Dictionary:
        return addDictionary(*value.asDictionary(), level, id);
    }
    return false;
}

/// Answers where the references of the new container begin.
std::size_t Writer::addContainer(Kind kind, std::size_t count, std::size_t references) {
    const std::size_t first = references_.size();
    references_.resize(first + references);
    Object object;
    object.kind = kind;
    object.number = first;
    object.count = count;
    objects_.push_back(object);
    return first;
}

bool Writer::addArray(const Value::Array& array, std::size_t level, std::uint32_t& id) {
    if (level >= maximumDepth) {
        return fail("nested too deep");
    }
    id = static_cast<std::uint32_t>(objects_.size());
    const std::size_t first = addContainer(Kind::Array, array.size(), array.size());
    for (std::size_t i = 0; i < array.size(); ++i) {
        std::uint32_t element = 0;
        if (!add(array[i], level + 1, element)) {
            return false;
        }
        references_[first + i] = element;
    }
    return true;
}

bool Writer::addDictionary(const Value::Dictionary& dictionary, std::size_t level,
                           std::uint32_t& id) {
    if (level >= maximumDepth) {
        return fail("nested too deep");
    }
    id = static_cast<std::uint32_t>(objects_.size());
    const std::size_t count = dictionary.size();
    const std::size_t first = addContainer(Kind::Dictionary, count, 2 * count);
    std::size_t i = first;
    for (const Value::Dictionary::Entry* entry : dictionary.sorted()) {
        references_[i] = addContent(Kind::Text, entry->first);
        std::uint32_t content = 0;
        if (!add(entry->second, level + 1, content)) {
            return false;
        }
        references_[i + count] = content;
        ++i;
    }
    return true;
}

std::uint32_t Writer::addNumber(Kind kind, std::uint64_t number) {
    const std::uint64_t mixed[2] = {number, static_cast<std::uint64_t>(kind)};
    Object object;
    object.kind = kind;
    object.number = number;
    object.hash = static_cast<std::uint32_t>(
        sipHash13({reinterpret_cast<const char*>(mixed), sizeof mixed}, key_));
    return addOnce(object);
}

std::uint32_t Writer::addContent(Kind kind, std::string_view content) {
    Object object;
    object.kind = kind;
    object.content = content;
    object.hash = static_cast<std::uint32_t>(sipHash13(content, key_));
    return addOnce(object);
}

std::uint32_t Writer::addOnce(const Object& object) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = object.hash & mask;
    for (; slots_[at] != 0; at = (at + 1) & mask) {
        if (objects_[slots_[at] - 1].sameAs(object)) {
            return slots_[at] - 1;
        }
    }
    objects_.push_back(object);
    slots_[at] = static_cast<std::uint32_t>(objects_.size());
    if (++used_ * 2 > slots_.size()) {
        growSlots();
    }
    return static_cast<std::uint32_t>(objects_.size() - 1);
}

void Writer::growSlots() {
    std::vector<std::uint32_t> old(slots_.size() * 4);
    old.swap(slots_);
    const std::size_t mask = slots_.size() - 1;
    for (const std::uint32_t slot : old) {
        if (slot != 0) {
            std::size_t at = objects_[slot - 1].hash & mask;
            while (slots_[at] != 0) {
                at = (at + 1) & mask;
            }
            slots_[at] = slot;
        }
    }
}

void Writer::write(const Object& object) {
    switch (object.kind) {
    case Kind::False:
    case Kind::True:
        out_.append(object.kind == Kind::True ? '\x09' : '\x08');
        break;
    case Kind::Signed:
    case Kind::Unsigned:
        writeInteger(object.number, object.kind == Kind::Signed);
        break;
    case Kind::Real:
    case Kind::Date:
        out_.appendBigEndian(object.kind == Kind::Real ? realMarker : dateMarker, 1);
        out_.appendBigEndian(object.number, 8);
        break;
    case Kind::UID: {
        const std::size_t width = widthOf(object.number);
        out_.appendBigEndian(0x80 | (width - 1), 1);
        out_.appendBigEndian(object.number, width);
        break;
    }
    case Kind::Text:
        writeText(object.content);
        break;
    case Kind::Bytes:
        writeMarker(0x4, object.content.size());
        out_.append(object.content);
        break;
    case Kind::Array:
        writeMarker(0xA, object.count);
        writeReferences(static_cast<std::size_t>(object.number), object.count);
        break;
    case Kind::Dictionary:
        writeMarker(0xD, object.count);
        writeReferences(static_cast<std::size_t>(object.number), 2 * object.count);
        break;
    }
}

/// Integers of up to four bytes have no sign, those of eight have one: larger ones take sixteen.
void Writer::writeInteger(std::uint64_t number, bool isSigned) {
    if (!isSigned) {
        out_.appendBigEndian(0x14, 1);
        out_.appendBigEndian(0, 8);
        out_.appendBigEndian(number, 8);
        return;
    }
    const std::size_t width = widthOf(number);
    out_.appendBigEndian(0x10U | static_cast<unsigned>(std::countr_zero(width)), 1);
    out_.appendBigEndian(number, width);
}

void Writer::writeText(std::string_view text) {
    if (isASCII(text)) {
        writeMarker(0x5, text.size());
        out_.append(text);
        return;
    }
    const Data units = utf16BigEndian(text);
    writeMarker(0x6, units.size() / 2);
    out_.append(BytesView(units));
}

void Writer::writeMarker(unsigned kind, std::size_t count) {
    if (count < 15) {
        out_.appendBigEndian(kind << 4 | count, 1);
        return;
    }
    out_.appendBigEndian(kind << 4 | 15, 1);
    writeInteger(count, true);
}

void Writer::writeReferences(std::size_t first, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        out_.appendBigEndian(references_[first + i], referenceSize_);
    }
}

} // namespace

std::optional<Data> writeBinary(const Value& value, Error& error) {
    return Writer(error).document(value);
}

} // namespace tav::PropertyList::internal
