#include "write/delivery.h"

#include <chrono>
#include <string>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/syscalls.h"
#include "write/place_file.h"

namespace marlet::Converter {

namespace fs = std::filesystem;

namespace {

/// "Movie.m4v", "Movie 2.m4v", "Movie 3.m4v", ...
fs::path numbered(const fs::path& source, const fs::path& folder, int number) {
    fs::path name = source.stem();
    if (number > 1) name += " " + std::to_string(number);
    name += ".m4v";
    return folder / name;
}

bool isUnchanged(const fs::path& source, const SrcStat& before) {
    try {
        return snapshot(source) == before;
    } catch (const MFError&) {
        return false;
    }
}

/// The name is looked for again when another program takes it in the meantime.
fs::path moveToFreeName(const fs::path& part, const fs::path& source, const fs::path& folder) {
    for (int number = 1;; number++) {
        fs::path target = numbered(source, folder, number);
        if (!isTaken(target) && moveIfFree(part, target)) return target;
    }
}

fs::path save(const fs::path& built, const fs::path& source, const fs::path& folder,
              RunControl& control) {
    try {
        const PartFile part(folder, built.parent_path());
        FileOps::copy(built, part.path(), control);
        if (!FileOps::filesEqual(built, part.path(), control))
            throw MFError("the saved file didn't match");
        return moveToFreeName(part.path(), source, folder);
    } catch (const std::exception& failure) {
        throw MFError(std::string("saving the new file failed: ") + failure.what());
    }
}

}  // namespace

SrcStat snapshot(const fs::path& source) {
    const auto found = Sys::stat(source);
    if (!found) throw MFError("the original can't be read");
    const std::chrono::duration<double> modified = found->mtime.time_since_epoch();
    return {found->inode, found->size, modified.count()};
}

fs::path deliver(const fs::path& built, const fs::path& source, const SrcStat& srcStat,
                 const fs::path& outputDir, RunControl& control, const StepProgress& progress) {
    if (snapshot(source) != srcStat)
        throw MFError("the original changed while it was being converted; nothing was saved");
    const CriticalSection critical(control);
    if (progress) progress("Saving the new file", 0.87);
    fs::path saved = save(built, source, outputDir, control);
    if (!isUnchanged(source, srcStat))
        throw MFError(
            "the original changed (it is not touched by Marlet; check what else is using it)");
    return saved;
}

}  // namespace marlet::Converter
