#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "convert/build_step.h"
#include "convert/chapter_file.h"
#include "convert/convert_wording.h"
#include "convert/converter.h"
#include "convert/job_frame.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "mp4/sound_layout.h"
#include "verify/chapter_track.h"
#include "verify/rebuild_verifier.h"
#include "verify/track_comparison.h"
#include "write/track_headers.h"

namespace marlet::Converter {

namespace {

template <typename Names>
bool isOneOf(const Names& names, const std::string& name) {
    return std::ranges::find(names, name) != names.end();
}

/// The first track of this kind whose codec isn't among those that can be copied. A track without
/// a sample entry has no codec, and nothing that could be played wrongly.
template <typename Codecs>
const Track* firstOther(const MP4Summary& summary, std::string_view handler, const Codecs& codecs) {
    const auto found = std::ranges::find_if(summary.tracks, [&](const Track& track) {
        return track.handler == handler && !track.codec.empty() && !isOneOf(codecs, track.codec);
    });
    return found == summary.tracks.end() ? nullptr : &*found;
}

void requireCopyable(const MP4Summary& summary, std::size_t trackBoxes) {
    constexpr std::array<std::string_view, 4> handlers = {"vide", "soun", "sbtl", "text"};
    constexpr std::array<std::string_view, 4> pictures = {"avc1", "avc3", "hvc1", "hev1"};
    constexpr std::array<std::string_view, 3> sounds = {"mp4a", "ac-3", "ec-3"};
    const bool areKnown = std::ranges::all_of(
        summary.tracks, [&](const Track& track) { return isOneOf(handlers, track.handler); });
    // A track that says nothing of its kind isn't in the summary.
    if (!areKnown || summary.tracks.size() != trackBoxes)
        throw MFError(ConvertWording::extraTracks);
    if (const Track* track = firstOther(summary, "vide", pictures))
        throw MFError(ConvertWording::otherPicture(track->codec));
    if (const Track* track = firstOther(summary, "soun", sounds))
        throw MFError(ConvertWording::otherSound(track->codec));
    if (summary.tracks.empty()) throw MFError(ConvertWording::noTracks);
}

/// What of the source goes into the new file.
struct Selection {
    std::vector<std::uint32_t> ids;  ///< of the tracks that are copied, in order
    /// Their places among all tracks, where a track of chapter text stays behind.
    std::optional<std::vector<int>> keep;
    std::vector<Chapter> chapters;
    std::size_t otherChapters = 0;  ///< lists of chapters that differ from those
};

/// As they can stand in a file of chapters.
std::vector<Chapter> cleaned(std::vector<Chapter> chapters) {
    for (Chapter& chapter : chapters) {
        chapter.ms = std::max<std::int64_t>(chapter.ms, 0);
        std::ranges::replace_if(
            chapter.title, [](char each) { return static_cast<unsigned char>(each) < 0x20; }, ' ');
    }
    return chapters;
}

/// Players show the text of the first track that a picture names; a list is for those that know
/// no such tracks.
void chooseChapters(const std::filesystem::path& file, const MP4Summary& summary,
                    const std::set<std::size_t>& textTracks, Selection& selection) {
    for (const std::size_t position : textTracks) {
        std::vector<Chapter> told = cleaned(chaptersInTrack(file, summary.tracks[position]));
        if (told.empty() || told == selection.chapters) continue;
        if (selection.chapters.empty())
            selection.chapters = std::move(told);
        else
            selection.otherChapters++;
    }
    if (selection.chapters.empty()) selection.chapters = cleaned(summary.chpl);
}

Selection select(const std::filesystem::path& source) {
    const Bytes moov = loadMoov(source);
    const MP4Summary summary = parseSummary(moov, source, Detail::Yes);
    const auto boxes = children(moov, 0, static_cast<std::int64_t>(moov.size()));
    requireCopyable(summary,
                    static_cast<std::size_t>(std::ranges::count(boxes, "trak", &Box::type)));
    Selection selection;
    const std::set<std::size_t> textTracks = chapterTracks(summary.tracks);
    if (!textTracks.empty()) selection.keep.emplace();
    for (std::size_t i = 0; i < summary.tracks.size(); i++) {
        if (textTracks.contains(i)) continue;
        selection.ids.push_back(summary.tracks[i].id);
        if (selection.keep) selection.keep->push_back(summary.tracks[i].index);
    }
    if (selection.ids.empty()) throw MFError(ConvertWording::noTracks);
    chooseChapters(source, summary, textTracks, selection);
    return selection;
}

void requireSpace(const ConvertJob& job) {
    const auto size = static_cast<double>(job.sourceMark.size);
    if (static_cast<double>(FileOps::freeSpace(job.folder.path(), true)) < size * 1.15)
        throw MFError(ConvertWording::noWorkSpaceForCopy);
    JobFrame::requireOutputSpace(job);
}

void planMux(ConvertJob& job, const Selection& selection) {
    for (const std::uint32_t id : selection.ids)
        job.mux.tracks.push_back({.file = job.link(), .number = id});
    if (selection.otherChapters > 0)
        job.notes.push_back(ConvertWording::chaptersLeftOut(selection.otherChapters));
    if (selection.chapters.empty()) return;
    std::vector<MKVChapter> chapters;
    constexpr std::uint64_t nsPerMs = 1'000'000;
    for (const Chapter& chapter : selection.chapters)
        chapters.push_back(
            {.startNs = static_cast<std::uint64_t>(chapter.ms) * nsPerMs, .title = chapter.title});
    job.mux.chapters = job.folder.path() / "chapters.txt";
    Durable::writeFile(*job.mux.chapters, viewOf(chapterFile(chapters)));
}

void writeDetails(ConvertJob& job, const Selection& selection, const Bytes& ilst) {
    job.report("Writing details", 0.52);
    IlstEditor::apply(IlstEditor::plan(job.built(), ilst), job.built());
    for (std::string& note : TrackHeaders::restore(job.request.source, job.built(), selection.keep))
        job.notes.push_back(std::move(note));
    BuildStep::requireAlone(job);
    JobFrame::requireTags(job);
}

VerifyReport verified(const ConvertJob& job, const RebuildTerms& terms) {
    try {
        return verifyRebuild(job.request.source, job.built(), terms, job.control, job.progress);
    } catch (const MFError& failure) {
        return {.reasons = {failure.description()}, .notes = {}};
    }
}

/// Gives the sound layout in seconds.
double prove(ConvertJob& job, Selection selection) {
    job.report("Verifying", 0.55);
    RebuildTerms terms;
    terms.maxAfter = soundLayoutLimit;
    terms.allowTagChange = true;
    terms.lenientSampleEntries = true;
    terms.sameDecoders = true;
    terms.keepIndices = std::move(selection.keep);
    if (!selection.chapters.empty()) terms.newChapters = std::move(selection.chapters);
    VerifyReport report = verified(job, terms);
    if (!report.reasons.empty()) throw MFError(ConvertWording::verificationFailed(report.reasons));
    for (std::string& note : report.notes) job.notes.push_back(std::move(note));
    return report.after;
}

WriteOutcome copy(ConvertJob& job) {
    JobFrame::open(job);
    job.sourceMark = snapshot(job.request.source);
    const Selection selection = select(job.request.source);

    job.linkName = "source.mov";
    job.folder.create();
    requireSpace(job);
    JobFrame::linkSource(job);
    planMux(job, selection);
    const Bytes ilst = IlstEditor::ilstBox(job.request.atoms);
    BuildStep::makeRoom(job, ilst);
    BuildStep::build(job, {ConvertWording::building, 0.05, 0.47});
    writeDetails(job, selection, ilst);
    const double layout = prove(job, selection);

    WriteOutcome outcome = JobFrame::deliver(job);
    outcome.after = layout;
    outcome.message = ConvertWording::newCopy(outcome.output->filename().string());
    return outcome;
}

}  // namespace

WriteOutcome runMOV(const ConvertRequest& request, RunControl& control,
                    const StepProgress& progress) {
    return JobFrame::run(request, control, progress, copy);
}

}  // namespace marlet::Converter
