#include "foundation/TopLevelDomains.hpp"

#include "base/Unicode.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace tav {

namespace {

constexpr std::size_t countOfCodes = 246;
constexpr std::array<std::string_view, countOfCodes + 15> names = {
    "ad",  "ae",  "af",  "ag",  "ai",  "al",  "am",  "an",  "ao",   "aq",   "ar",   "as",   "at",
    "au",  "aw",  "ax",  "az",  "ba",  "bb",  "bd",  "be",  "bf",   "bg",   "bh",   "bi",   "bj",
    "bm",  "bn",  "bo",  "br",  "bs",  "bt",  "bv",  "bw",  "by",   "bz",   "ca",   "cc",   "cd",
    "cf",  "cg",  "ch",  "ci",  "ck",  "cl",  "cm",  "cn",  "co",   "cr",   "cs",   "cu",   "cv",
    "cx",  "cy",  "cz",  "de",  "dj",  "dk",  "dm",  "do",  "dz",   "ec",   "ee",   "eg",   "eh",
    "er",  "es",  "et",  "fi",  "fj",  "fk",  "fm",  "fo",  "fr",   "fx",   "ga",   "gb",   "gd",
    "ge",  "gf",  "gh",  "gi",  "gl",  "gm",  "gn",  "gp",  "gq",   "gr",   "gs",   "gt",   "gu",
    "gw",  "gy",  "hk",  "hm",  "hn",  "hr",  "ht",  "hu",  "id",   "ie",   "il",   "in",   "io",
    "iq",  "ir",  "is",  "it",  "jm",  "jo",  "jp",  "ke",  "kg",   "kh",   "ki",   "km",   "kn",
    "kp",  "kr",  "kw",  "ky",  "kz",  "la",  "lb",  "lc",  "li",   "lk",   "lr",   "ls",   "lt",
    "lu",  "lv",  "ly",  "ma",  "mc",  "md",  "mg",  "mh",  "mk",   "ml",   "mm",   "mn",   "mo",
    "mp",  "mq",  "mr",  "ms",  "mt",  "mu",  "mv",  "mw",  "mx",   "my",   "mz",   "na",   "nc",
    "ne",  "nf",  "ng",  "ni",  "nl",  "no",  "np",  "nr",  "nu",   "nz",   "om",   "pa",   "pe",
    "pf",  "pg",  "ph",  "pk",  "pl",  "pm",  "pn",  "pr",  "ps",   "pt",   "pw",   "py",   "qa",
    "re",  "ro",  "ru",  "rw",  "sa",  "sb",  "sc",  "sd",  "se",   "sg",   "sh",   "si",   "sj",
    "sk",  "sl",  "sm",  "sn",  "so",  "sr",  "st",  "su",  "sv",   "sy",   "sz",   "tc",   "td",
    "tf",  "tg",  "th",  "tj",  "tk",  "tl",  "tm",  "tn",  "to",   "tp",   "tr",   "tt",   "tv",
    "tw",  "tz",  "ua",  "ug",  "uk",  "um",  "us",  "uy",  "uz",   "va",   "vc",   "ve",   "vg",
    "vi",  "vn",  "vu",  "wf",  "ws",  "ye",  "yt",  "yu",  "za",   "zm",   "zr",   "zw",   "biz",
    "com", "edu", "gov", "int", "mil", "net", "org", "pro", "aero", "arpa", "coop", "info", "name",
    "nato"};

// No name has more characters, and no character takes more bytes to write before it becomes one of
// ASCII.
constexpr std::size_t longestName = 4;
constexpr std::size_t longestText = longestName * 4;

} // namespace

std::span<const std::string_view> internal::topLevelDomains() { return names; }

bool isTLD(std::string_view text) {
    if (text.size() > longestText) {
        return false;
    }
    const std::string name = lowercaseString(text);
    if (name.size() == 2) {
        return std::binary_search(names.begin(), names.begin() + countOfCodes, name);
    }
    return std::find(names.begin() + countOfCodes, names.end(), name) != names.end();
}

} // namespace tav
