#pragma once

#include "platform/memory/MemoryFileSystem.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

inline constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

/// A file system with an empty folder to work in.
class World {
  public:
    virtual ~World() = default;
    virtual FileSystem& files() = 0;
    [[nodiscard]] virtual std::string root() const = 0;
};

/// Checks at its end that no descriptor was left open.
class RealWorld final : public World {
  public:
    ~RealWorld() override { EXPECT_EQ(openDescriptors(), openBefore_); }
    FileSystem& files() override { return internal::realFileSystem(); }
    [[nodiscard]] std::string root() const override { return folder_.path(); }

  private:
    static std::size_t openDescriptors() {
        return internal::realFileSystem().folderEntries("/proc/self/fd").value().size();
    }

    TemporaryFolder folder_;
    std::size_t openBefore_ = openDescriptors();
};

class MemoryWorld final : public World {
  public:
    MemoryWorld() { files_.addFolder("/some/where"); }
    FileSystem& files() override { return files_; }
    [[nodiscard]] std::string root() const override { return "/some/where"; }

  private:
    MemoryFileSystem files_;
};

enum class Kind : bool { Real, Memory };

/// What every file system has to do alike. The suite is instantiated once, in
/// FileSystemConformance_test.cpp.
class FileSystemConformance : public testing::TestWithParam<Kind> {
  protected:
    std::unique_ptr<World> world = makeWorld();
    FileSystem& files = world->files();
    const std::string root = world->root();

    static std::unique_ptr<World> makeWorld() {
        if (GetParam() == Kind::Real) {
            return std::make_unique<RealWorld>();
        }
        return std::make_unique<MemoryWorld>();
    }

    [[nodiscard]] std::string path(std::string_view name) const {
        return root + "/" + std::string(name);
    }
    SystemError write(std::string_view name, std::string_view text) {
        return files.writeFile(path(name), bytesOf(text), 0600);
    }
    std::string read(std::string_view name) {
        const auto content = files.readFile(path(name), unlimited);
        return content.ok() ? std::string(textOf(content.value()))
                            : "error " + std::to_string(content.error().number());
    }
    void makeFile(std::string_view name, std::string_view text = "") {
        ASSERT_EQ(write(name, text).number(), 0) << name;
    }
    void makeFolder(std::string_view name) {
        ASSERT_EQ(files.createFolder(path(name), 0700).number(), 0) << name;
    }
    void makeLink(std::string_view name, std::string_view target) {
        ASSERT_EQ(files.createLink(path(name), target).number(), 0) << name;
    }
    FileAttributes attributesOf(std::string_view name) {
        const auto attributes = files.attributes(path(name));
        EXPECT_EQ(attributes.error().number(), 0) << name;
        return attributes.ok() ? attributes.value() : FileAttributes();
    }
    /// Sorted.
    std::vector<std::string> namesIn(std::string_view name) {
        const auto entries = files.folderEntries(path(name));
        EXPECT_EQ(entries.error().number(), 0) << name;
        std::vector<std::string> names;
        if (entries.ok()) {
            for (const FolderEntry& entry : entries.value()) {
                names.push_back(entry.name);
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    int errorOfAttributes(std::string_view name) {
        return files.attributes(path(name)).error().number();
    }
    int errorOfMove(std::string_view from, std::string_view to, Replace replace) {
        return files.move(path(from), path(to), replace).number();
    }
};

using Names = std::vector<std::string>;

} // namespace tav
