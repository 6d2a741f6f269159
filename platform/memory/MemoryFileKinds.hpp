#pragma once

#include "platform/FileKinds.hpp"

#include <map>
#include <set>
#include <string>

namespace tav {

/// What the desktop of a test knows: what it is told, under the very texts that are asked for.
class MemoryFileKinds final : public FileKinds {
  public:
    std::map<std::string, std::shared_ptr<Image>, std::less<>> iconOfType; ///< By extension.
    std::map<std::string, std::shared_ptr<Image>, std::less<>> iconOfFile; ///< By path.
    std::map<std::string, std::string, std::less<>> kindsOfTypes;          ///< By extension.
    std::map<std::string, std::string, std::less<>> kinds;                 ///< By path.
    std::set<std::string, std::less<>> packages;                           ///< Paths.

    std::shared_ptr<Image> iconForFileType(std::string_view extension) override {
        return found(iconOfType, extension);
    }
    std::shared_ptr<Image> iconForFile(std::string_view path) override {
        return found(iconOfFile, path);
    }
    std::optional<std::string> kindOfFileType(std::string_view extension) override {
        return known(kindsOfTypes, extension);
    }
    std::optional<std::string> kindOfFile(std::string_view path) override {
        return known(kinds, path);
    }
    bool isFilePackageAtPath(std::string_view path) override { return packages.contains(path); }

  private:
    template <class Kinds>
    static std::optional<std::string> known(const Kinds& kinds, std::string_view key) {
        const auto kind = kinds.find(key);
        return kind != kinds.end() ? std::optional(kind->second) : std::nullopt;
    }
    template <class Icons>
    static std::shared_ptr<Image> found(const Icons& icons, std::string_view key) {
        const auto icon = icons.find(key);
        return icon != icons.end() ? icon->second : nullptr;
    }
};

} // namespace tav
