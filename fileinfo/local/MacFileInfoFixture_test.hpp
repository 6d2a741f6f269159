#pragma once

#include "fileinfo/SeenLog_test.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "platform/memory/MemoryUserFolders.hpp"
#include "platform/memory/MemoryVolumes.hpp"
#include "testing/TemporaryFolder.hpp"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

/// A text that has other bytes everywhere.
[[nodiscard]] inline std::string longText(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t index = 0; index < size; ++index) {
        text[index] = static_cast<char>('a' + (index / 1000 + index) % 26);
    }
    return text;
}

/// The whole content of a file; "nothing" where none can be read.
[[nodiscard]] inline std::string contentIn(FileSystem& files, std::string_view path) {
    const auto content = files.readFile(path, std::numeric_limits<std::uint64_t>::max());
    return content.ok() ? std::string(textOf(content.value())) : "nothing";
}

/// Files in memory, in the place of the host's as long as it lives. Their calls are counted.
struct FilesInMemory {
    MemoryFileSystem memory;
    FaultyFileSystem files{memory};
    MemoryVolumes volumes{memory};
    MemoryUserFolders folders;
    FileSystem::Replacement replacedFiles{files};
    Volumes::Replacement replacedVolumes{volumes};
    UserFolders::Replacement replacedFolders{folders};
};

/// Local items over files in memory.
class MacFileInfoInMemory : public testing::Test, protected FilesInMemory {
  protected:
    using Item = std::shared_ptr<TavMacFileInfo>;
    using Calls = std::vector<std::string>;

    static Item at(std::string_view path) { return TavMacFileInfo::fileInfoWithPath(path); }

    [[nodiscard]] std::string contentOf(std::string_view path) { return contentIn(memory, path); }
    [[nodiscard]] bool has(std::string_view path) { return memory.attributes(path).ok(); }
    /// The calls that something takes.
    template <class Action>
    Calls callsOf(Action action) {
        memory.clearCalls();
        action();
        return memory.calls();
    }
};

/// Local items over the host's own files.
class MacFileInfoOnDisk : public testing::Test {
  protected:
    using Item = std::shared_ptr<TavMacFileInfo>;

    static Item at(std::string_view path) { return TavMacFileInfo::fileInfoWithPath(path); }
    /// The item of that name in the folder.
    [[nodiscard]] Item in(std::string_view name) const { return at(folder.path(name)); }
    [[nodiscard]] std::string contentOf(std::string_view name) const {
        return contentIn(FileSystem::current(), folder.path(name));
    }
    void addFile(std::string_view name, std::string_view text) const {
        ASSERT_TRUE(
            FileSystem::current().writeFile(folder.path(name), bytesOf(text), 0644).isNone());
    }
    void addFolder(std::string_view name) const {
        ASSERT_TRUE(FileSystem::current().createFolder(folder.path(name), 0755).isNone());
    }
    void addLink(std::string_view name, std::string_view target) const {
        ASSERT_TRUE(FileSystem::current().createLink(folder.path(name), target).isNone());
    }
    void rename(std::string_view from, std::string_view to) const {
        ASSERT_TRUE(
            FileSystem::current().move(folder.path(from), folder.path(to), Replace::Yes).isNone());
    }
    void removeFile(std::string_view name) const {
        ASSERT_TRUE(FileSystem::current().removeFile(folder.path(name)).isNone());
    }

    TemporaryFolder folder;
};

} // namespace tav
