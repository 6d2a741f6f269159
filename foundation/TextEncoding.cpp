#include "foundation/TextEncoding.hpp"

#include "base/SingleByteTables.hpp"
#include "base/Transliteration.hpp"
#include "base/Unicode.hpp"
#include "foundation/TextEncodingTable.hpp"
#include "foundation/UnicodeConverter.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace tav {

namespace {

using internal::EncodingEntry;
using internal::EncodingKind;
using internal::UnicodeConverter;

// The characters of the bytes up to 0xFF from a first one on; bytes below it are ASCII.
struct SingleByteTable {
    std::size_t first;
    const char16_t* characters;
};

constexpr SingleByteTable nextstep = {128, internal::nextstepCharacters.data()};
constexpr SingleByteTable symbol = {32, internal::symbolCharacters.data()};

std::optional<Data> encodeByTable(std::u16string_view units, const SingleByteTable& table) {
    const char16_t* const end = table.characters + (256 - table.first);
    Data data;
    data.reserve(units.size());
    for (const char16_t unit : units) {
        std::size_t byte = unit;
        if (unit >= table.first) {
            const char16_t* const found = std::find(table.characters, end, unit);
            if (found == end) {
                return std::nullopt;
            }
            byte = table.first + static_cast<std::size_t>(found - table.characters);
        }
        data.push_back(static_cast<std::byte>(byte));
    }
    return data;
}

std::optional<std::u16string> decodeByTable(BytesView bytes, const SingleByteTable& table) {
    std::u16string units;
    units.reserve(bytes.size());
    for (const std::byte byte : bytes) {
        const auto value = std::to_integer<std::size_t>(byte);
        units += value < table.first ? static_cast<char16_t>(value)
                                     : table.characters[value - table.first];
        if (units.back() == 0 && value != 0) {
            return std::nullopt;
        }
    }
    return units;
}

void appendDigits(std::string& text, unsigned number, unsigned bitsOfDigit, int count) {
    for (int digit = count - 1; digit >= 0; --digit) {
        const unsigned value = number >> (bitsOfDigit * static_cast<unsigned>(digit));
        text += "0123456789abcdef"[value & ((1U << bitsOfDigit) - 1)];
    }
}

Data encodeNonLossyASCII(std::u16string_view units) {
    std::string text;
    text.reserve(units.size());
    for (const char16_t unit : units) {
        if (unit == u'\\') {
            text += "\\\\";
        } else if (unit < 0x80) {
            text += static_cast<char>(unit);
        } else if (unit < 0x100) {
            text += '\\';
            appendDigits(text, unit, 3, 3);
        } else {
            text += "\\u";
            appendDigits(text, unit, 4, 4);
        }
    }
    return dataFromText(text);
}

// The number that so many digits at the front make; nothing when there are others.
std::optional<unsigned> numberInFront(std::string_view text, unsigned base, std::size_t count) {
    if (text.size() < count) {
        return std::nullopt;
    }
    unsigned number = 0;
    for (const char digit : text.substr(0, count)) {
        const auto lower =
            static_cast<unsigned char>(digit >= 'A' && digit <= 'F' ? digit + 32 : digit);
        const unsigned value = lower >= 'a' ? lower - unsigned{'a'} + 10 : lower - unsigned{'0'};
        if ((lower > '9' && lower < 'a') || value >= base) {
            return std::nullopt;
        }
        number = number * base + value;
    }
    return number;
}

std::optional<std::u16string> decodeNonLossyASCII(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        text.remove_prefix(1);
        std::optional<unsigned> unit = byte;
        if (byte == '\\') {
            const bool isUnit = text.starts_with('u');
            if (isUnit) {
                unit = numberInFront(text.substr(1), 16, 4);
                text.remove_prefix(std::min<std::size_t>(text.size(), 5));
            } else if (text.starts_with('\\')) {
                text.remove_prefix(1);
            } else {
                unit = numberInFront(text, 8, 3);
                text.remove_prefix(std::min<std::size_t>(text.size(), 3));
            }
            if (!unit || (!isUnit && *unit > 0xFF)) {
                return std::nullopt;
            }
        } else if (byte >= 0x80) {
            return std::nullopt;
        }
        units += static_cast<char16_t>(*unit);
    }
    return units;
}

