#include "testing/Golden.hpp"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <gtest/gtest.h>

namespace tav {

namespace {

using nlohmann::json;

Data dataFromBase64(std::string_view text) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    if (text.size() % 4 != 0) {
        throw std::invalid_argument("base64 comes in groups of four");
    }
    while (!text.empty() && text.back() == '=') {
        text.remove_suffix(1);
    }
    Data data;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char digit : text) {
        const std::size_t value = digits.find(digit);
        if (value == std::string_view::npos) {
            throw std::invalid_argument("no base64: " + std::string(text));
        }
        bits = (bits << 6) | static_cast<std::uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            data.push_back(static_cast<std::byte>(bits >> count));
        }
    }
    return data;
}

Date dateFromText(const std::string& text) {
    const std::optional<Date> date = Date::fromISO8601(text);
    if (!date) {
        throw std::invalid_argument("no date: " + text);
    }
    return *date;
}

Value valueInside(const json& inner) {
    std::optional<Value> value = valueFromJSON(inner);
    if (!value) {
        throw std::invalid_argument("null inside a container");
    }
    return std::move(*value);
}

Value numberFromJSON(const json& number) {
    if (number.is_number_float()) {
        return number.get<double>();
    }
    if (number.is_number_unsigned() && number.get<std::uint64_t>() > INT64_MAX) {
        return number.get<std::uint64_t>();
    }
    return number.get<std::int64_t>();
}

Value objectFromJSON(const json& object) {
    if (object.size() == 1 && object.begin().key().starts_with('$')) {
        const std::string& kind = object.begin().key();
        const json& content = object.begin().value();
        if (kind == "$real") {
            return content.get<double>();
        }
        if (kind == "$data") {
            return dataFromJSON(object);
        }
        if (kind == "$date") {
            return dateFromText(content.get<std::string>());
        }
        if (kind == "$time") {
            return Date(content.get<double>());
        }
        throw std::invalid_argument("unknown kind of value: " + kind);
    }
    Value::Dictionary dictionary;
    for (const auto& [key, inner] : object.items()) {
        dictionary.set(key, valueInside(inner));
    }
    return dictionary;
}

} // namespace

Data dataFromJSON(const json& json) {
    if (!json.is_object() || json.size() != 1 || !json.contains("$data")) {
        throw std::invalid_argument("no data: " + json.dump());
    }
    return dataFromBase64(json.at("$data").get_ref<const std::string&>());
}

std::optional<Value> valueFromJSON(const json& json) {
    switch (json.type()) {
    case json::value_t::null:
        return std::nullopt;
    case json::value_t::boolean:
        return Value(json.get<bool>());
    case json::value_t::string:
        return Value(json.get<std::string>());
    case json::value_t::array: {
        Value::Array array;
        array.reserve(json.size());
        for (const auto& inner : json) {
            array.push_back(valueInside(inner));
        }
        return Value(std::move(array));
    }
    case json::value_t::object:
        return objectFromJSON(json);
    case json::value_t::number_integer:
    case json::value_t::number_unsigned:
    case json::value_t::number_float:
        return numberFromJSON(json);
    case json::value_t::binary:
    case json::value_t::discarded:
        break;
    }
    throw std::invalid_argument("no value: " + json.dump());
}

std::vector<GoldenCase> goldenCases(std::string_view file) {
    const std::string path = std::string(TAV_TESTDATA "/vectors/") + std::string(file);
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        ADD_FAILURE() << "no golden file " << path;
        return {};
    }
    const json content = json::parse(stream, nullptr, false);
    if (!content.is_object() || !content.contains("cases") || content.at("cases").empty()) {
        ADD_FAILURE() << "no cases in the golden file " << path;
        return {};
    }
    std::vector<GoldenCase> cases;
    for (const json& whole : content.at("cases")) {
        cases.push_back({whole.at("op").get<std::string>(), whole.value("in", json()),
                         whole.value("out", json()), whole});
    }
    return cases;
}

std::vector<GoldenCase> goldenCases(std::string_view file, std::string_view op) {
    std::vector<GoldenCase> cases = goldenCases(file);
    std::erase_if(cases, [op](const GoldenCase& golden) { return golden.op != op; });
    if (cases.empty()) {
        ADD_FAILURE() << "no case of " << op << " in the golden file " << file;
    }
    return cases;
}

} // namespace tav
