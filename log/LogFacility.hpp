#pragma once

#include "base/Format.hpp"
#include "base/OptionalText.hpp"
#include "base/Value.hpp"
#include "log/LogHandler.hpp"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <span>

/// The process's log. Every message has a type from 0 to 11 that can be switched on and off; the
/// switches are kept in the user's preferences. What is on becomes a record of the process's
/// handler, or a line of the system's log while there is none. Nothing here fails visibly, and all
/// of it may be called from any thread.
///
/// Types: 0 is an ordinary message, 1 and 2 are warnings and errors (which raise the handler's
/// flag), 3 is on by default as these are, 4 to 10 are verbose, 11 is a separator.
namespace tav {

inline constexpr std::size_t logTypeCount = 12;

/// The switches, as a thread may see them a little late.
extern std::array<std::atomic<bool>, logTypeCount> gLogEnable;
extern std::atomic<bool> gLogRecords; ///< For callers; the facility itself never asks.
extern std::atomic<bool> gLogPackets; ///< Whether data is put into records.
extern std::atomic<bool> gLogDates;

/// Makes the process's handler, for a nil path with the default file (`LogHandler::defaultPath`),
/// and aligns the switches with the preferences: what they are now becomes the registered default,
/// stored values win. Nothing when there is a handler: delegate and path of the first call stay.
/// The delegate is not kept alive; an empty pointer is none.
void LogInit(const std::weak_ptr<LogDelegate>& delegate, OptionalText path);
/// Releases the handler; messages go to the system's log from now on. Whoever is logging with it
/// just now finishes first.
void LogDInit();

/// False for types that there are not.
[[nodiscard]] inline bool LogIsEnabled(int type) {
    const auto index = static_cast<unsigned>(type);
    return index < logTypeCount && gLogEnable[index].load(std::memory_order_relaxed);
}

// Switches. All but that of the dates are stored in the preferences at once.

/// Nothing for types that there are not.
void LogEnable(int type, bool flag);
[[nodiscard]] bool LogIsPacketsEnabled();
[[nodiscard]] bool LogIsRecordsEnabled();
void LogEnablePackets(bool flag);
void LogEnableRecords(bool flag);
void LogEnableDates(bool flag);
/// All types, packets, records and dates.
void LogEnableAll();
void LogDisableAll();
/// The same as `LogEnableAll`.
void LogEnableVerbose();
/// All off but the types 0, 1, 2, 3 and 11. The dates stay off, unlike when a process starts; this
/// is meant.
void LogDisableVerbose();
/// Whether all types, packets and records are on; dates do not count.
[[nodiscard]] bool LogIsVerbose();

namespace internal {

/// What is known of a message besides its text. Null is nil; empty names count as nil.
struct LogSource {
    const char* module = nullptr;
    const char* sourceFile = nullptr;
    const char* function = nullptr;
    int sourceLine = -1;
};

/// Of a type that is on.
void logEnabledMessage(int type, const LogSource& source, const Value* extra, const Value* message2,
                       const char* form, std::span<const FormatArgument> arguments);

template <class... Arguments>
void logMessage(int type, const LogSource& source, const Value* extra, const Value* message2,
                const char* form, const Arguments&... arguments) {
    if constexpr (sizeof...(Arguments) == 0) {
        logEnabledMessage(type, source, extra, message2, form, {});
    } else {
        const FormatArgument list[] = {FormatArgument(arguments)...};
        logEnabledMessage(type, source, extra, message2, form, list);
    }
}

} // namespace internal

/// Logs a message of a type that is on; otherwise nothing is formatted. `module`, `sourceFile` (a
/// path, of which the last component is kept), `function` and the source line (from 1 on) go into
/// the record unless they are null or empty. `extra` goes in by its description, bytes go in as
/// they are, but only while packets are on. `message2` goes in as it is. The form is that of
/// `format`, null for a record without a message.
template <class... Arguments>
void LogMessage(int type, const char* module, const char* sourceFile, const char* function,
                int sourceLine, const Value* extra, const Value* message2, const char* form,
                const Arguments&... arguments) {
    if (LogIsEnabled(type)) {
        internal::logMessage(type, {module, sourceFile, function, sourceLine}, extra, message2,
                             form, arguments...);
    }
}

/// A message without a source.
template <class... Arguments>
void LogEtc(int type, const Value* extra, const Value* message2, const char* form,
            const Arguments&... arguments) {
    if (LogIsEnabled(type)) {
        internal::logMessage(type, {}, extra, message2, form, arguments...);
    }
}

/// An ordinary message: `Log_("Couldn't remove \"%@\".", path)`. The library logs with this alone.
template <class... Arguments>
void Log_(const char* form, const Arguments&... arguments) {
    if (LogIsEnabled(0)) {
        internal::logMessage(0, {}, nullptr, nullptr, form, arguments...);
    }
}

/// An empty record of type 11.
void LogSeparator();

} // namespace tav
