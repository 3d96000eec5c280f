#pragma once

#include <optional>
#include <string>
#include <vector>

#include "write/ilst_editor.h"
#include "write/track_removal.h"
#include "write/write_job.h"

namespace marlet {

/// The tag block as it is meant to be.
struct TagTarget {
    std::vector<Atom> old;
    std::vector<Atom> atoms;
};

/// Reads the file's tags, works out the intended ones and, for a details write, saves and proves
/// the restore point.
TagTarget intendedTags(const WriteJob& job);

/// The built and proved result, in WriteJob::candidate.
struct Candidate {
    std::optional<IlstEditor::Plan> plan;  ///< of a region edit
    std::string digest;                    ///< SHA-256 of a region-edited candidate
    double after = 0;                      ///< its sound layout, seconds
};

/// Builds the candidate from the private copy and proves it.
Candidate buildCandidate(WriteJob& job, const TagTarget& target, const TrackRemoval& removal);

/// Fails when the candidate's sound layout isn't good enough to be delivered.
void judge(const WriteRequest& request, double before, double after, bool rebuilt);
/// More than a rounding worse than before.
bool isWorse(double before, double after);

}  // namespace marlet
