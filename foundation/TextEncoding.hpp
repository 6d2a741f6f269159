#pragma once

#include "base/Data.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// The numbers by which the platform knows the encodings of texts. Others that have no name here
/// (0x80000000 and the number of a script's or a vendor's table) are in TextEncodingTable.cpp.
struct TextEncoding {
    static constexpr std::uint32_t ASCII = 1;
    static constexpr std::uint32_t NEXTSTEP = 2;
    static constexpr std::uint32_t JapaneseEUC = 3;
    static constexpr std::uint32_t UTF8 = 4;
    static constexpr std::uint32_t ISOLatin1 = 5;
    static constexpr std::uint32_t Symbol = 6;
    /// ASCII with what is not ASCII as "\351" or "\u20ac" and a backslash doubled.
    static constexpr std::uint32_t NonLossyASCII = 7;
    static constexpr std::uint32_t ShiftJIS = 8;
    static constexpr std::uint32_t ISOLatin2 = 9;
    /// UTF-16 with a byte-order mark: written little-endian with the mark; read as the mark says,
    /// and big-endian without one.
    static constexpr std::uint32_t Unicode = 10;
    static constexpr std::uint32_t WindowsCP1251 = 11;
    static constexpr std::uint32_t WindowsCP1252 = 12;
    static constexpr std::uint32_t WindowsCP1253 = 13;
    static constexpr std::uint32_t WindowsCP1254 = 14;
    static constexpr std::uint32_t WindowsCP1250 = 15;
    static constexpr std::uint32_t ISO2022JP = 21;
    static constexpr std::uint32_t MacOSRoman = 30;
    /// UTF-32 with a mark, as `Unicode`.
    static constexpr std::uint32_t UTF32 = 0x8C000100;
    /// Without a mark: none is written, and one that is read stays in the text.
    static constexpr std::uint32_t UTF16BigEndian = 0x90000100;
    static constexpr std::uint32_t UTF16LittleEndian = 0x94000100;
    static constexpr std::uint32_t UTF32BigEndian = 0x98000100;
    static constexpr std::uint32_t UTF32LittleEndian = 0x9C000100;
};

/// The text in an encoding; nothing when the encoding is not known or cannot represent the text.
///
/// A text that only its precomposed form can represent goes as that form (e and a combining acute
/// accent are one character of ISO Latin 1). Bytes that are no UTF-8 are units of their own
/// (base/Unicode.hpp), which only the UTF-16 forms and the non-lossy ASCII represent. With
/// `allowLossy` every text can be represented: what the encoding lacks is written as `lossyASCII`
/// writes it, with "?" at the worst. Any thread.
[[nodiscard]] std::optional<Data> dataUsingEncoding(std::string_view text, std::uint32_t encoding,
                                                    bool allowLossy = false);

/// The text of bytes in an encoding; nothing when the encoding is not known or the bytes are no
/// text in it. An odd last byte of UTF-16 is left out; its surrogates that stand alone become
/// U+FFFD, but for the units of bytes that are no UTF-8. Any thread.
[[nodiscard]] std::optional<std::string> stringWithData(BytesView bytes, std::uint32_t encoding);

/// The text encoded without loss and decoded again; the text as it is where it cannot be
/// represented.
[[nodiscard]] std::string convertToEncoding(std::string_view text, std::uint32_t encoding);

} // namespace tav
