#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace tav {

class Value;

/// One argument of `format`. Made by conversion; refers to the caller's text or value.
class FormatArgument {
  public:
    using Content = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double,
                                 std::string_view, const Value*, const void*>;

    FormatArgument(std::nullptr_t) {}
    template <std::same_as<bool> T>
    FormatArgument(T value) : content_(value) {}
    template <std::signed_integral T>
    FormatArgument(T value) : content_(std::int64_t{value}) {}
    template <std::unsigned_integral T>
    requires(!std::same_as<T, bool>) FormatArgument(T value) : content_(std::uint64_t{value}) {}
    template <std::floating_point T>
    FormatArgument(T value) : content_(double(value)) {}
    FormatArgument(std::string_view text) : content_(text) {}
    FormatArgument(const std::string& text) : content_(std::string_view(text)) {}
    FormatArgument(const char* text) {
        if (text != nullptr) {
            content_ = std::string_view(text);
        }
    }
    FormatArgument(const std::optional<std::string>& text) {
        if (text) {
            content_ = std::string_view(*text);
        }
    }
    FormatArgument(const Value& value) : content_(&value) {}
    FormatArgument(const Value* value) {
        if (value != nullptr) {
            content_ = value;
        }
    }
    explicit FormatArgument(const void* pointer) : content_(pointer) {}

    [[nodiscard]] const Content& content() const { return content_; }

  private:
    Content content_;
};

/// `format` with the arguments in a list.
[[nodiscard]] std::string formatWithArguments(std::string_view form,
                                              std::span<const FormatArgument> arguments);
/// The same without a copy where one argument alone is the text; `storage` holds what had to be
/// made.
[[nodiscard]] std::string_view formatWithArguments(std::string_view form,
                                                   std::span<const FormatArgument> arguments,
                                                   std::string& storage);

/// The text of a printf form: `format("Couldn't remove \"%@\".", path)`.
///
/// Conversions are those of printf (`%d %i %u %x %X %o %c %s %f %F %e %E %g %G %a %A %p %%`, with
/// flags, width, precision, `*` and length letters), and "%@" for any argument as an object reads:
/// texts as they are, numbers in decimal, values by their description, nil as "(null)". "%C" is one
/// unit of UTF-16. Arguments know their own types, so a form that does not fit them is never
/// undefined: a missing argument reads "(null)", a text under "%d" is 0. As in C, integers without
/// a length letter are those of `int`, so "%d" of a wider one has its low 32 bits. Arguments may be
/// taken by position ("%2$@"). Width and precision count units of UTF-16 under "%@" and bytes under
/// "%s"; each is at most 65536, and all padding of a text at most 1 MiB. What is no conversion
/// stands as it is. The locale plays no part. Always called as `tav::format`.
template <class... Arguments>
[[nodiscard]] std::string format(std::string_view form, const Arguments&... arguments) {
    if constexpr (sizeof...(Arguments) == 0) {
        return formatWithArguments(form, {});
    } else {
        const FormatArgument list[] = {FormatArgument(arguments)...};
        return formatWithArguments(form, list);
    }
}

} // namespace tav
