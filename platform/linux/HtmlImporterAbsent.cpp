// Built where gumbo's headers were missing: the plain importer stands in.

#include "platform/linux/PlainHtmlImporter.hpp"

namespace tav::internal {

HtmlImporter& realHtmlImporter() {
    static PlainHtmlImporter importer;
    return importer;
}

} // namespace tav::internal
