#include <nlohmann/json.hpp>
#include <optional>

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

/// The folder that holds the good copy of a write that did not end. A journal that can't be read
/// counts as none.
std::optional<fs::path> recoveryFolder() {
    const auto content = FileOps::readSmall(Paths::journalFile(), journalLimit);
    if (!content) return std::nullopt;
    const auto journal = nlohmann::json::parse(*content, nullptr, false);
    if (!journal.is_object()) return std::nullopt;
    const auto temp = journal.find("temp");
    if (temp == journal.end() || !temp->is_string()) return std::nullopt;
    return Paths::standardised(fs::path(temp->get<std::string>()).parent_path());
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

/// The first rule that applies settles the folder; in doubt it is kept.
Decision decide(const fs::path& folder, const std::optional<fs::path>& recovery) {
    if (recovery && isSameFolder(folder, *recovery)) return {false, "needed by a pending recovery"};
    if (isClaimed(folder)) return {false, "in use by a running job"};
    switch (lockState(folder)) {
        case LockState::Held:
            return {false, "in use by another running job"};
        case LockState::Released:
            return {true, "its job has ended (lock released), no recovery pending"};
        case LockState::None:
            break;
    }
    return decideWithoutLock(folder);
}

}  // namespace

Report cleanUp(DryRun dryRun) {
    const auto recovery = recoveryFolder();
    Report report;
    if (dryRun == DryRun::No) sweepDoorstep();
    for (const fs::path& folder : folders()) {
        const Decision decision = decide(folder, recovery);
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
