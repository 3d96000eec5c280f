#include "sources/loose_json.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "foundation/text.h"

namespace marlet::LooseJson {

using nlohmann::json;

const json& at(const json& value, const char* key) {
    static const json nothing;
    if (!value.is_object()) return nothing;
    const auto found = value.find(key);
    return found == value.end() ? nothing : *found;
}

std::vector<const json*> items(const json& value) {
    std::vector<const json*> list;
    if (!value.is_structured()) return list;
    for (const json& item : value) list.push_back(&item);
    return list;
}

std::string text(const json& value) {
    return value.is_string() ? value.get<std::string>() : std::string();
}

std::optional<std::int64_t> integer(const json& value) {
    constexpr double exactLimit = 9007199254740992.0;  // 2^53
    if (value.is_string()) {
        static const Regex whole(R"(^[+-]?\d{1,15}$)");
        const std::string digits = value.get<std::string>();
        if (!whole.matchesIn(digits)) return std::nullopt;
        return std::stoll(digits);
    }
    if (!value.is_number()) return std::nullopt;
    const double number = value.get<double>();
    if (!(std::abs(number) <= exactLimit) || std::trunc(number) != number) return std::nullopt;
    return static_cast<std::int64_t>(number);
}

std::optional<int> smallInteger(const json& value) {
    const auto number = integer(value);
    if (!number || *number < std::numeric_limits<int>::min() ||
        *number > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return static_cast<int>(*number);
}

std::optional<double> number(const json& value) {
    if (value.is_number()) return value.get<double>();
    const auto whole = integer(value);
    if (!whole) return std::nullopt;
    return static_cast<double>(*whole);
}

std::vector<std::string> texts(const json& value) {
    std::vector<std::string> list;
    if (!value.is_array()) return list;
    for (const json& item : value) {
        std::string one = text(item);
        if (!one.empty()) list.push_back(std::move(one));
    }
    return list;
}

std::optional<int> minutes(std::optional<double> amount, double perMinute) {
    constexpr double year = 365.0 * 24 * 60;
    if (!amount) return std::nullopt;
    const double rounded = std::round(*amount / perMinute);
    if (!(rounded > 0 && rounded <= year)) return std::nullopt;
    return static_cast<int>(rounded);
}

}  // namespace marlet::LooseJson
