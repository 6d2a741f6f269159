#include "platform/BundleIdentifiers.hpp"

#include "base/PathString.hpp"
#include "platform/Bundle.hpp"

namespace tav {

std::optional<std::string> BundleIdentifiers::identifierOfBundle(std::string_view bundlePath) {
    const Result<FileAttributes> list = FileSystem::current().targetAttributes(
        stringByAppendingPathComponent(bundlePath, "Contents/Info.plist"));
    if (!list.ok()) {
        return std::nullopt;
    }
    const FileAttributes& now = list.value();
    const auto found = known_.find(bundlePath);
    if (found != known_.end() && found->second.identity == now.identity &&
        found->second.changeDate == now.changeDate && found->second.size == now.size) {
        return found->second.identifier;
    }
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(bundlePath);
    if (!bundle || bundle->infoDictionary().empty()) {
        // A list that could not be read this once is asked for again: what failed may pass.
        return std::nullopt;
    }
    // The check came before the reading: a change between the two is seen by the next check.
    Known known{now.identity, now.changeDate, now.size, bundle->bundleIdentifier()};
    return known_.insert_or_assign(std::string(bundlePath), std::move(known))
        .first->second.identifier;
}

} // namespace tav
