#include "platform/linux/LinuxFileKinds.hpp"
#include "testing/TemporaryFolder.hpp"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

const std::string own = TAV_TESTDATA "/filekinds/user";
const std::string shared = TAV_TESTDATA "/filekinds/system";

internal::FileKindSources testSources() {
    return {{own, shared}, {own + "/icons", shared + "/icons"}, "Parrot", {"de"}};
}

class LinuxFileKindsTest : public testing::Test {
  protected:
    std::string file(std::string_view name) {
        const std::string path = folder.path(name);
        std::ofstream(path) << "not what the name says";
        return path;
    }
    std::string newFolder(std::string_view name) {
        const std::string path = folder.path(name);
        std::filesystem::create_directories(path);
        return path;
    }

    const TemporaryFolder folder;
    LinuxFileKinds kinds{testSources};
};

bool canReadPNG() {
    LinuxFileKinds kinds(testSources);
    return kinds.iconForFileType("jpg") != nullptr;
}

#define SKIP_WITHOUT_PNG()                                                                         \
    if (!canReadPNG()) {                                                                           \
        GTEST_SKIP() << "built without libpng, or it is missing here";                             \
    }

TEST_F(LinuxFileKindsTest, TheKindIsThatOfTheName) {
    EXPECT_EQ(kinds.kindOfFile(file("a.jpg")), "JPEG-Bild");
    EXPECT_EQ(kinds.kindOfFile(file("B.JPG")), "JPEG-Bild");
    EXPECT_EQ(kinds.kindOfFile(file("c.pjpg")), "JPEG-Bild");
}

TEST_F(LinuxFileKindsTest, TheKindOfAnExtensionAsksForNoFile) {
    EXPECT_EQ(kinds.kindOfFileType("jpg"), "JPEG-Bild");
    EXPECT_EQ(kinds.kindOfFileType("JPG"), "JPEG-Bild");
    EXPECT_EQ(kinds.kindOfFileType("unheard-of"), std::nullopt);
    EXPECT_EQ(kinds.kindOfFileType("png"), std::nullopt) << "a type without a word";
    EXPECT_EQ(kinds.kindOfFileType(""), std::nullopt);
}

TEST_F(LinuxFileKindsTest, NoKindForUnknownNamesAndTypesWithoutAWord) {
    EXPECT_EQ(kinds.kindOfFile(file("a.unheard-of")), std::nullopt);
    EXPECT_EQ(kinds.kindOfFile(file("a")), std::nullopt);
    EXPECT_EQ(kinds.kindOfFile(file("a.png")), std::nullopt);
}

TEST_F(LinuxFileKindsTest, WhatIsMissingHasNeitherKindNorIcon) {
    EXPECT_EQ(kinds.kindOfFile(folder.path("missing.jpg")), std::nullopt);
    EXPECT_EQ(kinds.iconForFile(folder.path("missing.jpg")), nullptr);
    EXPECT_FALSE(kinds.isFilePackageAtPath(folder.path("missing.app")));
    EXPECT_EQ(kinds.kindOfFile(""), std::nullopt);
}

TEST_F(LinuxFileKindsTest, AFolderIsAFolderWhateverItIsCalled) {
    EXPECT_EQ(kinds.kindOfFile(newFolder("holiday.jpg")), "Ordner");
    EXPECT_EQ(kinds.kindOfFile(newFolder("plain") + "/"), "Ordner");
}

TEST_F(LinuxFileKindsTest, LinksAreFollowedAndKeepTheirNames) {
    ASSERT_EQ(::symlink(file("real.jpg").c_str(), folder.path("link.html").c_str()), 0);
    ASSERT_EQ(::symlink("nowhere", folder.path("dangling.jpg").c_str()), 0);
    EXPECT_EQ(kinds.kindOfFile(folder.path("link.html")), "My web page");
    EXPECT_EQ(kinds.kindOfFile(folder.path("dangling.jpg")), std::nullopt);
}

TEST_F(LinuxFileKindsTest, APipeIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(folder.path("pipe.jpg").c_str(), 0600), 0);
    EXPECT_EQ(kinds.kindOfFile(folder.path("pipe.jpg")), "pipe");
    EXPECT_EQ(kinds.kindOfFile("/dev/null"), std::nullopt);
}

