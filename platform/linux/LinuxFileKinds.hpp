#pragma once

#include "platform/FileKinds.hpp"
#include "platform/linux/IconTheme.hpp"
#include "platform/linux/MimeTypes.hpp"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

namespace internal {

/// Where a desktop's knowledge lies.
struct FileKindSources {
    std::vector<std::string> dataFolders; ///< With `mime` in them, the user's own first.
    std::vector<std::string> iconFolders; ///< With icon themes in them, the user's own first.
    std::string iconTheme;                ///< Empty for the usual one.
    std::vector<std::string> languages;   ///< Best first.
};

/// Those of the user and the host: the folders of the XDG base directory rules, the theme that is
/// set for GTK, the languages of the environment.
[[nodiscard]] FileKindSources fileKindSourcesOfHost();

} // namespace internal

/// Kinds of files by the shared MIME database, icons by the icon theme. Both are read at the first
/// question and then kept, as they were, for as long as this lives; damaged ones know less. The
/// file in question is looked at through `FileSystem::current()`.
///
/// A package is a folder with `Contents/Info.plist` or one of the extensions "app", "bundle",
/// "component", "mpkg", "pkg", "plugin", "prefpane" and "rtfd", in any case. A package is of the
/// kind of its extension where there is one, every other folder is just a folder.
class LinuxFileKinds final : public FileKinds {
  public:
    explicit LinuxFileKinds(
        std::function<internal::FileKindSources()> sources = internal::fileKindSourcesOfHost)
        : sources_(std::move(sources)) {}

    std::shared_ptr<Image> iconForFileType(std::string_view extension) override;
    std::shared_ptr<Image> iconForFile(std::string_view path) override;
    std::optional<std::string> kindOfFileType(std::string_view extension) override;
    std::optional<std::string> kindOfFile(std::string_view path) override;
    bool isFilePackageAtPath(std::string_view path) override;

  private:
    struct Database {
        explicit Database(internal::FileKindSources sources);
        internal::MimeTypes types;
        internal::IconTheme theme;
        std::vector<std::string> languages;
        std::map<std::string, std::string, std::less<>> comments;  ///< Of types.
        std::map<std::string, std::string, std::less<>> iconPaths; ///< Of types.
        std::map<std::string, std::weak_ptr<Image>> icons;         ///< Of paths.
    };

    Database& database(); ///< With the mutex held.
    std::string typeOfExtension(std::string_view extension);
    std::string typeOfFile(std::string_view path);
    std::shared_ptr<Image> iconOfType(const std::string& type);
    std::optional<std::string> kindOfType(const std::string& type);

    std::function<internal::FileKindSources()> sources_;
    std::mutex mutex_;
    std::unique_ptr<Database> database_;
};

} // namespace tav
