#include "convert/pgs_ocr.h"

#include <utility>

#include "convert/picture_reader.h"
#include "convert/reading_crew.h"
#include "convert/recognition_languages.h"
#include "foundation/dates.h"
#include "foundation/errors.h"
#include "foundation/languages.h"
#include "foundation/line_log.h"
#include "foundation/paths.h"

namespace marlet::PGSOCR {

namespace {

[[noreturn]] void failUnsupported(const std::string& language) {
    // What a person can do about it stands in the log.
    if (const auto* const row = RecognitionLanguages::byCode(language))
        appendToLog(Paths::logsDir() / "tools.log",
                    Dates::iso8601(Dates::now()) + "  can't read picture subtitles in " +
                        Lang::name(language) + ": install the package " + row->package + " (" +
                        row->data + ".traineddata)");
    throw MFError("Apple's text recognition doesn't support " + Lang::name(language) +
                  " yet; these picture subtitles are left out");
}

}  // namespace

std::optional<std::vector<std::string>> visionLanguages(const std::string& code) {
    const auto* const row = RecognitionLanguages::byCode(code);
    if (row == nullptr || TextRecogniser::open(row->data) == nullptr) return std::nullopt;
    return std::vector<std::string>{row->recognition};
}

std::optional<Result> read(const Image& image, const std::vector<std::string>& languages) {
    if (languages.empty()) return std::nullopt;
    const std::unique_ptr<PictureReader> reader = PictureReader::open(languages.front());
    return reader == nullptr ? std::nullopt : reader->read(image);
}

std::vector<Cue> cues(const MKVFile& mkv, const MKVTrack& track, const std::string& language,
                      bool forcedOnly, RunControl& control) {
    const auto* const row = RecognitionLanguages::byCode(language);
    if (row == nullptr) failUnsupported(language);
    ReadingCrew crew(row->recognition, control);
    if (!crew.canRead()) failUnsupported(language);
    PGSParser::forEachEvent(mkv, track, control, [&](PGSParser::Event event) {
        if (event.forced || !forcedOnly) crew.hand(std::move(event));
    });
    const std::vector<ReadingCrew::Line> lines = crew.finish();
    control.checkpoint();
    std::vector<Cue> cues;
    for (const ReadingCrew::Line& line : lines)
        if (!line.text.empty())
            cues.push_back({.startMs = line.startMs, .endMs = line.endMs, .text = line.text});
    // A line here and there doesn't matter; a track that failed isn't worth having.
    if (lines.size() > 2 * cues.size())
        throw MFError("only " + std::to_string(cues.size()) + " of " +
                      std::to_string(lines.size()) +
                      " picture subtitles could be read as text; left out");
    return cues;
}

}  // namespace marlet::PGSOCR
