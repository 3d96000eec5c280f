#include "foundation/sys_faults.h"

#include <array>
#include <atomic>
#include <initializer_list>
#include <limits>
#include <mutex>
#include <string>
#include <system_error>

namespace marlet::Sys {

namespace fs = std::filesystem;

namespace {

struct Armed {
    bool active = false;
    int error = 0;
    int nth = 1;
    bool forever = false;
    fs::path path;       // empty: any file
    fs::path canonical;  // the same without links, as /proc shows it
    int seen = 0;
};

constexpr std::size_t callCount = static_cast<std::size_t>(Call::Space) + 1;

std::atomic<int> armedCount{0};
std::atomic<std::size_t> transferLimit{std::numeric_limits<std::size_t>::max()};
std::mutex faultLock;

std::array<Armed, callCount>& faults() {  // guarded by faultLock
    static std::array<Armed, callCount> table;
    return table;
}

Armed& faultOf(Call call) {
    return faults()[static_cast<std::size_t>(call)];
}

fs::path withoutLinks(const fs::path& path) {
    std::error_code failed;
    fs::path canonical = fs::weakly_canonical(path, failed);
    return failed ? path : canonical;
}

bool matches(const Armed& fault, const fs::path& path) {
    return fault.path.empty() || path == fault.path || withoutLinks(path) == fault.canonical;
}

/// The path of an open file; the mark that /proc puts on a removed one is taken off.
fs::path pathOf(int fd) {
    std::error_code failed;
    std::string path = fs::read_symlink("/proc/self/fd/" + std::to_string(fd), failed).string();
    static const std::string removed = " (deleted)";
    if (path.ends_with(removed)) path.resize(path.size() - removed.size());
    return path;
}

bool noneArmed() {
    return armedCount.load(std::memory_order_relaxed) == 0;
}

int decide(Call call, std::initializer_list<fs::path> paths) {
    const std::lock_guard guard(faultLock);
    Armed& fault = faultOf(call);
    if (!fault.active) return 0;
    bool isMeant = false;
    for (const fs::path& path : paths) isMeant = isMeant || matches(fault, path);
    if (!isMeant) return 0;
    fault.seen++;
    const bool isDue = fault.seen == fault.nth || (fault.forever && fault.seen > fault.nth);
    return isDue ? fault.error : 0;
}

}  // namespace

namespace Faults {

int errorFor(Call call, const fs::path& path) {
    return noneArmed() ? 0 : decide(call, {path});
}

int errorFor(Call call, const Ends& ends) {
    return noneArmed() ? 0 : decide(call, {ends.from, ends.to});
}

int errorFor(Call call, int fd) {
    return noneArmed() ? 0 : decide(call, {pathOf(fd)});
}

std::size_t mostPerTransfer() {
    return transferLimit.load(std::memory_order_relaxed);
}

}  // namespace Faults

Fault::Fault(Call call, int error, int nth, bool forever, const fs::path& path) : call_(call) {
    Armed fault{true, error, nth, forever, path, path.empty() ? fs::path() : withoutLinks(path), 0};
    const std::lock_guard guard(faultLock);
    faultOf(call) = std::move(fault);
    armedCount++;
}

Fault::~Fault() {
    const std::lock_guard guard(faultLock);
    faultOf(call_).active = false;
    armedCount--;
}

ShortTransfers::ShortTransfers(std::size_t most) {
    transferLimit = most;
}
ShortTransfers::~ShortTransfers() {
    transferLimit = std::numeric_limits<std::size_t>::max();
}

}  // namespace marlet::Sys
