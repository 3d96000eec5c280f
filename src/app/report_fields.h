#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/records.h"

namespace marlet {

/// What the reports of scripted runs are made of.
namespace ReportFields {

/// The fields separated by tabs; a tab or line end inside one becomes a blank, what is not UTF-8
/// becomes U+FFFD.
std::string row(const std::vector<std::string>& fields);
/// The path without the library's root, wherever that stands in it.
std::string relativePath(const std::filesystem::path& file);
/// Seconds in whole minutes; empty when they aren't known.
std::string minutes(const std::optional<double>& seconds);
/// Replaces the file as a whole; false when it can't be written, and then nothing is.
bool save(const std::filesystem::path& to, const std::string& text);

}  // namespace ReportFields
}  // namespace marlet
