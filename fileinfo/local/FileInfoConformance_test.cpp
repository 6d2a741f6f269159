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

TYPED_TEST(FileInfoConformance, WholeContentsAreReadAndWritten) {
    this->addTree();
    const FileInfoPtr file = this->item("1.txt");
    EXPECT_EQ(file->fileContents(), dataFromText("one"));
    EXPECT_TRUE(file->setFileContents(bytesOf("longer than it was")));
    EXPECT_EQ(file->fileContents(), dataFromText("longer than it was"));
    EXPECT_EQ(file->size(), 18U);
    EXPECT_TRUE(file->setFileContents({}));
    EXPECT_EQ(file->fileContents(), Data());
    EXPECT_EQ(this->item("missing")->fileContents(), std::nullopt);
    EXPECT_EQ(this->item("f")->fileContents(), std::nullopt);
    EXPECT_FALSE(this->item("f")->setFileContents(bytesOf("x")));
}

TYPED_TEST(FileInfoConformance, FilesAreMade) {
    this->addTree();
    const FileInfoPtr work = this->world.work();
    const FileInfoPtr made = work->createFile("new.txt", bytesOf("new"), nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_TRUE(made->isFile());
    EXPECT_EQ(made->name(), "new.txt");
    EXPECT_EQ(made->fileContents(), dataFromText("new"));
    // One that is there is rewritten, unless the name is to be unique.
    EXPECT_EQ(work->createFile("new.txt", {}, nullptr)->size(), 0U);
    const FileInfoPtr first = work->createFile("1.txt", bytesOf("first"), nullptr, true);
    EXPECT_EQ(first->name(), "1-1.txt");
    EXPECT_EQ(first->fileContents(), dataFromText("first"));
    EXPECT_EQ(this->item("1.txt")->createFile("1.txt", {}, nullptr, true)->name(), "1-2.txt");
    EXPECT_EQ(work->createFile("f", {}, nullptr, true)->name(), "f-1");
    EXPECT_EQ(this->item("1.txt")->fileContents(), dataFromText("one"));
    EXPECT_EQ(work->createFile("f", bytesOf("x"), nullptr), nullptr);
    EXPECT_TRUE(this->item("f")->isFolder());
}

TYPED_TEST(FileInfoConformance, RangesAreRead) {
    this->world.addFile("1.txt", "0123456789");
    const FileInfoPtr file = this->item("1.txt");
    const auto token = file->openFileForReading();
    ASSERT_NE(token, nullptr);
    const auto textOfRange = [&](FileRange range) {
        auto data = file->fileContentsWithRange(range, token.get());
        const std::string text = data ? std::string(textOf(*data)) : "nothing";
        token->giveBack(std::move(data).value_or(Data()));
        return text;
    };
    EXPECT_EQ(textOfRange({0, 4}), "0123");
    EXPECT_EQ(textOfRange({4, 4}), "4567");
    EXPECT_EQ(textOfRange({2, 2}), "23");
    EXPECT_EQ(textOfRange({8, 4}), "89");
    EXPECT_EQ(textOfRange({10, 4}), "");
    EXPECT_EQ(textOfRange({20, 4}), "");
    EXPECT_EQ(textOfRange({3, 0}), "");
    EXPECT_EQ(file->wholeSize(), 10U);
    EXPECT_EQ(file->fileContentsWithWholeRange({7, 2}, token.get()), dataFromText("78"));
    file->closeFile(token.get());
    EXPECT_EQ(textOfRange({0, 4}), "nothing");
}

TYPED_TEST(FileInfoConformance, RangesAreWritten) {
    this->world.addFile("1.txt", "0123456789");
    const FileInfoPtr file = this->item("1.txt");
    EXPECT_EQ(file->size(), 10U);
    const auto token = file->openFileForWriting();
    ASSERT_NE(token, nullptr);
    EXPECT_EQ(this->item("1.txt")->size(), 0U); // at once
    const auto write = [&](std::string_view text, FileRange range) {
        return file->setFileContentsWithRange(bytesOf(text), range, token.get());
    };
    EXPECT_EQ(write("abcd", {0, 4}), Status::Success);
    EXPECT_EQ(write("efgh", {4, 4}), Status::Success);
    EXPECT_EQ(write("XY", {1, 2}), Status::Success);
    EXPECT_EQ(write("end", {10, 3}), Status::Success); // zeros up to there
    EXPECT_EQ(file->setFileContentsWithWholeRange(bytesOf("!"), {13, 1}, token.get()),
              Status::Success);
    file->closeFile(token.get());
    EXPECT_NE(write("x", {0, 1}), Status::Success);
    EXPECT_EQ(file->size(), 14U);
    EXPECT_EQ(this->item("1.txt")->fileContents(),
              dataFromText(std::string_view("aXYdefgh\0\0end!", 14)));
}

TYPED_TEST(FileInfoConformance, OnlyFilesThatAreThereAreOpened) {
    this->addTree();
    EXPECT_EQ(this->item("missing")->openFileForReading(), nullptr);
    EXPECT_EQ(this->item("missing")->openFileForWriting(), nullptr);
    EXPECT_EQ(this->item("f")->openFileForReading(), nullptr);
    EXPECT_EQ(this->item("f")->openFileForWriting(), nullptr);
    EXPECT_FALSE(this->world.has("missing"));
}

TYPED_TEST(FileInfoConformance, TokensWithoutAnOpenFileAnswerNothing) {
    this->addTree();
    const FileInfoPtr file = this->item("1.txt");
    OpenFileToken foreign;
    const auto closed = file->openFileForReading();
    file->closeFile(closed.get());
    for (OpenFileToken* const token :
         {static_cast<OpenFileToken*>(nullptr), &foreign, closed.get()}) {
        EXPECT_EQ(file->fileContentsWithRange({0, 1}, token), std::nullopt);
        EXPECT_NE(file->setFileContentsWithRange(bytesOf("x"), {0, 1}, token), Status::Success);
        EXPECT_FALSE(file->cloneRange({0, 1}, token, file.get(), token));
        file->closeFile(token);
    }
    EXPECT_EQ(file->fileContents(), dataFromText("one"));
}

// What every pair of back-ends has to do alike

template <class From, class To>
struct Pair {
    using Source = From;
    using Destination = To;
};

template <class Worlds>
class FileInfoPairConformance : public testing::Test {
  protected:
    FileInfoPtr source(std::string_view name) { return from.work()->find(name); }
    FileInfoPtr destination(std::string_view name) { return to.work()->find(name); }
    /// A copy in pieces of a file into the other folder.
    Status copy(std::string_view name, FileInfoPtr* out = nullptr, bool ensureUniqueName = false,
                const ProgressDelegate* progress = nullptr) {
        return source(name)->copyTo(to.work().get(), ensureUniqueName, progress, nullptr, out);
    }

    typename Worlds::Source from;
    typename Worlds::Destination to;
};

using Pairs = testing::Types<Pair<LocalWorld, LocalWorld>, Pair<LocalWorld, DeviceWorld>,
                             Pair<DeviceWorld, LocalWorld>, Pair<DeviceWorld, DeviceWorld>>;
TYPED_TEST_SUITE(FileInfoPairConformance, Pairs);

TYPED_TEST(FileInfoPairConformance, AFileIsCopiedWithItsDate) {
    const std::string text(3 * 8192 + 5, 'x');
    this->from.addFile("1.txt", text);
    const Date date(300000001.0);
    this->source("1.txt")->setModificationDate(date);
    FileInfoPtr out;
    EXPECT_EQ(this->copy("1.txt", &out), Status::Success);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->name(), "1.txt");
    EXPECT_TRUE(out->fileContents() == dataFromText(text));
    EXPECT_NEAR(this->destination("1.txt")->modificationDate()->secondsSinceReferenceDate(),
                date.secondsSinceReferenceDate(),
                std::max(this->from.datePrecision(), this->to.datePrecision()));
    EXPECT_TRUE(this->source("1.txt")->fileContents() == dataFromText(text));
    EXPECT_FALSE(this->to.has("QuillboxCopyFile.tmp"));
}

