#include "base/PropertyList.hpp"
#include "base/Unicode.hpp"

#include <bit>
#include <cstdint>
#include <string_view>

namespace tav::PropertyList {
namespace {

constexpr std::string_view magic = "bplist00";
constexpr std::size_t trailerSize = 32;

// Objects may be shared, so a few hundred bytes can describe a tree of any size. A tree may have
// this many values and bytes of text for each byte of the list, which no list without shared
// containers comes near to.
constexpr std::size_t valuesForEachByte = 4;
constexpr std::size_t valuesAlways = 8192;
constexpr std::size_t payloadForEachByte = 256;
constexpr std::size_t payloadAlways = std::size_t{16} << 20;

std::uint64_t bigEndian(const std::byte* at, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
        value = value << 8 | std::to_integer<std::uint64_t>(at[i]);
    }
    return value;
}

class Reader {
  public:
    explicit Reader(BytesView bytes)
        : bytes_(bytes), valuesLeft_(valuesForEachByte * bytes.size() + valuesAlways),
          payloadLeft_(payloadForEachByte * bytes.size() + payloadAlways) {}

    std::optional<Value> read(Error* outError);

  private:
    /// An object: its marker byte and where its content begins.
    struct Object {
        unsigned kind = 0;
        unsigned low = 0;
        std::size_t at = 0;
    };

    bool trailer();
    bool find(std::uint64_t reference, Object& object);
    bool value(std::uint64_t reference, Value& out);
    bool simple(const Object& object, Value& out);
    bool integer(const Object& object, Value& out);
    bool text(const Object& object, std::string& out);
    bool array(const Object& object, Value& out);
    bool dictionary(const Object& object, Value& out);

    /// How many units follow the marker; fails unless all of them lie inside the objects.
    bool count(Object& object, std::size_t unitSize, std::size_t& count);
    bool has(std::size_t at, std::size_t size) { return size <= end_ - at || fail(at, "cut off"); }
    bool spend(std::size_t& budget, std::size_t amount, std::size_t at);

    [[nodiscard]] std::uint64_t referenceAt(std::size_t at) const {
        return bigEndian(&bytes_[at], referenceSize_);
    }
    bool fail(std::size_t offset, const char* reason) {
        error_.reason = reason;
        error_.offset = offset;
        return false;
    }

    BytesView bytes_;
    std::size_t valuesLeft_;
    std::size_t payloadLeft_;
    std::size_t end_ = 0; ///< Where the objects end and the table of their offsets begins.
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t top_ = 0;
    std::size_t depth_ = 0;
    std::vector<bool> isOpen_;
    Error error_;
};

std::optional<Value> Reader::read(Error* outError) {
    Value root;
    if (trailer() && spend(valuesLeft_, 1, 0) && value(top_, root)) {
        return root;
    }
    if (outError != nullptr) {
        *outError = std::move(error_);
    }
    return std::nullopt;
}

bool Reader::trailer() {
    if (!textOf(bytes_).starts_with(magic)) {
        return fail(0, "does not begin with \"bplist00\"");
    }
    if (bytes_.size() < magic.size() + trailerSize) {
        return fail(bytes_.size(), "cut off");
    }
    const std::size_t at = bytes_.size() - trailerSize;
    const std::byte* trailer = &bytes_[at];
    offsetSize_ = bigEndian(trailer + 6, 1);
    referenceSize_ = bigEndian(trailer + 7, 1);
    objectCount_ = bigEndian(trailer + 8, 8);
    top_ = bigEndian(trailer + 16, 8);
    const std::uint64_t table = bigEndian(trailer + 24, 8);
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) {
        return fail(at + 6, "the trailer has wrong sizes");
    }
    if (table <= magic.size() || table > at || objectCount_ > (at - table) / offsetSize_) {
        return fail(at + 24, "the table of offsets lies outside the list");
    }
    if (top_ >= objectCount_) {
        return fail(at + 16, "the top object is missing");
    }
    end_ = static_cast<std::size_t>(table);
    isOpen_.resize(static_cast<std::size_t>(objectCount_));
    return true;
}

