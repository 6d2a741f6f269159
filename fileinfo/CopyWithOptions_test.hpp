#pragma once

#include "fileinfo/CopyStage_test.hpp"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

/// What a back-end can do, over the files of a stage.
class StagedSupport final : public CopySupport {
  public:
    explicit StagedSupport(CopyStage& stage) : stage_(stage) { stage.support = this; }

    Status replace(TavBaseFileInfo& file, TavBaseFileInfo& destination) override {
        const std::string from = file.path();
        const std::string to = destination.path();
        const Status status = answer("replace", "replace " + from + ' ' + to);
        if (status == Status::Success) {
            stage_.files[to] = stage_.files.at(from);
            stage_.files.erase(from);
            static_cast<StagedFileInfo&>(file).setPath(to);
        }
        return status;
    }
    Status syncContents(OpenFileToken& written) override {
        return answer("syncContents", "syncContents " + pathOf(written));
    }
    Status syncFolder(TavBaseFileInfo& folder) override {
        return answer("syncFolder", "syncFolder " + folder.path());
    }
    void forgetCached(OpenFileToken& token) override {
        stage_.enter("forgetCached " + pathOf(token));
    }
    std::optional<FileMetadata> metadata(TavBaseFileInfo& file) override {
        return stage_.enter("metadata " + file.path()) ? std::optional(carried) : std::nullopt;
    }
    Status setMetadata(TavBaseFileInfo& file, const FileMetadata& metadata) override {
        std::string told = "setMetadata " + file.path();
        told += metadata.permissions ? ' ' + std::to_string(*metadata.permissions) : " -";
        for (const FileMetadata::ExtendedAttribute& attribute : metadata.extendedAttributes) {
            told += ' ' + attribute.name;
        }
        return answer("setMetadata", told);
    }
    std::optional<WholeFileRange> nextData(OpenFileToken& reading, std::uint64_t offset) override {
        stage_.enter("nextData " + pathOf(reading) + ' ' + std::to_string(offset));
        for (const WholeFileRange& stretch : stretches) {
            if (stretch.location + stretch.length > offset) {
                const std::uint64_t begin = std::max(offset, stretch.location);
                return WholeFileRange{begin, stretch.location + stretch.length - begin};
            }
        }
        return std::nullopt;
    }
    Status setLength(OpenFileToken& writing, std::uint64_t length) override {
        const Status status =
            answer("setLength", "setLength " + pathOf(writing) + ' ' + std::to_string(length));
        if (status == Status::Success) {
            stage_.files.at(pathOf(writing)).content.resize(length);
        }
        return status;
    }

    std::map<std::string, Status> answers; ///< By operation.
    FileMetadata carried{0750, {{"user.a", {}}, {"user.b", {}}}};
    std::vector<WholeFileRange> stretches;

  private:
    Status answer(const std::string& operation, const std::string& call) {
        if (!stage_.enter(call)) {
            return Status::Failure;
        }
        const auto told = answers.find(operation);
        return told != answers.end() ? told->second : Status::Success;
    }
    static std::string pathOf(OpenFileToken& token) {
        return static_cast<StagedFileInfo::Token&>(token).path;
    }

    CopyStage& stage_;
};

/// "/s/a" with ten bytes in three chunks and "/d/b" with "old".
class CopyWithOptions : public testing::Test {
  protected:
    CopyWithOptions() { lay(); }
    void lay() {
        stage.files.clear();
        stage.calls.clear();
        stage.addFolder("/s");
        stage.addFolder("/d");
        stage.addFile("/s/a", "0123456789");
        stage.addFile("/d/b", "old");
        stage.chunkSizes["/s/a"] = 4;
        percents.clear();
    }
    std::shared_ptr<StagedFileInfo> item(std::string_view path) {
        return StagedFileInfo::at(stage, path);
    }
    Status copy(std::string_view destination, bool ensureUniqueName = false) {
        out = untouched;
        return source->copyTo(item(destination).get(), ensureUniqueName, &delegate, nullptr, &out,
                              options);
    }
    /// Calls that change something, or that the options make.
    [[nodiscard]] Lines deeds() const {
        Lines some;
        for (const std::string& call : stage.calls) {
            const std::string operation = call.substr(0, call.find(' '));
            for (const char* each :
                 {"createFile", "remove", "read", "write", "closeFile", "moveTo", "replace",
                  "syncContents", "syncFolder", "forgetCached", "setMetadata", "setLength",
                  "nextData", "setModificationDate", "openFileForReading", "report"}) {
                if (operation == each) {
                    some.push_back(call);
                }
            }
        }
        return some;
    }
    /// The position of the first call that begins so.
    [[nodiscard]] std::size_t at(std::string_view call, std::size_t from = 0) const {
        for (std::size_t n = from; n < stage.calls.size(); ++n) {
            if (stage.calls[n].starts_with(call)) {
                return n;
            }
        }
        ADD_FAILURE() << "no call " << call;
        return stage.calls.size();
    }
    void expectOld(Status expected, Status status) {
        EXPECT_EQ(status, expected);
        EXPECT_EQ(stage.text("/d/b"), "old");
        EXPECT_EQ(stage.paths(), (Lines{"/d", "/d/b", "/s", "/s/a"})) << "left something";
        EXPECT_EQ(stage.text("/s/a"), "0123456789");
    }
    void expectNew(Status status) {
        EXPECT_EQ(status, Status::Success);
        EXPECT_EQ(stage.text("/d/b"), "0123456789");
        EXPECT_EQ(stage.files["/d/b"].modificationDate, Date(200));
        EXPECT_EQ(stage.files["/d/b"].creationDate, Date(100));
        EXPECT_EQ(out->path(), "/d/b");
        EXPECT_EQ(stage.paths(), (Lines{"/d", "/d/b", "/s", "/s/a"}));
    }

    CopyStage stage;
    StagedSupport support{stage};
    CopyOptions options;
    std::vector<float> percents;
    ProgressDelegate delegate{[this](TavBaseFileInfo&, TavBaseFileInfo& to, float percent, void*) {
                                  percents.push_back(percent);
                                  stage.enter("report " + to.path());
                                  return false;
                              },
                              {},
                              {}};
    std::shared_ptr<StagedFileInfo> source = item("/s/a");
    FileInfoPtr untouched = item("/untouched");
    FileInfoPtr out;
};

} // namespace tav
