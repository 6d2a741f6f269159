#pragma once

#include "base/Exception.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

using Percents = std::vector<float>;

/// What an action raises as "name: reason"; "nothing" when it does not.
inline std::string raisedBy(const std::function<void()>& action) {
    try {
        action();
    } catch (const Exception& exception) {
        return exception.name() + ": " + exception.reason();
    }
    return "nothing";
}

/// An item whose operations a test may replace.
class OddFile : public TavMacFileInfo {
  public:
    [[nodiscard]] static std::shared_ptr<OddFile> at(std::string_view path) {
        const auto item = internal::allocateItem<OddFile>();
        item->initWithPath(path);
        return item;
    }
    std::uint64_t preferredChunkSize() override { return chunkSize; }
    std::optional<Data> fileContentsWithRange(FileRange range, OpenFileToken* token) override {
        ++reads;
        if (onRead) {
            onRead();
        }
        return emptyReads > 0 && emptyReads-- > 0
                   ? std::nullopt
                   : TavMacFileInfo::fileContentsWithRange(range, token);
    }
    void closeFile(OpenFileToken* token) override {
        TavMacFileInfo::closeFile(token);
        closed = true;
        if (raisesInTheEnd) {
            throw std::runtime_error("while closing");
        }
    }
    bool remove() override {
        removedAfterClosing = closed;
        const bool isRemoved = TavMacFileInfo::remove();
        if (raisesInTheEnd) {
            throw std::logic_error("while removing");
        }
        return isRemoved;
    }

    std::uint64_t chunkSize = std::uint64_t{1} << 20U;
    int emptyReads = 0; ///< How many answer nothing first.
    int reads = 0;
    std::function<void()> onRead;
    bool raisesInTheEnd = false;
    bool closed = false;
    bool removedAfterClosing = false;
};

class CopyToFileTest : public MacFileInfoInMemory {
  protected:
    /// Asks to stop at the report of that number; 0 for never.
    ProgressDelegate delegate(std::size_t stopsAt = 0) {
        ProgressDelegate progress;
        progress.copyingFile = [this, stopsAt](TavBaseFileInfo& file, TavBaseFileInfo& toFile,
                                               float percent, void* userData) {
            percents.push_back(percent);
            paths = file.path() + " to " + toFile.path();
            pointer = userData;
            return percents.size() == stopsAt;
        };
        return progress;
    }
    /// What copying one path onto another raises.
    std::string raisedByCopy(std::string_view from, std::string_view to,
                             const ProgressDelegate* progress = nullptr) {
        return raisedBy([&] { at(from)->copyToFile(at(to).get(), progress, nullptr); });
    }

    Percents percents;
    std::string paths;
    void* pointer = nullptr;
};

class CopyToFileOnDisk : public MacFileInfoOnDisk {
  protected:
    std::string raisedByCopy(std::string_view from, std::string_view to) {
        return raisedBy([&] { in(from)->copyToFile(in(to).get(), nullptr, nullptr); });
    }
};

} // namespace tav
