#include "base/PropertyList.hpp"
#include "platform/FileSystem.hpp"
#include "platform/UserFolders.hpp"
#include "platform/linux/LinuxPreferences.hpp"
#include "testing/TemporaryFolder.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tav {
namespace {

using namespace std::string_literals;

class LinuxPreferencesTest : public ::testing::Test {
  protected:
    TemporaryFolder folder;
    const std::string path = folder.path("com.example.tav.plist");

    std::optional<Value> inFile() const { return inFile(path); }
    static std::optional<Value> inFile(const std::string& file) {
        const Result<Data> bytes = FileSystem::current().readFile(file, 1U << 24U);
        return bytes.ok() ? PropertyList::read(bytes.value(), nullptr) : std::nullopt;
    }
    static std::string textIn(const std::string& file) {
        const Result<Data> bytes = FileSystem::current().readFile(file, 1U << 26U);
        return bytes.ok() ? std::string(textOf(bytes.value()))
                          : "error " + std::to_string(bytes.error().number());
    }
    static void put(const std::string& file, std::string_view text) {
        ASSERT_TRUE(FileSystem::current().writeFile(file, bytesOf(text), 0600).isNone());
    }
    /// As another process does it.
    void putValue(const Value& value) {
        put(path, textOf(*PropertyList::write(value, PropertyList::Form::XML, nullptr)));
    }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        const auto entries = FileSystem::current().folderEntries(folder.path());
        for (const FolderEntry& entry : entries.value()) {
            found.push_back(entry.name);
        }
        std::sort(found.begin(), found.end());
        return found;
    }
    static ::mode_t permissionsOf(const std::string& file) {
        struct ::stat status {};
        EXPECT_EQ(::lstat(file.c_str(), &status), 0) << file;
        return status.st_mode & 07777U;
    }
    /// The exit status of a process that does this: 0 for true.
    static int inAnotherProcess(const std::function<bool()>& work) {
        const ::pid_t child = ::fork();
        if (child == 0) {
            ::alarm(300);
            ::_exit(work() ? 0 : 1);
        }
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return status;
    }
};

TEST_F(LinuxPreferencesTest, IsWhatCurrentBeginsWith) {
    EXPECT_EQ(&Preferences::current(), &internal::realPreferences());
    EXPECT_NE(dynamic_cast<LinuxPreferences*>(&Preferences::current()), nullptr);
}

class FoldersOfTest final : public UserFolders {
  public:
    std::string configurationFolder;
    std::string home() override { return {}; }
    std::string data() override { return {}; }
    std::string globalData() override { return {}; }
    std::string configuration() override { return configurationFolder; }
    std::string caches() override { return {}; }
    std::string temporary() override { return {}; }
};

TEST_F(LinuxPreferencesTest, TheFileIsNamedForTheProgramInTheConfigurationFolder) {
    FoldersOfTest folders;
    const UserFolders::Replacement replacement(folders);
    folders.configurationFolder = folder.path("config");
    // This program is no bundle.
    const std::string expected = folder.path("config/tav_platform_linux_tests.plist");
    EXPECT_EQ(internal::preferencesPath(), expected);
    LinuxPreferences preferences;
    EXPECT_TRUE(preferences.setValue("a", 1).isNone());
    EXPECT_EQ(inFile(expected), Value(Value::Dictionary{{"a", 1}}));
    EXPECT_EQ(permissionsOf(folder.path("config")), 0700U);
}

TEST_F(LinuxPreferencesTest, TheFileOfABundleIsNamedByItsIdentifier) {
    // A copy of this program, as the executable of a bundle, runs this test with the variable.
    constexpr const char* const variable = "TAV_TEST_RUNS_IN_BUNDLE";
    if (::getenv(variable) != nullptr) {
        EXPECT_TRUE(Preferences::current().setValue("stored", "by the bundle").isNone());
        return;
    }
    const std::string contents = folder.path("X.app/Contents");
    const std::string program = contents + "/MacOS/X";
    for (const std::string& made : {folder.path("X.app"), contents, contents + "/MacOS"}) {
        ASSERT_EQ(::mkdir(made.c_str(), 0700), 0);
    }
    put(contents + "/Info.plist", "<plist><dict><key>CFBundleIdentifier</key>"
                                  "<string>com.example.X</string></dict></plist>");
    const Result<std::string> self = FileSystem::current().linkTarget("/proc/self/exe");
    ASSERT_TRUE(self.ok());
    const Result<Data> bytes = FileSystem::current().readFile(self.value(), 1U << 30U);
    ASSERT_TRUE(bytes.ok());
    ASSERT_TRUE(FileSystem::current().writeFile(program, bytes.value(), 0700).isNone());
    const ::pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::setenv("XDG_CONFIG_HOME", folder.path("config").c_str(), 1);
        ::unsetenv("GTEST_OUTPUT");
        const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        ::dup2(null, STDOUT_FILENO);
        ::setenv(variable, "1", 1);
        ::execl(program.c_str(), program.c_str(),
                "--gtest_filter=LinuxPreferencesTest.TheFileOfABundleIsNamedByItsIdentifier",
                nullptr);
        ::_exit(127);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(inFile(folder.path("config/com.example.X.plist")),
              Value(Value::Dictionary{{"stored", "by the bundle"}}));
}

