#pragma once

#include "foundation/ContentCopy.hpp"
#include "platform/FileSystem.hpp"

#include <cstdint>
#include <string_view>

namespace tav::internal {

/// Makes what a copy consists of, a file, a link or what a folder carries, one item after the
/// other. What the other volume does not keep of dates, permissions and extended attributes is lost
/// without a word.
class ItemCopier {
  public:
    /// `waitsForMedium`: contents and names are on the medium when they are made.
    explicit ItemCopier(bool waitsForMedium) : waitsForMedium_(waitsForMedium) {}

    /// How the file is made that gets what another has.
    [[nodiscard]] static OpenOptions optionsForCopyOf(const FileAttributes& attributes);
    /// Gives a file that was just made the content of another, closes it, and gives it what the
    /// other carries. After a failure the file holds a part, or nothing.
    SystemError copyFile(OpenFile& from, const FileAttributes& attributes,
                         std::string_view fromPath, OpenFile& to, std::string_view toPath);
    /// Makes a link with a text and a date. After a failure it does not stand.
    static SystemError makeLink(std::string_view path, std::string_view target, Date date);
    /// Gives a folder what another carries, when all that lies in it is there.
    SystemError finishFolder(std::string_view fromPath, std::uint32_t permissions, Date date,
                             std::string_view toPath);
    /// Waits for the names in the folder of a path.
    SystemError finishFolderOf(std::string_view path) const;

  private:
    SystemError carryExtendedAttributes(std::string_view fromPath, std::string_view toPath);
    SystemError waitForNames(std::string_view folder) const;

    ContentCopy content_;
    bool waitsForMedium_;
    bool keepsExtendedAttributes_ = true; ///< Until the other volume said otherwise.
};

} // namespace tav::internal
