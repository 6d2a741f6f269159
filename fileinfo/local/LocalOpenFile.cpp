#include "fileinfo/local/LocalOpenFile.hpp"

#include "platform/FileSystem.hpp"

#include <algorithm>
#include <cerrno>
#include <new>
#include <stdexcept>
#include <utility>

namespace tav::internal {

namespace {

/// Ranges up to this are read without asking first how much of them is there.
constexpr std::uint64_t smallRange = std::uint64_t{1} << 20U;
/// What is copied through a buffer of its own: less is not worth one, more is not kept in memory.
constexpr std::uint64_t smallestBuffer = std::uint64_t{128} << 10U;
constexpr std::uint64_t largestBuffer = std::uint64_t{1} << 20U;
/// The kernel copies a third faster to where a page begins than to sixteen bytes behind it, where
/// the allocator puts large blocks.
constexpr std::align_val_t pageSize{4096};
/// How far ahead a large file is given its place: each time costs the file system a transaction.
constexpr std::uint64_t expectedAtOnce = std::uint64_t{32} << 20U;

} // namespace

std::shared_ptr<LocalOpenFile> LocalOpenFile::open(std::string_view path, Mode mode) {
    OpenOptions options;
    options.write = mode == Mode::Writing;
    auto file = FileSystem::current().open(path, options);
    if (!file.ok()) {
        return nullptr;
    }
    if (mode == Mode::Writing) {
        // Some file systems take it for a rewritten file, and write it to the medium when it is
        // closed, even if it is only made empty once more.
        const auto attributes = file.value()->attributes();
        if (!attributes.ok() ||
            (attributes.value().size != 0 && !file.value()->setSize(0).isNone())) {
            return nullptr;
        }
    }
    return std::make_shared<LocalOpenFile>(std::move(file).value(), mode);
}

LocalOpenFile* LocalOpenFile::stillOpen(OpenFileToken* token) {
    auto* const local = dynamic_cast<LocalOpenFile*>(token);
    return local != nullptr && local->file_ ? local : nullptr;
}

Result<Data> LocalOpenFile::read(WholeFileRange range) {
    std::uint64_t length = range.length;
    if (length > smallRange) {
        const auto attributes = file_->attributes();
        if (!attributes.ok()) {
            return noted(attributes.error());
        }
        const std::uint64_t size = attributes.value().size;
        if (size == 0) { // those of the kernel's own files tell nothing
            length = smallRange;
        } else {
            length = range.location < size ? std::min(length, size - range.location) : 0;
        }
    }
    Data buffer;
    try {
        buffer = takeBuffer(static_cast<std::size_t>(length));
    } catch (const std::bad_alloc&) {
        return noted(SystemError(ENOMEM));
    } catch (const std::length_error&) {
        return noted(SystemError(ENOMEM));
    }
    const auto got = file_->readAt(range.location, buffer);
    if (!got.ok()) {
        return noted(got.error());
    }
    buffer.resize(got.value());
    return buffer;
}

SystemError LocalOpenFile::write(BytesView data, std::uint64_t location) {
    if (const SystemError error = growTo(location); !error.isNone()) {
        return noted(error);
    }
    if (position_ != location) {
        if (const SystemError error = file_->setPosition(location); !error.isNone()) {
            return noted(error);
        }
    }
    position_.reset();
    if (const SystemError error = file_->write(data); !error.isNone()) {
        return noted(error);
    }
    position_ = location + data.size();
    knownSize_ = std::max(knownSize_, *position_);
    return {};
}

SystemError LocalOpenFile::growTo(std::uint64_t location) {
    if (location <= knownSize_) {
        return {};
    }
    const auto attributes = file_->attributes();
    if (!attributes.ok()) {
        return attributes.error();
    }
    knownSize_ = attributes.value().size;
    return location > knownSize_ ? setSize(location) : SystemError();
}

SystemError LocalOpenFile::setSize(std::uint64_t size) {
    const SystemError error = file_->setSize(size);
    if (error.isNone()) {
        knownSize_ = size;
    }
    return noted(error);
}

bool LocalOpenFile::cloneRange(LocalOpenFile& from, WholeFileRange range) {
    mayClone_ =
        mayClone_ &&
        file_->cloneRange(*from.file_, range.location, range.length, range.location).isNone();
    if (mayClone_) {
        knownSize_ = std::max(knownSize_, range.location + range.length);
    }
    return mayClone_;
}

bool LocalOpenFile::copyRange(LocalOpenFile& from, WholeFileRange range) {
    if (range.length < smallestBuffer || range.length > largestBuffer) {
        return false;
    }
    const Result<BytesView> got = from.readToCopy(range);
    if (!got.ok() || got.value().size() != range.length) {
        return false;
    }
    expectWrites(range.location, from.aheadEnd_);
    const SystemError before = failure_;
    if (write(got.value(), range.location).isNone()) {
        return true;
    }
    failure_ = before;
    return false;
}

Result<BytesView> LocalOpenFile::readToCopy(WholeFileRange range) {
    const bool follows = range.location == std::exchange(copiedTo_, range.location + range.length);
    if (mayReadAhead_ && follows && range.length == largestBuffer) {
        mayReadAhead_ = false;
        startReadAhead(range.location);
    }
    if (readAhead_ && readAhead_->position() == range.location) {
        Result<BytesView> got = readAhead_->next();
        if (got.ok() && got.value().size() == range.length) {
            return got;
        }
    }
    readAhead_.reset();
    const std::span<std::byte> bytes = pageBuffer(static_cast<std::size_t>(range.length));
    if (bytes.empty()) {
        return SystemError(ENOMEM);
    }
    const auto got = file_->readAt(range.location, bytes);
    return got.ok() ? Result(BytesView(bytes.first(got.value()))) : got.error();
}

void LocalOpenFile::startReadAhead(std::uint64_t location) {
    const auto attributes = file_->attributes();
    const std::uint64_t end = attributes.ok() ? std::min(attributes.value().size, stretchEnd_) : 0;
    if (end >= location && end - location >= ReadAhead::smallestFile) {
        aheadEnd_ = end;
        readAhead_ = ReadAhead::start(*file_, location, end, largestBuffer);
    }
}

Result<DataStretch> LocalOpenFile::nextData(std::uint64_t offset) {
    readAhead_.reset();
    Result<DataStretch> stretch = file_->nextData(offset);
    copiedTo_ = stretch.ok() ? stretch.value().begin : offset;
    stretchEnd_ = stretch.ok() ? stretch.value().end : offset;
    mayReadAhead_ = true;
    aheadEnd_ = 0;
    return stretch;
}

/// A range that begins here and those behind it, up to the end, are about to be written.
void LocalOpenFile::expectWrites(std::uint64_t location, std::uint64_t end) {
    if (location < expectedTo_ || location >= end) {
        return;
    }
    const std::uint64_t length = std::min(expectedAtOnce, end - location);
    file_->expectWrite(location, length);
    expectedTo_ = location + length;
}

/// Empty when there is no room.
std::span<std::byte> LocalOpenFile::pageBuffer(std::size_t size) {
    if (bufferSize_ < size) {
        buffer_.reset(static_cast<std::byte*>(::operator new[](size, pageSize, std::nothrow)));
        bufferSize_ = buffer_ ? size : 0;
    }
    return {buffer_.get(), buffer_ ? size : 0};
}

void LocalOpenFile::PageBufferDeleter::operator()(std::byte* bytes) const {
    ::operator delete[](bytes, pageSize);
}

SystemError LocalOpenFile::close() {
    readAhead_.reset();
    if (expectedTo_ > knownSize_) {
        giveBackExpected();
    }
    closeFailure_ = std::exchange(file_, nullptr)->close();
    return noted(closeFailure_);
}

/// The place of what was not written after all goes back to the volume.
void LocalOpenFile::giveBackExpected() {
    const auto attributes = file_->attributes();
    if (attributes.ok()) {
        static_cast<void>(file_->setSize(attributes.value().size));
    }
}

SystemError LocalOpenFile::noted(SystemError error) {
    if (failure_.isNone()) {
        failure_ = error;
    }
    return error;
}

} // namespace tav::internal
