#include "platform/UserLanguages.hpp"
#include "platform/linux/MimeTypes.hpp"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <type_traits>

#include <expat.h>

namespace tav::internal {
namespace {

struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserPointer = std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeParser>;

/// Keeps the comment in the best language so far.
class CommentReader {
  public:
    explicit CommentReader(std::span<const std::string> languages) : languages_(languages) {}

    std::string read(BytesView xml);

  private:
    void open(std::string_view name, const XML_Char** attributes);
    void close();
    /// The place of a language in the list; English, which has no attribute, is behind the last.
    [[nodiscard]] std::size_t rankOf(const char* language) const;

    static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

    ParserPointer parser_{XML_ParserCreate(nullptr)};
    std::span<const std::string> languages_;
    std::size_t depth_ = 0;
    std::size_t bestRank_ = none;
    std::size_t openRank_ = none; ///< Of the comment that is open, when it is better.
    std::string open_;
    std::string best_;
};

std::size_t CommentReader::rankOf(const char* language) const {
    // Where English stands in the list, a comment without a language is in it, unless one in the
    // very English of the user's country came along.
    if (language == nullptr) {
        const auto english = std::find(languages_.begin(), languages_.end(), "en");
        return static_cast<std::size_t>(english - languages_.begin());
    }
    const auto found = std::find(languages_.begin(), languages_.end(), language);
    return found != languages_.end() ? static_cast<std::size_t>(found - languages_.begin()) : none;
}

void CommentReader::open(std::string_view name, const XML_Char** attributes) {
    // The type's own: the second level.
    if (++depth_ != 2 || name != "comment") {
        return;
    }
    const char* language = nullptr;
    for (; *attributes != nullptr; attributes += 2) {
        if (std::string_view(*attributes) == "xml:lang") {
            language = attributes[1];
        }
    }
    const std::size_t rank = rankOf(language);
    if (rank < bestRank_) {
        openRank_ = rank;
        open_.clear();
    }
}

void CommentReader::close() {
    if (--depth_ == 1 && openRank_ != none) {
        if (!open_.empty()) {
            best_ = open_;
            bestRank_ = openRank_;
        }
        openRank_ = none;
    }
}

std::string CommentReader::read(BytesView xml) {
    if (!parser_ || xml.empty() || xml.size() > largestDescription) {
        return {};
    }
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(
        parser_.get(),
        [](void* self, const XML_Char* name, const XML_Char** attributes) {
            static_cast<CommentReader*>(self)->open(name, attributes);
        },
        [](void* self, const XML_Char*) { static_cast<CommentReader*>(self)->close(); });
    XML_SetCharacterDataHandler(parser_.get(), [](void* self, const XML_Char* text, int length) {
        auto* const reader = static_cast<CommentReader*>(self);
        if (reader->openRank_ != none) {
            reader->open_.append(text, static_cast<std::size_t>(length));
        }
    });
    // A description needs no document type, and the entities of one may grow without end.
    XML_SetStartDoctypeDeclHandler(
        parser_.get(), [](void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
            XML_StopParser(static_cast<CommentReader*>(self)->parser_.get(), XML_FALSE);
        });
    const bool isRead = XML_Parse(parser_.get(), reinterpret_cast<const char*>(xml.data()),
                                  static_cast<int>(xml.size()), XML_TRUE) == XML_STATUS_OK;
    return isRead ? best_ : std::string();
}

} // namespace

std::string commentOfDescription(BytesView xml, std::span<const std::string> languages) {
    return CommentReader(languages).read(xml);
}

} // namespace tav::internal
