#include "fileinfo/local/CachedAttributes.hpp"

#include "base/NumberText.hpp"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <iterator>
#include <utility>

namespace tav {

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
    std::string text;
    appendReal(text, date.secondsSince1970());
    return text;
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
