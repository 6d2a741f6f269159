#pragma once

#include "platform/MessageCatalogue.hpp"
#include "platform/Seam.hpp"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// The text in the user's language. The key is the English text, which is answered where there is
/// no translation. The translations of the library lie among its resources. Any thread.
[[nodiscard]] std::string localizedString(std::string_view key);

class Translations;

namespace internal {
/// For the user's languages, as they are at the first question, from the library's resources.
Translations& realTranslations();
} // namespace internal

/// Translations into a list of languages, best first: the files `LANGUAGE/LC_MESSAGES/tav.mo` in
/// some folders, of which the first that has a language gives it. What one language lacks comes
/// from the next one; English, which the keys are in, ends the list. Read when it is made, then
/// constant.
class Translations : public Seam<Translations, internal::realTranslations> {
  public:
    /// None at all.
    Translations() = default;
    Translations(std::span<const std::string> languages, std::span<const std::string> folders);

    /// The key where there is no translation.
    [[nodiscard]] std::string text(std::string_view key) const;

  private:
    std::vector<MessageCatalogue> catalogues_;
};

} // namespace tav
