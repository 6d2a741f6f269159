#include "platform/linux/LinuxSystemLog.hpp"

#include "platform/NeverDestroyed.hpp"
#include "platform/linux/Descriptor.hpp"

#include <cerrno>
#include <new>

#include <syslog.h>
#include <unistd.h>

namespace tav {

namespace {

/// Where to cut so that no character of UTF-8 is torn; in other bytes, at the limit.
std::size_t cutPosition(std::string_view line, std::size_t limit) {
    constexpr std::size_t longestCharacter = 4;
    std::size_t position = limit;
    while (limit - position < longestCharacter && position > 0) {
        if ((static_cast<unsigned char>(line[position]) & 0xC0U) != 0x80U) {
            return position;
        }
        --position;
    }
    return limit;
}

void writeToDaemon(const std::string& record) {
    ::syslog(LOG_USER | LOG_NOTICE, "%s", record.c_str());
}

void writeToTerminal(const std::string& record) {
    if (::isatty(STDERR_FILENO) == 1) {
        // A descriptor that stays open: it is the program's.
        Descriptor standardError(STDERR_FILENO);
        static_cast<void>(
            writeFully(standardError, bytesOf(internal::terminalText(record) + "\n")));
        static_cast<void>(standardError.release());
    }
}

} // namespace

SystemLog& internal::realSystemLog() { return neverDestroyed<LinuxSystemLog>(); }

void LinuxSystemLog::write(std::string_view line) {
    const int errorBefore = errno;
    try {
        const std::string record = internal::systemLogRecord(line);
        writeToDaemon(record);
        writeToTerminal(record);
    } catch (const std::bad_alloc&) {
        // Nobody could be told of it.
    }
    errno = errorBefore;
}

std::string internal::systemLogRecord(std::string_view line) {
    if (line.ends_with('\n')) {
        line.remove_suffix(1);
    }
    std::size_t more = 0;
    if (line.size() > maximumSystemLogLine) {
        const std::size_t end = cutPosition(line, maximumSystemLogLine);
        more = line.size() - end;
        line = line.substr(0, end);
    }
    std::string record;
    record.reserve(line.size());
    for (const char byte : line) {
        if (byte == '\0') {
            record += "\\0";
        } else {
            record += byte;
        }
    }
    if (more > 0) {
        record += "... (" + std::to_string(more) + " bytes more)";
    }
    return record;
}

std::string internal::terminalText(std::string_view record) {
    std::string text;
    text.reserve(record.size());
    for (const char byte : record) {
        const auto code = static_cast<unsigned char>(byte);
        const bool isControl = (code < 0x20 && byte != '\t' && byte != '\n') || code == 0x7F;
        if (isControl) {
            text += '^';
            text += static_cast<char>(code ^ 0x40U);
        } else {
            text += byte;
        }
    }
    return text;
}

} // namespace tav
