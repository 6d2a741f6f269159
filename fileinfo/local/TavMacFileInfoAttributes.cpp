// Attributes, codes and dates.

#include "base/NumberText.hpp"
#include "fileinfo/VerboseLog.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/Clock.hpp"

#include <chrono>
#include <cmath>

namespace tav {

namespace {

constexpr std::uint32_t noCode = 0x3F3F3F3F; // "????"
constexpr std::uint32_t ownerMayWrite = 0200;
constexpr std::uint32_t anybodyMayWrite = 0222;

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
    const std::optional<double> seconds =
        bytes != nullptr ? realFromText(textOf(*bytes)) : std::nullopt;
    return seconds && std::isfinite(*seconds) ? std::optional(Date::fromSecondsSince1970(*seconds))
                                              : std::nullopt;
}

/// Of a link itself, never.
bool isLockedFile(const FileAttributes& file) {
    return file.isImmutable ||
           (file.kind != FileKind::Link && (file.permissions & ownerMayWrite) == 0);
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

/// Seconds by which the local time is ahead of GMT now.
double offsetFromGMT() {
    Clock& clock = Clock::current();
    const LocalTime local = clock.localTime();
    const std::chrono::year_month_day day{std::chrono::year(local.year),
                                          std::chrono::month(unsigned(local.month)),
                                          std::chrono::day(unsigned(local.day))};
    const double seconds = 86400.0 * double(std::chrono::sys_days(day).time_since_epoch().count()) +
                           double(local.hour * 3600 + local.minute * 60 + local.second);
    constexpr double minute = 60; // the two clocks were not asked at the same moment
    return std::round((seconds - clock.now().secondsSince1970()) / minute) * minute;
}

Date shifted(Date date, double seconds) { return Date(date.secondsSinceReferenceDate() + seconds); }

} // namespace

bool TavMacFileInfo::_cacheAttributes() {
    if (_attrs) {
        return true;
    }
    std::optional<FileAttributes> learned;
    if (_takeFileRef(learned) != Status::Success) {
        return false;
    }
    if (!learned) {
        const Result<FileAttributes> found = _ownAttributes();
        if (!found.ok()) {
            return false;
        }
        learned = found.value();
    }
    _attrs = std::make_unique<internal::CachedAttributes>(*learned);
    return true;
}

const Data* TavMacFileInfo::_extendedAttribute(std::string_view name) {
    return _cacheAttributes() ? _attrs->extended(_itsPath, name) : nullptr;
}

std::optional<Value> TavMacFileInfo::attribute(std::string_view key) {
    if (!_cacheAttributes()) {
        return std::nullopt;
    }
    const FileAttributes& file = _attrs->file;
    if (key == "NSFileSize") {
        return file.size;
    }
    if (key == "NSFileModificationDate") {
        return file.modificationDate;
    }
    if (key == "NSFileCreationDate") {
        const std::optional<Date> kept =
            dateFrom(_extendedAttribute(internal::creationDateAttribute));
        return kept ? *kept : file.creationDate.value_or(file.modificationDate);
    }
    if (key == "NSFileType") {
        return typeName(file.kind);
    }
    if (key == "NSFileImmutable") {
        return isLockedFile(file);
    }
    if (key == "NSFileExtensionHidden") {
        return _hidesExtension();
    }
    if (key == "NSFileHFSTypeCode" || key == "NSFileHFSCreatorCode") {
        const std::optional<std::uint32_t> code = codeFrom(_extendedAttribute(
            key == "NSFileHFSTypeCode" ? internal::typeAttribute : internal::creatorAttribute));
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

std::uint32_t TavMacFileInfo::_code(std::string_view attribute) {
    return codeFrom(_extendedAttribute(attribute)).value_or(noCode);
}

std::uint32_t TavMacFileInfo::typeCode() { return _code(internal::typeAttribute); }

std::uint32_t TavMacFileInfo::creatorCode() { return _code(internal::creatorAttribute); }

std::string TavMacFileInfo::typeCodeString() {
    if (!_cacheAttributes()) {
        return {};
    }
    const Data* bytes = _extendedAttribute(internal::typeAttribute);
    return '\'' + (codeFrom(bytes) ? std::string(textOf(*bytes)) : std::string()) + '\'';
}

bool TavMacFileInfo::_hidesExtension() {
    return _extendedAttribute(internal::hideExtensionAttribute) != nullptr;
}

bool TavMacFileInfo::isLocked() { return _cacheAttributes() && isLockedFile(_attrs->file); }

void TavMacFileInfo::setLocked(bool locked) {
    if (locked == isLocked()) {
        return;
    }
    if (_attrs && _attrs->file.kind != FileKind::Link) {
        // No other bits: FAT takes no others, and answers success when it drops them all.
        const std::uint32_t now = _attrs->file.permissions;
        static_cast<void>(FileSystem::current().setPermissions(
            path(), locked ? now & ~anybodyMayWrite : now | ownerMayWrite));
    }
    _attrs.reset();
}

void TavMacFileInfo::setHideExtension(bool hide) {
    // Through a link it would be what the link leads to.
    if (_cacheAttributes() && _attrs->file.kind != FileKind::Link) {
        FileSystem& files = FileSystem::current();
        const std::string own = path();
        static_cast<void>(
            hide ? files.setExtendedAttribute(own, internal::hideExtensionAttribute, bytesOf("1"))
                 : files.removeExtendedAttribute(own, internal::hideExtensionAttribute));
    }
    _attrs.reset();
}

std::optional<Date> TavMacFileInfo::modificationDate() {
    if (!_cacheAttributes()) {
        return std::nullopt;
    }
    const Date date = _attrs->file.modificationDate;
    return mustUseUTCDates() ? shifted(date, offsetFromGMT()) : date;
}

std::optional<Date> TavMacFileInfo::creationDate() {
    const std::optional<Value> value = attribute("NSFileCreationDate");
    if (!value) {
        return std::nullopt;
    }
    const Date date = *value->asDate();
    return mustUseUTCDates() ? shifted(date, offsetFromGMT()) : date;
}

void TavMacFileInfo::setModificationDate(std::optional<Date> date) {
    if (!date || !exists()) {
        return;
    }
    const std::string own = path();
    const Date kept = mustUseUTCDates() ? shifted(*date, -offsetFromGMT()) : *date;
    if (!FileSystem::current().setModificationDate(own, kept).isNone()) {
        internal::logVerbose("Failed to set the modification date for file \"%@\".", own);
    }
    refresh();
}

void TavMacFileInfo::setCreationDate(std::optional<Date> date) {
    if (!date || !exists()) {
        return;
    }
    const Date kept = mustUseUTCDates() ? shifted(*date, -offsetFromGMT()) : *date;
    // A link has no attributes of its own, and those of what it leads to are not meant.
    if (_cacheAttributes() && _attrs->file.kind != FileKind::Link) {
        static_cast<void>(internal::keepCreationDate(path(), kept));
    }
    refresh();
}

} // namespace tav
