#include "platform/memory/FaultyFileSystem.hpp"

#include <utility>

namespace tav {

void FaultyFileSystem::failOperation(std::string_view operation, int errorNumber) {
    failingOperations_.insert_or_assign(std::string(operation), SystemError(errorNumber));
}

void FaultyFileSystem::atCall(std::size_t number, std::function<void()> action) {
    actions_.insert_or_assign(number, std::move(action));
}

SystemError FaultyFileSystem::count(std::string_view operation) {
    const std::size_t number = ++count_;
    // Taken out first: the action may call this file system itself, and may set what fails.
    if (const auto action = actions_.extract(number); !action.empty()) {
        action.mapped()();
    }
    if (number == failingCall_ && !callError_.isNone()) {
        return callError_;
    }
    const auto found = failingOperations_.find(operation);
    return found == failingOperations_.end() ? SystemError() : found->second;
}

Result<FileAttributes> FaultyFileSystem::attributes(std::string_view path) {
    const SystemError error = count("attributes");
    return error.isNone() ? inner_.attributes(path) : error;
}

Result<FileAttributes> FaultyFileSystem::targetAttributes(std::string_view path) {
    const SystemError error = count("targetAttributes");
    return error.isNone() ? inner_.targetAttributes(path) : error;
}

Result<std::vector<FolderEntry>> FaultyFileSystem::folderEntries(std::string_view path) {
    const SystemError error = count("folderEntries");
    return error.isNone() ? inner_.folderEntries(path) : error;
}

Result<std::string> FaultyFileSystem::linkTarget(std::string_view path) {
    const SystemError error = count("linkTarget");
    return error.isNone() ? inner_.linkTarget(path) : error;
}

Result<std::string> FaultyFileSystem::canonicalPath(std::string_view path) {
    const SystemError error = count("canonicalPath");
    return error.isNone() ? inner_.canonicalPath(path) : error;
}

Result<Data> FaultyFileSystem::readFile(std::string_view path, std::uint64_t maximumSize) {
    const SystemError error = count("readFile");
    return error.isNone() ? inner_.readFile(path, maximumSize) : error;
}

SystemError FaultyFileSystem::writeFile(std::string_view path, BytesView content,
                                        std::uint32_t permissions) {
    const SystemError error = count("writeFile");
    return error.isNone() ? inner_.writeFile(path, content, permissions) : error;
}

SystemError FaultyFileSystem::createFolder(std::string_view path, std::uint32_t permissions) {
    const SystemError error = count("createFolder");
    return error.isNone() ? inner_.createFolder(path, permissions) : error;
}

SystemError FaultyFileSystem::createLink(std::string_view path, std::string_view target) {
    const SystemError error = count("createLink");
    return error.isNone() ? inner_.createLink(path, target) : error;
}

SystemError FaultyFileSystem::setPermissions(std::string_view path, std::uint32_t permissions) {
    const SystemError error = count("setPermissions");
    return error.isNone() ? inner_.setPermissions(path, permissions) : error;
}

SystemError FaultyFileSystem::move(std::string_view from, std::string_view to, Replace replace) {
    const SystemError error = count("move");
    return error.isNone() ? inner_.move(from, to, replace) : error;
}

SystemError FaultyFileSystem::removeFile(std::string_view path) {
    const SystemError error = count("removeFile");
    return error.isNone() ? inner_.removeFile(path) : error;
}

SystemError FaultyFileSystem::removeFolder(std::string_view path) {
    const SystemError error = count("removeFolder");
    return error.isNone() ? inner_.removeFolder(path) : error;
}

} // namespace tav
