#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/records.h"

namespace marlet {

/// Reads a file's name, folders and tags into a guess. Pure functions over text.
namespace FilenameRules {

struct Parse {
    std::optional<Guess> guess;
    bool messy = false;      ///< looks like a scene release
    bool confident = false;  ///< the rules trust their own reading
};

struct TitleYear {
    std::string title;
    std::optional<int> year;
    bool operator==(const TitleYear&) const = default;
};

extern const std::set<std::string, std::less<>> junkTokens;
extern const std::set<std::string, std::less<>> editionTokens;

Parse parse(const std::filesystem::path& file, const ExistingTags& tags);
std::string clean(std::string_view text);
TitleYear splitYear(std::string_view text);
std::string stripYear(std::string_view text);
std::optional<int> bracketYear(std::string_view text);
std::optional<int> seasonNumber(std::string_view folder);
/// Folder names nearest first; empty when nothing tells.
std::string showFromFolders(const std::vector<std::string>& folders, const ExistingTags& tags);
std::optional<std::string> meaningful(std::string_view text);
std::vector<std::string> tokens(std::string_view text);
std::optional<int> nameYear(std::string_view fileName);

}  // namespace FilenameRules
}  // namespace marlet
