#include "log/LogHandler.hpp"

#include "base/PathString.hpp"
#include "platform/AtomicFile.hpp"
#include "platform/Bundle.hpp"
#include "platform/MainThread.hpp"
#include "platform/NeverDestroyed.hpp"
#include "platform/UserFolders.hpp"

#include <chrono>
#include <utility>
#include <vector>

namespace tav {
namespace {

constexpr std::chrono::seconds lockTimeout{30};

/// Logs whose lock somebody has taken with him. They stay as they are.
struct LostLogs {
    std::mutex mutex;
    std::vector<std::unique_ptr<TimedRecursiveLock>> locks;
    std::vector<std::unique_ptr<LogFile>> files;
};

} // namespace

LogHandlerPlace& gLogHandler() { return internal::neverDestroyed<LogHandlerPlace>(); }

std::shared_ptr<LogHandler> LogHandlerPlace::get() {
    const std::lock_guard lock(mutex_);
    return handler_;
}

std::shared_ptr<LogHandler> LogHandlerPlace::exchange(std::shared_ptr<LogHandler> handler) {
    const std::lock_guard lock(mutex_);
    handler_.swap(handler);
    return handler;
}

std::shared_ptr<LogHandler> LogHandler::defaultHandler() { return gLogHandler().get(); }

std::shared_ptr<LogHandler> LogHandler::withDelegateAndPath(std::weak_ptr<LogDelegate> delegate,
                                                            OptionalText path) {
    const std::string place = path.isNil() ? defaultPath() : std::string(*path);
    return std::shared_ptr<LogHandler>(new LogHandler(std::move(delegate), place));
}

LogHandler::LogHandler(std::weak_ptr<LogDelegate> delegate, std::string_view path)
    : mLock(std::make_unique<TimedRecursiveLock>()), mDelegate(std::move(delegate)),
      mayHaveDelegate_(!mDelegate.expired()), mLogFile(std::make_unique<LogFile>(path)) {}

LogHandler::~LogHandler() {
    if (lockWithTimeout()) {
        mLogFile.reset();
        if (!hasLeftRole_) {
            gLogHandler().exchange(nullptr);
        }
        unlock();
        return;
    }
    auto& lost = internal::neverDestroyed<LostLogs>();
    const std::lock_guard lock(lost.mutex);
    lost.locks.push_back(std::move(mLock));
    lost.files.push_back(std::move(mLogFile));
}

std::string LogHandler::defaultPath() {
    const std::string home = UserFolders::current().home();
    const std::optional<Bundle> bundle = Bundle::mainBundle();
    if (home.empty() || !bundle) {
        return {};
    }
    const std::string name = stringByDeletingPathExtension(lastPathComponent(bundle->bundlePath()));
    const std::string folder = stringByAppendingPathComponent(home, "Library/Logs");
    return stringByAppendingPathComponent(folder, name + " Log");
}

std::shared_ptr<LogDelegate> LogHandler::delegate() const {
    if (!mayHaveDelegate_) {
        return nullptr;
    }
    const std::lock_guard lock(delegateMutex_);
    return mDelegate.lock();
}

void LogHandler::setDelegate(std::weak_ptr<LogDelegate> delegate) {
    const std::lock_guard lock(delegateMutex_);
    mDelegate.swap(delegate);
    mayHaveDelegate_ = !mDelegate.expired();
}

bool LogHandler::lockWithTimeout() { return mLock->lock(lockTimeout); }

void LogHandler::unlock() { mLock->unlock(); }

/// The lock for the length of a block, if it can be had.
class LogHandler::Hold {
  public:
    explicit Hold(LogHandler& handler) : handler_(handler), isHeld_(handler.lockWithTimeout()) {}
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    ~Hold() {
        if (isHeld_) {
            handler_.unlock();
        }
    }
    explicit operator bool() const { return isHeld_; }

  private:
    LogHandler& handler_;
    bool isHeld_;
};

bool LogHandler::saveToFile(std::string_view path) {
    const Hold hold(*this);
    return hold && mLogFile->saveToPath(path).isNone();
}

RecordPtr LogHandler::getItem(std::size_t index) {
    const Hold hold(*this);
    return hold ? mLogFile->getItem(index) : nullptr;
}

std::size_t LogHandler::getItemCount() {
    const Hold hold(*this);
    return hold ? mLogFile->getItemCount() : 0;
}

void LogHandler::clear() {
    const Hold hold(*this);
    if (hold) {
        mLogFile->clear();
        post(&LogDelegate::logTrimmedNotification);
    }
}

template <class Add>
void LogHandler::add(const Add& addTo) {
    const Hold hold(*this);
    if (!hold) {
        return;
    }
    if (mLogFile->getItemCount() >= mostRecords) {
        mLogFile->trimLines(recordsAfterTrim);
        post(&LogDelegate::logTrimmedNotification);
    }
    addTo(*mLogFile);
    post(&LogDelegate::logItemAddedNotification);
}

void LogHandler::logWithDataFromDictionary(const RecordPtr& record) {
    add([&](LogFile& file) { file.addItem(record); });
}

void LogHandler::logWithFields(const LogFields& fields) {
    add([&](LogFile& file) { file.addFields(fields); });
}

// Queued, never delivered from here: the lock is held.
void LogHandler::post(Notification notification) {
    const std::shared_ptr<LogDelegate> responder = delegate();
    if (!responder || !((*responder).*notification)) {
        return;
    }
    MainThread::current().post(
        [weak = weak_from_this(), to = std::weak_ptr(responder), notification] {
            const std::shared_ptr<LogHandler> handler = weak.lock();
            const std::shared_ptr<LogDelegate> told = to.lock();
            if (handler && told && ((*told).*notification)) {
                ((*told).*notification)(*handler);
            }
        });
}

} // namespace tav
