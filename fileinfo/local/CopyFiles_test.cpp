// Many files copied into one folder: nobody can tell it from so many single copies. Each series
// here is made twice, by `copyFiles` and by `copyTo` of each file.

#include "base/Exception.hpp"
#include "fileinfo/CopyFiles.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/DeviceFileInfo_test.hpp"
#include "fileinfo/local/CopyWorld_test.hpp"

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace tav {
namespace {

using Lines = std::vector<std::string>;
using Names = std::vector<std::string>;

/// The files of one run and those of a device.
struct SeriesWorld : CopyWorld {
    SeriesWorld() {
        memory.addFile("/s/b", "");
        memory.addFile("/s/c", std::string(70'000, 'c'));
        memory.addFile("/s/\xFF\xFE.txt", "bytes");
        memory.addFolder("/s/folder");
        memory.addLink("/s/link", "a");
        device.addFile("/E/s/a", "of the device");
        device.addFile("/E/s/b", "");
        device.addFile("/E/s/c", std::string(20'000, 'd'));
        device.addFolder("/E/s/folder");
        device.addFolder("/E/d");
    }
    /// Paths of the device have a drive.
    FileInfoPtr item(std::string_view path) {
        return path.starts_with("E:") ? FileInfoPtr(DeviceFileInfo::at(device, path))
                                      : FileInfoPtr(TavMacFileInfo::fileInfoWithPath(path));
    }

    MemoryFileSystem device;
    FileInfoPtr folder;
    FileInfoArray items;
};

/// Nothing, or what happens in one world.
using Event = std::function<void(SeriesWorld&)>;

struct Series {
    Names from = {"/s/a", "/s/b", "/s/\xFF\xFE.txt", "/s/c"};
    std::string to = "/d";
    Event prepare = [](SeriesWorld&) {};
    bool isUnique = false;
    bool hasDelegate = true;
    /// What the delegate does at its report of that number, and whether it cancels.
    int eventfulReport = 0;
    Event atReport = [](SeriesWorld&) {};
    bool cancels = false;
    /// What happens when so many files are copied, and whether that is enough.
    std::size_t eventfulFile = 0;
    Event afterFile = [](SeriesWorld&) {};
    bool ends = false;
    std::size_t failingCall = 0; ///< Of the local file system, counted from the first copy.
};

void copyEach(std::span<const FileInfoPtr> files, TavBaseFileInfo& folder, bool ensureUniqueName,
              const ProgressDelegate* delegate, void* userData, const FileCopied& copied) {
    const FileInfoPtr kept = folder.shared_from_this();
    for (const FileInfoPtr& file : files) {
        FileInfoPtr made;
        const Status status = file->copyTo(&folder, ensureUniqueName, delegate, userData, &made);
        if (copied && !copied(*file, status, made)) {
            return;
        }
    }
}

Lines toldOf(const Series& series, decltype(&copyFiles) copyAll, SeriesWorld& world) {
    series.prepare(world);
    for (const std::string& path : series.from) {
        world.items.push_back(world.item(path));
    }
    world.folder = world.item(series.to);
    Lines& told = world.told;
    ProgressDelegate delegate;
    int user = 0;
    int reports = 0;
    delegate.copyingFile = [&](TavBaseFileInfo& from, TavBaseFileInfo& to, float percent,
                               void* pointer) {
        EXPECT_EQ(pointer, &user);
        told.push_back(from.path() + " to " + to.path() + ' ' + std::to_string(percent) +
                       (to.exists() ? " is there " : " ") + std::to_string(to.size()));
        if (++reports != series.eventfulReport) {
            return false;
        }
        series.atReport(world);
        return series.cancels;
    };
    std::size_t files = 0;
    const auto copied = [&](TavBaseFileInfo& file, Status status, const FileInfoPtr& made) {
        told.push_back(file.path() + " status " + std::to_string(static_cast<int>(status)) + ' ' +
                       (made ? made->path() : "(nil)") + (made == world.folder ? " itself" : "") +
                       (made && made->exists() ? " exists" : "") +
                       (made && made->modificationDate() == Date(2000.25) ? " dated" : ""));
        if (++files != series.eventfulFile) {
            return true;
        }
        series.afterFile(world);
        return !series.ends;
    };
    const FileInfoArray items = world.items;
    world.files.restartCount();
    world.files.failCall(series.failingCall, EIO);
    try {
        copyAll(items, *world.folder, series.isUnique, series.hasDelegate ? &delegate : nullptr,
                &user, copied);
    } catch (const std::exception& exception) {
        told.push_back(std::string("raised ") + exception.what());
    }
    told.push_back("calls " + std::to_string(world.files.callCount()));
    world.files.failCall(0, 0);
    for (const std::string& line : world.log.lines()) {
        told.push_back("log " + line);
    }
    world.list(world.memory, "/");
    world.list(world.device, "/");
    return told;
}

Lines toldOf(const Series& series, decltype(&copyFiles) copyAll) {
    SeriesWorld world;
    return toldOf(series, copyAll, world);
}

void expectSame(const std::string& what, const Series& series) {
    EXPECT_EQ(toldOf(series, copyFiles), toldOf(series, copyEach)) << what;
}

/// A series with something changed.
template <class Change>
Series with(Change change) {
    Series series;
    change(series);
    return series;
}

TEST(CopyFiles, CannotBeToldFromSingleCopies) {
    expectSame("local", {});
    expectSame("no delegate", with([](Series& s) { s.hasDelegate = false; }));
    expectSame("nothing", with([](Series& s) { s.from.clear(); }));
    expectSame("unique", with([](Series& s) {
                   s.isUnique = true;
                   s.from = {"/s/a", "/s/a", "/s/\xFF\xFE.txt", "/s/\xFF\xFE.txt"};
               }));
    expectSame("the same twice", with([](Series& s) { s.from = {"/s/a", "/s/a"}; }));
    expectSame("taken", with([](Series& s) {
                   s.prepare = [](SeriesWorld& w) {
                       w.memory.addFile("/d/a", "old");
                       w.memory.addFolder("/d/b");
                       w.memory.addLink("/d/c", "nowhere");
                   };
               }));
    expectSame("leftover", with([](Series& s) {
                   s.prepare = [](SeriesWorld& w) {
                       w.memory.addFile("/d/QuillboxCopyFile.tmp", "half");
                   };
               }));
    expectSame("missing, folders and links", with([](Series& s) {
                   s.from = {"/s/a", "/s/none", "/s/folder", "/s/link", "/s/b"};
               }));
    expectSame("enough", with([](Series& s) {
                   s.eventfulFile = 2;
                   s.ends = true;
               }));
    for (const char* to :
         {"/d", "/d/", "/none", "/s", "/link", "/broken", "/s/a", "/d/new", "", "/"}) {
        for (const bool hasDelegate : {false, true}) {
            expectSame(std::string("to ") + to, with([&](Series& s) {
                           s.to = to;
                           s.hasDelegate = hasDelegate;
                           s.prepare = [](SeriesWorld& w) {
                               w.memory.addLink("/link", "/d");
                               w.memory.addLink("/broken", "/nowhere");
                           };
                       }));
        }
    }
}

TEST(CopyFiles, CannotBeToldFromSingleCopiesToAndFromADevice) {
    const Names ofDevice = {"E:\\s\\a", "E:\\s\\b", "E:\\s\\none", "E:\\s\\folder", "E:\\s\\c"};
    for (const bool isUnique : {false, true}) {
        for (const bool cancels : {false, true}) {
            expectSame("from a device", with([&](Series& s) {
                           s.from = ofDevice;
                           s.isUnique = isUnique;
                           s.eventfulReport = 2;
                           s.cancels = cancels;
                       }));
            expectSame("to a device", with([&](Series& s) {
                           s.to = "E:\\d";
                           s.isUnique = isUnique;
                           s.eventfulReport = 2;
                           s.cancels = cancels;
                       }));
            expectSame("from both", with([&](Series& s) {
                           s.from = {"/s/a", "E:\\s\\a", "/s/b", "E:\\s\\c"};
                           s.isUnique = isUnique;
                           s.eventfulReport = 2;
                           s.cancels = cancels;
                       }));
        }
    }
}

/// What may become of the folder, or of the files, while they are copied.
struct Happening {
    std::string what;
    Event event;
};

const std::vector<Happening>& happenings() {
    static const std::vector<Happening> all = {
        {"nothing", [](SeriesWorld&) {}},
        {"raises", [](SeriesWorld&) { throw Exception("mine", "enough"); }},
        {"raises another", [](SeriesWorld&) { throw std::runtime_error("x"); }},
        {"moves the folder",
         [](SeriesWorld& w) { EXPECT_TRUE(w.memory.move("/d", "/e", Replace::No).isNone()); }},
        {"replaces the folder",
         [](SeriesWorld& w) {
             EXPECT_TRUE(w.memory.move("/d", "/e", Replace::No).isNone());
             w.memory.addFolder("/d");
             w.memory.addFile("/d/b", "mine");
         }},
        {"replaces the folder and raises",
         [](SeriesWorld& w) {
             EXPECT_TRUE(w.memory.move("/d", "/e", Replace::No).isNone());
             w.memory.addFolder("/d");
             throw Exception("mine", "enough");
         }},
        {"puts a link in the folder's place",
         [](SeriesWorld& w) {
             EXPECT_TRUE(w.memory.move("/d", "/e", Replace::No).isNone());
             w.memory.addLink("/d", "/e");
         }},
        {"puts a file in the folder's place",
         [](SeriesWorld& w) {
             w.memory.removeAll("/d");
             w.memory.addFile("/d", "file");
         }},
        {"removes the folder", [](SeriesWorld& w) { w.memory.removeAll("/d"); }},
        {"replaces the folder and tells its item",
         [](SeriesWorld& w) {
             w.memory.removeAll("/d");
             w.memory.addFolder("/d");
             w.folder->refresh();
         }},
        {"gives the folder's item another path",
         [](SeriesWorld& w) {
             w.memory.addFolder("/other");
             asMacFileInfo(w.folder.get())->setPath("/other");
         }},
        {"lets go of the folder", [](SeriesWorld& w) { w.folder.reset(); }},
        {"lets go of the files", [](SeriesWorld& w) { w.items.clear(); }},
        {"takes the next name", [](SeriesWorld& w) { w.memory.addFile("/d/b", "theirs"); }},
        {"takes the files away", [](SeriesWorld& w) { w.memory.removeAll("/s"); }},
        {"changes the files",
         [](SeriesWorld& w) {
             w.memory.addFile("/s/b", "not empty any more");
             w.memory.addFile("/s/\xFF\xFE.txt", "others");
         }},
        {"copies into the folder, too",
         [](SeriesWorld& w) {
             const FileInfoArray more = {w.item("/s/a"), w.item("/s/link")};
             copyFiles(more, *w.folder, true, nullptr, nullptr, {});
         }},
        {"fills the volume", [](SeriesWorld& w) { w.addVolume("/", 3); }},
        {"makes the volume read-only", [](SeriesWorld& w) { w.memory.isReadOnly = true; }},
    };
    return all;
}

TEST(CopyFiles, CannotBeToldFromSingleCopiesByItsDelegate) {
    for (const Happening& happening : happenings()) {
        for (const bool cancels : {false, true}) {
            for (const int report : {1, 2}) {
                expectSame(happening.what + " at report " + std::to_string(report),
                           with([&](Series& s) {
                               s.eventfulReport = report;
                               s.atReport = happening.event;
                               s.cancels = cancels;
                           }));
            }
        }
    }
}

TEST(CopyFiles, CannotBeToldFromSingleCopiesByWhatHappensBetweenThem) {
    for (const Happening& happening : happenings()) {
        for (const bool hasDelegate : {false, true}) {
            expectSame(happening.what, with([&](Series& s) {
                           s.eventfulFile = 1;
                           s.afterFile = happening.event;
                           s.hasDelegate = hasDelegate;
                       }));
        }
    }
}

TEST(CopyFiles, CannotBeToldFromSingleCopiesInWhichACallFails) {
    const auto calls = [](const Series& series) {
        SeriesWorld world;
        static_cast<void>(toldOf(series, copyFiles, world));
        return world.files.callCount();
    };
    for (const bool isUnique : {false, true}) {
        const Series usual = with([&](Series& s) { s.isUnique = isUnique; });
        const std::size_t all = calls(usual);
        EXPECT_GT(all, 40U);
        for (std::size_t call = 1; call <= all; ++call) {
            Series failing = usual;
            failing.failingCall = call;
            expectSame("call " + std::to_string(call), failing);
        }
    }
}

} // namespace
} // namespace tav
