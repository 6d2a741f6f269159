#include "base/Base64.hpp"
#include "base/NumberText.hpp"
#include "base/PropertyList.hpp"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>

#include <expat.h>

namespace tav::PropertyList {
namespace {

enum class Tag {
    None,
    PropertyList,
    Dictionary,
    Array,
    Key,
    String,
    Data,
    Date,
    Integer,
    Real,
    True,
    False
};

Tag tagOf(std::string_view name) {
    const auto is = [name](std::string_view text, Tag tag) {
        return name == text ? tag : Tag::None;
    };
    switch (name.front()) {
    case 'a':
        return is("array", Tag::Array);
    case 'd':
        return name.size() == 4
                   ? (name[2] == 't'
                          ? (name[3] == 'a' ? is("data", Tag::Data) : is("date", Tag::Date))
                          : is("dict", Tag::Dictionary))
                   : Tag::None;
    case 'f':
        return is("false", Tag::False);
    case 'i':
        return is("integer", Tag::Integer);
    case 'k':
        return is("key", Tag::Key);
    case 'p':
        return is("plist", Tag::PropertyList);
    case 'r':
        return is("real", Tag::Real);
    case 's':
        return is("string", Tag::String);
    case 't':
        return is("true", Tag::True);
    default:
        return Tag::None;
    }
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view space = " \t\n\r";
    const std::size_t start = text.find_first_not_of(space);
    return start == std::string_view::npos
               ? std::string_view()
               : text.substr(start, text.find_last_not_of(space) - start + 1);
}

struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserPointer = std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeParser>;

/// Builds the tree from the parser's events. Values of open containers wait on one stack, so that
/// each container is made once, with the room it needs.
class Reader {
  public:
    Reader() : parser_(XML_ParserCreate(nullptr)) {
        if (!parser_) {
            throw std::bad_alloc();
        }
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(
            parser_.get(),
            [](void* self, const XML_Char* name, const XML_Char**) {
                static_cast<Reader*>(self)->open(name);
            },
            [](void* self, const XML_Char*) { static_cast<Reader*>(self)->close(); });
        // Property lists need no entities of their own; declared attributes would be added to every
        // element. A reference to an entity that the document type, which is not read, might
        // declare stands for nothing, as XML has it; without a document type it is an error.
        XML_SetEntityDeclHandler(
            parser_.get(), [](void* self, const XML_Char*, int, const XML_Char*, int,
                              const XML_Char*, const XML_Char*, const XML_Char*, const XML_Char*) {
                static_cast<Reader*>(self)->fail("declares an entity");
            });
        XML_SetAttlistDeclHandler(parser_.get(), [](void* self, const XML_Char*, const XML_Char*,
                                                    const XML_Char*, const XML_Char*, int) {
            static_cast<Reader*>(self)->fail("declares an attribute");
        });
    }

    std::optional<Value> read(BytesView bytes, Error* outError);

  private:
    struct Container {
        bool isDictionary = false;
        bool hasKey = false; ///< A key waits for its value.
        std::size_t firstValue = 0;
        std::size_t firstKey = 0;
    };

    void open(std::string_view name);
    void close();
    void openContainer(Tag tag);
    void closeContainer();
    void closeLeaf();
    bool placeForValue();
    void add(Value value);
    Value takeDictionary(const Container& container);
    void collectText(bool on);
    void fail(std::string reason);

    std::string takeText() {
        // Long texts are moved; short ones leave the buffer to the next.
        return text_.size() > 1024 ? std::exchange(text_, std::string()) : text_;
    }

    ParserPointer parser_;
    std::vector<Container> open_;
    std::vector<Value> values_;
    std::vector<std::string> keys_;
    std::string text_;
    Tag leaf_ = Tag::None;
    bool inRoot_ = false;
    bool failed_ = false;
    Error error_;
};

std::optional<Value> Reader::read(BytesView bytes, Error* outError) {
    // The parser copies it into a buffer whose size, a power of two, must fit into an int.
    constexpr std::size_t piece = std::size_t{1} << 28;
    const char* at = textOf(bytes).data();
    std::size_t rest = bytes.size();
    XML_Status status = XML_STATUS_OK;
    do {
        const std::size_t count = std::min(rest, piece);
        rest -= count;
        status = XML_Parse(parser_.get(), at, static_cast<int>(count), rest == 0 ? 1 : 0);
        at += count;
    } while (status == XML_STATUS_OK && rest != 0);
    if (status != XML_STATUS_OK && !failed_) {
        fail(XML_ErrorString(XML_GetErrorCode(parser_.get())));
    }
    if (!failed_) {
        return std::move(values_.front());
    }
    if (outError != nullptr) {
        *outError = std::move(error_);
    }
    return std::nullopt;
}

void Reader::fail(std::string reason) {
    if (failed_) {
        return;
    }
    failed_ = true;
    error_.reason = std::move(reason);
    error_.line = XML_GetCurrentLineNumber(parser_.get());
    error_.offset =
        static_cast<std::size_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(parser_.get()), 0));
    XML_StopParser(parser_.get(), XML_FALSE);
}

