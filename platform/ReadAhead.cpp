#include "platform/ReadAhead.hpp"

#include "platform/OpenFile.hpp"
#include "platform/QuietThread.hpp"

#include <algorithm>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

namespace tav {

std::unique_ptr<ReadAhead> ReadAhead::start(OpenFile& file, std::uint64_t begin, std::uint64_t end,
                                            std::size_t pieceSize) {
    if (!file.canBeReadBeside()) {
        return nullptr;
    }
    std::optional<LargeBuffer> buffer = LargeBuffer::withSize(pieceCount * pieceSize);
    if (!buffer) {
        return nullptr;
    }
    try {
        std::unique_ptr<ReadAhead> made(
            new ReadAhead(file, begin, end, pieceSize, std::move(*buffer)));
        made->reader_ = startQuietThread([&reading = *made] { reading.readAll(); });
        return made;
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const std::system_error&) {
        return nullptr;
    }
}

ReadAhead::ReadAhead(OpenFile& file, std::uint64_t begin, std::uint64_t end, std::size_t pieceSize,
                     LargeBuffer buffer)
    : file_(file), end_(end), pieceSize_(pieceSize), buffer_(std::move(buffer)), position_(begin),
      offset_(begin) {}

ReadAhead::~ReadAhead() {
    {
        const std::lock_guard lock(mutex_);
        isStopping_ = true;
    }
    roomMade_.notify_one();
}

Result<BytesView> ReadAhead::next() {
    giveBack();
    std::unique_lock lock(mutex_);
    pieceAdded_.wait(lock, [this] { return added_ != freed_ || isLastAdded_; });
    if (added_ == freed_) {
        return BytesView();
    }
    const Piece piece = pieces_[freed_ % pieceCount];
    holdsPiece_ = true;
    if (!piece.error.isNone()) {
        return piece.error;
    }
    position_ += piece.length;
    return BytesView(placeOf(freed_).first(piece.length));
}

/// The piece that the taker had. The reader is woken for some at a time: to wake it for each costs
/// more than it gains.
void ReadAhead::giveBack() {
    constexpr std::uint64_t fewPieces = pieceCount / 2;
    if (!std::exchange(holdsPiece_, false)) {
        return;
    }
    bool isRunningLow = false;
    {
        const std::lock_guard lock(mutex_);
        ++freed_;
        isRunningLow = added_ - freed_ <= fewPieces;
    }
    if (isRunningLow) {
        roomMade_.notify_one();
    }
}

void ReadAhead::readAll() {
    while (waitForRoom()) {
        add(readPiece());
    }
}

/// Whether there is anything left to read, too.
bool ReadAhead::waitForRoom() {
    std::unique_lock lock(mutex_);
    roomMade_.wait(lock, [this] { return added_ - freed_ < pieceCount || isStopping_; });
    return !isStopping_ && !isLastAdded_;
}

ReadAhead::Piece ReadAhead::readPiece() {
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(pieceSize_, end_ - offset_));
    const auto got = file_.readAt(offset_, placeOf(added_).first(wanted));
    if (!got.ok()) {
        return {0, got.error()};
    }
    offset_ += got.value();
    return {got.value(), {}};
}

void ReadAhead::add(Piece piece) {
    {
        const std::lock_guard lock(mutex_);
        pieces_[added_ % pieceCount] = piece;
        ++added_;
        isLastAdded_ = piece.length < pieceSize_ || offset_ == end_;
    }
    pieceAdded_.notify_one();
}

std::span<std::byte> ReadAhead::placeOf(std::uint64_t number) const {
    return buffer_.bytes().subspan(number % pieceCount * pieceSize_, pieceSize_);
}

} // namespace tav
