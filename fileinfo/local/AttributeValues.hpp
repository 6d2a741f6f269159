#pragma once

#include "base/Value.hpp"
#include "fileinfo/local/CachedAttributes.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tav::internal {

// What an item tells of its attributes, and how they are changed. The path is always that of the
// file itself. Failures of a change are not told but where something is answered.

/// One of the attributes by the platform's name; nothing for names that are not known and for what
/// the file has not.
[[nodiscard]] std::optional<Value> attributeValue(CachedAttributes& attributes,
                                                  std::string_view path, std::string_view key);

/// The four characters of a type or creator; those of "????" for a file without.
[[nodiscard]] std::uint32_t codeValue(CachedAttributes* attributes, std::string_view path,
                                      std::string_view extendedAttribute);
/// The type between apostrophes; "''" for a file without.
[[nodiscard]] std::string typeCodeText(CachedAttributes& attributes, std::string_view path);

/// Whether its owner may not write it. Of a link itself, never.
[[nodiscard]] bool isLockedFile(const FileAttributes& file);

/// Gives a file one of the attributes of `changeFileAttributes`. `own` are those of what stands at
/// the path itself: a link has none that could be changed, and what it leads to is not meant.
void changeOwnAttribute(const std::string& path, const FileAttributes& own, std::string_view key,
                        const Value& value);
/// Of what stands at the path itself, a link, too. A failure is logged, with type 4 switched on.
void changeModificationDate(const std::string& path, Date date);

} // namespace tav::internal