TEST_F(LinuxPreferencesTest, WithoutAConfigurationFolderValuesHoldInTheProcess) {
    FoldersOfTest folders;
    const UserFolders::Replacement replacement(folders);
    EXPECT_EQ(internal::preferencesPath(), "");
    LinuxPreferences preferences;
    EXPECT_EQ(preferences.setValue("a", 1), SystemError(ENOENT));
    EXPECT_EQ(preferences.value("a"), Value(1));
    EXPECT_EQ(preferences.removeValue("a"), SystemError(ENOENT));
    EXPECT_EQ(preferences.value("a"), std::nullopt);
}

TEST_F(LinuxPreferencesTest, AskingMakesNoFile) {
    LinuxPreferences preferences(path);
    EXPECT_EQ(preferences.value("a"), std::nullopt);
    preferences.registerDefaults({{"a", 1}});
    EXPECT_EQ(preferences.value("a"), Value(1));
    EXPECT_EQ(names(), std::vector<std::string>{});
}

TEST_F(LinuxPreferencesTest, AValueIsStoredAtOnceAsAnXMLPropertyListOfTheUser) {
    LinuxPreferences preferences(path);
    EXPECT_TRUE(preferences.setValue("a", "text").isNone());
    EXPECT_TRUE(textIn(path).starts_with("<?xml")) << textIn(path);
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", "text"}}));
    EXPECT_EQ(permissionsOf(path), 0600U);
    EXPECT_EQ(LinuxPreferences(path).value("a"), Value("text"));
    EXPECT_EQ(names(), (std::vector{"com.example.tav.plist"s, "com.example.tav.plist.lock"s}));
}

TEST_F(LinuxPreferencesTest, EveryKindOfValueComesBack) {
    const Value value = Value::Dictionary{{"boolean", true},
                                          {"integer", -5},
                                          {"large", ~std::uint64_t{0}},
                                          {"real", 0.25},
                                          {"text", "\xC3\xA4<&>"},
                                          {"bytes", dataFromText("\0\xFF"s)},
                                          {"date", Date(1000)},
                                          {"array", Value::Array{1, "two", Value::Array{}}},
                                          {"", Value::Dictionary{}}};
    LinuxPreferences preferences(path);
    EXPECT_TRUE(preferences.setValue("all", value).isNone());
    EXPECT_EQ(preferences.value("all"), value);
    EXPECT_EQ(LinuxPreferences(path).value("all"), value);
}

TEST_F(LinuxPreferencesTest, ABinaryListIsReadToo) {
    const Value::Dictionary entries{{"a", 1}};
    put(path, textOf(*PropertyList::write(Value(entries), PropertyList::Form::Binary, nullptr)));
    LinuxPreferences preferences(path);
    EXPECT_EQ(preferences.value("a"), Value(1));
    EXPECT_TRUE(preferences.setValue("b", 2).isNone());
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 1}, {"b", 2}}));
}

TEST_F(LinuxPreferencesTest, DefaultsAnswerUntilAValueIsStoredAndAreNeverWritten) {
    LinuxPreferences preferences(path);
    preferences.registerDefaults({{"a", 1}, {"b", 2}});
    preferences.registerDefaults({{"b", 3}, {"c", true}});
    EXPECT_EQ(preferences.value("a"), Value(1));
    EXPECT_EQ(preferences.value("b"), Value(3));
    EXPECT_TRUE(preferences.boolValue("c"));
    EXPECT_FALSE(preferences.boolValue("d"));
    EXPECT_TRUE(preferences.setValue("a", 10).isNone());
    EXPECT_EQ(preferences.value("a"), Value(10));
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 10}}));
    preferences.registerDefaults({{"a", 11}});
    EXPECT_EQ(preferences.value("a"), Value(10));
    EXPECT_TRUE(preferences.removeValue("a").isNone());
    EXPECT_EQ(preferences.value("a"), Value(11));
    EXPECT_EQ(inFile(), Value(Value::Dictionary{}));
}

