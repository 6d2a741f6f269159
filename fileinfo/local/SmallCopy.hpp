#pragma once

#include "base/Status.hpp"
#include "fileinfo/CopySupport.hpp"
#include "platform/FileSystem.hpp"

#include <memory>
#include <optional>
#include <string>

namespace tav {
class TavMacFileInfo;
}

namespace tav::internal {

struct ReadFile;

/// The plain copy of a small file between two local items where nothing is in the way: a third of
/// the host's calls that its steps take one by one. The folder is not asked to hold the name by an
/// empty file first, the dates are set while the new file is open, and each question is asked once.
///
/// Whatever is not plain sailing ends it before anybody could have seen it, and the steps are taken
/// instead: they know what each failure comes to.
class SmallCopy {
  public:
    SmallCopy(const PlainCopy& copy, TavMacFileInfo& source, TavMacFileInfo& destination)
        : copy_(copy), source_(source), destination_(destination) {}

    /// As `CopySupport::copyAtOnce`.
    std::optional<Status> run();

  private:
    class NewFile;

    std::optional<Status> copyAtOnce();
    bool findPaths();
    bool openSource();
    Result<FileAttributes> lookAtSource();
    bool hasRoom(NewFile& file);
    bool copyContent(NewFile& file);
    [[nodiscard]] bool isReported() const;
    void learnCreationDate();
    SystemError setDates(NewFile& file);
    std::optional<Status> report(NewFile& file);
    std::shared_ptr<TavMacFileInfo> newItem(bool isInPlace);

    const PlainCopy& copy_;
    TavMacFileInfo& source_;
    TavMacFileInfo& destination_;
    bool isIntoFolder_ = false;             ///< Otherwise the destination is the new file's item.
    std::string path_;                      ///< Of the new file in the end.
    std::string temporaryPath_;             ///< Until then.
    const ReadFile* ahead_ = nullptr;       ///< The source, where it was read ahead.
    std::unique_ptr<OpenFile> reading_;     ///< The source otherwise.
    std::shared_ptr<TavMacFileInfo> shown_; ///< What the delegate was shown.
    std::size_t size_ = 0;
};

} // namespace tav::internal
