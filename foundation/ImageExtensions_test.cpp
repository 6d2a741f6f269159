#include "foundation/ImageExtensions.hpp"
#include "platform/ImageService.hpp"
#include "platform/MainThread.hpp"
#include "platform/memory/MemoryImageService.hpp"
#include "testing/Golden.hpp"

#include <algorithm>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using internal::ImageExtensionsSet;

TEST(StringByDeletingImageExtension, GoldenCases) {
    for (const GoldenCase& each : goldenCases("edges.json", "stringByDeletingImageExtension")) {
        EXPECT_EQ(stringByDeletingImageExtension(each.in.get<std::string>()),
                  each.out.get<std::string>())
            << each.description();
    }
}

TEST(StringByDeletingImageExtension, OneExtensionOfAnImageGoes) {
    EXPECT_EQ(stringByDeletingImageExtension("a.jpg"), "a");
    EXPECT_EQ(stringByDeletingImageExtension("a.JPeG"), "a");
    EXPECT_EQ(stringByDeletingImageExtension("/b.png/a.tiff"), "/b.png/a");
    EXPECT_EQ(stringByDeletingImageExtension("a.jpg.txt"), "a.jpg.txt");
    EXPECT_EQ(stringByDeletingImageExtension("a.txt.gif"), "a.txt");
}

TEST(StringByDeletingImageExtension, EverythingElseStays) {
    for (const char* name :
         {"", "a", "a.", ".jpg", "a.txt", "a.jpgx", "jpg", "/a.jpg/b", "//a//b"}) {
        EXPECT_EQ(stringByDeletingImageExtension(name), name);
    }
}

TEST(ImageExtensions, TheSetOfTheProcessIsMadeOnce) {
    allocateImageExtensionsSetOnMainThread();
    EXPECT_TRUE(gImageExtensionsSet().exists());
    MemoryImageService service;
    service.types = {"zzz"};
    const ImageService::Replacement replacement(service);
    allocateImageExtensionsSetOnMainThread();
    EXPECT_EQ(stringByDeletingImageExtension("a.zzz"), "a.zzz");
    EXPECT_EQ(service.asked, 0);
}

TEST(ImageExtensions, AreTheServicesInUpperCase) {
    MemoryImageService service;
    service.types = {"abc", "DeF", "\u00e9", "abc"};
    const ImageService::Replacement replacement(service);
    ImageExtensionsSet set;
    EXPECT_FALSE(set.exists());
    set.allocate();
    EXPECT_TRUE(set.exists());
    EXPECT_TRUE(set.contains("ABC"));
    EXPECT_TRUE(set.contains("DEF"));
    EXPECT_TRUE(set.contains("\u00c9"));
    EXPECT_FALSE(set.contains("abc"));
    set.allocate();
    EXPECT_EQ(service.asked, 1);
}

TEST(ImageExtensions, TheFirstQuestionHasTheSetMadeOnTheMainThread) {
    struct Main final : MainThread {
        int waitedFor = 0;
        void post(std::function<void()> /*work*/) override {}
        void runAndWait(const std::function<void()>& work) override {
            ++waitedFor;
            work();
        }
        void runPending() override {}
        void installLoop(std::function<void()> /*wake*/) override {}
    } mainThread;
    const MainThread::Replacement main(mainThread);
    MemoryImageService service;
    service.types = {"abc"};
    const ImageService::Replacement replacement(service);
    ImageExtensionsSet set;
    EXPECT_EQ(internal::stringByDeletingImageExtension("x", set), "x");
    EXPECT_EQ(internal::stringByDeletingImageExtension("x.ABC", set), "x");
    EXPECT_EQ(internal::stringByDeletingImageExtension("x.jpg", set), "x.jpg");
    EXPECT_EQ(mainThread.waitedFor, 1);
    EXPECT_EQ(service.asked, 1);
}

TEST(ImageExtensions, NoExtensionIsNeverAnImages) {
    MemoryImageService service;
    service.types = {""};
    const ImageService::Replacement replacement(service);
    ImageExtensionsSet set;
    set.allocate();
    EXPECT_EQ(internal::stringByDeletingImageExtension("a.", set), "a.");
    EXPECT_EQ(internal::stringByDeletingImageExtension("a/", set), "a/");
}

TEST(ImageExtensions, AnExceptionReleasesTheLockAndBuildsNothing) {
    MemoryImageService service;
    service.types = {"abc"};
    service.whenAsked = [] { throw std::runtime_error("no images"); };
    const ImageService::Replacement replacement(service);
    ImageExtensionsSet set;
    EXPECT_THROW(set.allocate(), std::runtime_error);
    EXPECT_FALSE(set.exists());
    service.whenAsked = nullptr;
    set.allocate();
    EXPECT_TRUE(set.contains("ABC"));
}

TEST(ImageExtensions, ThreadsBuildOneSet) {
    MemoryImageService service;
    service.types = {"abc"};
    const ImageService::Replacement replacement(service);
    ImageExtensionsSet set;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&set] {
            set.allocate();
            EXPECT_TRUE(set.contains("ABC"));
        });
    }
    for (std::thread& each : threads) {
        each.join();
    }
    EXPECT_EQ(service.asked, 1);
}

TEST(ImageService, TheHostNamesExtensionsInLowerCase) {
    const std::vector<std::string> types = internal::realImageService().imageUnfilteredFileTypes();
    for (const char* expected :
         {"jpg", "jpeg", "png", "gif", "tif", "tiff", "bmp", "heic", "psd"}) {
        EXPECT_NE(std::find(types.begin(), types.end(), expected), types.end()) << expected;
    }
    for (const std::string& type : types) {
        EXPECT_FALSE(type.empty());
        EXPECT_EQ(type.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789"),
                  std::string::npos);
    }
}

} // namespace
} // namespace tav
