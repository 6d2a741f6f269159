#include "platform/FileSystemConformance_test.hpp"

namespace tav {
namespace {

// Attributes.

TEST_P(FileSystemConformance, AttributesOfAFile) {
    makeFile("f", "12345");
    const FileAttributes file = attributesOf("f");
    EXPECT_EQ(file.kind, FileKind::Regular);
    EXPECT_EQ(file.permissions, 0600U);
    EXPECT_EQ(file.size, 5U);
    EXPECT_NE(file.identity.number, 0U);
    EXPECT_GT(file.modificationDate, Date(0));
    EXPECT_GE(file.changeDate, file.modificationDate);
    EXPECT_EQ(file.identity.device, attributesOf(".").identity.device);
}

TEST_P(FileSystemConformance, AttributesOfFoldersAndLinks) {
    makeFolder("d");
    makeLink("l", "d");
    EXPECT_EQ(attributesOf("d").kind, FileKind::Folder);
    EXPECT_EQ(attributesOf("d").permissions, 0700U);
    EXPECT_EQ(attributesOf("l").kind, FileKind::Link);
    EXPECT_EQ(attributesOf("l").size, 1U);
    EXPECT_EQ(attributesOf("l/").kind, FileKind::Folder);
    const auto target = files.targetAttributes(path("l"));
    ASSERT_TRUE(target.ok());
    EXPECT_EQ(target.value().identity, attributesOf("d").identity);
    EXPECT_NE(target.value().identity, attributesOf("l").identity);
}

TEST_P(FileSystemConformance, WhatIsMissingHasNoAttributes) {
    makeFile("f");
    makeLink("nowhere", "gone");
    EXPECT_EQ(errorOfAttributes("gone"), ENOENT);
    EXPECT_EQ(errorOfAttributes("gone/x"), ENOENT);
    EXPECT_EQ(errorOfAttributes("f/x"), ENOTDIR);
    EXPECT_EQ(errorOfAttributes("f/"), ENOTDIR);
    EXPECT_EQ(errorOfAttributes("f/.."), ENOTDIR);
    EXPECT_EQ(errorOfAttributes("gone/.."), ENOENT);
    EXPECT_EQ(errorOfAttributes("nowhere"), 0);
    EXPECT_EQ(errorOfAttributes("nowhere/"), ENOENT);
    EXPECT_EQ(files.targetAttributes(path("nowhere")).error(), SystemError(ENOENT));
}

TEST_P(FileSystemConformance, AWriteKeepsTheIdentityAndAReplacementDoesNot) {
    makeFile("f", "one");
    const FileIdentity first = attributesOf("f").identity;
    makeFile("f", "other");
    EXPECT_EQ(attributesOf("f").identity, first);
    makeFile("g", "new");
    ASSERT_EQ(errorOfMove("g", "f", Replace::Yes), 0);
    EXPECT_NE(attributesOf("f").identity, first);
}

// Every operation with paths that are none.

TEST_P(FileSystemConformance, PathsThatAreNoneFailEverywhere) {
    makeFile("f", "text");
    makeFolder("d");
    struct Case {
        std::string path;
        int error;
    };
    using namespace std::string_literals;
    const std::vector<Case> cases = {
        {"", ENOENT},
        {path("n\0l"s), EINVAL},
        {path("f") + "\0"s, EINVAL},
        {path(std::string(256, 'n')), ENAMETOOLONG},
        {path(std::string(256, 'n')) + "/x", ENAMETOOLONG},
        {path("f/x"), ENOTDIR},
        {path("gone/x"), ENOENT},
    };
    for (const auto& [wrong, error] : cases) {
        EXPECT_EQ(files.attributes(wrong).error().number(), error) << wrong;
        EXPECT_EQ(files.targetAttributes(wrong).error().number(), error) << wrong;
        EXPECT_EQ(files.folderEntries(wrong).error().number(), error) << wrong;
        EXPECT_EQ(files.linkTarget(wrong).error().number(), error) << wrong;
        EXPECT_EQ(files.canonicalPath(wrong).error().number(), error) << wrong;
        EXPECT_EQ(files.readFile(wrong, unlimited).error().number(), error) << wrong;
        EXPECT_EQ(files.writeFile(wrong, {}, 0600).number(), error) << wrong;
        EXPECT_EQ(files.openFolder(wrong).error().number(), error) << wrong;
        EXPECT_EQ(files.open(wrong, {}).error().number(), error) << wrong;
        EXPECT_EQ(files.syncFolder(wrong).number(), error) << wrong;
        EXPECT_EQ(files.setModificationDate(wrong, Date(0)).number(), error) << wrong;
        EXPECT_EQ(files.extendedAttribute(wrong, "user.a").error().number(), error) << wrong;
        EXPECT_EQ(files.setExtendedAttribute(wrong, "user.a", {}).number(), error) << wrong;
        EXPECT_EQ(files.removeExtendedAttribute(wrong, "user.a").number(), error) << wrong;
        EXPECT_EQ(files.createFolder(wrong, 0700).number(), error) << wrong;
        EXPECT_EQ(files.createLink(wrong, "x").number(), error) << wrong;
        EXPECT_EQ(files.setPermissions(wrong, 0600).number(), error) << wrong;
        EXPECT_EQ(files.removeFile(wrong).number(), error) << wrong;
        EXPECT_EQ(files.removeFolder(wrong).number(), error) << wrong;
        for (const Replace replace : {Replace::No, Replace::Yes}) {
            EXPECT_EQ(files.move(wrong, path("new"), replace).number(), error) << wrong;
            EXPECT_EQ(files.move(path("f"), wrong, replace).number(), error) << wrong;
        }
    }
    EXPECT_EQ(namesIn("."), (Names{"d", "f"}));
    EXPECT_EQ(read("f"), "text");
}

// Names.

TEST_P(FileSystemConformance, NamesAreBytes) {
    const std::string everyByte = [] {
        std::string name;
        for (int byte = 1; byte < 256; ++byte) {
            if (byte != '/') {
                name += static_cast<char>(byte);
            }
        }
        return name;
    }();
    const Names names = {"\n",       "  ",        "-rf",      "...", "\\",  "\xC3\x28",
                         "\xFF\xFE", "e\xCC\x81", "\xC3\xA9", "~",   "a:b", everyByte};
    for (const std::string& name : names) {
        makeFile(name, name);
    }
    Names sorted = names;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(namesIn("."), sorted);
    for (const std::string& name : names) {
        EXPECT_EQ(read(name), name);
        EXPECT_EQ(files.canonicalPath(path(name)).value(), path(name));
        makeLink("link", name);
        EXPECT_EQ(files.linkTarget(path("link")).value(), name);
        EXPECT_TRUE(files.removeFile(path("link")).isNone());
    }
}

TEST_P(FileSystemConformance, NamesMayHave255Bytes) {
    const std::string longest(255, 'n');
    makeFile(longest, "text");
    EXPECT_EQ(read(longest), "text");
    EXPECT_EQ(namesIn("."), Names{longest});
    EXPECT_EQ(errorOfMove(longest, longest + "n", Replace::No), ENAMETOOLONG);
}

TEST_P(FileSystemConformance, DotsAndSlashesAreWalked) {
    makeFolder("d");
    makeFile("d/f", "text");
    EXPECT_EQ(read("d//./../d/f"), "text");
    EXPECT_EQ(attributesOf("d/.").identity, attributesOf("d").identity);
    EXPECT_EQ(attributesOf("d/..").identity, attributesOf("").identity);
    EXPECT_TRUE(files.attributes("/../..").ok());
}

// Links.

TEST_P(FileSystemConformance, LinksLeadOn) {
    makeFolder("d");
    makeFolder("d/e");
    makeFile("d/e/f", "text");
    makeLink("relative", "d/e");
    makeLink("absolute", path("d"));
    makeLink("d/up", "..");
    makeLink("chain", "d/up/relative/");
    makeLink("file", "chain/f");
    EXPECT_EQ(read("relative/f"), "text");
    EXPECT_EQ(read("absolute/e/f"), "text");
    EXPECT_EQ(read("d/up/d/up/d/e/f"), "text");
    EXPECT_EQ(read("chain/f"), "text");
    EXPECT_EQ(read("file"), "text");
    EXPECT_EQ(read("relative/../e/f"), "text");
    EXPECT_EQ(namesIn("chain"), Names{"f"});
    EXPECT_EQ(errorOfAttributes("file/"), ENOTDIR);
    EXPECT_EQ(files.canonicalPath(path("file")).value(), path("d/e/f"));
    EXPECT_EQ(files.canonicalPath(path("chain/..")).value(), path("d"));
}

TEST_P(FileSystemConformance, LoopsEnd) {
    makeLink("self", "self");
    makeLink("a", "b");
    makeLink("b", "a");
    for (const std::string_view name : {"self", "a", "self/x"}) {
        EXPECT_EQ(files.targetAttributes(path(name)).error(), SystemError(ELOOP)) << name;
        EXPECT_EQ(files.readFile(path(name), 100).error(), SystemError(ELOOP)) << name;
        EXPECT_EQ(files.folderEntries(path(name)).error(), SystemError(ELOOP)) << name;
        EXPECT_EQ(files.canonicalPath(path(name)).error(), SystemError(ELOOP)) << name;
        EXPECT_EQ(files.setPermissions(path(name), 0600), SystemError(ELOOP)) << name;
        EXPECT_EQ(write(name, "x"), SystemError(ELOOP)) << name;
    }
    EXPECT_EQ(errorOfAttributes("self"), 0);
    EXPECT_EQ(errorOfAttributes("self/"), ELOOP);
    EXPECT_TRUE(files.removeFile(path("self")).isNone());
}

TEST_P(FileSystemConformance, FortyLinksAreFollowedAndNotOneMore) {
    makeFile("0", "text");
    for (int number = 1; number <= 41; ++number) {
        makeLink(std::to_string(number), std::to_string(number - 1));
    }
    EXPECT_EQ(read("40"), "text");
    EXPECT_EQ(files.readFile(path("41"), 100).error(), SystemError(ELOOP));
}

TEST_P(FileSystemConformance, LinkTargetsAreTexts) {
    makeFile("f");
    makeFolder("d");
    makeLink("l", "../no such//thing/./\n\xFF");
    EXPECT_EQ(files.linkTarget(path("l")).value(), "../no such//thing/./\n\xFF");
    EXPECT_EQ(files.linkTarget(path("f")).error(), SystemError(EINVAL));
    EXPECT_EQ(files.linkTarget(path("d")).error(), SystemError(EINVAL));
    EXPECT_EQ(files.linkTarget(path("gone")).error(), SystemError(ENOENT));
}

TEST_P(FileSystemConformance, LinksAreMadeOnlyWhereNothingStands) {
    using namespace std::string_view_literals;
    makeFile("f", "text");
    makeFolder("d");
    makeLink("nowhere", "gone");
    for (const std::string_view name : {"f", "d", "nowhere", "."}) {
        EXPECT_EQ(files.createLink(path(name), "x"), SystemError(EEXIST)) << name;
    }
    EXPECT_EQ(files.createLink(path("new"), ""), SystemError(ENOENT));
    EXPECT_EQ(files.createLink(path("new"), "a\0b"sv), SystemError(EINVAL));
    EXPECT_EQ(files.createLink(path("new"), std::string(4096, 'x')), SystemError(ENAMETOOLONG));
    EXPECT_EQ(files.createLink(path("new/"), "x"), SystemError(ENOENT));
    EXPECT_EQ(namesIn("."), (Names{"d", "f", "nowhere"}));
}

// Folders.

TEST_P(FileSystemConformance, ListsNamesAndKinds) {
    makeFile("f");
    makeFolder("d");
    makeLink("l", "gone");
    const auto entries = files.folderEntries(root);
    ASSERT_TRUE(entries.ok());
    EXPECT_EQ(entries.value().size(), 3U);
    for (const FolderEntry& entry : entries.value()) {
        EXPECT_TRUE(entry.kind == FileKind::Unknown || entry.kind == attributesOf(entry.name).kind)
            << entry.name;
    }
    EXPECT_EQ(files.folderEntries(path("f")).error(), SystemError(ENOTDIR));
    EXPECT_EQ(files.folderEntries(path("l")).error(), SystemError(ENOENT));
    EXPECT_TRUE(namesIn("d").empty());
}

TEST_P(FileSystemConformance, ListsMoreThanOneAnswerOfTheKernelHolds) {
    Names expected;
    for (int number = 0; number < 300; ++number) {
        const std::string digits = std::to_string(1000 + number);
        expected.push_back(digits + std::string(250 - digits.size(), 'n'));
        makeFile(expected.back());
    }
    EXPECT_EQ(namesIn("."), expected);
}

TEST_P(FileSystemConformance, FoldersAreMadeOnlyWhereNothingStands) {
    makeFile("f");
    makeFolder("d");
    makeLink("nowhere", "gone");
    for (const std::string_view name : {"f", "d", "d/", "d/.", "d/..", "nowhere"}) {
        EXPECT_EQ(files.createFolder(path(name), 0700), SystemError(EEXIST)) << name;
    }
    EXPECT_EQ(files.createFolder("/", 0700), SystemError(EEXIST));
    EXPECT_TRUE(files.createFolder(path("new/"), 0700).isNone());
    EXPECT_EQ(attributesOf("new").kind, FileKind::Folder);
}

// Contents.

TEST_P(FileSystemConformance, ContentsComeBack) {
    makeFile("empty", "");
    EXPECT_EQ(read("empty"), "");
    std::string large(3'000'000, '\0');
    for (std::size_t index = 0; index < large.size(); ++index) {
        large[index] = static_cast<char>(index * 31 % 251);
    }
    makeFile("large", large);
    EXPECT_TRUE(read("large") == large);
    EXPECT_EQ(attributesOf("large").size, large.size());
    makeFile("large", "short");
    EXPECT_EQ(read("large"), "short");
    makeFile("large", "");
    EXPECT_EQ(read("large"), "");
}

TEST_P(FileSystemConformance, AFileBeyondTheMaximumIsRefused) {
    makeFile("f", "12345");
    EXPECT_EQ(files.readFile(path("f"), 5).value(), dataFromText("12345"));
    EXPECT_EQ(files.readFile(path("f"), 4).error(), SystemError(EFBIG));
    EXPECT_EQ(files.readFile(path("f"), 0).error(), SystemError(EFBIG));
    makeFile("empty");
    EXPECT_TRUE(files.readFile(path("empty"), 0).ok());
}

TEST_P(FileSystemConformance, OnlyFilesAreRead) {
    makeFolder("d");
    makeFile("f", "text");
    makeLink("toFolder", "d");
    makeLink("nowhere", "gone");
    EXPECT_EQ(files.readFile(path("d"), 100).error(), SystemError(EISDIR));
    EXPECT_EQ(files.readFile(path("toFolder"), 100).error(), SystemError(EISDIR));
    EXPECT_EQ(files.readFile(path("nowhere"), 100).error(), SystemError(ENOENT));
    EXPECT_EQ(files.readFile(path("gone"), 100).error(), SystemError(ENOENT));
    EXPECT_EQ(files.readFile(path("f/"), 100).error(), SystemError(ENOTDIR));
    EXPECT_EQ(files.readFile("/", 100).error(), SystemError(EISDIR));
}

TEST_P(FileSystemConformance, WritingGoesThroughLinks) {
    makeFile("f", "old");
    makeLink("link", "f");
    makeLink("nowhere", "made");
    makeFile("link", "new");
    EXPECT_EQ(attributesOf("link").kind, FileKind::Link);
    EXPECT_EQ(read("f"), "new");
    makeFile("nowhere", "text");
    EXPECT_EQ(read("made"), "text");
}

TEST_P(FileSystemConformance, OnlyFilesAreWritten) {
    makeFolder("d");
    makeLink("toFolder", "d");
    for (const std::string_view name : {"d", "d/", "d/.", "toFolder", "new/"}) {
        EXPECT_EQ(write(name, "x"), SystemError(EISDIR)) << name;
    }
    EXPECT_EQ(namesIn("."), (Names{"d", "toFolder"}));
}

TEST_P(FileSystemConformance, WritingKeepsThePermissionsOfAFileThatIsThere) {
    ASSERT_TRUE(files.writeFile(path("f"), {}, 0640).isNone());
    ASSERT_TRUE(files.writeFile(path("f"), bytesOf("x"), 0600).isNone());
    EXPECT_EQ(attributesOf("f").permissions, 0640U);
}

// Permissions.

TEST_P(FileSystemConformance, PermissionsAreSetOnWhatALinkLeadsTo) {
    makeFile("f");
    makeFolder("d");
    makeLink("l", "f");
    makeLink("nowhere", "gone");
    EXPECT_TRUE(files.setPermissions(path("l"), 0751).isNone());
    EXPECT_EQ(attributesOf("f").permissions, 0751U);
    EXPECT_TRUE(files.setPermissions(path("f"), 04755).isNone());
    EXPECT_EQ(attributesOf("f").permissions, 04755U);
    EXPECT_TRUE(files.setPermissions(path("d"), 01777).isNone());
    EXPECT_EQ(attributesOf("d").permissions, 01777U);
    EXPECT_EQ(files.setPermissions(path("nowhere"), 0600), SystemError(ENOENT));
    EXPECT_EQ(files.setPermissions(path("f/"), 0600), SystemError(ENOTDIR));
    EXPECT_TRUE(files.setPermissions(path("f"), 0100600).isNone());
    EXPECT_EQ(attributesOf("f").permissions, 0600U);
    EXPECT_EQ(attributesOf("f").kind, FileKind::Regular);
}

// Canonical paths.

TEST_P(FileSystemConformance, CanonicalPathsHaveNoDetours) {
    makeFolder("d");
    makeFile("d/f");
    makeLink("l", "d");
    makeLink("nowhere", "gone");
    EXPECT_EQ(files.canonicalPath("/").value(), "/");
    EXPECT_EQ(files.canonicalPath("//").value(), "/");
    EXPECT_EQ(files.canonicalPath("/..").value(), "/");
    EXPECT_EQ(files.canonicalPath(root + "//l/./../l/f").value(), path("d/f"));
    EXPECT_EQ(files.canonicalPath(path("l/")).value(), path("d"));
    EXPECT_EQ(files.canonicalPath(path("nowhere")).error(), SystemError(ENOENT));
    EXPECT_EQ(files.canonicalPath(path("d/f/")).error(), SystemError(ENOTDIR));
    EXPECT_EQ(files.canonicalPath(path("d/f/..")).error(), SystemError(ENOTDIR));
}

INSTANTIATE_TEST_SUITE_P(, FileSystemConformance, testing::Values(Kind::Real, Kind::Memory),
                         [](const auto& tested) {
                             return tested.param == Kind::Real ? "Real" : "Memory";
                         });

} // namespace
} // namespace tav
