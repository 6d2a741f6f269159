#pragma once

#include <string>
#include <string_view>

namespace tav {

/// A new, empty folder under $TMPDIR (or /tmp) for the life of this object; then it is removed with
/// all that is in it. Links inside are removed, never followed. Paths are bytes.
class TemporaryFolder {
  public:
    /// Throws `std::system_error` when no folder can be made.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Absolute and without links, so that it may be compared with what the host answers.
    [[nodiscard]] const std::string& path() const { return path_; }
    /// The path of something in the folder.
    [[nodiscard]] std::string path(std::string_view name) const;

  private:
    std::string path_;
};

} // namespace tav
