#pragma once

#include "base/Data.hpp"
#include "base/Result.hpp"
#include "platform/LargeBuffer.hpp"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <thread>

namespace tav {

class OpenFile;

/// Reads a large file in pieces, a few of them ahead of whoever takes them, on a thread of its own:
/// what is done with the pieces need not wait for their reading.
///
/// Made, used and destroyed by one thread, which does not close the file meanwhile; its position
/// stays. The end waits for the read that is under way.
class ReadAhead {
  public:
    /// Files from this size on are worth a thread.
    static constexpr std::uint64_t smallestFile = std::uint64_t{8} << 20U;

    /// Begins to read at an offset. Null for a file that cannot be read beside, and when there is
    /// no memory or no thread to be had. The file must outlive it; a piece has at least one byte.
    [[nodiscard]] static std::unique_ptr<ReadAhead> start(OpenFile& file, std::uint64_t begin,
                                                          std::uint64_t end, std::size_t pieceSize);
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;
    ~ReadAhead();

    /// Where the next piece begins.
    [[nodiscard]] std::uint64_t position() const { return position_; }

    /// The next piece, good until the next one is asked for. Only the last one is shorter than the
    /// others: up to the end that was given, or to that of the file; behind it there is an empty
    /// one. What could not be read is the last, too, and answered once.
    Result<BytesView> next();

  private:
    ReadAhead(OpenFile& file, std::uint64_t begin, std::uint64_t end, std::size_t pieceSize,
              LargeBuffer buffer);

    static constexpr std::size_t pieceCount = 4;
    struct Piece {
        std::size_t length = 0;
        SystemError error;
    };

    void readAll();
    bool waitForRoom();
    Piece readPiece();
    void add(Piece piece);
    void giveBack();
    [[nodiscard]] std::span<std::byte> placeOf(std::uint64_t number) const;

    OpenFile& file_;
    const std::uint64_t end_;
    const std::size_t pieceSize_;
    const LargeBuffer buffer_;
    std::uint64_t position_; ///< The taker's.
    std::uint64_t offset_;   ///< The reader's.
    bool holdsPiece_ = false;

    std::mutex mutex_;
    std::condition_variable pieceAdded_;
    std::condition_variable roomMade_;
    // Under the lock:
    std::array<Piece, pieceCount> pieces_;
    std::uint64_t added_ =
        0; ///< Pieces so far; the one after the next lies beside the first again.
    std::uint64_t freed_ = 0; ///< Of those, how many are not needed any more.
    bool isLastAdded_ = false;
    bool isStopping_ = false;

    std::jthread reader_;
};

} // namespace tav
