#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tav::internal {

/// Looks up icons by name in an icon theme and those that it inherits from, "Adwaita" and "hicolor"
/// at last (by the rules of freedesktop.org). Only PNG files count: of a
/// theme of drawings nothing is found. Reads the themes' descriptions when it is made, the icons'
/// names when they are asked for.
class IconTheme {
  public:
    /// `iconFolders` hold themes, the most important first.
    IconTheme(std::vector<std::string> iconFolders, std::string_view themeName);

    /// The file of the first of the names that the first theme has any of; empty where there is
    /// none. Of several sizes 48 pixels come first, then what is larger, the nearest first, then
    /// what is smaller.
    [[nodiscard]] std::string pathOfIcon(std::span<const std::string> names) const;

  private:
    struct Directory {
        std::string name;
        unsigned size = 0;
    };
    struct Theme {
        std::string name;
        std::vector<Directory> directories; ///< The best size first.
    };

    void addThemes(std::string_view name);
    [[nodiscard]] std::string descriptionOf(std::string_view theme) const;
    [[nodiscard]] std::string pathIn(const Theme& theme, std::string_view icon) const;

    std::vector<std::string> iconFolders_;
    std::vector<Theme> themes_;
};

} // namespace tav::internal
