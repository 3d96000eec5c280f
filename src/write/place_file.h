#pragma once

#include <filesystem>
#include <functional>

namespace marlet {

/// Moves a finished file to its name, durably. False when something has that name already: what
/// is there is never replaced. Throws MFError for every other failure.
bool moveIfFree(const std::filesystem::path& from, const std::filesystem::path& to);

/// True for a file, a folder or a link, even one that leads nowhere.
bool isTaken(const std::filesystem::path& path);

/// ".marlet-XXXXXXXX.part" in the folder: the name of a file that isn't finished.
std::filesystem::path partFile(const std::filesystem::path& folder);

/// Removes a file of ours on every way out, if it is still there.
class RemoveAtEnd {
public:
    explicit RemoveAtEnd(std::filesystem::path path) : path_(std::move(path)) {}
    ~RemoveAtEnd();
    RemoveAtEnd(const RemoveAtEnd&) = delete;
    RemoveAtEnd& operator=(const RemoveAtEnd&) = delete;

private:
    std::filesystem::path path_;
};

}  // namespace marlet
