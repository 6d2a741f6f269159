#pragma once

#include "foundation/FolderTree.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tav::internal {

/// Which links in a listed tree lead out of it, by their texts alone. See `cleanUnpackedFolder`.
class LinksOut {
  public:
    /// The tree has to live longer.
    explicit LinksOut(const FolderTree& tree);

    /// All links have to be there before the first is judged.
    void add(std::size_t folder, std::size_t entry, std::string text);

    struct Link {
        std::size_t folder = 0; ///< In the tree.
        std::size_t entry = 0;  ///< In the folder.
    };
    /// In the order in which they were added.
    [[nodiscard]] std::vector<Link> leadingOut();

  private:
    /// How far a way has come: a folder, or something in it that is none.
    struct Place {
        std::size_t folder = 0;
        bool isBeyond = false;
    };
    enum class State : std::uint8_t { Unknown, OnTheWay, Inside, Outside };
    struct KnownLink {
        Link link;
        std::string text;
        State state = State::Unknown;
        Place target; ///< When it is `Inside`.
    };
    /// A link whose way has been followed up to an offset of its text.
    struct Way {
        std::size_t link;
        std::size_t offset;
        Place place;
    };
    enum class Step : std::uint8_t { Done, Deeper, Out };

    /// A name in a folder.
    struct Name {
        std::size_t folder;
        std::string_view name;
        friend bool operator==(const Name&, const Name&) = default;
    };
    struct NameHash {
        std::size_t operator()(const Name& name) const noexcept {
            return std::hash<std::string_view>()(name.name) ^ (name.folder * 0x9E3779B97F4A7C15U);
        }
    };
    struct Target {
        bool isLink = false;
        std::size_t index = 0; ///< Of the folder in the tree, or of the link here.
    };

    void judge(std::size_t link);
    Step follow(Way& way, std::size_t& deeper);

    const FolderTree* tree_;
    std::vector<KnownLink> links_;
    std::unordered_map<Name, Target, NameHash> names_; ///< Folders and links, nothing else.
};

} // namespace tav::internal
