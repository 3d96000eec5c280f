#include "verify/sample_comparison.h"

#include "foundation/errors.h"
#include "verify/sample_digest.h"
#include "verify/side_by_side.h"
#include "verify/track_comparison.h"

namespace marlet {

namespace {

struct Digests {
    std::vector<std::string> original;
    std::vector<std::string> rebuilt;
};

Digests oneAfterTheOther(const std::filesystem::path& originalFile, const MP4Summary& original,
                         const std::filesystem::path& rebuiltFile, const MP4Summary& rebuilt,
                         RunControl& control, ReadShare& share) {
    const auto done = [&](std::uint64_t bytes) {
        share.add(bytes);
        share.tell();
    };
    Digests digests;
    digests.original = sampleDigests(originalFile, original, control, done);
    digests.rebuilt = sampleDigests(rebuiltFile, rebuilt, control, done);
    return digests;
}

Digests bothAtOnce(const std::filesystem::path& originalFile, const MP4Summary& original,
                   const std::filesystem::path& rebuiltFile, const MP4Summary& rebuilt,
                   RunControl& control, ReadShare& share) {
    Digests digests;
    sideBySide(
        [&](const auto& done) {
            digests.rebuilt = sampleDigests(rebuiltFile, rebuilt, control, done);
        },
        [&](const auto& done) {
            digests.original = sampleDigests(originalFile, original, control, done);
        },
        share);
    share.tell();
    return digests;
}

}  // namespace

void compareSamples(const std::filesystem::path& originalFile, const MP4Summary& original,
                    const std::filesystem::path& rebuiltFile, const MP4Summary& rebuilt,
                    const std::set<std::size_t>& chapterTracks, RunControl& control,
                    const StepProgress& progress, VerifyReport& report) {
    const std::uint64_t total = sampleBytes(original) + sampleBytes(rebuilt);
    ReadShare share(total, 0.55, 0.3, progress);
    const auto hash = total < worthAThread ? oneAfterTheOther : bothAtOnce;
    const Digests digests = hash(originalFile, original, rebuiltFile, rebuilt, control, share);
    for (std::size_t i = 0; i < original.tracks.size(); i++) {
        if (digests.original[i] == digests.rebuilt[i]) continue;
        if (chapterTracks.contains(i))
            report.notes.push_back("chapter text track " + std::to_string(i + 1) +
                                   " was repaired by MP4Box; chapter titles and times are "
                                   "unchanged");
        else
            report.reasons.push_back(trackLabel(original.tracks[i], i) + ": sample data differs");
    }
}

}  // namespace marlet
