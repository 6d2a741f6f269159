#include "base/Exception.hpp"
#include "base/KeyedArchiver.hpp"
#include "base/KeyedUnarchiver.hpp"
#include "base/PropertyList.hpp"
#include "testing/Golden.hpp"

#include <cmath>
#include <limits>
#include <random>
#include <thread>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Dictionary = Value::Dictionary;

/// A node of a tree: a name, a neighbour and children.
class Node : public Coding {
  public:
    explicit Node(std::string name) : name_(std::move(name)) {}

    [[nodiscard]] std::string className() const override { return "TestNode"; }
    void encode(KeyedArchiver& archiver) const override {
        archiver.encodeText("name", name_);
        archiver.encodeSharedObject("next", next_);
        if (!children_.empty()) {
            archiver.encodeObjects("children", children_);
        }
    }

    static std::shared_ptr<Coding> make(KeyedUnarchiver& unarchiver) {
        auto node = std::make_shared<Node>(unarchiver.decodeText("name").value_or("?"));
        node->next_ = unarchiver.decodeObjectAs<Node>("next");
        if (const auto children = unarchiver.decodeObjects("children")) {
            for (const auto& child : *children) {
                node->children_.push_back(std::dynamic_pointer_cast<Node>(child));
            }
        }
        return node;
    }
    static void registerClass() { registerArchivedClass("TestNode", make); }

    std::string name_;
    std::shared_ptr<Node> next_;
    std::vector<std::shared_ptr<Node>> children_;
};

/// Everything that can be encoded under a key.
class Everything : public Coding {
  public:
    [[nodiscard]] std::string className() const override { return "TestEverything"; }
    [[nodiscard]] std::vector<std::string> superclassNames() const override {
        return {"TestNothing", "NSObject"};
    }
    void encode(KeyedArchiver& archiver) const override {
        archiver.encodeBool("bool", true);
        archiver.encodeInt32("int32", std::numeric_limits<std::int32_t>::min());
        archiver.encodeInt64("int64", std::numeric_limits<std::int64_t>::min());
        archiver.encodeFloat("float", 1.5F);
        archiver.encodeDouble("double", 0.1);
        archiver.encodeBytes("bytes", bytesOf("some"));
        archiver.encodeText("text", "caf\xC3\xA9");
        archiver.encodeValue("value", Dictionary{{"k", Value::Array{1, "t"}}});
        archiver.encodeValue("number", std::uint64_t{1} << 63);
        archiver.encodeValue("$class", "of its own");
        archiver.encodeObject("nil", nullptr);
    }
    static std::shared_ptr<Coding> make(KeyedUnarchiver& unarchiver) {
        EXPECT_TRUE(unarchiver.decodeBool("bool"));
        EXPECT_EQ(unarchiver.decodeInt32("int32"), std::numeric_limits<std::int32_t>::min());
        EXPECT_EQ(unarchiver.decodeInt64("int64"), std::numeric_limits<std::int64_t>::min());
        EXPECT_EQ(unarchiver.decodeFloat("float"), 1.5F);
        EXPECT_EQ(unarchiver.decodeDouble("double"), 0.1);
        EXPECT_EQ(unarchiver.decodeBytes("bytes"), dataFromText("some"));
        EXPECT_EQ(unarchiver.decodeText("text"), "caf\xC3\xA9");
        EXPECT_EQ(unarchiver.decodeValue("value"), Value(Dictionary{{"k", Value::Array{1, "t"}}}));
        EXPECT_EQ(unarchiver.decodeValue("number"), Value(std::uint64_t{1} << 63));
        EXPECT_EQ(unarchiver.decodeDouble("number"), 9223372036854775808.0);
        EXPECT_EQ(unarchiver.decodeText("$class"), "of its own");
        EXPECT_TRUE(unarchiver.containsValue("nil"));
        EXPECT_EQ(unarchiver.decodeObject("nil"), nullptr);
        EXPECT_EQ(unarchiver.decodeValue("nil"), std::nullopt);

        EXPECT_FALSE(unarchiver.containsValue("missing"));
        EXPECT_FALSE(unarchiver.decodeBool("missing"));
        EXPECT_EQ(unarchiver.decodeInt32("missing"), 0);
        EXPECT_EQ(unarchiver.decodeInt64("missing"), 0);
        EXPECT_EQ(unarchiver.decodeFloat("missing"), 0);
        EXPECT_EQ(unarchiver.decodeDouble("missing"), 0);
        EXPECT_EQ(unarchiver.decodeBytes("missing"), std::nullopt);
        EXPECT_EQ(unarchiver.decodeText("missing"), std::nullopt);
        EXPECT_EQ(unarchiver.decodeValue("missing"), std::nullopt);
        EXPECT_EQ(unarchiver.decodeObject("missing"), nullptr);
        EXPECT_EQ(unarchiver.decodeObjects("missing"), std::nullopt);

        // A text is no bytes and bytes are no text; a number is neither.
        EXPECT_EQ(unarchiver.decodeBytes("text"), std::nullopt);
        EXPECT_EQ(unarchiver.decodeText("bytes"), std::nullopt);
        EXPECT_THROW(static_cast<void>(unarchiver.decodeBool("text")), Exception);
        EXPECT_THROW(static_cast<void>(unarchiver.decodeInt32("int64")), Exception);
        EXPECT_THROW(static_cast<void>(unarchiver.decodeInt64("number")), Exception);
        EXPECT_THROW(static_cast<void>(unarchiver.decodeObject("text")), Exception);
        EXPECT_THROW(static_cast<void>(unarchiver.decodeObject("bool")), Exception);
        EXPECT_THROW(static_cast<void>(unarchiver.decodeObjects("value")), Exception);
        return std::make_shared<Everything>();
    }
};