// ICU's table has three control characters in each other's places, which never are second bytes.
constexpr std::string_view controls = "\x1A\x1C\x7F";
constexpr std::string_view controlsOfICU = "\x7F\x1A\x1C";

void exchange(Data& bytes, std::string_view from, std::string_view to) {
    for (std::byte& byte : bytes) {
        const std::size_t at = from.find(std::to_integer<char>(byte));
        if (at != std::string_view::npos) {
            byte = static_cast<std::byte>(to[at]);
        }
    }
}

constexpr std::array utf16Mark = {std::byte{0xFF}, std::byte{0xFE}};
constexpr std::array utf32Mark = {std::byte{0xFF}, std::byte{0xFE}, std::byte{0}, std::byte{0}};

template <std::size_t Size>
bool takeMark(BytesView& bytes, std::array<std::byte, Size> mark, bool reversed) {
    if (reversed) {
        std::reverse(mark.begin(), mark.end());
    }
    if (bytes.size() < Size || !std::equal(mark.begin(), mark.end(), bytes.begin())) {
        return false;
    }
    bytes = bytes.subspan(Size);
    return true;
}

std::string decodeLittleEndian(BytesView bytes) {
    Data swapped(bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(bytes.size() % 2));
    for (std::size_t at = 0; at < swapped.size(); at += 2) {
        std::swap(swapped[at], swapped[at + 1]);
    }
    return bytesFromUTF16BigEndian(swapped);
}

// One encoding ready for use; never the strict ASCII or a form of UTF-16, which need none.
class Encoder {
  public:
    explicit Encoder(const EncodingEntry& entry) : kind_(entry.kind) {
        if (kind_ == EncodingKind::UTF32) {
            converter_.emplace("UTF-32LE");
        } else if (entry.converter != nullptr) {
            converter_.emplace(entry.converter);
        }
    }

    // Without loss, and without the mark in front.
    [[nodiscard]] std::optional<Data> encode(std::u16string_view units) const {
        switch (kind_) {
        case EncodingKind::NonLossyASCII:
            return encodeNonLossyASCII(units);
        case EncodingKind::NEXTSTEP:
            return encodeByTable(units, nextstep);
        case EncodingKind::Symbol:
            return encodeByTable(units, symbol);
        case EncodingKind::UTF8: {
            const std::string text = bytesFromUTF16(units);
            return isValidUTF8(text) ? std::optional(dataFromText(text)) : std::nullopt;
        }
        case EncodingKind::ShiftJIS: {
            std::optional<Data> data = converter_->encode(units);
            if (data) {
                exchange(*data, controlsOfICU, controls);
            }
            return data;
        }
        default:
            return converter_ ? converter_->encode(units) : std::nullopt;
        }
    }

    // What the encoding lacks as `lossyASCII` has it, or as question marks.
    [[nodiscard]] std::optional<Data> encodeWithLoss(std::u16string_view units) const {
        std::u16string possible;
        std::u16string lacking;
        possible.reserve(units.size());
        while (!units.empty()) {
            const bool isPair =
                units.size() > 1 && (units[0] & 0xFC00) == 0xD800 && (units[1] & 0xFC00) == 0xDC00;
            const std::u16string_view character = units.substr(0, isPair ? 2 : 1);
            units.remove_prefix(character.size());
            if (encode(character)) {
                appendASCII(possible, lacking);
                possible += character;
            } else {
                lacking += character;
            }
        }
        appendASCII(possible, lacking);
        return encode(possible);
    }

  private:
    void appendASCII(std::u16string& possible, std::u16string& lacking) const {
        for (const char ascii : lossyASCII(bytesFromUTF16(lacking))) {
            const auto unit = static_cast<char16_t>(static_cast<unsigned char>(ascii));
            possible += encode({&unit, 1}) ? unit : u'?';
        }
        lacking.clear();
    }

    EncodingKind kind_;
    std::optional<UnicodeConverter> converter_;
};

