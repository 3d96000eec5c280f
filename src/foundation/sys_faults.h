#pragma once

#include <cstddef>
#include <filesystem>

#include "foundation/syscalls.h"

/// What the system call layer asks before each call: whether a test has armed a fault for it.
/// With none armed, every question is one relaxed load.
namespace marlet::Sys::Faults {

struct Ends {
    const std::filesystem::path& from;
    const std::filesystem::path& to;
};

/// The error with which the call is to fail, 0 for none.
int errorFor(Call call, const std::filesystem::path& path);
int errorFor(Call call, const Ends& ends);
int errorFor(Call call, int fd);

/// The bytes that one read or write may move.
std::size_t mostPerTransfer();

}  // namespace marlet::Sys::Faults
