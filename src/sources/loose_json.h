#pragma once

// For .cpp files and for the headers between them: answers whose shape nobody promises. What isn't
// there, or is of another type than expected, counts as absent; nothing here throws.

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace marlet::LooseJson {

/// The value under a key of an object; null for anything else.
const nlohmann::json& at(const nlohmann::json& value, const char* key);
/// The values of a list, those of an object in the order of its names; none of anything else.
std::vector<const nlohmann::json*> items(const nlohmann::json& value);
/// Empty when it is no text.
std::string text(const nlohmann::json& value);
/// A number that is whole within 2^53, or a text that is one.
std::optional<std::int64_t> integer(const nlohmann::json& value);
/// As integer, where an int is meant.
std::optional<int> smallInteger(const nlohmann::json& value);
/// A number, or a text that is a whole one.
std::optional<double> number(const nlohmann::json& value);
/// The texts of a list that aren't empty.
std::vector<std::string> texts(const nlohmann::json& value);
/// Half up; nothing for what is no length of a film: nothing, less than nothing, beyond a year.
std::optional<int> minutes(std::optional<double> amount, double perMinute);

}  // namespace marlet::LooseJson
