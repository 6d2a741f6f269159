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

/// The local time as "20091231T235959".
class DateText {
  public:
    explicit DateText(const LocalTime& time) {
        if (time.year < 0 || time.year > 9999) {
            for (const char c : format("%04d", time.year)) {
                append(c);
            }
        } else {
            append(time.year / 100);
            append(time.year % 100);
        }
        append(time.month);
        append(time.day);
        append('T');
        append(time.hour);
        append(time.minute);
        append(time.second);
    }

    [[nodiscard]] std::string_view text() const { return {text_.data(), size_}; }

  private:
    void append(char c) { text_[size_++] = c; }
    void append(int twoDigits) {
        append(static_cast<char>('0' + twoDigits / 10));
        append(static_cast<char>('0' + twoDigits % 10));
    }

    std::array<char, 24> text_ = {}; // the most that a year may take is 11
    std::size_t size_ = 0;
};

std::string_view textOrEmpty(const char* text) { return text == nullptr ? "" : text; }

void log(LogHandler& handler, int type, const internal::LogSource& source, const Value* extra,
         const Value* message2, const std::optional<std::string>& message) {
    if (type == 1 || type == 2) {
        handler.setWarningAndErrorFlag(true);
    }
    LogFields fields;
    fields.type = type;
    fields.message = message;
    fields.message2 = message2;
    fields.sourceFile = lastPathComponent(textOrEmpty(source.sourceFile));
    fields.sourceLine = source.sourceLine;
    fields.function = textOrEmpty(source.function);
    fields.module = textOrEmpty(source.module);
    std::string description;
    if (extra != nullptr) {
        if (const Data* data = extra->asData()) {
            fields.data = isSet(gLogPackets) ? data : nullptr;
        } else if (const std::string* text = extra->asString()) {
            fields.extra = *text;
        } else {
            description = extra->description();
            fields.extra = description;
        }
    }
    std::optional<DateText> date;
    if (isSet(gLogDates)) {
        fields.date = date.emplace(Clock::current().localTime()).text();
    }
    handler.logWithFields(fields);
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
    std::optional<std::string> message;
    if (form != nullptr) {
        message = formatWithArguments(form, arguments);
    }
    if (const std::shared_ptr<LogHandler> handler = LogHandler::defaultHandler()) {
        log(*handler, type, source, extra, message2, message);
    } else {
        SystemLog::current().write(message ? std::string_view(*message) : "(null)");
    }
}

} // namespace tav