/// The object under "root", which is to be a node.
std::shared_ptr<Node> nodeIn(BytesView archive) {
    const Archived root = unarchiveObjectWithData(archive);
    const auto* object = std::get_if<std::shared_ptr<Coding>>(&root);
    return object == nullptr ? nullptr : std::dynamic_pointer_cast<Node>(*object);
}

Value uid(std::uint64_t number) { return Value::UID{number}; }

Value classRecord(const char* name) {
    return Dictionary{{"$classname", name}, {"$classes", Value::Array{name, "NSObject"}}};
}

/// An archive of these objects, which begin with number 1; the root is the first.
Data archiveOf(Value::Array objects, PropertyList::Form form = PropertyList::Form::Binary) {
    objects.insert(objects.begin(), "$null");
    return *PropertyList::write(Dictionary{{"$version", 100000},
                                           {"$archiver", "NSKeyedArchiver"},
                                           {"$top", Dictionary{{"root", uid(1)}}},
                                           {"$objects", std::move(objects)}},
                                form, nullptr);
}

Value unarchivedValue(BytesView archive) {
    const Archived root = unarchiveObjectWithData(archive);
    const Value* value = std::get_if<Value>(&root);
    EXPECT_NE(value, nullptr);
    return value == nullptr ? Value("no value") : *value;
}

/// Why the archive cannot be read.
std::string refusal(BytesView archive) {
    try {
        static_cast<void>(unarchiveObjectWithData(archive));
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.name(), KeyedUnarchiver::invalidUnarchiveOperation);
        return exception.reason();
    }
    return "";
}

/// What a reference leads to, with references and classes replaced as the golden shapes have them.
Value shape(const Value::Array& objects, const Value& value) {
    if (const Value::UID* uid = value.asUID()) {
        const Value& object = objects.at(static_cast<std::size_t>(uid->value));
        const Dictionary* entries = object.asDictionary();
        const Value* chain = entries == nullptr ? nullptr : entries->find("$classes");
        return chain != nullptr ? *chain : shape(objects, object);
    }
    if (const Value::Array* array = value.asArray()) {
        Value::Array shapes;
        for (const Value& element : *array) {
            shapes.push_back(shape(objects, element));
        }
        return shapes;
    }
    if (const Dictionary* entries = value.asDictionary()) {
        Dictionary shapes;
        for (const auto& [key, entry] : *entries) {
            shapes.set(key, shape(objects, entry));
        }
        return shapes;
    }
    return value;
}

