#pragma once

#include <filesystem>

#include "foundation/syscalls.h"

namespace marlet {

/// What one running copy of the program holds against the others: an flock that dies with its
/// process. It lies on a file of its own beside the one that it guards, since that one comes and
/// goes or is replaced by every write, and is never removed, since another copy may be about to
/// lock it. Opened for writing, which NFS wants of whoever locks alone.
class CopyLock {
public:
    enum class Holder { Us, Others, Nobody };  ///< Nobody: there can be no lock here

    CopyLock() = default;
    /// Opens the lock of that file ("history.json": "history.lock"), and doesn't take it yet.
    explicit CopyLock(std::filesystem::path guarded);

    bool isOpen() const { return lock_.isOpen(); }
    /// Takes the lock unless another copy has it; never waits.
    Holder take();
    /// As the destructor does, but to be taken again.
    void release();

private:
    FileHandle lock_;
};

}  // namespace marlet
