#include "write/write_job.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

/// "candidate.mp4", or another name where the original itself is called so.
fs::path candidateIn(const fs::path& folder, const fs::path& file) {
    fs::path name = "candidate";
    name += file.extension();
    if (name == file.filename()) {
        name = "candidate 2";
        name += file.extension();
    }
    return folder / name;
}

}  // namespace

FileMark FileMark::of(const fs::path& file) {
    const auto found = Sys::stat(file);
    if (!found) return {};
    return {found->size, found->mtime, found->inode};
}

WriteJob::WriteJob(const WriteRequest& wanted, RunControl& runControl,
                   const StepProgress& stepProgress)
    : request(wanted),
      control(runControl),
      progress(stepProgress),
      staged(folder.path() / wanted.file.filename()),
      candidate(candidateIn(folder.path(), wanted.file)) {}

void WriteJob::report(const std::string& label, double fraction) const {
    if (progress) progress(label, fraction);
}

Progress WriteJob::part(const std::string& label, double start, double span) const {
    return [this, label, start, span](double fraction) { report(label, start + span * fraction); };
}

}  // namespace marlet
