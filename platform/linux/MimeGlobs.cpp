#include "platform/linux/MimeGlobs.hpp"

#include "platform/linux/TextLines.hpp"

#include <algorithm>
#include <charconv>

namespace tav::internal {
namespace {

// The system's own file has 1200 patterns, five of them with more than one star in front.
constexpr std::size_t mostRules = 100000;
constexpr std::size_t mostPatterns = 500;
// No file system has longer names.
constexpr std::size_t longestName = 255;

constexpr std::string_view wild = "*?[";

struct Line {
    unsigned weight = 0;
    std::string_view type;
    std::string_view pattern;
    bool isExact = false;
};

/// Cuts off the text in front of the next colon, which goes, too.
std::string_view takeField(std::string_view& rest) {
    const std::size_t colon = std::min(rest.find(':'), rest.size());
    const std::string_view field = rest.substr(0, colon);
    rest.remove_prefix(std::min(colon + 1, rest.size()));
    return field;
}

/// Without a pattern when the line is no rule.
Line lineOf(std::string_view text) {
    Line line;
    const std::string_view weight = takeField(text);
    const auto read = std::from_chars(weight.data(), weight.data() + weight.size(), line.weight);
    line.type = takeField(text);
    if (read.ec != std::errc() || read.ptr != weight.data() + weight.size() || line.type.empty()) {
        return {};
    }
    line.pattern = takeField(text);
    std::string_view flags = takeField(text);
    while (!flags.empty()) {
        const std::size_t comma = std::min(flags.find(','), flags.size());
        line.isExact = line.isExact || flags.substr(0, comma) == "cs";
        flags.remove_prefix(std::min(comma + 1, flags.size()));
    }
    return line;
}

/// Where the set that begins at `[` ends (its `]`), npos when it does not.
std::size_t endOfSet(std::string_view pattern, std::size_t start) {
    std::size_t first = start + 1;
    if (first < pattern.size() && (pattern[first] == '!' || pattern[first] == '^')) {
        ++first;
    }
    // A bracket right at the beginning belongs to the set.
    return first < pattern.size() ? pattern.find(']', first + 1) : std::string_view::npos;
}

bool isInSet(std::string_view set, char c) {
    const auto code = [](char character) { return static_cast<unsigned char>(character); };
    const bool isInverse = !set.empty() && (set.front() == '!' || set.front() == '^');
    set.remove_prefix(isInverse ? 1 : 0);
    bool isIn = false;
    while (!set.empty()) {
        const bool isRange = set.size() >= 3 && set[1] == '-';
        isIn = isIn || (isRange ? code(set[0]) <= code(c) && code(c) <= code(set[2]) : set[0] == c);
        set.remove_prefix(isRange ? 3 : 1);
    }
    return isIn != isInverse;
}

/// How long the part of the pattern is that matches the character; 0 when none does.
std::size_t matchOfOne(std::string_view pattern, std::size_t at, char c) {
    if (pattern[at] == '[') {
        const std::size_t end = endOfSet(pattern, at);
        if (end != std::string_view::npos) {
            return isInSet(pattern.substr(at + 1, end - at - 1), c) ? end - at + 1 : 0;
        }
    }
    return pattern[at] == '?' || pattern[at] == c ? 1 : 0;
}

} // namespace

std::string lowerCaseASCII(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lower;
}

bool matchesGlob(std::string_view pattern, std::string_view name) {
    std::size_t p = 0;
    std::size_t n = 0;
    // Behind the last star, and what it had taken then. An earlier one need not take more.
    std::size_t behindStar = std::string_view::npos;
    std::size_t taken = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            behindStar = ++p;
            taken = n;
            continue;
        }
        const std::size_t matched = p < pattern.size() ? matchOfOne(pattern, p, name[n]) : 0;
        if (matched > 0) {
            p += matched;
            ++n;
        } else if (behindStar != std::string_view::npos) {
            p = behindStar;
            n = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

bool MimeGlobs::isBetter(const Rule& rule, const Rule* than) {
    if (than == nullptr || rule.weight != than->weight) {
        return than == nullptr || rule.weight > than->weight;
    }
    return rule.length != than->length ? rule.length > than->length : rule.order < than->order;
}

void MimeGlobs::addTo(Rules& rules, const std::string& pattern, Rule rule) {
    const bool isSuffix =
        pattern.front() == '*' && pattern.find_first_of(wild, 1) == std::string::npos;
    if (!isSuffix && pattern.find_first_of(wild) != std::string::npos) {
        if (rules.patterns.size() < mostPatterns) {
            rules.patterns.emplace_back(pattern, std::move(rule));
        }
        return;
    }
    RuleOfText& texts = isSuffix ? rules.suffixes : rules.names;
    const auto [place, isNew] = texts.try_emplace(isSuffix ? pattern.substr(1) : pattern, rule);
    if (!isNew && isBetter(rule, &place->second)) {
        place->second = std::move(rule);
    }
}

void MimeGlobs::add(std::string_view globs2) {
    std::set<std::string, std::less<>> closed;
    forEachLine(globs2, [&](std::string_view text) {
        const Line line = lineOf(text);
        if (line.pattern.empty() || line.pattern.size() > longestName || count_ == mostRules ||
            closedTypes_.contains(line.type)) {
            return;
        }
        const std::size_t order = count_++;
        if (line.pattern == "__NOGLOBS__") {
            closed.emplace(line.type);
            return;
        }
        addTo(line.isExact ? exact_ : caseless_,
              line.isExact ? std::string(line.pattern) : lowerCaseASCII(line.pattern),
              Rule{line.weight, line.pattern.size(), order, std::string(line.type)});
    });
    closedTypes_.merge(closed);
}

const MimeGlobs::Rule* MimeGlobs::bestOf(const Rules& rules, std::string_view name,
                                         const Rule* best) {
    const auto consider = [&](const Rule& rule) { best = isBetter(rule, best) ? &rule : best; };
    if (const auto found = rules.names.find(name); found != rules.names.end()) {
        consider(found->second);
    }
    for (std::size_t start = 0; start <= name.size(); ++start) {
        const auto found = rules.suffixes.find(name.substr(start));
        if (found != rules.suffixes.end()) {
            consider(found->second);
        }
    }
    for (const auto& [pattern, rule] : rules.patterns) {
        if (matchesGlob(pattern, name)) {
            consider(rule);
        }
    }
    return best;
}

std::string MimeGlobs::typeOfName(std::string_view name) const {
    if (name.empty() || name.size() > longestName) {
        return {};
    }
    const Rule* const exact = bestOf(exact_, name, nullptr);
    const Rule* const best = bestOf(caseless_, lowerCaseASCII(name), exact);
    return best != nullptr ? best->type : std::string();
}

} // namespace tav::internal
