// What every back-end of file items has to do alike. A new one is entered at the end and passes, or
// is wrong.

#include "fileinfo/DeviceFileInfo_test.hpp"
#include "fileinfo/KindFilters.hpp"
#include "fileinfo/NameFilters.hpp"
#include "fileinfo/TavFileExtensionsFilter.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Names = std::vector<std::string>;

/// A back-end with an empty folder to work in.
class ItemWorld {
  public:
    virtual ~ItemWorld() = default;
    /// The folder; it has the name "Desk".
    virtual FileInfoPtr work() = 0;
    virtual FileInfoPtr itemAt(std::string_view path) = 0;
    virtual char separator() = 0;
    /// Somebody else's doing, by a slash path below the folder.
    virtual void addFile(std::string_view path, std::string_view text) = 0;
    virtual void addFolder(std::string_view path) = 0;
    virtual bool has(std::string_view path) = 0;
    /// How exactly dates are kept, in seconds.
    virtual double datePrecision() = 0;
};

class LocalWorld final : public ItemWorld {
  public:
    LocalWorld() { addFolder(""); }
    FileInfoPtr work() override { return itemAt(root()); }
    FileInfoPtr itemAt(std::string_view path) override {
        return TavMacFileInfo::fileInfoWithPath(path);
    }
    char separator() override { return '/'; }
    void addFile(std::string_view path, std::string_view text) override {
        ASSERT_TRUE(FileSystem::current().writeFile(below(path), bytesOf(text), 0666).isNone());
    }
    void addFolder(std::string_view path) override {
        ASSERT_TRUE(FileSystem::current().createFolder(below(path), 0777).isNone());
    }
    bool has(std::string_view path) override {
        return FileSystem::current().attributes(below(path)).ok();
    }
    double datePrecision() override { return 0.001; }

  private:
    std::string root() { return folder_.path("Desk"); }
    std::string below(std::string_view path) {
        return stringByAppendingPathComponent(root(), path);
    }

    TemporaryFolder folder_;
};

class DeviceWorld final : public ItemWorld {
  public:
    DeviceWorld() {
        device_.isCaseInsensitive = true;
        device_.keepsTwoSecondDates = true;
        device_.forbiddenCharacters = "\\:*?\"<>|";
        device_.addFolder("/E/Desk");
    }
    FileInfoPtr work() override { return itemAt("E:\\Desk"); }
    FileInfoPtr itemAt(std::string_view path) override { return DeviceFileInfo::at(device_, path); }
    char separator() override { return '\\'; }
    void addFile(std::string_view path, std::string_view text) override {
        device_.addFile("/E/Desk/" + std::string(path), text);
    }
    void addFolder(std::string_view path) override {
        device_.addFolder("/E/Desk/" + std::string(path));
    }
    bool has(std::string_view path) override {
        return device_.attributes("/E/Desk/" + std::string(path)).ok();
    }
    double datePrecision() override { return 2; }

  private:
    MemoryFileSystem device_;
};

Names sortedNamesOf(const FileInfoArray& items) {
    Names names;
    for (const FileInfoPtr& item : items) {
        names.push_back(item->name());
    }
    std::ranges::sort(names);
    return names;
}

template <class World>
class FileInfoConformance : public testing::Test {
  protected:
    /// The item at a slash path below the folder.
    FileInfoPtr item(std::string_view path) {
        FileInfoPtr found = world.work();
        for (const std::string& component : tav::pathComponents(path)) {
            found = found->find(component);
        }
        return found;
    }
    /// w/{1.txt (3 bytes), .hidden, f/{2.jpg, g/{3.txt (5 bytes)}}, empty}
    void addTree() {
        world.addFile("1.txt", "one");
        world.addFile(".hidden", "");
        world.addFolder("f");
        world.addFile("f/2.jpg", "");
        world.addFolder("f/g");
        world.addFile("f/g/3.txt", "three");
        world.addFolder("empty");
    }

    World world;
};

using Worlds = testing::Types<LocalWorld, DeviceWorld>;
TYPED_TEST_SUITE(FileInfoConformance, Worlds);