/// As `valueFromJSON`, but keys may begin with "$" beside others.
Value shapeFromJSON(const nlohmann::json& json) {
    if (json.is_array()) {
        Value::Array array;
        for (const auto& element : json) {
            array.push_back(shapeFromJSON(element));
        }
        return array;
    }
    if (json.is_object() && json.contains("$class")) {
        Dictionary dictionary;
        for (const auto& [key, inner] : json.items()) {
            dictionary.set(key, shapeFromJSON(inner));
        }
        return dictionary;
    }
    return *valueFromJSON(json);
}

TEST(KeyedArchive, GoldenArchivesAreRead) {
    for (const GoldenCase& golden : goldenCases("keyed_archive/archives.json", "unarchive")) {
        const Data archive = dataFromJSON(golden.in);
        std::optional<Value> value;
        try {
            Archived root = unarchiveObjectWithData(archive);
            if (const Value* found = std::get_if<Value>(&root)) {
                value = *found;
            } else {
                EXPECT_TRUE(std::holds_alternative<std::monostate>(root)) << golden.description();
            }
        } catch (const Exception&) {
            value.reset();
        }
        const std::optional<Value> expected = valueFromJSON(golden.out);
        EXPECT_EQ(value, expected) << golden.description();
        if (value && expected) {
            EXPECT_EQ(value->type(), expected->type()) << golden.description();
        }
    }
}

TEST(KeyedArchive, GoldenShapesAreWritten) {
    for (const GoldenCase& golden : goldenCases("keyed_archive/shapes.json", "archiveShape")) {
        const Data archive = archivedDataWithRootObject(*valueFromJSON(golden.in));
        const Value list = *PropertyList::readBinary(archive, nullptr);
        const Dictionary& entries = *list.asDictionary();
        EXPECT_EQ(entries.size(), 4U);
        EXPECT_EQ(*entries.find("$version"), Value(100000));
        EXPECT_EQ(*entries.findString("$archiver"), "NSKeyedArchiver");
        const Value::Array& objects = *entries.find("$objects")->asArray();
        EXPECT_EQ(objects.front(), Value("$null"));
        const Value& root = *entries.find("$top")->asDictionary()->find("root");
        EXPECT_EQ(shape(objects, root), shapeFromJSON(golden.out)) << golden.description();
        EXPECT_EQ(unarchivedValue(archive), *valueFromJSON(golden.in));
    }
}

TEST(KeyedArchive, ValuesComeBack) {
    const Value value(Dictionary{
        {"text", "a\xFF"},
        {"same", "a\xFF"},
        {"numbers", Value::Array{true, -1, 1.5, std::numeric_limits<std::uint64_t>::max()}},
        {"data", Data()},
        {"date", Date(0.25)},
        {"empty", Value::Array{Value::Array{}, Dictionary{}, ""}},
        {"$class", "a key like any other"}});
    EXPECT_EQ(unarchivedValue(archivedDataWithRootObject(value)), value);
    for (const Value& single :
         {Value(false), Value(""), Value(Data()), Value(Date(-1e10)), Value(std::nan(""))}) {
        const Value back = unarchivedValue(archivedDataWithRootObject(single));
        EXPECT_EQ(back, single);
        EXPECT_EQ(back.type(), single.type());
    }
    EXPECT_THROW(static_cast<void>(archivedDataWithRootObject(Value(Value::UID{1}))), Exception);
}

TEST(KeyedArchive, EqualTextsAndClassesStandOnce) {
    const Data archive = archivedDataWithRootObject(
        Value(Value::Array{"t", "t", Value::Array{"t"}, Dictionary{{"t", "t"}}}));
    const Value list = *PropertyList::readBinary(archive, nullptr);
    // $null, the root, "t", two containers, two classes.
    EXPECT_EQ(list.asDictionary()->find("$objects")->asArray()->size(), 7U);
}

