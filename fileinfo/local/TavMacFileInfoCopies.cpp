// Copies of local items, and what the copies with options lean on.

#include "base/Exception.hpp"
#include "base/Format.hpp"
#include "fileinfo/ChunkCopy.hpp"
#include "fileinfo/CopyFolder.hpp"
#include "fileinfo/local/LocalCopySupport.hpp"
#include "fileinfo/local/LocalOpenFile.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "foundation/FileManager.hpp"
#include "platform/Localization.hpp"

#include <algorithm>
#include <limits>

namespace tav {

using internal::LocalOpenFile;

namespace {

constexpr std::string_view couldNotRead = "Could not read the file \"%@\".";

template <class... Arguments>
[[noreturn]] void raise(std::string_view reason, const Arguments&... arguments) {
    throw Exception("copyToFile", tav::format(localizedString(reason), arguments...));
}

/// Raises unless a file is to be copied, onto a file or to where nothing stands.
void checkEnds(TavMacFileInfo& source, TavBaseFileInfo* destination) {
    if (destination != nullptr && destination->exists() && !destination->isFile()) {
        raise("Can't copy the file \"%@\" because the destination \"%@\" is not a file.",
              source.humanFriendlyPath(), destination->humanFriendlyPath());
    }
    if (!source.exists()) {
        raise("Can't copy the file \"%@\" because it does not exist.", source.humanFriendlyPath());
    }
    if (!source.isFile()) {
        raise("Can't copy the file \"%@\" because it is not a file.", source.humanFriendlyPath());
    }
}

/// Whether both paths lead to one file.
bool areOneFile(std::string_view path, std::string_view otherPath) {
    FileSystem& files = FileSystem::current();
    const auto other = files.targetAttributes(otherPath);
    const auto own = other.ok() ? files.targetAttributes(path) : other;
    return own.ok() && own.value().identity == other.value().identity;
}

/// What came of the item's file; "(null)" for null.
std::optional<std::string> shownPath(TavBaseFileInfo* item) {
    return item != nullptr ? std::optional(item->humanFriendlyPath()) : std::nullopt;
}

/// Whether a file of this back-end has failed under a token.
bool hasFailed(const OpenFileToken& token) {
    const auto* local = dynamic_cast<const LocalOpenFile*>(&token);
    return local != nullptr && !local->failure().isNone();
}

/// The two files of a copy. Unless it comes to its end they are closed, and what it has made of the
/// destination is taken away.
class PendingCopy {
  public:
    PendingCopy(TavMacFileInfo& source, TavBaseFileInfo* destination)
        : source_(source), destination_(destination) {}
    PendingCopy(const PendingCopy&) = delete;
    PendingCopy& operator=(const PendingCopy&) = delete;
    ~PendingCopy() {
        if (!isEnded_) {
            // The reason why it did not end is what the caller gets, whatever these raise.
            quietly([this] { closeDestination(); });
            quietly([this] { closeSource(); });
            quietly([this] { removeDestination(); });
        }
    }

    /// Makes the destination when it is missing, and opens both.
    void open() {
        if (asMacFileInfo(destination_) != nullptr && !destination_->exists()) {
            isTouched_ = true;
            static_cast<void>(TavMacFileInfo::fileInfoCreateFileWithFullPath(destination_->path()));
        }
        reading_ = source_.openFileForReading();
        if (!reading_) {
            raise("Could not open the file \"%@\" for reading.", source_.humanFriendlyPath());
        }
        writing_ = destination_ != nullptr ? destination_->openFileForWriting() : nullptr;
        if (!writing_) {
            raise("Could not open the file \"%@\" for writing.", shownPath(destination_));
        }
        isTouched_ = true;
    }

    /// Nothing when there was nothing to be had this time.
    std::optional<Data> read(FileRange range) {
        std::optional<Data> data = source_.fileContentsWithRange(range, reading_.get());
        if (!data && hasFailed(*reading_)) {
            raise(couldNotRead, source_.humanFriendlyPath());
        }
        return data;
    }

    void write(Data data, FileRange range) {
        if (destination_->setFileContentsWithRange(data, range, writing_.get()) !=
            Status::Success) {
            raiseNotWritten();
        }
        reading_->giveBack(std::move(data));
    }

    void close() {
        closeDestination();
        closeSource();
        if (hasFailed(*writing_)) {
            raiseNotWritten();
        }
    }

    /// Nothing is taken away any more.
    void end() { isEnded_ = true; }

  private:
    template <class Action>
    static void quietly(Action action) noexcept {
        try {
            action();
        } catch (...) {
            return;
        }
    }

    [[noreturn]] void raiseNotWritten() {
        raise("Could not write the file \"%@\".", shownPath(destination_));
    }
    void closeDestination() {
        if (writing_) {
            destination_->closeFile(writing_.get());
        }
    }
    void closeSource() {
        if (reading_) {
            source_.closeFile(reading_.get());
        }
    }
    void removeDestination() {
        if (isTouched_) {
            destination_->remove();
        }
    }

