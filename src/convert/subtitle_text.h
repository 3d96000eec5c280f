#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "matroska/mkv_file.h"

namespace marlet {

/// One timed line of a subtitle.
struct Cue {
    std::int64_t startMs = 0;
    std::int64_t endMs = 0;
    std::string text;  ///< lines separated by a line feed
    bool operator==(const Cue&) const = default;
};

/// Subtitles as text: out of a Matroska track or an .srt file, and into one. Nothing here fails:
/// what can't be read is dropped, line by line.
namespace SubtitleText {

/// The lines of a text track, by their starts.
std::vector<Cue> cues(const MKVFile& mkv, const MKVTrack& track);
/// In the order of the text. Tags such as <i> stay.
std::vector<Cue> parseSRT(const std::string& text);
/// Empty lines within a cue are left out, since they would end it; a time below 0 is 0.
std::string writeSRT(const std::vector<Cue>& cues);
/// "00:01:05,250" in milliseconds; a dot will do for the comma.
std::optional<std::int64_t> ms(const std::string& stamp);
/// The plain text of a block "ReadOrder,Layer,Style,Name,MarginL,MarginR,MarginV,Effect,Text";
/// empty for a drawing.
std::string assText(const std::string& line);
/// The bytes of an .srt file as text, whatever its encoding: UTF-8, UTF-16 with a byte order mark,
/// else Windows-1252.
std::string decode(ByteView bytes);

}  // namespace SubtitleText
}  // namespace marlet