void Reader::collectText(bool on) {
    const XML_CharacterDataHandler handler = [](void* self, const XML_Char* text, int count) {
        static_cast<Reader*>(self)->text_.append(text, static_cast<std::size_t>(count));
    };
    XML_SetCharacterDataHandler(parser_.get(), on ? handler : nullptr);
}

void Reader::open(std::string_view name) {
    if (failed_) {
        return;
    }
    const Tag tag = tagOf(name);
    if (tag == Tag::None || (tag == Tag::PropertyList) == inRoot_) {
        fail("unexpected element <" + std::string(name) + ">");
        return;
    }
    if (tag == Tag::PropertyList) {
        inRoot_ = true;
        return;
    }
    if (leaf_ != Tag::None) {
        fail("an element inside a value that is no container");
        return;
    }
    if (tag == Tag::Key) {
        if (open_.empty() || !open_.back().isDictionary || open_.back().hasKey) {
            fail("a key where none belongs");
            return;
        }
    } else if (!placeForValue()) {
        return;
    }
    if (tag == Tag::Dictionary || tag == Tag::Array) {
        openContainer(tag);
        return;
    }
    leaf_ = tag;
    text_.clear();
    collectText(true);
}

/// Whether a value may stand here; fails where not.
bool Reader::placeForValue() {
    if (open_.empty()) {
        if (!values_.empty()) {
            fail("more than one value");
        }
    } else if (open_.back().isDictionary && !open_.back().hasKey) {
        fail("a value without a key");
    }
    return !failed_;
}

void Reader::openContainer(Tag tag) {
    if (open_.size() >= maximumDepth) {
        fail("nested too deep");
        return;
    }
    open_.push_back({tag == Tag::Dictionary, false, values_.size(), keys_.size()});
}

void Reader::close() {
    if (failed_) {
        return;
    }
    if (leaf_ != Tag::None) {
        closeLeaf();
        leaf_ = Tag::None;
        collectText(false);
    } else if (!open_.empty()) {
        closeContainer();
    } else if (values_.empty()) {
        fail("no value");
    }
}

void Reader::closeLeaf() {
    switch (leaf_) {
    case Tag::Key:
        keys_.push_back(takeText());
        open_.back().hasKey = true;
        return;
    case Tag::String:
        add(takeText());
        return;
    case Tag::True:
    case Tag::False:
        add(leaf_ == Tag::True);
        return;
    case Tag::Integer:
        if (const auto number = integerFromText(trimmed(text_))) {
            if (number->negative) {
                add(static_cast<std::int64_t>(0 - number->magnitude));
            } else if (std::in_range<std::int64_t>(number->magnitude)) {
                add(static_cast<std::int64_t>(number->magnitude));
            } else {
                add(number->magnitude);
            }
            return;
        }
        fail("no 64-bit integer");
        return;
    case Tag::Real:
        if (const auto number = realFromText(trimmed(text_))) {
            add(*number);
            return;
        }
        fail("no real");
        return;
    case Tag::Date:
        if (const auto date = tav::Date::fromISO8601(trimmed(text_))) {
            add(*date);
            return;
        }
        fail("no date");
        return;
    default:
        if (auto data = dataFromBase64(text_)) {
            add(std::move(*data));
            return;
        }
        fail("no base64");
        return;
    }
}

void Reader::closeContainer() {
    const Container container = open_.back();
    if (container.hasKey) {
        fail("a key without a value");
        return;
    }
    open_.pop_back();
    if (container.isDictionary) {
        add(takeDictionary(container));
        return;
    }
    const auto first = values_.begin() + static_cast<std::ptrdiff_t>(container.firstValue);
    Value::Array array(std::make_move_iterator(first), std::make_move_iterator(values_.end()));
    values_.erase(first, values_.end());
    add(std::move(array));
}

Value Reader::takeDictionary(const Container& container) {
    Value::Dictionary dictionary;
    const std::size_t count = keys_.size() - container.firstKey;
    dictionary.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        dictionary.set(std::move(keys_[container.firstKey + i]),
                       std::move(values_[container.firstValue + i]));
    }
    keys_.resize(container.firstKey);
    values_.erase(values_.begin() + static_cast<std::ptrdiff_t>(container.firstValue),
                  values_.end());
    if (dictionary.size() == 1) {
        // How XML writes a reference inside a keyed archive.
        const Value* uid = dictionary.find("CF$UID");
        if (uid != nullptr && uid->type() == Value::Type::Integer && uid->asUnsigned()) {
            return Value::UID{*uid->asUnsigned()};
        }
    }
    return dictionary;
}

void Reader::add(Value value) {
    values_.push_back(std::move(value));
    if (!open_.empty()) {
        open_.back().hasKey = false;
    }
}

} // namespace

std::optional<Value> readXML(BytesView bytes, Error* outError) {
    return Reader().read(bytes, outError);
}

} // namespace tav::PropertyList
