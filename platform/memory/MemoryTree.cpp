#include "platform/memory/MemoryTree.hpp"

#include "base/Unicode.hpp"

#include <algorithm>

namespace tav {

namespace {

constexpr std::uint64_t rootNumber = 1;
constexpr std::size_t longestName = 255;
constexpr int mostLinks = 40;

using Entries = std::map<std::string, std::uint64_t, std::less<>>;

Entries::const_iterator findEntry(const Entries& entries, std::string_view name,
                                  bool isCaseInsensitive) {
    const auto exact = entries.find(name);
    if (exact != entries.end() || !isCaseInsensitive) {
        return exact;
    }
    return std::find_if(entries.begin(), entries.end(), [name](const auto& entry) {
        return equalsIgnoringCase(entry.first, name);
    });
}

SystemError errorOfPath(std::string_view path) {
    if (path.empty()) {
        return SystemError(ENOENT);
    }
    return path.find('\0') == std::string_view::npos ? SystemError() : SystemError(EINVAL);
}

void setChanged(MemoryNode& node, Date now) {
    node.attributes.modificationDate = now;
    node.attributes.changeDate = now;
}

std::int64_t nanosecondsOf(Date date) {
    return std::chrono::nanoseconds(date.timePoint().time_since_epoch()).count();
}

} // namespace

std::string MemoryPlace::path() const {
    std::string path;
    for (std::size_t index = 1; index < folders.size(); ++index) {
        path += '/';
        path += folders[index].name;
    }
    if (isNamed()) {
        path += '/';
        path += name;
    }
    return path.empty() ? "/" : path;
}

MemoryTree::MemoryTree(Date now) {
    MemoryNode& root = nodes_[rootNumber];
    root.attributes.kind = FileKind::Folder;
    root.attributes.permissions = 0755;
    root.attributes.identity = {1, rootNumber, nanosecondsOf(now)};
    root.attributes.creationDate = now;
    root.attributes.mount = 1;
    root.parent = rootNumber;
    setChanged(root, now);
}

/// The place of a folder itself.
MemoryPlace MemoryTree::placeOf(MemoryNode* folder) {
    MemoryPlace place;
    MemoryNode* const root = &nodes_.at(rootNumber);
    for (place.node = folder; folder != root; folder = &nodes_.at(folder->parent)) {
        place.folders.push_back({folder->name, folder});
    }
    place.folders.push_back({"", root});
    std::reverse(place.folders.begin(), place.folders.end());
    return place;
}

Result<MemoryPlace> MemoryTree::find(std::string_view path, Last last, bool isCaseInsensitive,
                                     MemoryNode* folder) {
    if (const SystemError error = errorOfPath(path); !error.isNone()) {
        return error;
    }
    MemoryNode& root = nodes_.at(rootNumber);
    if (folder != nullptr && folder->isRemoved) {
        return SystemError(ENOENT);
    }
    MemoryPlace place = placeOf(folder != nullptr && !path.starts_with('/') ? folder : &root);
    std::string rest(path);
    int links = 0;
    std::size_t end = 0;
    for (;;) {
        const std::size_t begin = rest.find_first_not_of('/', end);
        if (begin == std::string::npos) {
            return place;
        }
        end = std::min(rest.find('/', begin), rest.size());
        const bool isLast = rest.find_first_not_of('/', end) == std::string::npos;
        place.name = rest.substr(begin, end - begin);
        place.entryName = place.name;
        place.endsInSlash = end < rest.size();
        if (place.name == "." || place.name == "..") {
            if (place.name == ".." && place.folders.size() > 1) {
                place.folders.pop_back();
            }
            place.node = &place.folder();
            continue;
        }
        if (place.name.size() > longestName) {
            return SystemError(ENAMETOOLONG);
        }
        const Entries& entries = place.folder().entries;
        const auto found = findEntry(entries, place.name, isCaseInsensitive);
        if (found == entries.end()) {
            place.node = nullptr;
            return isLast ? Result(std::move(place)) : Result<MemoryPlace>(SystemError(ENOENT));
        }
        place.entryName = found->first;
        place.node = &nodes_.at(found->second);
        if (place.node->attributes.kind == FileKind::Link &&
            (!isLast || last == Last::Target || (last == Last::Link && place.endsInSlash))) {
            if (++links > mostLinks) {
                return SystemError(ELOOP);
            }
            rest = place.node->target + rest.substr(end);
            end = 0;
            if (rest.front() == '/') {
                place.folders.resize(1);
                place.name = "/";
                place.node = &root;
            }
            continue;
        }
        if (!place.node->isFolder() && (!isLast || (place.endsInSlash && last != Last::Name))) {
            return SystemError(ENOTDIR);
        }
        if (isLast) {
            return place;
        }
        place.folders.push_back({place.name, place.node});
    }
}

MemoryNode& MemoryTree::add(const MemoryPlace& place, FileKind kind, std::uint32_t permissions,
                            Date birth, Date now) {
    const std::uint64_t number = ++lastNumber_;
    MemoryNode& node = nodes_[number];
    node.attributes.kind = kind;
    node.attributes.permissions = permissions & 07777U;
    node.attributes.identity = {place.folder().attributes.identity.device, number,
                                nanosecondsOf(birth)};
    node.attributes.creationDate = birth;
    node.attributes.mount = place.folder().attributes.mount;
    node.name = place.name;
    node.parent = place.folder().attributes.identity.number;
    setChanged(node, now);
    place.folder().entries.emplace(place.name, number);
    setChanged(place.folder(), now);
    return node;
}

void MemoryTree::remove(const MemoryPlace& place, Date now) {
    removeNode(place.node->attributes.identity.number);
    place.folder().entries.erase(place.entryName);
    setChanged(place.folder(), now);
}

void MemoryTree::removeNode(std::uint64_t number) {
    std::vector<std::uint64_t> doomed = {number};
    while (!doomed.empty()) {
        const auto found = nodes_.find(doomed.back());
        doomed.pop_back();
        for (const auto& entry : found->second.entries) {
            doomed.push_back(entry.second);
        }
        if (found->second.holders > 0) {
            found->second.isRemoved = true;
            found->second.entries.clear();
            continue;
        }
        used_ -= found->second.content.size();
        nodes_.erase(found);
    }
}

void MemoryTree::release(MemoryNode& node) {
    if (--node.holders == 0 && node.isRemoved) {
        removeNode(node.attributes.identity.number);
    }
}

void MemoryTree::move(const MemoryPlace& from, const MemoryPlace& to, Date now) {
    from.folder().entries.erase(from.entryName);
    to.folder().entries.insert_or_assign(to.name, from.node->attributes.identity.number);
    setChanged(from.folder(), now);
    setChanged(to.folder(), now);
    from.node->name = to.name;
    from.node->parent = to.folder().attributes.identity.number;
    from.node->attributes.changeDate = now;
}

void MemoryTree::write(MemoryNode& file, BytesView content, Date now) {
    used_ -= file.content.size();
    file.content.assign(content.begin(), content.end());
    used_ += file.content.size();
    file.attributes.size = file.content.size();
    setChanged(file, now);
}

void MemoryTree::writeAt(MemoryNode& file, std::uint64_t offset, BytesView bytes, Date now) {
    resize(file, std::max<std::uint64_t>(file.content.size(), offset + bytes.size()), now);
    std::copy(bytes.begin(), bytes.end(),
              file.content.begin() + static_cast<std::ptrdiff_t>(offset));
}

void MemoryTree::resize(MemoryNode& file, std::uint64_t size, Date now) {
    used_ -= file.content.size();
    file.content.resize(static_cast<std::size_t>(size));
    used_ += file.content.size();
    file.attributes.size = size;
    setChanged(file, now);
}

} // namespace tav
