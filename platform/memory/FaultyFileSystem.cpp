#include "platform/memory/FaultyFileSystem.hpp"

#include "platform/memory/FaultyOpenFile.hpp"
#include "platform/memory/FaultyOpenFolder.hpp"

#include <algorithm>
#include <utility>

#include <signal.h>
#include <unistd.h>

namespace tav {

namespace {

/// No destructor, no handler, no buffer that is written out.
[[noreturn]] void endProcess() {
    for (;;) {
        ::kill(::getpid(), SIGKILL);
    }
}

} // namespace

void FaultyFileSystem::failOperation(std::string_view operation, int errorNumber) {
    failingOperations_.insert_or_assign(std::string(operation), SystemError(errorNumber));
}

void FaultyFileSystem::atCall(std::size_t number, std::function<void()> action) {
    actions_.insert_or_assign(number, std::move(action));
}

/// The number of a call that comes.
std::size_t FaultyFileSystem::begin() {
    const std::size_t number = ++count_;
    // Taken out first: the action may call this file system itself, and may set what fails.
    if (const auto action = actions_.extract(number); !action.empty()) {
        action.mapped()();
    }
    if (number == endingCall_) {
        endProcess();
    }
    return number;
}

SystemError FaultyFileSystem::errorOf(std::size_t call, std::string_view operation) const {
    if (call == failingCall_ && !callError_.isNone()) {
        return callError_;
    }
    const auto found = failingOperations_.find(operation);
    return found == failingOperations_.end() ? SystemError() : found->second;
}

SystemError FaultyFileSystem::count(std::string_view operation) {
    const std::size_t number = begin();
    if (number == endingWithinCall_) {
        endProcess();
    }
    return errorOf(number, operation);
}

FaultyFileSystem::WriteCall FaultyFileSystem::countWrite(std::string_view operation,
                                                         std::size_t size) {
    const std::size_t number = begin();
    if (number == endingWithinCall_) {
        return {{}, size / 2, {}, true};
    }
    const SystemError error = errorOf(number, operation);
    if (number == shortCall_) {
        return {error, std::min(size, shortBytes_), shortError_, false};
    }
    return {error, size, {}, false};
}

SystemError FaultyFileSystem::finish(const WriteCall& call, SystemError error) {
    if (call.endsProcess) {
        endProcess();
    }
    return error.isNone() ? call.errorAfter : error;
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

Result<std::unique_ptr<OpenFolder>> FaultyFileSystem::openFolder(std::string_view path) {
    const SystemError error = count("openFolder");
    return error.isNone() ? FaultyOpenFolder::over(*this, inner_.openFolder(path)) : error;
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
    const WriteCall call = countWrite("writeFile", content.size());
    return call.error.isNone()
               ? finish(call, inner_.writeFile(path, content.first(call.bytes), permissions))
               : call.error;
}

Result<std::unique_ptr<OpenFile>> FaultyFileSystem::open(std::string_view path,
                                                         const OpenOptions& options) {
    if (const SystemError error = count("open"); !error.isNone()) {
        return error;
    }
    return FaultyOpenFile::over(*this, inner_.open(path, options));
}

SystemError FaultyFileSystem::syncFolder(std::string_view path) {
    const SystemError error = count("syncFolder");
    return error.isNone() ? inner_.syncFolder(path) : error;
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

SystemError FaultyFileSystem::setModificationDate(std::string_view path, Date date) {
    const SystemError error = count("setModificationDate");
    return error.isNone() ? inner_.setModificationDate(path, date) : error;
}

Result<Data> FaultyFileSystem::extendedAttribute(std::string_view path, std::string_view name) {
    const SystemError error = count("extendedAttribute");
    return error.isNone() ? inner_.extendedAttribute(path, name) : error;
}

SystemError FaultyFileSystem::setExtendedAttribute(std::string_view path, std::string_view name,
                                                   BytesView value) {
    const SystemError error = count("setExtendedAttribute");
    return error.isNone() ? inner_.setExtendedAttribute(path, name, value) : error;
}

Result<std::vector<std::string>> FaultyFileSystem::extendedAttributeNames(std::string_view path) {
    const SystemError error = count("extendedAttributeNames");
    return error.isNone() ? inner_.extendedAttributeNames(path) : error;
}

SystemError FaultyFileSystem::removeExtendedAttribute(std::string_view path,
                                                      std::string_view name) {
    const SystemError error = count("removeExtendedAttribute");
    return error.isNone() ? inner_.removeExtendedAttribute(path, name) : error;
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