bool Reader::find(std::uint64_t reference, Object& object) {
    if (reference >= objectCount_) {
        return fail(0, "a reference to a missing object");
    }
    const std::size_t entry = end_ + static_cast<std::size_t>(reference) * offsetSize_;
    const std::uint64_t offset = bigEndian(&bytes_[entry], offsetSize_);
    if (offset < magic.size() || offset >= end_) {
        return fail(entry, "an offset outside the list");
    }
    object.at = static_cast<std::size_t>(offset) + 1;
    const auto marker = std::to_integer<unsigned>(bytes_[object.at - 1]);
    object.kind = marker >> 4;
    object.low = marker & 15;
    return true;
}

bool Reader::spend(std::size_t& budget, std::size_t amount, std::size_t at) {
    if (amount > budget) {
        return fail(at, "shared objects make the list too large");
    }
    budget -= amount;
    return true;
}

bool Reader::count(Object& object, std::size_t unitSize, std::size_t& count) {
    std::uint64_t units = object.low;
    if (object.low == 15) {
        if (!has(object.at, 1)) {
            return false;
        }
        const auto marker = std::to_integer<unsigned>(bytes_[object.at]);
        const std::size_t width = std::size_t{1} << (marker & 15);
        if (marker >> 4 != 1 || width > 8) {
            return fail(object.at, "a count that is no integer");
        }
        if (!has(object.at + 1, width)) {
            return false;
        }
        units = bigEndian(&bytes_[object.at + 1], width);
        object.at += 1 + width;
    }
    if (units > (end_ - object.at) / unitSize) {
        return fail(object.at, "cut off");
    }
    count = static_cast<std::size_t>(units);
    return true;
}

/// The place of the value has been paid for by whoever asks.
bool Reader::value(std::uint64_t reference, Value& out) {
    Object object;
    if (!find(reference, object)) {
        return false;
    }
    if (object.kind != 0xA && object.kind != 0xD) {
        return simple(object, out);
    }
    const auto index = static_cast<std::size_t>(reference);
    if (isOpen_[index]) {
        return fail(object.at - 1, "a container that contains itself");
    }
    if (depth_ >= maximumDepth) {
        return fail(object.at - 1, "nested too deep");
    }
    isOpen_[index] = true;
    ++depth_;
    const bool done = object.kind == 0xA ? array(object, out) : dictionary(object, out);
    --depth_;
    isOpen_[index] = false;
    return done;
}

bool Reader::simple(const Object& object, Value& out) {
    const std::size_t width = std::size_t{1} << object.low;
    switch (object.kind) {
    case 0x0:
        if (object.low != 8 && object.low != 9) {
            return fail(object.at - 1, "a null or another object that property lists do not have");
        }
        out = object.low == 9;
        return true;
    case 0x1:
        return integer(object, out);
    case 0x2:
        if (width != 4 && width != 8) {
            return fail(object.at - 1, "a real of an unknown size");
        }
        if (!has(object.at, width)) {
            return false;
        }
        out = width == 4 ? double(std::bit_cast<float>(
                               static_cast<std::uint32_t>(bigEndian(&bytes_[object.at], 4))))
                         : std::bit_cast<double>(bigEndian(&bytes_[object.at], 8));
        return true;
    case 0x3:
        if (width != 8) {
            return fail(object.at - 1, "a date of an unknown size");
        }
        if (!has(object.at, width)) {
            return false;
        }
        out = Date(std::bit_cast<double>(bigEndian(&bytes_[object.at], 8)));
        return true;
    case 0x4: {
        Object data = object;
        std::size_t size = 0;
        if (!count(data, 1, size) || !spend(payloadLeft_, size, data.at)) {
            return false;
        }
        const BytesView bytes = bytes_.subspan(data.at, size);
        out = Data(bytes.begin(), bytes.end());
        return true;
    }
    case 0x5:
    case 0x6: {
        std::string content;
        if (!text(object, content)) {
            return false;
        }
        out = std::move(content);
        return true;
    }
    case 0x8:
        if (object.low >= 8) {
            return fail(object.at - 1, "an identifier of more than 64 bits");
        }
        if (!has(object.at, object.low + 1)) {
            return false;
        }
        out = Value::UID{bigEndian(&bytes_[object.at], object.low + 1)};
        return true;
    default:
        return fail(object.at - 1, "a set or another object that property lists do not have");
    }
}

