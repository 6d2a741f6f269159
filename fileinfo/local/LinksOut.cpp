#include "fileinfo/local/LinksOut.hpp"

#include <algorithm>
#include <utility>

namespace tav::internal {

LinksOut::LinksOut(const FolderTree& tree) : tree_(&tree) {
    for (std::size_t index = 1; index < tree.folders.size(); ++index) {
        const FolderTree::Folder& folder = tree.folders[index];
        names_.emplace(Name{folder.parent, tree.nameOf(folder)}, Target{false, index});
    }
}

void LinksOut::add(std::size_t folder, std::size_t entry, std::string text) {
    names_.emplace(Name{folder, tree_->folders[folder].entries[entry].name},
                   Target{true, links_.size()});
    links_.push_back({{folder, entry}, std::move(text), State::Unknown, {}});
}

std::vector<LinksOut::Link> LinksOut::leadingOut() {
    std::vector<Link> leading;
    for (std::size_t index = 0; index < links_.size(); ++index) {
        if (links_[index].state == State::Unknown) {
            judge(index);
        }
        if (links_[index].state == State::Outside) {
            leading.push_back(links_[index].link);
        }
    }
    return leading;
}

void LinksOut::judge(std::size_t link) {
    // Chains may have any length: no recursion. Each link is followed once.
    const auto begin = [this](std::size_t index) {
        links_[index].state = State::OnTheWay;
        return Way{index, 0, {links_[index].link.folder, false}};
    };
    std::vector<Way> ways{begin(link)};
    while (!ways.empty()) {
        std::size_t deeper = 0;
        switch (follow(ways.back(), deeper)) {
        case Step::Done:
            links_[ways.back().link].state = State::Inside;
            links_[ways.back().link].target = ways.back().place;
            ways.pop_back();
            break;
        case Step::Deeper:
            ways.push_back(begin(deeper));
            break;
        case Step::Out:
            // All of them come through here.
            for (const Way& way : ways) {
                links_[way.link].state = State::Outside;
            }
            ways.clear();
            break;
        }
    }
}

LinksOut::Step LinksOut::follow(Way& way, std::size_t& deeper) {
    const std::string_view text = links_[way.link].text;
    if (text.starts_with('/')) {
        return Step::Out;
    }
    while (way.offset < text.size()) {
        const std::size_t end = std::min(text.find('/', way.offset), text.size());
        const std::string_view name = text.substr(way.offset, end - way.offset);
        Place next = way.place;
        if (name == "..") {
            if (way.place.isBeyond || way.place.folder == 0) {
                return Step::Out;
            }
            next.folder = tree_->folders[way.place.folder].parent;
        } else if (!name.empty() && name != "." && !way.place.isBeyond) {
            const auto found = names_.find({way.place.folder, name});
            if (found == names_.end()) {
                next.isBeyond = true;
            } else if (!found->second.isLink) {
                next.folder = found->second.index;
            } else {
                const KnownLink& known = links_[found->second.index];
                switch (known.state) {
                case State::Unknown:
                    deeper = found->second.index;
                    return Step::Deeper; // and back to this name
                case State::Outside:
                    return Step::Out;
                case State::OnTheWay: // in a circle, which leads nowhere
                    next.isBeyond = true;
                    break;
                case State::Inside:
                    next = known.target;
                    break;
                }
            }
        }
        way.place = next;
        way.offset = end + 1;
    }
    return Step::Done;
}

} // namespace tav::internal
