#pragma once

#include "base/Data.hpp"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tav {

/// The translations of one language: the content of a compiled catalogue of GNU gettext (".mo"), in
/// either byte order. Texts are UTF-8.
///
/// Format: https://www.gnu.org/software/gettext/manual/html_node/MO-Files.html. Of a text with
/// plural forms the singular counts. Not copied; questions may come from any thread.
class MessageCatalogue {
  public:
    /// Nothing when the bytes are no catalogue, reach beyond their end, are out of order (the
    /// format asks for it), or hold texts of another encoding. Takes time in proportion to the
    /// size.
    [[nodiscard]] static std::optional<MessageCatalogue> read(Data bytes);

    MessageCatalogue(MessageCatalogue&&) = default;
    MessageCatalogue& operator=(MessageCatalogue&&) = default;
    MessageCatalogue(const MessageCatalogue&) = delete;
    MessageCatalogue& operator=(const MessageCatalogue&) = delete;
    ~MessageCatalogue() = default;

    /// The translation of a text, as a view of the catalogue's bytes; nothing when there is none or
    /// it is empty. The empty text has none: the catalogue's own description stands there.
    [[nodiscard]] std::optional<std::string_view> find(std::string_view key) const;

    /// Each text with its translation, ordered by the bytes of the texts, without the description.
    /// Of several translations of one text the first holds.
    [[nodiscard]] const std::vector<std::pair<std::string_view, std::string_view>>&
    messages() const {
        return messages_;
    }

  private:
    MessageCatalogue() = default;

    Data bytes_;
    std::vector<std::pair<std::string_view, std::string_view>> messages_;
};

} // namespace tav
