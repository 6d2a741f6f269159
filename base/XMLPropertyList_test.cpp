#include "base/PropertyList.hpp"
#include "testing/Golden.hpp"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace tav {
namespace {

using PropertyList::Form;

std::optional<Value> readXML(std::string_view text) {
    return PropertyList::readXML(bytesOf(text), nullptr);
}

/// The one value inside the root element.
std::optional<Value> readInside(std::string_view inside) {
    return readXML("<plist version=\"1.0\">" + std::string(inside) + "</plist>");
}

PropertyList::Error errorOf(std::string_view text) {
    PropertyList::Error error;
    EXPECT_FALSE(PropertyList::readXML(bytesOf(text), &error)) << text;
    EXPECT_FALSE(error.reason.empty()) << text;
    return error;
}

/// What stands between the header and the footer.
std::string written(const Value& value) {
    const auto bytes = PropertyList::write(value, Form::XML, nullptr);
    if (!bytes) {
        return "error";
    }
    const std::string text(textOf(*bytes));
    const std::size_t start = text.find("<plist version=\"1.0\">\n") + 22;
    return text.substr(start, text.rfind("</plist>\n") - start);
}

TEST(XMLPropertyList, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("xml_plist.json", "parseXML")) {
        EXPECT_EQ(readXML(golden.in.get<std::string>()), valueFromJSON(golden.out))
            << golden.description();
    }
}

TEST(XMLPropertyList, GoldenValuesKeepTheirTypes) {
    EXPECT_EQ(readInside("<integer>1</integer>")->type(), Value::Type::Integer);
    EXPECT_EQ(readInside("<real>1</real>")->type(), Value::Type::Real);
    EXPECT_EQ(readInside("<true/>")->type(), Value::Type::Boolean);
}

TEST(XMLPropertyList, ReadsIntegers) {
    EXPECT_EQ(readInside("<integer>+5</integer>"), Value(5));
    EXPECT_EQ(readInside("<integer> -5\n</integer>"), Value(-5));
    EXPECT_EQ(readInside("<integer>0xff</integer>"), Value(255));
    EXPECT_EQ(readInside("<integer>-0x10</integer>"), Value(-16));
    EXPECT_EQ(readInside("<integer>18446744073709551615</integer>"), Value(~std::uint64_t{0}));
    EXPECT_EQ(readInside("<integer>-9223372036854775808</integer>"),
              Value(std::numeric_limits<std::int64_t>::min()));
    for (const char* wrong :
         {"18446744073709551616", "-9223372036854775809", "1.5", "5 5", "0x", "- 5", "five"}) {
        EXPECT_FALSE(readInside("<integer>" + std::string(wrong) + "</integer>")) << wrong;
    }
}

TEST(XMLPropertyList, ReadsReals) {
    EXPECT_EQ(readInside("<real>-1.25e2</real>"), Value(-125.0));
    EXPECT_EQ(readInside("<real> nan </real>"), Value(std::nan("")));
    EXPECT_EQ(readInside("<real>+Infinity</real>"), Value(HUGE_VAL));
    EXPECT_EQ(readInside("<real>-inf</real>"), Value(-HUGE_VAL));
    EXPECT_FALSE(readInside("<real>1,5</real>"));
    EXPECT_FALSE(readInside("<real></real>"));
}

TEST(XMLPropertyList, ReadsDataAndDates) {
    EXPECT_EQ(readInside("<data>\n\tZm\n\t9v\n</data>"), Value(dataFromText("foo")));
    EXPECT_EQ(readInside("<data/>"), Value(Data()));
    EXPECT_FALSE(readInside("<data>Zm9v!</data>"));
    EXPECT_EQ(readInside("<date> 2001-01-01T00:00:01Z </date>"), Value(Date(1)));
    EXPECT_FALSE(readInside("<date>2001-13-01T00:00:00Z</date>"));
    EXPECT_FALSE(readInside("<date/>"));
}

