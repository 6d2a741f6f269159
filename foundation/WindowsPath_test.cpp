#include "base/Unicode.hpp"
#include "foundation/WindowsPath.hpp"
#include "foundation/WindowsReference_test.hpp"
#include "testing/Golden.hpp"

#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

namespace {

using namespace std::string_literals;
using Components = std::vector<std::string>;

TEST(WindowsPath, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("edges.json", "pathFromWindowsPath")) {
        EXPECT_EQ(pathFromWindowsPath(golden.in.get<std::string>()), golden.out)
            << golden.description();
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "decomposeWindowsPath")) {
        const WindowsPathParts parts = decomposeWindowsPath(golden.in.get<std::string>());
        EXPECT_EQ(parts.drive, golden.out.at("drive")) << golden.description();
        EXPECT_EQ(parts.path, golden.out.at("path")) << golden.description();
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "windowsPathComponents")) {
        EXPECT_EQ(nlohmann::json(windowsPathComponents(golden.in.get<std::string>())), golden.out)
            << golden.description();
    }
    for (const GoldenCase& golden :
         goldenCases("edges.json", "windowsStringByAppendingPathComponent")) {
        EXPECT_EQ(windowsStringByAppendingPathComponent(golden.in.at("self").get<std::string>(),
                                                        golden.in.at("arg").get<std::string>()),
                  golden.out)
            << golden.description();
    }
}

TEST(WindowsPath, SlashesBecomeBackslashesAndNothingElseChanges) {
    EXPECT_EQ(windowsPathFromPath("/a/b\\c/"), "\\a\\b\\c\\");
    EXPECT_EQ(windowsPathFromPath("c:/"), "c:\\");
    EXPECT_EQ(windowsPathFromPath("é\xFF/\0"s), "é\xFF\\\0"s);
    EXPECT_EQ(windowsPathFromPath(""), "");
}

TEST(WindowsPath, OnlyADrivesRootKeepsItsSeparator) {
    EXPECT_EQ(pathFromWindowsPath("C:\\"), "C:/");
    EXPECT_EQ(pathFromWindowsPath("C:\\Docs\\"), "C:/Docs");
    EXPECT_EQ(pathFromWindowsPath("C:\\\\"), "C:/");
    EXPECT_EQ(pathFromWindowsPath("ab\\"), "ab");
    EXPECT_EQ(pathFromWindowsPath("\\"), "/");
    EXPECT_EQ(pathFromWindowsPath("/"), "/");
    EXPECT_EQ(pathFromWindowsPath("a\\\\"), "a/");
    EXPECT_EQ(pathFromWindowsPath("a\\"), "a");
    EXPECT_EQ(pathFromWindowsPath("\\\\"), "/");
    EXPECT_EQ(pathFromWindowsPath("\\\\\\"), "//");
    EXPECT_EQ(pathFromWindowsPath(""), "");
    EXPECT_EQ(pathFromWindowsPath("a/b\\c"), "a/b/c");
    // Looked at before the separators change.
    EXPECT_EQ(pathFromWindowsPath("C:/"), "C:");
    EXPECT_EQ(pathFromWindowsPath("::\\"), "::/");
    EXPECT_EQ(pathFromWindowsPath("\\:\\"), "/:/");
}

TEST(WindowsPath, LengthsCountUnits) {
    EXPECT_EQ(pathFromWindowsPath("é:\\"), "é:/");
    EXPECT_EQ(pathFromWindowsPath("日:\\"), "日:/");
    EXPECT_EQ(pathFromWindowsPath("\xFF:\\"), "\xFF:/");
    EXPECT_EQ(pathFromWindowsPath("😀:\\"), "😀:");
    EXPECT_EQ(pathFromWindowsPath("ab:\\"), "ab:");
    EXPECT_EQ(pathFromWindowsPath("abc:\\"), "abc:");
    EXPECT_EQ(pathFromWindowsPath("\xFF\xFF:\\"), "\xFF\xFF:");
    EXPECT_EQ(pathFromWindowsPath("e\u0301:\\"), "e\u0301:");
    EXPECT_EQ(pathFromWindowsPath("é\\"), "é");
}

TEST(WindowsPath, Decomposition) {
    const auto parts = [](std::string drive, std::string path) {
        return WindowsPathParts{std::move(drive), std::move(path)};
    };
    EXPECT_EQ(decomposeWindowsPath("c:\\Music\\a.mp3"), parts("C:\\", "Music\\a.mp3"));
    EXPECT_EQ(decomposeWindowsPath("c:/Music"), parts("C:\\", "Music"));
    EXPECT_EQ(decomposeWindowsPath("C:"), parts("", "C:"));
    EXPECT_EQ(decomposeWindowsPath("C:x"), parts("", "C:x"));
    EXPECT_EQ(decomposeWindowsPath("C:foo/a"), parts("", "C:foo\\a"));
    EXPECT_EQ(decomposeWindowsPath("c:\\"), parts("C:\\", ""));
    EXPECT_EQ(decomposeWindowsPath("c:/"), parts("C:\\", ""));
    EXPECT_EQ(decomposeWindowsPath("c:\\\\a"), parts("C:\\", "\\a"));
    EXPECT_EQ(decomposeWindowsPath("cd:\\a"), parts("", "cd:\\a"));
    EXPECT_EQ(decomposeWindowsPath(""), parts("", ""));
    EXPECT_EQ(decomposeWindowsPath(":\\"), parts("", ":\\"));
    EXPECT_EQ(decomposeWindowsPath("/server/share"), parts("", "\\server\\share"));
    // Only the prefix is upper-cased.
    EXPECT_EQ(decomposeWindowsPath("c:\\c:\\x"), parts("C:\\", "c:\\x"));
}

