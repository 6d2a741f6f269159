// Contents: open files, ranges, whole reads and writes, new files.

#include "base/DataOfSize.hpp"
#include "fileinfo/VerboseLog.hpp"
#include "fileinfo/local/FileCreation.hpp"
#include "fileinfo/local/LocalOpenFile.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

#include <algorithm>
#include <cerrno>
#include <limits>

namespace tav {

namespace {

using internal::LocalOpenFile;

WholeFileRange wideRange(FileRange range) { return {range.location, range.length}; }

/// Never 0, which would get nowhere.
std::size_t chunkSizeOf(TavBaseFileInfo& item) {
    constexpr std::uint64_t largest = std::uint64_t{1} << 30U;
    return static_cast<std::size_t>(
        std::clamp<std::uint64_t>(item.preferredChunkSize(), 1, largest));
}

std::optional<Data> readInChunks(TavMacFileInfo& item, std::uint64_t total,
                                 const ProgressDelegate& progress, void* userData) {
    const auto source = LocalOpenFile::open(item.path(), LocalOpenFile::Mode::Reading);
    std::optional<Data> contents = dataOfSize(total);
    if (!source || !contents) {
        return std::nullopt;
    }
    const std::span<std::byte> bytes = *contents;
    const std::size_t chunkSize = chunkSizeOf(item);
    std::size_t done = 0;
    while (done < bytes.size()) {
        const std::size_t wanted = std::min(chunkSize, bytes.size() - done);
        const auto got = source->file().readAt(done, bytes.subspan(done, wanted));
        if (!got.ok()) {
            return std::nullopt;
        }
        if (got.value() == 0) {
            contents->resize(done); // somebody has cut the file
            break;
        }
        done += got.value();
        if (progress.readingContentsForFile(item, bytes, static_cast<std::uint32_t>(done),
                                            static_cast<std::uint32_t>(bytes.size()), userData)) {
            break;
        }
    }
    return contents;
}

bool writeInChunks(TavMacFileInfo& item, BytesView data, const ProgressDelegate& progress,
                   void* userData) {
    const auto destination = LocalOpenFile::open(item.path(), LocalOpenFile::Mode::Writing);
    if (!destination) {
        return false;
    }
    const std::size_t chunkSize = chunkSizeOf(item);
    std::size_t done = 0;
    while (done < data.size()) {
        const BytesView chunk = data.subspan(done, std::min(chunkSize, data.size() - done));
        if (!destination->write(chunk, done).isNone()) {
            return false;
        }
        done += chunk.size();
        // The counts have 32 bits, so those of 4 GiB and more wrap.
        if (progress.writingContentsForFile(item, static_cast<std::uint32_t>(done),
                                            static_cast<std::uint32_t>(data.size()), userData)) {
            break;
        }
    }
    return destination->close().isNone();
}

} // namespace

std::shared_ptr<OpenFileToken> TavMacFileInfo::openFileForReading() {
    return LocalOpenFile::open(path(), LocalOpenFile::Mode::Reading);
}

std::shared_ptr<OpenFileToken> TavMacFileInfo::openFileForWriting() {
    return LocalOpenFile::open(path(), LocalOpenFile::Mode::Writing);
}

void TavMacFileInfo::closeFile(OpenFileToken* token) {
    LocalOpenFile* const file = LocalOpenFile::stillOpen(token);
    if (file == nullptr) {
        return;
    }
    static_cast<void>(file->close());
    if (file->mode() == LocalOpenFile::Mode::Writing) {
        refresh();
    }
}

std::optional<Data> TavMacFileInfo::fileContentsWithRange(FileRange range,
                                                          OpenFileToken* readFileUserData) {
    return TavMacFileInfo::fileContentsWithWholeRange(wideRange(range), readFileUserData);
}

Status TavMacFileInfo::setFileContentsWithRange(BytesView data, FileRange range,
                                                OpenFileToken* writeFileUserData) {
    return TavMacFileInfo::setFileContentsWithWholeRange(data, wideRange(range), writeFileUserData);
}

std::uint64_t TavMacFileInfo::wholeSize() {
    if (!isFile()) {
        return size();
    }
    const Result<FileAttributes> content = FileSystem::current().targetAttributes(path());
    return content.ok() ? content.value().size : 0;
}

std::optional<Data> TavMacFileInfo::fileContentsWithWholeRange(WholeFileRange range,
                                                               OpenFileToken* readFileUserData) {
    LocalOpenFile* const file = LocalOpenFile::stillOpen(readFileUserData);
    if (file == nullptr) {
        return std::nullopt;
    }
    Result<Data> data = file->read(range);
    return data.ok() ? std::optional(std::move(data).value()) : std::nullopt;
}

Status TavMacFileInfo::setFileContentsWithWholeRange(BytesView data, WholeFileRange range,
                                                     OpenFileToken* writeFileUserData) {
    LocalOpenFile* const file = LocalOpenFile::stillOpen(writeFileUserData);
    return file != nullptr && file->write(data, range.location).isNone() ? Status::Success
                                                                         : Status::Failure;
}

std::optional<Data> TavMacFileInfo::fileContentsWithProgress(const ProgressDelegate* progress,
                                                             void* userData) {
    if (!exists() || !isFile()) {
        return std::nullopt;
    }
    if (progress != nullptr && progress->readingContentsForFile) {
        if (const std::uint64_t total = size(); total > chunkSizeOf(*this)) {
            return readInChunks(*this, total, *progress, userData);
        }
    }
    Result<Data> contents =
        FileSystem::current().readFile(path(), std::numeric_limits<std::uint64_t>::max());
    return contents.ok() ? std::optional(std::move(contents).value()) : std::nullopt;
}

bool TavMacFileInfo::setFileContents(BytesView data, const ProgressDelegate* withProgress,
                                     void* userData) {
    const bool isThere = exists();
    if (!isThere || !isFile()) {
        if (LogIsEnabled(internal::verboseLogType)) {
            Log_(isThere ? "TavMacFileInfo-setFileContents: item \"%@\" is not a file."
                         : "TavMacFileInfo-setFileContents: item \"%@\" does not exist.",
                 humanFriendlyPath());
        }
        return false;
    }
    const bool isWritten =
        data.size() <= chunkSizeOf(*this) || withProgress == nullptr ||
                !withProgress->writingContentsForFile
            ? internal::createFileAtPath(path(), data, nullptr, internal::Existing::Rewritten)
                  .isNone()
            : writeInChunks(*this, data, *withProgress, userData);
    refresh();
    return isWritten;
}

FileInfoPtr TavMacFileInfo::createFile(std::string_view name, BytesView contents,
                                       const Value::Dictionary* attributes, bool ensureUniqueName,
                                       const ProgressDelegate* withProgress, void* userData) {
    if (!ensureUniqueName) {
        FileInfoPtr target = find(name);
        if (!target) {
            return nullptr;
        }
        if (target->exists()) {
            if (target->isFolder()) {
                internal::logVerbose("TavMacFileInfo:createFile-\"%@\" is a folder!",
                                     target->description());
                return nullptr;
            }
            target->setFileContents(contents, withProgress, userData);
            return target;
        }
        const std::string path = target->path();
        static_cast<void>(
            internal::createFileAtPath(path, contents, attributes, internal::Existing::Rewritten));
        return fileInfoWithPath(path);
    }
    std::string path;
    SystemError error(EEXIST);
    for (int tries = 0; error == SystemError(EEXIST) && tries < internal::mostNamesTried; ++tries) {
        const FileInfoPtr target = find(uniqueFilename(name));
        if (!target) {
            return nullptr;
        }
        path = target->path();
        error = internal::createFileAtPath(path, contents, attributes, internal::Existing::Refused);
    }
    return error == SystemError(EEXIST) ? nullptr : fileInfoWithPath(path);
}

} // namespace tav
