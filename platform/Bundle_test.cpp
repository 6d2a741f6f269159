#include "base/PropertyList.hpp"
#include "platform/Bundle.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "platform/memory/MemoryProcessTable.hpp"
#include "testing/TemporaryFolder.hpp"

#include <cerrno>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using namespace std::string_view_literals;

std::string listText(const Value::Dictionary& entries, PropertyList::Form form) {
    const auto bytes = PropertyList::write(Value(entries), form, nullptr);
    EXPECT_TRUE(bytes);
    return bytes ? std::string(textOf(*bytes)) : std::string();
}

std::string listText(const Value::Dictionary& entries) {
    return listText(entries, PropertyList::Form::XML);
}

class BundleTest : public ::testing::Test {
  protected:
    MemoryFileSystem files;
    FileSystem::Replacement replacement{files};

    /// The bundle "/X.app" with these entries in its list.
    Bundle bundleWithList(const Value::Dictionary& entries) {
        return bundleWithListText(listText(entries));
    }
    Bundle bundleWithListText(std::string_view text) {
        files.addFile("/X.app/Contents/Info.plist", text);
        auto bundle = Bundle::bundleWithPath("/X.app");
        EXPECT_TRUE(bundle);
        return *bundle;
    }
};

TEST_F(BundleTest, AnyFolderIsOne) {
    files.addFolder("/plain");
    const auto bundle = Bundle::bundleWithPath("/plain");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundlePath(), "/plain");
    EXPECT_EQ(bundle->bundleIdentifier(), std::nullopt);
    EXPECT_TRUE(bundle->infoDictionary().empty());
}

TEST_F(BundleTest, NothingElseIsOne) {
    files.addFile("/file", "");
    files.addLink("/broken", "nowhere");
    files.addLink("/circle", "circle");
    for (const std::string_view path :
         {""sv, "/missing"sv, "/file"sv, "/file/"sv, "/broken"sv, "/circle"sv, "/\0x"sv}) {
        EXPECT_FALSE(Bundle::bundleWithPath(path)) << path;
    }
}

TEST_F(BundleTest, ALinkToOneIsOne) {
    files.addFile("/X.app/Contents/Info.plist", listText({{"CFBundleIdentifier", "com.x"}}));
    files.addLink("/link", "X.app");
    const auto bundle = Bundle::bundleWithPath("/link");
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundlePath(), "/link");
    EXPECT_EQ(bundle->bundleIdentifier(), "com.x");
}

TEST_F(BundleTest, IdentifierOfXMLAndBinaryLists) {
    for (const auto form : {PropertyList::Form::XML, PropertyList::Form::Binary}) {
        const Bundle bundle =
            bundleWithListText(listText({{"CFBundleIdentifier", "com.example.X"}}, form));
        EXPECT_EQ(bundle.bundleIdentifier(), "com.example.X");
    }
}

TEST_F(BundleTest, AnIdentifierIsATextAndTakenAsItIs) {
    EXPECT_EQ(bundleWithList({{"CFBundleIdentifier", 5}}).bundleIdentifier(), std::nullopt);
    EXPECT_EQ(bundleWithList({{"CFBundleIdentifier", Value::Array{"a"}}}).bundleIdentifier(),
              std::nullopt);
    EXPECT_EQ(bundleWithList({{"CFBundleName", "X"}}).bundleIdentifier(), std::nullopt);
    EXPECT_EQ(bundleWithList({{"CFBundleIdentifier", ""}}).bundleIdentifier(), "");
    EXPECT_EQ(bundleWithList({{"CFBundleIdentifier", " com.X "}}).bundleIdentifier(), " com.X ");
}

TEST_F(BundleTest, AListThatIsNoneIsEmpty) {
    for (const std::string_view text :
         {""sv, "no list"sv, "bplist00"sv, "<plist version=\"1.0\"><array/></plist>"sv,
          "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key>"sv}) {
        const Bundle bundle = bundleWithListText(text);
        EXPECT_TRUE(bundle.infoDictionary().empty()) << text;
        EXPECT_EQ(bundle.bundleIdentifier(), std::nullopt) << text;
    }
    files.addFolder("/Y.app/Contents/Info.plist");
    EXPECT_TRUE(Bundle::bundleWithPath("/Y.app")->infoDictionary().empty());
}

TEST_F(BundleTest, AListLargerThanAnyHonestOneIsNotRead) {
    const std::string list = listText({{"CFBundleIdentifier", "com.x"}});
    constexpr std::size_t limit = 16U << 20U;
    EXPECT_EQ(bundleWithListText(list + std::string(limit - list.size(), '\n')).bundleIdentifier(),
              "com.x");
    EXPECT_EQ(
        bundleWithListText(list + std::string(limit - list.size() + 1, '\n')).bundleIdentifier(),
        std::nullopt);
}

