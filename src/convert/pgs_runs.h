#pragma once

#include "foundation/bytes.h"

/// The run lengths of a picture subtitle, without looking at colours.
namespace marlet::PGSRuns {

/// How far pixels reach, no further than a picture's size.
struct Extent {
    int columns = 0;
    int rows = 0;
    bool operator==(const Extent&) const = default;
};

/// What part of a picture of this size the run lengths tell anything about. Takes as long as they
/// are, whatever size they claim.
Extent extent(ByteView runs, int width, int height);

}  // namespace marlet::PGSRuns