/// Integers of up to four bytes have no sign, those of eight have one; sixteen hold either.
bool Reader::integer(const Object& object, Value& out) {
    if (object.low > 4) {
        return fail(object.at - 1, "an integer of an unknown size");
    }
    const std::size_t width = std::size_t{1} << object.low;
    if (!has(object.at, width)) {
        return false;
    }
    if (width <= 8) {
        out = static_cast<std::int64_t>(bigEndian(&bytes_[object.at], width));
        return true;
    }
    const std::uint64_t high = bigEndian(&bytes_[object.at], 8);
    const std::uint64_t low = bigEndian(&bytes_[object.at + 8], 8);
    const auto lowSigned = static_cast<std::int64_t>(low);
    if (high == 0 && lowSigned < 0) {
        out = low;
    } else if (high == (lowSigned < 0 ? ~std::uint64_t{0} : 0)) {
        out = lowSigned;
    } else {
        return fail(object.at, "an integer of more than 64 bits");
    }
    return true;
}

bool Reader::text(const Object& object, std::string& out) {
    Object at = object;
    std::size_t units = 0;
    const std::size_t unitSize = object.kind == 0x5 ? 1 : 2;
    if (!count(at, unitSize, units) || !spend(payloadLeft_, units * unitSize, at.at)) {
        return false;
    }
    const BytesView bytes = bytes_.subspan(at.at, units * unitSize);
    if (object.kind == 0x6) {
        out = bytesFromUTF16BigEndian(bytes);
        return true;
    }
    if (!isASCII(textOf(bytes))) {
        return fail(at.at, "an ASCII text with bytes that are none");
    }
    out.assign(textOf(bytes));
    return true;
}

bool Reader::array(const Object& object, Value& out) {
    Object at = object;
    std::size_t size = 0;
    if (!count(at, referenceSize_, size) || !spend(valuesLeft_, size, at.at)) {
        return false;
    }
    Value::Array elements(size);
    for (std::size_t i = 0; i < size; ++i) {
        if (!value(referenceAt(at.at + i * referenceSize_), elements[i])) {
            return false;
        }
    }
    out = std::move(elements);
    return true;
}

bool Reader::dictionary(const Object& object, Value& out) {
    Object at = object;
    std::size_t size = 0;
    if (!count(at, 2 * referenceSize_, size) || !spend(valuesLeft_, size, at.at)) {
        return false;
    }
    Value::Dictionary entries;
    entries.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
        Object keyObject;
        if (!find(referenceAt(at.at + i * referenceSize_), keyObject)) {
            return false;
        }
        if (keyObject.kind != 0x5 && keyObject.kind != 0x6) {
            return fail(keyObject.at - 1, "a key that is no text");
        }
        std::string key;
        Value content;
        if (!text(keyObject, key) ||
            !value(referenceAt(at.at + (size + i) * referenceSize_), content)) {
            return false;
        }
        entries.set(std::move(key), std::move(content));
    }
    out = std::move(entries);
    return true;
}

} // namespace

std::optional<Value> readBinary(BytesView bytes, Error* outError) {
    return Reader(bytes).read(outError);
}

} // namespace tav::PropertyList
