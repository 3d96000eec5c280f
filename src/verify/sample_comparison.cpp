#include "verify/sample_comparison.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>

#include "foundation/errors.h"
#include "verify/sample_digest.h"
#include "verify/track_comparison.h"

namespace marlet {

namespace {

/// Below this a second thread costs more than it saves.
constexpr std::uint64_t worthAThread = 32 * 1024 * 1024;

/// Counts for both threads, and tells the job's thread alone.
class Share {
public:
    Share(std::uint64_t total, const StepProgress& progress)
        : total_(std::max<std::uint64_t>(total, 1)), progress_(progress) {}

    void add(std::uint64_t bytes) { bytes_ += bytes; }
    void tell() const {
        constexpr double start = 0.55;
        constexpr double length = 0.3;
        if (progress_)
            progress_("Verifying", start + length * static_cast<double>(bytes_.load()) /
                                               static_cast<double>(total_));
    }

private:
    std::uint64_t total_;
    std::atomic<std::uint64_t> bytes_ = 0;
    const StepProgress& progress_;
};

struct Digests {
    std::vector<std::string> original;
    std::vector<std::string> rebuilt;
};

/// Ends the work on one file when the other one has failed.
struct Abandoned {};

Digests oneAfterTheOther(const std::filesystem::path& originalFile, const MP4Summary& original,
                         const std::filesystem::path& rebuiltFile, const MP4Summary& rebuilt,
                         RunControl& control, Share& share) {
    const auto done = [&](std::uint64_t bytes) {
        share.add(bytes);
        share.tell();
    };
    Digests digests;
    digests.original = sampleDigests(originalFile, original, control, done);
    digests.rebuilt = sampleDigests(rebuiltFile, rebuilt, control, done);
    return digests;
}

Digests sideBySide(const std::filesystem::path& originalFile, const MP4Summary& original,
                   const std::filesystem::path& rebuiltFile, const MP4Summary& rebuilt,
                   RunControl& control, Share& share) {
    std::atomic<bool> hasFailed = false;
    auto other = std::async(std::launch::async, [&] {
        try {
            return sampleDigests(rebuiltFile, rebuilt, control, [&](std::uint64_t bytes) {
                share.add(bytes);
                if (hasFailed) throw Abandoned();
            });
        } catch (...) {
            hasFailed = true;
            throw;
        }
    });
    Digests digests;
    try {
        digests.original = sampleDigests(originalFile, original, control, [&](std::uint64_t bytes) {
            share.add(bytes);
            share.tell();
            if (hasFailed) throw Abandoned();
        });
        constexpr std::chrono::milliseconds betweenReports{200};
        while (other.wait_for(betweenReports) != std::future_status::ready) share.tell();
    } catch (const Abandoned&) {
        other.get();  // throws what went wrong
    } catch (...) {
        hasFailed = true;  // the future waits for its thread
        throw;
    }
    digests.rebuilt = other.get();
    share.tell();
    return digests;
}

}  // namespace

void compareSamples(const std::filesystem::path& originalFile, const MP4Summary& original,
                    const std::filesystem::path& rebuiltFile, const MP4Summary& rebuilt,
                    const std::set<std::size_t>& chapterTracks, RunControl& control,
                    const StepProgress& progress, VerifyReport& report) {
    const std::uint64_t total = sampleBytes(original) + sampleBytes(rebuilt);
    Share share(total, progress);
    const auto hash = total < worthAThread ? oneAfterTheOther : sideBySide;
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
