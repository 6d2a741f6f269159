#pragma once

#include "foundation/FolderTree.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
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

    /// A folder, and a name in it.
    using Name = std::pair<std::size_t, std::string_view>;
    struct Target {
        bool isLink = false;
        std::size_t index = 0; ///< Of the folder in the tree, or of the link here.
    };

    void judge(std::size_t link);
    Step follow(Way& way, std::size_t& deeper);

    const FolderTree* tree_;
    std::vector<KnownLink> links_;
    /// Folders and links, nothing else. In order and not by hashes: the names are a stranger's, who
    /// may choose many of one hash.
    std::map<Name, Target> names_;
};

} // namespace tav::internal
