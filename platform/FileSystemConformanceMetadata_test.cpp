#include "platform/FileSystemConformance_test.hpp"
#include "platform/memory/FaultyFileSystem.hpp"

#include <limits>

namespace tav {
namespace {

class MetadataConformance : public FileSystemConformance {
  protected:
    static constexpr std::string_view name = "user.tav.test";

    /// Whether the folder that the tests work in keeps extended attributes.
    bool keepsAttributes() {
        makeFile("probe");
        return files.setExtendedAttribute(path("probe"), name, {}) != SystemError(ENOTSUP);
    }
    int set(std::string_view file, std::string_view attribute, std::string_view value) {
        return files.setExtendedAttribute(path(file), attribute, bytesOf(value)).number();
    }
    std::string get(std::string_view file, std::string_view attribute) {
        const auto value = files.extendedAttribute(path(file), attribute);
        return value.ok() ? std::string(textOf(value.value()))
                          : "error " + std::to_string(value.error().number());
    }
    /// Sorted, and those of users alone: the host may have some of its own.
    Names attributeNames(std::string_view file) {
        auto all = files.extendedAttributeNames(path(file));
        EXPECT_TRUE(all.ok()) << file;
        Names names = all.ok() ? std::move(all).value() : Names();
        std::erase_if(names, [](const std::string& each) { return !each.starts_with("user."); });
        std::sort(names.begin(), names.end());
        return names;
    }
    static std::string error(int number) { return "error " + std::to_string(number); }
};

INSTANTIATE_TEST_SUITE_P(, MetadataConformance, testing::Values(Kind::Real, Kind::Memory),
                         [](const auto& tested) {
                             return tested.param == Kind::Real ? "Real" : "Memory";
                         });

TEST_P(MetadataConformance, AFileHasACreationDateAVolumeAndMayBeChanged) {
    makeFile("f");
    const FileAttributes file = attributesOf("f");
    EXPECT_FALSE(file.isImmutable);
    EXPECT_NE(file.mount, 0U);
    EXPECT_EQ(file.mount, attributesOf(".").mount);
    EXPECT_EQ(file.creationDate.has_value(), file.identity.birthNanoseconds != 0);
    if (file.creationDate) {
        EXPECT_NEAR(file.creationDate->secondsSince1970(),
                    double(file.identity.birthNanoseconds) / 1e9, 1e-6);
        EXPECT_TRUE(files.setModificationDate(path("f"), Date(0)).isNone());
        EXPECT_EQ(attributesOf("f").creationDate, file.creationDate);
    }
}

TEST_P(MetadataConformance, ModificationDatesComeBack) {
    makeFile("f");
    const Date changed = attributesOf("f").changeDate;
    for (const double seconds : {0.0, 600'000'000.25, 640'000'000.123456, -900'000'000.5,
                                 812'345'678.000001, 1.0, 0.999999999}) {
        ASSERT_TRUE(files.setModificationDate(path("f"), Date(seconds)).isNone()) << seconds;
        EXPECT_EQ(attributesOf("f").modificationDate, Date(seconds)) << seconds;
    }
    EXPECT_GE(attributesOf("f").changeDate, changed);
    makeFolder("d");
    ASSERT_TRUE(files.setModificationDate(path("d/"), Date(5)).isNone());
    EXPECT_EQ(attributesOf("d").modificationDate, Date(5));
}

TEST_P(MetadataConformance, TheDateOfALinkIsItsOwn) {
    makeFile("f");
    makeFolder("d");
    makeLink("l", "f");
    makeLink("nowhere", "gone");
    makeLink("toD", "d");
    const Date before = attributesOf("f").modificationDate;
    for (const std::string_view link : {"l", "nowhere"}) {
        ASSERT_TRUE(files.setModificationDate(path(link), Date(7)).isNone()) << link;
        EXPECT_EQ(attributesOf(link).modificationDate, Date(7)) << link;
    }
    EXPECT_EQ(attributesOf("f").modificationDate, before);
    ASSERT_TRUE(files.setModificationDate(path("toD/"), Date(8)).isNone());
    EXPECT_EQ(attributesOf("d").modificationDate, Date(8));
}

TEST_P(MetadataConformance, DatesThatAreNone) {
    makeFile("f");
    const Date before = attributesOf("f").modificationDate;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double seconds :
         {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, 1e19, -1e19, 1e300}) {
        EXPECT_EQ(files.setModificationDate(path("f"), Date(seconds)), SystemError(EINVAL))
            << seconds;
    }
    EXPECT_EQ(attributesOf("f").modificationDate, before);
    // What a clock can say and the volume cannot keep is the volume's business.
    EXPECT_TRUE(files.setModificationDate(path("f"), Date(9e18)).isNone());
    EXPECT_TRUE(files.setModificationDate(path("f"), Date(-9e18)).isNone());
}

TEST_P(MetadataConformance, ExtendedAttributesComeBack) {
    if (!keepsAttributes()) {
        GTEST_SKIP() << "the file system keeps no extended attributes";
    }
    makeFile("f", "text");
    makeFolder("d");
    makeLink("l", "f");
    EXPECT_EQ(get("f", name), error(ENODATA));
    const std::string value("a\0\xFF\n", 4);
    EXPECT_EQ(set("f", name, value), 0);
    EXPECT_EQ(get("f", name), value);
    EXPECT_EQ(get("l", name), value);
    EXPECT_EQ(set("l", name, ""), 0);
    EXPECT_EQ(get("f", name), "");
    EXPECT_EQ(set("f", name, std::string(2000, 'v')), 0);
    EXPECT_EQ(get("f", name), std::string(2000, 'v'));
    EXPECT_EQ(set("f", "user.\xFF other", "x"), 0);
    EXPECT_EQ(get("f", "user.\xFF other"), "x");
    EXPECT_EQ(set("d", name, "of a folder"), 0);
    EXPECT_EQ(get("d", name), "of a folder");
    EXPECT_TRUE(files.removeExtendedAttribute(path("l"), name).isNone());
    EXPECT_EQ(get("f", name), error(ENODATA));
    EXPECT_EQ(files.removeExtendedAttribute(path("f"), name), SystemError(ENODATA));
    EXPECT_EQ(read("f"), "text");
    ASSERT_EQ(errorOfMove("f", "g", Replace::No), 0);
    EXPECT_EQ(get("g", "user.\xFF other"), "x");
}

TEST_P(MetadataConformance, NamesAndSizesThatAttributesCannotHave) {
    using namespace std::string_view_literals;
    if (!keepsAttributes()) {
        GTEST_SKIP() << "the file system keeps no extended attributes";
    }
    makeFile("f");
    const std::string longest = "user." + std::string(250, 'n');
    EXPECT_EQ(set("f", longest, "x"), 0);
    EXPECT_EQ(get("f", longest), "x");
    struct Case {
        std::string_view name;
        int error;
    };
    const std::string tooLong = longest + "n";
    for (const auto& [wrong, number] :
         {Case{"", ERANGE}, Case{tooLong, ERANGE}, Case{"tav", ENOTSUP}, Case{"user.", EINVAL},
          Case{"user.a\0b"sv, EINVAL}}) {
        EXPECT_EQ(set("f", wrong, "x"), number) << wrong;
        EXPECT_EQ(get("f", wrong), error(number)) << wrong;
        EXPECT_EQ(files.removeExtendedAttribute(path("f"), wrong).number(), number) << wrong;
    }
    EXPECT_EQ(set("f", name, std::string(65'537, 'v')), E2BIG);
    EXPECT_EQ(get("f", name), error(ENODATA));
}

TEST_P(MetadataConformance, TheNamesOfExtendedAttributesAreListed) {
    if (!keepsAttributes()) {
        GTEST_SKIP() << "the file system keeps no extended attributes";
    }
    makeFile("f");
    makeFolder("d");
    makeLink("l", "f");
    EXPECT_TRUE(attributeNames("f").empty());
    EXPECT_EQ(set("f", name, "value"), 0);
    EXPECT_EQ(set("l", "user.\xFF other", ""), 0);
    EXPECT_EQ(set("d", name, ""), 0);
    EXPECT_EQ(attributeNames("f"), (Names{std::string(name), "user.\xFF other"}));
    EXPECT_EQ(attributeNames("l"), attributeNames("f"));
    EXPECT_EQ(attributeNames("d"), Names{std::string(name)});
    EXPECT_TRUE(files.removeExtendedAttribute(path("f"), name).isNone());
    EXPECT_EQ(attributeNames("f"), Names{"user.\xFF other"});
    Names many = {"user.\xFF other"};
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        many.push_back("user." + std::string(60, letter));
        EXPECT_EQ(set("f", many.back(), ""), 0);
    }
    std::sort(many.begin(), many.end());
    EXPECT_EQ(attributeNames("f"), many);
}

TEST_P(MetadataConformance, WhatIsNotThereHasNoAttributesToList) {
    using namespace std::string_literals;
    makeLink("nowhere", "gone");
    makeFile("f");
    EXPECT_EQ(files.extendedAttributeNames(path("gone")).error(), SystemError(ENOENT));
    EXPECT_EQ(files.extendedAttributeNames(path("nowhere")).error(), SystemError(ENOENT));
    EXPECT_EQ(files.extendedAttributeNames(path("f/x")).error(), SystemError(ENOTDIR));
    EXPECT_EQ(files.extendedAttributeNames("").error(), SystemError(ENOENT));
    EXPECT_EQ(files.extendedAttributeNames(path("f\0"s)).error(), SystemError(EINVAL));
}

TEST_P(MetadataConformance, EveryCallCanBeMadeToFail) {
    makeFile("f");
    FaultyFileSystem faulty(files);
    for (const std::string_view operation :
         {"setModificationDate", "extendedAttribute", "setExtendedAttribute",
          "extendedAttributeNames", "removeExtendedAttribute", "openFolder"}) {
        faulty.failOperation(operation, EIO);
    }
    const std::string file = path("f");
    EXPECT_EQ(faulty.setModificationDate(file, Date(0)), SystemError(EIO));
    EXPECT_EQ(faulty.extendedAttribute(file, name).error(), SystemError(EIO));
    EXPECT_EQ(faulty.setExtendedAttribute(file, name, {}), SystemError(EIO));
    EXPECT_EQ(faulty.removeExtendedAttribute(file, name), SystemError(EIO));
    EXPECT_EQ(faulty.openFolder(root).error(), SystemError(EIO));
    EXPECT_EQ(faulty.extendedAttributeNames(file).error(), SystemError(EIO));
    EXPECT_EQ(faulty.callCount(), 6U);
    for (const std::string_view operation :
         {"setModificationDate", "extendedAttribute", "setExtendedAttribute",
          "extendedAttributeNames", "removeExtendedAttribute"}) {
        faulty.failOperation(operation, 0);
    }
    EXPECT_TRUE(faulty.setModificationDate(file, Date(3)).isNone());
    EXPECT_EQ(attributesOf("f").modificationDate, Date(3));
    if (faulty.setExtendedAttribute(file, name, bytesOf("v")).isNone()) {
        EXPECT_EQ(textOf(faulty.extendedAttribute(file, name).value()), "v");
        EXPECT_FALSE(faulty.extendedAttributeNames(file).value().empty());
        EXPECT_TRUE(faulty.removeExtendedAttribute(file, name).isNone());
    }
}

} // namespace
} // namespace tav
