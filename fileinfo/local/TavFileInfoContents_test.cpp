#include "fileinfo/local/TavFileInfoFixture_test.hpp"

#include <cerrno>

namespace tav {
namespace {

using OlderContents = TavFileInfoInMemory;

std::optional<std::string> textIn(const TavFileInfoPtr& item) {
    const std::optional<Data> contents = item->fileContents();
    return contents ? std::optional(std::string(textOf(*contents))) : std::nullopt;
}

TEST_F(OlderContents, TheWholeContentOfAnExistingFile) {
    memory.addFile("/f", std::string("a\0b", 3));
    memory.addFile("/empty", "");
    memory.addLink("/link", "/f");
    memory.addLink("/broken", "nowhere");
    memory.addFolder("/folder");
    EXPECT_EQ(textIn(older("/f")), std::string("a\0b", 3));
    EXPECT_EQ(textIn(older("/link")), std::string("a\0b", 3));
    EXPECT_EQ(textIn(older("/empty")), "");
    EXPECT_EQ(textIn(older("/missing")), std::nullopt);
    EXPECT_EQ(textIn(older("/broken")), std::nullopt);
    EXPECT_EQ(textIn(older("/folder")), std::nullopt);
    files.failOperation("readFile", EIO);
    EXPECT_EQ(textIn(older("/f")), std::nullopt);
}

TEST_F(OlderContents, ReplacesTheContentOfAnExistingFile) {
    memory.addFile("/f", "before and longer");
    memory.addLink("/link", "/f");
    memory.addFolder("/folder");
    const TavFileInfoPtr item = older("/f");
    EXPECT_EQ(item->size(), 17U);
    EXPECT_TRUE(item->setFileContents(bytesOf("after")));
    EXPECT_EQ(textIn(item), "after");
    EXPECT_EQ(item->size(), 5U) << "read again";
    EXPECT_TRUE(older("/link")->setFileContents(bytesOf("through")));
    EXPECT_EQ(textIn(item), "through");
    EXPECT_TRUE(item->setFileContents({}));
    EXPECT_EQ(textIn(item), "");
    EXPECT_FALSE(older("/missing")->setFileContents(bytesOf("x")));
    EXPECT_FALSE(older("/missing")->exists());
    EXPECT_FALSE(older("/folder")->setFileContents(bytesOf("x")));
}

TEST_F(OlderContents, AWriteThatFailsIsToldAndTheItemLooksAgain) {
    memory.addFile("/f", "before");
    const TavFileInfoPtr item = older("/f");
    EXPECT_EQ(item->size(), 6U);
    memory.capacity = 3;
    EXPECT_FALSE(item->setFileContents(bytesOf("after")));
    EXPECT_EQ(item->size(), 3U) << "what was written of it";
}

TEST_F(OlderContents, MakesAFileInAFolderOrBesideAFile) {
    memory.addFile("/f/file", "");
    EXPECT_EQ(older("/f")->createFile("new", bytesOf("1"), nullptr)->path(), "/f/new");
    EXPECT_EQ(textIn(older("/f/new")), "1");
    EXPECT_EQ(older("/f/file")->createFile("sibling", {}, nullptr, false)->path(), "/f/sibling");
    EXPECT_EQ(textIn(older("/f/sibling")), "");
    const TavFileInfoPtr missing = older("/missing")->createFile("x", bytesOf("1"), nullptr);
    ASSERT_NE(missing, nullptr) << "whether it could be made is not told";
    EXPECT_FALSE(missing->exists());
}

TEST_F(OlderContents, ANewFileGetsAttributes) {
    memory.addFolder("/f");
    Value::Dictionary attributes;
    attributes.set("NSFileHFSTypeCode", 0x54455854U);
    attributes.set("NSFilePosixPermissions", 0640);
    attributes.set("NSFileModificationDate", Date(1000));
    const TavFileInfoPtr item = older("/f")->createFile("new", bytesOf("1"), &attributes);
    EXPECT_EQ(item->typeCodeString(), "'TEXT'");
    EXPECT_EQ(item->modificationDate(), Date(1000));
    EXPECT_EQ(memory.attributes("/f/new").value().permissions, 0640U);
    const TavFileInfoPtr unique = older("/f")->createFile("new", bytesOf("1"), &attributes, true);
    EXPECT_EQ(unique->path(), "/f/new-1");
    EXPECT_EQ(unique->typeCodeString(), "'TEXT'");
}

TEST_F(OlderContents, AFileThatIsThereIsRewrittenWithoutAttributes) {
    memory.addFile("/f/file", "before");
    Value::Dictionary attributes;
    attributes.set("NSFileHFSTypeCode", 0x54455854U);
    const TavFileInfoPtr item = older("/f")->createFile("file", bytesOf("after"), &attributes);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->path(), "/f/file");
    EXPECT_EQ(textIn(item), "after");
    EXPECT_EQ(item->typeCodeString(), "''");
}

TEST_F(OlderContents, AFolderOfTheNameAnswersNullWithoutAWord) {
    memory.addFolder("/f/folder");
    memory.addLink("/f/link", "folder");
    SeenLog log;
    EXPECT_EQ(older("/f")->createFile("folder", bytesOf("x"), nullptr), nullptr);
    EXPECT_EQ(older("/f")->createFile("link", bytesOf("x"), nullptr), nullptr);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OlderContents, UniqueNamesCountFromOne) {
    memory.addFile("/f/name.txt", "0");
    const auto make = [&](std::string_view name) {
        return older("/f")->createFile(name, bytesOf("x"), nullptr, true)->name();
    };
    EXPECT_EQ(make("name.txt"), "name-1.txt");
    EXPECT_EQ(make("name.txt"), "name-2.txt");
    EXPECT_EQ(make("other"), "other");
    EXPECT_EQ(make("other"), "other-1");
    EXPECT_EQ(textIn(older("/f/name.txt")), "0");
    EXPECT_EQ(textIn(older("/f/name-2.txt")), "x");
    EXPECT_EQ(older("/f/name.txt")->createFile("name.txt", {}, nullptr, true)->name(), "name-3.txt")
        << "beside a file";
    memory.addFolder("/f/folder");
    EXPECT_EQ(make("folder"), "folder-1");
}

TEST_F(OlderContents, ANameThatIsTakenMeanwhileIsNotOverwritten) {
    memory.addFolder("/f");
    const auto callsBeforeOpen = [&] {
        files.restartCount();
        static_cast<void>(older("/f")->createFile("probe", {}, nullptr, true));
        return files.callCount();
    };
    const std::size_t calls = callsBeforeOpen();
    memory.removeAll("/f/probe");
    for (std::size_t call = 1; call <= calls; ++call) {
        memory.removeAll("/f");
        memory.addFolder("/f");
        files.restartCount();
        files.atCall(call, [&] { memory.addFile("/f/probe", "somebody else's"); });
        const TavFileInfoPtr made = older("/f")->createFile("probe", bytesOf("x"), nullptr, true);
        ASSERT_NE(made, nullptr);
        EXPECT_NE(textIn(older("/f/probe")), "x") << call;
        if (made->name() != "probe") {
            EXPECT_EQ(textIn(older("/f/probe")), "somebody else's") << call;
            EXPECT_EQ(textIn(made), "x") << call;
        }
    }
}

// Copies

class OlderCopies : public TavFileInfoInMemory {
  protected:
    OlderCopies() {
        memory.addFile("/from/file", "content");
        memory.addFile("/from/folder/inner", "deep");
        memory.addLink("/from/link", "file");
        memory.addFolder("/to");
        memory.addFile("/to/there", "before");
    }
};

TEST_F(OlderCopies, AFileGoesIntoAFolderUnderItsName) {
    TavFileInfoPtr copied;
    EXPECT_EQ(older("/from/file")->copyTo(older("/to").get(), &copied), Status::Success);
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(copied->path(), "/to/file");
    EXPECT_EQ(textIn(copied), "content");
    EXPECT_EQ(textIn(older("/from/file")), "content");
}

TEST_F(OlderCopies, WithoutANewItem) {
    EXPECT_EQ(older("/from/file")->copyTo(older("/to").get()), Status::Success);
    EXPECT_EQ(textIn(older("/to/file")), "content");
    EXPECT_EQ(older("/from/folder")->copyTo(older("/to").get(), nullptr), Status::Success);
    EXPECT_EQ(textIn(older("/to/folder/inner")), "deep") << "folders go whole";
}

TEST_F(OlderCopies, BesideAFile) {
    TavFileInfoPtr copied;
    EXPECT_EQ(older("/from/file")->copyTo(older("/to/there").get(), &copied), Status::Success);
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(copied->path(), "/to/file");
}

TEST_F(OlderCopies, ALinkIsCopiedAsALinkAndLeadsIntoAFolder) {
    TavFileInfoPtr copied;
    memory.addLink("/toLink", "/to");
    EXPECT_EQ(older("/from/link")->copyTo(older("/toLink").get(), &copied), Status::Success);
    EXPECT_EQ(copied->path(), "/toLink/link");
    EXPECT_EQ(memory.linkTarget("/to/link").value(), "file");
}

TEST_F(OlderCopies, NothingToCopyIsABadParameter) {
    const TavFileInfoPtr before = older("/before");
    TavFileInfoPtr copied = before;
    EXPECT_EQ(older("/missing")->copyTo(older("/to").get(), &copied), Status::BadParameter);
    EXPECT_EQ(copied, before) << "left alone";
    EXPECT_EQ(older(nullptr)->copyTo(older("/to").get()), Status::BadParameter);
}

TEST_F(OlderCopies, NowhereToCopyToIsAFailure) {
    TavFileInfoPtr copied = older("/before");
    EXPECT_EQ(older("/from/file")->copyTo(older("/missing").get(), &copied), Status::Failure);
    EXPECT_EQ(copied, nullptr);
    copied = older("/before");
    EXPECT_EQ(older("/from/file")->copyTo(nullptr, &copied), Status::Failure);
    EXPECT_EQ(copied, nullptr);
    EXPECT_EQ(older("/from/file")->copyTo(nullptr), Status::Failure);
    EXPECT_FALSE(older("/missing")->exists());
}

TEST_F(OlderCopies, NothingIsReplaced) {
    memory.addFile("/to/file", "before");
    TavFileInfoPtr copied = older("/before");
    EXPECT_EQ(older("/from/file")->copyTo(older("/to").get(), &copied), Status::Failure);
    EXPECT_EQ(copied, nullptr);
    EXPECT_EQ(textIn(older("/to/file")), "before");
    EXPECT_EQ(older("/from/file")->copyTo(older("/from").get()), Status::Failure) << "onto itself";
    EXPECT_EQ(older("/from")->copyTo(older("/from/folder").get()), Status::Failure)
        << "into itself";
}

TEST_F(OlderCopies, AFailureLeavesNothing) {
    memory.isReadOnly = true;
    EXPECT_EQ(older("/from/file")->copyTo(older("/to").get()), Status::Failure);
    memory.isReadOnly = false;
    memory.capacity = 20;
    EXPECT_EQ(older("/from")->copyTo(older("/to").get()), Status::Failure);
    EXPECT_FALSE(older("/to/from")->exists());
}

TEST_F(OlderCopies, AFileWithAnotherNameMeanwhileIsCopiedUnderThat) {
    const TavFileInfoPtr item = older("/from/file");
    ASSERT_TRUE(item->exists());
    ASSERT_TRUE(memory.move("/from/file", "/from/renamed", Replace::No).isNone());
    TavFileInfoPtr copied;
    EXPECT_EQ(item->copyTo(older("/to").get(), &copied), Status::Success);
    EXPECT_EQ(copied->path(), "/to/renamed");
}

} // namespace
} // namespace tav
