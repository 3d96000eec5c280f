#pragma once

#include <filesystem>
#include <utility>

#include "foundation/syscalls.h"

namespace marlet::AudioConvert {

/// The name of a file between two steps, which goes when they end, however they end.
class PassingFile {
public:
    explicit PassingFile(std::filesystem::path path) : path_(std::move(path)) {}
    ~PassingFile() { Sys::unlink(path_); }
    PassingFile(const PassingFile&) = delete;
    PassingFile& operator=(const PassingFile&) = delete;
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

}  // namespace marlet::AudioConvert