    TavMacFileInfo& source_;
    TavBaseFileInfo* destination_;
    std::shared_ptr<OpenFileToken> reading_;
    std::shared_ptr<OpenFileToken> writing_;
    bool isTouched_ = false; ///< What is at the destination is of this copy's making.
    bool isEnded_ = false;
};

} // namespace

bool TavMacFileInfo::cloneRange(FileRange range, OpenFileToken* readFileUserData,
                                TavBaseFileInfo* destination, OpenFileToken* writeFileUserData) {
    LocalOpenFile* const from = LocalOpenFile::stillOpen(readFileUserData);
    LocalOpenFile* const to = LocalOpenFile::stillOpen(writeFileUserData);
    if (from == nullptr || to == nullptr || destination == nullptr) {
        return false;
    }
    const WholeFileRange wide{range.location, range.length};
    return to->cloneRange(*from, wide) ||
           (internal::isPlainLocalItem(*this) && internal::isPlainLocalItem(*destination) &&
            to->copyRange(*from, wide));
}

CopySupport* TavMacFileInfo::copySupport() { return &internal::LocalCopySupport::shared(); }

Status TavMacFileInfo::copyTo(TavBaseFileInfo* destination) {
    return copyTo(destination, name(), nullptr);
}

Status TavMacFileInfo::copyTo(TavBaseFileInfo* destination, FileInfoPtr* outNewItem) {
    return copyTo(destination, name(), outNewItem);
}

Status TavMacFileInfo::copyTo(TavBaseFileInfo* destination, std::string_view withName,
                              FileInfoPtr* outNewItem) {
    if (asMacFileInfo(destination) == nullptr) {
        return TavPathBasedFileInfo::copyTo(destination, withName, outNewItem);
    }
    if (!exists()) {
        return Status::BadParameter;
    }
    const std::optional<FileInfoPtr> folder = internal::folderToCopyInto(*destination);
    if (!folder) {
        return Status::BadParameter;
    }
    FileInfoPtr target = *folder ? (*folder)->find(withName) : nullptr;
    const Status status = target ? copyPath(path(), target->path()) : Status::Failure;
    if (status == Status::Success) {
        target->refresh();
    }
    if (outNewItem != nullptr) {
        *outNewItem = status == Status::Success ? std::move(target) : nullptr;
    }
    return status == Status::Success ? status : Status::Failure;
}

void TavMacFileInfo::copyToFile(TavBaseFileInfo* destination, const ProgressDelegate* withProgress,
                                void* userData) {
    if (destination != nullptr && destination->isEqualTo(this)) {
        return;
    }
    checkEnds(*this, destination);
    // Another name for the very file: opening it for writing would empty the source.
    if (destination != nullptr && asMacFileInfo(destination) != nullptr &&
        areOneFile(path(), destination->path())) {
        return;
    }

    // A size that cannot be had reads as 0, and an empty copy would look like a good one.
    if (!_cacheAttributes()) {
        raise(couldNotRead, humanFriendlyPath());
    }
    // As everywhere here 32 bits of it, whatever a subclass answers.
    const auto total = static_cast<std::uint32_t>(size());
    const std::uint64_t chunkSize = std::clamp<std::uint64_t>(
        preferredChunkSize(), 1, std::numeric_limits<std::uint32_t>::max());
    const auto report = [&](float percent) {
        return withProgress != nullptr && withProgress->copyingFile &&
               withProgress->copyingFile(*this, *destination, percent, userData);
    };
    const auto reportChunk = [&](float done) {
        if (report(done * 100.0F / static_cast<float>(total))) {
            raise("The file copy was canceled.");
        }
    };

    PendingCopy copy(*this, destination);
    copy.open();
    float done = 0; // of single precision, as it is told; what remains is counted exactly
    std::uint64_t offset = 0;
    while (offset < total) {
        if (_cancelCopy.load(std::memory_order_relaxed)) {
            internal::throwCancelled(*this);
        }
        const FileRange range{static_cast<std::uint32_t>(offset),
                              static_cast<std::uint32_t>(std::min(chunkSize, total - offset))};
        std::optional<Data> chunk = copy.read(range);
        if (!chunk) {
            continue;
        }
        const auto length = static_cast<float>(range.length);
        reportChunk(done + length / 2.0F);
        if (!chunk->empty()) { // nothing at a place behind the end would make zeros up to there
            copy.write(std::move(*chunk), range);
        }
        offset += range.length;
        done += length;
        reportChunk(done);
    }
    copy.close();
    const FileInfoPtr dated = destination->resolvedFileInfo();
    if (dated) {
        dated->setCreationDate(creationDate());
        dated->setModificationDate(modificationDate());
    }
    report(100);
    copy.end();
}

} // namespace tav
