#include "log/LogRecord.hpp"

#include "base/OldStyleText.hpp"

#include <array>
#include <charconv>

namespace tav {
namespace {

constexpr std::size_t mostEntries = 12;

void appendInteger(std::string& out, int number) {
    std::array<char, 12> digits = {};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    OldStyleText::appendText(out, {digits.data(), static_cast<std::size_t>(end - digits.data())});
}

void appendEntry(std::string& out, std::string_view begin, std::string_view text) {
    out += begin;
    OldStyleText::appendText(out, text);
    out += ";\n";
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

// The keys ascend here as they do in the text.
void appendRecordText(std::string& out, const LogFields& fields) {
    out += "{\n";
    if (fields.data != nullptr) {
        out += "    data = ";
        OldStyleText::appendBytes(out, *fields.data);
        out += ";\n";
    }
    if (!fields.date.empty()) {
        appendEntry(out, "    date = ", fields.date);
    }
    if (fields.extra) {
        appendEntry(out, "    extra = ", *fields.extra);
    }
    if (!fields.function.empty()) {
        appendEntry(out, "    function = ", fields.function);
    }
    if (fields.message) {
        appendEntry(out, "    message = ", *fields.message);
    }
    if (fields.message2 != nullptr) {
        appendEntry(out, "    message2 = ", *fields.message2->asString());
    }
    if (!fields.module.empty()) {
        appendEntry(out, "    module = ", fields.module);
    }
    if (!fields.sourceFile.empty()) {
        appendEntry(out, "    sourceFile = ", fields.sourceFile);
    }
    if (fields.sourceLine > 0) {
        out += "    sourceLine = ";
        appendInteger(out, fields.sourceLine);
        out += ";\n";
    }
    out += "    type = ";
    appendInteger(out, fields.type);
    out += ";\n}";
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
