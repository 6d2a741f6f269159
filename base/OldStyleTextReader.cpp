#include "base/OldStyleText.hpp"
#include "base/SingleByteTables.hpp"
#include "base/Unicode.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tav::OldStyleText {
namespace {

constexpr std::string_view lineSeparator = "\xE2\x80\xA8";
constexpr std::string_view paragraphSeparator = "\xE2\x80\xA9";

enum : std::uint8_t { Space = 1, Word = 2 };

constexpr std::array<std::uint8_t, 256> byteClasses = [] {
    std::array<std::uint8_t, 256> classes = {};
    for (const char c : std::string_view(" \t\n\v\f\r")) {
        classes[static_cast<unsigned char>(c)] = Space;
    }
    for (const char c : std::string_view("0123456789abcdefghijklmnopqrstuvwxyz"
                                         "ABCDEFGHIJKLMNOPQRSTUVWXYZ_$/:.-")) {
        classes[static_cast<unsigned char>(c)] = Word;
    }
    return classes;
}();

bool isOf(std::uint8_t byteClass, char c) {
    return byteClasses[static_cast<unsigned char>(c)] == byteClass;
}

/// The value of a hexadecimal digit, or -1.
int hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char small = static_cast<char>(c | 0x20);
    return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

constexpr std::uint64_t eachByte(char c) {
    return 0x0101010101010101U * static_cast<unsigned char>(c);
}

/// Whether one of the eight bytes is 0.
bool hasZero(std::uint64_t bytes) {
    return ((bytes - eachByte(1)) & ~bytes & eachByte('\x80')) != 0;
}

std::uint64_t eightBytes(const char* at) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, at, sizeof bytes);
    return bytes;
}

class Reader {
  public:
    explicit Reader(std::string_view text)
        : begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {}

    std::optional<Value> read(PropertyList::Error* outError);

  private:
    Value root();
    Value value();
    Value array();
    Value dictionary();
    Value bytes();
    /// The entries up to the character that closes them, or to the end of a list without braces.
    void entries(Value::Dictionary& dictionary, bool hasBraces);
    bool entry(Value::Dictionary& dictionary);
    std::string text();
    std::string quoted(char quote);
    std::string word();

    void escaped(std::string& out);
    void escapedUnit(std::string& out);
    int hexDigits(const char* at, char16_t& unit) const;
    const char* findQuoteOrBackslash(char quote) const;

    /// What dictionaries there had before is what the next has room for, as long as the room that
    /// was not used stays in proportion to the text.
    void reserve(Value::Dictionary& dictionary);

    bool skipSpace();
    bool skipComment();
    bool opens(const char* at);
    [[nodiscard]] bool has(std::string_view text) const {
        return std::string_view(at_, static_cast<std::size_t>(end_ - at_)).starts_with(text);
    }
    void fail(const char* reason) { failAt(at_, reason); }
    void failAt(const char* at, const char* reason) {
        if (reason_ == nullptr) {
            reason_ = reason;
            failedAt_ = at;
        }
    }
    [[nodiscard]] bool failed() const { return reason_ != nullptr; }

    const char* begin_;
    const char* at_;
    const char* end_;
    const char* reason_ = nullptr;
    const char* failedAt_ = nullptr;
    std::size_t depth_ = 0;
    std::array<std::size_t, 8> usualSizes_ = {12, 12, 4, 4, 4, 4, 4, 4};
    std::size_t unusedRoom_ = 0; ///< In bytes.
};

std::optional<Value> Reader::read(PropertyList::Error* outError) {
    Value value = root();
    if (!failed()) {
        return value;
    }
    if (outError != nullptr) {
        outError->reason = reason_;
        outError->line = static_cast<std::size_t>(1 + std::count(begin_, failedAt_, '\n'));
        outError->offset = static_cast<std::size_t>(failedAt_ - begin_);
    }
    return std::nullopt;
}

Value Reader::root() {
    if (at_ == end_) {
        fail("nothing to read");
        return {};
    }
    if (!skipSpace()) {
        return Value::Dictionary();
    }
    const char* start = at_;
    Value value = this->value();
    if (failed() || !skipSpace()) {
        return value;
    }
    if (value.asString() == nullptr) {
        fail("more than one value");
        return {};
    }
    at_ = start;
    Value::Dictionary dictionary;
    entries(dictionary, false);
    return dictionary;
}

Value Reader::value() {
    switch (at_ == end_ ? '\0' : *at_) {
    case '{':
        return dictionary();
    case '(':
        return array();
    case '<':
        return bytes();
    default:
        return text();
    }
}

/// Steps over white space and comments; answers whether something follows them.
bool Reader::skipSpace() {
    for (;;) {
        while (end_ - at_ >= 8 && eightBytes(at_) == eachByte(' ')) {
            at_ += 8;
        }
        while (at_ != end_ && isOf(Space, *at_)) {
            ++at_;
        }
        if (at_ == end_) {
            return false;
        }
        if (*at_ == ' ') {
            continue;
        }
        if (*at_ == '/') {
            if (!skipComment()) {
                return !failed();
            }
        } else if (*at_ == '\xE2' && (has(lineSeparator) || has(paragraphSeparator))) {
            at_ += lineSeparator.size();
        } else {
            return true;
        }
    }
}

