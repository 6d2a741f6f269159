// Old-style text as GNUstep's own parser and writer have it: the second opinion on ours. `pldes` of
// the package gnustep-base-runtime reads a list and writes it in its own way. Two things it cannot
// carry: a text that begins with U+FEFF, which it drops, and halves of surrogate pairs, so no bytes
// that are no UTF-8.

#include "base/OldStyleText.hpp"
#include "testing/Golden.hpp"
#include "testing/TemporaryFolder.hpp"

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <unistd.h>

namespace tav {
namespace {

constexpr const char* program = "/usr/bin/pldes";

class OldStyleTextPeer : public testing::Test {
  protected:
    void SetUp() override {
        if (access(program, X_OK) != 0) {
            GTEST_SKIP() << program << " is not installed (gnustep-base-runtime)";
        }
    }

    /// What the peer makes of a text. It keeps its settings in the home folder.
    std::string rewritten(std::string_view text) {
        std::ofstream(folder_.path("list"), std::ios::binary) << text;
        const std::string command = "cd '" + folder_.path() + "' && HOME=\"$PWD\" LC_ALL=C.UTF-8 " +
                                    "timeout 60 " + program + " list 2>/dev/null </dev/null";
        // A program of the system under a path of our own making.
        const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "re"), pclose);
        std::string result;
        char buffer[4096];
        while (const std::size_t count =
                   output ? fread(buffer, 1, sizeof buffer, output.get()) : 0) {
            result.append(buffer, count);
        }
        return result;
    }

    /// One run of the peer for all values, as elements of one array.
    void expectEqual(const Value::Array& values) {
        const std::string text = rewritten(OldStyleText::write(values));
        PropertyList::Error error;
        const std::optional<Value> back = OldStyleText::read(text, &error);
        ASSERT_TRUE(back) << error.reason << " in line " << error.line << " of\n" << text;
        ASSERT_NE(back->asArray(), nullptr);
        ASSERT_EQ(back->asArray()->size(), values.size()) << text;
        for (std::size_t i = 0; i < values.size(); ++i) {
            // Numbers and dates are texts to both.
            EXPECT_EQ(back->asArray()->at(i),
                      OldStyleText::read(OldStyleText::write(values[i]), nullptr))
                << OldStyleText::write(values[i]);
        }
    }

  private:
    TemporaryFolder folder_;
};

TEST_F(OldStyleTextPeer, ReadsAndWritesTheGoldenValues) {
    Value::Array values;
    for (const GoldenCase& golden : goldenCases("oldstyle_plist.json", "serialise")) {
        values.push_back(*valueFromJSON(golden.in));
    }
    expectEqual(values);
}

TEST_F(OldStyleTextPeer, ReadsAndWritesRecordsAndNumbers) {
    expectEqual({Value::Dictionary{{"date", Date(283996799)},
                                   {"fileName", "Some File.m"},
                                   {"fileLine", 42},
                                   {"message", "Couldn't remove \"a\\b\".\n\tReason: 13"},
                                   {"function", "-[Item moveTo:]"},
                                   {"object", Value::Dictionary{{"k", Value::Array{1, 2.5, true}}}},
                                   {"empty", Value::Dictionary{}}},
                 -1, 1e300, Data(), dataFromText("0123456789abcdef!"), Value::Array{}});
}

TEST_F(OldStyleTextPeer, ReadsAndWritesNastyTexts) {
    Value::Array values{"\"",
                        "\\",
                        "'",
                        "\\\\\"",
                        "\\U00e9",
                        "\\101",
                        "/* */",
                        "//",
                        ";",
                        "=",
                        "{",
                        "(",
                        "<",
                        "a,b",
                        "$",
                        "\xC3\xA9",
                        "e\xCC\x81",
                        "\xE6\x97\xA5",
                        "\xF0\x9F\x98\x80",
                        "\xE2\x80\xA8",
                        "\xEF\xBF\xBD"};
    for (int c = 1; c < 0x80; ++c) {
        values.emplace_back(std::string("a") + static_cast<char>(c) + "b");
        values.emplace_back(std::string(1, static_cast<char>(c)));
        // A digit behind an octal escape is no part of it.
        values.emplace_back(std::string(1, static_cast<char>(c)) + "1");
    }
    expectEqual(values);
}

TEST_F(OldStyleTextPeer, ReadsTheGoldenTextsAlike) {
    for (const GoldenCase& golden : goldenCases("oldstyle_plist.json", "parse")) {
        // Single quotes are none to it.
        if (golden.whole.contains("source") || golden.out.is_string()) {
            continue;
        }
        const std::string text = rewritten(golden.in.get<std::string>());
        EXPECT_EQ(text.empty() ? std::nullopt : OldStyleText::read(text, nullptr),
                  valueFromJSON(golden.out))
            << golden.description() << '\n'
            << text;
    }
}

} // namespace
} // namespace tav
