#pragma once

#include "fileinfo/TavBaseFileInfoFilter.hpp"

#include <memory>
#include <string>
#include <vector>

namespace tav {

/// Lets in what has one of some extensions (without their dot), ignoring case. Folders are asked
/// for their extension like files, so that a folder "Album.jpg" passes for "jpg", unless all
/// folders are let in.
class TavFileExtensionsFilter final : public TavBaseFileInfoFilter {
  public:
    explicit TavFileExtensionsFilter(std::vector<std::string> extensions);
    [[nodiscard]] static std::shared_ptr<TavFileExtensionsFilter>
    filterWithExtensions(std::vector<std::string> extensions);

    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;

    /// Lets every folder in, whatever its name. False at first.
    void setAllowFolders(bool allow) { _allowFolders = allow; }
    /// Whether files of 0 bytes are kept out. False at first.
    [[nodiscard]] bool hideEmptyFiles() const { return _hideEmptyFiles; }
    void setHideEmptyFiles(bool hide) { _hideEmptyFiles = hide; }

  private:
    std::vector<std::string> _fileExtensions;
    bool _allowFolders = false;
    bool _hideEmptyFiles = false;
};

} // namespace tav