TEST(XMLPropertyList, DictionariesAlternateKeysAndValues) {
    EXPECT_EQ(readInside("<dict><key/><true/></dict>"), Value(Value::Dictionary{{"", true}}));
    EXPECT_FALSE(readInside("<dict><key>a</key><key>b</key><true/></dict>"));
    EXPECT_FALSE(readInside("<dict><true/></dict>"));
    EXPECT_FALSE(readInside("<dict><key>a</key></dict>"));
    EXPECT_FALSE(readInside("<array><key>a</key></array>"));
    EXPECT_FALSE(readInside("<key>a</key>"));
}

TEST(XMLPropertyList, OfEqualKeysTheLastWinsInTheFirstPlace) {
    const auto value = readInside("<dict><key>a</key><integer>1</integer><key>b</key><true/>"
                                  "<key>a</key><string>2</string></dict>");
    EXPECT_EQ(value, Value(Value::Dictionary{{"a", "2"}, {"b", true}}));
    EXPECT_EQ(value->asDictionary()->begin()->first, "a");
}

TEST(XMLPropertyList, IgnoresWhatIsBetweenElements) {
    EXPECT_EQ(readInside("text<array>text<true/><?pi x?>text<!-- c --></array>text"),
              Value(Value::Array{true}));
    EXPECT_EQ(readXML("<plist a=\"1\"><string b='2'>x<!-- c -->y</string></plist>"), Value("xy"));
    EXPECT_EQ(readXML("<!-- c -->\n<plist><true/></plist>\n<!-- c -->\n"), Value(true));
}

TEST(XMLPropertyList, TheRootHoldsExactlyOneValue) {
    EXPECT_FALSE(readInside(""));
    EXPECT_FALSE(readInside("text"));
    EXPECT_FALSE(readInside("<true/><false/>"));
    EXPECT_FALSE(readInside("<plist><true/></plist>"));
    EXPECT_FALSE(readXML("<dict/>"));
    EXPECT_FALSE(readXML("<plist/>"));
    EXPECT_FALSE(readXML("<plist><true/></plist><plist><true/></plist>"));
    EXPECT_FALSE(readXML(""));
}

TEST(XMLPropertyList, RefusesUnknownAndMisplacedElements) {
    for (const char* wrong :
         {"<Dict/>", "<dic/>", "<dict2/>", "<dxta/>", "<a/>", "<k/>", "<set/>", "<arrays/>",
          "<string><true/></string>", "<true><false/></true>", "<dict><key>a<b/></key></dict>",
          "<p:dict xmlns:p='x'/>", "<dictx/>", "<data2/>", "<dat/>"}) {
        EXPECT_FALSE(readInside(wrong)) << wrong;
    }
}

TEST(XMLPropertyList, ReadsTheEncodingsOfTheDeclaration) {
    const Value expected("caf\xC3\xA9");
    EXPECT_EQ(readXML("\xEF\xBB\xBF<plist><string>caf\xC3\xA9</string></plist>"), expected);
    EXPECT_EQ(readXML("<?xml version='1.0' encoding='ISO-8859-1'?>"
                      "<plist><string>caf\xE9</string></plist>"),
              expected);
    EXPECT_EQ(readXML("<?xml version='1.0' encoding='US-ASCII'?>"
                      "<plist><string>caf&#xE9;</string></plist>"),
              expected);
    for (const bool bigEndian : {false, true}) {
        std::string units = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
        for (const char c : std::string_view("<?xml version='1.0' encoding='UTF-16'?>"
                                             "<plist><string>caf\xE9</string></plist>")) {
            units += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
        }
        EXPECT_EQ(readXML(units), expected);
    }
    EXPECT_FALSE(readXML("<?xml version='1.0' encoding='KOI8-R'?><plist><true/></plist>"));
    EXPECT_FALSE(readXML("<?xml version='1.0' encoding='US-ASCII'?>"
                         "<plist><string>caf\xC3\xA9</string></plist>"));
    EXPECT_FALSE(readXML("<plist><string>caf\xE9</string></plist>"));
}

