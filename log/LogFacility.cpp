#include "log/LogFacility.hpp"

#include "base/PathString.hpp"
#include "platform/Clock.hpp"
#include "platform/Preferences.hpp"
#include "platform/SystemLog.hpp"

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>

namespace tav {

constinit std::array<std::atomic<bool>, logTypeCount> gLogEnable = {
    true, true, true, true, false, false, false, false, false, false, false, true};
constinit std::atomic<bool> gLogRecords = false;
constinit std::atomic<bool> gLogPackets = false;
constinit std::atomic<bool> gLogDates = true;

namespace {

constexpr std::string_view recordsKey = "LogRecords";
constexpr std::string_view packetsKey = "LogPackets";
constexpr int separatorType = 11;

std::string keyOfType(std::size_t type) { return "Logging" + std::to_string(type); }

void set(std::atomic<bool>& target, bool flag) { target.store(flag, std::memory_order_relaxed); }
bool isSet(const std::atomic<bool>& target) { return target.load(std::memory_order_relaxed); }

void setAndStore(std::atomic<bool>& target, bool flag, std::string_view key) {
    set(target, flag);
    // What cannot be stored holds in this process.
    static_cast<void>(Preferences::current().setValue(key, flag));
}

void enableAll(bool flag) {
    for (std::size_t type = 0; type < logTypeCount; ++type) {
        LogEnable(static_cast<int>(type), flag);
    }
    LogEnablePackets(flag);
    LogEnableRecords(flag);
    LogEnableDates(flag);
}

void alignWithPreferences() {
    Preferences& preferences = Preferences::current();
    Value::Dictionary defaults;
    defaults.set(std::string(recordsKey), isSet(gLogRecords));
    defaults.set(std::string(packetsKey), isSet(gLogPackets));
    for (std::size_t type = 0; type < logTypeCount; ++type) {
        defaults.set(keyOfType(type), isSet(gLogEnable[type]));
    }
    preferences.registerDefaults(defaults);
    for (std::size_t type = 0; type < logTypeCount; ++type) {
        set(gLogEnable[type], preferences.boolValue(keyOfType(type)));
    }
    set(gLogRecords, preferences.boolValue(recordsKey));
    set(gLogPackets, preferences.boolValue(packetsKey));
}

using DateMemory = std::array<char, 24>; // the most that a year may take is 11

char* putTwoDigits(char* at, int number) {
    const auto both = static_cast<unsigned>(number);
    *at++ = static_cast<char>('0' + both / 10);
    *at++ = static_cast<char>('0' + both % 10);
    return at;
}

/// The local time as "20091231T235959", in the memory.
std::string_view dateText(const LocalTime& time, DateMemory& memory) {
    char* at = memory.data();
    if (time.year < 0 || time.year > 9999) {
        const std::string year = format("%04d", time.year);
        at = std::copy(year.begin(), year.end(), at);
    } else {
        at = putTwoDigits(at, time.year / 100);
        at = putTwoDigits(at, time.year % 100);
    }
    at = putTwoDigits(at, time.month);
    at = putTwoDigits(at, time.day);
    *at++ = 'T';
    at = putTwoDigits(at, time.hour);
    at = putTwoDigits(at, time.minute);
    at = putTwoDigits(at, time.second);
    return {memory.data(), static_cast<std::size_t>(at - memory.data())};
}

std::string_view textOrEmpty(const char* text) { return text == nullptr ? "" : text; }

void log(LogHandler& handler, int type, const internal::LogSource& source, const Value* extra,
         const Value* message2, const std::optional<std::string_view>& message) {
    if (type == 1 || type == 2) {
        handler.setWarningAndErrorFlag(true);
    }
    const std::string* extraText = nullptr;
    const Data* data = nullptr;
    std::string description;
    if (extra != nullptr) {
        extraText = extra->asString();
        data = extra->asData();
        if (extraText == nullptr && data == nullptr) {
            description = extra->description();
            extraText = &description;
        }
    }
    DateMemory dateMemory;
    std::string_view date;
    if (isSet(gLogDates)) {
        date = dateText(Clock::current().localTime(), dateMemory);
    }
    handler.logWithFields(
        {.type = type,
         .message = message,
         .message2 = message2,
         .sourceFile = lastPathComponent(textOrEmpty(source.sourceFile)),
         .sourceLine = source.sourceLine,
         .function = textOrEmpty(source.function),
         .module = textOrEmpty(source.module),
         .extra = extraText == nullptr ? std::nullopt : std::optional<std::string_view>(*extraText),
         .data = isSet(gLogPackets) ? data : nullptr,
         .date = date});
}

} // namespace

void LogInit(const std::weak_ptr<LogDelegate>& delegate, OptionalText path) {
    static constinit std::mutex mutex;
    const std::lock_guard lock(mutex);
    if (gLogHandler().get()) {
        return;
    }
    gLogHandler().exchange(LogHandler::withDelegateAndPath(delegate, path));
    alignWithPreferences();
}

void LogDInit() {
    if (const std::shared_ptr<LogHandler> handler = gLogHandler().exchange(nullptr)) {
        handler->hasLeftRole_ = true;
    }
}

void LogEnable(int type, bool flag) {
    const auto index = static_cast<unsigned>(type);
    if (index < logTypeCount) {
        setAndStore(gLogEnable[index], flag, keyOfType(index));
    }
}

bool LogIsPacketsEnabled() { return isSet(gLogPackets); }

bool LogIsRecordsEnabled() { return isSet(gLogRecords); }

void LogEnablePackets(bool flag) { setAndStore(gLogPackets, flag, packetsKey); }

void LogEnableRecords(bool flag) { setAndStore(gLogRecords, flag, recordsKey); }

void LogEnableDates(bool flag) { set(gLogDates, flag); }

void LogEnableAll() { enableAll(true); }

void LogDisableAll() { enableAll(false); }

void LogEnableVerbose() { LogEnableAll(); }

void LogDisableVerbose() {
    LogDisableAll();
    for (const int type : {0, 1, 2, 3, separatorType}) {
        LogEnable(type, true);
    }
}

bool LogIsVerbose() {
    return std::all_of(gLogEnable.begin(), gLogEnable.end(), isSet) && LogIsPacketsEnabled() &&
           LogIsRecordsEnabled();
}

void LogSeparator() { LogEtc(separatorType, nullptr, nullptr, nullptr); }

void internal::logEnabledMessage(int type, const LogSource& source, const Value* extra,
                                 const Value* message2, const char* form,
                                 std::span<const FormatArgument> arguments) {
    std::string storage;
    std::optional<std::string_view> message;
    if (form != nullptr) {
        message = formatWithArguments(form, arguments, storage);
    }
    if (const std::shared_ptr<LogHandler> handler = LogHandler::defaultHandler()) {
        log(*handler, type, source, extra, message2, message);
    } else {
        SystemLog::current().write(message.value_or("(null)"));
    }
}

} // namespace tav
