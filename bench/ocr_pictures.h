#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/pgs_builder.h"
#include "support/subtitle_pictures.h"

// Subtitles of made-up films as pictures, the same ones in every run: each typeface in each size in
// each manner, with the sentences of a text file.
namespace marlet::bench {

struct Subtitle {
    std::string text;    ///< lines joined with line feeds
    std::string manner;  ///< "one line", "italic", ...
    test::SubtitleStyle style;
    test::pgs::Plane plane;
};

/// `texts` has one sentence a line; {name}, {n}, {h}:{m} and {y} are filled in.
std::vector<Subtitle> subtitles(const std::filesystem::path& texts, int count,
                                const std::vector<std::string>& typefaces);

/// Drawn by Qt, on the main thread.
test::pgs::Placed draw(const Subtitle& subtitle);

/// Line feeds as "\\n", so that a text is one line of a file, and back.
std::string oneLine(std::string text);
std::string manyLines(std::string text);

/// Letters to add, to take away or to change until `read` is `meant`.
int wrongLetters(const std::string& read, const std::string& meant);
/// Letters of a text.
int lettersOf(const std::string& text);

}  // namespace marlet::bench