TYPED_TEST(FileInfoConformance, KindsExcludeEachOther) {
    this->addTree();
    EXPECT_TRUE(this->item("f")->exists());
    EXPECT_TRUE(this->item("f")->isFolder());
    EXPECT_FALSE(this->item("f")->isFile());
    EXPECT_TRUE(this->item("1.txt")->exists());
    EXPECT_TRUE(this->item("1.txt")->isFile());
    EXPECT_FALSE(this->item("1.txt")->isFolder());
    EXPECT_TRUE(this->item("1.txt")->visible());
    EXPECT_FALSE(this->item(".hidden")->visible());
}

TYPED_TEST(FileInfoConformance, AMissingItemAnswersNothing) {
    const FileInfoPtr missing = this->item("missing.txt");
    ASSERT_NE(missing, nullptr);
    EXPECT_EQ(missing->name(), "missing.txt");
    EXPECT_FALSE(missing->exists());
    EXPECT_FALSE(missing->isFolder());
    EXPECT_FALSE(missing->isFile());
    EXPECT_EQ(missing->size(), 0U);
    EXPECT_EQ(missing->modificationDate(), std::nullopt);
    EXPECT_TRUE(missing->folderContents().empty());
    EXPECT_FALSE(missing->remove());
    missing->setName("other");
    missing->setModificationDate(Date());
    EXPECT_FALSE(missing->exists());
    EXPECT_FALSE(this->world.has("other"));
}

TYPED_TEST(FileInfoConformance, NamesComeFromThePath) {
    this->addTree();
    const FileInfoPtr file = this->item("f/2.jpg");
    EXPECT_EQ(file->name(), "2.jpg");
    EXPECT_EQ(file->extension(), "jpg");
    EXPECT_EQ(file->nameWithoutExtension(), "2");
    EXPECT_EQ(this->item("f")->name(), "f");
    EXPECT_EQ(file->pathComponents().back(), "2.jpg");
    EXPECT_TRUE(file->path().ends_with(std::string("f") + this->world.separator() + "2.jpg"));
    EXPECT_TRUE(file->standardPath().ends_with("Desk/f/2.jpg"));
    EXPECT_GT(file->maxPathLength(), 0);
    EXPECT_GT(file->numBytesNeededForPath(), 0);
}

TYPED_TEST(FileInfoConformance, FindAnswersAChildOrASibling) {
    this->addTree();
    EXPECT_TRUE(this->item("f")->find("2.jpg")->isFile());
    EXPECT_TRUE(this->item("f/2.jpg")->find("g")->isFolder());
    EXPECT_FALSE(this->item("f")->find("1.txt")->exists());
}

TYPED_TEST(FileInfoConformance, TheParentHoldsTheItem) {
    this->addTree();
    const FileInfoPtr parent = this->item("f/g/3.txt")->parentFolder();
    EXPECT_EQ(parent->name(), "g");
    EXPECT_TRUE(parent->isFolder());
    EXPECT_TRUE(parent->isEqualTo(this->item("f/g").get()));
}

TYPED_TEST(FileInfoConformance, EveryChildIsListedOnce) {
    this->addTree();
    EXPECT_EQ(sortedNamesOf(this->world.work()->folderContents()),
              (Names{".hidden", "1.txt", "empty", "f"}));
    EXPECT_TRUE(this->item("empty")->folderContents().empty());
    EXPECT_TRUE(this->item("1.txt")->folderContents().empty());
    for (const FileInfoPtr& child : this->world.work()->folderContents()) {
        EXPECT_TRUE(child->exists()) << child->path();
        EXPECT_TRUE(child->isEqualTo(this->world.work()->find(child->name()).get()));
    }
}

TYPED_TEST(FileInfoConformance, FiltersDecide) {
    this->addTree();
    const FileInfoPtr work = this->world.work();
    TavFoldersOnlyFilter folders;
    EXPECT_EQ(sortedNamesOf(work->folderContentsWithFilter(&folders)), (Names{"empty", "f"}));
    TavVisibleItemsFilter visible;
    EXPECT_EQ(sortedNamesOf(work->folderContentsWithFilter(&visible)),
              (Names{"1.txt", "empty", "f"}));
    TavFileExtensionsFilter texts({"TXT"});
    EXPECT_EQ(sortedNamesOf(work->folderContentsWithFilter(&texts)), Names{"1.txt"});
    BaseFilterItemsNamed one({"1.txt", "f"}, true, true);
    one.setFindOne(true);
    EXPECT_EQ(work->folderContentsWithFilter(&one).size(), 1U);
}

