#include "base/AttributedString.hpp"

#include "base/Exception.hpp"
#include "base/Unicode.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tav {
namespace {

using SharedAttributes = AttributedString::SharedAttributes;
using Range = AttributedString::Range;

const Attributes& contentOf(const SharedAttributes& attributes) {
    static const Attributes none;
    return attributes ? *attributes : none;
}

SharedAttributes shared(Attributes attributes) {
    return attributes.empty() ? nullptr : std::make_shared<const Attributes>(std::move(attributes));
}

bool equal(const SharedAttributes& a, const SharedAttributes& b) {
    return a == b || contentOf(a) == contentOf(b);
}

const Attribute* find(const SharedAttributes& attributes, std::string_view name) {
    const Attributes& content = contentOf(attributes);
    const auto found = content.find(name);
    return found == content.end() ? nullptr : &found->second;
}

bool equal(const Attribute* a, const Attribute* b) {
    return a == b || (a != nullptr && b != nullptr && *a == *b);
}

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80; }

/// The beginning of the character that a place lies in.
std::size_t characterBegin(std::string_view text, std::size_t place) {
    if (place >= text.size()) {
        return text.size();
    }
    std::size_t begin = place;
    while (begin > 0 && place - begin < 3 && isContinuation(text[begin])) {
        --begin;
    }
    if (begin == place) {
        return place;
    }
    const auto lead = static_cast<unsigned char>(text[begin]);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    const bool inside = begin + length > place && isValidUTF8(text.substr(begin, length));
    return inside ? begin : place;
}

std::size_t unitsBefore(std::string_view text, std::size_t place) {
    return utf16Length(text.substr(0, characterBegin(text, place)));
}

std::size_t bytesBefore(std::u16string_view units, std::size_t place) {
    place = std::min(place, units.size());
    const bool isInPair = place > 0 && place < units.size() && (units[place] & 0xFC00U) == 0xDC00 &&
                          (units[place - 1] & 0xFC00U) == 0xD800;
    return bytesFromUTF16(units.substr(0, isInPair ? place - 1 : place)).size();
}

std::size_t saturatedEnd(Range range) {
    const std::size_t end = range.end();
    return end < range.location ? std::string::npos : end;
}

} // namespace

AttributedString::AttributedString(std::string_view text, Attributes attributes) {
    append(text, shared(std::move(attributes)));
}

void AttributedString::check(Range range) const {
    if (range.location > text_.size() || range.length > text_.size() - range.location) {
        throw std::out_of_range("a range behind the end of an attributed string");
    }
}

std::size_t AttributedString::runAt(std::size_t location) const {
    const auto found =
        std::upper_bound(runs_.begin(), runs_.end(), location,
                         [](std::size_t place, const Run& run) { return place < run.end; });
    return static_cast<std::size_t>(found - runs_.begin());
}

std::size_t AttributedString::beginOf(std::size_t run) const {
    return run == 0 ? 0 : runs_[run - 1].end;
}

const Attributes& AttributedString::attributesAt(std::size_t location,
                                                 Range* effectiveRange) const {
    check({location, 1});
    const std::size_t run = runAt(location);
    if (effectiveRange != nullptr) {
        *effectiveRange = {beginOf(run), runs_[run].end - beginOf(run)};
    }
    return contentOf(runs_[run].attributes);
}

const Attribute* AttributedString::attributeAt(std::string_view name, std::size_t location,
                                               Range* effectiveRange) const {
    check({location, 1});
    const std::size_t run = runAt(location);
    const Attribute* attribute = find(runs_[run].attributes, name);
    if (effectiveRange != nullptr) {
        std::size_t first = run;
        while (first > 0 && equal(attribute, find(runs_[first - 1].attributes, name))) {
            --first;
        }
        std::size_t last = run;
        while (last + 1 < runs_.size() &&
               equal(attribute, find(runs_[last + 1].attributes, name))) {
            ++last;
        }
        *effectiveRange = {beginOf(first), runs_[last].end - beginOf(first)};
    }
    return attribute;
}

/// The run that begins at a place, made where there was none.
std::size_t AttributedString::splitAt(std::size_t location) {
    const std::size_t run = runAt(location);
    if (run == runs_.size() || beginOf(run) == location) {
        return run;
    }
    const Run before{location, runs_[run].attributes};
    runs_.insert(runs_.begin() + static_cast<std::ptrdiff_t>(run), before);
    return run + 1;
}

