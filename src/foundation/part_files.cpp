#include "foundation/part_files.h"

#include <system_error>

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/syscalls.h"
#include "foundation/uuid.h"

namespace marlet::PartFiles {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view start = ".marlet-";
constexpr std::string_view end = ".part";
constexpr std::string_view growing = ".partial";
constexpr std::size_t digitCount = 8;
constexpr std::size_t longestNote = 65536;

fs::path noteIn(const fs::path& jobFolder) {
    return jobFolder / ".part";
}

void removeFile(const fs::path& file) {
    const auto found = Sys::lstat(file);
    if (found && found->isRegular) Sys::unlink(file);
}

}  // namespace

std::string newName() {
    return std::string(start) + newUUID().substr(0, digitCount) + std::string(end);
}

bool isName(std::string_view name) {
    if (name.ends_with(growing)) name.remove_suffix(growing.size());
    if (name.size() != start.size() + digitCount + end.size()) return false;
    const std::string_view digits = name.substr(start.size(), digitCount);
    return name.starts_with(start) && name.ends_with(end) &&
           digits.find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
}

void note(const fs::path& jobFolder, const fs::path& part) {
    try {
        std::error_code failed;
        const fs::path place = fs::absolute(part, failed);
        if (!failed) Durable::writeFile(noteIn(jobFolder), viewOf(place.native()));
    } catch (const MFError&) {
        // What can't be noted can be found by its name.
    }
}

void removeNoted(const fs::path& jobFolder) {
    const auto text = FileOps::readSmall(noteIn(jobFolder), longestNote);
    if (!text) return;
    fs::path part = textOf(*text);
    if (!part.is_absolute() || !isName(part.filename().native())) return;
    removeFile(part);
    removeFile(part += growing);
}

}  // namespace marlet::PartFiles
