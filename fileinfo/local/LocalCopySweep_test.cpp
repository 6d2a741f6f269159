// Copies of local files in which every call of the file system fails once, and ends the process
// once: what is left is what is told of a copy, and nothing else.

#include "fileinfo/CopyStatus.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <cerrno>
#include <csignal>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Names = std::vector<std::string>;

const std::string plainName = "QuillboxCopyFile.tmp";

enum class Kind : std::uint8_t { New, Replacing, Unique, Cancelled };

/// "from/a" with two chunks, and the folder "to", which holds "a" with "old" where there is
/// something to replace or to get out of the way of.
class Stage {
  public:
    explicit Stage(Kind kind) : kind_(kind) {
        for (const char* name : {"from", "to"}) {
            EXPECT_TRUE(files().createFolder(folder_.path(name), 0777).isNone());
        }
        content_.assign((1U << 20U) + 5, 'x');
        content_.back() = 'y';
        write("from/a", content_);
        if (kind != Kind::New) {
            write("to/a", "old");
        }
    }

    /// In the parent or a child, over whatever file system is current.
    Status copy(const CopyOptions& options, FileInfoPtr* out = nullptr) {
        ProgressDelegate delegate;
        delegate.copyingFile = [&](TavBaseFileInfo&, TavBaseFileInfo&, float, void*) {
            return kind_ == Kind::Cancelled;
        };
        const auto source = TavMacFileInfo::fileInfoWithPath(folder_.path("from/a"));
        const auto folder = TavMacFileInfo::fileInfoWithPath(folder_.path("to"));
        const auto file = TavMacFileInfo::fileInfoWithPath(folder_.path("to/a"));
        const bool intoFolder = kind_ == Kind::Unique;
        return source->copyTo(intoFolder ? folder.get() : file.get(), intoFolder, &delegate,
                              nullptr, out, options);
    }

    /// Names and contents of the destination's folder.
    std::map<std::string, std::string> left() {
        std::map<std::string, std::string> found;
        const auto entries = files().folderEntries(folder_.path("to"));
        EXPECT_TRUE(entries.ok());
        for (const FolderEntry& entry : entries.value()) {
            found[entry.name] = read("to/" + entry.name);
        }
        return found;
    }
    void expectSourceUntouched() {
        EXPECT_EQ(files().folderEntries(folder_.path("from")).value().size(), 1U);
        EXPECT_TRUE(read("from/a") == content_);
    }
    /// Whether it is the source, or the beginning of it.
    [[nodiscard]] bool isPart(const std::string& text) const { return content_.starts_with(text); }
    [[nodiscard]] bool isWhole(const std::string& text) const { return text == content_; }

    /// What the plain copy may leave. The next listing clears the temporary file, and the next copy
    /// succeeds.
    void expectPlainLeavings() {
        expectSourceUntouched();
        for (const auto& [name, text] : left()) {
            SCOPED_TRACE(name);
            if (name == "a") {
                EXPECT_TRUE(kind_ == Kind::Unique ? text == "old" : text == "old" || isPart(text));
            } else {
                EXPECT_TRUE(name == plainName || (name == "a-1" && kind_ == Kind::Unique));
                EXPECT_TRUE(isPart(text));
            }
        }
        if (kind_ == Kind::Unique) {
            EXPECT_TRUE(left().contains("a"));
        }
        const auto folder = TavMacFileInfo::fileInfoWithPath(folder_.path("to"));
        static_cast<void>(folder->folderContents());
        EXPECT_FALSE(left().contains(plainName));
        EXPECT_EQ(copy({}), kind_ == Kind::Cancelled ? CopyStatus::cancelled : Status::Success);
        EXPECT_FALSE(left().contains(plainName));
    }

    /// What a copy that keeps the destination may leave; `mayBeOver` a temporary file, too.
    void expectSafeLeavings(bool mayBeOver) {
        expectSourceUntouched();
        const std::map<std::string, std::string> found = left();
        for (const auto& [name, text] : found) {
            SCOPED_TRACE(name);
            if (name.starts_with(".QuillboxCopy-")) {
                EXPECT_TRUE(mayBeOver);
            } else if (name == "a") {
                EXPECT_TRUE((text == "old" && kind_ != Kind::New) ||
                            (isWhole(text) && kind_ != Kind::Unique && kind_ != Kind::Cancelled));
            } else {
                EXPECT_TRUE(name == "a-1" && kind_ == Kind::Unique && isWhole(text));
            }
        }
        if (kind_ != Kind::New) {
            EXPECT_TRUE(found.contains("a"));
        }
    }