TEST(WindowsPath, AnyUnitMayBeADrivesLetter) {
    const auto drive = [](std::string_view path) { return decomposeWindowsPath(path).drive; };
    EXPECT_EQ(drive("é:\\a"), "É:\\");
    EXPECT_EQ(drive("ß:/a"), "SS:\\");
    EXPECT_EQ(drive("ﬁ:\\"), "FI:\\");
    EXPECT_EQ(drive("日:\\a"), "日:\\");
    EXPECT_EQ(drive("\xE9:\\a"), "\xE9:\\");
    EXPECT_EQ(drive("1:\\a"), "1:\\");
    EXPECT_EQ(drive("::\\a"), "::\\");
    EXPECT_EQ(drive("/:/a"), "\\:\\");
    EXPECT_EQ(drive("\0:\\"s), "\0:\\"s);
    // Of two units, or two characters.
    EXPECT_EQ(drive("😀:\\a"), "");
    EXPECT_EQ(drive("\U00010428:\\a"), "");
    EXPECT_EQ(drive("e\u0301:\\a"), "");
    EXPECT_EQ(drive("\xC3\xC3:\\a"), "");
    EXPECT_EQ(drive("\xE2\x82:\\a"), "");
}

TEST(WindowsPath, Extensions) {
    EXPECT_EQ(windowsPathExtension("C:\\a\\b.txt"), "txt");
    EXPECT_EQ(windowsPathExtension("C:\\a.b\\c"), "");
    EXPECT_EQ(windowsPathExtension("a.txt\\"), "txt");
    EXPECT_EQ(windowsPathExtension(""), "");
    EXPECT_EQ(windowsStringByDeletingPathExtension("c:\\a\\b.txt"), "c:\\a\\b");
    EXPECT_EQ(windowsStringByDeletingPathExtension("c:/a/b.txt"), "c:\\a\\b");
    EXPECT_EQ(windowsStringByDeletingPathExtension("a.b\\"), "a");
    EXPECT_EQ(windowsStringByDeletingPathExtension(""), "");
    EXPECT_EQ(windowsStringByAppendingPathExtension("c:\\a", "txt"), "c:\\a.txt");
    EXPECT_EQ(windowsStringByAppendingPathExtension("c:\\a\\", "txt"), "c:\\a.txt");
    EXPECT_EQ(windowsStringByAppendingPathExtension("a", "b/c"), "a.b\\c");
    EXPECT_EQ(windowsStringByAppendingPathExtension("", "txt"), "");
    // No drive prefix is set aside here: a drive's root is a name with a slash behind it.
    EXPECT_EQ(windowsStringByAppendingPathExtension("c:\\", "txt"), "c:.txt");
}

TEST(WindowsPath, LastComponents) {
    EXPECT_EQ(windowsLastPathComponent("C:\\a\\b"), "b");
    EXPECT_EQ(windowsLastPathComponent("C:\\a\\b\\"), "b");
    EXPECT_EQ(windowsLastPathComponent("C:\\"), "");
    EXPECT_EQ(windowsLastPathComponent("C:"), "C:");
    EXPECT_EQ(windowsLastPathComponent("C:x"), "C:x");
    EXPECT_EQ(windowsLastPathComponent(""), "");
    EXPECT_EQ(windowsStringByDeletingLastPathComponent("c:\\a\\b"), "C:\\a");
    EXPECT_EQ(windowsStringByDeletingLastPathComponent("c:\\a"), "C:\\");
    EXPECT_EQ(windowsStringByDeletingLastPathComponent("c:\\"), "C:\\");
    EXPECT_EQ(windowsStringByDeletingLastPathComponent("a\\b\\"), "a");
    EXPECT_EQ(windowsStringByDeletingLastPathComponent("a"), "");
    EXPECT_EQ(windowsStringByDeletingLastPathComponent("\\a"), "\\");
    EXPECT_EQ(windowsStringByDeletingLastPathComponent(""), "");
}

