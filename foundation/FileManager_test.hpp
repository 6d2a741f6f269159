#pragma once

#include "platform/FileSystemConformance_test.hpp"
#include "platform/memory/FaultyFileSystem.hpp"

#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>

namespace tav {

/// What the library does with files has to be done alike on the host's file system and on the one
/// in memory. Each is current for the test, with faults where it wants them.
class FileManagerTest : public FileSystemConformance {
  protected:
    FaultyFileSystem faulty{files};
    FileSystem::Replacement replacement{faulty};

    /// Whether anything stands there itself, a link for one.
    bool stands(std::string_view name) { return files.attributes(path(name)).ok(); }
    bool isFolder(std::string_view name) {
        const auto there = files.attributes(path(name));
        return there.ok() && there.value().kind == FileKind::Folder;
    }
};

inline constexpr int sweptErrors[] = {ENOSPC, EIO, EINTR, EACCES};

inline std::string nameOfWorld(const testing::TestParamInfo<Kind>& info) {
    return info.param == Kind::Real ? "Real" : "Memory";
}

} // namespace tav
