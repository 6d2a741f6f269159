#include "platform/AtomicFile.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

using Names = std::vector<std::string>;

std::string contentOf(FileSystem& files, std::string_view path) {
    const auto content = files.readFile(path, 1U << 24U);
    return content.ok() ? std::string(textOf(content.value()))
                        : "error " + std::to_string(content.error().number());
}

Names namesIn(FileSystem& files, std::string_view path) {
    Names names;
    const auto entries = files.folderEntries(path);
    EXPECT_TRUE(entries.ok()) << path;
    for (std::size_t index = 0; entries.ok() && index < entries.value().size(); ++index) {
        names.push_back(entries.value()[index].name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

// On a real disk.

class AtomicFile : public testing::Test {
  protected:
    TemporaryFolder folder;
    FileSystem& files = FileSystem::current();

    [[nodiscard]] std::string path(std::string_view name) const { return folder.path(name); }
    SystemError put(std::string_view name, std::string_view text) const {
        return writeFileAtomically(path(name), bytesOf(text));
    }
    std::string read(std::string_view name) { return contentOf(files, path(name)); }
    void made(std::string_view name, std::string_view text) {
        ASSERT_TRUE(files.writeFile(path(name), bytesOf(text), 0600).isNone());
    }
    std::uint32_t permissionsOf(std::string_view name) {
        return files.attributes(path(name)).value().permissions;
    }
};

TEST_F(AtomicFile, MakesAndReplaces) {
    EXPECT_TRUE(put("f", "one").isNone());
    EXPECT_EQ(read("f"), "one");
    const FileIdentity first = files.attributes(path("f")).value().identity;
    EXPECT_TRUE(put("f", "").isNone());
    EXPECT_EQ(read("f"), "");
    EXPECT_NE(files.attributes(path("f")).value().identity, first);
    const std::string large(3'000'000, 'x');
    EXPECT_TRUE(put("f", large).isNone());
    EXPECT_TRUE(read("f") == large);
    EXPECT_EQ(namesIn(files, folder.path()), Names{"f"});
}

TEST_F(AtomicFile, WhoHasTheOldFileOpenKeepsIt) {
    made("f", "old");
    const auto file = files.open(path("f"), {});
    ASSERT_TRUE(file.ok());
    EXPECT_TRUE(put("f", "new").isNone());
    Data buffer(10);
    EXPECT_EQ(file.value()->read(buffer).value(), 3U);
    EXPECT_EQ(textOf(buffer).substr(0, 3), "old");
}

TEST_F(AtomicFile, PermissionsAreKeptExactly) {
    for (const std::uint32_t permissions : {0640U, 0444U, 0777U, 0U, 01600U}) {
        made("f", "old");
        ASSERT_TRUE(files.setPermissions(path("f"), permissions).isNone());
        EXPECT_TRUE(writeFileAtomically(path("f"), bytesOf("new"), 0600).isNone());
        EXPECT_EQ(permissionsOf("f"), permissions);
        ASSERT_TRUE(files.removeFile(path("f")).isNone());
    }
}

TEST_F(AtomicFile, ANewFileGetsThePermissionsLessTheMask) {
    const ::mode_t mask = ::umask(027);
    EXPECT_TRUE(put("f", "x").isNone());
    EXPECT_TRUE(writeFileAtomically(path("g"), bytesOf("x"), 0700).isNone());
    EXPECT_TRUE(writeFileAtomically(path("h"), bytesOf("x"), 0).isNone());
    ::umask(mask);
    EXPECT_EQ(permissionsOf("f"), 0640U);
    EXPECT_EQ(permissionsOf("g"), 0700U);
    EXPECT_EQ(permissionsOf("h"), 0U);
}

TEST_F(AtomicFile, LinksStayAndWhatTheyLeadToIsReplaced) {
    ASSERT_TRUE(files.createFolder(path("d"), 0700).isNone());
    ASSERT_TRUE(files.createFolder(path("d/e"), 0700).isNone());
    ASSERT_TRUE(files.createLink(path("e"), "d/e").isNone());
    ASSERT_TRUE(files.createLink(path("l"), "e/../f").isNone()); // d/f, not f
    ASSERT_TRUE(files.createLink(path("chain"), path("l")).isNone());
    made("d/f", "old");
    ASSERT_TRUE(files.setPermissions(path("d/f"), 0604).isNone());
    EXPECT_TRUE(put("chain", "new").isNone());
    EXPECT_EQ(read("d/f"), "new");
    EXPECT_EQ(permissionsOf("d/f"), 0604U);
    EXPECT_EQ(files.attributes(path("l")).value().kind, FileKind::Link);
    EXPECT_EQ(files.attributes(path("chain")).value().kind, FileKind::Link);
    EXPECT_EQ(namesIn(files, folder.path()), (Names{"chain", "d", "e", "l"}));
    EXPECT_EQ(namesIn(files, path("d")), (Names{"e", "f"}));
}

TEST_F(AtomicFile, ThroughADanglingLinkTheFileIsMadeThere) {
    ASSERT_TRUE(files.createFolder(path("d"), 0700).isNone());
    ASSERT_TRUE(files.createLink(path("l"), "d/m").isNone());
    ASSERT_TRUE(files.createLink(path("d/m"), "made").isNone());
    ASSERT_TRUE(files.createLink(path("deep"), "no/such").isNone());
    ASSERT_TRUE(files.createLink(path("slash"), "none/").isNone());
    EXPECT_TRUE(put("l", "new").isNone());
    EXPECT_EQ(read("d/made"), "new");
    EXPECT_EQ(namesIn(files, path("d")), (Names{"m", "made"}));
    EXPECT_EQ(files.attributes(path("l")).value().kind, FileKind::Link);
    EXPECT_EQ(put("deep", "x"), SystemError(ENOENT));
    EXPECT_EQ(put("slash", "x"), SystemError(EISDIR));
}

TEST_F(AtomicFile, LoopsEnd) {
    ASSERT_TRUE(files.createLink(path("self"), "self").isNone());
    EXPECT_EQ(put("self", "x"), SystemError(ELOOP));
    made("0", "old");
    for (int number = 1; number <= 41; ++number) {
        ASSERT_TRUE(
            files.createLink(path(std::to_string(number)), std::to_string(number - 1)).isNone());
    }
    EXPECT_EQ(put("41", "x"), SystemError(ELOOP));
    EXPECT_TRUE(put("40", "new").isNone());
    EXPECT_EQ(read("0"), "new");
}

TEST_F(AtomicFile, OnlyFilesAreReplaced) {
    ASSERT_TRUE(files.createFolder(path("d"), 0700).isNone());
    ASSERT_TRUE(files.createLink(path("l"), "d").isNone());
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    for (const std::string_view name : {"d", "d/", "d/.", "d/..", "l", "l/", "new/"}) {
        EXPECT_EQ(put(name, "x"), SystemError(EISDIR)) << name;
    }
    EXPECT_EQ(put("pipe", "x"), SystemError(EINVAL));
    EXPECT_EQ(writeFileAtomically("/dev/null", bytesOf("x")), SystemError(EINVAL));
    EXPECT_EQ(writeFileAtomically("/", bytesOf("x")), SystemError(EISDIR));
    EXPECT_EQ(namesIn(files, folder.path()), (Names{"d", "l", "pipe"}));
    EXPECT_TRUE(namesIn(files, path("d")).empty());
}

TEST_F(AtomicFile, PathsThatAreNoneFail) {
    using namespace std::string_literals;
    made("f", "text");
    EXPECT_EQ(writeFileAtomically("", {}), SystemError(ENOENT));
    EXPECT_EQ(put("n\0l"s, ""), SystemError(EINVAL));
    EXPECT_EQ(put("f\0"s, ""), SystemError(EINVAL));
    EXPECT_EQ(put(std::string(256, 'n'), ""), SystemError(ENAMETOOLONG));
    EXPECT_EQ(put("f/x", ""), SystemError(ENOTDIR));
    EXPECT_EQ(put("f/", ""), SystemError(ENOTDIR));
    EXPECT_EQ(put("f/..", ""), SystemError(ENOTDIR));
    EXPECT_EQ(put("gone/x", ""), SystemError(ENOENT));
    EXPECT_EQ(put("gone/x/", ""), SystemError(ENOENT));
    EXPECT_EQ(put("gone/..", ""), SystemError(ENOENT));
    EXPECT_EQ(namesIn(files, folder.path()), Names{"f"});
    EXPECT_EQ(read("f"), "text");
}

TEST_F(AtomicFile, NamesAreBytesAndMayHave255OfThem) {
    std::string umlauts;
    while (umlauts.size() < 254) {
        umlauts += "\xC3\xA9";
    }
    for (const std::string& name :
         {std::string("\xFF\xFE\n"), std::string("-"), std::string("..."), std::string(255, 'n'),
          std::string(255, '\x80'), std::string(255, '\xC3'), "x" + umlauts}) {
        EXPECT_TRUE(put(name, name).isNone());
        EXPECT_TRUE(put(name, name + "!").isNone());
        EXPECT_EQ(read(name), name + "!");
        EXPECT_EQ(namesIn(files, folder.path()), Names{name});
        ASSERT_TRUE(files.removeFile(path(name)).isNone());
    }
}

TEST_F(AtomicFile, RelativePathsCountFromTheWorkingFolder) {
    EXPECT_EQ(runForked([&] {
                  if (::chdir(folder.path().c_str()) != 0) {
                      return 1;
                  }
                  return writeFileAtomically("f", bytesOf("new")).number() +
                         writeFileAtomically("./g", bytesOf("new")).number();
              }),
              ProcessEnd());
    EXPECT_EQ(read("f"), "new");
    EXPECT_EQ(read("g"), "new");
}

TEST_F(AtomicFile, AClosedFolderLeavesEverything) {
    made("f", "old");
    ASSERT_TRUE(files.setPermissions(path("f"), 0666).isNone());
    ASSERT_TRUE(files.setPermissions(folder.path(), 0555).isNone());
    EXPECT_EQ(runForked([&] {
                  if (::geteuid() == 0 && ::seteuid(65534) != 0) {
                      return 1;
                  }
                  return put("f", "new") == SystemError(EACCES) &&
                                 put("g", "new") == SystemError(EACCES)
                             ? 0
                             : 2;
              }),
              ProcessEnd());
    EXPECT_EQ(read("f"), "old");
    EXPECT_EQ(namesIn(files, folder.path()), Names{"f"});
    ASSERT_TRUE(files.setPermissions(folder.path(), 0755).isNone());
}

TEST_F(AtomicFile, AFolderThatMayNotBeReadIsNotSynced) {
    made("f", "old");
    ASSERT_TRUE(files.setPermissions(folder.path(), 0333).isNone());
    EXPECT_EQ(runForked([&] {
                  if (::geteuid() == 0 && ::seteuid(65534) != 0) {
                      return 1;
                  }
                  return put("f", "new").isNone() ? 0 : 2;
              }),
              ProcessEnd());
    ASSERT_TRUE(files.setPermissions(folder.path(), 0755).isNone());
    EXPECT_EQ(read("f"), "new");
    EXPECT_EQ(namesIn(files, folder.path()), Names{"f"});
}

TEST_F(AtomicFile, OfManyThreadsThatWriteAtOnceOneWins) {
    std::vector<std::thread> writers;
    for (int number = 0; number < 4; ++number) {
        writers.emplace_back([this, number] {
            const std::string text(10000, static_cast<char>('a' + number));
            for (int round = 0; round < 20; ++round) {
                EXPECT_TRUE(put("f", text).isNone());
                const std::string seen = read("f");
                EXPECT_EQ(seen, std::string(10000, seen[0]));
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    EXPECT_EQ(namesIn(files, folder.path()), Names{"f"});
}

TEST_F(AtomicFile, EndedAtAnyCallTheContentIsTheOldOrTheNew) {
    const std::string fresh = "the new content, which is the longer of the two";
    for (const bool isLink : {false, true}) {
        for (const bool isOld : {false, true}) {
            bool isNewYet = false;
            for (std::size_t number = 1;; ++number) {
                const bool within = number % 2 == 0;
                const std::size_t call = (number + 1) / 2;
                const TemporaryFolder place;
                if (isOld) {
                    ASSERT_TRUE(files.writeFile(place.path("f"), bytesOf("old"), 0640).isNone());
                }
                if (isLink) {
                    ASSERT_TRUE(files.createLink(place.path("l"), "f").isNone());
                }
                const ProcessEnd end = runForked([&] {
                    FaultyFileSystem faulty(internal::realFileSystem());
                    faulty.endProcessAtCall(within ? 0 : call);
                    faulty.endProcessWithinCall(within ? call : 0);
                    const FileSystem::Replacement replacement(faulty);
                    return writeFileAtomically(place.path(isLink ? "l" : "f"), bytesOf(fresh))
                        .number();
                });
                const std::string content = contentOf(files, place.path("f"));
                const std::string old = isOld ? "old" : "error " + std::to_string(ENOENT);
                EXPECT_TRUE(content == fresh || (!isNewYet && content == old))
                    << content << " after call " << call;
                isNewYet = content == fresh;
                if (end == ProcessEnd()) {
                    EXPECT_TRUE(isNewYet);
                    EXPECT_GE(call, 9U);
                    break;
                }
                ASSERT_EQ(end, (ProcessEnd{0, SIGKILL}));
            }
        }
    }
}

// In memory, with faults.

class AtomicFileWithFaults : public testing::Test {
  protected:
    MemoryFileSystem memory;
    FaultyFileSystem files{memory};
    FileSystem::Replacement replacement{files};
    static constexpr std::string_view fresh = "the new content, which is the longer of the two";

    static SystemError put(std::string_view path) {
        return writeFileAtomically(path, bytesOf(fresh));
    }
};

TEST_F(AtomicFileWithFaults, EachStepComesInItsOrder) {
    memory.addFile("/d/f", "old");
    EXPECT_TRUE(put("/d/f").isNone());
    Names calls = memory.calls();
    ASSERT_EQ(calls.size(), 9U);
    const std::string sibling = calls[2].substr(calls[2].find('/'));
    EXPECT_TRUE(sibling.starts_with("/d/.f."));
    EXPECT_TRUE(sibling.ends_with(".new"));
    EXPECT_EQ(calls, (Names{"attributes /d/f", "canonicalPath /d", "open " + sibling,
                            "OpenFile.write " + sibling, "setPermissions " + sibling,
                            "OpenFile.sync " + sibling, "OpenFile.close " + sibling,
                            "move " + sibling + " /d/f", "syncFolder /d"}));
}

TEST_F(AtomicFileWithFaults, ASiblingsNameIsShortAndEndsInAWholeCharacter) {
    const auto siblingOf = [this](const std::string& name) {
        memory.clearCalls();
        EXPECT_TRUE(put("/" + name).isNone());
        const std::string open = memory.calls().at(2);
        return open.substr(open.find('/') + 1);
    };
    std::string umlauts;
    for (int number = 0; number < 100; ++number) {
        umlauts += "\xC3\xA9";
    }
    for (const std::string& name : {umlauts, "x" + umlauts}) {
        const std::string sibling = siblingOf(name);
        EXPECT_LT(sibling.size(), 143U); // what an encrypted file system has room for
        const std::size_t digits = sibling.rfind('.', sibling.rfind('.') - 1);
        EXPECT_EQ(sibling[digits - 1], '\xA9') << sibling;
    }
    // Where there are no characters, bytes are cut.
    EXPECT_TRUE(siblingOf(std::string(255, '\x80')).starts_with("."));
    EXPECT_NE(siblingOf("f"), siblingOf("f"));
}

TEST_F(AtomicFileWithFaults, ASiblingIsNobodyElsesUntilItHasThePermissions) {
    memory.addFile("/f", "old");
    ASSERT_TRUE(memory.setPermissions("/f", 0644).isNone());
    files.atCall(4, [&] {
        for (const std::string& name : namesIn(memory, "/")) {
            EXPECT_EQ(memory.attributes("/" + name).value().permissions,
                      name == "f" ? 0644U : 0600U);
        }
    });
    EXPECT_TRUE(put("/f").isNone());
    EXPECT_EQ(memory.attributes("/f").value().permissions, 0644U);
}

TEST_F(AtomicFileWithFaults, WhateverFailsTheContentIsTheOldOrTheNewAndNoSiblingStays) {
    for (const int error : {ENOSPC, EIO, EINTR, EDQUOT, EINVAL, EACCES, EEXIST}) {
        for (const std::string_view path : {"/old", "/new", "/toOld", "/toNew"}) {
            std::size_t call = 0;
            do {
                ++call;
                for (const std::string_view name : {"/old", "/new", "/toOld", "/toNew"}) {
                    memory.removeAll(name);
                }
                memory.addFile("/old", "old");
                memory.addLink("/toOld", "old");
                memory.addLink("/toNew", "new");
                files.restartCount();
                files.failCall(call, error);
                const SystemError answer = put(path);
                files.failCall(0, 0);
                const std::string last = memory.calls().empty() ? "" : memory.calls().back();
                const bool isForOld = path == "/old" || path == "/toOld";
                const std::string content = contentOf(memory, isForOld ? "/old" : "/new");
                const std::string before = isForOld ? "old" : "error " + std::to_string(ENOENT);
                const std::string where = std::string(path) + " call " + std::to_string(call) +
                                          " error " + std::to_string(error);
                if (answer.isNone()) {
                    EXPECT_EQ(content, fresh) << where;
                } else if (last.starts_with("move ")) { // the sync of the folder
                    EXPECT_EQ(content, fresh) << where;
                    EXPECT_EQ(answer.number(), error) << where;
                } else {
                    EXPECT_EQ(content, before) << where;
                }
                if (!isForOld) {
                    EXPECT_EQ(contentOf(memory, "/old"), "old") << where;
                }
                Names names = {"old", "toNew", "toOld"};
                if (!isForOld && content == fresh) {
                    names.insert(names.begin(), "new");
                }
                EXPECT_EQ(namesIn(memory, "/"), names) << where;
                memory.clearCalls();
            } while (files.callCount() >= call);
            EXPECT_GE(call, 9U);
        }
    }
}

TEST_F(AtomicFileWithFaults, AShortWriteIsNotKept) {
    memory.addFile("/f", "old");
    for (std::size_t bytes = 0; bytes < fresh.size(); ++bytes) {
        files.restartCount();
        files.shortWriteCall(4, bytes, EDQUOT);
        EXPECT_EQ(put("/f"), SystemError(EDQUOT));
        EXPECT_EQ(contentOf(memory, "/f"), "old");
        EXPECT_EQ(namesIn(memory, "/"), Names{"f"});
    }
}

TEST_F(AtomicFileWithFaults, AFullDiskLeavesTheOldFile) {
    memory.addFile("/f", "old");
    memory.capacity = 3 + fresh.size() - 1; // both stand there for a while
    EXPECT_EQ(put("/f"), SystemError(ENOSPC));
    EXPECT_EQ(contentOf(memory, "/f"), "old");
    EXPECT_EQ(namesIn(memory, "/"), Names{"f"});
    memory.capacity += 1;
    EXPECT_TRUE(put("/f").isNone());
    memory.isReadOnly = true;
    EXPECT_EQ(put("/f"), SystemError(EROFS));
}

TEST_F(AtomicFileWithFaults, AFileSystemThatCannotSyncFoldersIsNoFailure) {
    for (const int error : {EINVAL, ENOTSUP, EACCES}) {
        files.failOperation("syncFolder", error);
        EXPECT_TRUE(put("/f").isNone());
        EXPECT_EQ(contentOf(memory, "/f"), fresh);
    }
    files.failOperation("syncFolder", EIO);
    EXPECT_EQ(put("/f"), SystemError(EIO));
    EXPECT_EQ(contentOf(memory, "/f"), fresh);
}

TEST_F(AtomicFileWithFaults, ATakenNameIsTriedAgainButNotForever) {
    files.failCall(3, EEXIST);
    EXPECT_TRUE(put("/f").isNone());
    const Names calls = memory.calls();
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(),
                            [](const std::string& call) { return call.starts_with("open "); }),
              1);
    files.failOperation("open", EEXIST);
    files.restartCount();
    EXPECT_EQ(put("/f"), SystemError(EEXIST));
    EXPECT_LT(files.callCount(), 100U);
}

TEST_F(AtomicFileWithFaults, TheNewFileStaysOpenForReadingAndAppending) {
    memory.addFile("/f", "old");
    const auto file = replaceFileAtomically("/f", bytesOf(fresh), Surviving::LossOfPower);
    ASSERT_TRUE(file.ok());
    ASSERT_TRUE(file.value()->setPosition(0).isNone());
    ASSERT_TRUE(file.value()->write(bytesOf(" and more")).isNone());
    EXPECT_EQ(contentOf(memory, "/f"), std::string(fresh) + " and more");
    EXPECT_EQ(namesIn(memory, "/"), Names{"f"});
    Data first(1);
    EXPECT_TRUE(file.value()->readAt(0, first).ok());

    // The last step undoes nothing.
    files.failOperation("syncFolder", EIO);
    EXPECT_TRUE(replaceFileAtomically("/f", bytesOf("again"), Surviving::LossOfPower).ok());
    EXPECT_EQ(contentOf(memory, "/f"), "again");
    files.failOperation("OpenFile.sync", EIO);
    EXPECT_EQ(replaceFileAtomically("/f", bytesOf("never"), Surviving::LossOfPower).error(),
              SystemError(EIO));
    EXPECT_EQ(contentOf(memory, "/f"), "again");
}

TEST_F(AtomicFileWithFaults, WhatNeedNotSurviveALossOfPowerIsNotWaitedFor) {
    memory.addFile("/f", "old");
    files.failOperation("syncFolder", EIO);
    files.failOperation("OpenFile.sync", EIO);
    EXPECT_TRUE(replaceFileAtomically("/f", bytesOf(fresh), Surviving::EndOfProcess).ok());
    EXPECT_EQ(contentOf(memory, "/f"), fresh);
}

TEST_F(AtomicFileWithFaults, WhereCaseDoesNotMatterTheFileIsReplacedToo) {
    memory.isCaseInsensitive = true;
    memory.addFile("/Name", "old");
    EXPECT_TRUE(put("/NAME").isNone());
    EXPECT_EQ(contentOf(memory, "/name"), fresh);
    EXPECT_EQ(namesIn(memory, "/").size(), 1U);
}

} // namespace
} // namespace tav
