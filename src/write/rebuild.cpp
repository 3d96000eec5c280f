#include "write/rebuild.h"

#include <algorithm>
#include <array>
#include <system_error>

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "mp4/sound_layout.h"
#include "verify/rebuild_verifier.h"
#include "write/guards.h"
#include "write/in_place_tracks.h"
#include "write/outcome_wording.h"
#include "write/tag_restore.h"
#include "write/track_headers.h"

namespace marlet::Rebuild {

namespace fs = std::filesystem;

namespace {

constexpr std::array slices = {500, 250, 100};  // milliseconds
constexpr std::size_t padBeyondTags = 4096;     // bytes, so that a later edit finds room

std::vector<Track> tracksOf(const fs::path& file) {
    return parseSummary(loadMoov(file), file, Detail::Yes).tracks;
}

/// A build at work. The tool gets a folder of its own: the private copy is the way back and what
/// the result is proved against, so it must lie where the tool can't write.
class Build {
public:
    Build(WriteJob& job, const TagTarget& target, const TrackRemoval& removal)
        : job_(job),
          target_(target),
          removal_(removal),
          tool_(requireTool()),
          bench_(job.folder.path() / "rebuild"),
          input_(bench_ / "input.mp4"),
          made_(bench_ / "made.mp4"),
          output_(job.folder.path() / outputName(job)),
          ilst_(IlstEditor::ilstBox(target.atoms)) {}

    double run() {
        double after = 0;
        int slice = 0;
        for (std::size_t attempt = 0; attempt < slices.size(); attempt++) {
            slice = slices[attempt];
            setUp();
            layOut(attempt);
            bringTags();
            after = measureInterleave(output_);
            if (after <= soundLayoutLimit) break;
        }
        if (after > soundLayoutLimit) throw MFError(Wording::notFixable(after));
        if (slice != slices.front()) job_.outcome.changes.push_back(Wording::slicesUsed(slice));
        bringHeaders();
        finish();
        return after;
    }

private:
    static fs::path requireTool() {
        const auto tool = TagWriter::mp4box();
        if (!tool) throw MFError(missingForFix);
        return *tool;
    }

    /// Another name where the original itself is called so.
    static fs::path outputName(const WriteJob& job) {
        fs::path name = job.candidate.stem();
        name += ".rebuilt.mp4";
        if (name == job.staged.filename()) name = "rebuilt.mp4";
        return name;
    }

    /// Each attempt begins with nothing of the one before: what the tool left could mislead it, and
    /// the space that was asked for doesn't hold two results.
    void setUp() const {
        clear();
        Sys::unlink(output_);
        Durable::makeFolders(bench_ / "tmp");
        // The person's file name is data to the tool in no other place than behind this link.
        std::error_code failed;
        fs::create_symlink(job_.staged, input_, failed);
        if (failed) failWith("cannot make the rebuild's folder", failed.value());
    }

    void layOut(std::size_t attempt) {
        constexpr double start = 0.34;
        constexpr double step = 0.03;
        const double from = start + step * static_cast<double>(attempt);
        const std::string label =
            attempt == 0 ? "Rebuilding for Apple TV" : Wording::finerSlices(slices[attempt]);
        job_.report(label, from);
        TagWriter::Layout layout;
        layout.input = input_;
        layout.output = made_;
        layout.tmp = bench_ / "tmp";
        layout.pad = ilst_.size() + padBeyondTags;
        layout.inter = slices[attempt];
        layout.remove = removal_.ids;
        TagWriter::runMP4Box(tool_, layout, job_.control, job_.part(label, from, step));
        if (FileOps::size(made_) == 0) throw MFError(Wording::noToolOutput);
        Durable::rename(made_, output_);
    }

    void bringTags() {
        if (target_.atoms == target_.old) carryTagsOver();
        if (IlstEditor::currentIlst(output_) == target_.atoms) return;
        IlstEditor::apply(IlstEditor::plan(output_, ilst_), output_);
    }

    /// The block byte for byte, whatever the tool made of it.
    void carryTagsOver() {
        const fs::path corrected = bench_ / "tags.mp4";
        if (TagRestore::restore(job_.staged, output_, corrected, job_.control))
            Durable::rename(corrected, output_);
    }

    void bringHeaders() {
        for (std::string& note : TrackHeaders::restore(job_.staged, output_, removal_.keep))
            job_.outcome.changes.push_back(std::move(note));
        if (!removal_.isAny()) return;
        const std::vector<Track> tracks = tracksOf(output_);
        if (tracks.size() != removal_.keep->size()) throw MFError(Wording::otherTracks);
        InPlaceTracks::enable(TrackChoice::placesToEnable(removal_, tracks), output_);
    }

    void clear() const {
        std::error_code ignored;
        fs::remove_all(bench_, ignored);
    }

    /// The journal may name it from here on. What is proved next must not change any more: a
    /// process that the tool left behind could still hold it open, but not open it anew.
    void finish() const {
        clear();
        Durable::flushFile(output_);
        Durable::rename(output_, job_.candidate);
        if (!TagWriter::openForWriting(job_.candidate).empty()) throw MFError(Wording::toolStays);
    }

    WriteJob& job_;
    const TagTarget& target_;
    const TrackRemoval& removal_;
    const fs::path tool_;
    const fs::path bench_;
    const fs::path input_;
    const fs::path made_;    ///< where the tool writes
    const fs::path output_;  ///< where it can't write any more
    const Bytes ilst_;
};

}  // namespace

namespace {

/// The proof counts from 0.55 to 0.85 whoever asks for it; here it has to end below "Checked".
StepProgress proofProgress(const WriteJob& job) {
    return [&job](const std::string& label, double fraction) {
        constexpr double from = 0.55;
        constexpr double span = 0.3;
        job.report(label, 0.48 + 0.16 * (fraction - from) / span);
    };
}

}  // namespace

double build(WriteJob& job, const TagTarget& target, const TrackRemoval& removal) {
    job.report("Rebuilding for Apple TV", 0.34);
    return Build(job, target, removal).run();
}

void prove(const WriteJob& job, const TagTarget& target, const TrackRemoval& removal) {
    job.report("Verifying", 0.48);
    RebuildTerms terms;
    terms.maxAfter = soundLayoutLimit;
    terms.allowTagChange = target.atoms != target.old;
    terms.keepIndices = removal.keep;
    if (!removal.enable.empty()) {
        const auto places = TrackChoice::placesToEnable(removal, tracksOf(job.candidate));
        terms.enabledOnPurpose = {places.begin(), places.end()};
    }
    const VerifyReport report =
        verifyRebuild(job.staged, job.candidate, terms, job.control, proofProgress(job));
    if (!report.reasons.empty()) throw MFError(Wording::verificationFailed(report.reasons));
    if (IlstEditor::currentIlst(job.candidate) != target.atoms) throw MFError(Wording::otherTags);
}

}  // namespace marlet::Rebuild
