#pragma once

#include "platform/memory/MemoryDesktop.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "platform/memory/MemoryProcessTable.hpp"

#include <map>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tav {

/// A made-up desktop with the suite installed and the tool in its place: what the pass does to it
/// is in `desktop.journal`, signals included ("signal 15 PID").
class SuiteFixture : public testing::Test {
  protected:
    static constexpr int ownProcess = 500;
    static constexpr const char* toolBundle = "/Installer/Helper.app";
    static constexpr const char* mainPath = "/Applications/Suite/Suite.app";
    static constexpr const char* backgroundPath =
        "/Applications/Suite/Suite.app/Contents/SharedSupport/Suite Background.app";
    static constexpr const char* crashReporterPath = "/Applications/Suite/Crash Reporter.app";

    SuiteFixture();

    /// Puts the tool's property list in its place.
    void configure(const std::map<std::string, std::string>& entries);
    void configureWith(std::string_view list);
    static std::map<std::string, std::string> wholeConfiguration();

    /// Makes a bundle with that identifier and an executable "program".
    void install(const std::string& bundlePath, std::string_view identifier);
    void installSuite();

    /// A process that runs from a bundle.
    MemoryProcess& run(int process, const std::string& bundlePath);

    MemoryProcessTable table;
    MemoryFileSystem files;
    MemoryDesktop desktop;

  private:
    ProcessTable::Replacement replacedTable_{table};
    FileSystem::Replacement replacedFiles_{files};
    DesktopSessions::Replacement replacedSessions_{desktop.desktopSessions()};
    QuitRequests::Replacement replacedQuits_{desktop.quitRequests()};
    Workspace::Replacement replacedWorkspace_{desktop.workspace()};
};

} // namespace tav
