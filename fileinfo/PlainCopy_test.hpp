#pragma once

#include "fileinfo/CopyStage_test.hpp"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

/// "/s/a" with ten bytes, and the folder "/d".
class PlainCopyTest : public testing::Test {
  protected:
    PlainCopyTest() {
        stage.addFolder("/s");
        stage.addFolder("/d");
        stage.addFile("/s/a", "0123456789");
        useChunks(4);
    }
    void useChunks(std::uint64_t size) { stage.chunkSizes["/s/a"] = size; }

    std::shared_ptr<StagedFileInfo> item(std::string_view path) {
        return StagedFileInfo::at(stage, path);
    }
    Status copy(std::string_view destination, bool ensureUniqueName = false,
                const ProgressDelegate* delegate = nullptr) {
        out = untouched;
        return source->copyTo(item(destination).get(), ensureUniqueName, delegate, nullptr, &out);
    }
    std::string outPath() const { return out ? out->path() : "(nil)"; }

    CopyStage stage;
    std::shared_ptr<StagedFileInfo> source = item("/s/a");
    FileInfoPtr untouched = item("/untouched");
    FileInfoPtr out;
};

/// A delegate that notes the percentages; its answer is what `answers` says of the call's number
/// from 1 on.
struct Percents {
    explicit Percents(std::function<bool(int)> answers = [](int) { return false; }) {
        delegate.copyingFile = [this, answers](TavBaseFileInfo& from, TavBaseFileInfo& to,
                                               float percent, void* user) {
            seen.push_back(percent);
            lines.push_back(from.path() + ' ' + to.path() + (user != nullptr ? " user" : ""));
            return answers(int(seen.size()));
        };
    }
    ProgressDelegate delegate;
    std::vector<float> seen;
    Lines lines;
};

/// Where the copy to "/d" grows.
inline constexpr const char* temporary = "/d/QuillboxCopyFile.tmp";

} // namespace tav
