#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace marlet {

/// Memory for a few small files of a target that reads them, gone at the end.
class MemoryFolder {
public:
    ~MemoryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    MemoryFolder(const MemoryFolder&) = delete;
    MemoryFolder& operator=(const MemoryFolder&) = delete;

    /// One for the whole run.
    static const std::filesystem::path& path() {
        static const MemoryFolder made;
        return made.path_;
    }

private:
    MemoryFolder() { std::filesystem::create_directories(path_); }

    const std::filesystem::path path_ =
        (std::filesystem::exists("/dev/shm") ? std::filesystem::path("/dev/shm")
                                             : std::filesystem::temp_directory_path()) /
        ("marlet-fuzz-" + std::to_string(::getpid()));
};

}  // namespace marlet
