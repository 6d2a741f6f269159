// An Info.plist of any bytes: reading it and asking for the identifier never does harm.

#include "base/PropertyList.hpp"

#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace tav;
    const auto value = PropertyList::read(std::as_bytes(std::span(bytes, size)), nullptr);
    const Value::Dictionary* info = value ? value->asDictionary() : nullptr;
    if (info == nullptr) {
        return 0;
    }
    const Value* identifier = info->find("CFBundleIdentifier");
    const std::string* text = info->findString("CFBundleIdentifier");
    if (text != nullptr && (identifier == nullptr || identifier->description() != *text)) {
        std::abort();
    }
    for (const auto& [key, entry] : *info) {
        if (info->find(key) != &entry) {
            std::abort();
        }
        static_cast<void>(entry.boolValue());
        static_cast<void>(entry.intValue());
        static_cast<void>(entry.doubleValue());
    }
    return 0;
}
