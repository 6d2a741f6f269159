#include "base/PathString.hpp"
#include "foundation/FileManager.hpp"
#include "platform/FileSystem.hpp"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <utility>

namespace tav {

namespace {

constexpr std::size_t bufferSize = 0x100000;
constexpr std::size_t smallChunk = 0x40000;
constexpr std::uint64_t largeFile = 0x500000; // beyond it the whole buffer is a chunk

using OpenedFile = Result<std::unique_ptr<OpenFile>>;

OpenedFile createDestination(std::string_view path) {
    const std::string folder = stringByDeletingLastPathComponent(path);
    recursivelyCreatePath(folder);
    OpenOptions options;
    options.write = true;
    options.create = true;
    options.mustBeNew = true;
    return FileSystem::current().open(
        stringByAppendingPathComponent(folder, lastPathComponent(path)), options);
}

class Copy {
  public:
    Copy(OpenFile& source, OpenFile& destination, std::span<std::byte> buffer,
         FileCopyProgress progressFunction, void* context)
        : source_(source), destination_(destination), buffer_(buffer),
          progressFunction_(progressFunction), context_(context) {}

    SystemError run() {
        const auto attributes = source_.attributes();
        if (!attributes.ok()) {
            return attributes.error();
        }
        total_ = attributes.value().size;
        const std::size_t chunk = total_ > largeFile ? buffer_.size() : smallChunk;
        report(0);
        while (offset_ < total_ && !isCancelled_) {
            const auto wanted =
                static_cast<std::size_t>(std::min<std::uint64_t>(chunk, total_ - offset_));
            const SystemError error = step(buffer_.first(wanted));
            if (!error.isNone()) {
                return error;
            }
        }
        return {};
    }

    [[nodiscard]] bool isCancelled() const { return isCancelled_; }

  private:
    SystemError step(std::span<std::byte> chunk) {
        const auto got = source_.read(chunk);
        if (!got.ok()) {
            return got.error();
        }
        if (got.value() == 0) {
            return SystemError(EIO); // somebody cut the source
        }
        const SystemError error = destination_.write(chunk.first(got.value()));
        if (!error.isNone()) {
            return error;
        }
        offset_ += got.value();
        report(got.value());
        return {};
    }

    void report(std::uint64_t bytes) {
        isCancelled_ = progressFunction_ != nullptr &&
                       progressFunction_(context_, bytes, offset_, total_) != 0;
    }

    OpenFile& source_;
    OpenFile& destination_;
    std::span<std::byte> buffer_;
    FileCopyProgress progressFunction_;
    void* context_;
    std::uint64_t total_ = 0;
    std::uint64_t offset_ = 0;
    bool isCancelled_ = false;
};

} // namespace

Status copyFile(std::string_view source, std::string_view destination,
                FileCopyProgress progressFunction, void* context) {
    std::unique_ptr<std::byte[]> buffer(new (std::nothrow) std::byte[bufferSize]);
    if (buffer == nullptr) {
        return Status::Failure;
    }
    FileSystem& files = FileSystem::current();
    const OpenedFile from = files.open(source, {});
    if (!from.ok()) {
        return from.error().status();
    }
    // Whether it can be removed changes nothing; only a file is, also when a folder came since.
    static_cast<void>(files.removeFile(source));

    const OpenedFile to = createDestination(destination);
    SystemError error = to.error();
    bool isCancelled = false;
    if (to.ok()) {
        Copy copy(*from.value(), *to.value(), std::span(buffer.get(), bufferSize), progressFunction,
                  context);
        error = copy.run();
        isCancelled = copy.isCancelled();
    }
    buffer.reset();
    const SystemError sourceClosing = from.value()->close();
    const SystemError destinationClosing = to.ok() ? to.value()->close() : SystemError();
    if (error.isNone()) {
        error = destinationClosing.isNone() ? sourceClosing : destinationClosing;
    }
    if (isCancelled) {
        static_cast<void>(files.removeFile(source));
        return Status::Failure;
    }
    if (!error.isNone()) {
        static_cast<void>(files.removeFile(source));
    }
    return error.status();
}

} // namespace tav