TEST(KeyedArchive, DepthOfValuesIsLimited) {
    Value deep = 1;
    for (std::size_t i = 0; i < PropertyList::maximumDepth; ++i) {
        deep = i % 2 == 0 ? Value(Value::Array{std::move(deep)})
                          : Value(Dictionary{{"a", std::move(deep)}});
    }
    EXPECT_EQ(unarchivedValue(archivedDataWithRootObject(deep)), deep);
    EXPECT_THROW(static_cast<void>(archivedDataWithRootObject(Value(Value::Array{deep}))),
                 Exception);
}

TEST(KeyedArchive, ObjectsKeepWhatTheyEncode) {
    registerArchivedClass("TestEverything", Everything::make);
    const Everything object;
    const Archived root = unarchiveObjectWithData(archivedDataWithRootObject(&object));
    ASSERT_TRUE(std::holds_alternative<std::shared_ptr<Coding>>(root));
    EXPECT_NE(std::dynamic_pointer_cast<Everything>(std::get<std::shared_ptr<Coding>>(root)),
              nullptr);
}

TEST(KeyedArchive, ObjectsHaveTheirScalarsInline) {
    const Everything object;
    const Value list = *PropertyList::readBinary(archivedDataWithRootObject(&object), nullptr);
    const Value::Array& objects = *list.asDictionary()->find("$objects")->asArray();
    const Dictionary& entries = *objects.at(1).asDictionary();
    for (const char* key : {"$class", "text", "value", "number", "$$class", "nil"}) {
        ASSERT_NE(entries.find(key), nullptr) << key;
        EXPECT_EQ(entries.find(key)->type(), Value::Type::UID) << key;
    }
    EXPECT_EQ(*entries.find("nil"), uid(0));
    EXPECT_EQ(entries.find("bool")->type(), Value::Type::Boolean);
    EXPECT_EQ(*entries.find("bytes"), Value(dataFromText("some")));
    EXPECT_EQ(*entries.find("double"), Value(0.1));
    EXPECT_EQ(shape(objects, *entries.find("$class")),
              Value(Value::Array{"TestEverything", "TestNothing", "NSObject"}));
}

TEST(KeyedArchive, SharedObjectsComeBackShared) {
    Node::registerClass();
    auto shared = std::make_shared<Node>("shared");
    Node root("root");
    root.next_ = shared;
    root.children_ = {shared, std::make_shared<Node>("other"), nullptr, shared};
    root.children_[1]->next_ = shared;
    const auto back = nodeIn(archivedDataWithRootObject(&root));
    ASSERT_NE(back, nullptr);
    ASSERT_EQ(back->children_.size(), 4U);
    EXPECT_EQ(back->next_->name_, "shared");
    EXPECT_EQ(back->children_[0], back->next_);
    EXPECT_EQ(back->children_[1]->next_, back->next_);
    EXPECT_EQ(back->children_[2], nullptr);
    EXPECT_EQ(back->children_[3], back->next_);
}

TEST(KeyedArchive, NilAndClassesAsRoots) {
    EXPECT_TRUE(std::holds_alternative<std::monostate>(
        unarchiveObjectWithData(archivedDataWithRootObject(nullptr))));
    EXPECT_EQ(unarchiveObjectWithData(archivedDataWithRootClass("Item", {"Base", "NSObject"})),
              Archived(ArchivedClass{"Item"}));
}

TEST(KeyedArchive, ChainsOfObjectsUpToTheLimit) {
    Node::registerClass();
    std::shared_ptr<Node> chain;
    for (std::size_t i = 0; i < KeyedArchiver::maximumDepth; ++i) {
        auto node = std::make_shared<Node>("n");
        node->next_ = std::move(chain);
        chain = std::move(node);
    }
    EXPECT_NE(nodeIn(archivedDataWithRootObject(chain.get())), nullptr);
    Node longer("n");
    longer.next_ = chain;
    EXPECT_THROW(static_cast<void>(archivedDataWithRootObject(&longer)), Exception);

    // One that somebody else wrote.
    Value::Array objects;
    for (std::uint64_t i = 1; i <= KeyedArchiver::maximumDepth + 1; ++i) {
        objects.emplace_back(
            Dictionary{{"$class", uid(KeyedArchiver::maximumDepth + 2)}, {"next", uid(i + 1)}});
    }
    *objects.back().asDictionary()->find("next") = uid(0);
    objects.push_back(classRecord("TestNode"));
    EXPECT_EQ(refusal(archiveOf(objects)), "objects nested too deep");
}

