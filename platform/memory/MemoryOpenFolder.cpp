#include "platform/memory/MemoryOpenFolder.hpp"

#include <cerrno>

namespace tav {

MemoryOpenFolder::MemoryOpenFolder(MemoryFileSystem& files, MemoryNode& node, std::string_view path)
    : files_(files), node_(&node), path_(path) {
    MemoryTree::hold(node);
}

MemoryOpenFolder::~MemoryOpenFolder() { files_.tree_.release(*node_); }

std::string MemoryOpenFolder::pathOf(std::string_view name) const {
    return path_ + "/" + std::string(name);
}

SystemError MemoryOpenFolder::begin(std::string_view operation, std::string_view name) {
    files_.note("OpenFolder." + std::string(operation), pathOf(name));
    return isEntryName(name) ? SystemError() : SystemError(EINVAL);
}

Result<FileAttributes> MemoryOpenFolder::attributes() {
    files_.note("OpenFolder.attributes", path_);
    return node_->attributes;
}

Result<FolderListing> MemoryOpenFolder::entries() {
    files_.note("OpenFolder.entries", path_);
    if (node_->isRemoved) {
        return SystemError(ENOENT);
    }
    FolderListing listing;
    for (const auto& [name, number] : node_->entries) {
        listing.add(name, files_.tree_.kindOf(number), number);
    }
    return listing;
}

Result<FileAttributes> MemoryOpenFolder::attributes(std::string_view name) {
    const SystemError error = begin("attributes", name);
    return error.isNone() ? files_.attributesOf(name, MemoryTree::Last::Link, node_) : error;
}

Result<FileAttributes> MemoryOpenFolder::targetAttributes(std::string_view name) {
    const SystemError error = begin("targetAttributes", name);
    return error.isNone() ? files_.attributesOf(name, MemoryTree::Last::Target, node_) : error;
}

Result<std::string> MemoryOpenFolder::linkTarget(std::string_view name) {
    const SystemError error = begin("linkTarget", name);
    return error.isNone() ? files_.linkTargetOf(name, node_) : error;
}

Result<std::unique_ptr<OpenFolder>> MemoryOpenFolder::opened(std::string_view name,
                                                             MemoryTree::Last last) {
    const auto folder = files_.findFolder(name, last, node_);
    if (!folder.ok()) {
        return folder.error();
    }
    return Result<std::unique_ptr<OpenFolder>>(
        std::make_unique<MemoryOpenFolder>(files_, *folder.value(), pathOf(name)));
}

Result<std::unique_ptr<OpenFolder>> MemoryOpenFolder::openFolder(std::string_view name) {
    const SystemError error = begin("openFolder", name);
    return error.isNone() ? opened(name, MemoryTree::Last::Name) : error;
}

Result<std::unique_ptr<OpenFolder>> MemoryOpenFolder::openTargetFolder(std::string_view name) {
    const SystemError error = begin("openTargetFolder", name);
    return error.isNone() ? opened(name, MemoryTree::Last::Target) : error;
}

Result<std::unique_ptr<OpenFile>> MemoryOpenFolder::open(std::string_view name,
                                                         const OpenOptions& options) {
    const SystemError error = begin("open", name);
    return error.isNone() ? files_.openFile(name, options, node_, pathOf(name)) : error;
}

SystemError MemoryOpenFolder::createFolder(std::string_view name, std::uint32_t permissions) {
    const SystemError error = begin("createFolder", name);
    return error.isNone() ? files_.makeFolder(name, permissions, node_) : error;
}

SystemError MemoryOpenFolder::removeFile(std::string_view name) {
    const SystemError error = begin("removeFile", name);
    return error.isNone() ? files_.takeFile(name, node_) : error;
}

SystemError MemoryOpenFolder::removeFolder(std::string_view name) {
    const SystemError error = begin("removeFolder", name);
    return error.isNone() ? files_.takeFolder(name, node_) : error;
}

} // namespace tav
