// A reader of log files that knows only what docs/formats/log.md says, none of this library's
// readers.
#include "log/LogFile.hpp"
#include "platform/FileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "testing/TemporaryFolder.hpp"

#include <array>
#include <cctype>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <unistd.h>

namespace tav {
namespace {

using Fields = std::map<std::string, std::string>;

std::string withoutWindowsLineEndings(const std::string& file) {
    const std::size_t first = file.find("\r\n");
    if (first > 20000) {
        return file;
    }
    std::string converted;
    for (std::size_t i = 0; i < file.size(); ++i) {
        if (file.compare(i, 2, "\r\n") != 0) {
            converted += file[i];
        }
    }
    return converted;
}

std::vector<std::string> payloadsOf(const std::string& unconverted) {
    const std::string file = withoutWindowsLineEndings(unconverted);
    std::vector<std::string> payloads;
    std::size_t at = 0;
    for (;;) {
        while (at < file.size() && (file[at] < '0' || file[at] > '9')) {
            ++at;
        }
        std::string digits;
        while (at < file.size() && file[at] >= '0' && file[at] <= '9') {
            digits += file[at++];
        }
        if (at == file.size()) {
            return payloads;
        }
        if (file[at] == ' ') {
            ++at;
        }
        digits.erase(0, digits.find_first_not_of('0'));
        if (digits.empty() || digits.size() > 10) {
            return payloads;
        }
        const auto length = static_cast<std::size_t>(std::stoull(digits));
        if (length > file.size() - at) {
            return payloads;
        }
        payloads.push_back(file.substr(at, length));
        at += length + 1;
        if (at >= file.size()) {
            return payloads;
        }
    }
}

void appendCodePoint(std::string& out, unsigned code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr std::array<unsigned, 4> marks = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(marks.at(static_cast<std::size_t>(more)) | code >> (6 * more));
    for (int i = more - 1; i >= 0; --i) {
        out += static_cast<char>(0x80U | (code >> (6 * i) & 0x3FU));
    }
}

/// The text of a value; bytes as the bytes themselves. Moves behind it.
std::string valueAt(std::string_view& text) {
    std::string value;
    if (text.front() == '<') {
        while (text.front() != '>') {
            text.remove_prefix(1);
            if (std::isxdigit(static_cast<unsigned char>(text.front())) != 0) {
                value += static_cast<char>(std::stoi(std::string(text.substr(0, 2)), nullptr, 16));
                text.remove_prefix(1);
            }
        }
        text.remove_prefix(1);
        return value;
    }
    if (text.front() != '"') {
        while (std::isalnum(static_cast<unsigned char>(text.front())) != 0) {
            value += text.front();
            text.remove_prefix(1);
        }
        return value;
    }
    text.remove_prefix(1);
    unsigned high = 0;
    while (text.front() != '"') {
        if (text.front() != '\\') {
            value += text.front();
            text.remove_prefix(1);
            continue;
        }
        const char kind = text[1];
        if (kind == 'U') {
            const auto unit =
                static_cast<unsigned>(std::stoul(std::string(text.substr(2, 4)), nullptr, 16));
            text.remove_prefix(6);
            if (unit >= 0xD800 && unit < 0xDC00) {
                high = unit;
            } else if (high != 0) {
                appendCodePoint(value, 0x10000 + ((high - 0xD800) << 10U) + (unit - 0xDC00));
                high = 0;
            } else if (unit >= 0xDC80 && unit <= 0xDCFF) {
                value += static_cast<char>(unit - 0xDC00);
            } else {
                appendCodePoint(value, unit);
            }
        } else if (kind >= '0' && kind <= '7') {
            value += static_cast<char>(std::stoi(std::string(text.substr(1, 3)), nullptr, 8));
            text.remove_prefix(4);
        } else {
            constexpr std::string_view names = "abtnvfr";
            const auto at = names.find(kind);
            value += at == std::string_view::npos ? kind : "\a\b\t\n\v\f\r"[at];
            text.remove_prefix(2);
        }
    }
    text.remove_prefix(1);
    return value;
}

/// A record as we write it, without objects inside.
Fields fieldsOf(std::string_view payload) {
    Fields fields;
    payload.remove_prefix(2);
    while (!payload.starts_with('}')) {
        payload.remove_prefix(4);
        const std::string key = valueAt(payload);
        payload.remove_prefix(3);
        fields[key] = valueAt(payload);
        payload.remove_prefix(2);
    }
    return fields;
}

const std::vector<std::string>& nastyTexts() {
    static const std::vector<std::string> texts = [] {
        std::string every;
        for (int i = 0; i < 256; ++i) {
            every += static_cast<char>(i);
        }
        return std::vector<std::string>{"",
                                        "word",
                                        "two words",
                                        every,
                                        "36 {\n    type = 1;\n}\n",
                                        "\"\\\a\b\t\n\v\f\r\x7F",
                                        "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80",
                                        "\xED\xA0\xBD\xED\xB8\x80",
                                        "a\r\nb",
                                        std::string(30000, 'x') + "\r\n"};
    }();
    return texts;
}

TEST(LogFormatPage, ItsReaderReadsWhatWeWrite) {
    MemoryFileSystem files;
    const FileSystem::Replacement replacement(files);
    LogFile log("/log");
    const Data data = dataFromText(std::string("\0\x01\xFF and more", 11));
    for (const std::string& text : nastyTexts()) {
        const Value second(text);
        log.addFields({.type = 1,
                       .message = text,
                       .message2 = &second,
                       .sourceFile = "a b.cc",
                       .sourceLine = 12,
                       .function = text,
                       .module = "m",
                       .extra = text,
                       .data = &data,
                       .date = "20091231T235959"});
    }
    const auto bytes = files.readFile("/log", 1U << 30U);
    const auto payloads = payloadsOf(std::string(textOf(bytes.value())));
    ASSERT_EQ(payloads.size(), nastyTexts().size());
    for (std::size_t i = 0; i < payloads.size(); ++i) {
        const std::string& text = nastyTexts()[i];
        Fields expected{{"type", "1"},   {"message", text},          {"message2", text},
                        {"extra", text}, {"sourceFile", "a b.cc"},   {"sourceLine", "12"},
                        {"module", "m"}, {"date", "20091231T235959"}};
        expected["data"] = textOf(data);
        if (!text.empty()) {
            expected["function"] = text;
        }
        EXPECT_TRUE(fieldsOf(payloads[i]) == expected) << i;
    }
}

TEST(LogFormatPage, BothReadersFindTheSamePackets) {
    const std::string record = "{\n    type = 1;\n}";
    const std::string packet = std::to_string(record.size()) + " " + record + "\n";
    const std::string lines = "8 {a = b;}\r\n8 {a = c;}\r\n";
    const std::string cases[] = {
        "",
        packet + packet,
        "\n\n x" + packet,
        packet + "0 \n" + packet,
        packet + "000" + packet,
        packet + "99 " + record,
        packet + packet.substr(0, packet.size() - 1),
        packet + "12",
        "12345",
        "000" + packet,
        "8{a = b;}" + packet,
        packet + "18446744073709551633 " + record,
        packet + "4294967313 " + record,
        lines,
        std::string(20000, ' ') + lines,
        std::string(20001, ' ') + lines,
        "9 {a = b;}\r" + lines,
        packet + std::string("\0\0\0", 3) + packet,
    };
    for (const std::string& file : cases) {
        MemoryFileSystem files;
        const FileSystem::Replacement replacement(files);
        files.addFile("/log", file);
        LogFile log("/log");
        std::string image;
        for (const std::string& payload : payloadsOf(file)) {
            image += std::to_string(payload.size()) + " " + payload + "\n";
        }
        EXPECT_EQ(log.buildFileImage(), image) << file.substr(0, 200);
    }
}

/// GNUstep's reader of property lists, a stranger to both: each payload has to please it.
TEST(LogFormatPage, PayloadsAreTextsThatGNUstepReads) {
    if (::access("/usr/bin/plparse", X_OK) != 0) {
        GTEST_SKIP() << "plparse is not installed (gnustep-base-runtime)";
    }
    const TemporaryFolder folder;
    {
        LogFile log(folder.path("log"));
        const Data data = dataFromText("abcde");
        const Value list = Value::Array{Value("a b"), Value(5), Value(data)};
        for (const char* text :
             {"word", "two words", "\"\\\t\n\r", "\xC3\xA9 \xF0\x9F\x98\x80", ""}) {
            log.addFields({.type = 3, .message = text, .sourceLine = 5, .data = &data});
            log.addFields({.type = 3, .message = text, .message2 = &list});
        }
    }
    const auto bytes = FileSystem::current().readFile(folder.path("log"), 1U << 20U);
    const auto payloads = payloadsOf(std::string(textOf(bytes.value())));
    ASSERT_EQ(payloads.size(), 10U);
    std::string command = "HOME='" + folder.path() + "' /usr/bin/plparse";
    for (std::size_t i = 0; i < payloads.size(); ++i) {
        const std::string path = folder.path("payload" + std::to_string(i));
        ASSERT_TRUE(FileSystem::current().writeFile(path, bytesOf(payloads[i]), 0600).isNone());
        command += " '" + path + "'";
    }
    std::string told;
    FILE* output = ::popen((command + " 2>&1").c_str(), "r");
    ASSERT_NE(output, nullptr);
    std::array<char, 4096> buffer = {};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), output)) {
        told.append(buffer.data(), count);
    }
    EXPECT_EQ(::pclose(output), 0) << told;
    std::size_t good = 0;
    for (std::size_t at = 0; (at = told.find("a dictionary", at)) != std::string::npos; ++at) {
        ++good;
    }
    EXPECT_EQ(good, payloads.size()) << told;
}

} // namespace
} // namespace tav
