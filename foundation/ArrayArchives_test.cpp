#include "base/KeyedArchiver.hpp"
#include "base/KeyedUnarchiver.hpp"
#include "base/PropertyList.hpp"
#include "foundation/ArrayExtensions.hpp"

#include <functional>

#include <gtest/gtest.h>

namespace tav {
namespace {

class Named : public Coding {
  public:
    explicit Named(std::string name) : name_(std::move(name)) {}
    [[nodiscard]] std::string className() const override { return "TestNamed"; }
    void encode(KeyedArchiver& archiver) const override { archiver.encodeText("name", name_); }
    static std::shared_ptr<Coding> make(KeyedUnarchiver& unarchiver) {
        const auto name = unarchiver.decodeText("name");
        return name == "none" ? nullptr : std::make_shared<Named>(name.value_or(""));
    }

    std::string name_;
};

class Other : public Coding {
  public:
    [[nodiscard]] std::string className() const override { return "TestOther"; }
    void encode(KeyedArchiver&) const override {}
    static std::shared_ptr<Coding> make(KeyedUnarchiver&) { return std::make_shared<Other>(); }
};

class ArrayArchives : public testing::Test {
  protected:
    ArrayArchives() {
        registerArchivedClass("TestNamed", Named::make);
        registerArchivedClass("TestOther", Other::make);
    }
    static std::string failureOf(const std::function<void()>& operation) {
        try {
            operation();
        } catch (const Exception& exception) {
            return exception.name();
        }
        return {};
    }
    static std::string failureOfReading(const std::vector<Data>& archives) {
        return failureOf([&] { static_cast<void>(arrayWithDataArray<Named>(archives)); });
    }
    static std::string failureOfReading(const Value::Array& archives) {
        return failureOf([&] { static_cast<void>(arrayWithDataArray(archives)); });
    }

