#pragma once

#include <optional>
#include <string>
#include <vector>

#include "convert/pgs_parser.h"
#include "convert/subtitle_text.h"
#include "foundation/bytes.h"
#include "foundation/run_control.h"
#include "matroska/mkv_file.h"

/// Reads picture subtitles as text, with Tesseract in this process.
namespace marlet::PGSOCR {

/// A picture of 4 bytes a pixel, red first, rows without padding.
struct Image {
    int width = 0;
    int height = 0;
    Bytes rgba;  ///< width * height * 4
    bool operator==(const Image&) const = default;
};

struct Result {
    std::string text;      ///< lines joined with line feeds, UTF-8
    float confidence = 0;  ///< 0 to 1
    bool operator==(const Result&) const = default;
};

/// The lines of a track; with `forcedOnly` those of events with a forced object. `language` is a
/// three-letter code. Throws MFError when the language can't be read here, or when most pictures
/// could not be; CancelError.
std::vector<Cue> cues(const MKVFile& mkv, const MKVTrack& track, const std::string& language,
                      bool forcedOnly, RunControl& control);

/// The recognition language of a code, as a list of one; nothing when it has none, or when what it
/// takes isn't installed.
std::optional<std::vector<std::string>> visionLanguages(const std::string& code);

/// The pictures of an event, blended over black, twice their size; nothing without a picture.
std::optional<Image> image(const PGSParser::Event& event);

/// Nothing when no text was found.
std::optional<Result> read(const Image& image, const std::vector<std::string>& languages);

}  // namespace marlet::PGSOCR