TEST(KeyedArchive, WideTreesOfManyObjects) {
    Node::registerClass();
    Node root("root");
    for (int i = 0; i < 200; ++i) {
        root.children_.push_back(std::make_shared<Node>("child"));
        for (int j = 0; j < 100; ++j) {
            root.children_.back()->children_.push_back(
                std::make_shared<Node>("leaf " + std::to_string(i * 100 + j)));
        }
    }
    const auto back = nodeIn(archivedDataWithRootObject(&root));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->children_.at(199)->children_.at(99)->name_, "leaf 19999");
}

TEST(KeyedArchive, XMLIsReadAsWell) {
    Node::registerClass();
    Node root("root");
    root.children_ = {std::make_shared<Node>("child")};
    const Value list = *PropertyList::readBinary(archivedDataWithRootObject(&root), nullptr);
    const Data xml = *PropertyList::write(list, PropertyList::Form::XML, nullptr);
    const auto back = nodeIn(xml);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->children_.at(0)->name_, "child");
}

TEST(KeyedArchive, UnknownClassesFallBackToTheFirstKnownOfTheirChain) {
    Node::registerClass();
    const Value unknown(Dictionary{{"$classname", "Unknown"},
                                   {"$classes", Value::Array{"Unknown", "TestNode", "NSObject"}}});
    EXPECT_NE(nodeIn(archiveOf({Dictionary{{"$class", uid(2)}}, unknown})), nullptr);
    const Value array(Dictionary{{"$classname", "OwnArray"},
                                 {"$classes", Value::Array{"OwnArray", "NSArray", "NSObject"}}});
    EXPECT_EQ(unarchivedValue(archiveOf(
                  {Dictionary{{"$class", uid(2)}, {"NS.objects", Value::Array{}}}, array})),
              Value(Value::Array{}));
    EXPECT_EQ(refusal(archiveOf({Dictionary{{"$class", uid(2)}}, classRecord("Unknown")})),
              "an object of the unknown class Unknown");
}

TEST(KeyedArchive, EntriesInAnyOrderAndUnusedOnes) {
    EXPECT_EQ(unarchivedValue(archiveOf({Dictionary{{"NS.objects", Value::Array{uid(4), uid(4)}},
                                                    {"$class", uid(2)},
                                                    {"$classhints", "ignored"}},
                                         classRecord("NSArray"), Value::Array{"unused"}, "x"})),
              Value(Value::Array{"x", "x"}));
}

TEST(KeyedArchive, NullObjects) {
    EXPECT_TRUE(std::holds_alternative<std::monostate>(unarchiveObjectWithData(
        archiveOf({Dictionary{{"$class", uid(2)}}, classRecord("NSNull")}))));
    EXPECT_EQ(refusal(archiveOf(
                  {Dictionary{{"$class", uid(2)}, {"NS.objects", Value::Array{uid(3)}}},
                   classRecord("NSArray"), Dictionary{{"$class", uid(4)}}, classRecord("NSNull")})),
              "a null object inside a value");
}

TEST(KeyedArchive, ObjectsThatContainThemselves) {
    Node::registerClass();
    EXPECT_EQ(refusal(archiveOf(
                  {Dictionary{{"$class", uid(2)}, {"next", uid(1)}}, classRecord("TestNode")})),
              "an object that contains itself");
    EXPECT_EQ(
        refusal(archiveOf({Dictionary{{"$class", uid(2)}, {"NS.objects", Value::Array{uid(1)}}},
                           classRecord("NSArray")})),
        "values nested too deep");
}

