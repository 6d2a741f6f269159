// For programs that show no texts but link what could: a program that has this among its own
// sources speaks English, and nothing of the readers of translations is linked into it.

#include "platform/Localization.hpp"

namespace tav::internal {

Translations& realTranslations() {
    static Translations none;
    return none;
}

} // namespace tav::internal
