#include "base/CharacterSet.hpp"

#include "base/Unicode.hpp"

namespace tav {

CharacterSet CharacterSet::withCharactersInString(std::string_view text) {
    return withUnits(utf16FromBytes(text));
}

} // namespace tav