TEST(KeyedArchive, SharedReferencesDoNotExplode) {
    Value::Array objects;
    for (std::uint64_t i = 1; i <= 60; ++i) {
        objects.emplace_back(
            Dictionary{{"$class", uid(62)}, {"NS.objects", Value::Array{uid(i + 1), uid(i + 1)}}});
    }
    objects.emplace_back(1);
    objects.push_back(classRecord("NSArray"));
    EXPECT_EQ(refusal(archiveOf(objects)), "shared objects make the archive too large");

    // Many references to one long text.
    Value::Array references(200000, uid(3));
    EXPECT_EQ(refusal(archiveOf({Dictionary{{"$class", uid(2)}, {"NS.objects", references}},
                                 classRecord("NSArray"), std::string(100000, 'x')})),
              "shared objects make the archive too large");
}

TEST(KeyedArchive, SharedArraysOfObjectsDoNotExplode) {
    Node::registerClass();
    constexpr std::uint64_t nodes = 1000;
    const Value nodeClass = uid(2);
    Value::Array objects{Dictionary{{"$class", nodeClass}, {"children", uid(3)}},
                         classRecord("TestNode")};
    Value::Array children;
    for (std::uint64_t i = 0; i < nodes; ++i) {
        children.push_back(uid(6 + i));
    }
    objects.emplace_back(Dictionary{{"$class", uid(4)}, {"NS.objects", children}});
    objects.push_back(classRecord("NSArray"));
    objects.emplace_back(
        Dictionary{{"$class", uid(4)}, {"NS.objects", Value::Array(100000, uid(0))}});
    for (std::uint64_t i = 0; i < nodes; ++i) {
        objects.emplace_back(Dictionary{{"$class", nodeClass}, {"children", uid(5)}});
    }
    EXPECT_EQ(refusal(archiveOf(objects)), "shared objects make the archive too large");
}

TEST(KeyedArchive, WrongShapes) {
    const Value array = classRecord("NSArray");
    const Value dictionary = classRecord("NSDictionary");
    const Value date = classRecord("NSDate");
    const std::vector<Value::Array> wrong = {
        {},
        {Value::Array{}},
        {uid(0)},
        {Dictionary{}},
        {Dictionary{{"$class", 2}}, array},
        {Dictionary{{"$class", uid(0)}}},
        {Dictionary{{"$class", uid(9)}}},
        {Dictionary{{"$class", uid(1)}}},
        {Dictionary{{"$class", uid(2)}}, "no class"},
        {Dictionary{{"$class", uid(2)}}, Dictionary{{"$classname", 1}}},
        {Dictionary{{"$class", uid(2)}}, Dictionary{{"$classname", "X"}, {"$classes", 1}}},
        {Dictionary{{"$class", uid(2)}},
         Dictionary{{"$classname", "X"}, {"$classes", Value::Array{1}}}},
        {Dictionary{{"$class", uid(2)}}, array},
        {Dictionary{{"$class", uid(2)}, {"NS.objects", 1}}, array},
        {Dictionary{{"$class", uid(2)}, {"NS.objects", Value::Array{1}}}, array},
        {Dictionary{{"$class", uid(2)}, {"NS.objects", Value::Array{uid(0)}}}, array},
        {Dictionary{{"$class", uid(2)}, {"NS.objects", Value::Array{uid(9)}}}, array},
        {Dictionary{{"$class", uid(2)}, {"NS.objects", Value::Array{}}}, dictionary},
        {Dictionary{
             {"$class", uid(2)}, {"NS.keys", Value::Array{uid(3)}}, {"NS.objects", Value::Array{}}},
         dictionary, "k"},
        {Dictionary{{"$class", uid(2)},
                    {"NS.keys", Value::Array{uid(3)}},
                    {"NS.objects", Value::Array{uid(3)}}},
         dictionary, 1},
        {Dictionary{{"$class", uid(2)}}, date},
        {Dictionary{{"$class", uid(2)}, {"NS.time", "0"}}, date},
        {Dictionary{{"$class", uid(2)}}, classRecord("NSMutableString")},
        {Dictionary{{"$class", uid(2)}, {"NS.string", 1}}, classRecord("NSMutableString")},
        {Dictionary{{"$class", uid(2)}, {"NS.data", "x"}}, classRecord("NSMutableData")},
    };
    for (const Value::Array& objects : wrong) {
        EXPECT_NE(refusal(archiveOf(objects)), "") << Value(objects).description();
    }
}