TYPED_TEST(FileInfoPairConformance, AnEmptyFileIsCopied) {
    this->from.addFile("empty", "");
    EXPECT_EQ(this->copy("empty"), Status::Success);
    EXPECT_EQ(this->destination("empty")->fileContents(), Data());
}

TYPED_TEST(FileInfoPairConformance, AnOlderFileIsReplacedOrKept) {
    this->from.addFile("1.txt", "new");
    this->to.addFile("1.txt", "something older");
    FileInfoPtr out;
    EXPECT_EQ(this->copy("1.txt", &out, true), Status::Success);
    EXPECT_EQ(out->name(), "1-1.txt");
    EXPECT_EQ(this->destination("1.txt")->fileContents(), dataFromText("something older"));
    EXPECT_EQ(this->copy("1.txt", &out), Status::Success);
    EXPECT_EQ(out->name(), "1.txt");
    EXPECT_EQ(this->destination("1.txt")->fileContents(), dataFromText("new"));
}

TYPED_TEST(FileInfoPairConformance, ACopyThatIsStoppedLeavesNothing) {
    this->from.addFile("1.txt", std::string(std::size_t{3} << 20U, 'x'));
    std::vector<float> percents;
    ProgressDelegate progress;
    progress.copyingFile = [&](TavBaseFileInfo&, TavBaseFileInfo&, float percent, void*) {
        percents.push_back(percent);
        return true;
    };
    EXPECT_EQ(this->copy("1.txt", nullptr, false, &progress), Status{-210});
    EXPECT_EQ(percents.size(), 1U);
    EXPECT_TRUE(this->to.work()->folderContents().empty());
    EXPECT_TRUE(this->source("1.txt")->exists());
}

TYPED_TEST(FileInfoPairConformance, WhatIsNoFileIsNotCopied) {
    this->from.addFolder("f");
    EXPECT_EQ(this->copy("missing"), Status{-200});
    EXPECT_EQ(this->copy("f"), Status{-201});
    EXPECT_TRUE(this->to.work()->folderContents().empty());
}

TYPED_TEST(FileInfoPairConformance, UnderAnotherNameAFileIsCopiedWhole) {
    this->from.addFile("1.txt", "one");
    FileInfoPtr out;
    EXPECT_EQ(this->source("1.txt")->copyTo(this->to.work().get(), "2.txt", &out), Status::Success);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->name(), "2.txt");
    EXPECT_EQ(out->fileContents(), dataFromText("one"));
    EXPECT_EQ(this->source("missing")->copyTo(this->to.work().get(), "3.txt", &out),
              Status::BadParameter);
}

TEST(FileInfoPairConformanceLocal, NamesNeedNotBeUTF8) {
    LocalWorld from;
    LocalWorld to;
    from.addFile("\xFF.txt", "one");
    FileInfoPtr out;
    const FileInfoPtr source = from.work()->find("\xFF.txt");
    EXPECT_EQ(source->copyTo(to.work().get(), true, nullptr, nullptr, &out), Status::Success);
    EXPECT_EQ(out->name(), "\xFF.txt");
    EXPECT_EQ(source->copyTo(to.work().get(), true, nullptr, nullptr, &out), Status::Success);
    EXPECT_EQ(out->name(), "\xFF-1.txt");
    EXPECT_EQ(out->fileContents(), dataFromText("one"));
}

} // namespace
} // namespace tav
