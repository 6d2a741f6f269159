// Attributes, codes and dates.

#include "fileinfo/local/AttributeValues.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/Clock.hpp"

#include <chrono>
#include <cmath>

namespace tav {

namespace {

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
    return internal::attributeValue(*_attrs, _itsPath, key);
}

std::uint32_t TavMacFileInfo::_code(std::string_view attribute) {
    return internal::codeValue(_cacheAttributes() ? _attrs.get() : nullptr, _itsPath, attribute);
}

std::uint32_t TavMacFileInfo::typeCode() { return _code(internal::typeAttribute); }

std::uint32_t TavMacFileInfo::creatorCode() { return _code(internal::creatorAttribute); }

std::string TavMacFileInfo::typeCodeString() {
    return _cacheAttributes() ? internal::typeCodeText(*_attrs, _itsPath) : std::string();
}

bool TavMacFileInfo::_hidesExtension() {
    return _extendedAttribute(internal::hideExtensionAttribute) != nullptr;
}

bool TavMacFileInfo::isLocked() {
    return _cacheAttributes() && internal::isLockedFile(_attrs->file);
}

void TavMacFileInfo::setLocked(bool locked) {
    if (locked == isLocked()) {
        return;
    }
    if (_attrs) {
        const FileAttributes own = _attrs->file;
        internal::changeOwnAttribute(path(), own, "NSFileImmutable", locked);
    }
    _attrs.reset();
}

void TavMacFileInfo::setHideExtension(bool hide) {
    if (_cacheAttributes()) {
        const FileAttributes own = _attrs->file;
        internal::changeOwnAttribute(path(), own, "NSFileExtensionHidden", hide);
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
    const std::optional<std::string> now = date ? _pathOfExisting() : std::nullopt;
    if (!now) {
        return;
    }
    internal::changeModificationDate(*now,
                                     mustUseUTCDates() ? shifted(*date, -offsetFromGMT()) : *date);
    refresh();
}

void TavMacFileInfo::setCreationDate(std::optional<Date> date) {
    if (!date) {
        return;
    }
    const bool wereKnown = _attrs != nullptr;
    const bool areKnown = _cacheAttributes();
    if (!_fileRefValid) {
        return;
    }
    if (areKnown) {
        // Attributes that were just learned were learned where the file is. Finding it elsewhere
        // forgets them.
        const FileAttributes own = _attrs->file;
        internal::changeOwnAttribute(wereKnown ? path() : _itsPath, own, "NSFileCreationDate",
                                     mustUseUTCDates() ? shifted(*date, -offsetFromGMT()) : *date);
    }
    refresh();
}

} // namespace tav
