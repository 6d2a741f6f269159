#include "foundation/HomePath.hpp"

#include "base/PathString.hpp"
#include "platform/UserFolders.hpp"

namespace tav {

std::string stringByExpandingTildeInPath(std::string_view path) {
    return path.starts_with('~') ? stringByExpandingTildeInPath(path, UserFolders::current().home())
                                 : std::string(path);
}

std::string stringByAbbreviatingWithTildeInPath(std::string_view path) {
    return stringByAbbreviatingWithTildeInPath(path, UserFolders::current().home());
}

std::string stringByStandardizingPath(std::string_view path) {
    return stringByStandardizingPath(path, path.starts_with('~') ? UserFolders::current().home()
                                                                 : std::string());
}

} // namespace tav
