#include "platform/Bundle.hpp"

#include "base/PathString.hpp"
#include "base/PropertyList.hpp"
#include "platform/FileSystem.hpp"
#include "platform/ProcessTable.hpp"

#include <utility>

namespace tav {
namespace {

constexpr std::uint64_t maximumListSize = 16U << 20U;

bool isFolder(std::string_view path) {
    const Result<FileAttributes> attributes = FileSystem::current().targetAttributes(path);
    return attributes.ok() && attributes.value().kind == FileKind::Folder;
}

bool isPlainName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find('/') == std::string_view::npos && name.find('\0') == std::string_view::npos;
}

Value::Dictionary readInformation(std::string_view bundlePath) {
    const Result<Data> bytes = FileSystem::current().readFile(
        stringByAppendingPathComponent(bundlePath, "Contents/Info.plist"), maximumListSize);
    std::optional<Value> list =
        bytes.ok() ? PropertyList::read(bytes.value(), nullptr) : std::nullopt;
    Value::Dictionary* const entries = list ? list->asDictionary() : nullptr;
    return entries != nullptr ? std::move(*entries) : Value::Dictionary();
}

} // namespace

std::optional<Bundle> Bundle::bundleWithPath(std::string_view path) {
    if (path.empty() || !isFolder(path)) {
        return std::nullopt;
    }
    return Bundle(std::string(path));
}

std::optional<Bundle> Bundle::mainBundle() {
    ProcessTable& table = ProcessTable::current();
    const std::optional<std::string> executable = table.executablePath(table.currentProcess());
    if (!executable) {
        return std::nullopt;
    }
    return bundleWithPath(bundlePathOfExecutable(*executable));
}

std::string bundlePathOfExecutable(std::string_view executable) {
    std::string folder = stringByDeletingLastPathComponent(executable);
    const std::string contents = stringByDeletingLastPathComponent(folder);
    if (lastPathComponent(folder) == "MacOS" && lastPathComponent(contents) == "Contents") {
        return stringByDeletingLastPathComponent(contents);
    }
    return folder;
}

const Value::Dictionary& Bundle::infoDictionary() const {
    if (!info_) {
        info_ = readInformation(path_);
    }
    return *info_;
}

std::optional<std::string> Bundle::bundleIdentifier() const {
    const std::string* const identifier = infoDictionary().findString("CFBundleIdentifier");
    return identifier != nullptr ? std::optional(*identifier) : std::nullopt;
}

std::optional<std::string> Bundle::executablePath() const {
    const Value* const declared = infoDictionary().find("CFBundleExecutable");
    const std::string* const text = declared != nullptr ? declared->asString() : nullptr;
    std::string name = text != nullptr ? *text : std::string();
    if (declared == nullptr) {
        name = stringByDeletingPathExtension(lastPathComponent(path_));
    }
    if (!isPlainName(name)) {
        return std::nullopt;
    }
    return stringByAppendingPathComponent(stringByAppendingPathComponent(path_, "Contents/MacOS"),
                                          name);
}

std::optional<std::string> Bundle::pathForResource(std::string_view name,
                                                   std::string_view type) const {
    const std::string file =
        type.empty() ? std::string(name) : std::string(name) + "." + std::string(type);
    if (!isPlainName(file)) {
        return std::nullopt;
    }
    // An application's resources have their place; those of a program in a plain folder lie beside
    // it, whatever else lies there.
    const std::string folders[] = {stringByAppendingPathComponent(path_, "Contents/Resources"),
                                   stringByAppendingPathComponent(path_, "Resources"), path_};
    for (const std::string& folder : folders) {
        std::string path = stringByAppendingPathComponent(folder, file);
        if (FileSystem::current().targetAttributes(path).ok()) {
            return path;
        }
    }
    return std::nullopt;
}

} // namespace tav
