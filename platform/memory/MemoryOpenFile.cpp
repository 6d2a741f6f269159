#include "platform/memory/MemoryOpenFile.hpp"

#include <algorithm>
#include <cerrno>
#include <limits>

namespace tav {

namespace {

constexpr std::uint64_t largestOffset = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t largestSize = std::uint64_t{1} << 30U;

} // namespace

MemoryOpenFile::MemoryOpenFile(MemoryFileSystem& files, MemoryNode& node, std::string_view path,
                               const OpenOptions& options)
    : files_(files), node_(&node), path_(path), isWritable_(options.write),
      appends_(options.append) {
    MemoryTree::hold(node);
}

MemoryOpenFile::~MemoryOpenFile() { letGo(); }

void MemoryOpenFile::letGo() {
    if (node_ != nullptr) {
        files_.tree_.release(*std::exchange(node_, nullptr));
    }
}

SystemError MemoryOpenFile::begin(std::string_view operation) {
    files_.note("OpenFile." + std::string(operation), path_);
    return node_ == nullptr ? SystemError(EBADF) : SystemError();
}

SystemError MemoryOpenFile::beginChange(std::string_view operation) {
    const SystemError error = begin(operation);
    if (!error.isNone() || !isWritable_) {
        return SystemError(EBADF);
    }
    return files_.isReadOnly ? SystemError(EROFS) : SystemError();
}

std::size_t MemoryOpenFile::copyTo(std::uint64_t offset, std::span<std::byte> buffer) const {
    const BytesView content = node_->content;
    const auto from = static_cast<std::size_t>(std::min<std::uint64_t>(offset, content.size()));
    const BytesView bytes = content.subspan(from, std::min(buffer.size(), content.size() - from));
    std::copy(bytes.begin(), bytes.end(), buffer.begin());
    return bytes.size();
}

Result<FileAttributes> MemoryOpenFile::attributes() {
    const SystemError error = begin("attributes");
    return error.isNone() ? Result(node_->attributes) : error;
}

Result<std::size_t> MemoryOpenFile::read(std::span<std::byte> buffer) {
    if (const SystemError error = begin("read"); !error.isNone()) {
        return error;
    }
    const std::size_t got = copyTo(position_, buffer);
    position_ += got;
    return got;
}

Result<std::size_t> MemoryOpenFile::readAt(std::uint64_t offset, std::span<std::byte> buffer) {
    if (const SystemError error = begin("readAt"); !error.isNone()) {
        return error;
    }
    return offset > largestOffset ? Result<std::size_t>(SystemError(EINVAL))
                                  : Result(copyTo(offset, buffer));
}

Result<std::size_t> MemoryOpenFile::writeWhatFits(BytesView bytes) {
    if (bytes.empty()) {
        return std::size_t{0};
    }
    const std::uint64_t size = node_->content.size();
    const std::uint64_t offset = appends_ ? size : position_;
    // What is overwritten needs no room, also where the capacity was lowered since.
    const std::uint64_t end = std::max(size, std::min(files_.roomFor(*node_), largestSize));
    if (offset >= end) {
        return SystemError(offset >= largestSize ? EFBIG : ENOSPC);
    }
    const auto fitting =
        static_cast<std::size_t>(std::min<std::uint64_t>(end - offset, bytes.size()));
    files_.tree_.writeAt(*node_, offset, bytes.first(fitting), files_.takeTime());
    position_ = offset + fitting;
    return fitting;
}

Result<std::size_t> MemoryOpenFile::writeOnce(BytesView bytes) {
    const SystemError error = beginChange("writeOnce");
    return error.isNone() ? writeWhatFits(bytes) : error;
}

SystemError MemoryOpenFile::write(BytesView bytes) {
    SystemError error = beginChange("write");
    while (error.isNone() && !bytes.empty()) {
        const auto written = writeWhatFits(bytes);
        error = written.error();
        bytes = bytes.subspan(written.ok() ? written.value() : 0);
    }
    return error;
}

Result<std::uint64_t> MemoryOpenFile::position() {
    const SystemError error = begin("position");
    return error.isNone() ? Result(position_) : error;
}

SystemError MemoryOpenFile::setPosition(std::uint64_t offset) {
    const SystemError error = begin("setPosition");
    if (!error.isNone() || offset > largestOffset) {
        return error.isNone() ? SystemError(EINVAL) : error;
    }
    position_ = offset;
    return {};
}

SystemError MemoryOpenFile::setSize(std::uint64_t size) {
    if (const SystemError error = beginChange("setSize"); !error.isNone()) {
        return error;
    }
    if (size > node_->content.size() && (size > largestSize || size > files_.roomFor(*node_))) {
        return SystemError(size > largestSize ? EFBIG : ENOSPC);
    }
    files_.tree_.resize(*node_, size, files_.takeTime());
    return {};
}

Result<DataStretch> MemoryOpenFile::nextData(std::uint64_t offset) {
    if (const SystemError error = begin("nextData"); !error.isNone()) {
        return error;
    }
    if (offset > largestOffset) {
        return SystemError(EINVAL);
    }
    const std::uint64_t size = node_->content.size();
    return offset < size ? Result(DataStretch{offset, size})
                         : Result<DataStretch>(SystemError(ENXIO));
}

SystemError MemoryOpenFile::cloneRange(OpenFile& /*from*/, std::uint64_t /*fromOffset*/,
                                       std::uint64_t length, std::uint64_t /*offset*/) {
    const SystemError error = beginChange("cloneRange");
    return error.isNone() && length != 0 ? SystemError(EOPNOTSUPP) : error;
}

void MemoryOpenFile::forgetCached() {}

int MemoryOpenFile::descriptor() const { return -1; }

SystemError MemoryOpenFile::setModificationDate(Date date) {
    const SystemError error = begin("setModificationDate");
    return error.isNone() ? files_.setDate(*node_, date) : error;
}

Result<Data> MemoryOpenFile::extendedAttribute(std::string_view name) {
    SystemError error = begin("extendedAttribute");
    error = error.isNone() ? files_.errorOfAttributeName(name) : error;
    return error.isNone() ? MemoryFileSystem::attributeOf(*node_, name) : error;
}

SystemError MemoryOpenFile::setExtendedAttribute(std::string_view name, BytesView value) {
    SystemError error = begin("setExtendedAttribute");
    error = error.isNone() ? files_.errorOfAttributeName(name) : error;
    if (error.isNone() && value.size() > MemoryFileSystem::largestAttribute) {
        return SystemError(E2BIG);
    }
    return error.isNone() ? files_.setAttribute(*node_, name, value) : error;
}

SystemError MemoryOpenFile::sync() { return begin("sync"); }

SystemError MemoryOpenFile::close() {
    const SystemError error = begin("close");
    letGo();
    return error;
}

} // namespace tav
