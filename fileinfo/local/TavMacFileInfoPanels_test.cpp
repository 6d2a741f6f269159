#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "platform/memory/MemoryPanels.hpp"

namespace tav {
namespace {

using Lines = std::vector<std::string>;

class ChoosePanelsTest : public MacFileInfoInMemory {
  protected:
    ChoosePanelsTest() {
        EXPECT_TRUE(memory.createFolder("/folder", 0755).isNone());
        EXPECT_TRUE(memory.createLink("/link", "folder").isNone());
        EXPECT_TRUE(memory.createLink("/broken", "nowhere").isNone());
    }

    static std::string pathOf(const Item& item) { return item ? item->path() : "null"; }
    const PanelRequest& asked() { return panels.requests.back(); }

    MemoryPanels panels;
    Panels::Replacement replacedPanels{panels};
    SeenLog log;
};

TEST_F(ChoosePanelsTest, AFolderWithPromptAndTitle) {
    panels.choice = "/folder";
    EXPECT_EQ(pathOf(TavMacFileInfo::chooseFolderWithPrompt("Take", "Folders", "/start")),
              "/folder");
    EXPECT_TRUE(asked().folders);
    EXPECT_EQ(asked().prompt, "Take");
    EXPECT_EQ(asked().title, "Folders");
    EXPECT_EQ(asked().startFolder, "/start");
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_NE(log.lines().at(0).find("The user selected folder \"/folder\""), std::string::npos);
}

TEST_F(ChoosePanelsTest, AFileWithPromptAndTitle) {
    panels.choice = "/a b\xFF";
    EXPECT_EQ(pathOf(TavMacFileInfo::chooseFileWithPrompt("Take", nullptr, nullptr)), "/a b\xFF");
    EXPECT_FALSE(asked().folders);
    EXPECT_EQ(asked().title, std::nullopt);
    EXPECT_EQ(asked().startFolder, "");
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_NE(log.lines().at(0).find("The user selected file \"/a b"), std::string::npos);
}

TEST_F(ChoosePanelsTest, TheShorterFormsHaveNoTitle) {
    panels.choice = "/folder";
    EXPECT_EQ(pathOf(TavMacFileInfo::chooseFolderWithPrompt("Take", "/start")), "/folder");
    EXPECT_EQ(asked().title, std::nullopt);
    EXPECT_EQ(asked().startFolder, "/start");
    const Item start = at("/begin");
    EXPECT_EQ(pathOf(TavMacFileInfo::chooseFolderWithPromptStartFolder("Take", start.get())),
              "/folder");
    EXPECT_TRUE(asked().folders);
    EXPECT_EQ(asked().title, std::nullopt);
    EXPECT_EQ(asked().startFolder, "/begin");
    EXPECT_EQ(pathOf(TavMacFileInfo::chooseFolderWithPromptStartFolder(nullptr, nullptr)),
              "/folder");
    EXPECT_EQ(asked().prompt, "");
    EXPECT_EQ(asked().startFolder, "");
}

TEST_F(ChoosePanelsTest, NothingIsChosen) {
    EXPECT_EQ(TavMacFileInfo::chooseFolderWithPrompt("Take", "/start"), nullptr);
    EXPECT_EQ(TavMacFileInfo::chooseFileWithPrompt("Take", nullptr, "/start"), nullptr);
    EXPECT_EQ(TavMacFileInfo::chooseFolderWithPromptStartFolder("Take", nullptr), nullptr);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ChoosePanelsTest, ThePanelResolvesAliases) {
    panels.choice = "/link";
    EXPECT_EQ(pathOf(TavMacFileInfo::chooseFolderWithPrompt("Take", "/")), "/folder");
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_NE(log.lines().at(0).find("\"/folder\""), std::string::npos);
    panels.choice = "/broken";
    EXPECT_EQ(pathOf(TavMacFileInfo::chooseFolderWithPrompt("Take", "/")), "/broken");
}

TEST_F(ChoosePanelsTest, OnlyTheVerboseLogTells) {
    gLogEnable[4] = false;
    panels.choice = "/folder";
    EXPECT_NE(TavMacFileInfo::chooseFolderWithPrompt("Take", "/start"), nullptr);
    EXPECT_EQ(log.lines(), Lines{});
}

} // namespace
} // namespace tav
