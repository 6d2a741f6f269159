#pragma once

#include "platform/FileSystem.hpp"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// The identifiers of bundles that are asked for again and again. Each information list is read
/// once, and again when the file is another one or was changed since: the answers are those of
/// `Bundle::bundleWithPath` and `bundleIdentifier`. A known one costs a single look at the file's
/// attributes; lists that hold nothing or cannot be read are not kept. Content of the same length
/// that is written into the file within one tick of its clock goes unnoticed. One thread.
class BundleIdentifiers {
  public:
    /// Nothing for a path that holds no bundle, and for a bundle without an identifier.
    [[nodiscard]] std::optional<std::string> identifierOfBundle(std::string_view bundlePath);

  private:
    struct Known {
        FileIdentity identity;
        Date changeDate;
        std::uint64_t size = 0;
        std::optional<std::string> identifier;
    };

    std::map<std::string, Known, std::less<>> known_;
};

} // namespace tav
