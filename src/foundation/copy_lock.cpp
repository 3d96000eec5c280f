#include "foundation/copy_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace marlet {

CopyLock::CopyLock(std::filesystem::path guarded)
    : lock_(Sys::open(guarded.replace_extension(".lock"), O_RDWR | O_CREAT | O_NOFOLLOW, 0600)) {}

CopyLock::Holder CopyLock::take() {
    if (!lock_.isOpen()) return Holder::Nobody;
    if (Sys::flock(lock_.get(), LOCK_EX | LOCK_NB) == 0) return Holder::Us;
    return errno == EWOULDBLOCK ? Holder::Others : Holder::Nobody;
}

void CopyLock::release() {
    if (lock_.isOpen()) Sys::flock(lock_.get(), LOCK_UN);
}

}  // namespace marlet
