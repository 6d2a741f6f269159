// What files in memory carry in extended attributes.

#include "platform/memory/MemoryFileSystem.hpp"

#include <cerrno>
#include <string>
#include <vector>

namespace tav {

namespace {

constexpr std::size_t longestAttributeName = 255;

} // namespace

/// Why no file system takes it for the name of an extended attribute.
SystemError MemoryFileSystem::errorOfText(std::string_view name) {
    if (name.find('\0') != std::string_view::npos) {
        return SystemError(EINVAL);
    }
    return name.empty() || name.size() > longestAttributeName ? SystemError(ERANGE) : SystemError();
}

/// Why nothing here can have an extended attribute of such a name.
SystemError MemoryFileSystem::errorOfAttributeName(std::string_view name) const {
    constexpr std::string_view ofUsers = "user.";
    if (const SystemError error = errorOfText(name); !error.isNone()) {
        return error;
    }
    if (!keepsExtendedAttributes || !name.starts_with(ofUsers)) {
        return SystemError(ENOTSUP);
    }
    return name == ofUsers ? SystemError(EINVAL) : SystemError();
}

/// The node, or why it has no attributes of such a name.
Result<MemoryNode*> MemoryFileSystem::findWithAttributes(std::string_view path,
                                                         std::string_view name) {
    // Before the path is looked at.
    if (const SystemError error = errorOfText(name); !error.isNone()) {
        return error;
    }
    const auto place = findExisting(path, Last::Target);
    if (!place.ok()) {
        return place.error();
    }
    const SystemError error = errorOfAttributeName(name);
    return error.isNone() ? Result(place.value().node) : error;
}

Result<Data> MemoryFileSystem::attributeOf(const MemoryNode& node, std::string_view name) {
    const auto found = node.extendedAttributes.find(name);
    return found == node.extendedAttributes.end() ? Result<Data>(SystemError(ENODATA))
                                                  : Result(found->second);
}

SystemError MemoryFileSystem::setAttribute(MemoryNode& node, std::string_view name,
                                           BytesView value) {
    if (const SystemError error = errorOfChange(node); !error.isNone()) {
        return error;
    }
    node.extendedAttributes[std::string(name)].assign(value.begin(), value.end());
    node.attributes.changeDate = takeTime();
    return {};
}

Result<Data> MemoryFileSystem::extendedAttribute(std::string_view path, std::string_view name) {
    note("extendedAttribute", std::string(path) + " " + std::string(name));
    const auto node = findWithAttributes(path, name);
    if (!node.ok()) {
        return node.error();
    }
    return attributeOf(*node.value(), name);
}

SystemError MemoryFileSystem::setExtendedAttribute(std::string_view path, std::string_view name,
                                                   BytesView value) {
    note("setExtendedAttribute", std::string(path) + " " + std::string(name));
    if (value.size() > largestAttribute) {
        return SystemError(E2BIG);
    }
    const auto node = findWithAttributes(path, name);
    return node.ok() ? setAttribute(*node.value(), name, value) : node.error();
}

Result<std::vector<std::string>> MemoryFileSystem::extendedAttributeNames(std::string_view path) {
    note("extendedAttributeNames", path);
    const auto node = findExisting(path, Last::Target);
    if (!node.ok()) {
        return node.error();
    }
    std::vector<std::string> names;
    for (const auto& [name, value] : node.value().node->extendedAttributes) {
        names.push_back(name);
    }
    return names;
}

SystemError MemoryFileSystem::removeExtendedAttribute(std::string_view path,
                                                      std::string_view name) {
    note("removeExtendedAttribute", std::string(path) + " " + std::string(name));
    const auto node = findWithAttributes(path, name);
    if (!node.ok()) {
        return node.error();
    }
    if (const SystemError error = errorOfChange(*node.value()); !error.isNone()) {
        return error;
    }
    if (node.value()->extendedAttributes.erase(std::string(name)) == 0) {
        return SystemError(ENODATA);
    }
    node.value()->attributes.changeDate = takeTime();
    return {};
}

} // namespace tav
