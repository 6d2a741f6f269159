#include "base/XMLPropertyListWriter.hpp"

#include "base/Base64.hpp"
#include "base/ByteBuffer.hpp"
#include "base/NumberText.hpp"
#include "base/Unicode.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>

namespace tav::PropertyList::internal {
namespace {

constexpr std::string_view header = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                    "<plist version=\"1.0\">\n";
constexpr std::string_view footer = "</plist>\n";

constexpr std::size_t lineWidth = 76;
constexpr std::size_t tabWidth = 8;

enum class ByteClass : std::uint8_t { Plain, Escaped, Refused, High };

constexpr std::array<ByteClass, 256> byteClasses = [] {
    std::array<ByteClass, 256> classes{};
    for (std::size_t i = 0; i < classes.size(); ++i) {
        classes[i] = i >= 0x80 ? ByteClass::High : i < 0x20 ? ByteClass::Refused : ByteClass::Plain;
    }
    classes['\t'] = classes['\n'] = ByteClass::Plain;
    classes['&'] = classes['<'] = classes['>'] = classes['\r'] = ByteClass::Escaped;
    return classes;
}();

std::string_view escapeOf(char c) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    default:
        // As it stands it would come back as a line feed.
        return "&#13;";
    }
}

class Writer {
  public:
    explicit Writer(Error& error) : error_(error) {}

    std::optional<Data> document(const Value& root) {
        out_.append(header);
        if (!value(root, 0)) {
            return std::nullopt;
        }
        out_.append(footer);
        return out_.take();
    }

  private:
    bool value(const Value& value, std::size_t level);
    bool array(const Value::Array& array, std::size_t level);
    bool dictionary(const Value::Dictionary& dictionary, std::size_t level);
    bool date(Date date);
    bool text(std::string_view text);
    void integer(const Value& value);
    void data(BytesView bytes, std::size_t level);
    void uid(std::uint64_t uid, std::size_t level);

    bool fail(const char* reason) {
        error_.reason = reason;
        return false;
    }
    void indent(std::size_t level) { out_.append(level, '\t'); }

    ByteBuffer out_;
    Error& error_;
};

bool Writer::value(const Value& value, std::size_t level) {
    indent(level);
    switch (value.type()) {
    case Value::Type::Boolean:
        out_.append(value.boolValue() ? "<true/>\n" : "<false/>\n");
        return true;
    case Value::Type::Integer:
        integer(value);
        return true;
    case Value::Type::Real: {
        std::string number;
        appendReal(number, value.doubleValue());
        out_.append("<real>");
        out_.append(number);
        out_.append("</real>\n");
        return true;
    }
    case Value::Type::String:
        out_.append("<string>");
        if (!text(*value.asString())) {
            return false;
        }
        out_.append("</string>\n");
        return true;
    case Value::Type::Bytes:
        data(*value.asData(), level);
        return true;
    case Value::Type::Date:
        return date(*value.asDate());
    case Value::Type::UID:
        uid(value.asUID()->value, level);
        return true;
    case Value::Type::Array:
        return array(*value.asArray(), level);
    case Value::Type::Dictionary:
        return dictionary(*value.asDictionary(), level);
    }
    return false;
}

bool Writer::array(const Value::Array& array, std::size_t level) {
    if (level >= maximumDepth) {
        return fail("nested too deep");
    }
    if (array.empty()) {
        out_.append("<array/>\n");
        return true;
    }
    out_.append("<array>\n");
    for (const Value& element : array) {
        if (!value(element, level + 1)) {
            return false;
        }
    }
    indent(level);
    out_.append("</array>\n");
    return true;
}

bool Writer::dictionary(const Value::Dictionary& dictionary, std::size_t level) {
    if (level >= maximumDepth) {
        return fail("nested too deep");
    }
    if (dictionary.empty()) {
        out_.append("<dict/>\n");
        return true;
    }
    out_.append("<dict>\n");
    for (const Value::Dictionary::Entry* entry : dictionary.sorted()) {
        indent(level + 1);
        out_.append("<key>");
        if (!text(entry->first)) {
            return false;
        }
        out_.append("</key>\n");
        if (!value(entry->second, level + 1)) {
            return false;
        }
    }
    indent(level);
    out_.append("</dict>\n");
    return true;
}

bool Writer::date(Date date) {
    const std::optional<std::string> iso = date.iso8601();
    if (!iso) {
        return fail("a date that no calendar reaches");
    }
    out_.append("<date>");
    out_.append(*iso);
    out_.append("</date>\n");
    return true;
}

bool Writer::text(std::string_view text) {
    std::size_t start = 0;
    bool isASCII = true;
    for (std::size_t i = 0; i < text.size(); ++i) {
        switch (byteClasses[static_cast<unsigned char>(text[i])]) {
        case ByteClass::Plain:
            break;
        case ByteClass::High:
            isASCII = false;
            break;
        case ByteClass::Escaped:
            out_.append(text.substr(start, i - start));
            out_.append(escapeOf(text[i]));
            start = i + 1;
            break;
        case ByteClass::Refused:
            return fail("a text holds a control character, for which XML has no form");
        }
    }
    out_.append(text.substr(start));
    if (!isASCII) {
        if (!isValidUTF8(text)) {
            return fail("a text is no UTF-8");
        }
        if (text.find("\xEF\xBF\xBE") != std::string_view::npos ||
            text.find("\xEF\xBF\xBF") != std::string_view::npos) {
            return fail("a text holds U+FFFE or U+FFFF, for which XML has no form");
        }
    }
    return true;
}

void Writer::integer(const Value& value) {
    char digits[24];
    const auto negative = value.asSigned();
    const auto end =
        negative ? std::to_chars(digits, digits + sizeof digits, *negative)
                 : std::to_chars(digits, digits + sizeof digits, value.unsignedLongLongValue());
    out_.append("<integer>");
    out_.append(digits, static_cast<std::size_t>(end.ptr - digits));
    out_.append("</integer>\n");
}

void Writer::data(BytesView bytes, std::size_t level) {
    out_.append("<data>\n");
    const std::size_t indentation = std::min(level * tabWidth, lineWidth - 16);
    const std::size_t perLine = (lineWidth - indentation) / 4 * 3;
    for (std::size_t at = 0; at < bytes.size(); at += perLine) {
        indent(level);
        out_.append(base64FromData(bytes.subspan(at, std::min(perLine, bytes.size() - at))));
        out_.append('\n');
    }
    indent(level);
    out_.append("</data>\n");
}

void Writer::uid(std::uint64_t uid, std::size_t level) {
    out_.append("<dict>\n");
    indent(level + 1);
    out_.append("<key>CF$UID</key>\n");
    static_cast<void>(value(Value(uid), level + 1));
    indent(level);
    out_.append("</dict>\n");
}

} // namespace

std::optional<Data> writeXML(const Value& value, Error& error) {
    return Writer(error).document(value);
}

} // namespace tav::PropertyList::internal
