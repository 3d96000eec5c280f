#include "foundation/core_dumps.h"

#include <sys/prctl.h>
#include <sys/resource.h>

#include <algorithm>

namespace marlet::CoreDumps {

void forbid() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_CORE, &limit) == 0) {
        // One byte, not none: a collecting program (core(5), "piping core dumps to a program")
        // gets the whole image even under a limit of 0, but the kernel never starts it at 1. A
        // file needs room for more than one byte.
        limit.rlim_cur = std::min<rlim_t>(1, limit.rlim_max);
        limit.rlim_max = limit.rlim_cur;
        if (::setrlimit(RLIMIT_CORE, &limit) == 0 && limit.rlim_cur == 1) return;
    }
    // The limit may not be raised to 1. What is not dumpable can't be looked into either, not even
    // by a portal of the desktop, so this is the second choice.
    ::prctl(PR_SET_DUMPABLE, 0);
}

}  // namespace marlet::CoreDumps
