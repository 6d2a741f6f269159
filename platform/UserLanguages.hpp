#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// The user's languages, best first, as translations are called: "de_AT", "de". A language with a
/// country is followed by the bare one. None where the user wants no translations. What follows
/// English is left out: whatever there is to say is there in English. Any thread.
[[nodiscard]] std::vector<std::string> userLanguages();

/// Whether a language of the list is English, with or without a country.
[[nodiscard]] bool isEnglish(std::string_view language);

namespace internal {
/// The same from the variables of an environment: the first of LC_ALL, LC_MESSAGES and LANG that is
/// not empty says whether to translate ("C" and "POSIX" say no), and into what, unless LANGUAGE
/// lists languages with colons between. Encodings are cut off; what is no name of a language is
/// passed over.
[[nodiscard]] std::vector<std::string>
languagesOfEnvironment(const std::function<std::optional<std::string>(const char* name)>& variable);
} // namespace internal

} // namespace tav
