#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "write/write_request.h"

/// The sentences of a write that have to be put together. They are promises to the person, and an
/// interface: other code recognises phrases in them.
namespace marlet::Wording {

std::string notTaggable(const std::filesystem::path& file);
std::string inUse(const std::vector<std::string>& programs);
std::string noSpace(std::int64_t need, std::int64_t have);
std::string unfinishedBefore(const std::filesystem::path& file);
std::string noRestorePoint(const std::string& failure);
/// What NoRoom says, with nothing that would help.
std::string noRoom(const std::string& description);
/// With the two remedies that the person has.
std::string noRoomRemedies(const std::string& description);
std::string verificationFailed(const std::vector<std::string>& reasons);
std::string stillOverLimit(double after);
std::string layoutWorse(double before, double after);
std::string newFileOverLimit(double after);
/// Even the finest slices are too long.
std::string notFixable(double after);
std::string finerSlices(int milliseconds);
std::string slicesUsed(int milliseconds);
std::string trackNotRemovable(int index);
/// "New file Film.m4v · 2 tracks left out, the original is untouched".
std::string newFile(const std::string& name, const std::string& count);
std::string copyExists(const std::string& name);
std::string writingFailedPutBack(const std::string& failure);
/// The file may be half written; the copy is whole, and the next start finishes the write.
std::string writingFailedKept(const std::string& failure, const std::filesystem::path& copy);
std::string layoutPutBack(double after);
std::string layoutNotPutBack(double after, const std::filesystem::path& original);
std::string written(const WriteRequest& request, const WriteOutcome& outcome);

inline constexpr const char* noOutputFolder = "no output folder for the new file";
inline constexpr const char* emptyOrMissing = "file is empty or missing";
inline constexpr const char* changedWhileRead =
    "the file changed while it was being read; left untouched";
inline constexpr const char* copyUnlikeRead =
    "the internal copy doesn't match what was read; left untouched";
inline constexpr const char* tracksNeedDetails =
    "tracks can only be left out together with a details write";
inline constexpr const char* trackGone =
    "a track to remove isn't in this file any more; nothing was changed";
inline constexpr const char* pictureStays = "the picture can't be removed";
inline constexpr const char* noOutputSpace = "Not enough free space in the output folder.";
inline constexpr const char* noToolOutput = "MP4Box produced no output";
inline constexpr const char* toolStays =
    "MP4Box still has the rebuilt file open for writing; left untouched";
inline constexpr const char* otherTracks =
    "the rebuilt file doesn't have the tracks that were meant to stay; left untouched";
inline constexpr const char* otherTags =
    "the rebuilt file's tags are not exactly the intended ones; left untouched";
inline constexpr const char* accountTag = "refusing to write an account tag";
inline constexpr const char* notInPlace = "a conversion is not an in-place write";
inline constexpr const char* copyUnreadable = "the verified copy can't be read";
inline constexpr const char* copyDidNotMatch = "the copy didn't match; removed";
inline constexpr const char* copySaved = "Saved a copy next to the original";
inline constexpr const char* changedWhileProcessed =
    "the file changed while it was being processed; left untouched";
inline constexpr const char* otherWriter =
    "another program started writing to this file; left untouched";
inline constexpr const char* regionChanged =
    "the part of the file to be replaced changed; left untouched";
inline constexpr const char* unlikeVerified = "the written file didn't match the verified copy";
inline constexpr const char* unlikeVerifiedPutBack =
    "the written file didn't match the verified copy; the original was put back";
inline constexpr const char* unlikeRebuilt = "the result didn't match the rebuilt copy";
inline constexpr const char* identityChanged =
    "the file's identity changed during the write; check it";
inline constexpr const char* cancelled = "cancelled; the file was left untouched";

}  // namespace marlet::Wording
