#pragma once

#include "base/OptionalText.hpp"
#include "log/LogFile.hpp"
#include "log/LogRecord.hpp"
#include "log/TimedRecursiveLock.hpp"

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string_view>

namespace tav {

class LogHandler;

/// What is told of a log, on the main thread, without anybody waiting for it: by then more records
/// may be there. An empty function is not asked for.
struct LogDelegate {
    /// After every record that was added.
    std::function<void(LogHandler&)> logItemAddedNotification;
    /// After the log lost its oldest records, or all.
    std::function<void(LogHandler&)> logTrimmedNotification;
};

/// The log file behind a lock that nobody waits for longer than 30 seconds: what cannot be done by
/// then is not done. Any thread; a thread that holds the lock may call everything.
class LogHandler : public std::enable_shared_from_this<LogHandler> {
  public:
    /// A log that holds so many records is trimmed before the next one is added. The two are far
    /// apart, so that the file is rewritten once in 22500 records.
    static constexpr std::size_t mostRecords = 25000;
    static constexpr std::size_t recordsAfterTrim = 2500;

    /// The process's own, null without one. `LogInit` makes it.
    [[nodiscard]] static std::shared_ptr<LogHandler> defaultHandler();

    /// Opens the log at the path, or for nil the one in the user's folder of logs; see `LogFile`.
    /// The delegate is not kept alive. The handler is always shared: a notification that waits for
    /// its delivery does not keep it, and is dropped when it is gone.
    [[nodiscard]] static std::shared_ptr<LogHandler>
    withDelegateAndPath(std::weak_ptr<LogDelegate> delegate, OptionalText path);

    LogHandler(const LogHandler&) = delete;
    LogHandler& operator=(const LogHandler&) = delete;
    /// Gives the log file back and ends the role of the process's own handler, WHICHEVER HOLDS IT,
    /// unless `LogDInit` has ended this one's: a second handler that goes takes the first one out.
    /// When somebody went away with the lock, nothing is given back.
    ~LogHandler();

    /// Whether a warning or an error was logged since the flag was last set to false.
    [[nodiscard]] bool getWarningAndErrorFlag() const { return mWarningAndErrorFlag; }
    void setWarningAndErrorFlag(bool flag) { mWarningAndErrorFlag = flag; }

    /// Null when there is none, or none any more.
    [[nodiscard]] std::shared_ptr<LogDelegate> delegate() const;
    void setDelegate(std::weak_ptr<LogDelegate> delegate);

    /// Tries for 30 seconds.
    [[nodiscard]] bool lockWithTimeout();
    void unlock();

    /// Writes all packets to a file, atomically. False when that, or the lock, failed.
    [[nodiscard]] bool saveToFile(std::string_view path);
    /// Null at and past the count, for what cannot be read, and without the lock.
    [[nodiscard]] RecordPtr getItem(std::size_t index);
    /// 0 without the lock.
    [[nodiscard]] std::size_t getItemCount();
    /// Removes all records, from the file too.
    void clear();

    /// Adds a record, after trimming the log when it is full. Dropped without the lock.
    void logWithDataFromDictionary(const RecordPtr& record);
    /// The same for `recordOf(fields)`, which is not made before somebody asks for it.
    void logWithFields(const LogFields& fields);

    /// The log file of a nil path: "Library/Logs/NAME Log" in the home folder, where NAME is the
    /// file name of the main bundle without its extension. Empty without a home folder.
    [[nodiscard]] static std::string defaultPath();

  private:
    class Hold;
    friend void LogDInit();
    using Notification = std::function<void(LogHandler&)> LogDelegate::*;

    LogHandler(std::weak_ptr<LogDelegate> delegate, std::string_view path);
    void post(Notification notification);
    template <class Add>
    void add(const Add& addTo);

    std::unique_ptr<TimedRecursiveLock> mLock;
    mutable std::mutex delegateMutex_;
    std::weak_ptr<LogDelegate> mDelegate;
    std::atomic<bool> mayHaveDelegate_; ///< Spares those who log the mutex.
    std::unique_ptr<LogFile> mLogFile;
    std::atomic<bool> mWarningAndErrorFlag = false;
    std::atomic<bool> hasLeftRole_ = false; ///< `LogDInit` has taken it out.
};

/// Where the process's own handler is kept. Any thread may log with it while another takes it out:
/// whoever got it before has it until he is done.
class LogHandlerPlace {
  public:
    [[nodiscard]] std::shared_ptr<LogHandler> get();
    /// Answers what was there.
    std::shared_ptr<LogHandler> exchange(std::shared_ptr<LogHandler> handler);

  private:
    std::mutex mutex_;
    std::shared_ptr<LogHandler> handler_;
};

/// The one place. It is there during the whole life of the process, its end included.
[[nodiscard]] LogHandlerPlace& gLogHandler();

} // namespace tav