TEST_F(LinuxPreferencesTest, WhatAnotherProcessStoredStays) {
    LinuxPreferences preferences(path);
    EXPECT_TRUE(preferences.setValue("a", 1).isNone());
    putValue(Value::Dictionary{{"a", 5}, {"b", 2}});
    EXPECT_EQ(preferences.value("a"), Value(1)); // not seen yet
    EXPECT_TRUE(preferences.setValue("c", 3).isNone());
    EXPECT_EQ(preferences.value("a"), Value(5));
    EXPECT_EQ(preferences.value("b"), Value(2));
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 5}, {"b", 2}, {"c", 3}}));
    EXPECT_TRUE(preferences.removeValue("b").isNone());
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 5}, {"c", 3}}));
    ASSERT_EQ(::unlink(path.c_str()), 0); // somebody's wish
    EXPECT_TRUE(preferences.setValue("d", 4).isNone());
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"d", 4}}));
}

TEST_F(LinuxPreferencesTest, WhatChangesNothingIsNotWritten) {
    LinuxPreferences preferences(path);
    EXPECT_TRUE(preferences.removeValue("a").isNone());
    EXPECT_EQ(::access(path.c_str(), F_OK), -1);
    EXPECT_TRUE(preferences.setValue("a", 1).isNone());
    const FileIdentity before = FileSystem::current().attributes(path).value().identity;
    EXPECT_TRUE(preferences.setValue("a", 1).isNone());
    EXPECT_TRUE(preferences.removeValue("b").isNone());
    EXPECT_EQ(FileSystem::current().attributes(path).value().identity, before);
    EXPECT_TRUE(preferences.setValue("a", true).isNone()); // equal, and of another type
    EXPECT_NE(FileSystem::current().attributes(path).value().identity, before);
}

TEST_F(LinuxPreferencesTest, FoldersOnTheWayAreMadeForTheUserAlone) {
    const std::string deep = folder.path("a/b/c/settings.plist");
    LinuxPreferences preferences(deep);
    EXPECT_TRUE(preferences.setValue("a", 1).isNone());
    EXPECT_EQ(inFile(deep), Value(Value::Dictionary{{"a", 1}}));
    for (const char* const made : {"a", "a/b", "a/b/c"}) {
        EXPECT_EQ(permissionsOf(folder.path(made)), 0700U);
    }
    put(folder.path("file"), "");
    EXPECT_EQ(LinuxPreferences(folder.path("file/settings.plist")).setValue("a", 1),
              SystemError(ENOTDIR));
}

TEST_F(LinuxPreferencesTest, GarbageIsSetAsideAndNeverOverwritten) {
    const std::vector<std::string> cases{"", "garbage", "<plist><dict><key>a</key>",
                                         "<plist><array/></plist>", "bplist00\xFF\xFF"};
    std::size_t number = 0;
    for (const std::string& garbage : cases) {
        put(path, garbage);
        LinuxPreferences preferences(path);
        preferences.registerDefaults({{"a", 1}});
        EXPECT_EQ(preferences.value("a"), Value(1));
        ++number;
        const std::string aside =
            path + ".unreadable" + (number == 1 ? "" : "-" + std::to_string(number));
        EXPECT_EQ(textIn(aside), garbage);
        EXPECT_EQ(::access(path.c_str(), F_OK), -1);
        EXPECT_TRUE(preferences.setValue("b", 2).isNone());
        EXPECT_EQ(inFile(), Value(Value::Dictionary{{"b", 2}}));
        EXPECT_EQ(textIn(aside), garbage);
    }
    EXPECT_EQ(textIn(path + ".unreadable"), cases[0]);
}

TEST_F(LinuxPreferencesTest, AFileThatBecomesGarbageLaterCostsNoKnownValue) {
    LinuxPreferences preferences(path);
    EXPECT_TRUE(preferences.setValue("a", 1).isNone());
    put(path, "garbage");
    EXPECT_TRUE(preferences.setValue("b", 2).isNone());
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 1}, {"b", 2}}));
    EXPECT_EQ(textIn(path + ".unreadable"), "garbage");
}

TEST_F(LinuxPreferencesTest, WhatIsNoFileIsSetAside) {
    ASSERT_EQ(::mkdir(path.c_str(), 0700), 0);
    EXPECT_TRUE(LinuxPreferences(path).setValue("a", 1).isNone());
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 1}}));
    ASSERT_EQ(::unlink(path.c_str()), 0);
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_TRUE(LinuxPreferences(path).setValue("a", 1).isNone());
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 1}}));
    const auto kind = [&](const std::string& suffix) {
        return FileSystem::current().attributes(path + suffix).value().kind;
    };
    EXPECT_EQ(kind(".unreadable"), FileKind::Folder);
    EXPECT_EQ(kind(".unreadable-2"), FileKind::Pipe);
}

