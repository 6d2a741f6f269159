#include "fileinfo/local/CachedAttributes.hpp"

#include "base/NumberText.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <system_error>
#include <utility>

namespace tav {

namespace {
/// Whole seconds up to this are exact, however they are counted.
constexpr double largestExactWhole = 1e15;
} // namespace

std::optional<Data> internal::ownExtendedAttribute(const FileAttributes& file,
                                                   std::string_view path, std::string_view name) {
    // Pipes, sockets and devices have none of the user's.
    if (file.kind != FileKind::Regular && file.kind != FileKind::Folder) {
        return std::nullopt;
    }
    Result<Data> value = FileSystem::current().extendedAttribute(path, name);
    return value.ok() ? std::optional(std::move(value).value()) : std::nullopt;
}

std::optional<std::string> internal::creationDateText(Date date) {
    if (!std::isfinite(date.secondsSince1970())) {
        return std::nullopt;
    }
    // The fraction by itself: counted from 1970 the number is larger, and has less room for it.
    const double whole = std::floor(date.secondsSinceReferenceDate());
    const double whole1970 = whole + Date::secondsFrom1970To2001;
    std::array<char, 32> fraction{};
    const auto [end, error] =
        std::to_chars(fraction.data(), fraction.data() + fraction.size(),
                      date.secondsSinceReferenceDate() - whole, std::chars_format::fixed);
    std::string text;
    if (error != std::errc() || whole1970 < 0 || whole1970 > largestExactWhole) {
        appendReal(text, date.secondsSince1970());
    } else {
        text = std::to_string(static_cast<std::int64_t>(whole1970));
        text.append(fraction.data() + 1, end); // without the 0 before the point
    }
    return text;
}

std::optional<Date> internal::creationDateFrom(std::string_view text) {
    const std::optional<double> seconds = realFromText(text);
    if (!seconds || !std::isfinite(*seconds)) {
        return std::nullopt;
    }
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos || text.find_first_of("eE") != std::string_view::npos) {
        return Date::fromSecondsSince1970(*seconds);
    }
    const auto whole = realFromText(text.substr(0, point));
    const auto fraction = realFromText('0' + std::string(text.substr(point)));
    if (!whole || !fraction) {
        return Date::fromSecondsSince1970(*seconds);
    }
    return Date(*whole - Date::secondsFrom1970To2001 +
                (text.starts_with('-') ? -*fraction : *fraction));
}

SystemError internal::keepCreationDate(std::string_view path, Date date) {
    const std::optional<std::string> text = creationDateText(date);
    return text ? FileSystem::current().setExtendedAttribute(path, creationDateAttribute,
                                                             bytesOf(*text))
                : SystemError(EINVAL);
}

std::size_t internal::CachedAttributes::indexOf(std::string_view name) {
    constexpr std::array<std::string_view, 4> names = {
        typeAttribute, creatorAttribute, hideExtensionAttribute, creationDateAttribute};
    if (!answers_) {
        answers_ = std::make_unique<Answers>();
    }
    return static_cast<std::size_t>(std::distance(names.begin(), std::ranges::find(names, name)));
}

void internal::CachedAttributes::learnExtended(std::string_view name, std::optional<Data> value) {
    const std::size_t index = indexOf(name);
    if (!answers_->asked.at(index)) {
        answers_->asked.at(index) = true;
        answers_->values.at(index) = std::move(value);
    }
}

const Data* internal::CachedAttributes::extended(std::string_view path, std::string_view name) {
    const std::size_t index = indexOf(name);
    if (!answers_->asked.at(index)) {
        answers_->asked.at(index) = true;
        answers_->values.at(index) = ownExtendedAttribute(file, path, name);
    }
    const std::optional<Data>& value = answers_->values.at(index);
    return value ? &*value : nullptr;
}

} // namespace tav
