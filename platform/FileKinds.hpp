#pragma once

#include "base/Image.hpp"
#include "platform/Seam.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tav {

class FileKinds;

namespace internal {
/// The desktop's database of file types and its icon theme (platform/linux).
FileKinds& realFileKinds();
} // namespace internal

/// The seam to what a desktop knows about kinds of files. Kinds go by what a file is and how it is
/// called, not by its contents; a folder is a folder whatever it is called, unless it is a package.
/// Links are followed; what leads nowhere has neither kind nor icon. Any thread; the images are
/// shared between all who ask.
class FileKinds : public Seam<FileKinds, internal::realFileKinds> {
  public:
    virtual ~FileKinds() = default;

    /// The icon for files with an extension (without its dot); null where the desktop has none.
    /// The same object every time, as long as it is in use.
    virtual std::shared_ptr<Image> iconForFileType(std::string_view extension) = 0;
    /// The icon of the file at a path; null where the desktop has none. Shared likewise.
    virtual std::shared_ptr<Image> iconForFile(std::string_view path) = 0;
    /// The kind of files with an extension (without its dot), in the user's language ("JPEG
    /// image"); nothing for one that the desktop does not know.
    virtual std::optional<std::string> kindOfFileType(std::string_view extension) = 0;
    /// The kind of the file at a path, likewise; nothing for a kind that the desktop does not know.
    virtual std::optional<std::string> kindOfFile(std::string_view path) = 0;
    /// Whether the path is a folder that is shown to people as one file.
    virtual bool isFilePackageAtPath(std::string_view path) = 0;
};

} // namespace tav
