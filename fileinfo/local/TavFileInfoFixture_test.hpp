#pragma once

#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "fileinfo/local/TavFileInfo.hpp"

namespace tav {

/// The last names of items, in order.
inline std::vector<std::string> namesOf(const TavFileInfoArray& items) {
    std::vector<std::string> names;
    names.reserve(items.size());
    for (const TavFileInfoPtr& item : items) {
        names.push_back(item->name());
    }
    return names;
}

inline std::vector<std::string> pathsOf(const TavFileInfoArray& items) {
    std::vector<std::string> paths;
    paths.reserve(items.size());
    for (const TavFileInfoPtr& item : items) {
        paths.push_back(item->path());
    }
    return paths;
}

/// Older items over files in memory.
class TavFileInfoInMemory : public MacFileInfoInMemory {
  protected:
    static TavFileInfoPtr older(OptionalText path) { return TavFileInfo::fileInfoWithPath(path); }
};

/// Older items over the host's own files.
class TavFileInfoOnDisk : public MacFileInfoOnDisk {
  protected:
    static TavFileInfoPtr older(OptionalText path) { return TavFileInfo::fileInfoWithPath(path); }
    /// The item of that name in the folder.
    [[nodiscard]] TavFileInfoPtr olderIn(std::string_view name) const {
        return older(folder.path(name));
    }
};

} // namespace tav
