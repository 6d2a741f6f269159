#pragma once

#include "base/Data.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct UConverter;

namespace tav::internal {

/// One of ICU's converters. Conversions stop at the first character or byte that has no
/// counterpart. One thread at a time.
class UnicodeConverter {
  public:
    /// By the name of ICU's table. With a name that ICU does not know nothing can be converted.
    explicit UnicodeConverter(const char* name);

    /// Nothing where a character cannot be represented.
    [[nodiscard]] std::optional<Data> encode(std::u16string_view units) const;
    /// Nothing where the bytes are not of this encoding.
    [[nodiscard]] std::optional<std::u16string> decode(BytesView bytes) const;

  private:
    struct Closing {
        void operator()(UConverter* converter) const;
    };
    std::unique_ptr<UConverter, Closing> converter_;
};

} // namespace tav::internal
