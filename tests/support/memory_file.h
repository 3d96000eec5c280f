#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "foundation/bytes.h"

namespace marlet::test {

/// A file of this process that lies in no folder: for contents that change thousands of times, of
/// which a disk would flush every one.
class MemoryFile {
public:
    MemoryFile() : fd_(memfd_create("film", MFD_CLOEXEC)) {
        if (fd_ < 0) throw std::runtime_error("no memory file");
    }
    ~MemoryFile() { close(fd_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// Gives the path under which this process opens it.
    std::filesystem::path write(ByteView content) const {
        if (ftruncate(fd_, static_cast<off_t>(content.size())) != 0 ||
            pwrite(fd_, content.data(), content.size(), 0) != static_cast<ssize_t>(content.size()))
            throw std::runtime_error("the memory file can't be written");
        return "/proc/self/fd/" + std::to_string(fd_);
    }

private:
    int fd_;
};

}  // namespace marlet::test
