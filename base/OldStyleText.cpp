#include "base/OldStyleText.hpp"

#include "base/Unicode.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tav::OldStyleText {
namespace {

constexpr std::size_t indentation = 4;
constexpr char hexDigits[] = "0123456789abcdef";

bool isLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

class Writer {
  public:
    void value(const Value& value, std::size_t level);
    std::string take() { return std::move(out_); }

  private:
    void text(std::string_view text);
    void escaped(char16_t unit);
    void bytes(BytesView bytes);
    void array(const Value::Array& array, std::size_t level);
    void dictionary(const Value::Dictionary& dictionary, std::size_t level);
    void indent(std::size_t level) { out_.append(level * indentation, ' '); }

    std::string out_;
};

// A container inside another is indented twice, by its holder and here: the form has always been
// written so.
void Writer::value(const Value& value, std::size_t level) {
    switch (value.type()) {
    case Value::Type::Bytes:
        bytes(*value.asData());
        break;
    case Value::Type::Array:
        indent(level);
        array(*value.asArray(), level);
        break;
    case Value::Type::Dictionary:
        indent(level);
        dictionary(*value.asDictionary(), level);
        break;
    default:
        text(value.description());
        break;
    }
}

void Writer::text(std::string_view text) {
    if (!text.empty() && std::all_of(text.begin(), text.end(), isLetterOrDigit)) {
        out_ += text;
        return;
    }
    out_ += '"';
    if (isASCII(text)) {
        for (const char c : text) {
            escaped(static_cast<unsigned char>(c));
        }
    } else {
        for (const char16_t unit : utf16FromBytes(text)) {
            escaped(unit);
        }
    }
    out_ += '"';
}

void Writer::escaped(char16_t unit) {
    constexpr std::string_view named = "\a\b\t\n\v\f\r";
    constexpr std::string_view names = "abtnvfr";
    if (unit >= 0x80) {
        out_ += "\\U";
        for (int shift = 12; shift >= 0; shift -= 4) {
            out_ += hexDigits[unit >> shift & 15];
        }
        return;
    }
    const char c = static_cast<char>(unit);
    if (c == '"' || c == '\\') {
        out_ += '\\';
        out_ += c;
    } else if (const std::size_t at = named.find(c); at != std::string_view::npos) {
        out_ += '\\';
        out_ += names[at];
    } else if (c < ' ' || c == 0x7f) {
        out_ += '\\';
        for (int shift = 6; shift >= 0; shift -= 3) {
            out_ += hexDigits[unit >> shift & 7];
        }
    } else {
        out_ += c;
    }
}

void Writer::bytes(BytesView bytes) {
    out_ += '<';
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i != 0 && i % 4 == 0) {
            out_ += ' ';
        }
        const auto byte = std::to_integer<unsigned>(bytes[i]);
        out_ += hexDigits[byte >> 4];
        out_ += hexDigits[byte & 15];
    }
    out_ += '>';
}

void Writer::array(const Value::Array& array, std::size_t level) {
    out_ += "(\n";
    for (std::size_t i = 0; i < array.size(); ++i) {
        indent(level + 1);
        value(array[i], level + 1);
        out_ += i + 1 < array.size() ? ",\n" : "\n";
    }
    indent(level);
    out_ += ')';
}

void Writer::dictionary(const Value::Dictionary& dictionary, std::size_t level) {
    out_ += "{\n";
    for (const Value::Dictionary::Entry* entry : dictionary.sorted()) {
        indent(level + 1);
        text(entry->first);
        out_ += " = ";
        value(entry->second, level + 1);
        out_ += ";\n";
    }
    indent(level);
    out_ += '}';
}

} // namespace

std::string write(const Value& value) {
    Writer writer;
    writer.value(value, 0);
    return writer.take();
}

} // namespace tav::OldStyleText
