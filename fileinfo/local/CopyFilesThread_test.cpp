// Many local files copied into one folder, the small ones of them read ahead on a thread of its
// own.

#include "base/Exception.hpp"
#include "fileinfo/CopyFiles.hpp"
#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/local/LocalCopySeries.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/memory/MemoryClock.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <unistd.h>

namespace tav {
namespace {

using internal::LocalCopySeries;
using Names = std::vector<std::string>;

FileSystem& files() { return internal::realFileSystem(); }

/// Long enough for the thread to be as far ahead as it goes, and for dates to differ.
void letItRead() { std::this_thread::sleep_for(std::chrono::milliseconds(30)); }

std::vector<FolderEntry> entriesIn(std::string_view path) {
    return files().folderEntries(path).value();
}

std::size_t entriesOf(std::string_view path) { return entriesIn(path).size(); }

/// Threads that were joined leave the list a moment later.
std::size_t threadsWhenThereAre(std::size_t expected) {
    for (int wait = 0; wait < 200 && entriesOf("/proc/self/task") != expected; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return entriesOf("/proc/self/task");
}

/// The folders "from" with many files of all kinds, and "to".
class Stage {
  public:
    Stage() {
        for (const char* name : {"from", "from/folder", "to"}) {
            EXPECT_TRUE(files().createFolder(folder_.path(name), 0755).isNone());
        }
        for (std::size_t number = 0; number < count; ++number) {
            constexpr std::size_t sizes[] = {4096, 0, 1, 65536, 65537, 100};
            const std::string name = "f" + std::to_string(number) + (number % 9 == 0 ? "\xFF" : "");
            write("from/" + name, std::string(sizes[number % 6], char('a' + number % 26)));
            if (number % 4 == 0) {
                item("from/" + name)->setCreationDate(Date(1000.5 + double(number)));
            }
            EXPECT_TRUE(
                files()
                    .setModificationDate(path("from/" + name), Date(2000.0 + double(number)))
                    .isNone());
            names.push_back(name);
        }
        EXPECT_TRUE(files().createLink(path("from/link"), names[3]).isNone());
        names.insert(names.begin() + 20, {"folder", "missing", "link"});
    }

    [[nodiscard]] std::string path(std::string_view name) const { return folder_.path(name); }
    [[nodiscard]] std::shared_ptr<TavMacFileInfo> item(std::string_view name) const {
        return TavMacFileInfo::fileInfoWithPath(path(name));
    }
    [[nodiscard]] FileInfoArray items() const {
        FileInfoArray all;
        for (const std::string& name : names) {
            all.push_back(item("from/" + name));
        }
        return all;
    }
    void write(std::string_view name, std::string_view text) const {
        EXPECT_TRUE(files().writeFile(path(name), bytesOf(text), 0644).isNone());
    }
    /// Content and the dates that were given, by name.
    [[nodiscard]] std::map<std::string, std::string> copies() const {
        std::map<std::string, std::string> told;
        for (const FolderEntry& entry : entriesIn(path("to"))) {
            const auto copy = item("to/" + entry.name);
            std::string& line = told[entry.name];
            line = textOf(copy->fileContents().value_or(Data()));
            for (const auto& date : {copy->modificationDate(), copy->creationDate()}) {
                const double seconds = date ? date->secondsSinceReferenceDate() : 0;
                line += seconds < 5000 ? ' ' + std::to_string(seconds) : " now";
            }
        }
        return told;
    }

    static constexpr std::size_t count = 120;
    Names names;

  private:
    TemporaryFolder folder_;
    /// What was made just now has not changed for long.
    MemoryClock clock_{
        Date(internal::realClock().now().secondsSinceReferenceDate() + double(count))};
    Clock::Replacement replacedClock_{clock_};
};

struct Run {
    std::vector<std::string> told;
    std::map<std::string, std::string> copies;
    friend bool operator==(const Run&, const Run&) = default;
};

/// `meanwhile` is called in the report of the file of that number.
Run run(bool together, std::size_t number, const std::function<void(Stage&)>& meanwhile) {
    Stage stage;
    const FileInfoArray all = stage.items();
    const auto folder = stage.item("to");
    Run result;
    ProgressDelegate delegate;
    std::size_t copied = 0;
    delegate.copyingFile = [&](TavBaseFileInfo& from, TavBaseFileInfo&, float, void*) {
        if (&from == all[number].get()) {
            letItRead();
            meanwhile(stage);
        }
        return false;
    };
    const auto note = [&](TavBaseFileInfo& file, Status status, const FileInfoPtr& made) {
        result.told.push_back(file.name() + ' ' + std::to_string(static_cast<int>(status)) + ' ' +
                              (made ? made->name() : "(nil)"));
        EXPECT_EQ(&file, all[copied].get());
        ++copied;
        return true;
    };
    if (together) {
        copyFiles(all, *folder, false, &delegate, nullptr, note);
    } else {
        for (const FileInfoPtr& file : all) {
            FileInfoPtr made;
            const Status status = file->copyTo(folder.get(), false, &delegate, nullptr, &made);
            note(*file, status, made);
        }
    }
    EXPECT_EQ(copied, all.size());
    result.copies = stage.copies();
    return result;
}

TEST(CopyFilesThread, ReadsWhatComesNext) {
    const Stage stage;
    const FileInfoArray all = stage.items();
    const auto folder = stage.item("to");
    LocalCopySeries series(all, *folder);
    series.comeTo(0);
    std::this_thread::sleep_for(std::chrono::milliseconds(300)); // it is idle long before
    std::size_t read = 0;
    for (std::size_t index = 1; index < 16; ++index) {
        series.comeTo(index);
        auto& file = *asMacFileInfo(all[index].get());
        const internal::ReadFile* const ahead = series.readAhead(file);
        EXPECT_EQ(ahead != nullptr, index % 6 != 4) << index; // the larger ones are not
        if (ahead != nullptr) {
            ++read;
            EXPECT_EQ(textOf(ahead->content), textOf(file.fileContents().value()));
            EXPECT_EQ(ahead->creationDate.has_value(), index % 4 == 0);
            EXPECT_EQ(series.readAhead(*asMacFileInfo(all[0].get())), nullptr);
            stage.write("from/" + stage.names[index], "other");
            EXPECT_EQ(series.readAhead(file), nullptr);
        }
    }
    EXPECT_EQ(read, 13U);
}

TEST(CopyFilesThread, DoesNotReadForAFew) {
    const Stage stage;
    std::thread([] {}).join(); // sanitizers have a thread of their own from the first one on
    letItRead();               // threads of tests before may just be ending
    const std::size_t before = entriesOf("/proc/self/task");
    std::size_t most = 0;
    const FileCopied note = [&](TavBaseFileInfo&, Status, const FileInfoPtr&) {
        most = std::max(most, entriesOf("/proc/self/task"));
        return true;
    };
    const FileInfoArray all = stage.items();
    const auto folder = stage.item("to");
    copyFiles(std::span(all).first(LocalCopySeries::fewestFiles - 1), *folder, false, nullptr,
              nullptr, note);
    EXPECT_EQ(most, before);
    copyFiles(all, *folder, true, nullptr, nullptr, note); // nor where each takes all the steps
    EXPECT_EQ(most, before);
    copyFiles(std::span(all).first(LocalCopySeries::fewestFiles), *folder, false, nullptr, nullptr,
              note);
    EXPECT_EQ(most, before + 1);
}

TEST(CopyFilesThread, CannotBeToldFromSingleCopies) {
    using Event = std::function<void(Stage&)>;
    const std::vector<std::pair<std::string, Event>> events = {
        {"nothing", [](Stage&) {}},
        {"other contents of the same length",
         [](Stage& s) {
             for (std::size_t n = 31; n < 40; ++n) {
                 const auto size = s.item("from/" + s.names[n])->size();
                 s.write("from/" + s.names[n], std::string(size, 'X'));
             }
         }},
        {"others in their place",
         [](Stage& s) {
             for (std::size_t n = 31; n < 40; ++n) {
                 s.write("from/new", "another file");
                 EXPECT_TRUE(
                     files()
                         .move(s.path("from/new"), s.path("from/" + s.names[n]), Replace::Yes)
                         .isNone());
             }
         }},
        {"gone",
         [](Stage& s) {
             for (std::size_t n = 31; n < 40; ++n) {
                 EXPECT_TRUE(files().removeFile(s.path("from/" + s.names[n])).isNone());
             }
         }},
        {"other dates",
         [](Stage& s) {
             for (std::size_t n = 31; n < 40; ++n) {
                 const auto file = s.item("from/" + s.names[n]);
                 file->setCreationDate(Date(5));
                 file->setModificationDate(Date(7));
             }
         }},
        {"the folder of the files gone",
         [](Stage& s) {
             EXPECT_TRUE(files().move(s.path("from"), s.path("away"), Replace::No).isNone());
         }},
        {"another folder to copy to",
         [](Stage& s) {
             EXPECT_TRUE(files().move(s.path("to"), s.path("before"), Replace::No).isNone());
             EXPECT_TRUE(files().createFolder(s.path("to"), 0755).isNone());
         }},
        {"copies of others meanwhile",
         [](Stage& s) {
             const FileInfoArray again = s.items();
             copyFiles(again, *s.item("from/folder"), true, nullptr, nullptr, {});
         }},
    };
    for (const auto& [what, event] : events) {
        EXPECT_EQ(run(true, 30, event), run(false, 30, event)) << what;
    }
}

TEST(CopyFilesThread, EndsBeforeItAnswers) {
    std::thread([] {}).join(); // sanitizers have a thread of their own from the first one on
    letItRead();               // threads of tests before may just be ending
    const std::size_t threads = entriesOf("/proc/self/task");
    const std::size_t descriptors = entriesOf("/proc/self/fd");
    const Stage stage;
    const FileInfoArray all = stage.items();
    const auto folder = stage.item("to");
    for (const std::size_t last : {std::size_t{1}, std::size_t{2}, std::size_t{40}, all.size()}) {
        for (const bool raises : {false, true}) {
            std::size_t copied = 0;
            const FileCopied count = [&](TavBaseFileInfo&, Status, const FileInfoPtr&) {
                ++copied;
                if (copied == last && raises) {
                    throw std::runtime_error("enough");
                }
                return copied != last;
            };
            try {
                copyFiles(all, *folder, false, nullptr, nullptr, count);
                EXPECT_FALSE(raises);
            } catch (const std::runtime_error&) {
                EXPECT_TRUE(raises);
            }
            EXPECT_EQ(copied, last);
            EXPECT_EQ(threadsWhenThereAre(threads), threads);
            EXPECT_EQ(entriesOf("/proc/self/fd"), descriptors);
        }
    }
}

TEST(CopyFilesThread, TakesNoSignals) {
    const Stage stage;
    const FileInfoArray all = stage.items();
    const auto folder = stage.item("to");
    static std::atomic<int> handled;
    handled = 0;
    const auto before = std::signal(SIGUSR1, [](int) { ++handled; });
    ::sigset_t own;
    ::sigset_t usual;
    ::sigemptyset(&own);
    ::sigaddset(&own, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &own, &usual);
    copyFiles(all, *folder, false, nullptr, nullptr,
              [&](TavBaseFileInfo&, Status, const FileInfoPtr&) {
                  return ::kill(::getpid(), SIGUSR1) == 0;
              });
    EXPECT_EQ(handled, 0); // there is nobody else to take it
    ::pthread_sigmask(SIG_SETMASK, &usual, nullptr);
    EXPECT_EQ(handled, 1);
    static_cast<void>(std::signal(SIGUSR1, before));
}

TEST(CopyFilesThread, AKillLeavesWholeFilesAndOneTemporaryFile) {
    for (std::size_t last = 0; last < Stage::count; last += 29) {
        const Stage stage;
        const ProcessEnd end = runForked([&] {
            const FileInfoArray all = stage.items();
            std::size_t copied = 0;
            ProgressDelegate delegate;
            delegate.copyingFile = [&](TavBaseFileInfo&, TavBaseFileInfo&, float, void*) {
                return copied > last ? ::kill(::getpid(), SIGKILL) != 0 : false;
            };
            copyFiles(all, *stage.item("to"), false, &delegate, nullptr,
                      [&](TavBaseFileInfo&, Status, const FileInfoPtr&) { return ++copied != 0; });
            return 0;
        });
        EXPECT_EQ(end.signal, SIGKILL);
        std::size_t whole = 0;
        for (const FolderEntry& entry : entriesIn(stage.path("to"))) {
            if (entry.name == "QuillboxCopyFile.tmp" || entry.name == "link") {
                continue; // of a link as many bytes as its text has
            }
            ++whole;
            EXPECT_TRUE(stage.item("to/" + entry.name)->fileContents() ==
                        stage.item("from/" + entry.name)->fileContents());
        }
        EXPECT_GE(whole + 3, last); // a folder, one that is missing, a link
    }
}

} // namespace
} // namespace tav
