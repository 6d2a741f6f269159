#include "platform/FileSystemConformance_test.hpp"
#include "platform/memory/FaultyFileSystem.hpp"

#include <map>

namespace tav {
namespace {

/// An open folder "d".
class OpenFolderConformance : public FileSystemConformance {
  protected:
    std::unique_ptr<OpenFolder> folder;

    void SetUp() override {
        makeFolder("d");
        folder = opened("d");
    }
    void TearDown() override { folder.reset(); }

    std::unique_ptr<OpenFolder> opened(std::string_view name) {
        auto answer = files.openFolder(path(name));
        EXPECT_EQ(answer.error().number(), 0) << name;
        return answer.ok() ? std::move(answer).value() : nullptr;
    }
    /// Sorted.
    static Names namesOf(OpenFolder& open) {
        Names names;
        const auto listing = open.entries();
        EXPECT_EQ(listing.error().number(), 0);
        if (listing.ok()) {
            for (const FolderListing::Entry entry : listing.value()) {
                names.emplace_back(entry.name);
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    static int kindOf(const Result<FileAttributes>& attributes) {
        return attributes.ok() ? static_cast<int>(attributes.value().kind)
                               : -attributes.error().number();
    }
};

INSTANTIATE_TEST_SUITE_P(, OpenFolderConformance, testing::Values(Kind::Real, Kind::Memory),
                         [](const auto& tested) {
                             return tested.param == Kind::Real ? "Real" : "Memory";
                         });

TEST_P(OpenFolderConformance, KnowsItself) {
    const auto attributes = folder->attributes();
    ASSERT_TRUE(attributes.ok());
    EXPECT_EQ(attributes.value().kind, FileKind::Folder);
    EXPECT_EQ(attributes.value().identity, attributesOf("d").identity);
}

TEST_P(OpenFolderConformance, ListsNamesKindsAndNumbers) {
    EXPECT_TRUE(folder->entries().value().empty());
    makeFile("d/f", "12");
    makeFolder("d/e");
    makeLink("d/l", "f");
    makeFile("d/\xFF\n");
    for (int round = 0; round < 2; ++round) { // each listing begins anew
        const auto listing = folder->entries();
        ASSERT_TRUE(listing.ok());
        std::map<std::string, FolderListing::Entry> entries;
        for (const FolderListing::Entry entry : listing.value()) {
            entries.emplace(entry.name, entry);
            EXPECT_EQ(entry.name.data()[entry.name.size()], '\0');
        }
        EXPECT_EQ(listing.value().size(), 4U);
        ASSERT_EQ(entries.size(), 4U);
        for (const auto& [name, entry] : entries) {
            const FileAttributes expected = attributesOf("d/" + name);
            EXPECT_EQ(entry.number, expected.identity.number) << name;
            EXPECT_TRUE(entry.kind == expected.kind || entry.kind == FileKind::Unknown) << name;
        }
    }
}

TEST_P(OpenFolderConformance, ListsInTheOrderOfTheFileSystem) {
    for (int number = 0; number < 700; ++number) {
        makeFile("d/" + std::to_string(number) + std::string(200, 'n'));
    }
    const auto expected = files.folderEntries(path("d"));
    const auto listing = folder->entries();
    ASSERT_TRUE(expected.ok() && listing.ok());
    ASSERT_EQ(listing.value().size(), expected.value().size());
    for (std::size_t index = 0; index < listing.value().size(); ++index) {
        ASSERT_EQ(listing.value()[index].name, expected.value()[index].name);
        ASSERT_EQ(listing.value()[index].kind, expected.value()[index].kind);
    }
}

TEST_P(OpenFolderConformance, NamesThatAreNoneAreRefused) {
    using namespace std::string_view_literals;
    for (const std::string_view name : {""sv, "."sv, ".."sv, "a/b"sv, "/"sv, "e/"sv, "a\0b"sv}) {
        EXPECT_EQ(kindOf(folder->attributes(name)), -EINVAL) << name;
        EXPECT_EQ(kindOf(folder->targetAttributes(name)), -EINVAL) << name;
        EXPECT_EQ(folder->linkTarget(name).error(), SystemError(EINVAL)) << name;
        EXPECT_EQ(folder->openFolder(name).error(), SystemError(EINVAL)) << name;
        EXPECT_EQ(folder->openTargetFolder(name).error(), SystemError(EINVAL)) << name;
        EXPECT_EQ(folder->open(name, {}).error(), SystemError(EINVAL)) << name;
        EXPECT_EQ(folder->createFolder(name, 0700), SystemError(EINVAL)) << name;
        EXPECT_EQ(folder->removeFile(name), SystemError(EINVAL)) << name;
        EXPECT_EQ(folder->removeFolder(name), SystemError(EINVAL)) << name;
    }
    for (const std::size_t length : {256U, 4096U, 10'000U}) {
        const std::string name(length, 'n');
        EXPECT_EQ(kindOf(folder->attributes(name)), -ENAMETOOLONG) << length;
        EXPECT_EQ(kindOf(folder->targetAttributes(name)), -ENAMETOOLONG) << length;
        EXPECT_EQ(folder->linkTarget(name).error(), SystemError(ENAMETOOLONG)) << length;
        EXPECT_EQ(folder->openFolder(name).error(), SystemError(ENAMETOOLONG)) << length;
        EXPECT_EQ(folder->openTargetFolder(name).error(), SystemError(ENAMETOOLONG)) << length;
        EXPECT_EQ(folder->open(name, {}).error(), SystemError(ENAMETOOLONG)) << length;
        EXPECT_EQ(folder->createFolder(name, 0700), SystemError(ENAMETOOLONG)) << length;
        EXPECT_EQ(folder->removeFile(name), SystemError(ENAMETOOLONG)) << length;
        EXPECT_EQ(folder->removeFolder(name), SystemError(ENAMETOOLONG)) << length;
    }
}

TEST_P(OpenFolderConformance, AsksAboutNames) {
    makeFile("d/f", "12");
    makeFolder("side");
    makeLink("d/l", "../side");
    makeLink("d/nowhere", "gone");
    makeLink("d/self", "self");
    EXPECT_EQ(folder->attributes("f").value().size, 2U);
    EXPECT_EQ(folder->attributes("l").value().kind, FileKind::Link);
    EXPECT_EQ(folder->targetAttributes("l").value().identity, attributesOf("side").identity);
    EXPECT_EQ(kindOf(folder->attributes("gone")), -ENOENT);
    EXPECT_EQ(kindOf(folder->targetAttributes("nowhere")), -ENOENT);
    EXPECT_EQ(kindOf(folder->targetAttributes("self")), -ELOOP);
    EXPECT_EQ(folder->linkTarget("l").value(), "../side");
    EXPECT_EQ(folder->linkTarget("f").error(), SystemError(EINVAL));
    EXPECT_EQ(folder->linkTarget("gone").error(), SystemError(ENOENT));
}

TEST_P(OpenFolderConformance, OpensFoldersNeverThroughLinks) {
    makeFolder("d/e");
    makeFile("d/e/f");
    makeFile("d/file");
    makeLink("d/l", "e");
    makeLink("d/nowhere", "gone");
    makeLink("d/self", "self");
    const auto inner = folder->openFolder("e");
    ASSERT_TRUE(inner.ok());
    EXPECT_EQ(namesOf(*inner.value()), Names{"f"});
    EXPECT_EQ(folder->openFolder("l").error(), SystemError(ENOTDIR));
    EXPECT_EQ(folder->openFolder("self").error(), SystemError(ENOTDIR));
    EXPECT_EQ(folder->openFolder("file").error(), SystemError(ENOTDIR));
    EXPECT_EQ(folder->openFolder("gone").error(), SystemError(ENOENT));
    const auto target = folder->openTargetFolder("l");
    ASSERT_TRUE(target.ok());
    EXPECT_EQ(target.value()->attributes().value().identity, attributesOf("d/e").identity);
    EXPECT_EQ(folder->openTargetFolder("nowhere").error(), SystemError(ENOENT));
    EXPECT_EQ(folder->openTargetFolder("self").error(), SystemError(ELOOP));
    EXPECT_EQ(folder->openTargetFolder("file").error(), SystemError(ENOTDIR));
    // The path of the first, on the other hand, is followed.
    makeLink("toD", "d");
    EXPECT_EQ(opened("toD")->attributes().value().identity, attributesOf("d").identity);
}

TEST_P(OpenFolderConformance, OpensFiles) {
    OpenOptions options;
    options.write = true;
    options.create = true;
    {
        const auto file = folder->open("new", options);
        ASSERT_TRUE(file.ok());
        EXPECT_TRUE(file.value()->write(bytesOf("text")).isNone());
    }
    EXPECT_EQ(read("d/new"), "text");
    makeFolder("d/e");
    makeLink("d/l", "new");
    EXPECT_TRUE(folder->open("l", {}).ok());
    EXPECT_EQ(folder->open("e", {}).error(), SystemError(EISDIR));
    EXPECT_EQ(folder->open("gone", {}).error(), SystemError(ENOENT));
    options.mustBeNew = true;
    EXPECT_EQ(folder->open("l", options).error(), SystemError(EEXIST));
    options.write = false;
    EXPECT_EQ(folder->open("new", options).error(), SystemError(EINVAL));
}

TEST_P(OpenFolderConformance, MakesAndRemoves) {
    ASSERT_TRUE(folder->createFolder("e", 0750).isNone());
    EXPECT_EQ(attributesOf("d/e").permissions, 0750U);
    EXPECT_EQ(folder->createFolder("e", 0700), SystemError(EEXIST));
    makeFile("d/f", "");
    makeLink("d/l", "e");
    EXPECT_EQ(folder->removeFile("e"), SystemError(EISDIR));
    EXPECT_EQ(folder->removeFolder("f"), SystemError(ENOTDIR));
    EXPECT_EQ(folder->removeFolder("l"), SystemError(ENOTDIR));
    EXPECT_EQ(folder->removeFile("gone"), SystemError(ENOENT));
    EXPECT_EQ(folder->removeFolder("gone"), SystemError(ENOENT));
    makeFile("d/e/inner", "");
    EXPECT_EQ(folder->removeFolder("e"), SystemError(ENOTEMPTY));
    EXPECT_TRUE(files.removeFile(path("d/e/inner")).isNone());
    EXPECT_TRUE(folder->removeFile("l").isNone());
    EXPECT_TRUE(folder->removeFolder("e").isNone());
    EXPECT_TRUE(folder->removeFile("f").isNone());
    EXPECT_TRUE(namesIn("d").empty());
}

TEST_P(OpenFolderConformance, StaysTheSameFolderWhenItIsMoved) {
    makeFolder("up");
    makeFile("up/beside", "x");
    makeFile("d/f", "old");
    makeLink("d/l", "../beside");
    const FileIdentity identity = attributesOf("d").identity;
    ASSERT_EQ(errorOfMove("d", "up/d2", Replace::No), 0);
    makeFolder("d");
    makeFile("d/other", "");
    EXPECT_EQ(folder->attributes().value().identity, identity);
    EXPECT_EQ(namesOf(*folder), (Names{"f", "l"}));
    // What counts from the folder counts from its new place.
    EXPECT_EQ(kindOf(folder->targetAttributes("l")), static_cast<int>(FileKind::Regular));
    ASSERT_TRUE(folder->createFolder("made", 0700).isNone());
    EXPECT_EQ(attributesOf("up/d2/made").kind, FileKind::Folder);
    EXPECT_TRUE(folder->removeFile("f").isNone());
    EXPECT_EQ(namesIn("d"), Names{"other"});
}

TEST_P(OpenFolderConformance, NothingIsInARemovedFolder) {
    const auto moved = [this] {
        makeFolder("m");
        auto open = opened("m");
        makeFolder("m2");
        EXPECT_EQ(errorOfMove("m2", "m", Replace::Yes), 0); // takes the place of the open one
        return open;
    }();
    const FileIdentity identity = folder->attributes().value().identity;
    ASSERT_TRUE(files.removeFolder(path("d")).isNone());
    makeFolder("d");
    makeFile("d/f", "");
    makeFile("m/f", "");
    EXPECT_EQ(folder->attributes().value().identity, identity);
    OpenOptions making;
    making.write = true;
    making.create = true;
    for (OpenFolder* open : {folder.get(), moved.get()}) {
        EXPECT_EQ(open->attributes().value().kind, FileKind::Folder);
        EXPECT_EQ(open->entries().error(), SystemError(ENOENT));
        EXPECT_EQ(kindOf(open->attributes("f")), -ENOENT);
        EXPECT_EQ(open->open("f", {}).error(), SystemError(ENOENT));
        EXPECT_EQ(open->open("f", making).error(), SystemError(ENOENT));
        EXPECT_EQ(open->openFolder("f").error(), SystemError(ENOENT));
        EXPECT_EQ(open->createFolder("new", 0700), SystemError(ENOENT));
        EXPECT_EQ(open->removeFile("f"), SystemError(ENOENT));
        EXPECT_EQ(open->removeFolder("f"), SystemError(ENOENT));
    }
}

TEST_P(OpenFolderConformance, OutlivesTheFolderThatOpenedIt) {
    makeFolder("d/e");
    makeFile("d/e/f", "text");
    auto inner = std::move(folder->openFolder("e")).value();
    auto file = std::move(inner->open("f", {})).value();
    folder.reset();
    EXPECT_EQ(namesOf(*inner), Names{"f"});
    inner.reset();
    std::array<std::byte, 4> buffer;
    EXPECT_EQ(file->read(buffer).value(), 4U);
}

TEST_P(OpenFolderConformance, EveryCallCanBeMadeToFail) {
    FaultyFileSystem faulty(files);
    makeFile("d/f", "");
    makeFolder("d/e");
    makeLink("d/l", "f");
    const auto run = [&]() -> SystemError {
        const auto open = faulty.openFolder(path("d"));
        if (!open.ok()) {
            return open.error();
        }
        OpenFolder& d = *open.value();
        SystemError error;
        const auto keep = [&error](SystemError next) { error = error.isNone() ? next : error; };
        keep(d.attributes().error());
        keep(d.entries().error());
        keep(d.attributes("f").error());
        keep(d.targetAttributes("l").error());
        keep(d.linkTarget("l").error());
        const auto inner = d.openFolder("e");
        keep(inner.error());
        if (inner.ok()) {
            keep(inner.value()->entries().error());
        }
        keep(d.openTargetFolder("e").error());
        const auto file = d.open("f", {});
        keep(file.error());
        if (file.ok()) {
            keep(file.value()->attributes().error());
        }
        const SystemError made = d.createFolder("new", 0700);
        keep(made);
        keep(made.isNone() ? d.removeFolder("new") : SystemError());
        return error;
    };
    ASSERT_TRUE(run().isNone());
    const std::size_t calls = faulty.callCount();
    EXPECT_EQ(calls, 13U);
    for (std::size_t call = 1; call <= calls; ++call) {
        faulty.restartCount();
        faulty.failCall(call, EIO);
        EXPECT_EQ(run(), SystemError(EIO)) << call;
        faulty.failCall(0, 0);
        static_cast<void>(files.removeFolder(path("d/new")));
    }
    faulty.failOperation("OpenFolder.removeFile", EACCES);
    EXPECT_EQ(faulty.openFolder(path("d")).value()->removeFile("f"), SystemError(EACCES));
    EXPECT_EQ(read("d/f"), "");
}

TEST(FolderListing, KeepsWhatIsAdded) {
    FolderListing listing;
    EXPECT_TRUE(listing.empty());
    EXPECT_EQ(listing.begin(), listing.end());
    listing.add("", FileKind::Unknown, 0);
    listing.add("b", FileKind::Regular, ~std::uint64_t{0});
    listing.add(std::string(1000, 'x'), FileKind::Folder, 7);
    ASSERT_EQ(listing.size(), 3U);
    EXPECT_EQ(listing[0].name, "");
    EXPECT_EQ(listing[1].name, "b");
    EXPECT_EQ(listing[1].kind, FileKind::Regular);
    EXPECT_EQ(listing[1].number, ~std::uint64_t{0});
    EXPECT_EQ(listing[2].name, std::string(1000, 'x'));
    EXPECT_EQ(listing[2].kind, FileKind::Folder);
    EXPECT_EQ(std::distance(listing.begin(), listing.end()), 3);
    const FolderListing moved = std::move(listing);
    EXPECT_EQ(moved[1].name, "b");
}

TEST(IsEntryName, TellsNamesFromPaths) {
    using namespace std::string_view_literals;
    for (const std::string_view name : {"a"sv, "..."sv, " "sv, "\xFF"sv, ".a"sv, "a\\b"sv}) {
        EXPECT_TRUE(isEntryName(name)) << name;
    }
    for (const std::string_view name : {""sv, "."sv, ".."sv, "/"sv, "a/"sv, "a/b"sv, "\0"sv}) {
        EXPECT_FALSE(isEntryName(name)) << name;
    }
}

} // namespace
} // namespace tav