TEST_F(LinuxPreferencesTest, AnOversizedFileIsSetAside) {
    put(path, "");
    ASSERT_EQ(::truncate(path.c_str(), ::off_t{internal::PreferencesFile::maximumSize} + 1), 0);
    EXPECT_EQ(LinuxPreferences(path).value("a"), std::nullopt);
    EXPECT_EQ(::access((path + ".unreadable").c_str(), F_OK), 0);
}

TEST_F(LinuxPreferencesTest, WithoutFreeDescriptorsTheFileStays) {
    putValue(Value::Dictionary{{"a", 1}});
    EXPECT_EQ(inAnotherProcess([&] {
                  std::vector<Descriptor> taken;
                  LinuxPreferences preferences(path);
                  for (;;) {
                      Result<Descriptor> one = Descriptor::open("/dev/null", O_RDONLY);
                      if (!one.ok()) {
                          break;
                      }
                      taken.push_back(std::move(one).value());
                  }
                  taken.pop_back(); // one for the lock, none for the file
                  const bool isRefused = preferences.setValue("b", 2) == SystemError(EMFILE) &&
                                         preferences.value("b") == Value(2);
                  taken.clear();
                  return isRefused && preferences.setValue("c", 3).isNone() &&
                         preferences.value("a") == Value(1);
              }),
              0);
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 1}, {"b", 2}, {"c", 3}}));
    EXPECT_EQ(names(), (std::vector{"com.example.tav.plist"s, "com.example.tav.plist.lock"s}));
}

TEST_F(LinuxPreferencesTest, AValueThatNoListHoldsHoldsInTheProcessAndHindersNoOther) {
    Value deep = Value::Array{};
    for (std::size_t depth = 0; depth < PropertyList::maximumDepth + 10; ++depth) {
        deep = Value::Array{Value(deep)};
    }
    const std::string large(std::size_t{internal::PreferencesFile::maximumSize}, 'x');
    LinuxPreferences preferences(path);
    EXPECT_EQ(preferences.setValue("text", "\xFF"), SystemError(EINVAL));
    EXPECT_EQ(preferences.setValue("\xFF", 1), SystemError(EINVAL));
    EXPECT_EQ(preferences.setValue("deep", deep), SystemError(EINVAL));
    EXPECT_EQ(preferences.setValue("large", large), SystemError(EFBIG));
    EXPECT_EQ(preferences.value("text"), Value("\xFF"));
    EXPECT_EQ(preferences.value("\xFF"), Value(1));
    EXPECT_EQ(preferences.value("deep"), deep);
    EXPECT_EQ(preferences.value("large"), Value(large));
    EXPECT_TRUE(preferences.setValue("a", 1).isNone());
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 1}}));
    EXPECT_EQ(preferences.value("text"), Value("\xFF"));
    EXPECT_TRUE(preferences.setValue("text", "sound").isNone());
    EXPECT_TRUE(preferences.removeValue("\xFF").isNone());
    EXPECT_EQ(preferences.value("\xFF"), std::nullopt);
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 1}, {"text", "sound"}}));
}

TEST_F(LinuxPreferencesTest, InAReadOnlyFolderValuesHoldInTheProcessUntilTheyCanBeStored) {
    putValue(Value::Dictionary{{"a", 1}});
    ASSERT_EQ(::chmod(path.c_str(), 0644), 0);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0555), 0);
    EXPECT_EQ(inAnotherProcess([&] {
                  // Permissions stop nobody who is root.
                  constexpr ::uid_t nobody = 65534;
                  if (::geteuid() == 0 && ::seteuid(nobody) != 0) {
                      return false;
                  }
                  LinuxPreferences preferences(path);
                  const bool held = preferences.value("a") == Value(1) &&
                                    preferences.setValue("b", 2) == SystemError(EACCES) &&
                                    preferences.removeValue("a") == SystemError(EACCES) &&
                                    preferences.value("a") == std::nullopt &&
                                    preferences.value("b") == Value(2);
                  if (::getuid() == 0 && ::seteuid(0) != 0) {
                      return false;
                  }
                  return held && inFile() == Value(Value::Dictionary{{"a", 1}}) &&
                         ::chmod(folder.path().c_str(), 0755) == 0 &&
                         preferences.setValue("c", 3).isNone();
              }),
              0);
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"b", 2}, {"c", 3}}));
}