bool Reader::skipComment() {
    const std::string_view rest(at_, static_cast<std::size_t>(end_ - at_));
    if (rest.starts_with("/*")) {
        const std::size_t close = rest.find("*/", 2);
        if (close == std::string_view::npos) {
            fail("a comment that does not end");
            return false;
        }
        at_ += close + 2;
        return true;
    }
    if (!rest.starts_with("//")) {
        return false;
    }
    at_ += 2;
    while (at_ != end_ && *at_ != '\n' && *at_ != '\r' &&
           !(*at_ == '\xE2' && (has(lineSeparator) || has(paragraphSeparator)))) {
        ++at_;
    }
    return true;
}

bool Reader::opens(const char* at) {
    if (depth_ >= PropertyList::maximumDepth) {
        failAt(at, "nested too deep");
        return false;
    }
    ++depth_;
    ++at_;
    return true;
}

Value Reader::array() {
    const char* start = at_;
    if (!opens(start)) {
        return {};
    }
    Value::Array elements;
    while (skipSpace() && *at_ != ')') {
        if (elements.empty()) {
            elements.reserve(4);
        }
        elements.push_back(value());
        if (failed() || !skipSpace()) {
            break;
        }
        if (*at_ == ',') {
            ++at_;
        } else if (*at_ != ')') {
            fail("neither \",\" nor \")\" after an element");
            break;
        }
    }
    if (at_ == end_) {
        failAt(start, "an array that does not end");
    } else {
        ++at_;
    }
    --depth_;
    return elements;
}

Value Reader::dictionary() {
    const char* start = at_;
    if (!opens(start)) {
        return {};
    }
    Value::Dictionary dictionary;
    entries(dictionary, true);
    if (at_ == end_) {
        failAt(start, "a dictionary that does not end");
    } else {
        ++at_;
    }
    --depth_;
    return dictionary;
}

void Reader::reserve(Value::Dictionary& dictionary) {
    constexpr std::size_t always = 4096;
    if (unusedRoom_ > always + 4 * static_cast<std::size_t>(at_ - begin_)) {
        return;
    }
    // No entry is shorter than "a;".
    const std::size_t most = static_cast<std::size_t>(end_ - at_) / 2;
    dictionary.reserve(std::min(usualSizes_[std::min(depth_, usualSizes_.size() - 1)], most));
}

void Reader::entries(Value::Dictionary& dictionary, bool hasBraces) {
    std::size_t& usualSize = usualSizes_[std::min(depth_, usualSizes_.size() - 1)];
    const std::size_t expected = usualSize;
    while (skipSpace() && !(hasBraces && *at_ == '}')) {
        if (dictionary.empty()) {
            reserve(dictionary);
        }
        if (!entry(dictionary)) {
            failAt(at_, "an entry that does not end");
            break;
        }
    }
    if (!dictionary.empty()) {
        usualSize = dictionary.size();
        unusedRoom_ +=
            (expected - std::min(expected, dictionary.size())) * sizeof(Value::Dictionary::Entry);
    }
}

/// An entry with its ";"; one without a value has its key for it.
bool Reader::entry(Value::Dictionary& dictionary) {
    std::string key = text();
    if (failed() || !skipSpace()) {
        return false;
    }
    if (*at_ == ';') {
        ++at_;
        std::string same = key;
        dictionary.set(std::move(key), std::move(same));
        return true;
    }
    if (*at_ != '=') {
        fail("no \"=\" after a key");
        return false;
    }
    ++at_;
    if (!skipSpace()) {
        return false;
    }
    dictionary.set(std::move(key), value());
    if (failed() || !skipSpace()) {
        return false;
    }
    if (*at_ != ';') {
        fail("no \";\" after an entry");
        return false;
    }
    ++at_;
    return true;
}

/// Digits stand in pairs; white space may stand between the pairs.
Value Reader::bytes() {
    const char* start = at_;
    ++at_;
    const auto* close = static_cast<const char*>(
        at_ == end_ ? nullptr : std::memchr(at_, '>', static_cast<std::size_t>(end_ - at_)));
    if (close == nullptr) {
        failAt(start, "data that do not end");
        return {};
    }
    Data data;
    data.reserve(static_cast<std::size_t>(close - at_) / 2);
    while (at_ != close) {
        if (isOf(Space, *at_)) {
            ++at_;
            continue;
        }
        const int high = hexDigit(*at_);
        const int low = hexDigit(at_[1]);
        if (high < 0 || low < 0) {
            fail("no pair of hexadecimal digits");
            return {};
        }
        data.push_back(static_cast<std::byte>(high << 4 | low));
        at_ += 2;
    }
    ++at_;
    return data;
}

std::string Reader::text() {
    const char first = at_ == end_ ? '\0' : *at_;
    return first == '"' || first == '\'' ? quoted(first) : word();
}