std::optional<Data> encodeUnits(std::string_view text, const EncodingEntry& entry,
                                bool allowLossy) {
    const Encoder encoder(entry);
    std::optional<Data> data = encoder.encode(utf16FromBytes(text));
    if (!data) {
        const std::u16string composed = utf16FromBytes(precomposedString(text));
        data = encoder.encode(composed);
        if (!data && allowLossy) {
            data = encoder.encodeWithLoss(composed);
        }
    }
    return data;
}

std::optional<std::string> decodeUnits(const std::optional<std::u16string>& units) {
    return units ? std::optional(bytesFromUTF16(*units)) : std::nullopt;
}

} // namespace

std::optional<Data> dataUsingEncoding(std::string_view text, std::uint32_t encoding,
                                      bool allowLossy) {
    const EncodingEntry* const entry = internal::findEncoding(encoding);
    if (entry == nullptr) {
        return std::nullopt;
    }
    if (entry->keepsASCII && isASCII(text)) {
        return dataFromText(text);
    }
    switch (entry->kind) {
    case EncodingKind::ASCII:
        return allowLossy ? std::optional(dataFromText(lossyASCII(text))) : std::nullopt;
    case EncodingKind::UTF16BigEndian:
        return utf16BigEndian(text);
    case EncodingKind::UTF16LittleEndian:
        return utf16LittleEndian(text);
    case EncodingKind::UTF16: {
        Data data = utf16LittleEndian(text);
        data.insert(data.begin(), utf16Mark.begin(), utf16Mark.end());
        return data;
    }
    case EncodingKind::UTF32: {
        std::optional<Data> data = encodeUnits(text, *entry, allowLossy);
        if (data) {
            data->insert(data->begin(), utf32Mark.begin(), utf32Mark.end());
        }
        return data;
    }
    default:
        return encodeUnits(text, *entry, allowLossy);
    }
}

std::optional<std::string> stringWithData(BytesView bytes, std::uint32_t encoding) {
    const EncodingEntry* const entry = internal::findEncoding(encoding);
    if (entry == nullptr) {
        return std::nullopt;
    }
    const std::string_view text = textOf(bytes);
    if (entry->keepsASCII && isASCII(text)) {
        return std::string(text);
    }
    switch (entry->kind) {
    case EncodingKind::ASCII:
        return std::nullopt;
    case EncodingKind::UTF8:
        return isValidUTF8(text) ? std::optional(std::string(text)) : std::nullopt;
    case EncodingKind::NonLossyASCII:
        return decodeUnits(decodeNonLossyASCII(text));
    case EncodingKind::NEXTSTEP:
        return decodeUnits(decodeByTable(bytes, nextstep));
    case EncodingKind::Symbol:
        return decodeUnits(decodeByTable(bytes, symbol));
    case EncodingKind::UTF16:
        if (takeMark(bytes, utf16Mark, false)) {
            return decodeLittleEndian(bytes);
        }
        takeMark(bytes, utf16Mark, true);
        return bytesFromUTF16BigEndian(bytes);
    case EncodingKind::UTF16BigEndian:
        return bytesFromUTF16BigEndian(bytes);
    case EncodingKind::UTF16LittleEndian:
        return decodeLittleEndian(bytes);
    case EncodingKind::UTF32: {
        const bool isLittleEndian = takeMark(bytes, utf32Mark, false);
        if (!isLittleEndian) {
            takeMark(bytes, utf32Mark, true);
        }
        return decodeUnits(
            UnicodeConverter(isLittleEndian ? "UTF-32LE" : "UTF-32BE").decode(bytes));
    }
    case EncodingKind::ShiftJIS: {
        Data exchanged(bytes.begin(), bytes.end());
        exchange(exchanged, controls, controlsOfICU);
        return decodeUnits(UnicodeConverter(entry->converter).decode(exchanged));
    }
    case EncodingKind::Converter:
        break;
    }
    return decodeUnits(UnicodeConverter(entry->converter).decode(bytes));
}

std::string convertToEncoding(std::string_view text, std::uint32_t encoding) {
    const std::optional<Data> data = dataUsingEncoding(text, encoding);
    std::optional<std::string> converted = data ? stringWithData(*data, encoding) : std::nullopt;
    return converted ? std::move(*converted) : std::string(text);
}

} // namespace tav
