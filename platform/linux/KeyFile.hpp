#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tav::internal {

/// A text of groups of keys and values, as icon themes and desktop settings are kept:
/// "[group]", then "key=value" a line, "#" for comments. Lines that are nothing of this are passed
/// over; of several values for one key the first holds.
class KeyFile {
  public:
    explicit KeyFile(std::string_view text);

    /// The empty text where there is no such value.
    [[nodiscard]] const std::string& value(std::string_view group, std::string_view key) const;
    /// A value with commas between its items, without those that are empty.
    [[nodiscard]] std::vector<std::string> list(std::string_view group, std::string_view key) const;
    /// A value as a number from 0 to 1 000 000; `otherwise` when it is none.
    [[nodiscard]] unsigned number(std::string_view group, std::string_view key,
                                  unsigned otherwise) const;

  private:
    using Group = std::map<std::string, std::string, std::less<>>;
    std::map<std::string, Group, std::less<>> groups_;
};

} // namespace tav::internal