TEST_F(LinuxFileKindsTest, PackagesGoByExtensionOrInformationList) {
    EXPECT_TRUE(kinds.isFilePackageAtPath(newFolder("a.app")));
    EXPECT_TRUE(kinds.isFilePackageAtPath(newFolder("b.Bundle")));
    EXPECT_FALSE(kinds.isFilePackageAtPath(newFolder("plain")));
    EXPECT_FALSE(kinds.isFilePackageAtPath(newFolder("c.framework")));
    EXPECT_FALSE(kinds.isFilePackageAtPath(newFolder("app")));
    EXPECT_FALSE(kinds.isFilePackageAtPath(file("file.app")));
    newFolder("suite/Contents");
    EXPECT_FALSE(kinds.isFilePackageAtPath(folder.path("suite")));
    std::ofstream(folder.path("suite/Contents/Info.plist")) << "{}";
    EXPECT_TRUE(kinds.isFilePackageAtPath(folder.path("suite")));
    newFolder("odd/Contents/Info.plist");
    EXPECT_FALSE(kinds.isFilePackageAtPath(folder.path("odd")));
}

TEST_F(LinuxFileKindsTest, APackageIsOfTheKindOfItsExtension) {
    EXPECT_EQ(kinds.kindOfFile(newFolder("a.rtfd")), "Bundle of notes");
    EXPECT_EQ(kinds.kindOfFile(newFolder("a.app")), "Ordner");
}

TEST_F(LinuxFileKindsTest, IconsAreTheThemesPictures) {
    SKIP_WITHOUT_PNG();
    const std::shared_ptr<Image> jpeg = kinds.iconForFileType("jpg");
    ASSERT_NE(jpeg, nullptr);
    EXPECT_EQ(jpeg->pixelsWide(), 48U);
    EXPECT_EQ(jpeg->pixelsHigh(), 48U);
    EXPECT_EQ(jpeg->size(), (Image::Size{48, 48}));
    EXPECT_EQ(std::vector<std::uint8_t>(jpeg->rgba().begin(), jpeg->rgba().begin() + 4),
              (std::vector<std::uint8_t>{255, 0, 0, 255}));
    const std::shared_ptr<Image> archive = kinds.iconForFileType("TAR.GZ");
    ASSERT_NE(archive, nullptr);
    EXPECT_EQ(archive->rgba()[3], 128);
    EXPECT_EQ(kinds.iconForFile(newFolder("plain"))->pixelsWide(), 64U);
    EXPECT_EQ(kinds.iconForFile(file("x.sheet"))->pixelsWide(), 48U);
    EXPECT_EQ(kinds.iconForFile(file("x.png"))->rgba()[2], 255);
}

TEST_F(LinuxFileKindsTest, NoIconForUnknownExtensions) {
    for (const char* const extension : {"", "unheard-of", "txt", ".", "/", "../jpg/x", "a/b"}) {
        EXPECT_EQ(kinds.iconForFileType(extension), nullptr) << extension;
    }
    EXPECT_EQ(kinds.iconForFileType(std::string(1 << 20, 'x')), nullptr);
    EXPECT_EQ(kinds.iconForFileType(std::string_view("jpg\0", 4)), nullptr);
}

TEST_F(LinuxFileKindsTest, AnIconIsSharedForAsLongAsItIsInUse) {
    SKIP_WITHOUT_PNG();
    std::shared_ptr<Image> first = kinds.iconForFileType("jpg");
    EXPECT_EQ(kinds.iconForFileType("JPG"), first);
    EXPECT_EQ(kinds.iconForFile(file("a.jpg")), first);
    first->setSize({16, 16});
    EXPECT_EQ(kinds.iconForFileType("jpg")->size(), (Image::Size{16, 16}));
    first = nullptr;
    EXPECT_EQ(kinds.iconForFileType("jpg")->size(), (Image::Size{48, 48}));
}

TEST_F(LinuxFileKindsTest, TheDatabaseIsReadOnce) {
    int reads = 0;
    LinuxFileKinds counting([&] {
        ++reads;
        return testSources();
    });
    EXPECT_EQ(reads, 0);
    static_cast<void>(counting.kindOfFile(file("a.jpg")));
    static_cast<void>(counting.kindOfFile(file("b.html")));
    static_cast<void>(counting.iconForFileType("jpg"));
    EXPECT_EQ(reads, 1);
}

TEST_F(LinuxFileKindsTest, NothingIsKnownWithoutADatabase) {
    LinuxFileKinds empty([] { return internal::FileKindSources(); });
    EXPECT_EQ(empty.kindOfFile(file("a.jpg")), std::nullopt);
    EXPECT_EQ(empty.kindOfFile(newFolder("plain")), std::nullopt);
    EXPECT_EQ(empty.iconForFileType("jpg"), nullptr);
    EXPECT_EQ(empty.iconForFile(newFolder("plain")), nullptr);
    EXPECT_TRUE(empty.isFilePackageAtPath(newFolder("a.app")));
}

