#pragma once

#include <string>
#include <string_view>

/// The operations on paths that know the user's home folder, by that of `UserFolders::current()`.
/// What they do is said where they take the home folder as a parameter (base/PathString.hpp).
namespace tav {

[[nodiscard]] std::string stringByExpandingTildeInPath(std::string_view path);
[[nodiscard]] std::string stringByAbbreviatingWithTildeInPath(std::string_view path);
[[nodiscard]] std::string stringByStandardizingPath(std::string_view path);

} // namespace tav
