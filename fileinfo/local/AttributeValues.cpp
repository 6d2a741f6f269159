#include "fileinfo/local/AttributeValues.hpp"

#include "fileinfo/VerboseLog.hpp"
#include "fileinfo/local/FileCreation.hpp"

namespace tav::internal {

namespace {

constexpr std::uint32_t noCode = 0x3F3F3F3F; // "????"
constexpr std::uint32_t ownerMayWrite = 0200;

/// The four characters; nothing for more or fewer.
std::optional<std::uint32_t> codeFrom(const Data* bytes) {
    if (bytes == nullptr || bytes->size() != 4) {
        return std::nullopt;
    }
    std::uint32_t code = 0;
    for (const std::byte byte : *bytes) {
        code = code << 8U | std::to_integer<std::uint32_t>(byte);
    }
    return code;
}

std::optional<Date> dateFrom(const Data* bytes) {
    return bytes != nullptr ? creationDateFrom(textOf(*bytes)) : std::nullopt;
}

std::string_view typeName(FileKind kind) {
    switch (kind) {
    case FileKind::Regular:
        return "NSFileTypeRegular";
    case FileKind::Folder:
        return "NSFileTypeDirectory";
    case FileKind::Link:
        return "NSFileTypeSymbolicLink";
    case FileKind::Socket:
        return "NSFileTypeSocket";
    case FileKind::Pipe:
    case FileKind::Device:
    case FileKind::Unknown:
        break;
    }
    return "NSFileTypeUnknown";
}

} // namespace

bool isLockedFile(const FileAttributes& file) {
    return file.isImmutable ||
           (file.kind != FileKind::Link && (file.permissions & ownerMayWrite) == 0);
}

std::optional<Value> attributeValue(CachedAttributes& attributes, std::string_view path,
                                    std::string_view key) {
    const FileAttributes& file = attributes.file;
    if (key == "NSFileSize") {
        return file.size;
    }
    if (key == "NSFileModificationDate") {
        return file.modificationDate;
    }
    if (key == "NSFileCreationDate") {
        const std::optional<Date> kept = dateFrom(attributes.extended(path, creationDateAttribute));
        return kept ? *kept : file.creationDate.value_or(file.modificationDate);
    }
    if (key == "NSFileType") {
        return typeName(file.kind);
    }
    if (key == "NSFileImmutable") {
        return isLockedFile(file);
    }
    if (key == "NSFileExtensionHidden") {
        return attributes.extended(path, hideExtensionAttribute) != nullptr;
    }
    if (key == "NSFileHFSTypeCode" || key == "NSFileHFSCreatorCode") {
        const std::optional<std::uint32_t> code = codeFrom(attributes.extended(
            path, key == "NSFileHFSTypeCode" ? typeAttribute : creatorAttribute));
        return code ? std::optional<Value>(*code) : std::nullopt;
    }
    if (key == "NSFilePosixPermissions") {
        return file.permissions;
    }
    if (key == "NSFileOwnerAccountID") {
        return file.user;
    }
    if (key == "NSFileGroupOwnerAccountID") {
        return file.group;
    }
    if (key == "NSFileSystemNumber") {
        return file.identity.device;
    }
    if (key == "NSFileSystemFileNumber") {
        return file.identity.number;
    }
    return std::nullopt;
}

std::uint32_t codeValue(CachedAttributes* attributes, std::string_view path,
                        std::string_view extendedAttribute) {
    return codeFrom(attributes != nullptr ? attributes->extended(path, extendedAttribute) : nullptr)
        .value_or(noCode);
}

std::string typeCodeText(CachedAttributes& attributes, std::string_view path) {
    const Data* bytes = attributes.extended(path, typeAttribute);
    return '\'' + (codeFrom(bytes) ? std::string(textOf(*bytes)) : std::string()) + '\'';
}

void changeOwnAttribute(const std::string& path, const FileAttributes& own, std::string_view key,
                        const Value& value) {
    if (own.kind == FileKind::Link) {
        return;
    }
    Value::Dictionary attributes;
    attributes.set(std::string(key), value);
    static_cast<void>(changeFileAttributes(path, attributes));
}

void changeModificationDate(const std::string& path, Date date) {
    if (!FileSystem::current().setModificationDate(path, date).isNone()) {
        logVerbose("Failed to set the modification date for file \"%@\".", path);
    }
}

} // namespace tav::internal
