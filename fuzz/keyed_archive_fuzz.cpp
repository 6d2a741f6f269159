// Any bytes end in what they hold or in an exception of the archive's own; values and objects that
// were read can be archived, and come back as the same.

#include "base/Exception.hpp"
#include "base/KeyedArchiver.hpp"
#include "base/KeyedUnarchiver.hpp"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <span>

namespace {

using namespace tav;

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// Decodes something of every kind.
class Node : public Coding {
  public:
    [[nodiscard]] std::string className() const override { return "Node"; }
    void encode(KeyedArchiver& archiver) const override {
        archiver.encodeSharedObject("next", next_);
        archiver.encodeObjects("children", children_);
        archiver.encodeInt64("number", number_);
        archiver.encodeBytes("bytes", bytes_);
        if (value_) {
            archiver.encodeValue("value", *value_);
        }
    }
    static std::shared_ptr<Coding> make(KeyedUnarchiver& unarchiver) {
        auto node = std::make_shared<Node>();
        node->next_ = unarchiver.decodeObject("next");
        if (auto children = unarchiver.decodeObjects("children")) {
            node->children_ = std::move(*children);
        }
        node->number_ = unarchiver.decodeInt64("number");
        node->bytes_ = unarchiver.decodeBytes("bytes").value_or(Data());
        node->value_ = unarchiver.decodeValue("value");
        static_cast<void>(unarchiver.decodeBool("bool"));
        static_cast<void>(unarchiver.decodeInt32("int"));
        static_cast<void>(unarchiver.decodeFloat("float"));
        static_cast<void>(unarchiver.decodeText("text"));
        return node;
    }

  private:
    std::shared_ptr<Coding> next_;
    std::vector<std::shared_ptr<Coding>> children_;
    std::int64_t number_ = 0;
    Data bytes_;
    std::optional<Value> value_;
};

std::optional<Archived> unarchived(BytesView archive) {
    try {
        return unarchiveObjectWithData(archive);
    } catch (const Exception& exception) {
        expect(exception.name() == KeyedUnarchiver::invalidUnarchiveOperation);
        expect(!exception.reason().empty());
        return std::nullopt;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    registerArchivedClass("Node", Node::make);
    const std::optional<Archived> root = unarchived(std::as_bytes(std::span(bytes, size)));
    if (!root) {
        return 0;
    }
    if (const auto* object = std::get_if<std::shared_ptr<Coding>>(&*root)) {
        // Shared parts of values are written out, so the archive that is written may differ once.
        const Data first = archivedDataWithRootObject(object->get());
        const std::optional<Archived> back = unarchived(first);
        expect(back && std::holds_alternative<std::shared_ptr<Coding>>(*back));
        expect(archivedDataWithRootObject(std::get<std::shared_ptr<Coding>>(*back).get()) == first);
    } else if (const Value* value = std::get_if<Value>(&*root);
               value != nullptr && value->asUID() == nullptr) {
        const std::optional<Archived> back = unarchived(archivedDataWithRootObject(*value));
        expect(back && std::get<Value>(*back) == *value);
    }
    return 0;
}
