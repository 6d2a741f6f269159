// Files that come from pasteboards and drags.

#include "base/PropertyList.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

namespace tav {

namespace {

/// What a property list of paths names; whatever else is in it is passed over.
std::vector<std::string> pathsFromPropertyList(const Data& bytes) {
    const std::optional<Value> list = PropertyList::read(bytes, nullptr);
    const Value::Array* elements = list ? list->asArray() : nullptr;
    std::vector<std::string> paths;
    if (elements != nullptr) {
        for (const Value& element : *elements) {
            if (const std::string* path = element.asString()) {
                paths.push_back(*path);
            }
        }
    }
    return paths;
}

/// The files of a list of URLs (RFC 2483): a URL a line, comments begin with "#". URLs of anything
/// but files on this host are passed over.
std::vector<std::string> pathsFromURLList(std::string_view text) {
    std::vector<std::string> paths;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() || line.starts_with('#')) {
            continue;
        }
        const std::optional<Url> url = Url::withString(line);
        const std::optional<std::string> path = TavMacFileInfo::pathFromURL(url ? &*url : nullptr);
        if (path && path->starts_with('/')) {
            paths.push_back(*path);
        }
    }
    return paths;
}

} // namespace

FileInfoArray TavMacFileInfo::fileInfoArrayFromPasteboard(const Pasteboard& pasteboard) {
    if (const Data* names = pasteboard.dataForType(Pasteboard::filenamesType)) {
        return fileInfoArrayFromPathsArray(pathsFromPropertyList(*names));
    }
    if (const Data* urls = pasteboard.dataForType(Pasteboard::uriListType)) {
        return fileInfoArrayFromPathsArray(pathsFromURLList(textOf(*urls)));
    }
    return {};
}

std::optional<FileInfoArray> TavMacFileInfo::promisedFilesOnPasteboard(const Pasteboard& pasteboard,
                                                                       DragInfo& dragInfo) {
    if (pasteboard.dataForType(Pasteboard::filesPromiseType) == nullptr) {
        return std::nullopt;
    }
    const FileInfoPtr temporary = systemTempFolder();
    const FileInfoPtr folder = temporary ? temporary->createFolder("Orvane_TempFiles") : nullptr;
    const std::optional<Url> url = folder ? urlFromPath(folder->path()) : std::optional<Url>();
    if (!url) {
        return std::nullopt;
    }
    const std::vector<std::string> names =
        dragInfo.namesOfPromisedFilesDroppedAtDestination(url->absoluteString());
    if (names.empty()) {
        return std::nullopt;
    }
    FileInfoArray items;
    for (const std::string& name : names) {
        // The other side of a drag is anybody: no name of its may lead out of the folder.
        if (!isEntryName(name)) {
            continue;
        }
        const FileInfoPtr item = folder->find(name);
        item->resolveAlias();
        if (item->exists()) {
            items.push_back(item);
        }
    }
    return items;
}

} // namespace tav
