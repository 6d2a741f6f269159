#pragma once

#include "platform/FileSystem.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tav {

/// A file, folder or link in memory.
struct MemoryNode {
    FileAttributes attributes;
    std::map<std::string, Data, std::less<>> extendedAttributes;
    std::string name;         ///< As its folder lists it; none of the root.
    std::uint64_t parent = 0; ///< The number of the folder that holds it.
    Data content;             ///< Of a file.
    std::string target;       ///< Of a link.
    /// How many open files or folders hold it.
    std::size_t holders = 0;
    /// Removed or replaced: only those know it.
    bool isRemoved = false;
    /// Of a folder: the numbers of its nodes by their names.
    std::map<std::string, std::uint64_t, std::less<>> entries;

    [[nodiscard]] bool isFolder() const { return attributes.kind == FileKind::Folder; }
};

/// Where a path leads. Valid until the tree changes.
struct MemoryPlace {
    struct Step {
        std::string name;
        MemoryNode* folder = nullptr;
    };

    std::vector<Step> folders;  ///< From the root to the folder that holds the name.
    std::string name = "/";     ///< As it was asked for; "/", "." or ".." where the path ends so.
    std::string entryName;      ///< As the folder lists it; the name where nothing stands there.
    MemoryNode* node = nullptr; ///< Nothing where the last name is missing.
    bool endsInSlash = false;

    [[nodiscard]] MemoryNode& folder() const { return *folders.back().folder; }
    [[nodiscard]] bool isNamed() const { return name != "/" && name != "." && name != ".."; }
    /// The path without links. Only where something stands.
    [[nodiscard]] std::string path() const;
};

/// The nodes of a file system in memory and the paths that lead to them. Nodes lie side by side, so
/// that the depth of a tree does not matter. One thread.
class MemoryTree {
  public:
    /// What the last name of a path stands for when it is a link.
    enum class Last : std::uint8_t {
        Name,   ///< The link, also with a slash behind it.
        Link,   ///< The link; with a slash behind it what it leads to.
        Target, ///< What it leads to.
    };

    /// With a root folder.
    explicit MemoryTree(Date now);

    /// Follows a path. The last name may be missing; everything else has to be there. A relative
    /// one counts from the folder, or from the root where none is given; from a removed folder
    /// nothing is found.
    Result<MemoryPlace> find(std::string_view path, Last last, bool isCaseInsensitive,
                             MemoryNode* folder = nullptr);

    /// Makes what was not found. The dates are those of the change, for the folder too.
    MemoryNode& add(const MemoryPlace& place, FileKind kind, std::uint32_t permissions, Date birth,
                    Date now);
    /// Takes it away with all that is in it. The folder's dates change.
    void remove(const MemoryPlace& place, Date now);
    /// Puts what stands at one place to another, where nothing stands or what `from` leads to.
    void move(const MemoryPlace& from, const MemoryPlace& to, Date now);
    /// Puts new content into a file.
    void write(MemoryNode& file, BytesView content, Date now);
    /// Puts bytes at an offset, behind zeros where the file is shorter.
    void writeAt(MemoryNode& file, std::uint64_t offset, BytesView bytes, Date now);
    /// Cuts a file or adds zeros.
    void resize(MemoryNode& file, std::uint64_t size, Date now);

    /// Holds a file or folder, so that it stays (a file with its content) when it is removed.
    static void hold(MemoryNode& node) { ++node.holders; }
    /// Lets go what was held; what is removed is gone with the last.
    void release(MemoryNode& node);

    [[nodiscard]] FileKind kindOf(std::uint64_t number) const {
        return nodes_.at(number).attributes.kind;
    }
    /// Bytes of all files' contents.
    [[nodiscard]] std::uint64_t usedBytes() const { return used_; }

  private:
    [[nodiscard]] MemoryPlace placeOf(MemoryNode* folder);
    void removeNode(std::uint64_t number);

    std::unordered_map<std::uint64_t, MemoryNode> nodes_;
    std::uint64_t lastNumber_ = 1;
    std::uint64_t used_ = 0;
};

} // namespace tav
