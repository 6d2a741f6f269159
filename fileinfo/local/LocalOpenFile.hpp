#pragma once

#include "fileinfo/OpenFileToken.hpp"
#include "platform/OpenFile.hpp"
#include "platform/ReadAhead.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace tav::internal {

/// The token of a local file. It knows where the host would write next and how long the file is at
/// least, so that reading or writing the next chunk takes one call of the host and no other.
class LocalOpenFile final : public OpenFileToken {
  public:
    enum class Mode : std::uint8_t { Reading = 0, Writing = 1 };

    LocalOpenFile(std::unique_ptr<OpenFile> file, Mode mode)
        : file_(std::move(file)), mode_(mode) {}

    /// Null when it is no regular file that can be opened. One that is opened for writing is empty
    /// then.
    [[nodiscard]] static std::shared_ptr<LocalOpenFile> open(std::string_view path, Mode mode);
    /// The token when it is one of these with its file still open; null for anything else.
    [[nodiscard]] static LocalOpenFile* stillOpen(OpenFileToken* token);

    [[nodiscard]] Mode mode() const { return mode_; }
    /// Only while it is open.
    [[nodiscard]] OpenFile& file() { return *file_; }

    /// What the file has of the range, which is nothing behind its end.
    Result<Data> read(WholeFileRange range);
    /// Writes at the location. A file that ends before it is made longer by zeros first, also when
    /// there is nothing to write.
    SystemError write(BytesView data, std::uint64_t location);
    SystemError setSize(std::uint64_t size);
    /// Lets the range share the blocks of the same range of another file; whether that went. Once
    /// it did not, it is not tried again: the two files are where they are.
    bool cloneRange(LocalOpenFile& from, WholeFileRange range);
    /// Copies a large range through memory that the kernel copies to and from fastest: whether all
    /// of it went. Of a failure nothing is noted: whoever then reads and writes the range meets it.
    /// The ranges of a large file, one after the other, are read ahead on another thread and have
    /// their place on the medium beforehand.
    bool copyRange(LocalOpenFile& from, WholeFileRange range);
    /// As of the file. Ranges to be copied are taken to follow each other up to the end of the
    /// stretch, from then on.
    Result<DataStretch> nextData(std::uint64_t offset);
    /// The file is closed afterwards, whatever is answered.
    SystemError close();

    /// The first failure of reading, writing or closing, which outlives the open file.
    [[nodiscard]] SystemError failure() const { return failure_; }
    /// That of closing alone.
    [[nodiscard]] SystemError closeFailure() const { return closeFailure_; }

  private:
    Result<BytesView> readToCopy(WholeFileRange range);
    void startReadAhead(std::uint64_t location);
    std::span<std::byte> pageBuffer(std::size_t size);
    void expectWrites(std::uint64_t location, std::uint64_t end);
    void giveBackExpected();
    SystemError growTo(std::uint64_t location);
    SystemError noted(SystemError error);

    struct PageBufferDeleter {
        void operator()(std::byte* bytes) const;
    };

    std::unique_ptr<OpenFile> file_; ///< Null when closed.
    Mode mode_;

    // Of a file that is read.
    std::unique_ptr<std::byte[], PageBufferDeleter> buffer_;
    std::size_t bufferSize_ = 0;
    std::unique_ptr<ReadAhead> readAhead_; ///< Is done with the file before that goes.
    bool mayReadAhead_ = true;             ///< Once a stretch.
    std::uint64_t copiedTo_ = 0;           ///< Behind the last range that was read to be copied.
    std::uint64_t stretchEnd_ = ~std::uint64_t{0}; ///< Behind what is copied without a hole.
    std::uint64_t aheadEnd_ = 0; ///< Up to here a large stretch is, or was, read ahead.

    // Of a file that is written.
    bool mayClone_ = true;
    /// Where the next write happens, unless that is not known.
    std::optional<std::uint64_t> position_ = 0;
    /// The file is at least as long, unless somebody else has cut it.
    std::uint64_t knownSize_ = 0;
    std::uint64_t expectedTo_ = 0; ///< Up to here it may have a place on the medium.

    SystemError failure_;
    SystemError closeFailure_;
};

} // namespace tav::internal
