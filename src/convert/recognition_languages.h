#pragma once

#include <string>

// The languages that picture subtitles can be read in, and what reading them takes.
namespace marlet::RecognitionLanguages {

/// How the letters stand, as far as mending them goes.
enum class Script {
    latin,
    cyrillic,
    arabic,  ///< from right to left
    asian,   ///< of many strokes a letter; blanks don't stand between all words
};

struct Language {
    const char* code;         ///< ISO 639-2
    const char* recognition;  ///< the recognition language
    const char* data;         ///< the engine's trained data file, without ".traineddata"
    const char* package;      ///< the Debian package that has it
    Script script;
};

/// Null when no language has this code.
const Language* byCode(const std::string& code);
/// Null when it isn't one of the table's recognition languages.
const Language* byRecognition(const std::string& recognition);

}  // namespace marlet::RecognitionLanguages
