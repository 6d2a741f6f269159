#pragma once

#include "platform/SystemLog.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace tav {

/// syslog(3), facility "user", priority "notice", under the name of the program (or the one that
/// the program gave to `openlog`); and standard error where that is a terminal, since without a
/// daemon nobody else sees the line. A daemon that takes the lines slowly slows the caller down.
class LinuxSystemLog final : public SystemLog {
  public:
    void write(std::string_view line) override;
};

namespace internal {

/// Bytes of a line that go into a record. A record is one datagram, which the kernel limits to
/// about 200 KiB and the daemons to 8 KiB and more.
inline constexpr std::size_t maximumSystemLogLine = 60'000;

/// The text of the record for a line: without one line feed at the end, with "\0" for each NUL, and
/// cut, at the beginning of a character, with "... (N bytes more)" behind it.
[[nodiscard]] std::string systemLogRecord(std::string_view line);

/// A record as a terminal may get it: control characters but tab and line feed become "^[" and the
/// like, so that a file's name commands nothing.
[[nodiscard]] std::string terminalText(std::string_view record);

} // namespace internal
} // namespace tav
