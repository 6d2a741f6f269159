#pragma once

#include "base/Value.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace tav {

/// One case of a golden file: the operation, what goes in and what must come out.
struct GoldenCase {
    std::string op;
    nlohmann::json in;
    nlohmann::json out;
    /// The case as it stands, for members that only some files have.
    nlohmann::json whole;

    /// The case in one line, for messages of failing tests.
    [[nodiscard]] std::string description() const { return whole.dump(); }
};

/// All cases of a file in testdata/vectors. The test fails when there is none to read.
[[nodiscard]] std::vector<GoldenCase> goldenCases(std::string_view file);

/// The cases of one operation; the test fails when the file has none.
[[nodiscard]] std::vector<GoldenCase> goldenCases(std::string_view file, std::string_view op);

/// The value that a golden file writes in JSON; nothing for null.
///
/// `{"$real": 1.5}`, `{"$data": base64}`, `{"$date": "2009-12-31T23:59:59Z"}` and `{"$time":
/// seconds since 2001}` stand for the types that JSON has not. Throws `std::invalid_argument` where
/// the file itself is wrong.
[[nodiscard]] std::optional<Value> valueFromJSON(const nlohmann::json& json);

/// The bytes of `{"$data": base64}`. Throws `std::invalid_argument` for anything else.
[[nodiscard]] Data dataFromJSON(const nlohmann::json& json);

} // namespace tav
