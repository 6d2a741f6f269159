#include "foundation/TextEncodingTable.hpp"

#include "foundation/TextEncoding.hpp"

#include <algorithm>
#include <array>

namespace tav::internal {

namespace {

constexpr EncodingEntry own(std::uint32_t number, EncodingKind kind, bool keepsASCII) {
    return {number, kind, nullptr, keepsASCII};
}

constexpr EncodingEntry table(std::uint32_t number, const char* converter) {
    return {number, EncodingKind::Converter, converter, true};
}

constexpr EncodingEntry states(std::uint32_t number, const char* converter) {
    return {number, EncodingKind::Converter, converter, false};
}

// In ascending order. ICU's names are those of one table each, not aliases that change from release
// to release.
constexpr auto entries = std::to_array<EncodingEntry>({
    own(TextEncoding::ASCII, EncodingKind::ASCII, true),
    own(TextEncoding::NEXTSTEP, EncodingKind::NEXTSTEP, true),
    table(TextEncoding::JapaneseEUC, "euc-jp-2007"),
    own(TextEncoding::UTF8, EncodingKind::UTF8, true),
    table(TextEncoding::ISOLatin1, "ISO-8859-1"),
    own(TextEncoding::Symbol, EncodingKind::Symbol, false),
    own(TextEncoding::NonLossyASCII, EncodingKind::NonLossyASCII, false),
    {TextEncoding::ShiftJIS, EncodingKind::ShiftJIS, "ibm-943_P15A-2003", true},
    table(TextEncoding::ISOLatin2, "ibm-912_P100-1995"),
    own(TextEncoding::Unicode, EncodingKind::UTF16, false),
    table(TextEncoding::WindowsCP1251, "ibm-5347_P100-1998"),
    table(TextEncoding::WindowsCP1252, "ibm-5348_P100-1997"),
    table(TextEncoding::WindowsCP1253, "ibm-5349_P100-1998"),
    table(TextEncoding::WindowsCP1254, "ibm-5350_P100-1998"),
    table(TextEncoding::WindowsCP1250, "ibm-5346_P100-1998"),
    states(TextEncoding::ISO2022JP, "ISO_2022,locale=ja,version=0"),
    table(TextEncoding::MacOSRoman, "macos-0_2-10.2"),
    table(0x80000006, "macos-6_2-10.4"),            // Mac OS Greek
    table(0x80000007, "macos-7_3-10.2"),            // Mac OS Cyrillic
    table(0x8000001D, "macos-29-10.2"),             // Mac OS Central European
    table(0x80000023, "macos-35-10.2"),             // Mac OS Turkish
    table(0x80000203, "ibm-913_P100-2000"),         // ISO Latin 3
    table(0x80000204, "ibm-914_P100-1995"),         // ISO Latin 4
    table(0x80000205, "ibm-915_P100-1995"),         // ISO Latin and Cyrillic
    table(0x80000206, "ibm-1089_P100-1995"),        // ISO Latin and Arabic
    table(0x80000207, "ibm-9005_X110-2007"),        // ISO Latin and Greek
    table(0x80000208, "ibm-5012_P100-1999"),        // ISO Latin and Hebrew
    table(0x80000209, "ibm-920_P100-1995"),         // ISO Latin 5
    table(0x8000020D, "ibm-921_P100-1995"),         // ISO Latin 7
    table(0x8000020F, "ibm-923_P100-1998"),         // ISO Latin 9
    table(0x80000505, "ibm-9447_P100-2002"),        // Windows 1255, Hebrew
    table(0x80000506, "ibm-9448_X100-2005"),        // Windows 1256, Arabic
    table(0x80000507, "ibm-9449_P100-2002"),        // Windows 1257, Baltic
    table(0x80000508, "ibm-5354_P100-1998"),        // Windows 1258, Vietnamese
    table(0x80000632, "gb18030"),                   // GB 18030
    table(0x80000930, "ibm-1383_P110-1999"),        // EUC of simplified Chinese
    table(0x80000931, "euc-tw-2014"),               // EUC of traditional Chinese
    table(0x80000940, "ibm-970_P110_P110-2006_U2"), // EUC of Korean
    table(0x80000A02, "ibm-878_P100-1996"),         // KOI8-R
    table(0x80000A03, "windows-950-2000"),          // Big5
    own(TextEncoding::UTF32, EncodingKind::UTF32, false),
    own(TextEncoding::UTF16BigEndian, EncodingKind::UTF16BigEndian, false),
    own(TextEncoding::UTF16LittleEndian, EncodingKind::UTF16LittleEndian, false),
    states(TextEncoding::UTF32BigEndian, "UTF-32BE"),
    states(TextEncoding::UTF32LittleEndian, "UTF-32LE"),
});

static_assert(std::is_sorted(entries.begin(), entries.end(),
                             [](const EncodingEntry& a, const EncodingEntry& b) {
                                 return a.number < b.number;
                             }));

} // namespace

const EncodingEntry* findEncoding(std::uint32_t number) {
    const auto* const found = std::lower_bound(
        entries.begin(), entries.end(), number,
        [](const EncodingEntry& entry, std::uint32_t sought) { return entry.number < sought; });
    return found != entries.end() && found->number == number ? &*found : nullptr;
}

} // namespace tav::internal
