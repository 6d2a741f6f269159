#include "foundation/FileHandle.hpp"

#include "base/DataOfSize.hpp"
#include "platform/FileSystem.hpp"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tav {

std::optional<Data> internal::readFromStart(OpenFile& file, std::uint64_t maximumSize) {
    const auto attributes = file.attributes();
    if (!attributes.ok() || !file.setPosition(0).isNone()) {
        return std::nullopt;
    }
    auto content = dataOfSize(std::min(attributes.value().size, maximumSize));
    if (!content) {
        return std::nullopt;
    }
    const auto got = file.read(*content);
    return got.ok() && got.value() == content->size() ? std::move(content) : std::nullopt;
}

std::unique_ptr<FileHandle> FileHandle::fileHandleOpeningOrCreatingAtPath(std::string_view path) {
    OpenOptions options;
    options.write = true;
    options.create = true;
    options.permissions = 0700;
    auto file = FileSystem::current().open(path, options);
    return file.ok() ? std::make_unique<FileHandle>(std::move(file).value()) : nullptr;
}

int FileHandle::writeBuffer(BytesView bytes) {
    if (file_ == nullptr) {
        return EBADF;
    }
    const auto written = file_->writeOnce(bytes);
    if (!written.ok()) {
        return written.error().number();
    }
    return written.value() == bytes.size() ? 0 : EIO;
}

int FileHandle::readIntoBuffer(std::span<std::byte> buffer) {
    if (file_ == nullptr) {
        return EIO;
    }
    const auto got = file_->read(buffer);
    return got.ok() && got.value() == buffer.size() ? 0 : EIO;
}

std::optional<Data> FileHandle::readFileIntoMutableData() {
    return file_ == nullptr ? std::nullopt : internal::readFromStart(*file_, largestRead);
}

std::uint64_t FileHandle::fileSize() {
    if (file_ == nullptr) {
        return 0;
    }
    const auto attributes = file_->attributes();
    return attributes.ok() ? attributes.value().size : 0;
}

Result<std::uint64_t> FileHandle::offsetInFile() {
    return file_ == nullptr ? SystemError(EBADF) : file_->position();
}

SystemError FileHandle::seekToFileOffset(std::uint64_t offset) {
    return file_ == nullptr ? SystemError(EBADF) : file_->setPosition(offset);
}

Result<std::uint64_t> FileHandle::seekToEndOfFile() {
    if (file_ == nullptr) {
        return SystemError(EBADF);
    }
    const auto attributes = file_->attributes();
    if (!attributes.ok()) {
        return attributes.error();
    }
    const std::uint64_t end = attributes.value().size;
    const SystemError error = file_->setPosition(end);
    return error.isNone() ? Result<std::uint64_t>(end) : error;
}

Result<Data> FileHandle::readDataOfLength(std::size_t length) {
    if (file_ == nullptr) {
        return SystemError(EBADF);
    }
    auto content = dataOfSize(length);
    if (!content) {
        return SystemError(ENOMEM);
    }
    const auto got = file_->read(*content);
    if (!got.ok()) {
        return got.error();
    }
    content->resize(got.value());
    return std::move(*content);
}

SystemError FileHandle::writeData(BytesView bytes) {
    return file_ == nullptr ? SystemError(EBADF) : file_->write(bytes);
}

SystemError FileHandle::truncateFileAtOffset(std::uint64_t offset) {
    if (file_ == nullptr) {
        return SystemError(EBADF);
    }
    const SystemError error = file_->setSize(offset);
    return error.isNone() ? file_->setPosition(offset) : error;
}

SystemError FileHandle::synchronizeFile() {
    return file_ == nullptr ? SystemError(EBADF) : file_->sync();
}

SystemError FileHandle::closeFile() {
    if (file_ == nullptr) {
        return {};
    }
    const SystemError error = file_->close();
    file_.reset();
    return error;
}

} // namespace tav
