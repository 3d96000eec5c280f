#include "convert/convert_wording.h"

#include <algorithm>
#include <cmath>

#include "foundation/format_bytes.h"
#include "foundation/text.h"
#include "mp4/sound_layout.h"

namespace marlet::ConvertWording {

namespace {

std::string hundredths(double seconds) {
    return Text::fixed(seconds, 2) + " s";
}
std::string limit() {
    return "(the limit is " + Text::fixed(soundLayoutLimit, 1) + " s)";
}

}  // namespace

std::string otherPicture(const std::string& codec) {
    return "the picture is " + codec +
           ", not H.264 or HEVC: Apple TV can't play it, and Marlet never re-encodes video";
}

std::string otherSound(const std::string& codec) {
    return "the sound is " + codec + ": only AAC, AC3 and E-AC3 are copied from a .mov";
}

std::string chaptersLeftOut(std::size_t lists) {
    return std::to_string(lists) +
           (lists == 1 ? " further list of chapters" : " further lists of chapters") + " left out";
}

std::string newCopy(const std::string& name) {
    return newFile(name, {"every sample checked against the .mov"});
}

std::string noWorkSpace(std::int64_t need) {
    return "Not enough free space on the internal disk for the temporary files (need about " +
           formatBytes(need) + ").";
}

std::string noSuchSound(int track) {
    return "sound track " + std::to_string(track) + " not found";
}

std::string otherKind(int track, const std::string& type) {
    return "track " + std::to_string(track) + " is not the kind of track Marlet expected (" + type +
           ")";
}

std::string mixLowered(double gain) {
    constexpr double quietest = 0.0001;
    return "stereo mix lowered by " + Text::fixed(-20 * std::log10(std::max(gain, quietest)), 1) +
           " dB to avoid clipping";
}

std::string noLines(const std::string& subtitle) {
    return subtitle + ": no subtitle lines could be read; left out";
}

std::string finerSlices(int milliseconds) {
    return "Building again with finer sound slices (" + std::to_string(milliseconds) + " ms)";
}

std::string notFixable(double layout) {
    return "Marlet could not make this file Apple TV-safe: even with the sound stored in 0.5, 0.25 "
           "and 0.1 s slices the longest stretch with sound stored together is still " +
           hundredths(layout) + " " + limit() + ". The original was not touched.";
}

std::string overLimit(double layout) {
    return "the new file measures " + hundredths(layout) + " (limit " +
           Text::fixed(soundLayoutLimit, 1) + " s); nothing was saved";
}

std::string convertedTo(const std::string& name) {
    return "converted to " + name;
}

std::string newFile(const std::string& name, const std::vector<std::string>& notes) {
    const std::string text = "New file " + name;
    return notes.empty() ? text : text + " · " + Text::join(notes, "; ");
}

}  // namespace marlet::ConvertWording
