#include "fileinfo/local/SmallCopy.hpp"

#include "base/Exception.hpp"
#include "base/PathString.hpp"
#include "fileinfo/CleanUp.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/ItemCopy.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/LocalCopySeries.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/Volumes.hpp"

#include <array>
#include <cerrno>
#include <span>

namespace tav::internal {

/// The file under its temporary name, which goes away unless it is put in place.
class SmallCopy::NewFile {
  public:
    explicit NewFile(const std::string& path) : path_(path) {
        OpenOptions options;
        options.write = true;
        options.create = true;
        options.mustBeNew = true;
        auto file = FileSystem::current().open(path_, options);
        if (file.ok()) {
            file_ = std::move(file).value();
            isThere_ = true;
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() { discard(); }

    [[nodiscard]] bool isThere() const { return isThere_; }
    OpenFile& operator*() { return *file_; }

    void discard() {
        if (isThere_) {
            file_.reset();
            static_cast<void>(FileSystem::current().removeFile(path_));
            isThere_ = false;
        }
    }
    /// From here on it stays, under one name or the other.
    bool putInPlace(const std::string& path) {
        file_.reset();
        isThere_ = false;
        return FileSystem::current().move(path_, path, Replace::No).isNone();
    }

  private:
    const std::string& path_;
    std::unique_ptr<OpenFile> file_;
    bool isThere_ = false;
};

std::optional<Status> SmallCopy::run() {
    const bool knewAttributes = source_._attrs != nullptr;
    const std::optional<Status> ended = copyAtOnce();
    if (!ended && !knewAttributes) {
        source_._attrs.reset(); // the steps learn them later
    }
    return ended;
}

std::optional<Status> SmallCopy::copyAtOnce() {
    if (!findPaths() || !openSource()) {
        return std::nullopt;
    }
    NewFile file(temporaryPath_);
    if (!file.isThere() || !hasRoom(file) || copy_.isCancelled.load(std::memory_order_relaxed) ||
        !copyContent(file)) {
        return std::nullopt;
    }
    learnCreationDate();
    if (const std::optional<Status> ended = report(file)) {
        return ended;
    }
    const SystemError dating = setDates(file);
    reading_.reset();
    const bool isInPlace = file.putInPlace(path_);
    if (!dating.isNone()) {
        logVerbose("Failed to set the modification date for file \"%@\".",
                   isInPlace ? path_ : temporaryPath_);
    }
    const auto made = newItem(isInPlace);
    if (copy_.newItem != nullptr) {
        *copy_.newItem = made;
    }
    return Status::Success;
}

/// Only a name that is free: what stands in the way is replaced step by step.
bool SmallCopy::findPaths() {
    std::string folder;
    isIntoFolder_ = destination_.exists();
    if (isIntoFolder_) {
        if (copy_.ensureUniqueName || !destination_.isFolder() || destination_.isAlias() ||
            destination_._itsPath.empty()) {
            return false;
        }
        folder = destination_._itsPath;
        path_ = stringByAppendingPathComponent(folder, source_.name());
        if (FileSystem::current().attributes(path_).error() != SystemError(ENOENT)) {
            return false;
        }
    } else {
        path_ = destination_._itsPath;
        folder = stringByDeletingLastPathComponent(path_);
        const auto found = FileSystem::current().attributes(folder);
        if (!found.ok() || found.value().kind != FileKind::Folder) {
            return false; // behind an alias the room is that of the volume where the alias lies
        }
    }
    if (!folder.starts_with('/') || path_ == folder) {
        return false;
    }
    temporaryPath_ = stringByAppendingPathComponent(folder, copyFileName);
    return path_ != temporaryPath_ && !path_.ends_with('/');
}

/// Whether the source is the file that the item knows, and small.
bool SmallCopy::openSource() {
    if (source_.isAlias()) {
        return false;
    }
    const Result<FileAttributes> found = lookAtSource();
    if (!found.ok() || found.value().size > largestSmallFile ||
        !isSameFile(source_._itsFileRef, found.value())) {
        return false;
    }
    if (!source_._attrs) {
        source_._attrs = std::make_unique<CachedAttributes>(found.value());
    } else if (source_._attrs->file.size != found.value().size ||
               source_._attrs->file.modificationDate != found.value().modificationDate) {
        return false; // the item goes by what it learned once
    }
    size_ = static_cast<std::size_t>(found.value().size);
    return true;
}

Result<FileAttributes> SmallCopy::lookAtSource() {
    const LocalCopySeries* const series = destination_._copySeries;
    ahead_ = series != nullptr ? series->readAhead(source_) : nullptr;
    if (ahead_ != nullptr) {
        return ahead_->attributes;
    }
    auto file = FileSystem::current().open(source_._itsPath, OpenOptions());
    if (!file.ok()) {
        return file.error();
    }
    reading_ = std::move(file).value();
    return reading_->attributes();
}

/// Of the new file, which has no content yet, it costs less to ask than by the path of its folder.
bool SmallCopy::hasRoom(NewFile& file) {
    const Result<std::uint64_t> free = Volumes::current().freeBytesOfFile(*file, temporaryPath_);
    return free.ok() && free.value() >= size_;
}

bool SmallCopy::copyContent(NewFile& file) {
    if (size_ == 0) {
        return true;
    }
    if (ahead_ != nullptr) {
        return (*file).write(ahead_->content).isNone();
    }
    std::array<std::byte, largestSmallFile> buffer; // NOLINT(*-member-init): it is read into
    const std::span<std::byte> bytes(buffer.data(), size_);
    const auto got = reading_->readAt(0, bytes);
    return got.ok() && got.value() == size_ && (*file).write(bytes).isNone();
}

bool SmallCopy::isReported() const {
    return size_ != 0 && copy_.delegate != nullptr && copy_.delegate->copyingFile;
}

/// Of the open file rather than by its path. The steps ask behind the last report, in which a
/// delegate may move the file or date it.
void SmallCopy::learnCreationDate() {
    if (ahead_ != nullptr) {
        source_._attrs->learnExtended(creationDateAttribute, ahead_->creationDate);
    } else if (!isReported()) {
        Result<Data> date = reading_->extendedAttribute(creationDateAttribute);
        source_._attrs->learnExtended(creationDateAttribute,
                                      date.ok() ? std::optional(std::move(date).value())
                                                : std::nullopt);
    }
}

/// How the copy ended when the delegate raised; otherwise it goes on.
std::optional<Status> SmallCopy::report(NewFile& file) {
    if (!isReported()) {
        return std::nullopt;
    }
    shown_ = TavMacFileInfo::fileInfoWithPath(temporaryPath_);
    try {
        const CleanUp forgetting([this] {
            temporaryPath_ = shown_->_itsPath; // the delegate may have given it another name
            shown_->refresh();                 // as when it is closed
        });
        constexpr float whole = 100;
        copy_.isCancelled.store(
            copy_.delegate->copyingFile(source_, *shown_, whole, copy_.userData),
            std::memory_order_relaxed);
        return std::nullopt;
    } catch (const Exception& exception) {
        logRaised(exception);
        file.discard();
        if (copy_.newItem != nullptr) {
            *copy_.newItem = isIntoFolder_ ? TavMacFileInfo::fileInfoWithPath(path_)
                                           : destination_.shared_from_this();
        }
        return CopyStatus::raised;
    }
}

/// Why the date of modification could not be set.
SystemError SmallCopy::setDates(NewFile& file) {
    const std::optional<Date> creation = source_.creationDate();
    if (creation) {
        if (const std::optional<std::string> text = creationDateText(*creation)) {
            static_cast<void>((*file).setExtendedAttribute(creationDateAttribute, bytesOf(*text)));
        }
    }
    if (const std::optional<Date> modification = source_.modificationDate()) {
        return (*file).setModificationDate(*modification);
    }
    return {};
}

/// The very item that the delegate was shown, where there was one.
std::shared_ptr<TavMacFileInfo> SmallCopy::newItem(bool isInPlace) {
    if (!shown_) {
        return TavMacFileInfo::fileInfoWithPath(isInPlace ? path_ : temporaryPath_);
    }
    shown_->refresh();
    if (isInPlace) {
        shown_->setPath(path_);
    }
    return shown_;
}

} // namespace tav::internal