  private:
    static FileSystem& files() { return internal::realFileSystem(); }
    void write(std::string_view path, std::string_view text) {
        EXPECT_TRUE(files().writeFile(folder_.path(path), bytesOf(text), 0666).isNone());
    }
    std::string read(std::string_view path) {
        const auto content = files().readFile(folder_.path(path), 1U << 30U);
        return content.ok() ? std::string(textOf(content.value())) : "(unreadable)";
    }

    TemporaryFolder folder_;
    Kind kind_;
    std::string content_;
};

bool isTold(Status status) {
    const auto number = static_cast<std::int32_t>(status);
    return number == 0 || number == -1 || (number >= -213 && number <= -200) || number == -220;
}

CopyOptions safeOptions() {
    CopyOptions options;
    options.keepsDestination = options.isDurable = options.verifies = true;
    options.carriesPermissions = options.carriesExtendedAttributes = options.carriesHoles = true;
    options.isWhole = true;
    return options;
}

class LocalCopySweep : public testing::TestWithParam<Kind> {
  protected:
    /// Every call once, with an error of its own.
    static void failEachCall(const CopyOptions& options, int errorNumber,
                             const std::function<void(Stage&, Status, bool)>& check) {
        for (std::size_t call = 1;; ++call) {
            SCOPED_TRACE("call " + std::to_string(call) + " error " + std::to_string(errorNumber));
            Stage stage(GetParam());
            Status status{};
            FaultyFileSystem faulty(internal::realFileSystem());
            {
                const FileSystem::Replacement replacement(faulty);
                faulty.failCall(call, errorNumber);
                status = stage.copy(options);
            }
            EXPECT_TRUE(isTold(status)) << static_cast<std::int32_t>(status);
            const bool isOver = faulty.callCount() < call;
            check(stage, status, isOver);
            if (isOver) {
                EXPECT_GT(call, 10U);
            }
            if (isOver || HasFailure()) {
                return;
            }
        }
    }
    static void endAtEachCall(const CopyOptions& options, bool within,
                              const std::function<void(Stage&)>& check) {
        for (std::size_t call = 1;; ++call) {
            SCOPED_TRACE("ends at call " + std::to_string(call));
            Stage stage(GetParam());
            const ProcessEnd end = runForked([&] {
                FaultyFileSystem faulty(internal::realFileSystem());
                const FileSystem::Replacement replacement(faulty);
                if (within) {
                    faulty.endProcessWithinCall(call);
                } else {
                    faulty.endProcessAtCall(call);
                }
                static_cast<void>(stage.copy(options));
                return 0;
            });
            check(stage);
            if (end == ProcessEnd{}) {
                EXPECT_GT(call, 10U);
            }
            if (end == ProcessEnd{} || HasFailure()) {
                return;
            }
            ASSERT_EQ(end.signal, SIGKILL);
        }
    }
};

TEST_P(LocalCopySweep, APlainCopyInWhichACallFails) {
    for (const int errorNumber : {ENOSPC, EIO, EINTR, EDQUOT}) {
        failEachCall({}, errorNumber, [](Stage& stage, Status status, bool isOver) {
            stage.expectPlainLeavings();
            if (isOver) {
                EXPECT_EQ(status,
                          GetParam() == Kind::Cancelled ? CopyStatus::cancelled : Status::Success);
            }
        });
    }
}

TEST_P(LocalCopySweep, APlainCopyThatIsKilled) {
    for (const bool within : {false, true}) {
        endAtEachCall({}, within, [](Stage& stage) { stage.expectPlainLeavings(); });
    }
}

TEST_P(LocalCopySweep, ASafeCopyInWhichACallFails) {
    for (const int errorNumber : {ENOSPC, EIO, EINTR, EDQUOT}) {
        failEachCall(safeOptions(), errorNumber, [](Stage& stage, Status status, bool isOver) {
            // The one failure may be that of the removal itself.
            stage.expectSafeLeavings(GetParam() == Kind::Cancelled);
            if (status == Status::Success && GetParam() != Kind::Unique) {
                EXPECT_TRUE(stage.isWhole(stage.left()["a"]));
            } else if (status == Status::Success) {
                EXPECT_TRUE(stage.isWhole(stage.left()["a-1"]));
            }
            if (isOver) {
                EXPECT_EQ(status,
                          GetParam() == Kind::Cancelled ? CopyStatus::cancelled : Status::Success);
            }
        });
    }
}

TEST_P(LocalCopySweep, ASafeCopyThatIsKilled) {
    for (const bool within : {false, true}) {
        endAtEachCall(safeOptions(), within, [](Stage& stage) { stage.expectSafeLeavings(true); });
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, LocalCopySweep,
                         testing::Values(Kind::New, Kind::Replacing, Kind::Unique,
                                         Kind::Cancelled));

} // namespace
} // namespace tav
