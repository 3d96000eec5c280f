#pragma once

#include <string>
#include <vector>

namespace marlet {

/// What an earlier run of the program left behind, as a screen offers it.
struct UnfinishedOffer {
    int queued = 0;     ///< files, and restores of original details, that waited in the queue
    int corrected = 0;  ///< files that a person had corrected in Review
    std::vector<std::string> names;  ///< of the files, those of the queue first
    /// "3 files from last time are still waiting: 2 in the queue, 1 corrected in Review."
    std::string sentence;
    bool operator==(const UnfinishedOffer&) const = default;

    /// Counts and sentence of so many files.
    static UnfinishedOffer of(int queued, int corrected);
};

}  // namespace marlet