/// Joins equal neighbours among the runs from `first` to before `last`.
void AttributedString::joinEqual(std::size_t first, std::size_t last) {
    if (first >= last) {
        return;
    }
    std::size_t kept = first;
    for (std::size_t i = first + 1; i < last; ++i) {
        if (equal(runs_[kept].attributes, runs_[i].attributes)) {
            runs_[kept].end = runs_[i].end;
        } else {
            ++kept;
            if (kept != i) {
                runs_[kept] = std::move(runs_[i]);
            }
        }
    }
    runs_.erase(runs_.begin() + static_cast<std::ptrdiff_t>(kept + 1),
                runs_.begin() + static_cast<std::ptrdiff_t>(last));
}

template <class Change>
void AttributedString::change(Range range, Change change) {
    check(range);
    if (range.length == 0) {
        return;
    }
    const std::size_t first = splitAt(range.location);
    const std::size_t last = splitAt(range.end());
    for (std::size_t i = first; i < last; ++i) {
        runs_[i].attributes = change(runs_[i].attributes);
    }
    if (editing_ == 0) {
        joinEqual(first == 0 ? 0 : first - 1, std::min(last + 1, runs_.size()));
    }
}

void AttributedString::addAttribute(std::string_view name, const Attribute& attribute,
                                    Range range) {
    change(range, [&](const SharedAttributes& old) {
        Attributes changed = contentOf(old);
        changed.insert_or_assign(std::string(name), attribute);
        return shared(std::move(changed));
    });
}

void AttributedString::removeAttribute(std::string_view name, Range range) {
    change(range, [&](const SharedAttributes& old) {
        if (find(old, name) == nullptr) {
            return old;
        }
        Attributes changed = contentOf(old);
        changed.erase(changed.find(name));
        return shared(std::move(changed));
    });
}

void AttributedString::setAttributes(Attributes attributes, Range range) {
    SharedAttributes changed = shared(std::move(attributes));
    change(range, [&](const SharedAttributes&) { return changed; });
}

void AttributedString::append(std::string_view text, const SharedAttributes& attributes) {
    if (text.empty()) {
        return;
    }
    text_ += text;
    if (!runs_.empty() && equal(runs_.back().attributes, attributes)) {
        runs_.back().end = text_.size();
    } else {
        runs_.push_back({text_.size(), contentOf(attributes).empty() ? nullptr : attributes});
    }
}

void AttributedString::append(const AttributedString& other) {
    if (&other == this) {
        append(AttributedString(other));
        return;
    }
    const std::string_view added = other.text_;
    for (std::size_t i = 0; i < other.runs_.size(); ++i) {
        const std::size_t begin = other.beginOf(i);
        append(added.substr(begin, other.runs_[i].end - begin), other.runs_[i].attributes);
    }
}

AttributedString AttributedString::substring(Range range) const {
    check(range);
    AttributedString part;
    const std::string_view text = text_;
    for (std::size_t place = range.location; place < range.end();) {
        const Run& run = runs_[runAt(place)];
        const std::size_t end = std::min(run.end, range.end());
        part.append(text.substr(place, end - place), run.attributes);
        place = end;
    }
    return part;
}

void AttributedString::endEditing() {
    if (editing_ == 0) {
        throw Exception("AttributedString", "An end of editing came without its beginning.");
    }
    --editing_;
    if (editing_ == 0) {
        joinEqual(0, runs_.size());
    }
}

bool operator==(const AttributedString& a, const AttributedString& b) {
    if (a.text_ != b.text_) {
        return false;
    }
    // Run by run, since runs within a batch may be cut differently.
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.runs_.size() && j < b.runs_.size()) {
        if (!equal(a.runs_[i].attributes, b.runs_[j].attributes)) {
            return false;
        }
        const std::size_t endOfA = a.runs_[i].end;
        const std::size_t endOfB = b.runs_[j].end;
        i += endOfA <= endOfB ? 1 : 0;
        j += endOfB <= endOfA ? 1 : 0;
    }
    return true;
}

Range utf16RangeFromByteRange(std::string_view text, Range bytes) {
    const std::size_t begin = unitsBefore(text, bytes.location);
    return {begin, unitsBefore(text, saturatedEnd(bytes)) - begin};
}

Range byteRangeFromUTF16Range(std::string_view text, Range units) {
    const std::u16string all = utf16FromBytes(text);
    const std::size_t begin = bytesBefore(all, units.location);
    return {begin, bytesBefore(all, saturatedEnd(units)) - begin};
}

} // namespace tav
