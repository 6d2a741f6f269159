// The importer over gumbo, which reads HTML as browsers do.
//
// Some documents cost gumbo time or memory that grows with the square of their size, and it takes
// no limits. Deep ones are told before (20 000 elements in one another take seconds). The rest is
// found while it works, since whatever it does it asks for memory: there the work is counted, and
// ended when it comes to too much. The plain importer reads such documents.

#include "base/Unicode.hpp"
#include "base/WellFormedUTF8.hpp"
#include "platform/HtmlImporter.hpp"
#include "platform/linux/HtmlDepth.hpp"
#include "platform/linux/HtmlElements.hpp"
#include "platform/linux/HtmlEncoding.hpp"
#include "platform/linux/HtmlTextBuilder.hpp"
#include "platform/linux/PlainHtmlImporter.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <csetjmp>
#include <cstddef>
#include <ctime>
#include <deque>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gumbo.h>

namespace tav::internal {
namespace {

using std::chrono::nanoseconds;

constexpr std::size_t deepest = 2000;
constexpr std::size_t largestDocument = std::size_t{64} << 20;
constexpr std::size_t mostMemory = std::size_t{256} << 20;
// Pages of ordinary size take a fraction of this; time of this thread alone, whatever else the
// machine does.
constexpr nanoseconds mostTime = std::chrono::milliseconds(300);
constexpr nanoseconds mostTimePerByte{70};

nanoseconds threadTime() {
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + nanoseconds(now.tv_nsec);
}

/// The memory of one parse, given back all at once; within a limit of memory and time.
class Arena {
  public:
    explicit Arena(nanoseconds timeLimit) : deadline_(threadTime() + timeLimit) {}

    /// Null at a limit.
    void* allocate(std::size_t size) {
        constexpr unsigned clockInterval = 16;
        if (++allocations_ % clockInterval == 0 && threadTime() > deadline_) {
            return nullptr;
        }
        constexpr std::size_t alignment = alignof(std::max_align_t);
        if (size > mostMemory) {
            return nullptr;
        }
        size = (size + alignment - 1) / alignment * alignment;
        if (size > room_ && !grow(size)) {
            return nullptr;
        }
        std::byte* const memory = at_;
        at_ += size;
        room_ -= size;
        return memory;
    }

    /// Where a parse goes on that came to a limit.
    std::jmp_buf limitReached;

  private:
    bool grow(std::size_t size) {
        constexpr std::size_t usual = std::size_t{256} << 10;
        const std::size_t piece = std::max(size, usual);
        if (piece > mostMemory - total_) {
            return false;
        }
        try {
            pieces_.push_back(std::make_unique_for_overwrite<std::byte[]>(piece));
        } catch (const std::bad_alloc&) {
            return false;
        }
        total_ += piece;
        at_ = pieces_.back().get();
        room_ = piece;
        return true;
    }

    std::vector<std::unique_ptr<std::byte[]>> pieces_;
    std::byte* at_ = nullptr;
    std::size_t room_ = 0;
    std::size_t total_ = 0;
    unsigned allocations_ = 0;
    nanoseconds deadline_;
};

// The library takes no null for an answer. Between here and parse() stand its own functions alone,
// which are C: nothing is left undestroyed.
void* allocate(void* arena, std::size_t size) {
    auto* const own = static_cast<Arena*>(arena);
    void* const memory = own->allocate(size);
    if (memory == nullptr) {
        std::longjmp(own->limitReached, 1);
    }
    return memory;
}

void deallocate(void* /*arena*/, void* /*memory*/) {}

/// The tree, in the arena's memory; null when that came to a limit.
const GumboOutput* parse(std::string_view html, Arena& arena) {
    if (setjmp(arena.limitReached) != 0) {
        return nullptr;
    }
    GumboOptions options = kGumboDefaultOptions;
    options.allocator = allocate;
    options.deallocator = deallocate;
    options.userdata = &arena;
    options.max_errors = 0;
    return gumbo_parse_with_options(&options, html.data(), html.size());
}

HtmlElement elementOf(GumboTag tag) {
    static const auto elements = [] {
        std::array<HtmlElement, GUMBO_TAG_LAST + 1> table;
        for (int i = 0; i < GUMBO_TAG_UNKNOWN; ++i) {
            table.at(static_cast<std::size_t>(i)) =
                htmlElement(gumbo_normalized_tagname(static_cast<GumboTag>(i)));
        }
        return table;
    }();
    return elements.at(static_cast<std::size_t>(tag));
}

std::size_t childCount(const GumboNode& node) { return node.v.element.children.length; }

const GumboNode& child(const GumboNode& node, std::size_t index) {
    return *static_cast<const GumboNode*>(node.v.element.children.data[index]);
}

bool isElement(const GumboNode& node) {
    return node.type == GUMBO_NODE_ELEMENT || node.type == GUMBO_NODE_TEMPLATE;
}

/// Goes through the tree in its order, without recursion. Numeric references far out of range make
/// gumbo write what is no UTF-8.
class Reader {
  public:
    void read(const GumboNode& root);
    [[nodiscard]] AttributedString takeText() { return builder_.take(); }
    [[nodiscard]] std::string_view title() const { return title_; }

