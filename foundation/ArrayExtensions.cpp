#include "foundation/ArrayExtensions.hpp"

#include "base/KeyedArchiver.hpp"
#include "base/KeyedUnarchiver.hpp"
#include "base/Unicode.hpp"

#include <string_view>
#include <utility>

namespace tav {

namespace {

// The text of an element, null for anything else.
const std::string* textOfElement(const std::string& element) { return &element; }
const std::string* textOfElement(const Value& element) { return element.asString(); }

bool equalTexts(std::string_view a, std::string_view b) { return equalsIgnoringCase(a, b); }

std::string_view withoutLeadingSlash(std::string_view path) {
    path.remove_prefix(path.starts_with('/') ? 1 : 0);
    return path;
}

// One slash in front is the same whether it stood there or was put there.
bool equalPaths(std::string_view a, std::string_view b) {
    return equalsIgnoringCase(withoutLeadingSlash(a), withoutLeadingSlash(b));
}

template <class Element, class Equal>
std::ptrdiff_t indexOf(const std::vector<Element>& array, OptionalText wanted, Equal equal) {
    if (wanted.isNil() || (*wanted).empty()) {
        return -1;
    }
    const auto found = std::find_if(array.begin(), array.end(), [&](const Element& element) {
        const std::string* text = textOfElement(element);
        return text != nullptr && equal(*text, *wanted);
    });
    return found == array.end() ? -1 : found - array.begin();
}

template <class Element>
bool containsAllStrings(const std::vector<Element>& array, const std::vector<Element>& other) {
    if (other.empty() || other.size() > array.size()) {
        return false;
    }
    std::vector<std::string> forms;
    for (const Element& element : array) {
        if (const std::string* text = textOfElement(element)) {
            forms.push_back(caselessForm(*text));
        }
    }
    std::sort(forms.begin(), forms.end());
    return std::all_of(other.begin(), other.end(), [&](const Element& element) {
        const std::string* text = textOfElement(element);
        return text == nullptr || (!text->empty() && std::binary_search(forms.begin(), forms.end(),
                                                                        caselessForm(*text)));
    });
}

// Texts, of which there may be many, are looked up; anything else is compared with each.
template <class Element>
bool containsAllValues(const std::vector<Element>& array, const std::vector<Element>& other) {
    if (array.size() != other.size()) {
        return false;
    }
    std::vector<std::string_view> texts;
    std::vector<const Element*> rest;
    for (const Element& element : other) {
        if (const std::string* text = textOfElement(element)) {
            texts.emplace_back(*text);
        } else {
            rest.push_back(&element);
        }
    }
    std::sort(texts.begin(), texts.end());
    return std::all_of(array.begin(), array.end(), [&](const Element& element) {
        if (const std::string* text = textOfElement(element)) {
            return std::binary_search(texts.begin(), texts.end(), std::string_view(*text));
        }
        return std::any_of(rest.begin(), rest.end(),
                           [&](const Element* one) { return *one == element; });
    });
}

} // namespace

std::ptrdiff_t indexOfString(const std::vector<std::string>& array, OptionalText string) {
    return indexOf(array, string, equalTexts);
}

std::ptrdiff_t indexOfString(const Value::Array& array, OptionalText string) {
    return indexOf(array, string, equalTexts);
}

bool containsString(const std::vector<std::string>& array, OptionalText string) {
    return indexOfString(array, string) >= 0;
}

bool containsString(const Value::Array& array, OptionalText string) {
    return indexOfString(array, string) >= 0;
}

bool containsFilenameString(const std::vector<std::string>& array, OptionalText filename) {
    return containsString(array, filename);
}

bool containsFilenameString(const Value::Array& array, OptionalText filename) {
    return containsString(array, filename);
}

std::ptrdiff_t indexOfPathString(const std::vector<std::string>& array, OptionalText path) {
    return indexOf(array, path, equalPaths);
}

std::ptrdiff_t indexOfPathString(const Value::Array& array, OptionalText path) {
    return indexOf(array, path, equalPaths);
}

bool containsPathString(const std::vector<std::string>& array, OptionalText path) {
    return indexOfPathString(array, path) >= 0;
}

bool containsPathString(const Value::Array& array, OptionalText path) {
    return indexOfPathString(array, path) >= 0;
}

bool containsStrings(const std::vector<std::string>& array, const std::vector<std::string>& other) {
    return containsAllStrings(array, other);
}

bool containsStrings(const Value::Array& array, const Value::Array& other) {
    return containsAllStrings(array, other);
}

bool containsSameValues(const std::vector<std::string>& array,
                        const std::vector<std::string>& other) {
    return containsAllValues(array, other);
}

bool containsSameValues(const Value::Array& array, const Value::Array& other) {
    return containsAllValues(array, other);
}

bool containsNumber(const Value::Array& array, const Value& number) {
    return number.isNumber() && std::any_of(array.begin(), array.end(), [&](const Value& element) {
               return element.isNumber() && element == number;
           });
}

Data internal::archiveOfElement(const Coding* element) {
    if (element == nullptr) {
        throw Exception(KeyedArchiver::invalidArchiveOperation, "An array has no null to archive.");
    }
    return archivedDataWithRootObject(element);
}

std::shared_ptr<Coding> internal::elementFromArchive(BytesView archive) {
    Archived element = unarchiveObjectWithData(archive);
    auto* object = std::get_if<std::shared_ptr<Coding>>(&element);
    return object == nullptr ? nullptr : std::move(*object);
}

void internal::failForElementOfOtherClass() {
    throw Exception(KeyedUnarchiver::invalidUnarchiveOperation,
                    "An archive holds something else than the array is of.");
}

Value::Array dataArray(const Value::Array& array) {
    Value::Array archives;
    archives.reserve(array.size());
    for (const Value& element : array) {
        archives.emplace_back(archivedDataWithRootObject(element));
    }
    return archives;
}

Value::Array arrayWithDataArray(const Value::Array& archives) {
    Value::Array array;
    array.reserve(archives.size());
    for (const Value& archive : archives) {
        const Data* bytes = archive.asData();
        if (bytes == nullptr) {
            throw Exception(KeyedUnarchiver::invalidUnarchiveOperation,
                            "An element is no archive, since it is not bytes.");
        }
        Archived element = unarchiveObjectWithData(*bytes);
        Value* value = std::get_if<Value>(&element);
        if (value == nullptr) {
            internal::failForElementOfOtherClass();
        }
        array.push_back(std::move(*value));
    }
    return array;
}

} // namespace tav