TEST(KeyedArchive, WhatIsNoArchive) {
    const auto refused = [](Dictionary list) {
        return refusal(*PropertyList::write(std::move(list), PropertyList::Form::Binary, nullptr));
    };
    const Dictionary good{{"$version", 100000},
                          {"$archiver", "NSKeyedArchiver"},
                          {"$top", Dictionary{{"root", uid(1)}}},
                          {"$objects", Value::Array{"$null", "x"}}};
    EXPECT_EQ(refused(good), "");
    for (const auto& [key, value] : good) {
        Dictionary less = good;
        less.remove(key);
        EXPECT_NE(refused(less), "") << key;
        less.set(key, Value::Array{});
        if (key != "$objects") {
            EXPECT_NE(refused(less), "") << key;
        }
        less.set(key, "something");
        EXPECT_NE(refused(less), "") << key;
    }
    Dictionary changed = good;
    changed.set("$version", 100001);
    EXPECT_EQ(refused(changed), "a keyed archive of an unknown version");
    changed = good;
    changed.set("$top", Dictionary{{"other", uid(1)}});
    EXPECT_EQ(refused(changed), "a keyed archive without a root");
    for (const std::string_view text : {"", "word", "bplist00", "<plist><array/></plist>", "{}"}) {
        EXPECT_NE(refusal(bytesOf(text)), "") << text;
    }
}

TEST(KeyedArchive, EveryTruncationAndFlippedBitEndsWell) {
    Node::registerClass();
    Node root("root");
    root.children_ = {std::make_shared<Node>("child"), std::make_shared<Node>("caf\xC3\xA9")};
    Data archive = archivedDataWithRootObject(&root);
    for (std::size_t size = 0; size < archive.size(); ++size) {
        EXPECT_NE(refusal(Data(archive.begin(), archive.begin() + std::ptrdiff_t(size))), "");
    }
    std::size_t read = 0;
    for (std::size_t bit = 0; bit < archive.size() * 8; ++bit) {
        archive[bit / 8] ^= std::byte(1U << bit % 8);
        read += refusal(archive).empty() ? 1 : 0;
        archive[bit / 8] ^= std::byte(1U << bit % 8);
    }
    EXPECT_GT(read, 100U);
}

TEST(KeyedArchive, TopLevelKeysOfOnesOwn) {
    Node::registerClass();
    const Node node("n");
    KeyedArchiver archiver;
    archiver.encodeObject("node", &node);
    archiver.encodeInt32("count", 3);
    archiver.encodeSharedObject("kept", std::make_shared<Node>("k"));
    const Data archive = archiver.finishEncoding();
    KeyedUnarchiver unarchiver(archive);
    EXPECT_EQ(unarchiver.decodeObjectAs<Node>("node")->name_, "n");
    EXPECT_EQ(unarchiver.decodeObjectAs<Node>("kept")->name_, "k");
    EXPECT_EQ(unarchiver.decodeInt32("count"), 3);
    EXPECT_EQ(unarchiver.decodeObjectAs<Everything>("node"), nullptr);
    EXPECT_EQ(unarchiver.decodeObject("node"), unarchiver.decodeObject("node"));
}

TEST(KeyedArchive, ClassesMayBeEnteredFromAnyThread) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int j = 0; j < 1000; ++j) {
                Node::registerClass();
                EXPECT_EQ(archivedClassMaker("TestNode"), &Node::make);
            }
        });
    }
    threads.clear();
    EXPECT_EQ(archivedClassMaker("TestNobody"), nullptr);
}

} // namespace
} // namespace tav
