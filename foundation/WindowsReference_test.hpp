#pragma once

#include "base/PathString.hpp"
#include "base/Unicode.hpp"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The operations on Windows names and paths once more, for tests and fuzzers: unit by unit, in the
/// plainest way. Slow.
namespace tav::reference {

using Units = std::u16string;

inline std::set<char16_t> makeIllegal(bool inPathname) {
    std::set<char16_t> set = {u'/', u':', u'*', u'?', u'"', u'<', u'>', u'|'};
    if (!inPathname) {
        set.insert(u'\\');
    }
    for (char16_t unit = 1; unit < 32; ++unit) {
        set.insert(unit);
    }
    return set;
}

inline const std::set<char16_t>& illegal(bool inPathname) {
    static const std::set<char16_t> inFilenames = makeIllegal(false);
    static const std::set<char16_t> inPathnames = makeIllegal(true);
    return inPathname ? inPathnames : inFilenames;
}

inline Units replaceInvalidChars(const Units& text, const std::set<char16_t>& set,
                                 const Units& replacement) {
    Units result;
    for (const char16_t unit : text) {
        result += set.contains(unit) ? replacement : Units(1, unit);
    }
    return result;
}

inline Units validFilename(const Units& name) {
    Units result = replaceInvalidChars(name, illegal(false), u"_");
    if (result.ends_with(u'.') || result.ends_with(u' ')) {
        result = result.substr(0, result.size() - 1) + u"_";
    }
    return result;
}

inline Units spelled(char16_t unit) {
    Units result = u"U";
    for (int shift = 12; shift >= 0; shift -= 4) {
        result += u"0123456789ABCDEF"[unit >> shift & 15];
    }
    return result;
}

inline Units validFilenameByTranscoding(const Units& name) {
    Units result;
    for (const char16_t unit : name) {
        if (unit > 126) {
            result += spelled(unit);
        } else {
            result += unit < 32 || illegal(false).contains(unit) ? u'_' : unit;
        }
    }
    if (result.ends_with(u'.')) {
        result.back() = u'_';
    }
    return result;
}

inline Units byTranscoding(const Units& text) {
    Units result;
    for (const char16_t unit : text) {
        result += static_cast<char16_t>(unit - 32) <= 94 ? Units(1, unit) : spelled(unit);
    }
    return result;
}

inline Units replaced(Units text, char16_t from, char16_t to) {
    for (char16_t& unit : text) {
        unit = unit == from ? to : unit;
    }
    return text;
}

inline Units toWindows(const Units& path) { return replaced(path, u'/', u'\\'); }

inline Units fromWindows(const Units& path) {
    Units result = replaced(path, u'\\', u'/');
    if (path.size() == 3 && path.substr(1, 2) == u":\\") {
        return result;
    }
    if (path.size() >= 2 && result.back() == u'/') {
        result.pop_back();
    }
    return result;
}

inline std::pair<Units, Units> decompose(const Units& path) {
    const Units converted = toWindows(path);
    if (converted.size() > 2 && converted.substr(1, 2) == u":\\") {
        const std::string prefix = bytesFromUTF16(converted.substr(0, 3));
        return {utf16FromBytes(uppercaseString(prefix)), converted.substr(3)};
    }
    return {{}, converted};
}

inline Units validPathname(const Units& path) {
    const auto [drive, rest] = decompose(path);
    return drive + replaceInvalidChars(rest, illegal(true), u"_");
}

/// An operation of slash paths, on units.
template <class Operation>
Units onSlashForm(const Units& path, Operation operation) {
    return utf16FromBytes(std::string(operation(bytesFromUTF16(fromWindows(path)))));
}

inline Units deletingPathExtension(const Units& path) {
    return toWindows(onSlashForm(path, &stringByDeletingPathExtension));
}

inline Units appendingPathExtension(const Units& path, const std::string& extension) {
    return toWindows(onSlashForm(path, [&](const std::string& slashes) {
        return stringByAppendingPathExtension(slashes, extension);
    }));
}

inline Units extensionOf(const Units& path) { return onSlashForm(path, &pathExtension); }

inline Units deletingLastPathComponent(const Units& path) {
    const auto [drive, rest] = decompose(path);
    return drive + toWindows(onSlashForm(rest, &stringByDeletingLastPathComponent));
}

inline Units appendingPathComponent(const Units& path, const std::string& component) {
    const auto [drive, rest] = decompose(path);
    if (rest.empty()) {
        return drive + utf16FromBytes(component);
    }
    return drive + toWindows(onSlashForm(rest, [&](const std::string& slashes) {
               return stringByAppendingPathComponent(slashes, component);
           }));
}

inline Units lastPathComponentOf(const Units& path) {
    return onSlashForm(decompose(path).second, &lastPathComponent);
}

inline std::vector<std::string> pathComponentsOf(const Units& path) {
    const auto [drive, rest] = decompose(path);
    std::vector<std::string> components = pathComponents(bytesFromUTF16(fromWindows(rest)));
    if (!drive.empty()) {
        components.insert(components.begin(), bytesFromUTF16(drive));
    }
    return components;
}

} // namespace tav::reference
