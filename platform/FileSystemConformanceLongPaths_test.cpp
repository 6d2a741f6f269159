#include "platform/FileSystemConformance_test.hpp"

namespace tav {
namespace {

/// A folder "top" with folders in each other below it.
class LongPathConformance : public FileSystemConformance {
  protected:
    /// Makes so many levels; the innermost one's path, which begins with "top".
    std::string makeLevels(int count, std::size_t nameLength) {
        std::string folder = "top";
        makeFolder(folder);
        for (int level = 0; level < count; ++level) {
            folder += '/' + std::string(nameLength, 'd');
            EXPECT_TRUE(files.createFolder(path(folder), 0700).isNone()) << level;
        }
        return folder;
    }
    /// From the innermost outwards.
    void removeLevels(std::string folder) {
        while (folder.size() > 3) {
            ASSERT_TRUE(files.removeFolder(path(folder)).isNone()) << folder.size();
            folder.resize(folder.rfind('/'));
        }
    }
};

INSTANTIATE_TEST_SUITE_P(, LongPathConformance, testing::Values(Kind::Real, Kind::Memory),
                         [](const auto& tested) {
                             return tested.param == Kind::Real ? "Real" : "Memory";
                         });

TEST_P(LongPathConformance, EveryOperationTakesPathsOf10000Bytes) {
    const std::string deep = makeLevels(50, 200);
    ASSERT_GT(path(deep).size(), 10'000U);
    const auto in = [&](std::string_view name) { return deep + "/" + std::string(name); };

    makeFile(in("f"), "text");
    EXPECT_EQ(read(in("f")), "text");
    EXPECT_EQ(attributesOf(in("f")).size, 4U);
    makeLink(in("l"), "f");
    makeLink(in("up"), "..");
    EXPECT_EQ(attributesOf(in("l")).kind, FileKind::Link);
    EXPECT_EQ(files.targetAttributes(path(in("l"))).value().kind, FileKind::Regular);
    EXPECT_EQ(files.linkTarget(path(in("l"))).value(), "f");
    EXPECT_EQ(read(in("up/" + std::string(200, 'd') + "/l")), "text");
    EXPECT_EQ(namesIn(deep), (Names{"f", "l", "up"}));
    EXPECT_EQ(files.canonicalPath(path(in("l"))).value(), path(in("f")));
    EXPECT_EQ(files.canonicalPath(path(in("up/" + std::string(200, 'd')))).value(), path(deep));
    EXPECT_EQ(files.canonicalPath(path(in("gone"))).error(), SystemError(ENOENT));
    EXPECT_TRUE(files.syncFolder(path(deep)).isNone());
    EXPECT_TRUE(files.setPermissions(path(in("f")), 0640).isNone());
    EXPECT_EQ(attributesOf(in("f")).permissions, 0640U);
    EXPECT_TRUE(files.setModificationDate(path(in("f")), Date(1000)).isNone());
    EXPECT_EQ(attributesOf(in("f")).modificationDate, Date(1000));

    const auto folder = files.openFolder(path(deep));
    ASSERT_TRUE(folder.ok());
    EXPECT_EQ(folder.value()->attributes("f").value().size, 4U);
    OpenOptions options;
    options.write = true;
    options.create = true;
    options.append = true;
    ASSERT_TRUE(files.open(path(in("f")), options).value()->write(bytesOf("!")).isNone());
    EXPECT_EQ(read(in("f")), "text!");

    // Moves: short to long, long to long, long to short.
    makeFile("short", "s");
    EXPECT_EQ(errorOfMove("short", in("f"), Replace::No), EEXIST);
    EXPECT_EQ(errorOfMove("short", in("g"), Replace::No), 0);
    EXPECT_EQ(errorOfMove(in("g"), in("f"), Replace::Yes), 0);
    EXPECT_EQ(errorOfMove(in("f"), "short", Replace::No), 0);
    EXPECT_EQ(read("short"), "s");

    EXPECT_TRUE(files.removeFile(path(in("l"))).isNone());
    EXPECT_TRUE(files.removeFile(path(in("up"))).isNone());
    EXPECT_TRUE(namesIn(deep).empty());
    removeLevels(deep);
}

TEST_P(LongPathConformance, ExtendedAttributesHaveThem) {
    const std::string deep = makeLevels(50, 200);
    makeFile(deep + "/f");
    makeLink(deep + "/l", "f");
    const SystemError error =
        files.setExtendedAttribute(path(deep + "/l"), "user.tav.test", bytesOf("value"));
    if (error == SystemError(ENOTSUP)) {
        GTEST_SKIP() << "the file system keeps no extended attributes";
    }
    EXPECT_EQ(error.number(), 0);
    const auto value = files.extendedAttribute(path(deep + "/f"), "user.tav.test");
    ASSERT_TRUE(value.ok());
    EXPECT_EQ(textOf(value.value()), "value");
    EXPECT_TRUE(files.removeExtendedAttribute(path(deep + "/l"), "user.tav.test").isNone());
    EXPECT_EQ(files.extendedAttribute(path(deep + "/f"), "user.tav.test").error(),
              SystemError(ENODATA));
}

TEST_P(LongPathConformance, WhatIsNotThereIsNotThere) {
    const std::string deep = makeLevels(50, 200);
    makeFile(deep + "/f", "text");
    makeLink(deep + "/self", "self");
    const std::string slashes(6000, '/');
    EXPECT_EQ(errorOfAttributes(deep + "/gone"), ENOENT);
    EXPECT_EQ(errorOfAttributes(deep + "/gone/x"), ENOENT);
    EXPECT_EQ(errorOfAttributes(deep + "/f/x"), ENOTDIR);
    EXPECT_EQ(errorOfAttributes(deep + "/f/"), ENOTDIR);
    EXPECT_EQ(errorOfAttributes(deep + "/f" + slashes), ENOTDIR);
    EXPECT_EQ(errorOfAttributes(deep + "/self/x"), ELOOP);
    EXPECT_EQ(errorOfAttributes(deep + "/" + std::string(256, 'n')), ENAMETOOLONG);
    EXPECT_EQ(errorOfAttributes("top/" + std::string(5000, 'n') + "/x"), ENAMETOOLONG);
    EXPECT_EQ(errorOfAttributes("top/gone/" + std::string(5000, 'n')), ENOENT);
    EXPECT_EQ(files.createFolder(path(deep), 0700), SystemError(EEXIST));
    EXPECT_EQ(files.removeFolder(path(deep)), SystemError(ENOTEMPTY));
    EXPECT_EQ(files.createLink(path("top/l"), std::string(4096, 'x')), SystemError(ENAMETOOLONG));
    EXPECT_EQ(read(deep + "/f"), "text");
}

TEST_P(LongPathConformance, ManySlashesAndDotsSayNothing) {
    makeFolder("d");
    makeFile("d/f", "text");
    const std::string slashes(9000, '/');
    std::string dots;
    for (int i = 0; i < 3000; ++i) {
        dots += i % 2 == 0 ? "./" : "../d/";
    }
    EXPECT_EQ(read("d" + slashes + "f"), "text");
    EXPECT_EQ(attributesOf("d" + slashes).identity, attributesOf("d").identity);
    EXPECT_EQ(files.readFile(slashes + path("d/f"), 100).error().number(), 0);
    EXPECT_EQ(read("d/" + dots + "f"), "text");
    EXPECT_EQ(files.canonicalPath(path("d/" + dots + "f")).value(), path("d/f"));
    EXPECT_EQ(files.canonicalPath(path("d") + slashes).value(), path("d"));
    EXPECT_EQ(files.canonicalPath(slashes).value(), "/");
    EXPECT_TRUE(files.attributes(slashes).ok());
    EXPECT_TRUE(files.createFolder(path("new" + slashes), 0700).isNone());
    EXPECT_TRUE(files.removeFolder(path("new" + slashes)).isNone());
}

TEST_P(LongPathConformance, CanonicalPathsMayBeLongerThanTheirQuestion) {
    const std::string deep = makeLevels(30, 200);
    makeFile(deep + "/f");
    // Links over links, none longer than a link may be.
    makeLink("a", "top/" + deep.substr(4, 15 * 201 - 1));
    makeLink("b", "a/" + deep.substr(4, 15 * 201 - 1));
    EXPECT_EQ(files.canonicalPath(path("b/f")).value(), path(deep + "/f"));
    EXPECT_EQ(files.canonicalPath(path("b/gone")).error(), SystemError(ENOENT));
    EXPECT_EQ(files.canonicalPath(path("b/f/..")).error(), SystemError(ENOTDIR));
}

TEST_P(LongPathConformance, TwoThousandFoldersInEachOther) {
    const std::string deep = makeLevels(2000, 2);
    EXPECT_EQ(attributesOf(deep).kind, FileKind::Folder);
    makeFile(deep + "/f", "text");
    EXPECT_EQ(read(deep + "/f"), "text");
    EXPECT_EQ(files.canonicalPath(path(deep + "/f")).value(), path(deep + "/f"));
    EXPECT_TRUE(files.removeFile(path(deep + "/f")).isNone());
    removeLevels(deep);
}

} // namespace
} // namespace tav
