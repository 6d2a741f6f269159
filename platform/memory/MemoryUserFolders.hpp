#pragma once

#include "platform/UserFolders.hpp"

namespace tav {

/// Folders that a test sets, before others ask for them; nothing is made.
class MemoryUserFolders final : public UserFolders {
  public:
    std::string homeFolder = "/home/user";
    std::string dataFolder = "/home/user/.local/share";
    std::string globalDataFolder = "/usr/local/share";
    std::string configurationFolder = "/home/user/.config";
    std::string cachesFolder = "/home/user/.cache";
    std::string temporaryFolder = "/tmp/tav-1000";

    std::string home() override { return homeFolder; }
    std::string data() override { return dataFolder; }
    std::string globalData() override { return globalDataFolder; }
    std::string configuration() override { return configurationFolder; }
    std::string caches() override { return cachesFolder; }
    std::string temporary() override { return temporaryFolder; }
};

} // namespace tav
