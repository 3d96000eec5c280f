#include "write/private_copy.h"

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "write/outcome_wording.h"

namespace marlet {

namespace {

constexpr const char* reading = "Reading the file";
constexpr const char* checking = "Checking the copy";

std::string stage(const WriteJob& job) {
    job.report(reading, 0);
    const FileOps::Staged copy =
        FileOps::stage(job.file(), job.staged, job.control, job.part(reading, 0, 0.3));
    if (copy.bytes != job.reference.size || FileMark::of(job.file()) != job.reference)
        throw MFError(Wording::changedWhileRead);
    if (job.reference.modified) Sys::setModified(job.staged, *job.reference.modified);
    return copy.digest;
}

}  // namespace

void makePrivateCopy(const WriteJob& job) {
    const std::string digest = stage(job);
    // It is the way back: it has to outlast a loss of power from the moment the file is changed.
    Durable::flushFile(job.staged);
    Durable::flushFolder(job.folder.path());
    job.report(checking, 0.3);
    const std::string onDisk = FileOps::hashFile(job.staged, FileOps::BypassCache::Yes, job.control,
                                                 job.part(checking, 0.3, 0.03));
    if (onDisk != digest) throw MFError(Wording::copyUnlikeRead);
}

}  // namespace marlet