TEST_F(LinuxPreferencesTest, GarbageThatCannotBeSetAsideStaysAsItIs) {
    put(path, "garbage");
    ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0555), 0);
    EXPECT_EQ(inAnotherProcess([&] {
                  constexpr ::uid_t nobody = 65534;
                  if (::geteuid() == 0 && ::seteuid(nobody) != 0) {
                      return false;
                  }
                  LinuxPreferences preferences(path);
                  return preferences.value("a") == std::nullopt &&
                         preferences.setValue("a", 1) == SystemError(EACCES) &&
                         preferences.value("a") == Value(1);
              }),
              0);
    EXPECT_EQ(textIn(path), "garbage");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
}

TEST_F(LinuxPreferencesTest, ALinkInThePlaceOfTheLockIsNotFollowed) {
    ASSERT_EQ(::symlink(folder.path("elsewhere").c_str(), (path + ".lock").c_str()), 0);
    EXPECT_EQ(LinuxPreferences(path).setValue("a", 1), SystemError(ELOOP));
    EXPECT_EQ(::access(folder.path("elsewhere").c_str(), F_OK), -1);
}

TEST_F(LinuxPreferencesTest, AThreadsChangeWaitsForTheLockAndQuestionsDoNot) {
    LinuxPreferences preferences(path);
    EXPECT_TRUE(preferences.setValue("a", 1).isNone());
    Descriptor lock = Descriptor::open((path + ".lock").c_str(), O_RDWR).value();
    ASSERT_EQ(::flock(lock.number(), LOCK_EX), 0);
    std::atomic<bool> isStored = false;
    std::thread setter([&] {
        EXPECT_TRUE(preferences.setValue("b", 2).isNone());
        isStored = true;
    });
    while (preferences.value("b") != Value(2)) { // answered while it is not stored
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(isStored);
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 1}}));
    lock.reset();
    setter.join();
    EXPECT_EQ(inFile(), Value(Value::Dictionary{{"a", 1}, {"b", 2}}));
}

TEST_F(LinuxPreferencesTest, ProcessesDoNotLoseEachOthersKeys) {
    constexpr int processCount = 8;
    constexpr int keyCount = 50;
    const std::string deep = folder.path("config/settings.plist"); // all of them make the folder
    std::array<int, 2> gate{};
    ASSERT_EQ(::pipe2(gate.data(), O_CLOEXEC), 0);
    std::vector<::pid_t> children;
    for (int process = 0; process < processCount; ++process) {
        const ::pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::alarm(300);
            ::close(gate[1]);
            char byte = 0;
            static_cast<void>(::read(gate[0], &byte, 1)); // ends when the parent opens the gate
            bool isSound = true;
            LinuxPreferences preferences(deep);
            for (int key = 0; key < keyCount; ++key) {
                const std::string name = std::to_string(process) + "." + std::to_string(key);
                isSound = preferences.setValue(name, key).isNone() && isSound;
            }
            ::_exit(isSound ? 0 : 1);
        }
        children.push_back(child);
    }
    ::close(gate[0]);
    ::close(gate[1]);
    for (const ::pid_t child : children) {
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    const std::optional<Value> stored = inFile(deep);
    ASSERT_TRUE(stored && stored->asDictionary() != nullptr);
    EXPECT_EQ(stored->asDictionary()->size(), std::size_t{processCount * keyCount});
    for (int process = 0; process < processCount; ++process) {
        for (int key = 0; key < keyCount; ++key) {
            const std::string name = std::to_string(process) + "." + std::to_string(key);
            const Value* const value = stored->asDictionary()->find(name);
            EXPECT_TRUE(value != nullptr && *value == Value(key)) << name;
        }
    }
}

TEST_F(LinuxPreferencesTest, ThreadsMayAskAndChangeAtTheSameTime) {
    constexpr int threadCount = 4;
    constexpr int keyCount = 25;
    LinuxPreferences preferences(path);
    preferences.registerDefaults({{"default", 1}});
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (int key = 0; key < keyCount; ++key) {
                const std::string name = std::to_string(thread) + "." + std::to_string(key);
                EXPECT_TRUE(preferences.setValue(name, key).isNone());
                EXPECT_EQ(preferences.value(name), Value(key));
                EXPECT_EQ(preferences.value("default"), Value(1));
                preferences.registerDefaults({{name, -1}});
                if (key % 5 == 4) {
                    EXPECT_TRUE(preferences.removeValue(name).isNone());
                    EXPECT_EQ(preferences.value(name), Value(-1));
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(inFile()->asDictionary()->size(), std::size_t{threadCount * keyCount * 4 / 5});
}

} // namespace
} // namespace tav
