#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "helpers/new_file.h"
#include "helpers/track_box.h"

namespace marlet {

/// A chapter as a chapter file tells it.
struct ChapterMark {
    std::int64_t startMs = 0;
    std::string title;
    bool operator==(const ChapterMark&) const = default;
};

namespace ChapterFile {

/// "CHAPTER01=00:00:00.000" and "CHAPTER01NAME=Title", line by line, by their starts (OGM's form).
/// MFError when a time can't be read, or when there is nothing.
std::vector<ChapterMark> parse(const std::string& text);

/// The list of chapters that `udta` keeps: starts in 100 ns, titles of 255 bytes at most, and 255
/// chapters at most.
Bytes list(const std::vector<ChapterMark>& chapters);

/// The track of titles that Apple's players read. Its samples go to the scratch file.
TrackMedia track(const std::vector<ChapterMark>& chapters, double movieSeconds, NewFile& scratch);

}  // namespace ChapterFile

namespace SubtitleTrack {

/// The lines of an .srt file as timed text (3GPP TS 26.245) over a picture of that size. Lines that
/// overlap are shown together; <b>, <i> and <u> become styles, other tags go. Its samples go to
/// the scratch file.
TrackMedia fromSRT(const std::string& text, std::uint32_t flags, std::uint32_t width,
                   std::uint32_t height, NewFile& scratch);

}  // namespace SubtitleTrack
}  // namespace marlet
