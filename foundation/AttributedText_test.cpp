#include "foundation/AttributedText.hpp"
#include "platform/HtmlImporter.hpp"
#include "platform/MainThread.hpp"
#include "platform/memory/MemoryHtmlImporter.hpp"

#include <thread>

#include <gtest/gtest.h>

namespace tav {
namespace {

/// Does what it is asked to at once and counts.
class CountingMainThread final : public MainThread {
  public:
    int waitedFor = 0;
    void post(std::function<void()> /*work*/) override {}
    void runAndWait(const std::function<void()>& work) override {
        ++waitedFor;
        std::thread main([&work, this] {
            thread = std::this_thread::get_id();
            work();
        });
        main.join();
    }
    void runPending() override {}
    void installLoop(std::function<void()> /*wake*/) override {}
    std::thread::id thread;
};

Url url(std::string_view text) { return Url::withString(text).value(); }

TEST(Hyperlink, HasFiveAttributesOverItsWholeLength) {
    const AttributedString link =
        hyperlinkFromString("\u00e9a", url("http://example.net/"), Color(1, 0, 0));
    EXPECT_EQ(link.string(), "\u00e9a");
    AttributedString::Range range;
    const Attributes expected{{"NSLink", Value("http://example.net/")},
                              {"NSColor", Color(1, 0, 0)},
                              {"NSUnderlineColor", Color(1, 0, 0)},
                              {"NSStrokeColor", Color(1, 0, 0)},
                              {"NSUnderline", Value(1)}};
    EXPECT_EQ(link.attributesAt(0, &range), expected);
    EXPECT_EQ(range, (AttributedString::Range{0, 3}));
}

TEST(Hyperlink, IsBlueByDefault) {
    const AttributedString link = hyperlinkFromString("a", url("b"));
    for (const auto name : {NSForegroundColorAttributeName, NSUnderlineColorAttributeName,
                            NSStrokeColorAttributeName}) {
        EXPECT_EQ(*link.attributeAt(name, 0), Attribute(Color::blueColor()));
    }
}

TEST(Hyperlink, OfAnEmptyTextIsEmpty) {
    EXPECT_EQ(hyperlinkFromString("", url("b")), AttributedString());
}

TEST(AttributedStringWithHTMLData, NoDataIsNothing) {
    CountingMainThread mainThread;
    const MainThread::Replacement replacement(mainThread);
    std::optional<Value::Dictionary> attributes = Value::Dictionary{{"kept", 1}};
    EXPECT_EQ(attributedStringWithHTMLData(std::nullopt, &attributes), std::nullopt);
    EXPECT_EQ(attributes, (Value::Dictionary{{"kept", 1}}));
    EXPECT_EQ(mainThread.waitedFor, 0);
}

TEST(AttributedStringWithHTMLData, IsImportedOnTheMainThread) {
    CountingMainThread mainThread;
    const MainThread::Replacement replacement(mainThread);
    MemoryHtmlImporter importer;
    importer.answer = HtmlDocument{AttributedString("x"), Value::Dictionary{{"a", 1}}};
    const HtmlImporter::Replacement standIn(importer);
    std::optional<Value::Dictionary> attributes;
    EXPECT_EQ(attributedStringWithHTMLData(bytesOf("<p>"), &attributes), AttributedString("x"));
    EXPECT_EQ(attributes, (Value::Dictionary{{"a", 1}}));
    EXPECT_EQ(mainThread.waitedFor, 1);
    ASSERT_EQ(importer.imported.size(), 1U);
    EXPECT_EQ(importer.imported[0], dataFromText("<p>"));
    EXPECT_EQ(importer.threads[0], mainThread.thread);
}

TEST(AttributedStringWithHTMLData, AttributesMayBeMissingOrUnwanted) {
    MemoryHtmlImporter importer;
    importer.answer = HtmlDocument{AttributedString("x"), std::nullopt};
    const HtmlImporter::Replacement standIn(importer);
    std::optional<Value::Dictionary> attributes = Value::Dictionary{{"old", 1}};
    EXPECT_EQ(attributedStringWithHTMLData(bytesOf("y"), &attributes), AttributedString("x"));
    EXPECT_EQ(attributes, std::nullopt);
    EXPECT_EQ(attributedStringWithHTMLData(bytesOf("y"), nullptr), AttributedString("x"));
}

TEST(AttributedStringWithHTMLData, AFailedImportIsNothing) {
    MemoryHtmlImporter importer;
    const HtmlImporter::Replacement standIn(importer);
    std::optional<Value::Dictionary> attributes = Value::Dictionary{{"old", 1}};
    EXPECT_EQ(attributedStringWithHTMLData(bytesOf("y"), &attributes), std::nullopt);
    EXPECT_EQ(attributes, std::nullopt);
}

TEST(AttributedStringWithHTMLData, TheWorkerNeedsData) {
    MemoryHtmlImporter importer;
    importer.answer = HtmlDocument{AttributedString("x"), std::nullopt};
    const HtmlImporter::Replacement standIn(importer);
    HtmlExchange exchange;
    _attributedStringWithHTML(exchange);
    EXPECT_EQ(exchange.attrStr, std::nullopt);
    EXPECT_TRUE(importer.imported.empty());
    exchange.data = bytesOf("");
    _attributedStringWithHTML(exchange);
    EXPECT_EQ(exchange.attrStr, AttributedString("x"));
    EXPECT_EQ(exchange.docAttributes, std::nullopt);
}

TEST(AttributedStringWithHTMLData, TheHostsImporterReadsIt) {
    std::optional<Value::Dictionary> attributes;
    const auto text = attributedStringWithHTMLData(
        bytesOf("<title>t</title><a href=\"http://example.net/\">x</a>"), &attributes);
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(text->string(), "x");
    EXPECT_EQ(*text->attributeAt(NSLinkAttributeName, 0), Attribute(Value("http://example.net/")));
    ASSERT_TRUE(attributes.has_value());
    EXPECT_EQ(*attributes->findString(NSTitleDocumentAttribute), "t");
}

} // namespace
} // namespace tav
