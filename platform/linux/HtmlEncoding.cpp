#include "platform/linux/HtmlEncoding.hpp"

#include "base/Unicode.hpp"
#include "base/WellFormedUTF8.hpp"
#include "platform/linux/HtmlTokens.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

#include <unicode/ucnv.h>

namespace tav::internal {
namespace {

/// An encoding by its names in documents, as ICU calls it, and the platform's number. Only what
/// keeps ASCII is named: markup hidden in anything else (UTF-7) is not to be found by accident.
struct Encoding {
    std::string_view label;
    const char* converter;
    std::uint32_t number;
};

constexpr std::uint32_t utf8Number = 4;
constexpr std::uint32_t unicodeNumber = 10;
constexpr Encoding windows1252 = {"windows-1252", "windows-1252", 12};
constexpr const char* utf16Big = "UTF-16BE";
constexpr const char* utf16Little = "UTF-16LE";

constexpr std::array encodings = {
    windows1252,
    Encoding{"cp1252", "windows-1252", 12},
    Encoding{"iso-8859-1", "windows-1252", 12},
    Encoding{"latin1", "windows-1252", 12},
    Encoding{"us-ascii", "windows-1252", 12},
    Encoding{"ascii", "windows-1252", 12},
    Encoding{"iso-8859-2", "ISO-8859-2", 9},
    Encoding{"latin2", "ISO-8859-2", 9},
    Encoding{"iso-8859-3", "ISO-8859-3", 0x80000203},
    Encoding{"iso-8859-4", "ISO-8859-4", 0x80000204},
    Encoding{"iso-8859-5", "ISO-8859-5", 0x80000205},
    Encoding{"iso-8859-6", "ISO-8859-6", 0x80000206},
    Encoding{"iso-8859-7", "ISO-8859-7", 0x80000207},
    Encoding{"iso-8859-8", "ISO-8859-8", 0x80000208},
    Encoding{"iso-8859-9", "windows-1254", 14},
    Encoding{"iso-8859-13", "ISO-8859-13", 0x8000020D},
    Encoding{"iso-8859-15", "ISO-8859-15", 0x8000020F},
    Encoding{"windows-874", "windows-874", 0x8000041D},
    Encoding{"tis-620", "windows-874", 0x8000041D},
    Encoding{"windows-1250", "windows-1250", 15},
    Encoding{"windows-1251", "windows-1251", 11},
    Encoding{"windows-1253", "windows-1253", 13},
    Encoding{"windows-1254", "windows-1254", 14},
    Encoding{"windows-1255", "windows-1255", 0x80000505},
    Encoding{"windows-1256", "windows-1256", 0x80000506},
    Encoding{"windows-1257", "windows-1257", 0x80000507},
    Encoding{"windows-1258", "windows-1258", 0x80000508},
    Encoding{"koi8-r", "KOI8-R", 0x80000A02},
    Encoding{"koi8-u", "KOI8-U", 0x80000A08},
    Encoding{"macintosh", "macintosh", 30},
    Encoding{"x-mac-roman", "macintosh", 30},
    Encoding{"big5", "Big5", 0x80000A03},
    Encoding{"gb2312", "GB18030", 0x80000632},
    Encoding{"gbk", "GB18030", 0x80000632},
    Encoding{"gb18030", "GB18030", 0x80000632},
    Encoding{"euc-jp", "EUC-JP", 3},
    Encoding{"shift_jis", "windows-31j", 8},
    Encoding{"shift-jis", "windows-31j", 8},
    Encoding{"euc-kr", "windows-949", 0x80000940},
};

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

/// By way of ICU, with U+FFFD for what is none of the encoding's characters.
std::string converted(std::string_view bytes, const char* converterName) {
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, CloseConverter> converter(ucnv_open(converterName, &error));
    if (U_FAILURE(error)) {
        return wellFormedUTF8(bytes);
    }
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 2);
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
    std::u16string piece(std::size_t{16} * 1024, u'\0');
    std::u16string carried;
    do {
        char16_t* out = piece.data();
        error = U_ZERO_ERROR;
        ucnv_toUnicode(converter.get(), &out, out + piece.size(), &at, end, nullptr, 1, &error);
        carried.append(piece.data(), static_cast<std::size_t>(out - piece.data()));
        // A pair must not be cut in two.
        const bool cutsPair = !carried.empty() && (carried.back() & 0xFC00U) == 0xD800;
        const char16_t first = cutsPair ? carried.back() : u'\0';
        carried.resize(carried.size() - (cutsPair ? 1 : 0));
        text += bytesFromUTF16(carried);
        carried.assign(cutsPair ? 1 : 0, first);
    } while (error == U_BUFFER_OVERFLOW_ERROR);
    return text + bytesFromUTF16(carried);
}

DecodedHtml decoded(std::string_view bytes, const Encoding& encoding) {
    return {converted(bytes, encoding.converter), encoding.number};
}

/// The converter for UTF-16 without a byte-order mark: of the units at the beginning, a fourth at
/// least have a zero on the one side, and none has one on the other. Null for other bytes.
const char* utf16WithoutMark(std::string_view bytes) {
    const std::size_t units = std::min<std::size_t>(bytes.size(), 1024) / 2;
    std::size_t zerosFirst = 0;
    std::size_t zerosSecond = 0;
    for (std::size_t i = 0; i < units; ++i) {
        zerosFirst += bytes[2 * i] == '\0' ? 1 : 0;
        zerosSecond += bytes[2 * i + 1] == '\0' ? 1 : 0;
    }
    if (zerosSecond == 0 && zerosFirst > 0 && zerosFirst >= units / 4) {
        return utf16Big;
    }
    if (zerosFirst == 0 && zerosSecond > 0 && zerosSecond >= units / 4) {
        return utf16Little;
    }
    return nullptr;
}

std::string lowered(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return lower;
}

/// The name behind "charset=" in the content of a `meta` element; empty without one.
std::string_view charsetIn(std::string_view content) {
    const std::size_t at = content.find("charset");
    if (at == std::string_view::npos) {
        return {};
    }
    content.remove_prefix(at + std::string_view("charset").size());
    content.remove_prefix(std::min(content.find_first_not_of(" \t\n\f\r"), content.size()));
    if (!content.starts_with('=')) {
        return {};
    }
    content.remove_prefix(1);
    content.remove_prefix(std::min(content.find_first_not_of(" \t\n\f\r\"'"), content.size()));
    return content.substr(0, content.find_first_of(" \t\n\f\r;\"'"));
}

/// The encoding that the document says it is in, in lower case; empty when it says nothing.
std::string declaredLabel(std::string_view html) {
    constexpr std::size_t searched = 1024;
    HtmlTokens tokens(html.substr(0, searched));
    HtmlToken token;
    while (tokens.next(token)) {
        if (token.kind != HtmlToken::Kind::StartTag || token.name != "meta") {
            continue;
        }
        if (const auto charset = token.attributes.find("charset")) {
            return lowered(*charset);
        }
        const auto equivalent = token.attributes.find("http-equiv");
        const auto content = token.attributes.find("content");
        if (content && equivalent && lowered(*equivalent) == "content-type") {
            const std::string lower = lowered(*content);
            return std::string(charsetIn(lower));
        }
    }
    return {};
}

} // namespace

DecodedHtml decodeHtml(BytesView bytes) {
    const std::string_view html = textOf(bytes);
    if (html.starts_with("\xEF\xBB\xBF")) {
        return {wellFormedUTF8(html.substr(3)), utf8Number};
    }
    if (html.starts_with("\xFE\xFF") || html.starts_with("\xFF\xFE")) {
        const bool isBig = html.starts_with('\xFE');
        return {converted(html.substr(2), isBig ? utf16Big : utf16Little), unicodeNumber};
    }
    if (const char* converter = utf16WithoutMark(html)) {
        return {converted(html, converter), unicodeNumber};
    }
    const std::string label = declaredLabel(html);
    const auto* const declared =
        std::find_if(encodings.begin(), encodings.end(),
                     [&label](const Encoding& each) { return each.label == label; });
    if (declared != encodings.end()) {
        return decoded(html, *declared);
    }
    const bool saysUTF8 = label == "utf-8" || label == "utf8" || label.starts_with("utf-16");
    if (saysUTF8 || isValidUTF8(html)) {
        return {wellFormedUTF8(html), utf8Number};
    }
    return decoded(html, windows1252);
}

} // namespace tav::internal
