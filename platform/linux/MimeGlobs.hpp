#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tav::internal {

/// Which names belong to which type: the files `globs2` of the shared MIME database
/// (as freedesktop.org describes it), one of each data folder.
///
/// Of the patterns that match a name the heaviest holds, of these the longest, of these the one
/// that was added first. Letters of ASCII match in either case unless the pattern forbids it.
class MimeGlobs {
  public:
    /// Adds a file, of the more important folders first: a line is "weight:type:pattern", and
    /// ":cs" behind it stands for exact case. The pattern "__NOGLOBS__" keeps away what less
    /// important files have for the type. Lines that are nothing of this are passed over, and what
    /// goes beyond the limits.
    void add(std::string_view globs2);

    /// The type of a file of that name; empty when no pattern matches.
    [[nodiscard]] std::string typeOfName(std::string_view name) const;

  private:
    struct Rule {
        unsigned weight = 0;
        std::size_t length = 0; ///< Of the pattern.
        std::size_t order = 0;
        std::string type;
    };
    using RuleOfText = std::map<std::string, Rule, std::less<>>;
    struct Rules {
        RuleOfText names;    ///< Whole names.
        RuleOfText suffixes; ///< What follows a star.
        std::vector<std::pair<std::string, Rule>> patterns;
    };

    static bool isBetter(const Rule& rule, const Rule* than);
    static void addTo(Rules& rules, const std::string& pattern, Rule rule);
    static const Rule* bestOf(const Rules& rules, std::string_view name, const Rule* best);

    Rules exact_;
    Rules caseless_; ///< In lower case.
    std::set<std::string, std::less<>> closedTypes_;
    std::size_t count_ = 0;
};

/// Whether a name matches a pattern as shells know them: "*", "?", "[a-z]", "[!a-z]". Takes time in
/// proportion to the product of the two lengths at most.
[[nodiscard]] bool matchesGlob(std::string_view pattern, std::string_view name);

/// The text with A to Z in lower case.
[[nodiscard]] std::string lowerCaseASCII(std::string_view text);

} // namespace tav::internal
