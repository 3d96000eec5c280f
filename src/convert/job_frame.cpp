#include "convert/job_frame.h"

#include <cstdlib>
#include <system_error>

#include "convert/convert_wording.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "write/guards.h"
#include "write/place_file.h"
#include "write/rebuild.h"

namespace marlet::JobFrame {

namespace fs = std::filesystem;

WriteOutcome run(const ConvertRequest& request, RunControl& control, const StepProgress& progress,
                 WriteOutcome (*work)(ConvertJob& job)) {
    WriteOutcome outcome;
    try {
        ConvertJob job(request, control, progress);
        if (std::getenv("MARLET_KEEP_WORK") != nullptr) job.folder.keep();
        return work(job);
    } catch (const CancelError&) {
        outcome.status = WriteOutcome::Status::cancelled;
        outcome.message = ConvertWording::cancelled;
    } catch (const std::exception& failure) {
        outcome.status = WriteOutcome::Status::failed;
        outcome.message = failure.what();
    }
    return outcome;
}

void open(ConvertJob& job) {
    const auto tool = TagWriter::mp4box();
    if (!tool) throw MFError(ConvertWording::noTool);
    job.tool = *tool;
    WriteGuard::check(job.request.outputDir / "x");
}

void requireOutputSpace(const ConvertJob& job) {
    const auto size = static_cast<double>(job.sourceMark.size);
    if (static_cast<double>(FileOps::freeSpace(job.request.outputDir, true)) < size * 1.1)
        throw MFError(ConvertWording::noOutputSpace);
}

void linkSource(const ConvertJob& job) {
    std::error_code failed;
    fs::create_symlink(fs::absolute(job.request.source), job.link(), failed);
    if (failed) failWith("cannot make the work folder", failed.value());
}

void requireTags(const ConvertJob& job) {
    if (IlstEditor::currentIlst(job.built()) != job.request.atoms)
        throw MFError(ConvertWording::otherTags);
}

WriteOutcome deliver(ConvertJob& job) {
    makeFoldersFor(job.request.outputDir, "cannot create the output folder");
    const fs::path saved = Converter::deliver(job.built(), job.request.source, job.sourceMark,
                                              job.request.outputDir, job.control, job.progress);
    job.report("Done", 1);

    WriteOutcome outcome;
    outcome.status = WriteOutcome::Status::done;
    outcome.size = FileOps::size(saved);
    outcome.output = saved;
    outcome.changes = {ConvertWording::convertedTo(saved.filename().string())};
    outcome.changes.insert(outcome.changes.end(), job.notes.begin(), job.notes.end());
    return outcome;
}

}  // namespace marlet::JobFrame
