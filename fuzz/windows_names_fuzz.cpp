// Names and paths for Windows devices: any bytes, every operation, against the slow reference and
// what must hold of every result. The first two bytes choose the set, the encoding and where the
// argument of two-argument operations begins.

#include "base/Unicode.hpp"
#include "foundation/LocalFilename.hpp"
#include "foundation/TextEncoding.hpp"
#include "foundation/WindowsFilename.hpp"
#include "foundation/WindowsPath.hpp"
#include "foundation/WindowsReference_test.hpp"
#include "foundation/WindowsUnicodeText.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace tav;

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

std::string text(const reference::Units& units) { return bytesFromUTF16(units); }

bool holdsNone(std::string_view name, const CharacterSet& set) {
    return std::none_of(name.begin(), name.end(), [&](char character) {
        return set.contains(static_cast<unsigned char>(character));
    });
}

void checkNames(const std::string& name, const reference::Units& units) {
    const std::string valid = windowsValidFilename(name);
    expect(valid == text(reference::validFilename(units)));
    expect(valid.size() == name.size());
    expect(holdsNone(valid, illegalFilenameCharset));
    expect(valid.empty() || (valid.back() != '.' && valid.back() != ' '));
    expect(windowsValidFilename(valid) == valid);

    const std::string ascii = windowsValidFilenameUsingASCIIOnly(name, true);
    expect(isASCII(ascii) && windowsValidFilename(ascii) == ascii);

    const std::string transcoded = windowsValidFilenameByTranscodingNonASCIIChars(name);
    expect(transcoded == text(reference::validFilenameByTranscoding(units)));
    expect(transcoded.size() >= units.size() && (transcoded.size() - units.size()) % 4 == 0);
    expect(holdsNone(transcoded, illegalFilenameCharset));
    expect(windowsValidFilenameByTranscodingNonASCIIChars(transcoded) == transcoded);

    const std::string spelled = stringByTranscodingNonASCIIChars(name);
    expect(spelled == text(reference::byTranscoding(units)));
    expect(stringByTranscodingNonASCIIChars(spelled) == spelled);

    const std::string local = stringByMakingValidFilename(name);
    if (name.find('\0') != std::string::npos) {
        expect(local == name);
    } else {
        expect(local.find_first_of(":/") == std::string::npos);
        // What stood on both sides of a separator may join, or change order, when it is decomposed.
        const bool hasSeparator = name.find_first_of(":/") != std::string::npos;
        expect(hasSeparator || stringByMakingValidFilename(local) == local);
    }
}

void checkSets(const std::string& name, const reference::Units& units, std::string_view members,
               std::string_view replacement) {
    const CharacterSet set = CharacterSet::withCharactersInString(members);
    std::set<char16_t> memberUnits;
    for (const char16_t unit : utf16FromBytes(members)) {
        if (set.contains(unit)) {
            memberUnits.insert(unit);
        }
    }
    const auto expected = [&](std::string_view with) {
        return text(reference::replaceInvalidChars(units, memberUnits, utf16FromBytes(with)));
    };
    expect(replaceInvalidChars(name, set, replacement) == expected(replacement));
    expect(stringByRemovingCharactersFromSet(name, &set) == expected(""));
    expect(stringByRemovingCharactersFromSet(name, nullptr) == name);
}