TEST_F(BundleTest, TheListIsReadOnce) {
    const Bundle bundle = bundleWithList({{"CFBundleIdentifier", "com.x"}});
    files.clearCalls();
    EXPECT_EQ(bundle.bundleIdentifier(), "com.x");
    files.addFile("/X.app/Contents/Info.plist", listText({{"CFBundleIdentifier", "com.other"}}));
    EXPECT_EQ(bundle.bundleIdentifier(), "com.x");
    EXPECT_EQ(bundle.executablePath(), "/X.app/Contents/MacOS/X");
    EXPECT_EQ(files.calls(), std::vector<std::string>{"readFile /X.app/Contents/Info.plist"});
}

TEST_F(BundleTest, ExecutableIsTheDeclaredOneOrNamedAsTheBundle) {
    EXPECT_EQ(bundleWithList({{"CFBundleExecutable", "tool"}}).executablePath(),
              "/X.app/Contents/MacOS/tool");
    EXPECT_EQ(bundleWithList({{"x", 1}}).executablePath(), "/X.app/Contents/MacOS/X");
    files.addFolder("/plain");
    EXPECT_EQ(Bundle::bundleWithPath("/plain")->executablePath(), "/plain/Contents/MacOS/plain");
    EXPECT_EQ(Bundle::bundleWithPath("/plain/")->executablePath(), "/plain/Contents/MacOS/plain");
    EXPECT_EQ(Bundle::bundleWithPath("/")->executablePath(), std::nullopt);
}

TEST_F(BundleTest, ADeclaredExecutableStaysInItsFolder) {
    for (const std::string_view name :
         {""sv, "."sv, ".."sv, "a/b"sv, "/bin/sh"sv, "../../evil"sv, "a/"sv}) {
        EXPECT_EQ(bundleWithList({{"CFBundleExecutable", name}}).executablePath(), std::nullopt)
            << name;
    }
    EXPECT_EQ(bundleWithList({{"CFBundleExecutable", 5}}).executablePath(), std::nullopt);
}

TEST_F(BundleTest, ResourcesOfAnApplication) {
    files.addFile("/X.app/Contents/Resources/a.txt", "");
    files.addFile("/X.app/Contents/Resources/bare", "");
    files.addFile("/X.app/Contents/Resources/folder.nib/x", "");
    files.addLink("/X.app/Contents/Resources/link.txt", "a.txt");
    files.addLink("/X.app/Contents/Resources/broken.txt", "nowhere");
    files.addFile("/X.app/Resources/flat.txt", "");
    files.addFile("/X.app/top.txt", "");
    files.addFile("/X.app/Contents/beside.txt", "");
    const Bundle bundle = *Bundle::bundleWithPath("/X.app");
    EXPECT_EQ(bundle.pathForResource("a", "txt"), "/X.app/Contents/Resources/a.txt");
    EXPECT_EQ(bundle.pathForResource("a.txt", ""), "/X.app/Contents/Resources/a.txt");
    EXPECT_EQ(bundle.pathForResource("bare", ""), "/X.app/Contents/Resources/bare");
    EXPECT_EQ(bundle.pathForResource("folder", "nib"), "/X.app/Contents/Resources/folder.nib");
    EXPECT_EQ(bundle.pathForResource("link", "txt"), "/X.app/Contents/Resources/link.txt");
    for (const std::string_view missing : {"broken", "beside", "A"}) {
        EXPECT_EQ(bundle.pathForResource(missing, "txt"), std::nullopt) << missing;
    }
    EXPECT_EQ(bundle.pathForResource("bare", "txt"), std::nullopt);
    EXPECT_EQ(bundle.pathForResource("flat", "txt"), "/X.app/Resources/flat.txt");
    EXPECT_EQ(bundle.pathForResource("top", "txt"), "/X.app/top.txt");
    files.addFile("/X.app/Contents/Resources/top.txt", "");
    EXPECT_EQ(bundle.pathForResource("top", "txt"), "/X.app/Contents/Resources/top.txt");
}

TEST_F(BundleTest, ResourcesOfAFlatFolder) {
    files.addFile("/flat/Resources/both.txt", "");
    files.addFile("/flat/both.txt", "");
    files.addFile("/flat/top.txt", "");
    const Bundle bundle = *Bundle::bundleWithPath("/flat");
    EXPECT_EQ(bundle.pathForResource("both", "txt"), "/flat/Resources/both.txt");
    EXPECT_EQ(bundle.pathForResource("top", "txt"), "/flat/top.txt");
    EXPECT_EQ(bundle.pathForResource("none", "txt"), std::nullopt);
    // Whatever else lies there: a program in a plain folder has no say in its company.
    files.addFile("/flat/Contents/Info.plist", "");
    EXPECT_EQ(bundle.pathForResource("top", "txt"), "/flat/top.txt");
}

