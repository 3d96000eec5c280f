#include "foundation/syscall_filter.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace marlet::SyscallFilter {

#if defined(__x86_64__) || defined(__aarch64__)

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t machine = AUDIT_ARCH_X86_64;
#else
constexpr std::uint32_t machine = AUDIT_ARCH_AARCH64;
#endif

// The leak checker of a sanitizer build attaches to its own process as a debugger does.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif
#else
constexpr bool sanitized = false;
#endif
constexpr int never = -1;

/// Refused with EACCES. A tool asks for a few of them in vain when it can do without.
constexpr int refused[] = {
    // The network, and the message buses of the session and of the system. io_uring makes sockets
    // past every filter.
    SYS_socket, SYS_connect, SYS_bind, SYS_listen, SYS_accept, SYS_accept4, SYS_io_uring_setup,
    SYS_io_uring_enter, SYS_io_uring_register,
    // Other processes.
    sanitized ? never : SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev, SYS_pidfd_getfd,
    SYS_process_madvise, SYS_kcmp,
    // What Landlock leaves open of a file that can be named: its mode, owner, times, attributes.
    SYS_fchmod, SYS_fchmodat, SYS_fchown, SYS_fchownat, SYS_utimensat, SYS_setxattr, SYS_lsetxattr,
    SYS_fsetxattr, SYS_removexattr, SYS_lremovexattr, SYS_fremovexattr,
#if defined(__x86_64__)
    SYS_chmod, SYS_chown, SYS_lchown, SYS_utime, SYS_utimes, SYS_futimesat,
#endif
    // Landlock guards cutting a file short from version 3 on; no tool needs it by name.
    SYS_truncate,
    452,  // fchmodat2, younger than some headers
    463,  // setxattrat
    466,  // removexattrat
    // Mounts and namespaces.
    SYS_mount, SYS_umount2, SYS_pivot_root, SYS_chroot, SYS_move_mount, SYS_open_tree, SYS_fsopen,
    SYS_fsconfig, SYS_fsmount, SYS_fspick, SYS_mount_setattr, SYS_unshare, SYS_setns,
    SYS_name_to_handle_at, SYS_open_by_handle_at,
    // The kernel itself, and its keys.
    SYS_bpf, SYS_perf_event_open, SYS_userfaultfd, SYS_add_key, SYS_request_key, SYS_keyctl,
    SYS_kexec_load, SYS_init_module, SYS_finit_module, SYS_delete_module, SYS_swapon, SYS_swapoff,
    SYS_reboot, SYS_acct, SYS_quotactl};

constexpr std::uint32_t newNamespace = CLONE_NEWUSER | CLONE_NEWNS | CLONE_NEWPID | CLONE_NEWNET |
                                       CLONE_NEWIPC | CLONE_NEWUTS | CLONE_NEWCGROUP;

// --- The program that the kernel runs at each call (classic BPF over struct seccomp_data).

constexpr sock_filter load(std::size_t offset) {
    return {BPF_LD | BPF_W | BPF_ABS, 0, 0, static_cast<std::uint32_t>(offset)};
}

/// Skips so many instructions when the loaded value is this one, or is not.
constexpr sock_filter jumpIf(std::uint16_t test, std::uint32_t value, std::uint8_t then,
                             std::uint8_t otherwise) {
    return {static_cast<std::uint16_t>(BPF_JMP | test | BPF_K), then, otherwise, value};
}

constexpr sock_filter answer(std::uint32_t action) {
    return {BPF_RET | BPF_K, 0, 0, action};
}

constexpr sock_filter fail(int error) {
    return answer(SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error));
}

/// The low half of an argument; both machines keep it first.
constexpr std::size_t argument(std::size_t number) {
    return offsetof(seccomp_data, args) + number * sizeof(std::uint64_t);
}

constexpr std::uint32_t firstForeignCall = 0x40000000;  // x32's numbers on an x86-64 kernel

constexpr std::size_t listed = std::size(refused);
#if defined(__x86_64__)
constexpr std::size_t fixedInstructions = 19 + 2 + 2 * 7;
#else
constexpr std::size_t fixedInstructions = 19 + 2 + 7;
#endif

constexpr std::array<sock_filter, fixedInstructions + 2 * listed> makeProgram() {
    std::array<sock_filter, fixedInstructions + 2 * listed> program{};
    std::size_t at = 0;
    const auto add = [&](sock_filter instruction) { program[at++] = instruction; };
    // Calls of another instruction set have other numbers.
    add(load(offsetof(seccomp_data, arch)));
    add(jumpIf(BPF_JEQ, machine, 1, 0));
    add(answer(SECCOMP_RET_KILL_PROCESS));
    add(load(offsetof(seccomp_data, nr)));
    add(jumpIf(BPF_JGE, firstForeignCall, 0, 1));
    add(fail(ENOSYS));
    for (const int number : refused) {
        add(jumpIf(BPF_JEQ, static_cast<std::uint32_t>(number), 0, 1));
        add(fail(EACCES));
    }
    // Opening for reading and cutting short at once: Landlock calls it reading below version 3.
    const auto addOpen = [&](std::uint32_t number, std::size_t flags) {
        add(jumpIf(BPF_JEQ, number, 0, 6));
        add(load(argument(flags)));
        add(jumpIf(BPF_JSET, O_TRUNC, 0, 3));
        add(jumpIf(BPF_JSET, O_WRONLY | O_RDWR, 2, 0));
        add(fail(EACCES));
        add(answer(SECCOMP_RET_ALLOW));
        add(answer(SECCOMP_RET_ALLOW));
    };
    addOpen(SYS_openat, 2);
#if defined(__x86_64__)
    addOpen(SYS_open, 1);
#endif
    add(jumpIf(BPF_JEQ, SYS_openat2, 0, 1));
    add(fail(ENOSYS));
    // Its flags lie in memory, where no filter can look. The C library goes back to clone.
    add(jumpIf(BPF_JEQ, SYS_clone3, 0, 1));
    add(fail(ENOSYS));
    add(jumpIf(BPF_JEQ, SYS_clone, 0, 3));
    add(load(argument(0)));
    add(jumpIf(BPF_JSET, newNamespace, 0, 1));
    add(fail(EACCES));
    // Typing into the terminal that standard input may be.
    add(load(offsetof(seccomp_data, nr)));
    add(jumpIf(BPF_JEQ, SYS_ioctl, 0, 4));
    add(load(argument(1)));
    add(jumpIf(BPF_JEQ, TIOCSTI, 1, 0));
    add(jumpIf(BPF_JEQ, TIOCLINUX, 0, 1));
    add(fail(EACCES));
    add(answer(SECCOMP_RET_ALLOW));
    return program;
}

}  // namespace

int enter() noexcept {
    static constexpr auto calls = makeProgram();
    // The kernel only reads it.
    sock_fprog program{static_cast<unsigned short>(calls.size()),
                       const_cast<sock_filter*>(calls.data())};
    if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0) return 0;
    return errno == EINVAL || errno == ENOSYS ? 0 : errno;
}

#else  // other machines number their calls otherwise

int enter() noexcept {
    return 0;
}

#endif

}  // namespace marlet::SyscallFilter