void checkPaths(const std::string& path, const reference::Units& units,
                const std::string& argument) {
    const std::string slashes = pathFromWindowsPath(path);
    expect(slashes == text(reference::fromWindows(units)));
    expect(slashes.find('\\') == std::string::npos);
    expect(slashes.size() == path.size() || slashes.size() + 1 == path.size());

    const std::string converted = windowsPathFromPath(path);
    expect(converted.size() == path.size() && converted.find('/') == std::string::npos);

    const WindowsPathParts parts = decomposeWindowsPath(path);
    const auto [drive, rest] = reference::decompose(units);
    expect(parts.drive == text(drive) && parts.path == text(rest));
    if (parts.drive.empty()) {
        expect(parts.path == converted);
    } else {
        expect(parts.drive.ends_with(":\\") && converted.ends_with(":\\" + parts.path));
    }

    const std::string valid = windowsValidPathname(path);
    expect(valid == text(reference::validPathname(units)));
    expect(valid.starts_with(parts.drive) &&
           holdsNone(valid.substr(parts.drive.size()), illegalPathnameCharset));

    expect(windowsStringByDeletingPathExtension(path) ==
           text(reference::deletingPathExtension(units)));
    expect(windowsStringByAppendingPathExtension(path, argument) ==
           text(reference::appendingPathExtension(units, argument)));
    expect(windowsPathExtension(path) == text(reference::extensionOf(units)));
    expect(windowsStringByDeletingLastPathComponent(path) ==
           text(reference::deletingLastPathComponent(units)));
    expect(windowsStringByAppendingPathComponent(path, argument) ==
           text(reference::appendingPathComponent(units, argument)));
    expect(windowsLastPathComponent(path) == text(reference::lastPathComponentOf(units)));
    const std::vector<std::string> components = windowsPathComponents(path);
    expect(components == reference::pathComponentsOf(units));
    expect(windowsPathWithComponents(components).find('/') == std::string::npos);
}

void checkData(const std::string& name, const reference::Units& units) {
    Data data = dataFromText(name);
    expect(utf16Length(stringWithWindowsUnicodeData(data)) <= name.size() / 2);
    Data swappedBack = data;
    for (std::size_t at = 0; at + 1 < swappedBack.size(); at += 2) {
        std::swap(swappedBack[at], swappedBack[at + 1]);
    }
    expect(textOf(swappedBack) == name);

    data = dataUnicodeNoBOMLE(name);
    expect(data.size() == 2 * units.size());
    const bool hasMark = !units.empty() && (units[0] == 0xFEFF || units[0] == 0xFFFE);
    const std::string again = stringWithWindowsUnicodeData(data);
    expect(hasMark || again == name);
    expect(data == dataUnicodeNoBOMBE(name));
}

void checkEncoding(const std::string& name, std::uint32_t encoding) {
    // Any bytes end in a text or in none; a text that was read can be written, with loss at least.
    if (const auto read = stringWithData(bytesOf(name), encoding)) {
        expect(dataUsingEncoding(*read, encoding, true).has_value());
    }
    const auto data = dataUsingEncoding(name, encoding);
    const auto lossy = dataUsingEncoding(name, encoding, true);
    expect(lossy.has_value());
    expect(!data || data == lossy);
    const std::string converted = convertToEncoding(name, encoding);
    expect(data || converted == name);
    if (isASCII(name) && encoding != TextEncoding::Symbol && encoding != TextEncoding::ISO2022JP) {
        expect(converted == name);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    constexpr std::array encodings = {TextEncoding::ASCII,          TextEncoding::NEXTSTEP,
                                      TextEncoding::JapaneseEUC,    TextEncoding::UTF8,
                                      TextEncoding::ISOLatin1,      TextEncoding::Symbol,
                                      TextEncoding::NonLossyASCII,  TextEncoding::ShiftJIS,
                                      TextEncoding::ISOLatin2,      TextEncoding::Unicode,
                                      TextEncoding::WindowsCP1251,  TextEncoding::WindowsCP1252,
                                      TextEncoding::WindowsCP1253,  TextEncoding::WindowsCP1254,
                                      TextEncoding::WindowsCP1250,  TextEncoding::ISO2022JP,
                                      TextEncoding::MacOSRoman,     TextEncoding::UTF32,
                                      TextEncoding::UTF16BigEndian, TextEncoding::UTF16LittleEndian,
                                      TextEncoding::UTF32BigEndian};
    if (size < 2) {
        return 0;
    }
    const std::string name(reinterpret_cast<const char*>(bytes + 2), size - 2);
    const std::size_t split = name.empty() ? 0 : bytes[0] % name.size();
    const std::string argument = name.substr(name.size() - split);
    const reference::Units units = utf16FromBytes(name);
    checkNames(name, units);
    checkSets(name, units, argument, std::string_view(name).substr(0, split));
    checkPaths(name, units, argument);
    checkData(name, units);
    checkEncoding(name, encodings[bytes[1] % encodings.size()]);
    return 0;
}
