// Any bytes as a log file: whatever is read, records that are added later are there afterwards.

#include "log/LogFile.hpp"
#include "platform/memory/MemoryFileSystem.hpp"

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace tav;

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

std::vector<RecordPtr> recordsOf(LogFile& log) {
    std::vector<RecordPtr> records;
    for (std::size_t i = 0; i < log.getItemCount(); ++i) {
        records.push_back(log.getItem(i));
        expect(log.getItem(i) == records.back());
    }
    expect(log.getItem(records.size()) == nullptr);
    return records;
}

bool areEqual(const RecordPtr& a, const RecordPtr& b) {
    return (a == nullptr) == (b == nullptr) && (a == nullptr || *a == *b);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    MemoryFileSystem files;
    const FileSystem::Replacement replacement(files);
    const std::string_view content = textOf(std::as_bytes(std::span(bytes, size)));
    files.addFile("/log", content);

    LogFile log("/log");
    std::vector<RecordPtr> read = recordsOf(log);
    const std::size_t count = read.size();
    expect(count <= size / 2 + 1);

    // The file's own bytes are a text, too, and may be anything.
    const Value second = Value(content.substr(0, 64));
    log.addFields({.type = 1, .message = content, .message2 = &second, .sourceLine = 3});
    log.addItem(std::make_shared<const Record>(Record{{"extra", second}}));
    expect(log.getItemCount() == count + 2);
    expect(*log.getItem(count)->findString("message") == content);
    expect(log.getItem(count)->find("sourceLine")->type() == Value::Type::Integer);

    LogFile again("/log");
    expect(again.getItemCount() >= count);
    for (std::size_t i = 0; i < count; ++i) {
        expect(areEqual(again.getItem(i), read[i]));
    }

    // A rewritten file holds just what the list holds.
    const std::size_t kept = 2 + count / 2;
    log.addItem(std::make_shared<const Record>(Record{{"message", content}}));
    const bool isTrimmed = log.getItemCount() > kept;
    log.trimLines(kept);
    expect(log.getItemCount() == (isTrimmed ? kept : count + 3));
    if (isTrimmed) {
        const auto rewritten = files.readFile("/log", std::uint64_t{1} << 40);
        expect(rewritten.ok() && textOf(rewritten.value()) == log.buildFileImage());
        LogFile last("/log");
        // Line endings inside payloads of others may be converted now.
        if (content.find('\r') == std::string_view::npos) {
            expect(last.getItemCount() == kept);
            expect(*last.getItem(kept - 1)->findString("message") == content);
        }
    }
    return 0;
}
