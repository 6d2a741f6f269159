#include "base/PropertyList.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"

namespace tav {
namespace {

using PasteboardTest = MacFileInfoInMemory;
using Paths = std::vector<std::string>;

Paths pathsOf(const FileInfoArray& items) {
    Paths paths;
    for (const FileInfoPtr& item : items) {
        paths.push_back(item->path());
    }
    return paths;
}

Paths pathsOn(std::string_view type, std::string_view bytes) {
    Pasteboard pasteboard;
    pasteboard.setData(type, dataFromText(bytes));
    return pathsOf(TavMacFileInfo::fileInfoArrayFromPasteboard(pasteboard));
}

TEST_F(PasteboardTest, ListsOfNames) {
    EXPECT_EQ(pathsOn(Pasteboard::filenamesType, "(\"/b\", \"/a c\", \"~/d\")"),
              (Paths{"/b", "/a c", "/home/user/d"}));
    const Data binary = *PropertyList::write(Value(Value::Array{"/x", 7, "/y"}),
                                             PropertyList::Form::Binary, nullptr);
    EXPECT_EQ(pathsOn(Pasteboard::filenamesType, textOf(binary)), (Paths{"/x", "/y"}));
    EXPECT_EQ(pathsOn(Pasteboard::filenamesType, "<plist"), Paths{});
    EXPECT_EQ(pathsOn(Pasteboard::filenamesType, "/text"), Paths{});
    EXPECT_EQ(pathsOn(Pasteboard::filenamesType, ""), Paths{});
}

TEST_F(PasteboardTest, ListsOfUrls) {
    EXPECT_EQ(pathsOn(Pasteboard::uriListType,
                      "# comment\r\nfile:///a%20b\r\nfile://localhost/c\r\n"
                      "http://host/d\r\nfile://host/e\r\n\r\nnonsense <>\r\n"
                      "file:relative\r\nfile:///caf%C3%A9%FF"),
              (Paths{"/a b", "/c", "/caf\xC3\xA9\xFF"}));
    EXPECT_EQ(pathsOn(Pasteboard::uriListType, "file:///a\nfile:///b\n"), (Paths{"/a", "/b"}));
    EXPECT_EQ(pathsOn(Pasteboard::uriListType, "file:///a%00b\r\n"), Paths{});
    EXPECT_EQ(pathsOn(Pasteboard::uriListType, ""), Paths{});
}

TEST_F(PasteboardTest, NamesGoBeforeUrlsAndOtherTypesCountNothing) {
    Pasteboard pasteboard;
    EXPECT_TRUE(TavMacFileInfo::fileInfoArrayFromPasteboard(pasteboard).empty());
    pasteboard.setData("text/plain", dataFromText("/a"));
    EXPECT_TRUE(TavMacFileInfo::fileInfoArrayFromPasteboard(pasteboard).empty());
    pasteboard.setData(Pasteboard::uriListType, dataFromText("file:///url"));
    EXPECT_EQ(pathsOf(TavMacFileInfo::fileInfoArrayFromPasteboard(pasteboard)), Paths{"/url"});
    pasteboard.setData(Pasteboard::filenamesType, dataFromText("(\"/name\")"));
    EXPECT_EQ(pathsOf(TavMacFileInfo::fileInfoArrayFromPasteboard(pasteboard)), Paths{"/name"});
}

class SomeDrag final : public DragInfo {
  public:
    std::vector<std::string>
    namesOfPromisedFilesDroppedAtDestination(std::string_view folderURL) override {
        destination = std::string(folderURL);
        return names;
    }
    std::vector<std::string> names;
    std::string destination;
};

class PromisedFilesTest : public PasteboardTest {
  protected:
    PromisedFilesTest() {
        memory.addFolder("/tmp/tav-1000");
        pasteboard.setData(Pasteboard::filesPromiseType, {});
    }
    Paths promised() {
        const auto items = TavMacFileInfo::promisedFilesOnPasteboard(pasteboard, drag);
        return items ? pathsOf(*items) : Paths{"nothing"};
    }

    Pasteboard pasteboard;
    SomeDrag drag;
    const std::string place = "/tmp/tav-1000/Orvane_TempFiles";
};

TEST_F(PromisedFilesTest, FilesThatCameAreKept) {
    memory.addFile(place + "/a", "");
    memory.addFile("/elsewhere", "");
    memory.addLink(place + "/l", "/elsewhere");
    memory.addLink(place + "/broken", "/gone");
    drag.names = {"l", "missing", "a", "broken"};
    EXPECT_EQ(promised(), (Paths{"/elsewhere", place + "/a"}));
    EXPECT_EQ(drag.destination, "file:///tmp/tav-1000/Orvane_TempFiles");
}

TEST_F(PromisedFilesTest, TheFolderIsMade) {
    drag.names = {"a"};
    EXPECT_EQ(promised(), Paths{});
    EXPECT_TRUE(at(place)->isFolder());
}

TEST_F(PromisedFilesTest, NamesThatLeadElsewhereAreRefused) {
    memory.addFile(place + "/d/f", "");
    memory.addFile("/tmp/tav-1000/secret", "");
    drag.names = {"", ".", "..", "../secret", "d/f", "/tmp/tav-1000/secret", std::string("d\0x", 3),
                  "d"};
    EXPECT_EQ(promised(), Paths{place + "/d"});
}

TEST_F(PromisedFilesTest, NothingComesOfNoPromiseNoNamesAndNoFolder) {
    EXPECT_EQ(promised(), Paths{"nothing"}) << "no names";
    drag.names = {"a"};
    drag.destination.clear();
    pasteboard = Pasteboard();
    EXPECT_EQ(promised(), Paths{"nothing"}) << "no promise";
    pasteboard.setData(Pasteboard::filesPromiseType, {});
    folders.temporaryFolder = "";
    EXPECT_EQ(promised(), Paths{"nothing"}) << "no temporary folder";
    folders.temporaryFolder = "/tmp/tav-1000";
    memory.removeAll(place);
    memory.addFile(place, "a file");
    EXPECT_EQ(promised(), Paths{"nothing"}) << "a file in its place";
    EXPECT_EQ(drag.destination, "") << "the drag was not asked";
}

} // namespace
} // namespace tav
