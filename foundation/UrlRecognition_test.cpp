#include "foundation/UrlRecognition.hpp"
#include "testing/Golden.hpp"

#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(UrlRecognition, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("edges.json", "isURL")) {
        const auto expected =
            golden.out.is_null() ? std::nullopt : std::optional(golden.out.get<std::string>());
        EXPECT_EQ(isURL(golden.in.get<std::string>()), expected) << golden.description();
    }
}

void expectItself(const char* text) { EXPECT_EQ(isURL(text), text); }
void expectNone(const char* text) { EXPECT_EQ(isURL(text), std::nullopt) << text; }
void expectWithScheme(const std::string& text) { EXPECT_EQ(isURL(text), "http://" + text); }

TEST(UrlRecognition, WithAScheme) {
    expectItself("http://host");
    expectItself("x://y");
    expectItself("file:///etc/x");
    expectItself("HTTP://HOST/A?b#c");
    // Only the scheme in small letters is refused.
    expectNone("telnet://host");
    expectNone("telnet://www.example.com");
    expectItself("TELNET://host");
    expectItself("telnets://host");
    // Malformed, or without a scheme.
    expectNone("http://ho st");
    expectNone("http://höst");
    expectNone("http://host/%zz");
    expectNone("1http://host");
    expectNone("h\xFF://host");
    expectNone("/a://b");
    expectNone("www.example.com/http://x y");
    expectNone("www.example.com/http://x");
    expectNone("www.example.com?q=http://x");
}

TEST(UrlRecognition, WithoutADotThereIsNone) {
    expectNone("");
    expectNone("www");
    expectNone("mailto:someone");
    expectNone("aim:someone");
    expectNone(".www.example.com");
    expectNone(".");
    expectNone("://");
    expectNone("://a.b");
    expectNone("://www.example.com");
    expectNone("://mailto:a@b.c");
    // A dot with an accent is none.
    expectNone("mailto:a.\u0301b");
}

TEST(UrlRecognition, MailAndChat) {
    expectItself("mailto:a@b.c");
    expectItself("aim:goim?screenname=a.b");
    // Whatever follows, malformed or not.
    expectItself("mailto:a b <x@y.z>");
    expectItself("aim:é.\xFF");
    // Slashes with an accent begin no host.
    expectItself("mailto:a.b://\u0301c");
    expectNone("mailto:a.b://c d");
    expectNone("MAILTO:a@b.c");
    expectNone("Aim:a.b");
    expectNone("mailto.a@b.c");
}

TEST(UrlRecognition, HostsOfTheWorldWideWeb) {
    expectWithScheme("www.acme.com");
    expectWithScheme("www.acme.uk");
    expectWithScheme("WWW.ACME.COM");
    expectWithScheme("www.a.b.c.org");
    expectWithScheme("www..com");
    expectWithScheme("www.acme.com:80/path?query.x#f");
    expectWithScheme("user:pw@www.acme.com");
    expectNone("www.acme.zzz");
    expectNone("www.acme.eu");
    expectNone("acme.com");
    expectNone("www.com");
    expectNone("web.acme.com");
    expectNone("wwww.acme.com");
    expectNone("x.www.acme.com");
    expectNone("www.acme.com.");
    expectNone("www.acme com");
    expectNone("www.acme.com/a b");
    expectNone("www.acmé.com");
    expectNone("www.acme.c%6Fm");
    expectNone("host/www.acme.com");
    expectNone("/www.acme.com");
    expectNone("www.acme.com:8x");
    expectNone("[::1.2.3.4]");
}

} // namespace
} // namespace tav