TEST_F(BundleTest, ResourceNamesStayInTheirFolder) {
    files.addFile("/flat/Resources/a", "");
    files.addFile("/flat/b", "");
    const Bundle bundle = *Bundle::bundleWithPath("/flat");
    for (const std::string_view name :
         {""sv, "."sv, ".."sv, "../b"sv, "/flat/b"sv, "a/"sv, "./a"sv, "a\0"sv}) {
        EXPECT_EQ(bundle.pathForResource(name, ""), std::nullopt) << name;
    }
    EXPECT_EQ(bundle.pathForResource("x", "/../a"), std::nullopt);
}

class MainBundleTest : public BundleTest {
  protected:
    MemoryProcessTable processes;
    ProcessTable::Replacement processReplacement{processes};

    void runFrom(std::string_view executable) {
        processes.table.clear();
        processes.add(processes.ownProcess, executable);
        files.addFile(executable, "");
    }
};

TEST_F(MainBundleTest, IsTheOneAroundTheExecutable) {
    runFrom("/A/Tool.app/Contents/MacOS/tool");
    ASSERT_TRUE(Bundle::mainBundle());
    EXPECT_EQ(Bundle::mainBundle()->bundlePath(), "/A/Tool.app");
}

TEST_F(MainBundleTest, IsOtherwiseTheExecutablesFolder) {
    for (const auto& [executable, folder] :
         {std::pair{"/usr/bin/tool", "/usr/bin"}, std::pair{"/a/MacOS/tool", "/a/MacOS"},
          std::pair{"/a/Contents/Linux/tool", "/a/Contents/Linux"},
          std::pair{"/a/Contents/MacOS/deep/tool", "/a/Contents/MacOS/deep"},
          std::pair{"/tool", "/"}}) {
        runFrom(executable);
        ASSERT_TRUE(Bundle::mainBundle()) << executable;
        EXPECT_EQ(Bundle::mainBundle()->bundlePath(), folder) << executable;
    }
}

TEST_F(MainBundleTest, IsNoneWhenTheExecutableCannotBeTold) {
    EXPECT_FALSE(Bundle::mainBundle()) << "no process";
    runFrom("/a/tool");
    processes.table.front().executable = std::nullopt;
    EXPECT_FALSE(Bundle::mainBundle()) << "no path";
    runFrom("/a/tool");
    files.removeAll("/a");
    EXPECT_FALSE(Bundle::mainBundle()) << "no folder";
}

TEST(MainBundle, OfTheTestsThemselvesIsTheirFolder) {
    const auto bundle = Bundle::mainBundle();
    ASSERT_TRUE(bundle);
    const auto executable = FileSystem::current().linkTarget("/proc/self/exe");
    ASSERT_TRUE(executable.ok());
    EXPECT_TRUE(executable.value().starts_with(bundle->bundlePath() + "/"));
}

TEST(RealBundle, IsReadFromTheHost) {
    const TemporaryFolder folder;
    FileSystem& files = FileSystem::current();
    for (const char* name : {"X.app", "X.app/Contents", "X.app/Contents/Resources"}) {
        ASSERT_TRUE(files.createFolder(folder.path(name), 0755).isNone());
    }
    const std::string list = listText({{"CFBundleIdentifier", "com.x"}});
    for (const char* name : {"X.app/Contents/Info.plist", "X.app/Contents/Resources/r.plist"}) {
        ASSERT_TRUE(files.writeFile(folder.path(name), bytesOf(list), 0644).isNone());
    }
    const auto bundle = Bundle::bundleWithPath(folder.path("X.app"));
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundleIdentifier(), "com.x");
    EXPECT_EQ(bundle->pathForResource("r", "plist"),
              folder.path("X.app/Contents/Resources/r.plist"));
}

TEST_F(MainBundleTest, AnswersNothingForWhatFails) {
    runFrom("/X.app/Contents/MacOS/X");
    files.addFile("/X.app/Contents/Info.plist", listText({{"CFBundleIdentifier", "com.x"}}));
    files.addFile("/X.app/Contents/Resources/r.plist", "");
    for (const int error : {EIO, EACCES, EINTR, EMFILE, ENOMEM, ELOOP}) {
        std::size_t number = 0;
        bool failed = true;
        while (failed) {
            ++number;
            FaultyFileSystem faulty(files);
            faulty.failCall(number, error);
            const FileSystem::Replacement broken(faulty);
            const auto bundle = Bundle::mainBundle();
            const auto identifier = bundle ? bundle->bundleIdentifier() : std::nullopt;
            const auto resource = bundle ? bundle->pathForResource("r", "plist") : std::nullopt;
            failed = faulty.callCount() >= number;
            // In their order: is there a folder, its list, the file.
            EXPECT_EQ(bundle.has_value(), number != 1) << number;
            EXPECT_EQ(identifier.has_value(), number > 2) << number;
            EXPECT_EQ(resource.has_value(), number == 2 || number > 3) << number;
        }
        // Where the first place fails the two others are asked too.
        EXPECT_EQ(number, 4U) << "three calls, each failing once, and a run without a fault";
    }
}

} // namespace
} // namespace tav
