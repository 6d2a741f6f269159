#include "platform/linux/MimeTypes.hpp"

#include "base/PathString.hpp"
#include "platform/FileSystem.hpp"
#include "platform/linux/TextLines.hpp"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tav::internal {
namespace {

constexpr std::uint64_t largestTable = 4U << 20U;

// Of the host itself: the database is kept for the life of the process.
Data contentOf(const std::string& path, std::uint64_t maximumSize) {
    Result<Data> bytes = realFileSystem().readFile(path, maximumSize);
    return bytes.ok() ? std::move(bytes).value() : Data();
}

/// Whether it is "media/subtype", two plain names that may stand in a path.
bool isType(std::string_view type) {
    const std::size_t slash = type.find('/');
    const auto isName = [](std::string_view name) {
        return !name.empty() && name.front() != '.' &&
               std::all_of(name.begin(), name.end(),
                           [](char c) { return c > ' ' && c < 0x7f && c != '/'; });
    };
    return slash != std::string_view::npos && isName(type.substr(0, slash)) &&
           isName(type.substr(slash + 1));
}

/// A type, the separator, something about it: a line each. What is known already stays.
template <class Table>
void addPairs(Table& table, const Data& bytes, char separator) {
    forEachLine(textOf(bytes), [&](std::string_view line) {
        const std::size_t end = line.find(separator);
        if (end != std::string_view::npos) {
            table.emplace(line.substr(0, end), line.substr(end + 1));
        }
    });
}

} // namespace

MimeTypes::MimeTypes(std::vector<std::string> dataFolders) : folders_(std::move(dataFolders)) {
    for (std::string& folder : folders_) {
        folder = stringByAppendingPathComponent(folder, "mime");
        const auto table = [&](std::string_view name) {
            return contentOf(stringByAppendingPathComponent(folder, name), largestTable);
        };
        globs_.add(textOf(table("globs2")));
        addPairs(aliases_, table("aliases"), ' ');
        addPairs(icons_, table("icons"), ':');
        addPairs(genericIcons_, table("generic-icons"), ':');
    }
}

std::string MimeTypes::canonicalType(std::string_view type) const {
    const auto found = aliases_.find(type);
    return found != aliases_.end() ? found->second : std::string(type);
}

std::string MimeTypes::comment(std::string_view type,
                               std::span<const std::string> languages) const {
    const std::string canonical = canonicalType(type);
    if (!isType(canonical)) {
        return {};
    }
    for (const std::string& folder : folders_) {
        const Data xml = contentOf(stringByAppendingPathComponent(folder, canonical + ".xml"),
                                   largestDescription);
        std::string comment = commentOfDescription(xml, languages);
        if (!comment.empty()) {
            return comment;
        }
    }
    return {};
}

std::vector<std::string> MimeTypes::iconNames(std::string_view type) const {
    const std::string canonical = canonicalType(type);
    if (!isType(canonical)) {
        return {};
    }
    std::vector<std::string> names;
    if (const auto icon = icons_.find(canonical); icon != icons_.end()) {
        names.push_back(icon->second);
    }
    names.push_back(canonical);
    std::replace(names.back().begin(), names.back().end(), '/', '-');
    const auto generic = genericIcons_.find(canonical);
    names.push_back(generic != genericIcons_.end()
                        ? generic->second
                        : canonical.substr(0, canonical.find('/')) + "-x-generic");
    return names;
}

} // namespace tav::internal
