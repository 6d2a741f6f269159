#include "platform/LibraryResources.hpp"
#include "platform/Localization.hpp"
#include "platform/NeverDestroyed.hpp"
#include "platform/UserLanguages.hpp"

namespace tav::internal {
namespace {

struct OfTheUser : Translations {
    OfTheUser() : Translations(userLanguages(), libraryResourceFolders()) {}
};

} // namespace

Translations& realTranslations() { return neverDestroyed<OfTheUser>(); }

} // namespace tav::internal
