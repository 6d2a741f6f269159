#pragma once

#include "base/TextSearch.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tav::internal {

/// A text in the form in which a search compares: units that are equal where the search takes
/// characters for equal, and which places between them are places of the text, too.
struct SearchForm {
    /// A place where one may begin or end, in the form and in the text.
    struct Boundary {
        std::uint32_t inForm = 0;
        std::uint32_t inText = 0;
    };

    /// Finds places of the text for rising places of the form.
    class Cursor {
      public:
        explicit Cursor(const SearchForm& form) : boundaries_(&form.boundaries) {}
        /// The last or first place of the text at a place of the form; nothing in a sequence's
        /// middle. More than one lies there where sequences have nothing that is compared.
        [[nodiscard]] std::optional<std::size_t> lastAt(std::size_t place);
        [[nodiscard]] std::optional<std::size_t> firstAt(std::size_t place);

      private:
        const std::vector<Boundary>* boundaries_;
        std::size_t at_ = 0;
    };

    std::u16string units;
    /// Rising; one at the beginning, one behind each sequence.
    std::vector<Boundary> boundaries;
};

/// The form of the whole sequences in a range, which lies in the text. The places of the text count
/// from the text's beginning.
[[nodiscard]] SearchForm searchForm(std::u16string_view text, TextRange range, unsigned options);

/// The form in which `compare` compares units.
[[nodiscard]] std::u16string comparisonForm(std::u16string units, unsigned options);

} // namespace tav::internal
