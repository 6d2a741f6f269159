#include "base/PathString.hpp"
#include "foundation/FileManager.hpp"
#include "platform/FileSystem.hpp"

#include <cstddef>

namespace tav {

namespace {

// The buffer for a resolved path has 2047 bytes, the last of which ends the text.
constexpr std::size_t longestResolvedPath = 2046;

} // namespace

std::string absolutePathForPath(std::string_view path) {
    FileSystem& files = FileSystem::current();
    const auto there = files.attributes(path);
    if (!there.ok() || there.value().kind != FileKind::Link) {
        return std::string(path);
    }
    auto resolved = files.canonicalPath(path);
    if (resolved.ok() && resolved.value().size() <= longestResolvedPath) {
        return std::move(resolved).value();
    }
    auto content = files.linkTarget(path);
    if (!content.ok() || content.value().empty()) {
        return std::string(path);
    }
    if (files.targetAttributes(content.value()).ok()) {
        return std::move(content).value();
    }
    return stringByAppendingPathComponent(stringByDeletingLastPathComponent(path), content.value());
}

std::uint64_t getDataForkSize(std::string_view path) {
    FileSystem& files = FileSystem::current();
    const auto there = files.targetAttributes(path);
    if (!there.ok()) {
        return 0;
    }
    if (const auto file = files.open(path, {}); file.ok()) {
        const auto opened = file.value()->attributes();
        if (opened.ok() && opened.value().size != 0) {
            return opened.value().size;
        }
    }
    return there.value().size;
}

} // namespace tav
