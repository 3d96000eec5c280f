#include "write/write_gate.h"

#include "foundation/file_ops.h"
#include "foundation/text.h"
#include "foundation/work_area.h"
#include "write/delivery.h"
#include "write/guards.h"
#include "write/job_end.h"
#include "write/journal.h"
#include "write/outcome_wording.h"

namespace marlet::WriteGate {

namespace fs = std::filesystem;

namespace {

bool isTaggable(const fs::path& file) {
    const std::string extension = Text::lower(file.extension().string());
    return extension == ".mp4" || extension == ".m4v";
}

bool isInPlace(const WriteRequest& request) {
    return !request.copyTo && request.dropTracks.empty();
}

}  // namespace

void checkRequest(WriteJob& job) {
    const WriteRequest& request = job.request;
    if (!isTaggable(request.file))
        throw JobEnd(WriteOutcome::Status::skipped, Wording::notTaggable(request.file));
    if (request.dropTracks.empty()) {
        WriteGuard::check(request.file);
    } else {
        if (!request.outputDir) throw MFError(Wording::noOutputFolder);
        WriteGuard::check(*request.outputDir / "x");
        job.sourceMark = Converter::snapshot(request.file);
    }
    if (request.copyTo) WriteGuard::check(*request.copyTo / "x");
    if (FileOps::size(request.file) == 0) throw MFError(Wording::emptyOrMissing);
}

void checkNoOtherWriter(const WriteRequest& request) {
    const auto programs = TagWriter::openForWriting(request.file);
    if (!programs.empty()) throw JobEnd::stopped(Wording::inUse(programs));
    const auto journal = isInPlace(request) ? WriteJournal::load() : std::nullopt;
    // Another running copy of the program is at it: its turn is waited for when it comes to that.
    if (journal && !WorkArea::isHeld(journal->temp.parent_path())) requireNoPendingWrite();
}

void requireNoPendingWrite() {
    const auto journal = WriteJournal::load();
    if (journal && journal->hasCopy())
        throw JobEnd::stopped(Wording::unfinishedBefore(journal->file));
}

std::optional<std::string> spaceProblem(std::uint64_t fileSize, Way way,
                                        const fs::path& workFolder) {
    // The staged copy and the candidate, which mostly shares its blocks; a rebuild needs scratch
    // space beside both.
    const double times = way == Way::Rebuild ? 2.4 : 1.2;
    const auto need = static_cast<std::int64_t>(static_cast<double>(fileSize) * times);
    const std::int64_t have = FileOps::freeSpace(workFolder, true);
    if (have >= need) return std::nullopt;
    return Wording::noSpace(need, have);
}

void requireSpace(const WriteJob& job, Way way) {
    if (const auto problem = spaceProblem(job.reference.size, way, job.folder.path()))
        throw JobEnd::stopped(*problem);
}

}  // namespace marlet::WriteGate
