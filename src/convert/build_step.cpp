#include "convert/build_step.h"

#include <array>
#include <system_error>

#include "convert/built_index.h"
#include "convert/built_picture.h"
#include "convert/chapter_list.h"
#include "convert/convert_wording.h"
#include "convert/picture_start.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "foundation/tool_runner.h"
#include "mp4/sound_layout.h"
#include "write/guards.h"
#include "write/ilst_editor.h"

namespace marlet::BuildStep {

namespace fs = std::filesystem;

namespace {

constexpr std::array slices = {500, 250, 100};  // milliseconds
constexpr std::size_t padBeyondTags = 4096;     // bytes, so that a later edit finds room

/// Each try begins with nothing of the one before: what the tool left could mislead it, and the
/// space that was asked for doesn't hold two results.
void setUp(const ConvertJob& job) {
    std::error_code ignored;
    fs::remove_all(job.bench(), ignored);
    Sys::unlink(job.built());
    Durable::makeFolders(job.mux.scratch);
}

/// Out of the tool's reach. A link in the place of its output could lead to a person's file, and
/// the tags would be written there.
void takeOver(const ConvertJob& job) {
    const auto made = Sys::lstat(job.mux.output);
    if (!made || !made->isRegular || made->size == 0) throw MFError(ConvertWording::noToolOutput);
    Durable::rename(job.mux.output, job.built());
}

/// What no option of the tool could tell it.
void mendIndex(const ConvertJob& job) {
    BuiltIndex index(job.built());
    PictureStart::restore(index, job.mux.tracks);
    if (const MKVTrack* const video = job.mkv->track(job.plan().video))
        BuiltPicture::restore(index, *video);
    if (!job.mux.chapters) ChapterList::remove(index);
}

Stage stageOf(std::size_t attempt) {
    constexpr double start = 0.4;
    constexpr double step = 0.03;
    return {attempt == 0 ? ConvertWording::building : ConvertWording::finerSlices(slices[attempt]),
            start + step * static_cast<double>(attempt), step};
}

}  // namespace

void makeRoom(ConvertJob& job, const Bytes& ilst) {
    job.mux.scratch = job.bench() / "tmp";
    job.mux.output = job.bench() / "built.mp4";
    job.mux.pad = ilst.size() + padBeyondTags;
}

/// The tool may read the source and what was prepared, and write its bench.
void build(ConvertJob& job, const Stage& stage) {
    setUp(job);
    job.control.checkpoint();
    job.report(stage.label, stage.from);
    const ToolRunner::Confinement confinement{
        .reads = job.mux.inputs(), .writes = {job.bench()}, .home = job.bench() / "home"};
    ToolRunner::run(job.tool, job.mux.arguments(), confinement, job.control,
                    [&](double done) { job.report(stage.label, stage.from + stage.span * done); });
    takeOver(job);
}

void requireAlone(const ConvertJob& job) {
    if (!TagWriter::openForWriting(job.built()).empty()) throw MFError(ConvertWording::toolStays);
}

double run(ConvertJob& job) {
    const Bytes ilst = IlstEditor::ilstBox(job.request.atoms);
    makeRoom(job, ilst);
    double layout = 0;
    for (std::size_t attempt = 0; attempt < slices.size(); attempt++) {
        job.mux.slice = slices[attempt];
        build(job, stageOf(attempt));
        mendIndex(job);
        IlstEditor::apply(IlstEditor::plan(job.built(), ilst), job.built());
        layout = measureInterleave(job.built());
        if (layout <= soundLayoutLimit) break;
    }
    if (layout > soundLayoutLimit) throw MFError(ConvertWording::notFixable(layout));
    if (job.mux.slice != slices.front())
        job.notes.push_back(ConvertWording::slicesUsed(job.mux.slice));
    requireAlone(job);
    return layout;
}

}  // namespace marlet::BuildStep
