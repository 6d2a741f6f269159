#include "base/Format.hpp"
#include "base/Value.hpp"

#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

namespace {

// What C's printf makes of a form.
template <class... Arguments>
std::string printed(const std::string& form, Arguments... arguments) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    const int length = std::snprintf(nullptr, 0, form.c_str(), arguments...);
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(text.data(), text.size(), form.c_str(), arguments...);
#pragma GCC diagnostic pop
    text.pop_back();
    return text;
}

const std::vector<std::string> allFlags = {"",   "-",  "+",  " ",  "#",   "0",   "-0", "+0",
                                           " 0", "#0", "+ ", "-#", "+#0", "-+ ", "'"};

TEST(Format, IntegersAreThoseOfPrintf) {
    const std::vector<std::int64_t> values = {0,         1,         -1,         7,
                                              42,        -128,      255,        32768,
                                              INT32_MAX, INT32_MIN, UINT32_MAX, 1234567890123,
                                              INT64_MAX, INT64_MIN};
    for (const std::string& flags : allFlags) {
        for (const char* size : {"", "1", "12", ".", ".0", ".1", ".5", "12.5", "3.8", ".25"}) {
            for (const char* length : {"", "hh", "h", "l", "ll", "j", "z", "t"}) {
                for (const char letter : std::string_view("diuxXo")) {
                    const std::string form = "<%" + flags + size + length + letter + ">";
                    for (const std::int64_t value : values) {
                        EXPECT_EQ(format(form, value), printed(form, value)) << form;
                        EXPECT_EQ(format(form, static_cast<std::uint64_t>(value)),
                                  printed(form, value))
                            << form;
                    }
                }
            }
        }
    }
}

TEST(Format, RealsAreThoseOfPrintf) {
    std::vector<double> values = {0.0,
                                  -0.0,
                                  0.5,
                                  1.0,
                                  1.5,
                                  -1.5,
                                  2.5,
                                  0.125,
                                  0.1,
                                  9.5,
                                  9.995,
                                  99999.95,
                                  1e-4,
                                  1e-5,
                                  123456.0,
                                  1234567.0,
                                  1e15,
                                  1e21,
                                  1e22,
                                  1e23,
                                  1e100,
                                  DBL_MAX,
                                  DBL_MIN,
                                  5e-324,
                                  DBL_EPSILON,
                                  std::numeric_limits<double>::infinity(),
                                  -std::numeric_limits<double>::infinity(),
                                  std::numeric_limits<double>::quiet_NaN()};
    std::mt19937_64 random(5);
    for (int round = 0; round < 12; ++round) {
        const auto bits = random();
        double value = 0;
        static_assert(sizeof value == sizeof bits);
        std::memcpy(&value, &bits, sizeof value);
        values.push_back(value);
        values.push_back(static_cast<double>(bits >> 40) / 1000);
    }
    for (const std::string& flags : allFlags) {
        for (const char* size : {"", "1", "25", ".", ".0", ".1", ".2", "12.3", ".13", ".17",
                                 "30.20", ".40", ".1200"}) {
            for (const char letter : std::string_view("fFeEgGaA")) {
                const std::string form = "<%" + flags + size + letter + ">";
                for (const double value : values) {
                    const bool isFar = form.find(".1200f") != std::string::npos ||
                                       form.find(".1200F") != std::string::npos;
                    if (!isFar || value == 0 || !(std::fabs(value) < 1e-200)) {
                        EXPECT_EQ(format(form, value), printed(form, value)) << form;
                    }
                }
            }
        }
    }
}

TEST(Format, ZerosStayAlsoWhereRoundingAddsADigit) {
    // Some versions of glibc lose them.
    EXPECT_EQ(format("%#g %#g", 999999.5, 123456.0), "1.00000e+06 123456.");
    EXPECT_EQ(format("%g %g", 999999.5, 999999.4), "1e+06 999999");
}

TEST(Format, RandomRealsAreThoseOfPrintf) {
    std::mt19937_64 random(6);
    for (int round = 0; round < 2000; ++round) {
        const auto bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        const double moderate = static_cast<double>(static_cast<std::int64_t>(bits)) / 1e12;
        for (const char* form : {"%f", "%.3e", "%g", "%.17g", "%a", "%.5a", "%0.1f", "%.0f"}) {
            EXPECT_EQ(format(form, value), printed(form, value)) << form;
            EXPECT_EQ(format(form, moderate), printed(form, moderate)) << form;
        }
    }
}

