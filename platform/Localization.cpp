#include "platform/Localization.hpp"

#include "base/PathString.hpp"
#include "platform/FileSystem.hpp"

#include <optional>
#include <utility>

namespace tav {
namespace {

constexpr std::uint64_t largestCatalogue = 16U << 20U;

std::optional<MessageCatalogue> catalogueOf(std::string_view language,
                                            std::span<const std::string> folders) {
    for (const std::string& folder : folders) {
        const std::string path =
            stringByAppendingPathComponent(folder, std::string(language) + "/LC_MESSAGES/tav.mo");
        // Of the host itself: these are kept for the life of the process.
        Result<Data> bytes = internal::realFileSystem().readFile(path, largestCatalogue);
        std::optional<MessageCatalogue> catalogue =
            bytes.ok() ? MessageCatalogue::read(std::move(bytes).value()) : std::nullopt;
        if (catalogue) {
            return catalogue;
        }
    }
    return std::nullopt;
}

} // namespace

Translations::Translations(std::span<const std::string> languages,
                           std::span<const std::string> folders) {
    for (const std::string& language : languages) {
        std::optional<MessageCatalogue> catalogue = catalogueOf(language, folders);
        if (catalogue) {
            catalogues_.push_back(std::move(*catalogue));
        }
        // "en_GB" may have translations, "en" follows it and needs none.
        if (language == "en") {
            break;
        }
    }
}

std::string Translations::text(std::string_view key) const {
    for (const MessageCatalogue& catalogue : catalogues_) {
        if (const auto translation = catalogue.find(key)) {
            return std::string(*translation);
        }
    }
    return std::string(key);
}

std::string localizedString(std::string_view key) { return Translations::current().text(key); }

} // namespace tav
