#include "write/outcome_wording.h"

#include "foundation/format_bytes.h"
#include "foundation/text.h"
#include "mp4/sound_layout.h"

namespace marlet::Wording {

namespace fs = std::filesystem;

namespace {

std::string upperAscii(std::string text) {
    for (char& each : text)
        if (each >= 'a' && each <= 'z') each = static_cast<char>(each - 'a' + 'A');
    return text;
}

std::string tenths(double seconds) {
    return Text::fixed(seconds, 1) + " s";
}
std::string hundredths(double seconds) {
    return Text::fixed(seconds, 2) + " s";
}

}  // namespace

std::string notTaggable(const fs::path& file) {
    const std::string extension = file.extension().string();
    return upperAscii(extension.empty() ? "" : extension.substr(1)) +
           " files can't be tagged in place yet (conversion comes in Phase 3)";
}

std::string inUse(const std::vector<std::string>& programs) {
    return Text::join(programs, ", ") +
           " has this file open for writing (a download or another app); left untouched. Try again "
           "when it has finished.";
}

std::string noSpace(std::int64_t need, std::int64_t have) {
    return "Not enough free space on the internal disk for the temporary files: need " +
           formatBytes(need) + ", have " + formatBytes(have) + ".";
}

std::string unfinishedBefore(const fs::path& file) {
    return "an earlier write to " + file.filename().string() +
           " isn't finished; left untouched. Marlet finishes it the next time it opens";
}

std::string noRestorePoint(const std::string& failure) {
    return "a restore point couldn't be saved and verified (" + failure + "); nothing was written";
}

std::string noRoom(const std::string& description) {
    return "There's no room for the new details in this file (" + description + ")";
}

std::string noRoomRemedies(const std::string& description) {
    return noRoom(description) + ". Turn on “Fix for Apple TV” or “Save a copy instead”.";
}

std::string verificationFailed(const std::vector<std::string>& reasons) {
    return "verification failed: " + Text::join(reasons, "; ");
}

std::string stillOverLimit(double after) {
    return "it would still measure " + tenths(after) + " (limit " + tenths(soundLayoutLimit) +
           "); left untouched";
}

std::string layoutWorse(double before, double after) {
    return "the sound layout would get worse (" + tenths(before) + " to " + tenths(after) +
           "); left untouched";
}

std::string newFileOverLimit(double after) {
    return "the new file measures " + hundredths(after) + " (limit " + tenths(soundLayoutLimit) +
           "); the original was not touched";
}

std::string notFixable(double after) {
    return "Marlet could not make this file Apple TV-safe: even with the sound stored in 0.5, 0.25 "
           "and 0.1 s slices the longest stretch with sound stored together is still " +
           hundredths(after) + " (the limit is " + tenths(soundLayoutLimit) +
           "). This usually means the file's sound and picture are not timed together in the usual "
           "way. The original was left untouched.";
}

std::string finerSlices(int milliseconds) {
    return "Rebuilding with finer sound slices (" + std::to_string(milliseconds) + " ms)";
}

std::string slicesUsed(int milliseconds) {
    return "sound interleaved in " + std::to_string(milliseconds) +
           " ms slices to stay under the limit";
}

std::string trackNotRemovable(int index) {
    return "track " + std::to_string(index) +
           " is not a sound or subtitle track; nothing was changed";
}

std::string newFile(const std::string& name, const std::string& count) {
    return "New file " + name + " · " + count + " left out, the original is untouched";
}

std::string copyExists(const std::string& name) {
    return name + " already exists in the copy folder; nothing written";
}

std::string writingFailedPutBack(const std::string& failure) {
    return "writing failed (" + failure + "); the original was put back";
}

std::string writingFailedKept(const std::string& failure, const fs::path& copy) {
    return "writing failed (" + failure + "). The verified copy is kept at " + copy.string() +
           "; Marlet finishes it the next time it opens";
}

std::string layoutPutBack(double after) {
    return "after writing, the sound layout measured " + tenths(after) +
           "; the original was put back";
}

std::string layoutNotPutBack(double after, const fs::path& original) {
    return "after writing, the sound layout measured " + tenths(after) +
           " and the original could not be put back; the original copy is at " + original.string();
}

std::string written(const WriteRequest& request, const WriteOutcome& outcome) {
    std::string text = request.isRestore() ? "Original details restored" : "Details written";
    if (outcome.rebuilt)
        text += "; sound layout fixed (" + hundredths(outcome.before.value_or(0)) + " to " +
                hundredths(outcome.after.value_or(0)) + ")";
    return text;
}

}  // namespace marlet::Wording
