#pragma once

#include "base/Data.hpp"
#include "base/Result.hpp"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include <fcntl.h>
#include <sys/types.h>

namespace tav {

/// An open file of the kernel, closed when the value ends. Moving hands it on; what was moved from
/// is not open. Never inherited by a program that this one starts (where `open` made it).
class Descriptor {
  public:
    Descriptor() = default;
    /// Takes over an open descriptor, or -1 for none.
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            reset();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { reset(); }

    /// Opens a path, close-on-exec and never as the controlling terminal. Relative paths count from
    /// the open folder, or from the working directory for `AT_FDCWD`.
    static Result<Descriptor> open(int folder, const char* path, int flags, ::mode_t mode);
    /// The same from the working directory, for what exists.
    static Result<Descriptor> open(const char* path, int flags) {
        return open(AT_FDCWD, path, flags, 0);
    }

    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    /// For system calls; -1 when not open.
    [[nodiscard]] int number() const { return number_; }
    /// Hands the descriptor to the caller, who closes it.
    [[nodiscard]] int release() { return std::exchange(number_, -1); }
    /// Closes now, without an answer: for what was only read.
    void reset() { static_cast<void>(close()); }
    /// Closes now and answers what the kernel still had to say about earlier writes.
    SystemError close();

  private:
    int number_ = -1;
};

/// Calls again for as long as a signal interrupts. The call answers as system calls do: negative
/// for a failure, with `errno`.
template <class Call>
auto retryInterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// Repeats a transfer until all of `size` is done, the call answers 0 (the end), or it fails. The
/// call gets how much is done and how much remains. How much is done at the end, or the failure.
template <class Call>
Result<std::size_t> transferFully(std::size_t size, Call call) {
    std::size_t done = 0;
    while (done < size) {
        const ::ssize_t moved = retryInterrupted([&] { return call(done, size - done); });
        if (moved < 0) {
            return SystemError(errno);
        }
        if (moved == 0) {
            break;
        }
        done += static_cast<std::size_t>(moved);
    }
    return done;
}

/// Reads once, what is there: 0 is the end.
Result<std::size_t> readSome(const Descriptor& file, std::span<std::byte> buffer);

/// Reads until the buffer is full or the file ends.
Result<std::size_t> readFully(const Descriptor& file, std::span<std::byte> buffer);

/// Reads from here to the end, whatever size the file claims to have (those of /proc claim 0).
/// `expectedSize` is how much room is made at first. EFBIG when there is more than `maximumSize`,
/// ENOMEM when it does not fit into memory.
Result<Data> readToEnd(const Descriptor& file, std::uint64_t expectedSize,
                       std::uint64_t maximumSize);

/// Closes every descriptor from `first` on, for a process that is about to become another program.
void closeDescriptorsFrom(int first);

/// Writes all of it. After a failure an unknown part is written.
SystemError writeFully(const Descriptor& file, BytesView content);

} // namespace tav
