#include "base/PropertyList.hpp"
#include "platform/Bundle.hpp"
#include "platform/BundleIdentifiers.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"

#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

std::string listText(const Value& list) {
    const auto bytes = PropertyList::write(list, PropertyList::Form::XML, nullptr);
    return bytes ? std::string(textOf(*bytes)) : std::string();
}

std::string listWithIdentifier(std::string_view identifier) {
    return listText(Value::Dictionary{{"CFBundleIdentifier", identifier}});
}

class BundleIdentifiersTest : public ::testing::Test {
  protected:
    const std::string list = "/X.app/Contents/Info.plist";
    const std::vector<std::string> oneLook = {"targetAttributes " + list};
    MemoryFileSystem files;
    FileSystem::Replacement replacement{files};
    BundleIdentifiers identifiers;

    std::optional<std::string> ask(std::string_view path) {
        const auto bundle = Bundle::bundleWithPath(path);
        const auto plain = bundle ? bundle->bundleIdentifier() : std::nullopt;
        files.clearCalls();
        auto answer = identifiers.identifierOfBundle(path);
        EXPECT_EQ(answer, plain) << "not what a bundle answers: " << path;
        return answer;
    }
    std::optional<std::string> ask() { return ask("/X.app"); }
    [[nodiscard]] std::size_t reads() const {
        std::size_t count = 0;
        for (const std::string& call : files.calls()) {
            count += call.starts_with("readFile") ? 1U : 0U;
        }
        return count;
    }
};

TEST_F(BundleIdentifiersTest, ReadsOnceAndLooksOnceAfterwards) {
    files.addFile(list, listWithIdentifier("com.x"));
    EXPECT_EQ(ask(), "com.x");
    EXPECT_EQ(reads(), 1U);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(ask(), "com.x");
        EXPECT_EQ(files.calls(), oneLook);
    }
}

TEST_F(BundleIdentifiersTest, AListWithoutIdentifierIsReadOnceToo) {
    files.addFile(list, listText(Value::Dictionary{{"CFBundleName", "X"}}));
    EXPECT_EQ(ask(), std::nullopt);
    EXPECT_EQ(ask(), std::nullopt);
    EXPECT_EQ(files.calls(), oneLook);
}

TEST_F(BundleIdentifiersTest, ReadsAgainWhatWasWrittenOver) {
    files.addFile(list, listWithIdentifier("com.a"));
    EXPECT_EQ(ask(), "com.a");
    // The same file with as many bytes: the change date alone tells.
    files.addFile(list, listWithIdentifier("com.b"));
    EXPECT_EQ(ask(), "com.b");
    EXPECT_EQ(reads(), 1U);
    EXPECT_EQ(ask(), "com.b");
    EXPECT_EQ(files.calls(), oneLook);
}

TEST_F(BundleIdentifiersTest, ASizeTellsWhereTheDateDoesNot) {
    files.keepsTwoSecondDates = true;
    files.addFile(list, listWithIdentifier("com.a"));
    EXPECT_EQ(ask(), "com.a");
    files.addFile(list, listWithIdentifier("com.longer"));
    EXPECT_EQ(ask(), "com.longer");
}

TEST_F(BundleIdentifiersTest, ReadsAgainWhatWasReplaced) {
    files.addFile(list, listWithIdentifier("com.a"));
    EXPECT_EQ(ask(), "com.a");
    files.keepsTwoSecondDates = true; // so that the dates are equal
    files.addFile("/new", listWithIdentifier("com.b"));
    ASSERT_TRUE(files.move("/new", list, Replace::Yes).isNone());
    EXPECT_EQ(ask(), "com.b");
    // The whole bundle is another one.
    files.addFile("/Y.app/Contents/Info.plist", listWithIdentifier("com.c"));
    files.removeAll("/X.app");
    ASSERT_TRUE(files.move("/Y.app", "/X.app", Replace::No).isNone());
    EXPECT_EQ(ask(), "com.c");
    EXPECT_EQ(ask(), "com.c");
    EXPECT_EQ(files.calls(), oneLook);
}

TEST_F(BundleIdentifiersTest, WhatIsGoneAnswersNothingUntilItIsBack) {
    files.addFile(list, listWithIdentifier("com.a"));
    EXPECT_EQ(ask(), "com.a");
    files.removeAll(list);
    EXPECT_EQ(ask(), std::nullopt);
    files.addFile(list, listWithIdentifier("com.b"));
    EXPECT_EQ(ask(), "com.b");
    files.removeAll("/X.app");
    EXPECT_EQ(ask(), std::nullopt);
}

TEST_F(BundleIdentifiersTest, KeepsBundlesApart) {
    files.addFile(list, listWithIdentifier("com.x"));
    files.addFile("/Y.app/Contents/Info.plist", listWithIdentifier("com.y"));
    files.addLink("/Z.app", "Y.app");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(ask("/X.app"), "com.x");
        EXPECT_EQ(ask("/Y.app"), "com.y");
        EXPECT_EQ(ask("/Z.app"), "com.y");
    }
    // A link that leads elsewhere now.
    files.removeAll("/Z.app");
    files.addLink("/Z.app", "X.app");
    EXPECT_EQ(ask("/Z.app"), "com.x");
}

TEST_F(BundleIdentifiersTest, WhatIsNoBundleHasNone) {
    files.addFile("/file", "");
    files.addFolder("/folder");
    files.addFile("/Contents/Info.plist", listWithIdentifier("com.root"));
    for (const char* path : {"", "/missing", "/file", "/folder"}) {
        EXPECT_EQ(ask(path), std::nullopt) << path;
    }
    EXPECT_EQ(ask("/"), "com.root");
    files.addFile(list, "no list");
    EXPECT_EQ(ask(), std::nullopt);
    files.addFile(list, listWithIdentifier("com.x"));
    EXPECT_EQ(ask(), "com.x");
}

TEST_F(BundleIdentifiersTest, AFaultIsNotRemembered) {
    files.addFile(list, listWithIdentifier("com.x"));
    bool failed = true;
    for (std::size_t number = 1; failed; ++number) {
        FaultyFileSystem faulty(files);
        faulty.failCall(number, EMFILE);
        const FileSystem::Replacement broken(faulty);
        BundleIdentifiers fresh;
        const auto first = fresh.identifierOfBundle("/X.app");
        failed = faulty.callCount() >= number;
        EXPECT_EQ(first.has_value(), number > 3) << number;
        faulty.failCall(0, 0);
        EXPECT_EQ(fresh.identifierOfBundle("/X.app"), "com.x") << number;
    }
}

} // namespace
} // namespace tav