TEST_F(LinuxFileKindsTest, HostileDatabasesAreNotKnown) {
    newFolder("mime/image");
    newFolder("icons/Parrot/48");
    const auto sources = [&] {
        return internal::FileKindSources{{folder.path()}, {folder.path("icons")}, "Parrot", {}};
    };
    // Pipes, endless devices, folders, garbage and too much of it.
    ASSERT_EQ(::mkfifo(folder.path("mime/globs2").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("/dev/zero", folder.path("mime/aliases").c_str()), 0);
    newFolder("mime/icons");
    std::ofstream(folder.path("mime/generic-icons")) << std::string(8 << 20, ':');
    EXPECT_EQ(LinuxFileKinds(sources).kindOfFile(file("a.jpg")), std::nullopt);

    ASSERT_EQ(::unlink(folder.path("mime/globs2").c_str()), 0);
    std::ofstream(folder.path("mime/globs2"))
        << std::string(1000, '\0')
        << "\n50:image/jpeg:*.jpg\n50:image/big:*.big\n50:image/pipe:*.pipe\n"
        << "50:../../a:*.up\n";
    std::ofstream(folder.path("mime/image/jpeg.xml")) << "<a><comment>x</comment>\xff\xff";
    std::ofstream(folder.path("mime/image/big.xml"))
        << "<a>" << std::string(4 << 20, ' ') << "</a>";
    ASSERT_EQ(::mkfifo(folder.path("mime/image/pipe.xml").c_str(), 0600), 0);
    std::ofstream(folder.path("icons/Parrot/index.theme"))
        << "[Icon Theme]\nDirectories=48\n[48]\nSize=48\n";
    std::ofstream(folder.path("icons/Parrot/48/image-jpeg.png")) << "\x89PNG\r\n\x1a\nno";
    ASSERT_EQ(::mkfifo(folder.path("icons/Parrot/48/image-pipe.png").c_str(), 0600), 0);
    std::ofstream(folder.path("icons/Parrot/48/image-big.png")) << std::string(8 << 20, 'x');
    LinuxFileKinds hostile(sources);
    for (const char* const name : {"a.jpg", "a.big", "a.pipe", "a.up"}) {
        EXPECT_EQ(hostile.kindOfFile(file(name)), std::nullopt) << name;
        EXPECT_EQ(hostile.iconForFile(file(name)), nullptr) << name;
    }
}

TEST_F(LinuxFileKindsTest, ManyThreadsMayAsk) {
    const std::string jpeg = file("a.jpg");
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 50; ++j) {
                wrong += kinds.kindOfFile(jpeg) == "JPEG-Bild" ? 0 : 1;
                const std::shared_ptr<Image> icon = kinds.iconForFile(jpeg);
                wrong += kinds.iconForFileType("jpg") == icon ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST_F(LinuxFileKindsTest, TheHostsOwnDatabase) {
    if (::access("/usr/share/mime/image/jpeg.xml", R_OK) != 0) {
        GTEST_SKIP() << "shared-mime-info is not installed";
    }
    LinuxFileKinds host([] {
        internal::FileKindSources sources;
        sources.dataFolders = {"/usr/share"};
        sources.languages = {"de_AT", "de"};
        return sources;
    });
    EXPECT_EQ(host.kindOfFile(file("a.jpg")), "JPEG-Bild");
    EXPECT_EQ(host.kindOfFile(file("README.html")), "HTML-Dokument");
    EXPECT_EQ(host.kindOfFile(newFolder("plain")), "Ordner");
    EXPECT_NE(host.kindOfFile(file("a.tar.gz")), host.kindOfFile(file("a.gz")));
    EXPECT_EQ(host.kindOfFile(file("a.unheard-of")), std::nullopt);
}

TEST(FileKindSources, TheHostsFoldersAreAbsolute) {
    const internal::FileKindSources sources = internal::fileKindSourcesOfHost();
    EXPECT_FALSE(sources.dataFolders.empty());
    EXPECT_FALSE(sources.iconFolders.empty());
    for (const auto& folders : {sources.dataFolders, sources.iconFolders}) {
        for (const std::string& path : folders) {
            EXPECT_EQ(path.front(), '/') << path;
        }
    }
}

} // namespace
} // namespace tav
