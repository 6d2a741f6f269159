// Names, kinds and attributes of the older items.

#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/NameExtension.hpp"
#include "fileinfo/PathPrefix.hpp"
#include "fileinfo/local/AttributeValues.hpp"
#include "fileinfo/local/TavFileInfo.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/FileKinds.hpp"
#include "platform/Localization.hpp"
#include "platform/PngReader.hpp"

namespace tav {

namespace {

/// No picture of the longest sides that are read takes more as a PNG file.
constexpr std::uint64_t largestPicture = 16U << 20U;

constexpr Image::Size previewSize{128, 128};

} // namespace

std::string TavFileInfo::name() { return std::string(lastPathComponent(storedPath())); }

std::string TavFileInfo::nameWithoutExtension() { return stringByDeletingPathExtension(name()); }

std::string TavFileInfo::extension() { return std::string(pathExtension(storedPath())); }

void TavFileInfo::setName(std::string_view name) {
    if (name.empty() || !exists()) {
        return;
    }
    std::string newPath = stringByAppendingPathComponent(parentFolder()->path(), name);
    if (FileSystem::current().move(path(), newPath, Replace::No).isNone()) {
        itsPath_ = std::move(newPath);
        refresh();
        fileRefWithError(nullptr);
    }
}

void TavFileInfo::setNameKeepingExtension(std::string_view name) {
    setName(internal::nameWithExtension(std::string(name), extension()));
}

std::string TavFileInfo::makeNameOSCompliant(std::string_view name) {
    return TavMacFileInfo::makeNameOSCompliant(name);
}

std::string TavFileInfo::kindString() {
    const std::optional<std::string> kind = FileKinds::current().kindOfFileType(extension());
    return kind ? *kind : localizedString("unknown");
}

std::shared_ptr<Image> TavFileInfo::icon() { return FileKinds::current().iconForFile(path()); }

std::shared_ptr<Image> TavFileInfo::preview() {
    if (!exists()) {
        return nullptr;
    }
    const Result<Data> bytes = FileSystem::current().readFile(path(), largestPicture);
    if (std::shared_ptr<Image> image = bytes.ok() ? imageFromPNG(bytes.value()) : nullptr) {
        return image;
    }
    const std::shared_ptr<Image> shared = icon();
    if (!shared) {
        return nullptr;
    }
    auto own = std::make_shared<Image>(*shared);
    own->setSize(previewSize);
    return own;
}

// No other mark makes a file invisible here.
bool TavFileInfo::visible() { return !name().starts_with('.'); }

bool TavFileInfo::isEqualTo(Coding* other) {
    return isEqualToFileInfo(dynamic_cast<TavFileInfo*>(other));
}

bool TavFileInfo::isEqualToFileInfo(TavFileInfo* other) {
    return other != nullptr && itsPath_ && other->itsPath_ &&
           equalsIgnoringCase(path(), other->path());
}

bool TavFileInfo::contains(TavFileInfo* other) {
    return isFolder() && !hasNoPath() && other != nullptr &&
           internal::beginsIgnoringCase(other->path(), path());
}

bool TavFileInfo::cacheAttributes() {
    if (attrs_) {
        return true;
    }
    std::optional<FileAttributes> learned;
    if (takeFileRef(learned) != Status::Success) {
        return false;
    }
    if (!learned || learned->kind == FileKind::Link) {
        const Result<FileAttributes> target = FileSystem::current().targetAttributes(path());
        if (!target.ok()) {
            return false;
        }
        learned = target.value();
    }
    attrs_ = std::make_unique<internal::CachedAttributes>(*learned);
    return true;
}

std::optional<Value> TavFileInfo::attribute(std::string_view key) {
    return cacheAttributes() ? internal::attributeValue(*attrs_, storedPath(), key) : std::nullopt;
}

std::uint32_t TavFileInfo::code(std::string_view extendedAttribute) {
    return cacheAttributes() ? internal::codeValue(attrs_.get(), storedPath(), extendedAttribute)
                             : internal::codeValue(nullptr, {}, extendedAttribute);
}

std::uint32_t TavFileInfo::typeCode() { return code(internal::typeAttribute); }

std::uint32_t TavFileInfo::creatorCode() { return code(internal::creatorAttribute); }

std::string TavFileInfo::typeCodeString() {
    return cacheAttributes() ? internal::typeCodeText(*attrs_, storedPath()) : std::string();
}

std::optional<Date> TavFileInfo::modificationDate() {
    return cacheAttributes() ? std::optional(attrs_->file.modificationDate) : std::nullopt;
}

std::optional<Date> TavFileInfo::creationDate() {
    const std::optional<Value> value = attribute("NSFileCreationDate");
    return value ? std::optional(*value->asDate()) : std::nullopt;
}

void TavFileInfo::setModificationDate(std::optional<Date> date) {
    if (!date || !exists()) {
        return;
    }
    internal::changeModificationDate(path(), *date);
    refresh();
}

void TavFileInfo::setCreationDate(std::optional<Date> date) {
    if (!date || !exists()) {
        return;
    }
    const Result<FileAttributes> own = ownAttributes();
    if (own.ok()) {
        internal::changeOwnAttribute(*itsPath_, own.value(), "NSFileCreationDate", *date);
    }
    refresh();
}

bool TavFileInfo::isLocked() { return cacheAttributes() && internal::isLockedFile(attrs_->file); }

void TavFileInfo::setLocked(bool locked) {
    if (locked == isLocked()) {
        return;
    }
    const Result<FileAttributes> own = ownAttributes();
    if (own.ok()) {
        internal::changeOwnAttribute(*itsPath_, own.value(), "NSFileImmutable", locked);
    }
    attrs_.reset();
}

void TavFileInfo::setHideExtension(bool hide) {
    const Result<FileAttributes> own = ownAttributes();
    if (own.ok()) {
        internal::changeOwnAttribute(*itsPath_, own.value(), "NSFileExtensionHidden", hide);
    }
    attrs_.reset();
}

std::uint32_t TavFileInfo::size() {
    // The high half goes, on purpose.
    return cacheAttributes() ? static_cast<std::uint32_t>(attrs_->file.size) : 0;
}

} // namespace tav
