#include "fileinfo/PathPrefix.hpp"

#include "base/Unicode.hpp"

#include <string>

namespace tav {

bool internal::beginsIgnoringCase(std::string_view text, std::string_view prefix) {
    const std::string whole = uppercaseString(text);
    const std::string beginning = uppercaseString(prefix);
    return whole.starts_with(beginning) &&
           utf16Length(beginning) + utf16Length(std::string_view(whole).substr(beginning.size())) ==
               utf16Length(whole);
}

} // namespace tav
