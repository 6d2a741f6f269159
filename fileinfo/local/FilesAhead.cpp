#include "fileinfo/local/FilesAhead.hpp"

#include "fileinfo/local/CachedAttributes.hpp"
#include "platform/QuietThread.hpp"

#include <algorithm>
#include <new>
#include <system_error>

namespace tav::internal {

namespace {

constexpr double longestStepOfDates = 3; // seconds

} // namespace

std::unique_ptr<FilesAhead> FilesAhead::start() {
    try {
        std::unique_ptr<FilesAhead> made(new FilesAhead);
        made->buffers_ = std::make_unique_for_overwrite<std::byte[]>(mostAhead * largestSmallFile);
        made->reader_ = startQuietThread([&reading = *made] { reading.readAll(); });
        return made;
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const std::system_error&) {
        return nullptr;
    }
}

FilesAhead::~FilesAhead() {
    isEnding_.store(true, std::memory_order_relaxed);
    tell(added_ + 1);
}

std::size_t FilesAhead::room() const {
    // What the taker passed by may still be in the reader's hands.
    return std::min(reached_.load(std::memory_order_relaxed), done()) + mostAhead - added_;
}

void FilesAhead::add(std::string_view path) {
    slot(added_).path = path;
    ++added_;
}

void FilesAhead::go() { tell(added_); }

void FilesAhead::tell(std::size_t count) {
    {
        const std::lock_guard lock(mutex_);
        told_ = count;
    }
    isTold_.notify_one();
}

const ReadFile* FilesAhead::current() const {
    const std::size_t index = reached_.load(std::memory_order_relaxed);
    const Slot& slot = slots_[index % mostAhead];
    return index < done() && slot.isRead ? &slot.file : nullptr;
}

/// How many there are to read, once it is more.
std::size_t FilesAhead::waitForMore(std::size_t than) {
    std::unique_lock lock(mutex_);
    isTold_.wait(lock, [&] { return told_ > than; });
    return told_;
}

void FilesAhead::readAll() {
    std::size_t told = 0;
    for (std::size_t index = 0;; ++index) {
        if (told == index) {
            told = waitForMore(index);
        }
        if (isEnding_.load(std::memory_order_relaxed)) {
            return;
        }
        Slot& next = slot(index);
        try {
            next.isRead = index > reached_.load(std::memory_order_relaxed) &&
                          read(next, buffers_.get() + index % mostAhead * largestSmallFile);
        } catch (const std::bad_alloc&) {
            next.isRead = false;
        }
        done_.store(index + 1, std::memory_order_release);
    }
}

bool FilesAhead::read(Slot& slot, std::byte* buffer) const {
    if (slot.path.empty()) {
        return false;
    }
    const double now = clock_.now().secondsSinceReferenceDate();
    const auto file = files_.open(slot.path, OpenOptions());
    const auto found = file.ok() ? file.value()->attributes() : file.error();
    if (!found.ok() || found.value().size > largestSmallFile ||
        now - found.value().changeDate.secondsSinceReferenceDate() < longestStepOfDates) {
        return false;
    }
    slot.file.attributes = found.value();
    const std::span<std::byte> bytes(buffer, static_cast<std::size_t>(found.value().size));
    const auto got = file.value()->readAt(0, bytes);
    Result<Data> date = file.value()->extendedAttribute(creationDateAttribute);
    slot.file.creationDate = date.ok() ? std::optional(std::move(date).value()) : std::nullopt;
    slot.file.content = bytes;
    return got.ok() && got.value() == bytes.size();
}

} // namespace tav::internal
