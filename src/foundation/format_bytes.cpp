#include "foundation/format_bytes.h"

#include <array>
#include <string_view>

namespace marlet {
namespace {

struct Unit {
    std::string_view name;
    std::uint64_t bytes;
    int decimals;  ///< at most so many
};

constexpr std::array<Unit, 6> units{{
    {"KB", 1'000, 0},
    {"MB", 1'000'000, 1},
    {"GB", 1'000'000'000, 2},
    {"TB", 1'000'000'000'000, 2},
    {"PB", 1'000'000'000'000'000, 2},
    {"EB", 1'000'000'000'000'000'000, 2},
}};

/// The size in the smallest step of the unit (tenths for one decimal), rounded to the nearest.
std::uint64_t inSteps(std::uint64_t bytes, const Unit& unit) {
    std::uint64_t step = unit.bytes;
    for (int i = 0; i < unit.decimals; ++i) step /= 10;
    return bytes / step + (bytes % step >= step - step / 2 ? 1 : 0);
}

/// "42" with one decimal is "4.2", "40" is "4".
std::string withPoint(std::uint64_t steps, int decimals) {
    std::string digits = std::to_string(steps);
    if (decimals == 0) return digits;
    const auto places = static_cast<std::size_t>(decimals);
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    digits.insert(digits.size() - places, ".");
    while (digits.back() == '0') digits.pop_back();
    if (digits.back() == '.') digits.pop_back();
    return digits;
}

std::string magnitude(std::uint64_t bytes) {
    if (bytes == 0) return "Zero KB";
    if (bytes == 1) return "1 byte";
    if (bytes < units.front().bytes) return std::to_string(bytes) + " bytes";
    for (const Unit& unit : units) {
        const std::string number = withPoint(inSteps(bytes, unit), unit.decimals);
        // What rounds up to a thousand of one unit is one of the next.
        const bool fits = number.find('.') != std::string::npos || number.size() <= 3;
        if (&unit == &units.back() || (fits && bytes / unit.bytes < 1000)) {
            return number + " " + std::string(unit.name);
        }
    }
    return {};
}

}  // namespace

std::string formatBytes(std::int64_t bytes) {
    if (bytes >= 0) return magnitude(static_cast<std::uint64_t>(bytes));
    return "-" + magnitude(0 - static_cast<std::uint64_t>(bytes));
}

}  // namespace marlet
