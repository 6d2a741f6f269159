#include "foundation/LocalFilename.hpp"

#include "base/Unicode.hpp"
#include "foundation/WindowsFilename.hpp"

namespace tav {

std::string stringByMakingValidFilename(std::string_view name) {
    if (name.find('\0') != std::string_view::npos) {
        return std::string(name);
    }
    static constexpr CharacterSet separators = CharacterSet::withUnits(u":/");
    return stringByRemovingCharactersFromSet(decomposedString(name), &separators);
}

std::string stringByRemovingCharactersFromSet(std::string_view text, const CharacterSet* set) {
    return set == nullptr ? std::string(text) : replaceInvalidChars(text, *set, "");
}

} // namespace tav
