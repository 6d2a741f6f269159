#include "base/SipHash.hpp"
#include "base/Value.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace tav {
namespace {

/// Fewer entries are found faster by looking at each.
constexpr std::size_t indexedFrom = 16;
constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

std::uint32_t hashOf(std::string_view key) {
    return static_cast<std::uint32_t>(sipHash13(key, processSipHashKey()));
}

} // namespace

/// Positions of entries by the hash of their keys: open addressing, at most half full.
class Value::Dictionary::Index {
  public:
    explicit Index(const std::vector<Entry>& entries) {
        slots_.resize(capacityFor(entries.size()));
        for (std::size_t i = 0; i < entries.size(); ++i) {
            enter(hashOf(entries[i].first), static_cast<std::uint32_t>(i));
        }
    }

    [[nodiscard]] std::size_t find(const std::vector<Entry>& entries, std::string_view key,
                                   std::uint32_t hash) const {
        for (std::size_t at = hash & mask(); slots_[at].position != 0; at = (at + 1) & mask()) {
            const std::size_t position = slots_[at].position - 1;
            if (slots_[at].hash == hash && entries[position].first == key) {
                return position;
            }
        }
        return none;
    }

    /// The entry at this position was added behind the others.
    void added(std::uint32_t hash, std::size_t position) {
        if (position >= std::numeric_limits<std::uint32_t>::max() - 1) {
            throw std::length_error("dictionary is too large");
        }
        if ((position + 1) * 2 > slots_.size()) {
            grow();
        }
        enter(hash, static_cast<std::uint32_t>(position));
    }

  private:
    struct Slot {
        std::uint32_t position = 0; ///< From 1; 0 is a free slot.
        std::uint32_t hash = 0;
    };

    static std::size_t capacityFor(std::size_t count) {
        std::size_t capacity = 4 * indexedFrom;
        while (capacity < 2 * count) {
            capacity *= 2;
        }
        return capacity;
    }

    [[nodiscard]] std::size_t mask() const { return slots_.size() - 1; }

    void enter(std::uint32_t hash, std::uint32_t position) {
        std::size_t at = hash & mask();
        while (slots_[at].position != 0) {
            at = (at + 1) & mask();
        }
        slots_[at] = {position + 1, hash};
    }

    void grow() {
        std::vector<Slot> old(slots_.size() * 2);
        old.swap(slots_);
        for (const Slot& slot : old) {
            if (slot.position != 0) {
                enter(slot.hash, slot.position - 1);
            }
        }
    }

    std::vector<Slot> slots_;
};

Value::Dictionary::Dictionary() = default;
Value::Dictionary::~Dictionary() = default;

Value::Dictionary::Dictionary(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) {
        set(entry.first, entry.second);
    }
}

Value::Dictionary::Dictionary(const Dictionary& other)
    : entries_(other.entries_),
      index_(other.index_ ? std::make_unique<Index>(*other.index_) : nullptr) {}

Value::Dictionary::Dictionary(Dictionary&& other) noexcept
    : entries_(std::move(other.entries_)), index_(std::move(other.index_)) {
    other.entries_.clear();
}

Value::Dictionary& Value::Dictionary::operator=(const Dictionary& other) {
    Dictionary copy(other);
    *this = std::move(copy);
    return *this;
}

Value::Dictionary& Value::Dictionary::operator=(Dictionary&& other) noexcept {
    // The old content goes last: what is moved in may be a part of it.
    std::vector<Entry> entries = std::move(other.entries_);
    std::unique_ptr<Index> index = std::move(other.index_);
    other.entries_.clear();
    entries_.swap(entries);
    index_.swap(index);
    return *this;
}

std::size_t Value::Dictionary::size() const { return entries_.size(); }

bool Value::Dictionary::empty() const { return entries_.empty(); }

void Value::Dictionary::reserve(std::size_t count) { entries_.reserve(count); }

std::size_t Value::Dictionary::positionOf(std::string_view key) const {
    if (index_) {
        return index_->find(entries_, key, hashOf(key));
    }
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].first == key) {
            return i;
        }
    }
    return none;
}

const Value* Value::Dictionary::find(std::string_view key) const {
    const std::size_t position = positionOf(key);
    return position == none ? nullptr : &entries_[position].second;
}

Value* Value::Dictionary::find(std::string_view key) {
    const std::size_t position = positionOf(key);
    return position == none ? nullptr : &entries_[position].second;
}

const std::string* Value::Dictionary::findString(std::string_view key) const {
    const Value* value = find(key);
    return value == nullptr ? nullptr : value->asString();
}

Value& Value::Dictionary::set(std::string key, Value value) {
    if (!index_) {
        if (Value* old = find(key)) {
            *old = std::move(value);
            return *old;
        }
        entries_.emplace_back(std::move(key), std::move(value));
        if (entries_.size() > indexedFrom) {
            index_ = std::make_unique<Index>(entries_);
        }
        return entries_.back().second;
    }
    const std::uint32_t hash = hashOf(key);
    if (const std::size_t position = index_->find(entries_, key, hash); position != none) {
        entries_[position].second = std::move(value);
        return entries_[position].second;
    }
    entries_.reserve(entries_.size() + 1 > entries_.capacity() ? entries_.capacity() * 2
                                                               : entries_.capacity());
    index_->added(hash, entries_.size());
    entries_.emplace_back(std::move(key), std::move(value));
    return entries_.back().second;
}

bool Value::Dictionary::remove(std::string_view key) {
    const std::size_t position = positionOf(key);
    if (position == none) {
        return false;
    }
    index_.reset();
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
    if (entries_.size() > indexedFrom) {
        index_ = std::make_unique<Index>(entries_);
    }
    return true;
}

std::vector<Value::Dictionary::Entry>::const_iterator Value::Dictionary::begin() const {
    return entries_.begin();
}

std::vector<Value::Dictionary::Entry>::const_iterator Value::Dictionary::end() const {
    return entries_.end();
}

std::vector<const Value::Dictionary::Entry*> Value::Dictionary::sorted() const {
    std::vector<const Entry*> entries;
    entries.reserve(entries_.size());
    for (const Entry& entry : entries_) {
        entries.push_back(&entry);
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry* a, const Entry* b) { return a->first < b->first; });
    return entries;
}

bool operator==(const Value::Dictionary& a, const Value::Dictionary& b) {
    return a.size() == b.size() && std::all_of(a.begin(), a.end(), [&](const auto& entry) {
               const Value* other = b.find(entry.first);
               return other != nullptr && entry.second == *other;
           });
}

} // namespace tav