  private:
    struct Open {
        const GumboNode* node;
        HtmlElement element;
        std::size_t nextChild;
        HtmlStyle style;
    };

    void enter(const GumboNode& node);
    void enterElement(const GumboNode& node);
    void leave();
    void findTitle(const GumboNode& head);

    HtmlTextBuilder builder_;
    std::vector<Open> open_;
    std::size_t links_ = 0;
    /// Where links that had to be repaired stay.
    std::deque<std::string> repairedLinks_;
    std::string_view title_;
};

void Reader::read(const GumboNode& root) {
    enter(root);
    while (!open_.empty()) {
        Open& innermost = open_.back();
        if (innermost.nextChild == childCount(*innermost.node)) {
            leave();
        } else {
            enter(child(*innermost.node, innermost.nextChild++));
        }
    }
}

void Reader::enter(const GumboNode& node) {
    switch (node.type) {
    case GUMBO_NODE_TEXT:
    case GUMBO_NODE_WHITESPACE:
    case GUMBO_NODE_CDATA:
        builder_.characters(wellFormedUTF8(node.v.text.text));
        break;
    case GUMBO_NODE_ELEMENT:
        enterElement(node);
        break;
    default:
        break;
    }
}

void Reader::enterElement(const GumboNode& node) {
    const GumboElement& content = node.v.element;
    const HtmlElement element = elementOf(content.tag);
    if (content.tag == GUMBO_TAG_HEAD) {
        findTitle(node);
        return;
    }
    if (element.has(HtmlElement::Hidden)) {
        return;
    }
    if (content.tag == GUMBO_TAG_BR) {
        builder_.lineFeed();
        return;
    }
    HtmlStyle style = open_.empty() ? HtmlStyle() : open_.back().style;
    style.add(element);
    if (content.tag == GUMBO_TAG_A) {
        const GumboAttribute* link = gumbo_get_attribute(&content.attributes, "href");
        style.link = link == nullptr ? std::string_view() : link->value;
        if (!isValidUTF8(style.link)) {
            repairedLinks_.push_back(wellFormedUTF8(style.link));
            style.link = repairedLinks_.back();
        }
        style.linkNumber = style.link.empty() ? 0 : ++links_;
    }
    builder_.elementBegins(element);
    builder_.setStyle(style);
    open_.push_back({&node, element, 0, style});
}

void Reader::leave() {
    builder_.elementEnds(open_.back().element);
    open_.pop_back();
    builder_.setStyle(open_.empty() ? HtmlStyle() : open_.back().style);
}

void Reader::findTitle(const GumboNode& head) {
    for (std::size_t i = 0; i < childCount(head) && title_.empty(); ++i) {
        const GumboNode& node = child(head, i);
        if (isElement(node) && node.v.element.tag == GUMBO_TAG_TITLE && childCount(node) != 0) {
            title_ = child(node, 0).v.text.text;
        }
    }
}

class GumboHtmlImporter final : public HtmlImporter {
  public:
    std::optional<HtmlDocument> importHTML(BytesView bytes) override {
        const DecodedHtml html = decodeHtml(bytes);
        if (html.text.size() > largestDocument || htmlDepthBound(html.text, deepest) > deepest) {
            return plainHtmlDocument(html);
        }
        Arena arena(mostTime + mostTimePerByte * html.text.size());
        const GumboOutput* tree = parse(html.text, arena);
        if (tree == nullptr) {
            return plainHtmlDocument(html);
        }
        Reader reader;
        reader.read(*tree->root);
        return HtmlDocument{reader.takeText(),
                            htmlDocumentAttributes(wellFormedUTF8(reader.title()), html.encoding)};
    }
};

} // namespace

HtmlImporter& realHtmlImporter() {
    static GumboHtmlImporter importer;
    return importer;
}

} // namespace tav::internal
