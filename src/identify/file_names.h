#pragma once

#include <filesystem>
#include <string>

namespace marlet::FileNames {

/// The last component, as text.
std::string name(const std::filesystem::path& file);
/// The last component without its extension, as text. What holds a blank is no extension: "Mr.
/// Nobody" has none.
std::string base(const std::filesystem::path& file);

}  // namespace marlet::FileNames
