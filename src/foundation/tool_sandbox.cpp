#include "foundation/tool_sandbox.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "foundation/landlock.h"
#include "foundation/syscall_filter.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t look = Landlock::readFile | Landlock::readFolder;
constexpr std::uint64_t lookAndRun = look | Landlock::execute;
/// No links, no devices, nothing to run: what a tool leaves in its folder is read by this program.
constexpr std::uint64_t change = look | Landlock::writeFile | Landlock::truncate |
                                 Landlock::makeFile | Landlock::makeFolder | Landlock::removeFile |
                                 Landlock::removeFolder | Landlock::moveBetweenFolders;

struct Place {
    const char* path;
    std::uint64_t rights;
};

/// What any program needs to start and to run; those that exist.
constexpr Place systemPlaces[] = {
    {"/usr", lookAndRun},
    {"/bin", lookAndRun},
    {"/sbin", lookAndRun},
    {"/lib", lookAndRun},
    {"/lib32", lookAndRun},
    {"/lib64", lookAndRun},
    {"/nix/store", lookAndRun},
    {"/gnu/store", lookAndRun},
    {"/etc", look},
    {"/dev/null", look | Landlock::writeFile},
    {"/dev/zero", look},
    {"/dev/random", look},
    {"/dev/urandom", look},
    {"/proc/cpuinfo", look},
    {"/proc/meminfo", look},
    {"/proc/stat", look},
    {"/sys/devices/system/cpu", look},
};

/// What stands beside the "bin" of a tool that is installed under a prefix of its own.
constexpr Place prefixPlaces[] = {
    {"lib", lookAndRun},
    {"lib64", lookAndRun},
    {"share/gpac", look},
};

}  // namespace

ToolSandbox::ToolSandbox(const fs::path& tool, const ToolRunner::Confinement& confinement)
    : home_(confinement.home) {
    if (!home_.empty() && Sys::mkdir(home_, 0700) != 0 && errno != EEXIST)
        throw std::system_error(errno, std::generic_category());
    const int version = landlockVersion();
    if (version == 0) return;
    handled_ = Landlock::fileRights(version);
    rules_ = FileHandle(
        Landlock::createRuleset({.files = handled_,
                                 .network = Landlock::bindTcp | Landlock::connectTcp,
                                 .scoped = Landlock::scopeAbstractSockets | Landlock::scopeSignals},
                                version));
    if (!rules_.isOpen()) throw std::system_error(errno, std::generic_category());
    allowSystem();
    allowTool(tool);
    for (const fs::path& path : confinement.reads) allow(path, look);
    for (const fs::path& path : confinement.writes) allow(path, change);
    if (!home_.empty()) allow(home_, change);
}

int ToolSandbox::landlockVersion() {
    return Landlock::version();
}

void ToolSandbox::allowSystem() {
    for (const Place& place : systemPlaces) allow(place.path, place.rights);
}

void ToolSandbox::allowTool(const fs::path& tool) {
    std::error_code failed;
    const fs::path file = fs::canonical(tool, failed);
    if (failed) return;  // it can't be launched either
    allow(file, lookAndRun);
    if (file.parent_path().filename() != "bin") return;
    const fs::path prefix = file.parent_path().parent_path();
    for (const Place& place : prefixPlaces) allow(prefix / place.path, place.rights);
}

void ToolSandbox::allow(const fs::path& path, std::uint64_t rights) {
    const FileHandle handle(Sys::open(path, O_PATH));
    if (!handle.isOpen()) return;
    const auto found = Sys::fstat(handle.get());
    if (!found) return;
    rights &= handled_;
    if (!found->isFolder) rights &= Landlock::rightsOverOneFile;
    // Without its rule the path is closed to the tool, so a failure here can't open anything.
    Landlock::addPath(rules_.get(), handle.get(), rights);
}

int ToolSandbox::enter() const noexcept {
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return errno;
    if (rules_.isOpen()) {
        // What the kernel tells a process of itself lies in a folder that this process alone has,
        // and that exists only now.
        const int itself = ::open("/proc/self", O_PATH | O_CLOEXEC);
        if (itself >= 0) Landlock::addPath(rules_.get(), itself, look);
        ::close(itself);
        if (Landlock::restrictSelf(rules_.get()) != 0) return errno;
    }
    return SyscallFilter::enter();
}

}  // namespace marlet
