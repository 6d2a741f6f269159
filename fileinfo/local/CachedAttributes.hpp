#pragma once

#include "platform/FileSystem.hpp"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tav::internal {

// Extended attributes in which a file carries what Linux has no place for. All of them may be lost
// on the way: FAT keeps none, archivers leave them behind.
inline constexpr std::string_view typeAttribute = "user.tav.type";       ///< Four bytes.
inline constexpr std::string_view creatorAttribute = "user.tav.creator"; ///< Four bytes.
/// There when the extension is not to be shown.
inline constexpr std::string_view hideExtensionAttribute = "user.tav.hide-extension";
/// Seconds since 1970 as text ("1288834974.657"), since no file system lets its own be changed.
inline constexpr std::string_view creationDateAttribute = "user.tav.creation-date";

/// What was learned of a file at one moment. The extended attributes are asked for when they are
/// needed, each once.
class CachedAttributes {
  public:
    explicit CachedAttributes(const FileAttributes& attributes) : file(attributes) {}

    /// The attributes of the file, of a link itself.
    FileAttributes file; // NOLINT(misc-non-private-member-variables-in-classes): a plain value

    /// Null where the file has none. The path is that of the file.
    [[nodiscard]] const Data* extended(std::string_view path, std::string_view name);
    /// What the file has of the name was asked in another way; it counts unless it is known.
    void learnExtended(std::string_view name, std::optional<Data> value);

  private:
    struct Answers {
        std::array<bool, 4> asked{};
        std::array<std::optional<Data>, 4> values;
    };
    /// Where the answer to a name stands; it is made when there is none yet.
    std::size_t indexOf(std::string_view name);

    std::unique_ptr<Answers> answers_;
};

/// The extended attribute of a file or folder itself; nothing for a link, whose own it cannot be.
[[nodiscard]] std::optional<Data>
ownExtendedAttribute(const FileAttributes& file, std::string_view path, std::string_view name);

/// What a file keeps of a date in `creationDateAttribute`; nothing for one that is no finite
/// number.
[[nodiscard]] std::optional<std::string> creationDateText(Date date);
/// The very date of such a text; nothing for any other text.
[[nodiscard]] std::optional<Date> creationDateFrom(std::string_view text);
/// Keeps a date as that of the file's creation, of what the path leads to through links. EINVAL for
/// one that is no finite number.
SystemError keepCreationDate(std::string_view path, Date date);

} // namespace tav::internal