    const std::string cannotRead{KeyedUnarchiver::invalidUnarchiveOperation};
    const std::string cannotWrite{KeyedArchiver::invalidArchiveOperation};
};

TEST_F(ArrayArchives, ObjectsComeBackInTheirOrder) {
    const std::vector<std::shared_ptr<Named>> array = {
        std::make_shared<Named>("b"), std::make_shared<Named>("a"), std::make_shared<Named>("")};
    const std::vector<Data> archives = dataArray(array);
    ASSERT_EQ(archives.size(), 3U);
    const auto again = arrayWithDataArray<Named>(archives);
    ASSERT_EQ(again.size(), 3U);
    for (std::size_t i = 0; i < again.size(); ++i) {
        EXPECT_EQ(again[i]->name_, array[i]->name_);
        EXPECT_NE(again[i], array[i]);
    }
}

TEST_F(ArrayArchives, EveryElementIsAnArchiveOfItsOwn) {
    const auto object = std::make_shared<Named>("a");
    const auto archives = dataArray(std::vector{object, object});
    ASSERT_EQ(archives.size(), 2U);
    EXPECT_EQ(archives[0], archivedDataWithRootObject(object.get()));
    EXPECT_EQ(archives[1], archives[0]);
    const auto again = arrayWithDataArray<Named>(archives);
    EXPECT_NE(again[0], again[1]); // the same object no more
}

TEST_F(ArrayArchives, AnyClassServesWhereNoneIsAskedFor) {
    const std::vector<std::shared_ptr<const Coding>> array = {std::make_shared<Other>(),
                                                              std::make_shared<Named>("a")};
    const auto again = arrayWithDataArray(dataArray(array));
    ASSERT_EQ(again.size(), 2U);
    EXPECT_EQ(again[0]->className(), "TestOther");
    EXPECT_EQ(again[1]->className(), "TestNamed");
}

TEST_F(ArrayArchives, ValuesComeBackInTheirOrder) {
    const Value::Array array = {Value("text"),
                                Value(7),
                                Value(2.5),
                                Value(true),
                                Value(dataFromText("bytes")),
                                Value(Date(17)),
                                Value(""),
                                Value(Value::Array{Value(1), Value(Value::Array())}),
                                Value(Value::Dictionary{{"key", "value"}})};
    const Value::Array archives = dataArray(array);
    ASSERT_EQ(archives.size(), array.size());
    for (std::size_t i = 0; i < array.size(); ++i) {
        ASSERT_NE(archives[i].asData(), nullptr);
        EXPECT_EQ(*archives[i].asData(), archivedDataWithRootObject(array[i]));
    }
    EXPECT_EQ(arrayWithDataArray(archives), array);
}

TEST_F(ArrayArchives, EmptyArraysAreEmptyArrays) {
    EXPECT_TRUE(dataArray(Value::Array()).empty());
    EXPECT_TRUE(arrayWithDataArray(Value::Array()).empty());
    EXPECT_TRUE(dataArray(std::vector<std::shared_ptr<Named>>()).empty());
    EXPECT_TRUE(arrayWithDataArray(std::vector<Data>()).empty());
}

TEST_F(ArrayArchives, WhatCannotBeArchivedIsAnError) {
    const std::vector<std::shared_ptr<Named>> withNull = {std::make_shared<Named>("a"), nullptr};
    EXPECT_EQ(failureOf([&] { static_cast<void>(dataArray(withNull)); }), cannotWrite);
    const Value::Array withReference = {Value(1), Value(Value::UID{1})};
    EXPECT_EQ(failureOf([&] { static_cast<void>(dataArray(withReference)); }), cannotWrite);
}

TEST_F(ArrayArchives, AnElementThatIsNoArchiveIsAnError) {
    const Data good = archivedDataWithRootObject(std::make_shared<Named>("a").get());
    ASSERT_EQ(failureOfReading(std::vector<Data>{good}), "");
    EXPECT_EQ(failureOfReading(std::vector<Data>{good, Data()}), cannotRead);
    EXPECT_EQ(failureOfReading(std::vector<Data>{dataFromText("rubbish"), good}), cannotRead);
    Data cut = good;
    cut.resize(cut.size() / 2);
    EXPECT_EQ(failureOfReading(std::vector<Data>{cut}), cannotRead);
    EXPECT_EQ(failureOfReading(std::vector<Data>{
                  *PropertyList::write(Value("a"), PropertyList::Form::Binary, nullptr)}),
              cannotRead);

    EXPECT_EQ(failureOfReading(Value::Array{Value(Data())}), cannotRead);
    EXPECT_EQ(failureOfReading(Value::Array{Value("text")}), cannotRead);
    EXPECT_EQ(failureOfReading(Value::Array{Value(Value::Array())}), cannotRead);
}

TEST_F(ArrayArchives, AnArchiveOfNilIsAnError) {
    const Data nil = archivedDataWithRootObject(static_cast<const Coding*>(nullptr));
    EXPECT_EQ(failureOfReading(std::vector<Data>{nil}), cannotRead);
    EXPECT_EQ(failureOfReading(Value::Array{Value(nil)}), cannotRead);
    // Also when the class makes none of it.
    const Data none = archivedDataWithRootObject(std::make_shared<Named>("none").get());
    EXPECT_EQ(failureOfReading(std::vector<Data>{none}), cannotRead);
}

TEST_F(ArrayArchives, AnArchiveOfSomethingElseIsAnError) {
    const Data value = archivedDataWithRootObject(Value("a"));
    const Data other = archivedDataWithRootObject(std::make_shared<Other>().get());
    const Data itsClass = archivedDataWithRootClass("TestNamed", {"NSObject"});
    for (const Data& archive : {value, other, itsClass}) {
        EXPECT_EQ(failureOfReading(std::vector<Data>{archive}), cannotRead);
    }
    for (const Data& archive : {other, itsClass}) {
        EXPECT_EQ(failureOfReading(Value::Array{Value(archive)}), cannotRead);
    }
}

} // namespace
} // namespace tav
