#pragma once

/// A filter of system calls for media tools (seccomp, Linux 3.5): no sockets, no other process's
/// memory, no mounts, and none of the calls on files that Landlock doesn't watch.
namespace marlet::SyscallFilter {

/// For this thread and all that it starts, for good; needs no_new_privs. Safe between fork and
/// exec. 0, or the system's error; a kernel or a machine without such filters is none.
int enter() noexcept;

}  // namespace marlet::SyscallFilter
