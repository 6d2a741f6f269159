#include "platform/memory/FaultyOpenFolder.hpp"

#include "platform/memory/FaultyOpenFile.hpp"

namespace tav {

Result<std::unique_ptr<OpenFolder>>
FaultyOpenFolder::over(FaultyFileSystem& files, Result<std::unique_ptr<OpenFolder>> inner) {
    if (!inner.ok()) {
        return inner;
    }
    return Result<std::unique_ptr<OpenFolder>>(
        std::make_unique<FaultyOpenFolder>(files, std::move(inner).value()));
}

Result<FileAttributes> FaultyOpenFolder::attributes() {
    const SystemError error = files_.count("OpenFolder.attributes");
    return error.isNone() ? inner_->attributes() : error;
}

Result<FolderListing> FaultyOpenFolder::entries() {
    const SystemError error = files_.count("OpenFolder.entries");
    return error.isNone() ? inner_->entries() : error;
}

Result<FileAttributes> FaultyOpenFolder::attributes(std::string_view name) {
    const SystemError error = files_.count("OpenFolder.attributes");
    return error.isNone() ? inner_->attributes(name) : error;
}

Result<FileAttributes> FaultyOpenFolder::targetAttributes(std::string_view name) {
    const SystemError error = files_.count("OpenFolder.targetAttributes");
    return error.isNone() ? inner_->targetAttributes(name) : error;
}

Result<std::string> FaultyOpenFolder::linkTarget(std::string_view name) {
    const SystemError error = files_.count("OpenFolder.linkTarget");
    return error.isNone() ? inner_->linkTarget(name) : error;
}

Result<std::unique_ptr<OpenFolder>> FaultyOpenFolder::openFolder(std::string_view name) {
    const SystemError error = files_.count("OpenFolder.openFolder");
    return error.isNone() ? over(files_, inner_->openFolder(name)) : error;
}

Result<std::unique_ptr<OpenFolder>> FaultyOpenFolder::openTargetFolder(std::string_view name) {
    const SystemError error = files_.count("OpenFolder.openTargetFolder");
    return error.isNone() ? over(files_, inner_->openTargetFolder(name)) : error;
}

Result<std::unique_ptr<OpenFile>> FaultyOpenFolder::open(std::string_view name,
                                                         const OpenOptions& options) {
    const SystemError error = files_.count("OpenFolder.open");
    return error.isNone() ? FaultyOpenFile::over(files_, inner_->open(name, options)) : error;
}

SystemError FaultyOpenFolder::createFolder(std::string_view name, std::uint32_t permissions) {
    const SystemError error = files_.count("OpenFolder.createFolder");
    return error.isNone() ? inner_->createFolder(name, permissions) : error;
}

SystemError FaultyOpenFolder::removeFile(std::string_view name) {
    const SystemError error = files_.count("OpenFolder.removeFile");
    return error.isNone() ? inner_->removeFile(name) : error;
}

SystemError FaultyOpenFolder::removeFolder(std::string_view name) {
    const SystemError error = files_.count("OpenFolder.removeFolder");
    return error.isNone() ? inner_->removeFolder(name) : error;
}

} // namespace tav
