#include "base/PathString.hpp"
#include "foundation/FileManager.hpp"
#include "platform/Bundle.hpp"
#include "platform/UserFolders.hpp"

namespace tav {

std::string metadataFolder() {
    std::string folder = UserFolders::current().caches();
    if (folder.empty()) {
        folder = UserFolders::current().temporary();
    }
    if (folder.empty()) {
        return {};
    }
    folder = stringByAppendingPathComponent(folder, "Caches/Metadata");
    if (const auto bundle = Bundle::mainBundle()) {
        folder = stringByAppendingPathComponent(folder,
                                                bundle->bundleIdentifier().value_or(std::string()));
    }
    recursivelyCreatePath(folder);
    return folder;
}

} // namespace tav
