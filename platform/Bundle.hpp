#pragma once

#include "base/Value.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// A folder that holds a program or resources together with a description of itself, the property
/// list `Contents/Info.plist` (XML or binary). Any folder is accepted; one without that list has
/// neither an identifier nor a declared executable.
///
/// A value: it holds the path and, from the first question on, the information list as it was then.
/// Reads through `FileSystem::current()`. Not to be shared between threads.
class Bundle {
  public:
    /// The bundle of a folder, also of one that a link leads to; nothing when there is no folder.
    [[nodiscard]] static std::optional<Bundle> bundleWithPath(std::string_view path);

    /// The bundle that the running program belongs to: X when its executable is
    /// `X/Contents/MacOS/name`, otherwise the folder that the executable lies in. Nothing when the
    /// executable cannot be told.
    [[nodiscard]] static std::optional<Bundle> mainBundle();

    [[nodiscard]] const std::string& bundlePath() const { return path_; }

    /// The text under "CFBundleIdentifier".
    [[nodiscard]] std::optional<std::string> bundleIdentifier() const;

    /// `Contents/MacOS/` and the name under "CFBundleExecutable", or the bundle's own name without
    /// its extension where the list names none. The file need not exist. Nothing when the declared
    /// name is not a plain name (empty, "." or "..", with a slash).
    [[nodiscard]] std::optional<std::string> executablePath() const;

    /// The path of the file `name.type` among the resources: in `Contents/Resources`, otherwise in
    /// `Resources`, otherwise in the folder itself. Nothing when there is none, or when the name
    /// has a slash.
    [[nodiscard]] std::optional<std::string> pathForResource(std::string_view name,
                                                             std::string_view type) const;

    /// The information list; empty when it is missing, unreadable or no dictionary.
    [[nodiscard]] const Value::Dictionary& infoDictionary() const;

  private:
    explicit Bundle(std::string path) : path_(std::move(path)) {}

    std::string path_;
    mutable std::optional<Value::Dictionary> info_;
};

/// The folder of the bundle that a program belongs to: X when its path is `X/Contents/MacOS/name`,
/// otherwise the folder that it lies in. Nothing is looked at.
[[nodiscard]] std::string bundlePathOfExecutable(std::string_view executable);

} // namespace tav
