#include "log/LogPackets.hpp"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using LogPackets::End;
using Payloads = std::vector<std::string_view>;

std::string fixed(std::string text) {
    const std::size_t size = LogPackets::fixLineEndings(std::as_writable_bytes(std::span(text)));
    text.resize(size);
    return text;
}

TEST(LogPacketsLineEndings, PairsBecomeLineFeeds) {
    EXPECT_EQ(fixed(""), "");
    EXPECT_EQ(fixed("\r\n"), "\n");
    EXPECT_EQ(fixed("a\r\nb\r\n\r\nc"), "a\nb\n\nc");
    EXPECT_EQ(fixed("\r\r\n\n"), "\r\n\n");
    EXPECT_EQ(fixed("\ra\nb\r"), "\ra\nb\r");
}

TEST(LogPacketsLineEndings, TheFirstPairHasToComeEarly) {
    // The byte at 20000 would be copied without a pair having been seen; a pair that begins there
    // is none.
    for (const std::size_t begin : {19998U, 19999U, 20000U}) {
        const std::string head(begin, 'x');
        EXPECT_EQ(fixed(head + "\r\nb\r\n"), head + "\nb\n") << begin;
    }
    const std::string late(20001, 'x');
    EXPECT_EQ(fixed(late + "\r\nb\r\n"), late + "\r\nb\r\n");
    const std::string loneReturns(20002, '\r');
    EXPECT_TRUE(fixed(loneReturns + "\n") == loneReturns + "\n");
}

TEST(LogPacketsLineEndings, AfterAnEarlyPairEverythingIsConverted) {
    const std::string middle(50000, 'x');
    EXPECT_EQ(fixed("\r\n" + middle + "\r\n"), "\n" + middle + "\n");
}

TEST(LogPackets, PacketsOneBehindAnother) {
    const auto found = LogPackets::find("3 abc\n2 de\n");
    EXPECT_EQ(found.payloads, (Payloads{"abc", "de"}));
    EXPECT_EQ(found.end, End::Whole);
    EXPECT_EQ(found.endOfPackets, 11U);
    EXPECT_TRUE(LogPackets::find("").payloads.empty());
}

TEST(LogPackets, WhatIsNoDigitBeforeALengthIsSkipped) {
    EXPECT_EQ(LogPackets::find("\n\n 3 abc\n\n-x2 de\n").payloads, (Payloads{"abc", "de"}));
    EXPECT_EQ(LogPackets::find(std::string_view("\0\0002 de\n", 7)).payloads, Payloads{"de"});
}

TEST(LogPackets, AnyOtherByteThanABlankBelongsToThePayload) {
    EXPECT_EQ(LogPackets::find("3abc\n2\tde\n").payloads, (Payloads{"abc", "\td"}));
}

TEST(LogPackets, TheTerminatorMayBeAnyByte) {
    EXPECT_EQ(LogPackets::find("3 abc92 de9").payloads, (Payloads{"abc", "de"}));
}

TEST(LogPackets, LengthsMayHaveLeadingZeros) {
    EXPECT_EQ(LogPackets::find("0003 abc\n").payloads, Payloads{"abc"});
}

TEST(LogPackets, ALengthOfZeroEndsTheParse) {
    EXPECT_EQ(LogPackets::find("1 a\n0 \n1 b\n").payloads, Payloads{"a"});
    EXPECT_EQ(LogPackets::find("1 a\n000\n1 b\n").payloads, Payloads{"a"});
}

TEST(LogPackets, MoreBytesThanRemainEndTheParse) {
    EXPECT_EQ(LogPackets::find("1 a\n4 abc").payloads, Payloads{"a"});
    EXPECT_EQ(LogPackets::find("1 a\n3 abc").payloads, (Payloads{"a", "abc"}));
    for (const char* length : {"4294967295", "4294967296", "4294967297", "18446744073709551615",
                               "18446744073709551617", "99999999999999999999999999999999999"}) {
        const std::string file = "1 a\n" + std::string(length) + " a\n";
        EXPECT_EQ(LogPackets::find(file).payloads, Payloads{"a"}) << length;
    }
}

TEST(LogPackets, DigitsAtTheEndAreNoPacket) {
    EXPECT_EQ(LogPackets::find("1 a\n1").payloads, Payloads{"a"});
    EXPECT_EQ(LogPackets::find("12345").payloads, Payloads{});
}

TEST(LogPackets, WhatStandsBehindThePackets) {
    EXPECT_EQ(LogPackets::find("").end, End::Whole);
    EXPECT_EQ(LogPackets::find("3 abc").end, End::WithoutTerminator);
    EXPECT_EQ(LogPackets::find("3 abc\n\n").end, End::Garbage);
    for (const char* rest : {"1", "12", "1234567890", "12 ", "12 {", "12 {\n", "12 {\n  ",
                             "12 {\n    ", "12 {\n    a ="}) {
        const auto found = LogPackets::find("3 abc\n" + std::string(rest));
        EXPECT_EQ(found.end, End::Interrupted) << rest;
        EXPECT_EQ(found.endOfPackets, 6U);
    }
    for (const char* rest : {"\n", "x", "\n12", "0", "012", "12345678901", "12x", "12\n", "12 x",
                             "12 { ", "12 {\n\t", "12 {\n   x", "0 {\n"}) {
        const auto found = LogPackets::find("3 abc\n" + std::string(rest));
        EXPECT_EQ(found.end, End::Garbage) << rest;
        EXPECT_EQ(found.endOfPackets, 6U);
    }
}

TEST(LogPackets, ManyPacketsAreFoundInOnePass) {
    std::string file;
    for (int i = 0; i < 1000; ++i) {
        LogPackets::append(file, std::string(static_cast<std::size_t>(1 + i % 300), 'x'));
    }
    const auto found = LogPackets::find(file);
    ASSERT_EQ(found.payloads.size(), 1000U);
    EXPECT_EQ(found.payloads[299].size(), 300U);
    EXPECT_EQ(found.end, End::Whole);
}

TEST(LogPackets, APacketIsMadeAroundItsPayload) {
    for (const std::size_t size : {0U, 1U, 9U, 10U, 99U, 100U, 12345U}) {
        const std::string payload(size, 'x');
        const std::string packet = std::to_string(size) + " " + payload + "\n";
        std::string out = "before";
        LogPackets::append(out, payload);
        EXPECT_EQ(out, "before" + packet);
        EXPECT_EQ(LogPackets::sizeOf(size), packet.size());
        const std::size_t head = packet.size() - size - 1;
        EXPECT_EQ(LogPackets::headSize(size), head);
        std::string buffer = "==" + std::string(head, ' ') + payload + " =";
        EXPECT_EQ(LogPackets::wrapInPlace(buffer.data() + 2 + head, size), packet);
        EXPECT_EQ(buffer, "==" + packet + "=");
    }
}

} // namespace
} // namespace tav
