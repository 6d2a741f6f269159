#pragma once

#include "base/Data.hpp"
#include "platform/linux/MimeGlobs.hpp"

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tav::internal {

/// The shared MIME database: `mime` in each of some data folders, the most important first. What is
/// missing or makes no sense is not known. The small tables are read at once, the descriptions of
/// single types when they are asked for. Constant once made.
class MimeTypes {
  public:
    explicit MimeTypes(std::vector<std::string> dataFolders);

    /// By the name alone; empty when it is not known.
    [[nodiscard]] std::string typeOfName(std::string_view name) const {
        return globs_.typeOfName(name);
    }
    /// What files of a type are called in the first language that has a word for it, otherwise in
    /// English; empty when the type is not known.
    [[nodiscard]] std::string comment(std::string_view type,
                                      std::span<const std::string> languages) const;
    /// Names of icons for a type, the most fitting first.
    [[nodiscard]] std::vector<std::string> iconNames(std::string_view type) const;

  private:
    using TextOfType = std::map<std::string, std::string, std::less<>>;

    [[nodiscard]] std::string canonicalType(std::string_view type) const;

    std::vector<std::string> folders_;
    MimeGlobs globs_;
    TextOfType aliases_;
    TextOfType icons_;
    TextOfType genericIcons_;
};

/// Descriptions that are larger are not read.
inline constexpr std::size_t largestDescription = std::size_t{1} << 20;

/// The text in the element `comment` of a type's description in XML, in the first language that has
/// one. Empty for what is no such description, or declares entities.
[[nodiscard]] std::string commentOfDescription(BytesView xml,
                                               std::span<const std::string> languages);

} // namespace tav::internal
