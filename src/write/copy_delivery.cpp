#include "write/copy_delivery.h"

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "write/outcome_wording.h"
#include "write/place_file.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

fs::path targetIn(const fs::path& folder, const fs::path& file) {
    fs::path name = file.stem();
    name += " (Marlet)";
    name += file.extension();
    return folder / name;
}

}  // namespace

void saveCopy(WriteJob& job, const fs::path& folder) {
    constexpr const char* saving = "Saving a copy";
    makeFoldersFor(folder, "cannot create the copy folder");
    const fs::path target = targetIn(folder, job.file());
    const std::string exists = Wording::copyExists(target.filename().string());
    if (isTaken(target)) throw MFError(exists);

    job.report(saving, 0.64);
    const PartFile part(folder, job.candidate.parent_path());
    FileOps::copy(job.candidate, part.path(), job.control, job.part(saving, 0.64, 0.3));
    if (!FileOps::filesEqual(job.candidate, part.path(), job.control))
        throw MFError(Wording::copyDidNotMatch);
    if (!moveIfFree(part.path(), target)) throw MFError(exists);

    job.outcome.status = WriteOutcome::Status::done;
    job.outcome.message = Wording::copySaved;
    job.outcome.output = target;
    job.outcome.size = FileOps::size(target);
    job.report("Done", 1);
}

}  // namespace marlet
