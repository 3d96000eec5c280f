#include "identify/lengths.h"

#include <algorithm>
#include <cmath>

#include "foundation/text.h"

namespace marlet::Lengths {

std::optional<double> minutes(const ScannedFile& file) {
    if (!file.duration || !std::isfinite(*file.duration)) return std::nullopt;
    return *file.duration / 60.0;
}

std::optional<bool> fits(std::optional<double> minutes, std::optional<int> expected,
                         Tolerance tolerance) {
    if (!minutes || !expected || *expected < 1) return std::nullopt;
    return within(*minutes, *expected, tolerance);
}

bool within(double minutes, double expected, Tolerance tolerance) {
    return std::abs(minutes - expected) <= std::max(expected * tolerance.share, tolerance.least);
}

std::string difference(double minutes, const std::string& catalogue, int expected) {
    return "Length differs: file " + Text::fixed(std::round(minutes), 0) + " min, " + catalogue +
           " " + std::to_string(expected) + " min";
}

}  // namespace marlet::Lengths
