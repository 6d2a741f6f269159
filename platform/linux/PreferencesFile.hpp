#pragma once

#include "base/Result.hpp"
#include "base/Value.hpp"
#include "platform/linux/Descriptor.hpp"

#include <cstdint>
#include <functional>
#include <string>

namespace tav::internal {

/// A property list that several processes change. It is replaced whole, under the lock of a file
/// beside it (`path.lock`, which stays); where the file system knows no locks, without.
///
/// A file that cannot be read, or is no dictionary, is set aside as `path.unreadable` (then
/// `path.unreadable-2`, ...), never overwritten. Files are read and written through
/// `FileSystem::current()`. One thread at a time.
class PreferencesFile {
  public:
    /// More is neither read nor written.
    static constexpr std::uint64_t maximumSize = 16U << 20U;

    explicit PreferencesFile(std::string path) : path_(std::move(path)) {}

    /// The entries; none when there is no file, or when it was set aside.
    Result<Value::Dictionary> read();

    /// Reads anew, has the entries changed and puts them in place; they are answered. Nothing is
    /// written when nothing changes. The folders on the way are made, for the user alone. What is
    /// changed is `lastKnown` when the file had to be set aside. EINVAL for what XML cannot hold,
    /// EFBIG when it would grow too large. Waits for as long as another process holds the lock.
    Result<Value::Dictionary> update(const std::function<void(Value::Dictionary& entries)>& change,
                                     const Value::Dictionary& lastKnown);

  private:
    [[nodiscard]] Result<Descriptor> lock() const;
    [[nodiscard]] Result<Descriptor> openLock() const;
    [[nodiscard]] SystemError setAside() const;

    std::string path_;
};

/// Whether such a file holds these entries: none for yes, otherwise EINVAL or EFBIG.
SystemError errorOfStoring(const Value::Dictionary& entries);

} // namespace tav::internal
