#pragma once

#include "platform/Seam.hpp"

#include <string_view>

namespace tav {

class SystemLog;

namespace internal {
/// The host's system log (platform/linux).
SystemLog& realSystemLog();
} // namespace internal

/// The seam to the system log. Any thread.
class SystemLog : public Seam<SystemLog, internal::realSystemLog> {
  public:
    virtual ~SystemLog() = default;

    /// Writes one line, whatever bytes it holds; it never fails visibly. A line is one record, an
    /// empty one too, and goes without a line feed at its end; line feeds inside stay. A record
    /// cannot hold a NUL: it reads "\0" there. Very long lines are cut, and the record says so.
    virtual void write(std::string_view line) = 0;
};

} // namespace tav
