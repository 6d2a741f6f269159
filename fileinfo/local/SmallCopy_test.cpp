// Small files are copied in fewer calls, and nobody can tell: every copy here is made twice, once
// of items of the class itself and once of items of a class of one's own, which takes the steps.

#include "base/Exception.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/local/CopyWorld_test.hpp"

#include <cerrno>
#include <functional>
#include <stdexcept>

namespace tav {
namespace {

using Lines = std::vector<std::string>;

/// As the class itself, but a class of its own.
class SteppedFileInfo : public TavMacFileInfo {
  public:
    static std::shared_ptr<TavMacFileInfo> withPath(std::string_view path) {
        const auto item = internal::allocateItem<SteppedFileInfo>();
        item->initWithPath(path);
        return item;
    }

  protected:
    SteppedFileInfo() = default;
};

struct Copy {
    std::string to = "/d/b";
    std::function<void(CopyWorld&)> prepare = [](CopyWorld&) {};
    /// What the delegate does and answers.
    std::function<bool(CopyWorld&, TavBaseFileInfo& copy)> answer =
        [](CopyWorld&, TavBaseFileInfo&) { return false; };
    std::string from = "/s/a";
    bool isUnique = false;
    bool hasDelegate = true;
    /// What happens to the items before they are copied.
    std::function<void(CopyWorld&)> meanwhile = [](CopyWorld&) {};
    std::string failingOperation;
};

Lines toldOf(const Copy& copy, bool isStepped) {
    CopyWorld world;
    copy.prepare(world);
    const auto item = [&](std::string_view path) {
        return isStepped ? SteppedFileInfo::withPath(path) : TavMacFileInfo::fileInfoWithPath(path);
    };
    world.source = item(copy.from);
    world.destination = item(copy.to);
    copy.meanwhile(world);
    ProgressDelegate delegate;
    int user = 0;
    FileInfoPtr shown;
    delegate.copyingFile = [&](TavBaseFileInfo& from, TavBaseFileInfo& to, float percent,
                               void* pointer) {
        shown = to.shared_from_this();
        world.told.push_back(from.path() + " to " + to.path() + ' ' + std::to_string(percent) +
                             (&from == world.source.get() && pointer == &user ? "" : " others") +
                             " size " + std::to_string(to.size()) + ' ' + world.text(to.path()) +
                             (to.exists() && to.isFile() ? " is there" : ""));
        return copy.answer(world, to);
    };
    const FileInfoPtr untouched = item("/untouched");
    FileInfoPtr out = untouched;
    if (!copy.failingOperation.empty()) {
        world.files.failOperation(copy.failingOperation, EIO);
    }
    const TavBaseFileInfo* const destination = world.destination.get(); // its owner may let go
    try {
        const Status status =
            world.source->copyTo(world.destination.get(), copy.isUnique,
                                 copy.hasDelegate ? &delegate : nullptr, &user, &out);
        world.told.push_back("status " + std::to_string(static_cast<std::int32_t>(status)));
    } catch (const std::exception& exception) {
        world.told.push_back(std::string("raised ") + exception.what());
    }
    world.files.failOperation(copy.failingOperation, 0);
    world.told.push_back(
        "out " + (out ? out->path() : "(nil)") + (out == untouched ? " untouched" : "") +
        (out.get() == destination ? " the destination" : "") +
        (out && out == shown ? " as shown" : "") + (out && out->exists() ? " exists" : "") +
        (out && out->isFile() ? " file" : "") +
        (out && out->modificationDate() == Date(2000.25) ? " dated" : ""));
    if (shown) {
        world.told.push_back("shown " + shown->path() + (shown->exists() ? " exists" : ""));
    }
    world.told.push_back("source " + world.source->path() + ' ' +
                         std::to_string(world.source->size()));
    for (const std::string& line : world.log.lines()) {
        world.told.push_back("log " + line);
    }
    world.list(world.memory, "/");
    return world.told;
}

void expectSame(const std::string& what, const Copy& copy) {
    EXPECT_EQ(toldOf(copy, false), toldOf(copy, true)) << what;
}

/// Otherwise all that follows compares the steps with themselves.
TEST(SmallCopy, TakesFewerCalls) {
    const auto callsOf = [](bool isStepped, std::string_view to) {
        CopyWorld world;
        const auto from = isStepped ? SteppedFileInfo::withPath("/s/a")
                                    : TavMacFileInfo::fileInfoWithPath("/s/a");
        const auto destination = TavMacFileInfo::fileInfoWithPath(to);
        world.files.restartCount();
        EXPECT_EQ(from->copyTo(destination.get(), false, nullptr, nullptr, nullptr),
                  Status::Success);
        return world.files.callCount();
    };
    EXPECT_LT(callsOf(false, "/d/b") * 3, callsOf(true, "/d/b") * 2);
    EXPECT_LT(callsOf(false, "/d") * 3, callsOf(true, "/d") * 2);
}

TEST(SmallCopy, CannotBeToldFromTheSteps) {
    const auto with = [](auto change) {
        Copy copy;
        change(copy);
        return copy;
    };
    expectSame("new", {});
    expectSame("into a folder", with([](Copy& c) { c.to = "/d"; }));
    expectSame("no delegate", with([](Copy& c) { c.hasDelegate = false; }));
    expectSame("unique", with([](Copy& c) { c.to = "/d", c.isUnique = true; }));
    expectSame("taken", with([](Copy& c) {
                   c.to = "/d";
                   c.prepare = [](CopyWorld& w) { w.memory.addFile("/d/a", "old"); };
               }));
    expectSame("leftover", with([](Copy& c) {
                   c.prepare = [](CopyWorld& w) {
                       w.memory.addFile("/d/QuillboxCopyFile.tmp", "half");
                   };
               }));
    expectSame("empty", with([](Copy& c) {
                   c.prepare = [](CopyWorld& w) { w.memory.addFile("/s/a", ""); };
               }));
    expectSame("yes",
               with([](Copy& c) { c.answer = [](CopyWorld&, TavBaseFileInfo&) { return true; }; }));
    for (const char* to : {"/d",
                           "/d/b",
                           "/d/",
                           "/d/x/b",
                           "/s",
                           "/s/a",
                           "/s/a/x",
                           "/",
                           "b",
                           "",
                           "/d/.",
                           "/d/..",
                           "/d/b/",
                           "/d/QuillboxCopyFile.tmp",
                           "/d/quillboxcopyfile.TMP",
                           "//d//b",
                           "/link",
                           "/link/b",
                           "/broken",
                           "/broken/b",
                           "/d/none/.",
                           "/d/none/.."}) {
        for (const bool hasDelegate : {false, true}) {
            expectSame(std::string("to ") + to, with([&](Copy& c) {
                           c.to = to;
                           c.hasDelegate = hasDelegate;
                           c.prepare = [](CopyWorld& w) {
                               w.memory.addLink("/link", "/d");
                               w.memory.addLink("/broken", "/nowhere");
                           };
                       }));
        }
    }
    for (const char* from : {"/s/a", "/link", "/broken", "/s", "/none", "/s/../s/a", "/s/a/", "s/a",
                             "/s/QuillboxCopyFile.tmp"}) {
        for (const char* to : {"/d", "/d/b", "/s", "/s/b"}) {
            expectSame(std::string("from ") + from + " to " + to, with([&](Copy& c) {
                           c.from = from;
                           c.to = to;
                           c.prepare = [](CopyWorld& w) {
                               w.memory.addLink("/link", "/s/a");
                               w.memory.addLink("/broken", "/nowhere");
                               w.memory.addFile("/s/QuillboxCopyFile.tmp", "mine");
                           };
                       }));
        }
    }
}

TEST(SmallCopy, CannotBeToldFromTheStepsByTheRoom) {
    for (const std::uint64_t disk : {0U, 6U, 7U, 100U}) {
        for (const std::uint64_t stick : {0U, 6U, 7U, 100U}) {
            for (const char* to : {"/stick", "/stick/b", "/stick/in/b", "/d/link", "/d/link/b",
                                   "/stick/back/b", "/stick/back"}) {
                Copy copy;
                copy.to = to;
                copy.prepare = [&](CopyWorld& w) {
                    w.memory.addVolume("/stick");
                    w.memory.addFolder("/stick/in");
                    w.memory.addLink("/d/link", "/stick/in");
                    w.memory.addLink("/stick/back", "/d");
                    w.addVolume("/", disk);
                    w.addVolume("/stick", stick);
                };
                expectSame(std::string(to) + ' ' + std::to_string(disk) + ' ' +
                               std::to_string(stick),
                           copy);
            }
        }
    }
}

TEST(SmallCopy, CannotBeToldFromTheStepsByItsDelegate) {
    using Answer = std::function<bool(CopyWorld&, TavBaseFileInfo&)>;
    const std::vector<std::pair<std::string, Answer>> answers = {
        {"raises", [](CopyWorld&, TavBaseFileInfo&) -> bool { throw Exception("mine", "enough"); }},
        {"raises another",
         [](CopyWorld&, TavBaseFileInfo&) -> bool { throw std::runtime_error("x"); }},
        {"takes the copy away",
         [](CopyWorld& w, TavBaseFileInfo&) {
             w.memory.removeAll("/d/QuillboxCopyFile.tmp");
             return false;
         }},
        {"removes the copy", [](CopyWorld&, TavBaseFileInfo& copy) { return !copy.remove(); }},
        {"gives the copy another name",
         [](CopyWorld&, TavBaseFileInfo& copy) {
             copy.setName("mine");
             return false;
         }},
        {"gives the copy another name and raises",
         [](CopyWorld&, TavBaseFileInfo& copy) -> bool {
             copy.setName("mine");
             throw Exception("mine", "enough");
         }},
        {"gives the copy another name and raises another",
         [](CopyWorld&, TavBaseFileInfo& copy) -> bool {
             copy.setName("mine");
             throw std::runtime_error("x");
         }},
        {"takes the name",
         [](CopyWorld& w, TavBaseFileInfo&) {
             w.memory.addFile("/d/b", "theirs");
             w.memory.addFile("/d/a", "theirs");
             return false;
         }},
        {"takes the name and raises",
         [](CopyWorld& w, TavBaseFileInfo&) -> bool {
             w.memory.addFile("/d/b", "theirs");
             w.memory.addFile("/d/a", "theirs");
             throw Exception("mine", "enough");
         }},
        {"takes the source away",
         [](CopyWorld& w, TavBaseFileInfo&) {
             w.memory.removeAll("/s/a");
             return false;
         }},
        {"dates the source",
         [](CopyWorld& w, TavBaseFileInfo&) {
             w.source->setModificationDate(Date(3000));
             return false;
         }},
        {"refreshes all",
         [](CopyWorld& w, TavBaseFileInfo& copy) {
             w.source->refresh();
             w.destination->refresh();
             copy.refresh();
             return false;
         }},
        {"lets go of the destination",
         [](CopyWorld& w, TavBaseFileInfo&) {
             w.destination.reset();
             return false;
         }},
        {"copies as well",
         [](CopyWorld& w, TavBaseFileInfo&) {
             static_cast<void>(w.source->copyTo(TavMacFileInfo::fileInfoWithPath("/d/c").get()));
             return false;
         }},
        {"makes the volume read-only",
         [](CopyWorld& w, TavBaseFileInfo&) {
             w.memory.isReadOnly = true;
             return false;
         }},
    };
    for (const auto& [what, answer] : answers) {
        for (const char* to : {"/d", "/d/b"}) {
            Copy copy;
            copy.to = to;
            copy.answer = answer;
            expectSame(what + " to " + to, copy);
        }
    }
}

TEST(SmallCopy, CannotBeToldFromTheStepsWhenSomethingFails) {
    for (const char* operation : {"open", "OpenFile.readAt", "OpenFile.write", "OpenFile.close",
                                  "OpenFile.attributes", "move", "attributes"}) {
        for (const char* to : {"/d", "/d/b"}) {
            Copy copy;
            copy.to = to;
            copy.failingOperation = operation;
            expectSame(std::string(operation) + " to " + to, copy);
        }
    }
    for (const std::uint64_t capacity : {0U, 7U, 10U, 13U, 14U, 20U}) {
        Copy copy;
        copy.prepare = [&](CopyWorld& w) { w.memory.capacity = capacity; };
        expectSame("capacity " + std::to_string(capacity), copy);
    }
    Copy readOnly;
    readOnly.prepare = [](CopyWorld& w) { w.memory.isReadOnly = true; };
    expectSame("read-only", readOnly);
    Copy plain;
    plain.prepare = [](CopyWorld& w) { w.memory.keepsExtendedAttributes = false; };
    expectSame("no attributes", plain);
    Copy forbidden;
    forbidden.to = "/d";
    forbidden.from = "/s/a:b";
    forbidden.prepare = [](CopyWorld& w) {
        w.memory.addFile("/s/a:b", "x");
        w.memory.forbiddenCharacters = ":";
    };
    expectSame("forbidden", forbidden);
}

TEST(SmallCopy, CannotBeToldFromTheStepsByWhatTheItemKnew) {
    using Change = std::function<void(CopyWorld&)>;
    const std::vector<std::pair<std::string, Change>> changes = {
        {"grown", [](CopyWorld& w) { w.memory.addFile("/s/a", "content and more"); }},
        {"grown behind the item's back",
         [](CopyWorld& w) {
             EXPECT_EQ(w.source->size(), 7U);
             w.memory.addFile("/s/a", "content and more");
         }},
        {"shrunk behind the item's back",
         [](CopyWorld& w) {
             EXPECT_EQ(w.source->size(), 7U);
             w.memory.addFile("/s/a", "c");
         }},
        {"replaced",
         [](CopyWorld& w) {
             EXPECT_EQ(w.source->size(), 7U);
             w.memory.removeAll("/s/a");
             w.memory.addFile("/s/a", "another");
         }},
        {"gone", [](CopyWorld& w) { w.memory.removeAll("/s/a"); }},
        {"moved",
         [](CopyWorld& w) { EXPECT_TRUE(w.memory.move("/s/a", "/s/z", Replace::No).isNone()); }},
        {"its folder moved",
         [](CopyWorld& w) { EXPECT_TRUE(w.memory.move("/s", "/t", Replace::No).isNone()); }},
        {"the destination's folder moved",
         [](CopyWorld& w) {
             EXPECT_TRUE(w.destination->isFolder() || !w.destination->exists());
             EXPECT_TRUE(w.memory.move("/d", "/e", Replace::No).isNone());
         }},
        {"the destination's folder gone",
         [](CopyWorld& w) {
             EXPECT_TRUE(w.destination->isFolder() || !w.destination->exists());
             w.memory.removeAll("/d");
         }},
        {"a file where the folder was",
         [](CopyWorld& w) {
             EXPECT_TRUE(w.destination->isFolder() || !w.destination->exists());
             w.memory.removeAll("/d");
             w.memory.addFile("/d", "file");
         }},
        {"a link where the folder was",
         [](CopyWorld& w) {
             EXPECT_TRUE(w.destination->isFolder() || !w.destination->exists());
             w.memory.removeAll("/d");
             w.memory.addFolder("/e");
             w.memory.addLink("/d", "/e");
         }},
        {"given another date of creation behind the item's back",
         [](CopyWorld& w) {
             EXPECT_EQ(w.source->creationDate(), Date(1000.5));
             EXPECT_TRUE(
                 w.memory.setExtendedAttribute("/s/a", "user.tav.creation-date", bytesOf("7"))
                     .isNone());
         }},
        {"given another date of creation, attributes known",
         [](CopyWorld& w) {
             EXPECT_EQ(w.source->size(), 7U);
             EXPECT_TRUE(
                 w.memory.setExtendedAttribute("/s/a", "user.tav.creation-date", bytesOf("7"))
                     .isNone());
         }},
        {"without a date of creation that is kept",
         [](CopyWorld& w) {
             EXPECT_TRUE(
                 w.memory.removeExtendedAttribute("/s/a", "user.tav.creation-date").isNone());
         }},
        {"cancelled before", [](CopyWorld& w) { w.source->cancelCopy(); }},
    };
    for (const auto& [what, change] : changes) {
        for (const char* to : {"/d", "/d/b"}) {
            for (const bool hasDelegate : {false, true}) {
                Copy copy;
                copy.to = to;
                copy.meanwhile = change;
                copy.hasDelegate = hasDelegate;
                expectSame(what + " to " + to, copy);
            }
        }
    }
}

} // namespace
} // namespace tav
