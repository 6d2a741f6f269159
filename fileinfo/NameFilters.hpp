#pragma once

#include "fileinfo/TavBaseFileInfoFilter.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// Lets in files, folders or both that have one of some names, ignoring case.
class BaseFilterItemsNamed final : public TavBaseFileInfoFilter {
  public:
    BaseFilterItemsNamed(std::vector<std::string> itemNames, bool includeFiles,
                         bool includeFolders);
    [[nodiscard]] static std::shared_ptr<BaseFilterItemsNamed>
    filterWithItemNames(std::vector<std::string> itemNames, bool includeFiles, bool includeFolders);

    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;

    /// Whether the listing ends with the first item that is let in. False at first.
    [[nodiscard]] bool findOne() const { return _findOne; }
    void setFindOne(bool findOne) { _findOne = findOne; }

  private:
    std::vector<std::string> _itemNames;
    bool _includeFiles;
    bool _includeFolders;
    bool _findOne = false;
};

/// Lets in what has this name without its extension, ignoring case: "IMG" lets "img.jpg" in and not
/// "IMG_0001.jpg". In spite of its name it asks for the whole base name, and callers rely on that.
class BaseFilterFilenamePrefix final : public TavBaseFileInfoFilter {
  public:
    explicit BaseFilterFilenamePrefix(std::string_view filenamePrefix);
    [[nodiscard]] static std::shared_ptr<BaseFilterFilenamePrefix>
    filterWithFilenamePrefix(std::string_view filenamePrefix);

    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;

  private:
    std::string _filenamePrefix;
};

/// Keeps out what has one of some names, ignoring case, and all folders unless they are asked for.
class TavExcludeFilenamesFilter final : public TavBaseFileInfoFilter {
  public:
    TavExcludeFilenamesFilter(std::vector<std::string> filenames, bool includeFolders);
    [[nodiscard]] static std::shared_ptr<TavExcludeFilenamesFilter>
    filterWithFilenames(std::vector<std::string> filenames, bool includeFolders);

    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override;

  private:
    bool _allowFolders;
    std::vector<std::string> _filenamesToExclude;
};

} // namespace tav