TEST(XMLPropertyList, RefusesDeclaredEntitiesAndAttributes) {
    EXPECT_NE(errorOf("<!DOCTYPE plist [<!ENTITY a 'b'>]><plist><string>&a;</string></plist>")
                  .reason.find("entity"),
              std::string::npos);
    errorOf("<!DOCTYPE plist [<!ENTITY % a 'b'>]><plist><true/></plist>");
    errorOf("<!DOCTYPE plist [<!ENTITY a SYSTEM 'file:///etc/passwd'>]><plist><true/></plist>");
    errorOf("<!DOCTYPE plist [<!ATTLIST true a CDATA 'x'>]><plist><true/></plist>");
    errorOf("<plist><string>&bogus;</string></plist>");
}

TEST(XMLPropertyList, AnEntityThatTheDocumentTypeMightDeclareStandsForNothing) {
    const std::string type = "<!DOCTYPE plist PUBLIC '-//A//DTD P//EN' 'http://a.example/p.dtd'>";
    EXPECT_EQ(readXML(type + "<plist><string>a&nbsp;b&amp;</string></plist>"), Value("ab&"));
    errorOf("<?xml version='1.0' standalone='yes'?>" + type +
            "<plist><string>a&nbsp;b</string></plist>");
}

TEST(XMLPropertyList, TheDocumentTypeIsNeverFetched) {
    EXPECT_EQ(readXML("<!DOCTYPE plist SYSTEM 'file:///dev/zero'><plist><true/></plist>"),
              Value(true));
}

TEST(XMLPropertyList, ErrorsTellWhere) {
    const auto error = errorOf("<plist>\n<array>\n<bogus/>\n</array></plist>");
    EXPECT_EQ(error.line, 3U);
    EXPECT_EQ(error.offset, 16U);
    EXPECT_EQ(error.reason, "unexpected element <bogus>");
    EXPECT_EQ(errorOf("<plist>\n\n<array></plist>").line, 3U);
    EXPECT_EQ(errorOf(" <?xml version='1.0'?><plist><true/></plist>").line, 1U);
    EXPECT_EQ(errorOf("<plist>\n<string>\x01</string></plist>").line, 2U);
}

TEST(XMLPropertyList, NestsToTheLimit) {
    const auto nested = [](std::size_t depth) {
        std::string text;
        for (std::size_t i = 0; i < depth; ++i) {
            text += "<array>";
        }
        for (std::size_t i = 0; i < depth; ++i) {
            text += "</array>";
        }
        return text;
    };
    const auto deepest = readInside(nested(PropertyList::maximumDepth));
    ASSERT_TRUE(deepest);
    EXPECT_FALSE(readInside(nested(PropertyList::maximumDepth + 1)));
    EXPECT_FALSE(readInside(nested(400000)));
    EXPECT_TRUE(PropertyList::write(*deepest, Form::XML, nullptr));
    PropertyList::Error error;
    EXPECT_FALSE(PropertyList::write(Value(Value::Array{*deepest}), Form::XML, &error));
    EXPECT_EQ(error.reason, "nested too deep");
    EXPECT_FALSE(PropertyList::write(Value(Value::Dictionary{{"", *deepest}}), Form::XML, &error));
}

TEST(XMLPropertyList, LongTextsAndManyKeysStayWhole) {
    const std::string text(3000000, 'x');
    EXPECT_EQ(readInside("<string>" + text + "&amp;\n" + text + "</string>"),
              Value(text + "&\n" + text));
    std::string entries;
    for (int i = 0; i < 100000; ++i) {
        entries += "<key>" + std::to_string(i) + "</key><true/>";
    }
    EXPECT_EQ(readInside("<dict>" + entries + "</dict>")->asDictionary()->size(), 100000U);
}

TEST(XMLPropertyList, WritesTheWholeDocument) {
    const Value value(Value::Dictionary{{"b", Value::Array{1, true}}, {"a", Value::Dictionary{}}});
    EXPECT_EQ(textOf(*PropertyList::write(value, Form::XML, nullptr)),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n"
              "<dict>\n"
              "\t<key>a</key>\n"
              "\t<dict/>\n"
              "\t<key>b</key>\n"
              "\t<array>\n"
              "\t\t<integer>1</integer>\n"
              "\t\t<true/>\n"
              "\t</array>\n"
              "</dict>\n"
              "</plist>\n");
}

