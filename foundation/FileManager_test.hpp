#pragma once

#include "platform/FileSystemConformance_test.hpp"
#include "platform/memory/FaultyFileSystem.hpp"

#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>

#include <sys/resource.h>

namespace tav {

/// What the library does with files has to be done alike on the host's file system and on the one
/// in memory. Each is current for the test, with faults where it wants them.
class FileManagerTest : public FileSystemConformance {
  protected:
    FaultyFileSystem faulty{files};
    FileSystem::Replacement replacement{faulty};

    /// What a file of this size holds.
    static std::string pattern(std::size_t size) {
        std::string text(size, '\0');
        for (std::size_t i = 0; i < size; ++i) {
            text[i] = static_cast<char>((i * 31 + i / 251) & 0xFF);
        }
        return text;
    }
    /// Whether anything stands there itself, a link for one.
    bool stands(std::string_view name) { return files.attributes(path(name)).ok(); }
    bool isFolder(std::string_view name) {
        const auto there = files.attributes(path(name));
        return there.ok() && there.value().kind == FileKind::Folder;
    }
};

/// As long as it lives, so many descriptors can be opened beside those that are open, and no more.
/// The suite keeps the numbers of those without gaps.
class FewDescriptors {
  public:
    explicit FewDescriptors(std::size_t count) {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before_), 0);
        ::rlimit few = before_;
        few.rlim_cur =
            internal::realFileSystem().folderEntries("/proc/self/fd").value().size() + count;
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    }
    ~FewDescriptors() { EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &before_), 0); }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

  private:
    ::rlimit before_{};
};

inline constexpr int sweptErrors[] = {ENOSPC, EIO, EINTR, EACCES};

inline std::string nameOfWorld(const testing::TestParamInfo<Kind>& info) {
    return info.param == Kind::Real ? "Real" : "Memory";
}

} // namespace tav
