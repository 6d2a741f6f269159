#include "fileinfo/local/FileCreation.hpp"

#include "fileinfo/local/CachedAttributes.hpp"
#include "platform/FileSystem.hpp"

#include <array>
#include <cstdint>

namespace tav::internal {

namespace {

constexpr std::uint32_t usualPermissions = 0666;
constexpr std::uint32_t permissionBits = 07777;
constexpr std::uint32_t accessBits = 0777;
constexpr std::uint32_t ownerMayReadAndWrite = 0600;
constexpr std::uint32_t ownerMayWrite = 0200;
constexpr std::uint32_t anybodyMayWrite = 0222;

const Value* numberIn(const Value::Dictionary& attributes, std::string_view key) {
    const Value* value = attributes.find(key);
    return value != nullptr && value->isNumber() ? value : nullptr;
}

const Date* dateIn(const Value::Dictionary& attributes, std::string_view key) {
    const Value* value = attributes.find(key);
    return value != nullptr ? value->asDate() : nullptr;
}

/// Those that a new file is made with: nobody may do more with it than in the end, and its owner
/// may still give it the rest of its attributes.
std::uint32_t firstPermissions(const Value::Dictionary* attributes) {
    const Value* wanted =
        attributes != nullptr ? numberIn(*attributes, "NSFilePosixPermissions") : nullptr;
    return wanted == nullptr ? usualPermissions
                             : (static_cast<std::uint32_t>(wanted->intValue()) & accessBits) |
                                   ownerMayReadAndWrite;
}

SystemError writeNewFile(std::string_view path, BytesView contents, std::uint32_t permissions) {
    OpenOptions options;
    options.write = true;
    options.create = true;
    options.mustBeNew = true;
    options.permissions = permissions;
    const auto file = FileSystem::current().open(path, options);
    if (!file.ok()) {
        return file.error();
    }
    const SystemError error = contents.empty() ? SystemError() : file.value()->write(contents);
    const SystemError closed = file.value()->close();
    return error.isNone() ? closed : error;
}

/// The attributes of one file, changed one after the other.
class AttributeChange {
  public:
    AttributeChange(std::string_view path, const Value::Dictionary& attributes)
        : path_(path), attributes_(attributes) {}

    SystemError run() {
        // The right to write goes last: the others need it.
        setCode("NSFileHFSTypeCode", typeAttribute);
        setCode("NSFileHFSCreatorCode", creatorAttribute);
        hideExtension();
        if (const Date* date = dateIn(attributes_, "NSFileCreationDate")) {
            note(keepCreationDate(path_, *date));
        }
        if (const Date* date = dateIn(attributes_, "NSFileModificationDate")) {
            note(FileSystem::current().setModificationDate(path_, *date));
        }
        setPermissions();
        return first_;
    }

  private:
    void note(SystemError error) {
        if (first_.isNone()) {
            first_ = error;
        }
    }

    void setCode(std::string_view key, std::string_view attribute) {
        const Value* value = numberIn(attributes_, key);
        if (value == nullptr) {
            return;
        }
        const auto code = static_cast<std::uint32_t>(value->intValue());
        const std::array<std::byte, 4> bytes = {std::byte(code >> 24U), std::byte(code >> 16U),
                                                std::byte(code >> 8U), std::byte(code)};
        note(FileSystem::current().setExtendedAttribute(path_, attribute, bytes));
    }

    void hideExtension() {
        const Value* hidden = numberIn(attributes_, "NSFileExtensionHidden");
        if (hidden == nullptr) {
            return;
        }
        FileSystem& files = FileSystem::current();
        if (hidden->boolValue()) {
            note(files.setExtendedAttribute(path_, hideExtensionAttribute, bytesOf("1")));
        } else if (files.extendedAttribute(path_, hideExtensionAttribute).ok()) {
            note(files.removeExtendedAttribute(path_, hideExtensionAttribute));
        }
    }

    void setPermissions() {
        const Value* wanted = numberIn(attributes_, "NSFilePosixPermissions");
        const Value* locked = numberIn(attributes_, "NSFileImmutable");
        if (wanted == nullptr && locked == nullptr) {
            return;
        }
        FileSystem& files = FileSystem::current();
        std::uint32_t permissions = 0;
        if (wanted != nullptr) {
            permissions = static_cast<std::uint32_t>(wanted->intValue()) & permissionBits;
        } else {
            const auto now = files.targetAttributes(path_);
            if (!now.ok()) {
                note(now.error());
                return;
            }
            permissions = now.value().permissions;
        }
        if (locked != nullptr) {
            permissions =
                locked->boolValue() ? permissions & ~anybodyMayWrite : permissions | ownerMayWrite;
        }
        note(files.setPermissions(path_, permissions));
    }

    std::string_view path_;
    const Value::Dictionary& attributes_;
    SystemError first_;
};

} // namespace

SystemError createFileAtPath(std::string_view path, BytesView contents,
                             const Value::Dictionary* attributes, Existing existing) {
    const std::uint32_t permissions = firstPermissions(attributes);
    const SystemError error = existing == Existing::Refused
                                  ? writeNewFile(path, contents, permissions)
                                  : FileSystem::current().writeFile(path, contents, permissions);
    return error.isNone() && attributes != nullptr ? changeFileAttributes(path, *attributes)
                                                   : error;
}

SystemError changeFileAttributes(std::string_view path, const Value::Dictionary& attributes) {
    return AttributeChange(path, attributes).run();
}

} // namespace tav::internal
