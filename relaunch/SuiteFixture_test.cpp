#include "relaunch/SuiteFixture_test.hpp"

namespace tav {
namespace {

std::string dictionary(const std::map<std::string, std::string>& entries) {
    std::string list = "<plist version=\"1.0\"><dict>";
    for (const auto& [key, value] : entries) {
        list.append("<key>").append(key).append("</key><string>").append(value).append("</string>");
    }
    return list + "</dict></plist>";
}

} // namespace

SuiteFixture::SuiteFixture() {
    table.ownProcess = ownProcess;
    files.addFile(std::string(toolBundle) + "/Contents/Info.plist",
                  dictionary({{"CFBundleIdentifier", "com.example.installer"}}));
    files.addFile(std::string(toolBundle) + "/Contents/MacOS/program", "");
    run(ownProcess, toolBundle);
    table.onSignal = [this](int process, int number) {
        desktop.journal.push_back("signal " + std::to_string(number) + " " +
                                  std::to_string(process));
    };
}

void SuiteFixture::configureWith(std::string_view list) {
    files.addFile(std::string(toolBundle) + "/Contents/Resources/RelaunchAfterInstall.plist", list);
}

void SuiteFixture::configure(const std::map<std::string, std::string>& entries) {
    configureWith(dictionary(entries));
}

std::map<std::string, std::string> SuiteFixture::wholeConfiguration() {
    return {{"kCrashReporterID", "com.example.crash"},
            {"kMainAppName", "Suite"},
            {"kMainAppID", "com.example.suite"},
            {"kBackgroundAppID", "com.example.background"}};
}

void SuiteFixture::install(const std::string& bundlePath, std::string_view identifier) {
    files.addFile(bundlePath + "/Contents/Info.plist",
                  dictionary({{"CFBundleIdentifier", std::string(identifier)}}));
    files.addFile(bundlePath + "/Contents/MacOS/program", "");
}

void SuiteFixture::installSuite() {
    install(mainPath, "com.example.suite");
    install(backgroundPath, "com.example.background");
    install(crashReporterPath, "com.example.crash");
}

MemoryProcess& SuiteFixture::run(int process, const std::string& bundlePath) {
    return table.add(process, bundlePath + "/Contents/MacOS/program");
}

} // namespace tav
