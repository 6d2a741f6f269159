#include "base/Url.hpp"
#include "testing/Golden.hpp"

#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

nlohmann::json asJSON(std::optional<std::string_view> text) {
    return text ? nlohmann::json(std::string(*text)) : nlohmann::json(nullptr);
}

nlohmann::json member(const Url& url, const std::string& name) {
    if (name == "scheme") {
        return asJSON(url.scheme());
    }
    if (name == "user") {
        return asJSON(url.user());
    }
    if (name == "password") {
        return asJSON(url.password());
    }
    if (name == "host") {
        return asJSON(url.host());
    }
    if (name == "port") {
        return url.port() ? nlohmann::json(*url.port()) : nlohmann::json(nullptr);
    }
    if (name == "path") {
        return url.path();
    }
    if (name == "query") {
        return asJSON(url.query());
    }
    if (name == "fragment") {
        return asJSON(url.fragment());
    }
    return name == "absoluteString" ? nlohmann::json(url.absoluteString()) : "no such member";
}

TEST(Url, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("url.json", "URLWithString")) {
        const auto url = Url::withString(golden.in.get<std::string>());
        ASSERT_EQ(url.has_value(), golden.out.is_object()) << golden.description();
        for (const auto& [name, value] : golden.out.items()) {
            EXPECT_EQ(member(*url, name), value) << name << " of " << golden.description();
        }
    }
}

Url made(std::string_view text) {
    const auto url = Url::withString(text);
    EXPECT_TRUE(url) << text;
    return url.value_or(*Url::withString("failed"));
}

TEST(Url, PartsStandAsTheyAreWritten) {
    const Url url = made("HTTP://a%40:b:c@Ho%53t:007/%41%2f?x%20=?/#f?%23");
    EXPECT_EQ(url.scheme(), "HTTP");
    EXPECT_EQ(url.user(), "a%40");
    EXPECT_EQ(url.password(), "b:c");
    EXPECT_EQ(url.host(), "Ho%53t");
    EXPECT_EQ(url.port(), 7);
    EXPECT_EQ(url.path(), "/A/");
    EXPECT_EQ(url.query(), "x%20=?/");
    EXPECT_EQ(url.fragment(), "f?%23");
}

TEST(Url, EmptyPartsAreNotMissingOnes) {
    const Url url = made("x://:@/?#");
    EXPECT_EQ(url.user(), "");
    EXPECT_EQ(url.password(), "");
    EXPECT_EQ(url.host(), std::nullopt);
    EXPECT_EQ(url.port(), std::nullopt);
    EXPECT_EQ(url.query(), "");
    EXPECT_EQ(url.fragment(), "");
    const Url bare = made("x:");
    EXPECT_EQ(bare.scheme(), "x");
    EXPECT_EQ(bare.user(), std::nullopt);
    EXPECT_EQ(bare.query(), std::nullopt);
    EXPECT_EQ(bare.path(), "");
}

TEST(Url, PortsThatAreNone) {
    EXPECT_EQ(made("http://h:/").port(), std::nullopt);
    EXPECT_EQ(made("http://h:65535").port(), 65535);
    EXPECT_EQ(made("http://h:65536").port(), std::nullopt);
    EXPECT_EQ(made("http://h:99999999999999999999").port(), std::nullopt);
    for (const char* text : {"http://h:8a/", "http://h:-1/", "http://h:1:2/", "http://[::1]8/"}) {
        EXPECT_FALSE(Url::withString(text)) << text;
    }
}

TEST(Url, RelativeReferences) {
    EXPECT_EQ(made("").absoluteString(), "");
    EXPECT_EQ(made("//h/p").host(), "h");
    EXPECT_EQ(made("//h/p").scheme(), std::nullopt);
    EXPECT_EQ(made("a/b:c").path(), "a/b:c");
    EXPECT_EQ(made("?q:r").query(), "q:r");
    EXPECT_EQ(made("#f:g").fragment(), "f:g");
    EXPECT_EQ(made("../x").path(), "../x");
    // A colon in the first segment ends a scheme, and this is none.
    for (const char* text : {":x", "1a:b", "a_b:c", "://x"}) {
        EXPECT_FALSE(Url::withString(text)) << text;
    }
}

TEST(Url, MalformedTexts) {
    for (const char* text : {" ",
                             "a\tb",
                             "a\nb",
                             "a\x7F",
                             "é",
                             "\xFF",
                             "a\"b",
                             "a<b",
                             "a>b",
                             "a\\b",
                             "a^b",
                             "a`b",
                             "a{b",
                             "a}b",
                             "a|b",
                             "a[b",
                             "a]b",
                             "a#b#c",
                             "?[",
                             "#[",
                             "http://h h/",
                             "http://h/%",
                             "http://%4/",
                             "http://u%@h/",
                             "http://a@b@c/",
                             "http://u[@h/",
                             "?%zz",
                             "#%z0"}) {
        EXPECT_FALSE(Url::withString(text)) << testing::PrintToString(text);
    }
    EXPECT_FALSE(Url::withString(std::string_view("a\0b", 3)));
}

TEST(Url, AddressesInBrackets) {
    for (const char* address :
         {"::", "::1", "1::", "1:2:3:4:5:6:7:8", "1::8", "fe80::A", "::ffff:10.0.0.255",
          "1:2:3:4:5:6:1.2.3.4", "1:2:3:4:5:6:7::", "::2:3:4:5:6:7:8", "v1.a:b", "VF.x!"}) {
        EXPECT_EQ(made("x://[" + std::string(address) + "]:1/").host(), address);
    }
    for (const char* address : {"",
                                ":",
                                ":::",
                                "1",
                                "1:2:3:4:5:6:7",
                                "1:2:3:4:5:6:7:8:9",
                                "1::2::3",
                                "12345::",
                                "g::",
                                "1:2:3:4::5:6:7:8",
                                "1.2.3.4::",
                                "::1.2.3",
                                "::1.2.3.4.5",
                                "::256.1.1.1",
                                "::01.1.1.1",
                                "::1.2.3.4:5",
                                "::1..2.3",
                                "1:2:3:4:5:6:7:1.2.3.4",
                                ":1::",
                                "::1%25eth0",
                                "v.a",
                                "v1.",
                                "v1a",
                                "vg.a",
                                "v1.%41",
                                "v1.a/"}) {
        EXPECT_FALSE(Url::withString("x://[" + std::string(address) + "]/")) << address;
    }
    EXPECT_FALSE(Url::withString("x://[::1/"));
    EXPECT_FALSE(Url::withString("x://a[::1]/"));
}

TEST(Url, CopiesAreIndependent) {
    std::optional<Url> first = made("s://host/path");
    const Url copy = *first; // NOLINT(performance-unnecessary-copy-initialization)
    first.reset();
    EXPECT_EQ(copy.host(), "host");
    EXPECT_EQ(copy.path(), "/path");
    EXPECT_EQ(copy, made("s://host/path"));
    EXPECT_NE(copy, made("s://host/path/"));
}

} // namespace
} // namespace tav
