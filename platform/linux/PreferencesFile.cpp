#include "platform/linux/PreferencesFile.hpp"

#include "base/PathString.hpp"
#include "base/PropertyList.hpp"
#include "platform/AtomicFile.hpp"
#include "platform/FileSystem.hpp"

#include <cerrno>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

namespace tav::internal {

namespace {

/// A file as it was read.
struct Content {
    Data bytes;
    Value::Dictionary entries;
};

/// ENOENT when there is no file, EINVAL when it is no property list of a dictionary.
Result<Content> readContent(const std::string& path) {
    Result<Data> bytes = FileSystem::current().readFile(path, PreferencesFile::maximumSize);
    if (!bytes.ok()) {
        return bytes.error();
    }
    std::optional<Value> list = PropertyList::read(bytes.value(), nullptr);
    Value::Dictionary* const entries = list ? list->asDictionary() : nullptr;
    if (entries == nullptr) {
        return SystemError(EINVAL);
    }
    return Content{std::move(bytes).value(), std::move(*entries)};
}

bool isMissing(SystemError error) {
    return error == SystemError(ENOENT) || error == SystemError(ENOTDIR);
}

/// Whether the file is to blame, and not the moment: a process without free descriptors must not
/// lose its settings.
bool isUnreadable(SystemError error) {
    switch (error.number()) {
    case EINVAL:
    case EISDIR:
    case EFBIG:
    case EACCES:
    case EIO:
        return true;
    default:
        return false;
    }
}

Result<Data> bytesOfEntries(const Value::Dictionary& entries) {
    std::optional<Data> bytes =
        PropertyList::write(Value(entries), PropertyList::Form::XML, nullptr);
    if (!bytes) {
        return SystemError(EINVAL);
    }
    if (bytes->size() > PreferencesFile::maximumSize) {
        return SystemError(EFBIG);
    }
    return std::move(*bytes);
}

/// Makes a folder and those on the way to it that are missing.
SystemError makeFolder(const std::string& path) {
    constexpr std::uint32_t forTheUser = 0700;
    SystemError error = FileSystem::current().createFolder(path, forTheUser);
    if (error == SystemError(ENOENT)) {
        const std::string parent = stringByDeletingLastPathComponent(path);
        if (parent.size() >= path.size() || parent.empty()) {
            return error;
        }
        error = makeFolder(parent);
        if (error.isNone()) {
            error = FileSystem::current().createFolder(path, forTheUser);
        }
    }
    return error == SystemError(EEXIST) ? SystemError() : error;
}

} // namespace

Result<Value::Dictionary> PreferencesFile::read() {
    // Without the lock: the file is replaced whole.
    Result<Content> content = readContent(path_);
    if (content.ok()) {
        return std::move(content).value().entries;
    }
    if (isMissing(content.error())) {
        return Value::Dictionary();
    }
    if (!isUnreadable(content.error())) {
        return content.error();
    }
    return update([](Value::Dictionary&) {}, {});
}

Result<Value::Dictionary>
PreferencesFile::update(const std::function<void(Value::Dictionary& entries)>& change,
                        const Value::Dictionary& lastKnown) {
    const Result<Descriptor> locked = lock();
    if (!locked.ok()) {
        return locked.error();
    }
    Result<Content> content = readContent(path_);
    Value::Dictionary entries;
    if (content.ok()) {
        entries = std::move(content.value().entries);
    } else if (isUnreadable(content.error())) {
        const SystemError error = setAside();
        if (!error.isNone()) {
            return error;
        }
        entries = lastKnown;
    } else if (!isMissing(content.error())) {
        return content.error();
    }

    change(entries);
    const Result<Data> bytes = bytesOfEntries(entries);
    if (!bytes.ok()) {
        return bytes.error();
    }
    const bool isSame = content.ok() ? bytes.value() == content.value().bytes : entries.empty();
    if (!isSame) {
        constexpr std::uint32_t forTheUser = 0600;
        const SystemError error = writeFileAtomically(path_, bytes.value(), forTheUser);
        if (!error.isNone()) {
            return error;
        }
    }
    return entries;
}

/// The lock holds for as long as the descriptor is open.
Result<Descriptor> PreferencesFile::lock() const {
    Result<Descriptor> file = openLock();
    if (file.error() == SystemError(ENOENT)) {
        const SystemError error = makeFolder(stringByDeletingLastPathComponent(path_));
        if (!error.isNone()) {
            return error;
        }
        file = openLock();
    }
    if (!file.ok()) {
        return file;
    }
    if (retryInterrupted([&] { return ::flock(file.value().number(), LOCK_EX); }) != 0 &&
        errno != ENOLCK && errno != EOPNOTSUPP && errno != ENOSYS) {
        return SystemError(errno);
    }
    return file;
}

Result<Descriptor> PreferencesFile::openLock() const {
    return Descriptor::open(AT_FDCWD, (path_ + ".lock").c_str(),
                            O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK, 0600);
}

SystemError PreferencesFile::setAside() const {
    constexpr int mostTries = 10'000;
    const std::string name = path_ + ".unreadable";
    SystemError error = FileSystem::current().move(path_, name, Replace::No);
    for (int number = 2; error == SystemError(EEXIST) && number < mostTries; ++number) {
        error = FileSystem::current().move(path_, name + "-" + std::to_string(number), Replace::No);
    }
    return error;
}

SystemError errorOfStoring(const Value::Dictionary& entries) {
    return bytesOfEntries(entries).error();
}

} // namespace tav::internal