std::string Reader::word() {
    const char* start = at_;
    while (at_ != end_ && isOf(Word, *at_)) {
        ++at_;
    }
    if (at_ == start) {
        fail("a character that begins no value");
    }
    return {start, at_};
}

const char* Reader::findQuoteOrBackslash(char quote) const {
    const char* at = at_;
    const std::uint64_t quotes = eachByte(quote);
    while (end_ - at >= 8) {
        const std::uint64_t bytes = eightBytes(at);
        if (hasZero(bytes ^ quotes) || hasZero(bytes ^ eachByte('\\'))) {
            break;
        }
        at += 8;
    }
    while (at != end_ && *at != quote && *at != '\\') {
        ++at;
    }
    return at;
}

std::string Reader::quoted(char quote) {
    const char* start = at_;
    ++at_;
    const char* stop = findQuoteOrBackslash(quote);
    std::string text(at_, stop);
    for (;;) {
        if (stop == end_) {
            at_ = end_;
            failAt(start, "a text that does not end");
            return {};
        }
        at_ = stop + 1;
        if (*stop == quote) {
            return text;
        }
        escaped(text);
        stop = findQuoteOrBackslash(quote);
        text.append(at_, stop);
        at_ = stop;
    }
}

/// What stands behind a backslash.
void Reader::escaped(std::string& out) {
    if (at_ == end_) {
        return;
    }
    constexpr std::string_view names = "abtnvfr";
    constexpr std::string_view named = "\a\b\t\n\v\f\r";
    const char c = *at_;
    if (c == 'U' || c == 'u') {
        escapedUnit(out);
        return;
    }
    if (c >= '0' && c <= '7') {
        unsigned byte = 0;
        for (int digits = 0; digits < 3 && at_ != end_ && *at_ >= '0' && *at_ <= '7'; ++digits) {
            byte = byte << 3 | static_cast<unsigned>(*at_++ - '0');
        }
        // The low eight bits are a character of NEXTSTEP.
        byte &= 0xFF;
        if (byte < 0x80) {
            out += static_cast<char>(byte);
        } else {
            const char16_t unit = internal::nextstepCharacters[byte - 0x80];
            out += bytesFromUTF16({unit == 0 ? u"\xFFFD" : &unit, 1});
        }
        return;
    }
    ++at_;
    const std::size_t name = names.find(c);
    out += name == std::string_view::npos ? c : named[name];
}

/// Reads up to four digits; answers how many there were.
int Reader::hexDigits(const char* at, char16_t& unit) const {
    int count = 0;
    int number = 0;
    for (; count < 4 && at + count != end_; ++count) {
        const int digit = hexDigit(at[count]);
        if (digit < 0) {
            break;
        }
        number = number << 4 | digit;
    }
    unit = static_cast<char16_t>(number);
    return count;
}

/// A unit of UTF-16; the two of a pair stand in escapes of their own.
void Reader::escapedUnit(std::string& out) {
    std::array<char16_t, 2> units = {};
    const int digits = hexDigits(at_ + 1, units[0]);
    if (digits == 0) {
        out += *at_++;
        return;
    }
    at_ += 1 + digits;
    std::size_t count = 1;
    const bool isHighSurrogate = (units[0] & 0xFC00) == 0xD800;
    if (isHighSurrogate && (has("\\U") || has("\\u")) && hexDigits(at_ + 2, units[1]) == 4 &&
        (units[1] & 0xFC00) == 0xDC00) {
        count = 2;
        at_ += 6;
    }
    out += bytesFromUTF16({units.data(), count});
}

/// The bytes of a text in UTF-16, which its byte-order mark tells; an odd byte is left out.
std::string textFromUTF16(std::string_view marked) {
    std::string units(marked.substr(2, (marked.size() - 2) / 2 * 2));
    if (marked.starts_with("\xFF\xFE")) {
        for (std::size_t i = 0; i < units.size(); i += 2) {
            std::swap(units[i], units[i + 1]);
        }
    }
    return bytesFromUTF16BigEndian(bytesOf(units));
}

} // namespace

std::optional<Value> read(std::string_view text, PropertyList::Error* outError) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (text.starts_with(mark)) {
        std::optional<Value> value = Reader(text.substr(mark.size())).read(outError);
        if (!value && outError != nullptr) {
            outError->offset += mark.size();
        }
        return value;
    }
    if (!text.starts_with("\xFE\xFF") && !text.starts_with("\xFF\xFE")) {
        return Reader(text).read(outError);
    }
    if (text.size() % 2 != 0) {
        if (outError != nullptr) {
            *outError = {"UTF-16 with half a unit", 0, text.size() - 1};
        }
        return std::nullopt;
    }
    const std::string converted = textFromUTF16(text);
    std::optional<Value> value = Reader(converted).read(outError);
    if (!value && outError != nullptr) {
        outError->offset =
            2 + 2 * utf16Length(std::string_view(converted).substr(0, outError->offset));
    }
    return value;
}

std::optional<Value> read(BytesView bytes, PropertyList::Error* outError) {
    return read(textOf(bytes), outError);
}

} // namespace tav::OldStyleText
