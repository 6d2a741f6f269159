#include "base/PropertyList.hpp"
#include "fileinfo/local/FolderTypes.hpp"
#include "fileinfo/local/TavFileInfoFixture_test.hpp"
#include "platform/memory/MemoryPanels.hpp"

namespace tav {
namespace {

using Names = std::vector<std::string>;

class OlderPlaces : public TavFileInfoInMemory {
  protected:
    static std::string pathOf(const TavFileInfoPtr& item) { return item ? item->path() : "null"; }
    static std::string pathOf(const FileInfoPtr& item) { return item ? item->path() : "null"; }

    MemoryPanels panels;
    Panels::Replacement replacedPanels{panels};
};

TEST_F(OlderPlaces, BetweenPathsAndURLs) {
    EXPECT_EQ(TavFileInfo::urlFromPath("/a b")->absoluteString(), "file:///a%20b");
    EXPECT_EQ(TavFileInfo::urlFromPath(nullptr), std::nullopt);
    const std::optional<Url> url = Url::withString("file:///a%20b");
    EXPECT_EQ(TavFileInfo::pathFromURL(&*url), "/a b");
    const std::optional<Url> other = Url::withString("http://a/b");
    EXPECT_EQ(TavFileInfo::pathFromURL(&*other), std::nullopt);
    EXPECT_EQ(TavFileInfo::pathFromURL(nullptr), std::nullopt);
}

TEST_F(OlderPlaces, BetweenPathsAndReferences) {
    memory.addFile("/folder/f", "");
    const FileRef reference = TavFileInfo::fileRefFromPath("/folder/f");
    EXPECT_FALSE(reference.isZero());
    EXPECT_EQ(reference, TavMacFileInfo::fileRefFromPath("/folder/f"));
    EXPECT_TRUE(TavFileInfo::fileRefFromPath("/missing").isZero());
    EXPECT_TRUE(TavFileInfo::fileRefFromPath(nullptr).isZero());
    EXPECT_EQ(TavFileInfo::pathFromFileRef(reference), "/folder/f");
    EXPECT_EQ(TavFileInfo::pathFromFileRef({}), std::nullopt);
    const std::optional<Url> url = Url::withString("file:///folder/f");
    EXPECT_EQ(TavFileInfo::fileRefFromURL(&*url), reference);
    EXPECT_TRUE(TavFileInfo::fileRefFromURL(nullptr).isZero());
    const FileSpec specification = TavFileInfo::fileSpecFromFileRef(reference);
    EXPECT_EQ(specification.name, "f");
    EXPECT_TRUE(TavFileInfo::fileSpecFromFileRef({}).isZero());
    EXPECT_EQ(TavFileInfo::fileRefFromFileSpec(specification), reference);
    EXPECT_TRUE(TavFileInfo::fileRefFromFileSpec({}).isZero());
    EXPECT_EQ(TavFileInfo::pathFromFileSpec(specification), "/folder/f");
    EXPECT_EQ(TavFileInfo::pathFromFileSpec({}), std::nullopt);
}

TEST_F(OlderPlaces, TheHostsFolders) {
    EXPECT_EQ(pathOf(TavFileInfo::userLibraryFolder()), "/home/user/.local/share");
    EXPECT_EQ(pathOf(TavFileInfo::globalLibraryFolder()), "/usr/local/share");
    EXPECT_EQ(pathOf(TavFileInfo::userAppSupportFolder()), "/home/user/.local/share");
    EXPECT_EQ(pathOf(TavFileInfo::globalAppSupportFolder()), "/usr/local/share");
    EXPECT_EQ(pathOf(TavFileInfo::tempFolder()), "/tmp/tav-1000");
    EXPECT_EQ(pathOf(TavFileInfo::_specialFolder(5, 1)), "/home/user/.local/share");
    EXPECT_EQ(TavFileInfo::_specialFolder(999, 1), nullptr);
    for (std::uint32_t directory = 0; directory < 30; ++directory) {
        for (std::uint32_t domain = 0; domain < 4; ++domain) {
            EXPECT_EQ(pathOf(TavFileInfo::_specialFolder(directory, domain)),
                      pathOf(TavMacFileInfo::_specialFolder(directory, domain)));
        }
    }
}

TEST_F(OlderPlaces, FoldersByTheirType) {
    const auto user = static_cast<std::int16_t>(internal::FolderDomain::User);
    const auto caches = static_cast<std::uint32_t>(internal::FolderType::CachedData);
    EXPECT_EQ(TavFileInfo::findFolderPath(user, caches, false), std::nullopt);
    EXPECT_EQ(TavFileInfo::findFolder(user, caches, false), nullptr);
    EXPECT_EQ(pathOf(TavFileInfo::findFolder(user, caches, true)), "/home/user/.cache");
    EXPECT_EQ(TavFileInfo::findFolderPath(user, caches, false), "/home/user/.cache");
    EXPECT_EQ(TavFileInfo::findFolder(0, caches, true), nullptr);
}

TEST_F(OlderPlaces, APersonChoosesAFolder) {
    memory.addFolder("/folder");
    memory.addLink("/link", "folder");
    panels.choice = "/folder";
    EXPECT_EQ(pathOf(TavFileInfo::chooseFolderWithPrompt("Take", "/start")), "/folder");
    EXPECT_TRUE(panels.requests.back().folders);
    EXPECT_EQ(panels.requests.back().prompt, "Take");
    EXPECT_EQ(panels.requests.back().title, std::nullopt);
    EXPECT_EQ(panels.requests.back().startFolder, "/start");
    panels.choice = "/link";
    EXPECT_EQ(pathOf(TavFileInfo::chooseFolderWithPromptStartFolder("Take", older("/a").get())),
              "/folder");
    EXPECT_EQ(panels.requests.back().startFolder, "/a");
    EXPECT_EQ(pathOf(TavFileInfo::chooseFolderWithPromptStartFolder("Take", nullptr)), "/folder");
    EXPECT_EQ(panels.requests.back().startFolder, "");
    panels.choice = std::nullopt;
    EXPECT_EQ(TavFileInfo::chooseFolderWithPrompt(nullptr, nullptr), nullptr);
}

TEST_F(OlderPlaces, FilesFromAPasteboard) {
    Pasteboard pasteboard;
    EXPECT_TRUE(TavFileInfo::fileInfoArrayFromPasteboard(pasteboard).empty());
    pasteboard.setData(Pasteboard::filenamesType,
                       *PropertyList::write(Value(Value::Array{"/a/../b", 7, "~/c"}),
                                            PropertyList::Form::Binary, nullptr));
    EXPECT_EQ(pathsOf(TavFileInfo::fileInfoArrayFromPasteboard(pasteboard)),
              (Names{"/b", "/home/user/c"}));
}

} // namespace
} // namespace tav
