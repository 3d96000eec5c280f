#include <nlohmann/json.hpp>
#include <string>

#include "foundation/file_ops.h"
#include "foundation/format_bytes.h"
#include "foundation/paths.h"
#include "foundation/work_area.h"

namespace marlet::WorkArea {

namespace fs = std::filesystem;

namespace {

/// Only folders of versions that knew no lock have none. Such a version wrote into its folder
/// steadily, so silence means that it has ended.
constexpr std::chrono::seconds silenceOfTheDead{1800};

constexpr std::size_t journalLimit = 1024 * 1024;

struct Decision {
    bool removes = false;
    std::string reason;
};

/// The journal of a write that did not end. One that can't be read counts as none.
nlohmann::json pendingJournal() {
    const auto content = FileOps::readSmall(Paths::journalFile(), journalLimit);
    if (!content) return nullptr;
    const auto journal = nlohmann::json::parse(*content, nullptr, false);
    if (!journal.is_object()) return nullptr;
    return journal;
}

std::string textAt(const nlohmann::json& journal, const char* key) {
    const auto found = journal.find(key);
    return found != journal.end() && found->is_string() ? found->get<std::string>() : "";
}

/// By name, or by identity: a link somewhere above may have given the same folder another name.
bool isSameFolder(const fs::path& a, const fs::path& b) {
    if (Paths::standardised(a) == Paths::standardised(b)) return true;
    const auto first = Sys::stat(a);
    const auto second = Sys::stat(b);
    return first && second && first->device == second->device && first->inode == second->inode;
}

Decision decideWithoutLock(const fs::path& folder) {
    const FileTime now = std::chrono::system_clock::now();
    const auto age = now - newestChange(folder);
    if (age <= silenceOfTheDead) return {false, "changed recently"};
    const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(age).count();
    return {true, "abandoned by an older run (untouched for " + std::to_string(minutes) +
                      " min), no recovery pending"};
}

/// Read anew each time: another program's job may end while this one cleans up.
bool isNeededByRecovery(const fs::path& folder) {
    const nlohmann::json journal = pendingJournal();
    const fs::path temp = textAt(journal, "temp");
    if (temp.has_parent_path() && isSameFolder(folder, temp.parent_path())) return true;
    // A path that is no text stands there a second time, exactly, in hexadecimal.
    const std::string inside = Paths::standardised(folder).native() + "/";
    return textAt(journal, "tempHex").starts_with(toHex(viewOf(inside)));
}

/// The first rule that applies settles the folder; in doubt it is kept.
Decision decide(const fs::path& folder) {
    const Decision needed{false, "needed by a pending recovery"};
    if (isNeededByRecovery(folder)) return needed;
    if (isClaimed(folder)) return {false, "in use by a running job"};
    switch (lockState(folder)) {
        case LockState::Held:
            return {false, "in use by another running job"};
        case LockState::Released:
            // A job lets go of its lock after it has written its journal, so only a journal that is
            // read behind the lock is sure to be its last.
            if (isNeededByRecovery(folder)) return needed;
            return {true, "its job has ended (lock released), no recovery pending"};
        case LockState::None:
            break;
    }
    return decideWithoutLock(folder);
}

}  // namespace

Report cleanUp(DryRun dryRun) {
    Report report;
    if (dryRun == DryRun::No) sweepDoorstep();
    for (const fs::path& folder : folders()) {
        const Decision decision = decide(folder);
        const Entry entry{folder.filename().string(), size(folder), decision.reason};
        if (!decision.removes) {
            report.kept.push_back(entry);
            continue;
        }
        report.removable.push_back(entry);
        if (dryRun == DryRun::Yes) continue;
        log("removed work folder " + entry.name + " (" + formatBytes(entry.bytes) +
            "): " + entry.reason);
        discard(folder);
    }
    return report;
}

}  // namespace marlet::WorkArea
