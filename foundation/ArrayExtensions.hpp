#pragma once

#include "base/Data.hpp"
#include "base/Exception.hpp"
#include "base/KeyedCoding.hpp"
#include "base/OptionalText.hpp"
#include "base/Value.hpp"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// Operations on arrays. Every test passes over elements that are no texts (or no numbers).
/// "Ignoring case" is canonical caseless matching. Positions count from 0; -1 is none.
namespace tav {

/// The first text that equals the text ignoring case; -1 for a text that is nil or empty.
[[nodiscard]] std::ptrdiff_t indexOfString(const std::vector<std::string>& array,
                                           OptionalText string);
[[nodiscard]] std::ptrdiff_t indexOfString(const Value::Array& array, OptionalText string);
[[nodiscard]] bool containsString(const std::vector<std::string>& array, OptionalText string);
[[nodiscard]] bool containsString(const Value::Array& array, OptionalText string);
/// The same as `containsString`, for names of files.
[[nodiscard]] bool containsFilenameString(const std::vector<std::string>& array,
                                          OptionalText filename);
[[nodiscard]] bool containsFilenameString(const Value::Array& array, OptionalText filename);

/// As `indexOfString`, but each side that has no leading slash gets one first: "a/b" is "/A/B".
[[nodiscard]] std::ptrdiff_t indexOfPathString(const std::vector<std::string>& array,
                                               OptionalText path);
[[nodiscard]] std::ptrdiff_t indexOfPathString(const Value::Array& array, OptionalText path);
[[nodiscard]] bool containsPathString(const std::vector<std::string>& array, OptionalText path);
[[nodiscard]] bool containsPathString(const Value::Array& array, OptionalText path);

/// Whether the other array is not empty, has no more elements than this one, and each of its texts
/// is in this one ignoring case. An empty text never is; an array of other things always is.
[[nodiscard]] bool containsStrings(const std::vector<std::string>& array,
                                   const std::vector<std::string>& other);
[[nodiscard]] bool containsStrings(const Value::Array& array, const Value::Array& other);

/// Whether the arrays have as many elements and each element of this one is in the other. How often
/// it is there does not matter, so [a, a, b] has the values of [a, b, b], and [a, a] those of
/// [a, b], though not the other way round.
[[nodiscard]] bool containsSameValues(const std::vector<std::string>& array,
                                      const std::vector<std::string>& other);
[[nodiscard]] bool containsSameValues(const Value::Array& array, const Value::Array& other);

/// Whether a number of that value is in the array, whatever its type; no for what is no number.
[[nodiscard]] bool containsNumber(const Value::Array& array, const Value& number);

/// Whether the very object is an element; no for null.
template <class T>
[[nodiscard]] bool containsObjectIdenticalTo(const std::vector<std::shared_ptr<T>>& array,
                                             const void* object) {
    return object != nullptr &&
           std::any_of(array.begin(), array.end(), [&](const std::shared_ptr<T>& element) {
               return static_cast<const void*>(element.get()) == object;
           });
}
template <class T, class U>
[[nodiscard]] bool containsObjectIdenticalTo(const std::vector<std::shared_ptr<T>>& array,
                                             const std::shared_ptr<U>& object) {
    const T* address = object.get();
    return containsObjectIdenticalTo(array, static_cast<const void*>(address));
}

/// Puts the elements of the other array, which may be the same one, in their order before the
/// element at the index, or behind all when the index is the count. Throws `Exception` and changes
/// nothing when it is more.
template <class T>
void insertObjectsFromArray(std::vector<T>& array, const std::vector<T>& other, std::size_t index) {
    if (index > array.size()) {
        throw Exception("RangeException", "There is no such index to insert at.");
    }
    const std::vector<T> copy(other);
    array.insert(array.begin() + static_cast<std::ptrdiff_t>(index), copy.begin(), copy.end());
}

namespace internal {
Data archiveOfElement(const Coding* element);
std::shared_ptr<Coding> elementFromArchive(BytesView archive);
[[noreturn]] void failForElementOfOtherClass();
} // namespace internal

/// Each element as a keyed archive of its own, in their order; an object that stands in two
/// elements is two objects afterwards. Throws `Exception` as `KeyedArchiver` does, and for null,
/// which could not be read again.
template <std::derived_from<Coding> T>
[[nodiscard]] std::vector<Data> dataArray(const std::vector<std::shared_ptr<T>>& array) {
    std::vector<Data> archives;
    archives.reserve(array.size());
    for (const std::shared_ptr<T>& element : array) {
        archives.push_back(internal::archiveOfElement(element.get()));
    }
    return archives;
}
/// The same for values; the archives are bytes.
[[nodiscard]] Value::Array dataArray(const Value::Array& array);

/// The inverse: what each keyed archive holds. Throws `Exception`, named as `KeyedUnarchiver` names
/// it, when one cannot be read or holds anything else than an object of class T: nil, which no
/// array of the platform takes, a value, or an object of another class. There is no array then.
template <std::derived_from<Coding> T = Coding>
[[nodiscard]] std::vector<std::shared_ptr<T>>
arrayWithDataArray(const std::vector<Data>& archives) {
    std::vector<std::shared_ptr<T>> array;
    array.reserve(archives.size());
    for (const Data& archive : archives) {
        array.push_back(std::dynamic_pointer_cast<T>(internal::elementFromArchive(archive)));
        if (array.back() == nullptr) {
            internal::failForElementOfOtherClass();
        }
    }
    return array;
}
/// The same for values: each element has to be bytes and to hold a value.
[[nodiscard]] Value::Array arrayWithDataArray(const Value::Array& archives);

} // namespace tav
