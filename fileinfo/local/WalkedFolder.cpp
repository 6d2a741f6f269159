#include "fileinfo/local/WalkedFolder.hpp"

#include "base/PathString.hpp"

#include <cerrno>
#include <utility>

namespace tav::internal {

WalkedFolder::WalkedFolder(const std::string& path, WalkedFolder* outer,
                           std::unique_ptr<OpenFolder> folder, const FileAttributes& attributes)
    : path_(path), outer_(outer), depth_(outer != nullptr ? outer->depth_ + 1 : 0),
      folder_(std::move(folder)), attributes_(attributes) {}

Result<std::unique_ptr<WalkedFolder>> WalkedFolder::open(const std::string& path,
                                                         WalkedFolder* outer) {
    if (outer != nullptr) {
        // Enough of those further out are given back before this one is opened.
        WalkedFolder* farthest = outer;
        for (std::size_t open = 1; open < mostOpen && farthest != nullptr; ++open) {
            farthest = farthest->outer_;
        }
        if (farthest != nullptr) {
            farthest->folder_.reset();
        }
    }
    Result<std::unique_ptr<OpenFolder>> folder = outer != nullptr
                                                     ? outer->openFolder(lastPathComponent(path))
                                                     : FileSystem::current().openFolder(path);
    if (!folder.ok()) {
        return folder.error();
    }
    const Result<FileAttributes> attributes = folder.value()->attributes();
    if (!attributes.ok()) {
        return attributes.error();
    }
    return Result(std::unique_ptr<WalkedFolder>(
        new WalkedFolder(path, outer, std::move(folder).value(), attributes.value())));
}

SystemError WalkedFolder::reopen() {
    if (folder_ != nullptr) {
        return {};
    }
    Result<std::unique_ptr<OpenFolder>> again = FileSystem::current().openFolder(path_);
    if (!again.ok()) {
        return again.error();
    }
    const Result<FileAttributes> found = again.value()->attributes();
    if (!found.ok()) {
        return found.error();
    }
    if (found.value().identity != attributes_.identity) {
        return SystemError(ESTALE);
    }
    folder_ = std::move(again).value();
    return {};
}

Result<FolderListing> WalkedFolder::entries() {
    const SystemError error = reopen();
    return error.isNone() ? folder_->entries() : error;
}

Result<FileAttributes> WalkedFolder::attributes(std::string_view name) {
    const SystemError error = reopen();
    return error.isNone() ? folder_->attributes(name) : error;
}

Result<FileAttributes> WalkedFolder::targetAttributes(std::string_view name) {
    const SystemError error = reopen();
    return error.isNone() ? folder_->targetAttributes(name) : error;
}

Result<std::string> WalkedFolder::linkTarget(std::string_view name) {
    const SystemError error = reopen();
    return error.isNone() ? folder_->linkTarget(name) : error;
}

Result<std::unique_ptr<OpenFolder>> WalkedFolder::openFolder(std::string_view name) {
    const SystemError error = reopen();
    return error.isNone() ? folder_->openFolder(name) : error;
}

Result<std::unique_ptr<OpenFolder>> WalkedFolder::openTargetFolder(std::string_view name) {
    const SystemError error = reopen();
    return error.isNone() ? folder_->openTargetFolder(name) : error;
}

Result<std::unique_ptr<OpenFile>> WalkedFolder::open(std::string_view name,
                                                     const OpenOptions& options) {
    const SystemError error = reopen();
    return error.isNone() ? folder_->open(name, options) : error;
}

SystemError WalkedFolder::createFolder(std::string_view name, std::uint32_t permissions) {
    const SystemError error = reopen();
    return error.isNone() ? folder_->createFolder(name, permissions) : error;
}

SystemError WalkedFolder::removeFile(std::string_view name) {
    const SystemError error = reopen();
    return error.isNone() ? folder_->removeFile(name) : error;
}

SystemError WalkedFolder::removeFolder(std::string_view name) {
    const SystemError error = reopen();
    return error.isNone() ? folder_->removeFolder(name) : error;
}

} // namespace tav::internal
