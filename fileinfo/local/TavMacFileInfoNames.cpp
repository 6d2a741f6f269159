// Names, as the file system has them and as people are shown them.

#include "base/Format.hpp"
#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/NameExtension.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "foundation/HomePath.hpp"
#include "platform/FileKinds.hpp"

#include <algorithm>

namespace tav {

std::string TavMacFileInfo::name() { return TavPathBasedFileInfo::name(); }

std::string TavMacFileInfo::extension() { return std::string(pathExtension(_itsPath)); }

void TavMacFileInfo::setName(std::string_view name) {
    if (name.empty() || !exists()) {
        return;
    }
    const FileInfoPtr parent = parentFolder();
    if (!parent) {
        return;
    }
    const std::string newPath = stringByAppendingPathComponent(parent->path(), name);
    if (FileSystem::current().move(path(), newPath, Replace::No).isNone()) {
        _setPath(newPath);
    }
}

void TavMacFileInfo::setNameKeepingExtension(std::string_view name) {
    setName(internal::nameWithExtension(std::string(name), extension()));
}

std::string TavMacFileInfo::makeNameOSCompliant(std::string_view name) {
    std::string compliant(name);
    std::ranges::replace(compliant, '/', '_');
    return compliant;
}

std::string TavMacFileInfo::makeValidFilename(std::string_view filename, bool encodeNonASCII) {
    if (!encodeNonASCII) {
        return makeNameOSCompliant(filename);
    }
    std::string valid;
    for (const char16_t unit : utf16FromBytes(filename)) {
        if (unit > 126) {
            valid += format("U%04X", static_cast<unsigned>(unit));
        } else if (unit >= 32 && unit != u'/') {
            valid += static_cast<char>(unit);
        } else {
            valid += '_';
        }
    }
    return valid;
}

namespace {

/// A name as people are shown it. Names hold no slash here, so none has to become another sign.
std::string displayName(std::string_view path, bool hidesExtension) {
    const std::string_view name = lastPathComponent(path);
    return hidesExtension ? stringByDeletingPathExtension(name) : std::string(name);
}

/// Of a link never: the attribute is that of what it leads to.
bool hidesExtensionAt(const std::string& path) {
    if (pathExtension(path).empty()) {
        return false;
    }
    const Result<FileAttributes> file = FileSystem::current().attributes(path);
    return file.ok() &&
           internal::ownExtendedAttribute(file.value(), path, internal::hideExtensionAttribute)
               .has_value();
}

} // namespace

std::string TavMacFileInfo::humanFriendlyPath() {
    std::string realPath;
    std::string shown;
    for (const std::string& component :
         tav::pathComponents(stringByAbbreviatingWithTildeInPath(path()))) {
        if (component == "~") {
            realPath = stringByExpandingTildeInPath(component);
            shown = component;
        } else if (component == "/") {
            realPath = component;
            shown = component;
        } else {
            realPath = stringByAppendingPathComponent(realPath, component);
            shown = stringByAppendingPathComponent(
                shown, displayName(realPath, hidesExtensionAt(realPath)));
        }
    }
    return shown;
}

std::string TavMacFileInfo::humanFriendlyName() {
    const std::string own = path();
    return displayName(own, _hidesExtension());
}

std::string TavMacFileInfo::kindString() {
    std::optional<std::string> kind = FileKinds::current().kindOfFile(path());
    return kind ? *kind : TavPathBasedFileInfo::kindString();
}

std::shared_ptr<Image> TavMacFileInfo::icon() {
    std::shared_ptr<Image> image = FileKinds::current().iconForFile(path());
    return image ? image : TavPathBasedFileInfo::icon();
}

bool TavMacFileInfo::isBundle() { return FileKinds::current().isFilePackageAtPath(path()); }

// No other mark makes a file invisible here.
bool TavMacFileInfo::visible() { return !name().starts_with('.'); }

} // namespace tav
