#include "convert/converter.h"

#include <set>

#include "convert/build_step.h"
#include "convert/chapter_file.h"
#include "convert/convert_job.h"
#include "convert/convert_wording.h"
#include "convert/job_frame.h"
#include "convert/sound_step.h"
#include "convert/subtitle_step.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/text.h"
#include "mp4/sound_layout.h"

namespace marlet::Converter {

namespace fs = std::filesystem;

namespace {

void open(ConvertJob& job) {
    JobFrame::open(job);
    job.mkv = MKVFile::open(job.request.source);
    if (!job.mkv) throw MFError(ConvertWording::unreadable);
    if (!job.request.plan) throw MFError(ConvertWording::noPlan);
    job.sourceMark = snapshot(job.request.source);
}

/// Bytes of one decoded sound; of a film whose length nobody knows, as if it were four hours of
/// eight channels.
std::int64_t decodedSound(const std::optional<double>& seconds) {
    constexpr double bytesPerSecond = 48000.0 * 8 * 2;
    constexpr std::int64_t unknown = 5'529'600'000;
    constexpr double longest = 1e9;  // seconds; no number that a file may hold overflows
    if (!seconds || !(*seconds >= 0)) return unknown;
    return static_cast<std::int64_t>(std::min(*seconds, longest) * bytesPerSecond);
}

void requireSpace(const ConvertJob& job) {
    const auto size = static_cast<double>(job.sourceMark.size);
    const std::int64_t work =
        static_cast<std::int64_t>(size * 1.15) + decodedSound(job.plan().duration);
    if (FileOps::freeSpace(job.folder.path(), true) < work)
        throw MFError(ConvertWording::noWorkSpace(work));
    JobFrame::requireOutputSpace(job);
}

std::set<int> tracksOfSource(const ConvertPlanSnapshot& plan) {
    std::set<int> tracks = {plan.video};
    for (const ConvertPlanSnapshot::Audio& entry : plan.audio) tracks.insert(entry.track);
    return tracks;
}

void addVideo(ConvertJob& job) {
    job.mux.tracks.push_back({.file = job.link(),
                              .number = job.plan().video,
                              .name = "Video",
                              .delayMs = job.starts.delayMs(job.plan().video)});
    job.expected.push_back(
        {.kind = ConvertVerify::Expected::Kind::video, .source = job.plan().video});
}

void addChapters(ConvertJob& job) {
    if (!job.plan().hasChapters || job.mkv->chapters().empty()) return;
    job.mux.chapters = job.folder.path() / "chapters.txt";
    Durable::writeFile(*job.mux.chapters, viewOf(chapterFile(job.mkv->chapters())));
}

void prepare(ConvertJob& job) {
    job.folder.create();
    requireSpace(job);
    job.control.checkpoint();
    JobFrame::linkSource(job);
    checkTrackIDs(job.tool, job.link(), job.plan(), job.control);
    job.report("Preparing the tracks", 0.02);
    job.starts = TrackStarts(*job.mkv, tracksOfSource(job.plan()), job.control);
    addVideo(job);
    addChapters(job);
    SoundStep::run(job);
    SubtitleStep::run(job);
}

void prove(ConvertJob& job) {
    job.report("Writing details", 0.68);
    JobFrame::requireTags(job);
    job.report("Verifying", 0.7);
    ConvertVerify::Report report = ConvertVerify::run(*job.mkv, job.plan(), job.built(),
                                                      job.expected, job.control, job.progress);
    if (!report.reasons.empty()) throw MFError(ConvertWording::verificationFailed(report.reasons));
    for (std::string& note : report.notes) job.notes.push_back(std::move(note));
    const double layout = measureInterleave(job.built());
    if (layout > soundLayoutLimit) throw MFError(ConvertWording::overLimit(layout));
}

WriteOutcome convert(ConvertJob& job) {
    open(job);
    prepare(job);
    const double layout = BuildStep::run(job);
    prove(job);
    WriteOutcome outcome = JobFrame::deliver(job);
    outcome.after = layout;
    outcome.message = ConvertWording::newFile(outcome.output->filename().string(), job.notes);
    return outcome;
}

}  // namespace

WriteOutcome run(const ConvertRequest& request, RunControl& control, const StepProgress& progress) {
    return JobFrame::run(request, control, progress, convert);
}

WriteOutcome runAny(const ConvertRequest& request, RunControl& control,
                    const StepProgress& progress) {
    const std::string extension = Text::lower(request.source.extension().string());
    return extension == ".mov" ? runMOV(request, control, progress)
                               : run(request, control, progress);
}

}  // namespace marlet::Converter
