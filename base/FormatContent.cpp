#include "base/FormatContent.hpp"

#include "base/FormatNumber.hpp"
#include "base/NumberText.hpp"
#include "base/Value.hpp"

#include <cstddef>
#include <optional>
#include <variant>

namespace tav::internal {

namespace {

template <class... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

std::int64_t integerOf(const Value& value) {
    if (!value.isNumber()) {
        return 0;
    }
    if (const std::optional<std::uint64_t> wide = value.asUnsigned()) {
        return static_cast<std::int64_t>(*wide); // the same bits
    }
    return value.longLongValue();
}

} // namespace

std::int64_t integerOf(const FormatArgument& argument) {
    return std::visit(
        Overloaded{[](std::monostate) { return std::int64_t{0}; },
                   [](bool flag) { return std::int64_t{flag}; },
                   [](std::int64_t number) { return number; },
                   [](std::uint64_t number) { return static_cast<std::int64_t>(number); },
                   [](double number) { return Value(number).longLongValue(); },
                   [](std::string_view) { return std::int64_t{0}; },
                   [](const Value* value) { return integerOf(*value); },
                   [](const void* pointer) {
                       return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(pointer));
                   }},
        argument.content());
}

double realOf(const FormatArgument& argument) {
    if (const auto* number = std::get_if<double>(&argument.content())) {
        return *number;
    }
    if (const auto* number = std::get_if<std::uint64_t>(&argument.content())) {
        return static_cast<double>(*number);
    }
    if (const auto* value = std::get_if<const Value*>(&argument.content())) {
        return (*value)->isNumber() ? (*value)->doubleValue() : 0;
    }
    return static_cast<double>(integerOf(argument));
}

std::uintptr_t addressOf(const FormatArgument& argument) {
    if (const auto* value = std::get_if<const Value*>(&argument.content())) {
        return reinterpret_cast<std::uintptr_t>(*value);
    }
    if (const auto* text = std::get_if<std::string_view>(&argument.content())) {
        return reinterpret_cast<std::uintptr_t>(text->data());
    }
    return static_cast<std::uintptr_t>(integerOf(argument));
}

std::string pointerText(std::uintptr_t address) {
    FormatLayout layout;
    layout.letter = 'x';
    return "0x" + formattedUnsigned(layout, address).head;
}

std::string_view objectText(const FormatArgument& argument, std::string& storage) {
    return std::visit(
        Overloaded{
            [](std::monostate) { return nilText; },
            [](bool flag) { return std::string_view(flag ? "1" : "0"); },
            [&](std::int64_t number) -> std::string_view {
                return storage = std::to_string(number);
            },
            [&](std::uint64_t number) -> std::string_view {
                return storage = std::to_string(number);
            },
            [&](double number) -> std::string_view {
                storage.clear();
                appendReal(storage, number);
                return storage;
            },
            [](std::string_view text) { return text; },
            [&](const Value* value) -> std::string_view { return storage = value->description(); },
            [&](const void* pointer) -> std::string_view {
                return storage = pointerText(reinterpret_cast<std::uintptr_t>(pointer));
            }},
        argument.content());
}

} // namespace tav::internal
