#include "foundation/HtmlText.hpp"
#include "platform/HtmlImporter.hpp"
#include "platform/memory/MemoryHtmlImporter.hpp"
#include "testing/Golden.hpp"

#include <thread>

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(FlattenHTML, GoldenCases) {
    for (const GoldenCase& each : goldenCases("edges.json", "flattenHTML")) {
        const auto flat = flattenHTML(each.in.get<std::string>());
        ASSERT_TRUE(flat.has_value()) << each.description();
        EXPECT_EQ(*flat, each.out.get<std::string>()) << each.description();
    }
}

TEST(FlattenHTML, TheEmptyTextIsNotImported) {
    MemoryHtmlImporter importer;
    const HtmlImporter::Replacement replacement(importer);
    EXPECT_EQ(flattenHTML(""), "");
    EXPECT_TRUE(importer.imported.empty());
}

TEST(FlattenHTML, TextsOfFewerThanFourUnitsGoAsMacOSRoman) {
    MemoryHtmlImporter importer;
    importer.answer = HtmlDocument{AttributedString("answer"), {}};
    const HtmlImporter::Replacement replacement(importer);
    EXPECT_EQ(flattenHTML("a\u00e9b"), "answer");
    ASSERT_EQ(importer.imported.size(), 1U);
    EXPECT_EQ(importer.imported[0], dataFromText("a\x8E"
                                                 "b"));
}

TEST(FlattenHTML, LongerOnesGoAsUnicodeWithAMark) {
    MemoryHtmlImporter importer;
    const HtmlImporter::Replacement replacement(importer);
    static_cast<void>(flattenHTML("a\u00e9bc"));
    // Two characters of two units each.
    static_cast<void>(flattenHTML("\U0001F600\U0001F600"));
    ASSERT_EQ(importer.imported.size(), 2U);
    EXPECT_EQ(importer.imported[0], dataFromText(std::string_view("\xFF\xFE"
                                                                  "a\0\xE9\0b\0c\0",
                                                                  10)));
    EXPECT_EQ(importer.imported[1].size(), 10U);
}

TEST(FlattenHTML, WhatMacOSRomanHasNotComesBack) {
    MemoryHtmlImporter importer;
    const HtmlImporter::Replacement replacement(importer);
    EXPECT_EQ(flattenHTML("\u4e2d"), "\u4e2d");
    EXPECT_EQ(flattenHTML("<\xFF"), "<\xFF");
    EXPECT_TRUE(importer.imported.empty());
}

TEST(FlattenHTML, AFailedImportAnswersNothing) {
    MemoryHtmlImporter importer;
    const HtmlImporter::Replacement replacement(importer);
    EXPECT_EQ(flattenHTML("text"), std::nullopt);
}

TEST(FlattenHTML, RunsOnTheCallersThread) {
    MemoryHtmlImporter importer;
    const HtmlImporter::Replacement replacement(importer);
    std::thread::id caller;
    std::thread thread([&caller] {
        caller = std::this_thread::get_id();
        static_cast<void>(flattenHTML("text"));
    });
    thread.join();
    ASSERT_EQ(importer.threads.size(), 1U);
    EXPECT_EQ(importer.threads[0], caller);
}

TEST(FlattenHTML, ShortTextsAreReadAsTheImporterFindsThem) {
    // 0x8E is e with an acute accent in Mac OS Roman, and what the importer takes it for.
    EXPECT_EQ(flattenHTML("\u00e9"), "\u017d");
    EXPECT_EQ(flattenHTML("a&b"), "a&b");
    EXPECT_EQ(flattenHTML("<b>"), "");
    EXPECT_EQ(flattenHTML(" x "), "x");
}

TEST(FlattenHTML, LongerTextsAreReadAsTheyAre) {
    EXPECT_EQ(flattenHTML("<p>\u00e9\u4e2d\U0001F600</p><p>&eacute;"),
              "\u00e9\u4e2d\U0001F600\n\u00e9");
    // What is declared inside does not count.
    EXPECT_EQ(flattenHTML("<meta charset=koi8-r>\u00e9"), "\u00e9");
    // Bytes that are no UTF-8 are half characters to the importer.
    EXPECT_EQ(flattenHTML("abcd\xFF"), "abcd\uFFFD");
}

} // namespace
} // namespace tav
