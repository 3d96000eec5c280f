#pragma once

#include <optional>
#include <string>

#include "foundation/records.h"

namespace marlet {

/// Comparing how long a file plays with how long a catalogue says it should.
namespace Lengths {

/// How far a length may be off: a share of the catalogue's length, but never less than `least`.
struct Tolerance {
    double share;
    double least;  ///< minutes
};

inline constexpr Tolerance episode{0.15, 4.0};
inline constexpr Tolerance doubleEpisode{0.12, 6.0};
inline constexpr Tolerance film{0.08, 5.0};

/// The file's length in minutes; absent when unknown.
std::optional<double> minutes(const ScannedFile& file);
/// Whether the lengths fit; absent when one of them isn't known (a catalogue's 0 is none).
std::optional<bool> fits(std::optional<double> minutes, std::optional<int> expected,
                         Tolerance tolerance);
bool within(double minutes, double expected, Tolerance tolerance);
/// "Length differs: file 44 min, database 22 min"
std::string difference(double minutes, const std::string& catalogue, int expected);

}  // namespace Lengths
}  // namespace marlet
