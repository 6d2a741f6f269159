#pragma once

#include "fileinfo/local/MacFileInfoFixture_test.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// Files in memory that local items are copied among, and what is told of the copies.
struct CopyWorld : FilesInMemory {
    CopyWorld() {
        addVolume("/", 1'000'000);
        memory.addFolder("/s");
        memory.addFolder("/d");
        memory.addFile("/s/a", "content");
        const auto file = TavMacFileInfo::fileInfoWithPath("/s/a");
        file->setCreationDate(Date(1000.5));
        file->setModificationDate(Date(2000.25));
    }
    void addVolume(std::string_view root, std::uint64_t free) {
        VolumeInfo info;
        info.rootPath = root;
        info.totalBytes = 2'000'000;
        info.freeBytes = free;
        volumes.add(info);
    }
    [[nodiscard]] std::string text(std::string_view path) { return contentIn(memory, path); }
    /// Tells all that is in a folder, with the dates of files.
    void list(MemoryFileSystem& listed, const std::string& folder) {
        const auto entries = listed.folderEntries(folder);
        for (const FolderEntry& entry :
             entries.ok() ? entries.value() : std::vector<FolderEntry>()) {
            const std::string path = (folder == "/" ? "" : folder) + '/' + entry.name;
            std::string line = path + ": " + contentIn(listed, path).substr(0, 20);
            const auto found = listed.attributes(path);
            line += " size " + std::to_string(found.value().size);
            line += " permissions " + std::to_string(found.value().permissions);
            const double date = found.value().modificationDate.secondsSinceReferenceDate();
            line += date == 2000.25 ? " dated" : "";
            if (const auto names = listed.extendedAttributeNames(path); names.ok()) {
                for (const std::string& name : names.value()) {
                    const auto value = listed.extendedAttribute(path, name);
                    line += ' ' + name + '=';
                    line += value.ok() ? textOf(value.value()) : "(none)";
                }
            }
            told.push_back(line);
            if (found.value().kind == FileKind::Folder) {
                list(listed, path);
            }
        }
    }

    SeenLog log;
    std::vector<std::string> told;
    std::shared_ptr<TavMacFileInfo> source;
    std::shared_ptr<TavMacFileInfo> destination;
};

} // namespace tav