TYPED_TEST(FileInfoConformance, ADeepListingHasWhatIsInsideBeforeTheFolder) {
    this->addTree();
    const FileInfoArray all = this->world.work()->folderContentsDeepWithFilter(nullptr);
    EXPECT_EQ(sortedNamesOf(all), (Names{".hidden", "1.txt", "2.jpg", "3.txt", "empty", "f", "g"}));
    const auto place = [&](std::string_view name) {
        return std::ranges::find_if(all,
                                    [&](const FileInfoPtr& item) { return item->name() == name; }) -
               all.begin();
    };
    EXPECT_LT(place("3.txt"), place("2.jpg"));
    EXPECT_LT(place("3.txt"), place("g"));
    EXPECT_LT(place("g"), place("f"));
    TavFilesOnlyFilter files;
    EXPECT_EQ(sortedNamesOf(this->world.work()->folderContentsDeepWithFilter(&files)),
              (Names{".hidden", "1.txt", "2.jpg", "3.txt"}));
}

TYPED_TEST(FileInfoConformance, AFilterThatRaisesEndsTheListing) {
    this->addTree();
    class Raising final : public TavBaseFileInfoFilter {
      public:
        bool includeItem(TavBaseFileInfo& /*item*/, bool* /*stopAccumulating*/) override {
            throw std::runtime_error("enough");
        }
    };
    Raising raising;
    EXPECT_THROW(static_cast<void>(this->world.work()->folderContentsWithFilter(&raising)),
                 std::runtime_error);
    EXPECT_EQ(this->world.work()->folderContents().size(), 4U);
}

TYPED_TEST(FileInfoConformance, SizesAreSummedUp) {
    this->addTree();
    EXPECT_EQ(this->item("1.txt")->size(), 3U);
    EXPECT_EQ(this->item("f/g")->size(), 5U);
    EXPECT_EQ(this->world.work()->size(), 8U);
    EXPECT_EQ(this->world.work()->resolvedSize(), 8U);
}

TYPED_TEST(FileInfoConformance, EqualityIgnoresCase) {
    this->addTree();
    const FileInfoPtr file = this->item("1.txt");
    EXPECT_TRUE(file->isEqualTo(this->item("1.TXT").get()));
    EXPECT_FALSE(file->isEqualTo(this->item("f").get()));
    EXPECT_FALSE(file->isEqualTo(nullptr));
}

TYPED_TEST(FileInfoConformance, AFolderContainsWhatIsBelowIt) {
    this->addTree();
    EXPECT_TRUE(this->item("f")->contains(this->item("f/g/3.txt").get()));
    EXPECT_FALSE(this->item("f/g")->contains(this->item("1.txt").get()));
    EXPECT_FALSE(this->item("1.txt")->contains(this->item("1.txt").get()));
}

TYPED_TEST(FileInfoConformance, WaysInsideAVolume) {
    this->addTree();
    const std::string separator(1, this->world.separator());
    EXPECT_EQ(this->item("f")->relativePathTo(this->item("f/g/3.txt").get()),
              "g" + separator + "3.txt");
    EXPECT_EQ(this->item("f/g")->relativePathTo(this->item("1.txt").get()),
              ".." + separator + ".." + separator + "1.txt");
    EXPECT_TRUE(this->item("f/2.jpg")->volumeRelativeStandardPath()->ends_with("Desk/f/2.jpg"));
    EXPECT_TRUE(this->item("f")->volume()->isVolume());
    EXPECT_TRUE(this->item("f")->volume()->isEqualTo(this->item("1.txt")->volume().get()));
    EXPECT_FALSE(this->item("f")->isVolume());
}

TYPED_TEST(FileInfoConformance, UniqueNamesAreFree) {
    this->addTree();
    EXPECT_EQ(this->world.work()->uniqueFilename("new.txt"), "new.txt");
    EXPECT_EQ(this->world.work()->uniqueFilename("1.txt"), "1-1.txt");
    EXPECT_EQ(this->item("1.txt")->uniqueFilename("f"), "f-1");
    this->world.addFile("1-1.txt", "");
    EXPECT_EQ(this->world.work()->uniqueFilename("1.txt"), "1-2.txt");
}

