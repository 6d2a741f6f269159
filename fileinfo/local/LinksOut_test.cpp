#include "fileinfo/local/UnpackedFolder.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "testing/TemporaryFolder.hpp"

#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tav {
namespace {

class LinksOutTest : public testing::Test {
  protected:
    LinksOutTest() {
        memory.addFolder("/x/u");
        memory.addFile("/x/file", "");
    }

    /// Makes a link in the folder; whether it is still there when the folder is cleaned.
    bool stays(const std::string& name, const std::string& text) {
        memory.addLink("/x/u/" + name, text);
        EXPECT_TRUE(internal::cleanUnpackedFolder("/x/u").isNone());
        const bool isThere = has(name);
        memory.removeAll("/x/u/" + name);
        return isThere;
    }
    [[nodiscard]] bool has(const std::string& name) {
        return memory.attributes("/x/u/" + name).ok();
    }

    MemoryFileSystem memory;
    FaultyFileSystem files{memory};
    FileSystem::Replacement replaced{files};
};

TEST_F(LinksOutTest, WhatLeadsInsideStays) {
    memory.addFile("/x/u/d/e/f", "");
    for (const char* const text : {"d", "d/e/f", ".", "./d/./e", "d//e/", "missing", "missing/too",
                                   "d/..", "d/../d/e/../..", "...", "..a", "d/e/f/missing"}) {
        EXPECT_TRUE(stays("l", text)) << text;
        EXPECT_TRUE(stays("d/l", std::string("../") + text)) << text;
        EXPECT_TRUE(stays("d/e/l", std::string("../..//") + text)) << text;
    }
}

TEST_F(LinksOutTest, WhatLeadsOutGoes) {
    memory.addFile("/x/u/d/e/f", "");
    for (const char* const text : {"/", "/x/u/d", "//x", "..", "../", "../u", "../u/d", "./..",
                                   "d/../..", "d/../../u", "d/e/../../../u/d", ".//..//."}) {
        EXPECT_FALSE(stays("l", text)) << text;
    }
    for (const char* const text : {"../..", "../../u", "e/../../.."}) {
        EXPECT_FALSE(stays("d/l", text)) << text;
    }
    EXPECT_TRUE(memory.attributes("/x/file").ok());
}

TEST_F(LinksOutTest, BehindWhatIsNoFolderNothingLeadsUp) {
    memory.addFile("/x/u/f", "");
    EXPECT_FALSE(stays("l", "f/.."));
    EXPECT_FALSE(stays("l", "missing/.."));
    EXPECT_FALSE(stays("l", "missing/../f"));
    memory.addFolder("/x/u/d/e");
    EXPECT_FALSE(stays("d/e/l", "missing/.."));
    EXPECT_FALSE(stays("d/e/l", "../../f/../d"));
    memory.addLink("/x/u/broken", "missing");
    EXPECT_FALSE(stays("l", "broken/../f"));
}

TEST_F(LinksOutTest, ThroughOtherLinks) {
    memory.addFolder("/x/u/p/q/r");
    memory.addLink("/x/u/p/q/up", "../..");
    EXPECT_TRUE(stays("p/q/r/l", "../up/p"));
    EXPECT_FALSE(stays("p/q/r/l", "../up/../p"));
    EXPECT_FALSE(stays("l", "p/q/up/.."));
    // By its text it goes above the folder, by its steps it does not.
    memory.addLink("/x/u/down", "p/q/r");
    EXPECT_TRUE(stays("l", "down/../../../p"));
    EXPECT_FALSE(stays("l", "down/../../../.."));
}

TEST_F(LinksOutTest, ChainsGoWhole) {
    constexpr int length = 5000;
    for (int number = 0; number < length; ++number) {
        memory.addLink("/x/u/in" + std::to_string(number), "in" + std::to_string(number + 1));
        memory.addLink("/x/u/out" + std::to_string(number), "out" + std::to_string(number + 1));
    }
    memory.addLink("/x/u/out" + std::to_string(length), "..");
    memory.addFile("/x/u/in" + std::to_string(length), "");
    EXPECT_TRUE(internal::cleanUnpackedFolder("/x/u").isNone());
    for (int number = 0; number <= length; ++number) {
        EXPECT_TRUE(has("in" + std::to_string(number)));
        EXPECT_FALSE(has("out" + std::to_string(number)));
    }
}

TEST_F(LinksOutTest, CirclesLeadNowhere) {
    memory.addLink("/x/u/a", "b");
    memory.addLink("/x/u/b", "a");
    memory.addLink("/x/u/self", "self");
    EXPECT_TRUE(stays("l", "a/c"));
    EXPECT_FALSE(stays("l", "a/.."));
    EXPECT_FALSE(stays("l", "self/.."));
    EXPECT_TRUE(has("a") && has("b") && has("self"));
}

TEST_F(LinksOutTest, NoLinkOfAnyTreeThatStaysLeadsOut) {
    std::mt19937 random(20101105); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same trees each time
    const auto oneOf = [&random](std::size_t count) { return random() % count; };
    const std::vector<std::string> names{"a", "b", "c", "..", "..", ".", ""};
    std::size_t staying = 0;
    std::size_t going = 0;
    for (int round = 0; round < 2000; ++round) {
        memory.removeAll("/x");
        // Where a link that leads out finds what it says.
        std::vector<std::string> folders{"/x/u"};
        memory.addFolder("/x/a/b/c");
        memory.addFile("/x/b", "");
        memory.addFolder(folders.front());
        std::vector<std::string> links;
        for (std::size_t item = 0; item < 10; ++item) {
            const std::string path = folders[oneOf(folders.size())] + "/" + names[oneOf(3)];
            if (memory.attributes(path).ok()) {
                continue;
            }
            if (oneOf(3) == 0) {
                memory.addFolder(path);
                folders.push_back(path);
                continue;
            }
            std::string text = names[oneOf(6)];
            for (std::size_t more = oneOf(5); more > 0; --more) {
                text += "/" + names[oneOf(names.size())];
            }
            memory.addLink(path, text);
            links.push_back(path);
        }
        ASSERT_TRUE(internal::cleanUnpackedFolder("/x/u").isNone());
        for (const std::string& link : links) {
            if (!memory.attributes(link).ok()) {
                ++going;
                continue;
            }
            const Result<std::string> target = memory.canonicalPath(link);
            if (target.ok()) {
                ++staying;
                EXPECT_TRUE((target.value() + "/").starts_with("/x/u/"))
                    << round << ": " << link << " -> " << memory.linkTarget(link).value();
            }
        }
    }
    EXPECT_GT(staying, 500U);
    EXPECT_GT(going, 500U);
}

TEST_F(LinksOutTest, AFolderThatCannotBeCleanedIsToldSo) {
    memory.addLink("/x/u/l", "/");
    memory.addFile("/x/u/d/f", "");
    for (std::size_t call = 1;; ++call) {
        files.restartCount();
        files.failCall(call, EIO);
        const SystemError error = internal::cleanUnpackedFolder("/x/u");
        files.failCall(0, 0);
        if (files.callCount() < call) {
            EXPECT_TRUE(error.isNone());
            EXPECT_GT(call, 5U);
            break;
        }
        EXPECT_EQ(error.number(), EIO) << call;
        EXPECT_TRUE(has("l")) << call;
    }
    EXPECT_FALSE(has("l"));
    EXPECT_EQ(internal::cleanUnpackedFolder("/x/none").number(), ENOENT);
}

TEST_F(LinksOutTest, WhatALinkInTheFoldersPlaceLeadsToIsLeftAlone) {
    memory.addLink("/x/u/out", "/");
    memory.addLink("/x/link", "u");
    EXPECT_EQ(internal::cleanUnpackedFolder("/x/link").number(), ENOTDIR);
    EXPECT_TRUE(has("out"));
}

TEST(UnpackedFolderTest, WhatIsNoFileFolderOrLinkGoes) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkdir(folder.path("d").c_str(), 0755), 0);
    ASSERT_EQ(::mkfifo(folder.path("d/pipe").c_str(), 0644), 0);
    FileSystem& files = FileSystem::current();
    ASSERT_TRUE(files.writeFile(folder.path("d/file"), {}, 0644).isNone());
    EXPECT_TRUE(internal::cleanUnpackedFolder(folder.path()).isNone());
    EXPECT_EQ(files.folderEntries(folder.path("d")).value().size(), 1U);
    EXPECT_TRUE(files.attributes(folder.path("d/file")).ok());
}

} // namespace
} // namespace tav
