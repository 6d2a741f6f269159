#include "platform/LibraryResources.hpp"
#include "platform/Localization.hpp"
#include "testing/TemporaryFolder.hpp"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tav {
namespace {

using Names = std::vector<std::string>;

const Names shipped = {TAV_TESTDATA "/../resources"};

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Puts the German catalogue in a folder, as another language.
void installAs(const std::string& folder, const std::string& language) {
    std::filesystem::create_directories(folder + "/" + language + "/LC_MESSAGES");
    std::filesystem::copy_file(shipped[0] + "/de/LC_MESSAGES/tav.mo",
                               folder + "/" + language + "/LC_MESSAGES/tav.mo");
}

TEST(Translations, AnswersInTheFirstLanguageThatThereIs) {
    EXPECT_EQ(Translations(Names{"de"}, shipped).text("unknown"), "unbekannt");
    EXPECT_EQ(Translations(Names{"de_AT", "de"}, shipped).text("unknown"), "unbekannt");
    EXPECT_EQ(Translations(Names{"xx", "de"}, shipped).text("unknown"), "unbekannt");
}

TEST(Translations, TheKeyWhereThereIsNoTranslation) {
    EXPECT_EQ(Translations(Names{"de"}, shipped).text("no such text"), "no such text");
    EXPECT_EQ(Translations(Names{}, shipped).text("unknown"), "unknown");
    EXPECT_EQ(Translations(Names{"xx"}, shipped).text("unknown"), "unknown");
    EXPECT_EQ(Translations(Names{"de"}, Names{}).text("unknown"), "unknown");
    EXPECT_EQ(Translations(Names{"de"}, shipped).text(""), "");
}

TEST(Translations, EnglishEndsTheList) {
    EXPECT_EQ(Translations(Names{"en", "de"}, shipped).text("unknown"), "unknown");
    EXPECT_EQ(Translations(Names{"en_GB", "en", "de"}, shipped).text("unknown"), "unknown");
    const TemporaryFolder folder;
    installAs(folder.path(), "en_GB");
    EXPECT_EQ(Translations(Names{"en_GB", "en"}, Names{folder.path()}).text("unknown"),
              "unbekannt");
}

TEST(Translations, TheFirstFolderThatHasALanguageGivesIt) {
    const TemporaryFolder folder;
    const std::string path = folder.path("de/LC_MESSAGES/tav.mo");
    std::filesystem::create_directories(folder.path("de/LC_MESSAGES"));
    const Names folders = {folder.path("missing"), folder.path(), shipped[0]};
    std::ofstream(path) << "garbage";
    EXPECT_EQ(Translations(Names{"de"}, folders).text("unknown"), "unbekannt");
    // A catalogue without any message.
    std::ofstream(path, std::ios::binary) << std::string(
        "\xde\x12\x04\x95\0\0\0\0\0\0\0\0\x1c\0\0\0\x1c\0\0\0\0\0\0\0\x1c\0\0\0", 28);
    EXPECT_EQ(Translations(Names{"de"}, folders).text("unknown"), "unknown");
}

TEST(Translations, WhatIsNoFileIsNoCatalogue) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.path("de/LC_MESSAGES/tav.mo"));
    std::filesystem::create_directories(folder.path("fr/LC_MESSAGES"));
    ASSERT_EQ(::mkfifo(folder.path("fr/LC_MESSAGES/tav.mo").c_str(), 0600), 0);
    EXPECT_EQ(Translations(Names{"de", "fr"}, Names{folder.path()}).text("unknown"), "unknown");
}

TEST(LocalizedString, AsksTheTranslationsThatStandIn) {
    Translations german(Names{"de"}, shipped);
    const Translations::Replacement replacement(german);
    EXPECT_EQ(localizedString("unknown"), "unbekannt");
    EXPECT_EQ(localizedString("no such text"), "no such text");
}

TEST(LocalizedString, AnswersTheKeyOrItsTranslationForTheUser) {
    const std::string text = localizedString("unknown");
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(localizedString("no such text"), "no such text");
}

/// The texts of a source of translations: entries of "msgid" and "msgstr", strings in C's form with
/// `\"`, `\n` and `\\` alone, which may go on over lines.
std::map<std::string, std::string> messagesOfSource(const std::string& path) {
    std::map<std::string, std::string> messages;
    std::string texts[2];
    std::string* text = nullptr;
    std::ifstream file(path);
    const auto endEntry = [&] {
        if (!texts[0].empty()) {
            messages[texts[0]] = texts[1];
        }
        texts[0].clear();
        texts[1].clear();
    };
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("msgid ")) {
            endEntry();
            text = &texts[0];
        } else if (line.starts_with("msgstr ")) {
            text = &texts[1];
        }
        const std::size_t start = line.find('"');
        if (line.starts_with("#") || start == std::string::npos) {
            continue;
        }
        for (std::size_t i = start + 1; i + 1 < line.size(); ++i) {
            const bool isEscaped = line[i] == '\\';
            i += isEscaped ? 1 : 0;
            *text += isEscaped && line[i] == 'n' ? '\n' : line[i];
        }
    }
    endEntry();
    return messages;
}

std::map<std::string, std::string> messagesOfCatalogue(const std::string& path) {
    const auto catalogue = MessageCatalogue::read(dataFromText(contentOf(path)));
    EXPECT_TRUE(catalogue) << path;
    std::map<std::string, std::string> messages;
    for (const auto& [text, translation] : catalogue->messages()) {
        messages.emplace(text, translation);
    }
    return messages;
}

/// What is filled in, in order: "%@ %d".
std::string placeholders(std::string_view text) {
    std::string found;
    for (std::size_t i = text.find('%'); i != std::string_view::npos; i = text.find('%', i + 1)) {
        found.append(text.substr(i, 2));
    }
    return found;
}

class ShippedCatalogues : public testing::TestWithParam<const char*> {
  protected:
    std::string path = shipped[0] + "/" + GetParam() + "/LC_MESSAGES/tav";
};

TEST_P(ShippedCatalogues, AreCompiledFromTheirSources) {
    const auto source = messagesOfSource(path + ".po");
    EXPECT_GE(source.size(), 11U);
    EXPECT_EQ(messagesOfCatalogue(path + ".mo"), source) << "run resources/make-catalogues";
}

TEST_P(ShippedCatalogues, FillInWhatTheEnglishTextsDo) {
    for (const auto& [text, translation] : messagesOfCatalogue(path + ".mo")) {
        EXPECT_EQ(placeholders(translation), placeholders(text)) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, ShippedCatalogues, testing::Values("de"));

} // namespace
} // namespace tav