TEST(Format, ZerosBeyondTheDigitsOfANumber) {
    for (const char* form : {"%.5000f", "%.5000e", "%#.5000g", "%.5000g", "%.5000a", "%06000.5000f",
                             "%-6000.5000e|", "%.5000d", "%5000d"}) {
        if (std::string_view(form).find('d') != std::string_view::npos) {
            EXPECT_EQ(format(form, 42), printed(form, 42)) << form;
            continue;
        }
        for (const double value : {0.0, 0.1, 1e300, 1e-200, -1.5}) {
            EXPECT_EQ(format(form, value), printed(form, value)) << form;
        }
    }
}

TEST(Format, TextsAreThoseOfPrintf) {
    for (const char* form :
         {"%s", "%10s|", "%-10s|", "%.2s", "%10.2s|", "%.0s|", "%.s|", "%010s"}) {
        EXPECT_EQ(format(form, "text"), printed(form, "text")) << form;
        EXPECT_EQ(format(form, ""), printed(form, "")) << form;
    }
    EXPECT_EQ(format("%c%5c|%-5c|", 'a', 'b', 'c'), "a    b|c    |");
    EXPECT_EQ(format("%c", 0x141), "A");
    EXPECT_EQ(format("%d%%", 5), "5%");
    EXPECT_EQ(format("%*d|%-*d|%.*f|%.*f", 5, 1, 5, 2, 2, 1.5, -1, 1.5),
              printed("%*d|%-*d|%.*f|%.*f", 5, 1, 5, 2, 2, 1.5, -1, 1.5));
    EXPECT_EQ(format("%*d|", -5, 1), printed("%*d|", -5, 1));
    EXPECT_EQ(format("%2$s %1$s %2$*3$s|", "a", "b", 3), "b a   b|");
    EXPECT_EQ(format("%1$.*2$f", 1.25, 1), "1.2");
}

TEST(Format, ObjectsReadAsTheyAre) {
    EXPECT_EQ(format("Couldn't remove \"%@\".", "a\xFFz"), "Couldn't remove \"a\xFFz\".");
    EXPECT_EQ(format("%@ %@ %@ %@", true, -5, UINT64_MAX, false), "1 -5 18446744073709551615 0");
    EXPECT_EQ(format("%@ %@ %@ %@", 0.1, 1.0, -2.5, 1e20), "0.1 1 -2.5 1e+20");
    EXPECT_EQ(format("%@", std::string("text")), "text");
    EXPECT_EQ(format("%@", std::string_view("text", 2)), "te");
    EXPECT_EQ(format("%@%@", std::optional<std::string>("a"), std::optional<std::string>()),
              "a(null)");
    EXPECT_EQ(format("%@ %@", nullptr, static_cast<const char*>(nullptr)), "(null) (null)");
    EXPECT_EQ(format("%@ %s", Value("text"), Value(7)), "text 7");
    const Value list(Value::Array{Value(1), Value("a b")});
    EXPECT_EQ(format("<%@>", &list), "<" + list.description() + ">");
    EXPECT_EQ(format("%@", static_cast<const Value*>(nullptr)), "(null)");
}

TEST(Format, ObjectsAreMeasuredInUnitsOfUTF16) {
    EXPECT_EQ(format("%4@|%-4@|", "é", "😀"), "   é|😀  |");
    EXPECT_EQ(format("%.1@|%.2@|%3.1@|", "éa", "😀a", "\xFFz"), "é|😀|  \xFF|");
    EXPECT_EQ(format("%3s|", "é"), " é|");
}

TEST(Format, UnitsOfUTF16) {
    EXPECT_EQ(format("%C%C", u'a', u'é'), "aé");
    EXPECT_EQ(format("%C%C%C", 0xD83D, 0xDE00, u'b'), "😀b");
    EXPECT_EQ(format("%C-%C", 0xD83D, 0xDE00), "\uFFFD-\uFFFD");
    EXPECT_EQ(format("%C", 0xDCFF), "\xFF");
    EXPECT_EQ(format("%3C|%-3C|", u'a', u'b'), "  a|b  |");
}

