#pragma once

#include <cstdint>
#include <string>

namespace marlet {

/// A file size in words, decimal units: "Zero KB", "512 bytes", "3 KB", "1.4 MB", "4.29 GB".
std::string formatBytes(std::int64_t bytes);

}  // namespace marlet