TEST(WindowsPath, AppendingAComponent) {
    EXPECT_EQ(windowsStringByAppendingPathComponent("C:\\", "x/y"), "C:\\x/y");
    EXPECT_EQ(windowsStringByAppendingPathComponent("c:\\", "\\x\\"), "C:\\\\x\\");
    EXPECT_EQ(windowsStringByAppendingPathComponent("", "x/y"), "x/y");
    EXPECT_EQ(windowsStringByAppendingPathComponent("C:\\a", "b"), "C:\\a\\b");
    EXPECT_EQ(windowsStringByAppendingPathComponent("C:\\a", "b/c"), "C:\\a\\b\\c");
    EXPECT_EQ(windowsStringByAppendingPathComponent("C:\\a\\", "b"), "C:\\a\\b");
    EXPECT_EQ(windowsStringByAppendingPathComponent("a", "b"), "a\\b");
    EXPECT_EQ(windowsStringByAppendingPathComponent("C:\\a", ""), "C:\\a");
    EXPECT_EQ(windowsStringByAppendingPathComponent("C:\\", ""), "C:\\");
}

TEST(WindowsPath, ComponentsApartAndTogether) {
    EXPECT_EQ(windowsPathComponents("C:\\a\\b"), (Components{"C:\\", "a", "b"}));
    EXPECT_EQ(windowsPathComponents("a\\b"), (Components{"a", "b"}));
    EXPECT_EQ(windowsPathComponents("c:/a/b/"), (Components{"C:\\", "a", "b"}));
    EXPECT_EQ(windowsPathComponents("C:\\"), (Components{"C:\\"}));
    EXPECT_EQ(windowsPathComponents(""), Components());
    EXPECT_EQ(windowsPathComponents("\\a"), (Components{"/", "a"}));
    EXPECT_EQ(windowsPathComponents("C:\\\\"), (Components{"C:\\", "/"}));
    // A drive's root behind a drive's root keeps its separator, which is a component then.
    EXPECT_EQ(windowsPathComponents("C:\\D:\\"), (Components{"C:\\", "D:", "/"}));
    EXPECT_EQ(windowsPathWithComponents(Components{"a", "b"}), "a\\b");
    EXPECT_EQ(windowsPathWithComponents(Components{"/", "a"}), "\\a");
    EXPECT_EQ(windowsPathWithComponents(Components{}), "");
    // The drive prefix is a component like any other.
    EXPECT_EQ(windowsPathWithComponents(Components{"C:\\", "a"}), "C:\\\\a");
}

TEST(WindowsPath, ValidPathnames) {
    EXPECT_EQ(windowsValidPathname("c:\\a:b\\c?d"), "C:\\a_b\\c_d");
    EXPECT_EQ(windowsValidPathname("c:/a/b. "), "C:\\a\\b. ");
    EXPECT_EQ(windowsValidPathname("C:x"), "C_x");
    EXPECT_EQ(windowsValidPathname("a\\*?\"<>|\n\x1F\\b."), "a\\________\\b.");
    EXPECT_EQ(windowsValidPathname("::\\a:"), "::\\a_");
    EXPECT_EQ(windowsValidPathname("a\0\x7F\xFF"s), "a\0\x7F\xFF"s);
    EXPECT_EQ(windowsValidPathname(""), "");
    EXPECT_EQ(windowsValidPathname("c:\\"), "C:\\");
}

TEST(WindowsPath, AgreesWithTheReference) {
    static const std::string_view pieces[] = {"é",    "ß",    "日",       "😀",    "\xFF",
                                              "\xC3", "\xA9", "\xE2\x82", "C:\\", ":\\"};
    constexpr std::string_view alphabet = "\\\\/:.abc ?";
    std::mt19937 random(20091122);
    int drives = 0;
    for (int round = 0; round < 50000; ++round) {
        std::string path;
        for (auto count = random() % 9; count > 0; --count) {
            if (random() % 3 == 0) {
                path += pieces[random() % std::size(pieces)];
            } else {
                path += alphabet[random() % alphabet.size()];
            }
        }
        const auto text = [](const std::u16string& units) { return bytesFromUTF16(units); };
        const std::u16string units = utf16FromBytes(path);
        ASSERT_EQ(pathFromWindowsPath(path), text(reference::fromWindows(units))) << path;
        const auto [drive, rest] = reference::decompose(units);
        ASSERT_EQ(decomposeWindowsPath(path), (WindowsPathParts{text(drive), text(rest)})) << path;
        drives += drive.empty() ? 0 : 1;
        ASSERT_EQ(windowsValidPathname(path), text(reference::validPathname(units)));
        ASSERT_EQ(windowsStringByDeletingPathExtension(path),
                  text(reference::deletingPathExtension(units)));
        ASSERT_EQ(windowsStringByAppendingPathExtension(path, "x/y"),
                  text(reference::appendingPathExtension(units, "x/y")));
        ASSERT_EQ(windowsPathExtension(path), text(reference::extensionOf(units)));
        ASSERT_EQ(windowsStringByDeletingLastPathComponent(path),
                  text(reference::deletingLastPathComponent(units)));
        ASSERT_EQ(windowsStringByAppendingPathComponent(path, "x/y"),
                  text(reference::appendingPathComponent(units, "x/y")));
        ASSERT_EQ(windowsLastPathComponent(path), text(reference::lastPathComponentOf(units)));
        ASSERT_EQ(windowsPathComponents(path), reference::pathComponentsOf(units));
    }
    EXPECT_GT(drives, 2000);
}

} // namespace

} // namespace tav