TYPED_TEST(FileInfoConformance, FoldersAreMade) {
    this->addTree();
    const FileInfoPtr made = this->world.work()->createFolder("new");
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(made->isFolder());
    EXPECT_TRUE(this->world.has("new"));
    // One that is there is answered, a file in the way is not.
    EXPECT_TRUE(this->world.work()->createFolder("f")->isEqualTo(this->item("f").get()));
    EXPECT_EQ(this->world.work()->createFolder("1.txt"), nullptr);
    EXPECT_EQ(this->world.work()->createUniqueFolder("f")->name(), "f-1");
    EXPECT_EQ(this->world.work()->createFolderWithPathComponents({"a", "b", "c"})->name(), "c");
    EXPECT_TRUE(this->world.has("a/b/c"));
}

TYPED_TEST(FileInfoConformance, RemovingTakesAllThatIsInIt) {
    this->addTree();
    EXPECT_TRUE(this->item("1.txt")->remove());
    EXPECT_FALSE(this->world.has("1.txt"));
    const FileInfoPtr folder = this->item("f");
    EXPECT_TRUE(folder->remove());
    EXPECT_FALSE(this->world.has("f"));
    EXPECT_FALSE(folder->exists());
}

TYPED_TEST(FileInfoConformance, RemovingContentsKeepsTheFolder) {
    this->addTree();
    EXPECT_TRUE(this->world.work()->removeContents());
    EXPECT_TRUE(this->world.work()->exists());
    EXPECT_TRUE(this->world.work()->folderContents().empty());
    this->world.addFile("1.txt", "one");
    EXPECT_FALSE(this->item("1.txt")->removeContents());
    EXPECT_TRUE(this->world.has("1.txt"));
}

TYPED_TEST(FileInfoConformance, FoldersWithoutVisibleItemsAreEmpty) {
    this->addTree();
    this->world.addFolder("hidden");
    this->world.addFile("hidden/.a", "");
    this->world.work()->removeEmptySubfolders();
    EXPECT_FALSE(this->world.has("empty"));
    EXPECT_FALSE(this->world.has("hidden"));
    EXPECT_TRUE(this->world.has("f"));
}

TYPED_TEST(FileInfoConformance, AnotherNameStaysInTheFolder) {
    this->addTree();
    const FileInfoPtr file = this->item("1.txt");
    file->setName("renamed.txt");
    EXPECT_EQ(file->name(), "renamed.txt");
    EXPECT_TRUE(file->exists());
    EXPECT_FALSE(this->world.has("1.txt"));
    // A name that is taken, and the empty one, change nothing.
    file->setName("f");
    EXPECT_EQ(file->name(), "renamed.txt");
    file->setName("");
    EXPECT_EQ(file->name(), "renamed.txt");
    EXPECT_TRUE(this->item("f")->isFolder());
}

TYPED_TEST(FileInfoConformance, MovingGoesToThePathOfTheDestination) {
    this->addTree();
    const FileInfoPtr file = this->item("1.txt");
    const FileInfoPtr destination = this->item("f/moved.txt");
    EXPECT_EQ(file->moveTo(destination.get()), Status::Success);
    EXPECT_EQ(file->name(), "moved.txt");
    EXPECT_TRUE(this->world.has("f/moved.txt"));
    EXPECT_FALSE(this->world.has("1.txt"));
    EXPECT_EQ(file->moveTo(this->item("f/2.jpg").get()), Status::Failure);
    EXPECT_EQ(file->name(), "moved.txt");
}

TYPED_TEST(FileInfoConformance, ModificationDatesAreSet) {
    this->addTree();
    const Date date(300000001.0);
    this->item("1.txt")->setModificationDate(date);
    const std::optional<Date> kept = this->item("1.txt")->modificationDate();
    ASSERT_TRUE(kept);
    EXPECT_NEAR(kept->secondsSinceReferenceDate(), date.secondsSinceReferenceDate(),
                this->world.datePrecision());
}

TYPED_TEST(FileInfoConformance, WindowsNamesAreFound) {
    this->addTree();
    this->world.addFile("caf\u00e9.txt", "");
    EXPECT_EQ(this->world.work()->findWithWindowsName("1.TXT")->name(), "1.txt");
    EXPECT_EQ(this->world.work()->findWithWindowsName("cafU00E9.txt")->name(), "caf\u00e9.txt");
    EXPECT_EQ(this->world.work()->findWithWindowsName("missing"), nullptr);
    EXPECT_EQ(this->world.work()->findAllFoldersWithName("F").size(), 1U);
}

} // namespace
} // namespace tav
