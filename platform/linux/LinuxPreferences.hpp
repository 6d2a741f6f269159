#pragma once

#include "platform/Preferences.hpp"
#include "platform/linux/PreferencesFile.hpp"

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace tav {

/// Settings in an XML property list, by default of this program: in the user's configuration
/// folder, under the main bundle's identifier (or the executable's name where it has none) and the
/// extension "plist". Read at the first question. Each change reads the file anew and replaces it,
/// so that processes do not lose each other's keys (see `PreferencesFile`); what another process
/// has changed is seen from the own next change on. ENOENT where there is no configuration folder.
///
/// Questions do not wait for a change that is being stored.
class LinuxPreferences final : public Preferences {
  public:
    /// The file of this program; its path is found when it is first needed.
    LinuxPreferences() = default;
    explicit LinuxPreferences(std::string path) : path_(std::move(path)) {}

    void registerDefaults(const Value::Dictionary& defaults) override;
    std::optional<Value> value(std::string_view key) override;
    SystemError setValue(std::string_view key, const Value& value) override;
    SystemError removeValue(std::string_view key) override;

  private:
    /// A change that the file does not have yet; no value is a removal.
    struct Change {
        std::optional<Value> value;
        bool canBeStored = true;
    };

    void load();
    void loadIfNeeded();
    SystemError change(std::string_view key, Change change, SystemError errorOfValue);
    SystemError store();

    std::optional<std::string> path_;
    std::optional<internal::PreferencesFile> file_; ///< None where no path can be told.

    /// Held while the file is read or written; taken before the other.
    std::mutex storing_;
    /// Guards what follows; it is changed only with both held.
    std::mutex mutex_;
    bool isLoaded_ = false;
    Value::Dictionary defaults_;
    Value::Dictionary stored_; ///< The file's content as it was last read or written.
    std::map<std::string, Change, std::less<>> changes_;
};

namespace internal {
/// Where this program's settings are; empty when no configuration folder or no name can be told.
[[nodiscard]] std::string preferencesPath();
} // namespace internal

} // namespace tav
