#include "log/LogRecord.hpp"

#include "base/OldStyleText.hpp"

#include <algorithm>
#include <array>
#include <charconv>

namespace tav {
namespace {

constexpr std::size_t mostEntries = 12;

/// A number as it reads in the form.
class NumberText {
  public:
    explicit NumberText(int number)
        : end_(std::to_chars(digits_.data(), digits_.data() + digits_.size(), number).ptr) {}
    NumberText(const NumberText&) = delete;
    NumberText& operator=(const NumberText&) = delete;

    [[nodiscard]] std::string_view text() const {
        return {digits_.data(), static_cast<std::size_t>(end_ - digits_.data())};
    }

  private:
    std::array<char, 12> digits_ = {};
    char* end_;
};

/// Appends entries one by one, whatever is in them.
class AnyEntries {
  public:
    explicit AnyEntries(std::string& out) : out_(out) {}

    void append(std::string_view begin, std::string_view text) {
        out_ += begin;
        OldStyleText::appendText(out_, text);
        out_ += ";\n";
    }

  private:
    std::string& out_;
};

/// Writes entries into room that was made for all of them before, which is where the time of a
/// record goes otherwise. Gives up at the first text that has to be escaped.
class PlainEntries {
  public:
    explicit PlainEntries(char* at) : at_(at) {}

    template <std::size_t size>
    void append(const char (&begin)[size], std::string_view text) {
        const OldStyleText::Quoting quoting = OldStyleText::quotingOf(text);
        if (!isWhole_ || quoting == OldStyleText::Quoting::Escaped) {
            isWhole_ = false;
            return;
        }
        put({begin, size - 1});
        if (quoting == OldStyleText::Quoting::Bare) {
            put(text);
        } else {
            *at_++ = '"';
            put(text);
            *at_++ = '"';
        }
        put(";\n");
    }

    /// Behind the last entry; null when there were others.
    [[nodiscard]] char* end() const { return isWhole_ ? at_ : nullptr; }

  private:
    void put(std::string_view text) { at_ = std::copy(text.begin(), text.end(), at_); }

    char* at_;
    bool isWhole_ = true;
};

/// More than names, blanks and quotes of all entries together take.
constexpr std::size_t mostAroundTexts = std::size_t{12} * 32;

std::size_t roomFor(const LogFields& fields) {
    std::size_t room = mostAroundTexts;
    for (const std::string_view text :
         {fields.message.value_or(""), fields.sourceFile, fields.function, fields.module,
          fields.extra.value_or(""), fields.date}) {
        room += text.size();
    }
    return room + (fields.message2 == nullptr ? 0 : fields.message2->asString()->size());
}

/// All entries behind the data. The keys ascend here as they do in the text.
template <class Entries>
void appendEntries(Entries& entries, const LogFields& fields) {
    if (!fields.date.empty()) {
        entries.append("    date = ", fields.date);
    }
    if (fields.extra) {
        entries.append("    extra = ", *fields.extra);
    }
    if (!fields.function.empty()) {
        entries.append("    function = ", fields.function);
    }
    if (fields.message) {
        entries.append("    message = ", *fields.message);
    }
    if (fields.message2 != nullptr) {
        entries.append("    message2 = ", *fields.message2->asString());
    }
    if (!fields.module.empty()) {
        entries.append("    module = ", fields.module);
    }
    if (!fields.sourceFile.empty()) {
        entries.append("    sourceFile = ", fields.sourceFile);
    }
    if (fields.sourceLine > 0) {
        entries.append("    sourceLine = ", NumberText(fields.sourceLine).text());
    }
    entries.append("    type = ", NumberText(fields.type).text());
}

} // namespace

Record recordOf(const LogFields& fields) {
    Record record;
    record.reserve(mostEntries);
    record.set("type", fields.type);
    if (fields.message) {
        record.set("message", *fields.message);
    }
    if (fields.message2 != nullptr) {
        record.set("message2", *fields.message2);
    }
    if (!fields.sourceFile.empty()) {
        record.set("sourceFile", fields.sourceFile);
    }
    if (fields.sourceLine > 0) {
        record.set("sourceLine", fields.sourceLine);
    }
    if (!fields.function.empty()) {
        record.set("function", fields.function);
    }
    if (!fields.module.empty()) {
        record.set("module", fields.module);
    }
    if (fields.extra) {
        record.set("extra", *fields.extra);
    }
    if (fields.data != nullptr) {
        record.set("data", *fields.data);
    }
    if (!fields.date.empty()) {
        record.set("date", fields.date);
    }
    return record;
}

bool isKeptByText(const LogFields& fields) {
    return fields.message2 == nullptr || fields.message2->asString() != nullptr;
}

void appendRecordText(std::string& out, const LogFields& fields) {
    out += "{\n";
    if (fields.data != nullptr) {
        out += "    data = ";
        OldStyleText::appendBytes(out, *fields.data);
        out += ";\n";
    }
    const std::size_t begin = out.size();
    out.resize(begin + roomFor(fields));
    PlainEntries plain(out.data() + begin);
    appendEntries(plain, fields);
    if (const char* end = plain.end()) {
        out.resize(static_cast<std::size_t>(end - out.data()));
    } else {
        out.resize(begin);
        AnyEntries any(out);
        appendEntries(any, fields);
    }
    out += '}';
}

Record recordOfText(const Record& read) {
    Record record;
    record.reserve(mostEntries);
    for (const char* key : {"type", "message", "message2", "sourceFile", "sourceLine", "function",
                            "module", "extra", "data", "date"}) {
        const Value* value = read.find(key);
        if (value == nullptr) {
            continue;
        }
        const std::string_view name = key;
        record.set(key, name == "type" || name == "sourceLine" ? Value(value->intValue()) : *value);
    }
    return record;
}

} // namespace tav
