#include "platform/UserLanguages.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace tav {
namespace {

constexpr std::size_t mostLanguages = 32;
constexpr std::size_t longestName = 64;

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// The names become parts of paths, and the environment may be another user's.
bool isName(std::string_view name) {
    return !name.empty() && name.size() <= longestName && isLetter(name.front()) &&
           std::all_of(name.begin(), name.end(), [](char c) {
               return isLetter(c) || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '@';
           });
}

/// "de_AT.UTF-8@euro" without ".UTF-8".
std::string withoutEncoding(std::string_view locale) {
    const std::size_t at = locale.find('@');
    const std::size_t dot = std::min(locale.find('.'), at);
    std::string name(locale.substr(0, dot));
    if (at != std::string_view::npos) {
        name.append(locale.substr(at));
    }
    return name;
}

bool isUntranslated(std::string_view name) { return name == "C" || name == "POSIX"; }

void addOnce(std::vector<std::string>& languages, std::string name) {
    if (std::find(languages.begin(), languages.end(), name) == languages.end()) {
        languages.push_back(std::move(name));
    }
}

/// "sr_RS@latin", "sr@latin", "sr_RS", "sr".
void addWithFallbacks(std::vector<std::string>& languages, std::string_view name) {
    const std::size_t at = std::min(name.find('@'), name.size());
    const std::string_view modifier = name.substr(at);
    const std::string_view place = name.substr(0, at);
    const std::string_view language = place.substr(0, place.find('_'));
    addOnce(languages, std::string(name));
    addOnce(languages, std::string(language) + std::string(modifier));
    addOnce(languages, std::string(place));
    addOnce(languages, std::string(language));
}

} // namespace

bool isEnglish(std::string_view language) {
    return language.substr(0, language.find_first_of("_@")) == "en";
}

std::vector<std::string> internal::languagesOfEnvironment(
    const std::function<std::optional<std::string>(const char* name)>& variable) {
    std::string locale;
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (locale.empty()) {
            locale = variable(name).value_or(std::string());
        }
    }
    if (locale.empty() || isUntranslated(withoutEncoding(locale))) {
        return {};
    }
    const std::string listed = variable("LANGUAGE").value_or(std::string());
    std::string_view rest = listed.empty() ? locale : listed;
    std::vector<std::string> languages;
    while (!rest.empty() && languages.size() < mostLanguages) {
        const std::size_t colon = std::min(rest.find(':'), rest.size());
        const std::string name = withoutEncoding(rest.substr(0, colon));
        rest.remove_prefix(std::min(colon + 1, rest.size()));
        if (isUntranslated(name)) {
            break;
        }
        if (isName(name)) {
            addWithFallbacks(languages, name);
            if (isEnglish(name)) {
                break;
            }
        }
    }
    return languages;
}

std::vector<std::string> userLanguages() {
    return internal::languagesOfEnvironment([](const char* name) {
        const char* const text = std::getenv(name);
        return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
    });
}

} // namespace tav
