#include "log/LogRecord.hpp"

#include "base/OldStyleText.hpp"

#include <array>
#include <charconv>
#include <cstring>

namespace tav {
namespace {

constexpr std::size_t mostEntries = 12;

/// More digits than a number has, and its sign.
constexpr std::size_t mostDigits = 12;

/// Appends entries one by one, whatever is in them.
class AnyEntries {
  public:
    explicit AnyEntries(std::string& out) : out_(out) {}

    void append(std::string_view begin, std::string_view text) {
        out_ += begin;
        OldStyleText::appendText(out_, text);
        out_ += ";\n";
    }

    void append(std::string_view begin, int number) {
        std::array<char, mostDigits> digits = {};
        const char* const end =
            std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        append(begin, {digits.data(), static_cast<std::size_t>(end - digits.data())});
    }

    void append(std::string_view begin, const Data& data) {
        out_ += begin;
        OldStyleText::appendBytes(out_, data);
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
        if (at_ != nullptr) {
            put(begin);
            at_ = OldStyleText::putText(at_, text);
        }
        end();
    }

    template <std::size_t size>
    void append(const char (&begin)[size], int number) {
        if (number < 0) {
            at_ = nullptr; // a sign wants quotes
        }
        if (at_ != nullptr) {
            put(begin);
            at_ = std::to_chars(at_, at_ + mostDigits, number).ptr;
        }
        end();
    }

    template <std::size_t size>
    void append(const char (&begin)[size], const Data& data) {
        if (at_ != nullptr) {
            put(begin);
            at_ = OldStyleText::putBytes(at_, data);
        }
        end();
    }

    /// Behind the last entry; null when there were others.
    [[nodiscard]] char* position() const { return at_; }

  private:
    template <std::size_t size>
    void put(const char (&literal)[size]) {
        std::memcpy(at_, literal, size - 1);
        at_ += size - 1;
    }
    void end() {
        if (at_ != nullptr) {
            put(";\n");
        }
    }

    char* at_;
};

/// More than names, blanks, quotes and numbers of all entries together take.
constexpr std::size_t mostAroundTexts = mostEntries * 32;

/// The keys ascend here as they do in the text.
template <class Entries>
void appendEntries(Entries& entries, const LogFields& fields) {
    if (fields.data != nullptr) {
        entries.append("    data = ", *fields.data);
    }
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
        entries.append("    sourceLine = ", fields.sourceLine);
    }
    entries.append("    type = ", fields.type);
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
    AnyEntries entries(out);
    appendEntries(entries, fields);
    out += '}';
}

char* putRecordText(char* at, const LogFields& fields) {
    *at++ = '{';
    *at++ = '\n';
    PlainEntries entries(at);
    appendEntries(entries, fields);
    char* end = entries.position();
    if (end != nullptr) {
        *end++ = '}';
    }
    return end;
}

std::size_t roomForRecordText(const LogFields& fields) {
    std::size_t room = mostAroundTexts + fields.sourceFile.size() + fields.function.size() +
                       fields.module.size() + fields.date.size();
    if (fields.message) {
        room += fields.message->size();
    }
    if (fields.extra) {
        room += fields.extra->size();
    }
    if (fields.message2 != nullptr) {
        room += fields.message2->asString()->size();
    }
    return room + (fields.data == nullptr ? 0 : OldStyleText::lengthOfBytes(fields.data->size()));
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
