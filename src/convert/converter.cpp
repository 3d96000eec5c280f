#include "convert/converter.h"

#include <cstdlib>
#include <set>
#include <system_error>

#include "convert/build_step.h"
#include "convert/chapter_file.h"
#include "convert/convert_job.h"
#include "convert/convert_wording.h"
#include "convert/sound_step.h"
#include "convert/subtitle_step.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/text.h"
#include "foundation/tool_runner.h"
#include "mp4/sound_layout.h"
#include "write/guards.h"
#include "write/place_file.h"
#include "write/rebuild.h"

namespace marlet::Converter {

namespace fs = std::filesystem;

namespace {

void open(ConvertJob& job) {
    const auto tool = TagWriter::mp4box();
    if (!tool) throw MFError(ConvertWording::noTool);
    job.tool = *tool;
    WriteGuard::check(job.request.outputDir / "x");
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
    if (static_cast<double>(FileOps::freeSpace(job.request.outputDir, true)) < size * 1.1)
        throw MFError(ConvertWording::noOutputSpace);
}

void linkSource(const ConvertJob& job) {
    std::error_code failed;
    fs::create_symlink(fs::absolute(job.request.source), job.link(), failed);
    if (failed) failWith("cannot make the work folder", failed.value());
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
    linkSource(job);
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
    if (IlstEditor::currentIlst(job.built()) != job.request.atoms)
        throw MFError(ConvertWording::otherTags);
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
    makeFoldersFor(job.request.outputDir, "cannot create the output folder");
    const fs::path saved = deliver(job.built(), job.request.source, job.sourceMark,
                                   job.request.outputDir, job.control, job.progress);
    job.report("Done", 1);

    const std::string name = saved.filename().string();
    WriteOutcome outcome;
    outcome.status = WriteOutcome::Status::done;
    outcome.after = layout;
    outcome.size = FileOps::size(saved);
    outcome.output = saved;
    outcome.changes = {ConvertWording::convertedTo(name)};
    outcome.changes.insert(outcome.changes.end(), job.notes.begin(), job.notes.end());
    outcome.message = ConvertWording::newFile(name, job.notes);
    return outcome;
}

}  // namespace

WriteOutcome run(const ConvertRequest& request, RunControl& control, const StepProgress& progress) {
    WriteOutcome outcome;
    try {
        ConvertJob job(request, control, progress);
        if (std::getenv("MARLET_KEEP_WORK") != nullptr) job.folder.keep();
        return convert(job);
    } catch (const CancelError&) {
        outcome.status = WriteOutcome::Status::cancelled;
        outcome.message = ConvertWording::cancelled;
    } catch (const std::exception& failure) {
        outcome.status = WriteOutcome::Status::failed;
        outcome.message = failure.what();
    }
    return outcome;
}

WriteOutcome runAny(const ConvertRequest& request, RunControl& control,
                    const StepProgress& progress) {
    const std::string extension = Text::lower(request.source.extension().string());
    if (extension != ".mov") return run(request, control, progress);
    WriteOutcome outcome;
    outcome.message = TagWriter::mp4box() ? Rebuild::noConversion : ConvertWording::noTool;
    return outcome;
}

}  // namespace marlet::Converter
