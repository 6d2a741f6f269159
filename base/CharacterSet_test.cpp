#include "base/CharacterSet.hpp"

#include <set>

#include <gtest/gtest.h>

namespace tav {

namespace {

constexpr CharacterSet vowels = CharacterSet::withUnits(u"aeiou");
static_assert(vowels.contains(u'e') && !vowels.contains(u'b'));
static_assert(vowels.isASCII());
static_assert(CharacterSet() == CharacterSet::withUnits(u""));

void expectMembers(const CharacterSet& set, const std::set<char32_t>& members) {
    for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
        ASSERT_EQ(set.contains(static_cast<char16_t>(unit)), members.contains(unit))
            << std::hex << std::uint32_t{unit};
    }
}

TEST(CharacterSet, HoldsTheCharactersOfAText) {
    expectMembers(CharacterSet(), {});
    expectMembers(vowels, {'a', 'e', 'i', 'o', 'u'});
    expectMembers(CharacterSet::withCharactersInString("a/é\uFFFF"), {'a', '/', 0xE9, 0xFFFF});
    expectMembers(CharacterSet::withCharactersInString(std::string_view("\0a", 2)), {0, 'a'});
}

TEST(CharacterSet, APairOfSurrogatesIsNoMember) {
    expectMembers(CharacterSet::withCharactersInString("a😀b"), {'a', 'b'});
    expectMembers(CharacterSet::withUnits(std::u16string{0xD83D, u'a', 0xDE00}),
                  {0xD83D, 'a', 0xDE00});
    expectMembers(CharacterSet::withUnits(std::u16string{u'a', 0xD83D}), {'a', 0xD83D});
}

TEST(CharacterSet, BytesThatAreNoUTF8AreUnits) {
    expectMembers(CharacterSet::withCharactersInString("\xFF\x80"), {0xDCFF, 0xDC80});
}

TEST(CharacterSet, RangesEndWithTheUnits) {
    expectMembers(CharacterSet::withRange(1, 3), {1, 2, 3});
    expectMembers(CharacterSet::withRange(u'a', 0), {});
    expectMembers(CharacterSet::withRange(0xFFFE, 100), {0xFFFE, 0xFFFF});
    expectMembers(CharacterSet::withRange(63, 2), {63, 64});
}

TEST(CharacterSet, SetsAreJoined) {
    CharacterSet set = vowels | CharacterSet::withRange(u'x', 2);
    expectMembers(set, {'a', 'e', 'i', 'o', 'u', 'x', 'y'});
    EXPECT_TRUE(set.isASCII());
    set |= CharacterSet::withRange(0x80, 1);
    EXPECT_FALSE(set.isASCII());
    EXPECT_NE(set, vowels);
    EXPECT_FALSE(CharacterSet::withRange(0xFFFF, 1).isASCII());
    EXPECT_TRUE(CharacterSet::withRange(0, 0x80).isASCII());
}

} // namespace

} // namespace tav