TEST(XMLPropertyList, WritesEveryType) {
    EXPECT_EQ(written("a<b>&\"c'\t\n"), "<string>a&lt;b&gt;&amp;\"c'\t\n</string>\n");
    EXPECT_EQ(written("a\r\nb"), "<string>a&#13;\nb</string>\n");
    EXPECT_EQ(written(false), "<false/>\n");
    EXPECT_EQ(written(-7), "<integer>-7</integer>\n");
    EXPECT_EQ(written(~std::uint64_t{0}), "<integer>18446744073709551615</integer>\n");
    EXPECT_EQ(written(0.1), "<real>0.1</real>\n");
    EXPECT_EQ(written(Date(0.5)), "<date>2001-01-01T00:00:00Z</date>\n");
    EXPECT_EQ(written(dataFromText("foo")), "<data>\nZm9v\n</data>\n");
    EXPECT_EQ(written(Value::Array{}), "<array/>\n");
    EXPECT_EQ(written(Value::UID{7}),
              "<dict>\n\t<key>CF$UID</key>\n\t<integer>7</integer>\n</dict>\n");
}

TEST(XMLPropertyList, IdentifiersComeBack) {
    const Value value(Value::Array{Value::UID{7}, Value::UID{~std::uint64_t{0}}});
    const auto bytes = PropertyList::write(value, Form::XML, nullptr);
    EXPECT_EQ(PropertyList::readXML(*bytes, nullptr), value);
    EXPECT_EQ(readInside("<dict><key>CF$UID</key><integer>-1</integer></dict>")->type(),
              Value::Type::Dictionary);
    EXPECT_EQ(readInside("<dict><key>CF$UID</key><real>1</real></dict>")->type(),
              Value::Type::Dictionary);
}

TEST(XMLPropertyList, LinesOfDataAreAtMost76ColumnsWide) {
    for (const std::size_t depth : {0U, 1U, 4U, 30U}) {
        Value value(Data(1000));
        for (std::size_t i = 0; i < depth; ++i) {
            value = Value(Value::Array{std::move(value)});
        }
        const std::string text = written(value);
        std::size_t start = text.find("<data>\n") + 7;
        const std::size_t end = text.find("</data>");
        std::size_t lines = 0;
        while (start < end) {
            const std::size_t newline = text.find('\n', start);
            const std::size_t digits = text.find_first_not_of('\t', start);
            EXPECT_LE(newline - digits, 76U);
            if (depth < 7) {
                EXPECT_LE(newline - digits + 8 * depth, 76U);
            }
            start = newline + 1;
            ++lines;
        }
        EXPECT_GT(lines, 17U);
        EXPECT_EQ(readInside(text), value);
    }
}

TEST(XMLPropertyList, RefusesToWriteWhatXMLCannotHold) {
    for (const std::string& wrong :
         {std::string("\0", 1), std::string("\x01"), std::string("\x1F"), std::string("\xFF"),
          std::string("\xED\xA0\x80"), std::string("\xEF\xBF\xBE"), std::string("a\xEF\xBF\xBF")}) {
        PropertyList::Error error;
        EXPECT_FALSE(PropertyList::write(wrong, Form::XML, &error));
        EXPECT_FALSE(error.reason.empty());
        EXPECT_EQ(written(Value::Dictionary{{wrong, 1}}), "error");
        EXPECT_EQ(written(Value::Array{Value(wrong)}), "error");
        EXPECT_TRUE(PropertyList::write(wrong, Form::Binary, nullptr));
    }
    EXPECT_EQ(written(Date(HUGE_VAL)), "error");
    EXPECT_EQ(written("\x7F\xC2\x80\xEF\xBF\xBD"), "<string>\x7F\xC2\x80\xEF\xBF\xBD</string>\n");
}

} // namespace
} // namespace tav