TEST(Format, WhatDoesNotFitIsNeverUndefined) {
    EXPECT_EQ(format("%d %@ %s %f %5d", 1), "1 (null) (null) (null) (null)");
    EXPECT_EQ(format("%3$@ %1$@ %0$@", "a"), "(null) a %0$@");
    EXPECT_EQ(format("%d %x %f %c", "12", "12", "12", "").substr(0, 13), "0 0 0.000000 ");
    EXPECT_EQ(format("%d %d %lld", 2.9, -2.9, 1e300), "2 -2 9223372036854775807");
    EXPECT_EQ(format("%lld %lld", std::numeric_limits<double>::quiet_NaN(), -1e300),
              "0 -9223372036854775808");
    EXPECT_EQ(format("%f %f %f", 1, UINT64_MAX, true),
              "1.000000 18446744073709551616.000000 1.000000");
    EXPECT_EQ(format("%d %f %d %llu", Value(7), Value(1.5), Value("7"), Value(UINT64_MAX)),
              "7 1.500000 0 18446744073709551615");
    EXPECT_EQ(format("%d %f %@", nullptr, nullptr, nullptr), "0 0.000000 (null)");
    EXPECT_EQ(format("%s %d", 5, true), "5 1");
    EXPECT_EQ(format("%*d|%.*d|", "a", 5), "5|(null)|");
}

TEST(Format, Pointers) {
    const int place = 0;
    EXPECT_EQ(format("%p", static_cast<const void*>(&place)),
              printed("%p", static_cast<const void*>(&place)));
    EXPECT_EQ(format("%p %6p|", nullptr, nullptr), "0x0    0x0|");
    EXPECT_EQ(format("%@", static_cast<const void*>(&place)),
              printed("%p", static_cast<const void*>(&place)));
}

TEST(Format, WhatIsNoConversionStands) {
    EXPECT_EQ(format(""), "");
    EXPECT_EQ(format("100%"), "100%");
    EXPECT_EQ(format("%5.2l", 1), "%5.2l");
    EXPECT_EQ(format("%k%@", "a"), "%ka");
    EXPECT_EQ(format("%-5n|%@", "a"), "%-5n|a");
    EXPECT_EQ(format("% \xFF", 1), "% \xFF");
    EXPECT_EQ(format("%\n%d", 1), "%\n1");
    EXPECT_EQ(format(std::string_view("%\0%d", 4), 1), std::string("%\0"
                                                                   "1",
                                                                   3));
}

TEST(Format, HugeWidthsDoNotExhaustTheMemory) {
    EXPECT_EQ(format("%999999999d", 1).size(), 65536U);
    EXPECT_EQ(format("%.999999999d", 1).size(), 65536U);
    EXPECT_EQ(format("%.99999999999999999999999f", 0.0).size(), 65538U);
    EXPECT_EQ(format("%*d", INT32_MIN, 1).size(), 65536U);
    EXPECT_EQ(format("%99999999999999999999$d", 1), "(null)");
    std::string form;
    for (int count = 0; count < 1000; ++count) {
        form += "%1$65536d";
    }
    EXPECT_EQ(format(form, 1).size(), (std::size_t{1} << 20) + 1000);
}

TEST(Format, TheLocalePlaysNoPart) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", ""}) {
        std::setlocale(LC_ALL, name);
        EXPECT_EQ(format("%.1f %@ %'d %a", 1.5, 1.5, 1234567, 1.5), "1.5 1.5 1234567 0x1.8p+0");
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(Format, AnyFormEndsInAText) {
    constexpr std::string_view alphabet = "%%%%@dsCfgxapc*.$0123456789-+ #lhqz\xC3\xFF";
    std::mt19937 random(7);
    for (int round = 0; round < 50000; ++round) {
        std::string form;
        for (auto length = random() % 16; length > 0; --length) {
            form += alphabet[random() % alphabet.size()];
        }
        const std::string text = format(form, 3, "é\xFF", 1e10, Value(true), nullptr);
        EXPECT_LE(text.size(), std::size_t{2} << 20);
        if (form.find('%') == std::string::npos) {
            EXPECT_EQ(text, form);
        }
    }
}

TEST(Format, ATextByItselfIsNotCopied) {
    const std::string text = "a text that no string holds without memory of its own";
    std::string storage = "before";
    const FormatArgument arguments[] = {FormatArgument(text), FormatArgument(7)};
    const std::string_view alone = formatWithArguments("%@", std::span(arguments, 1), storage);
    EXPECT_EQ(alone.data(), text.data());
    EXPECT_EQ(alone.size(), text.size());
    EXPECT_TRUE(storage.empty());
    EXPECT_EQ(formatWithArguments("%@", std::span(arguments + 1, 1), storage), "7");
    EXPECT_EQ(formatWithArguments("%@ %d", arguments, storage), text + " 7");
    EXPECT_EQ(storage, text + " 7");
}

} // namespace

} // namespace tav
