#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace marlet::test {

/// A real film whose sound lies in long stretches, by the way it was made.
struct BadFilm {
    /// How the sound came to lie together.
    enum class Layout { soundBehindPicture, longChunks };

    std::string name;                    ///< of the test, letters only
    std::vector<std::string> arguments;  ///< FFmpeg's, behind its inputs and ahead of the file
    Layout layout = Layout::soundBehindPicture;
    std::vector<std::string> inputs = {"testsrc2=size=64x36:rate=25", "sine=sample_rate=48000"};
    bool chapters = false;
    double soundStart = 0;  ///< seconds behind the picture's start
    std::string extension = ".mp4";
};

/// Codecs, two languages, chapters, edit lists: what libraries hold.
const std::vector<BadFilm>& badFilms();
/// About ten seconds long.
void makeBadFilm(const BadFilm& film, const std::filesystem::path& file);

/// The longest time for which sound of one track is stored together, by the positions of the
/// packets that ffprobe finds: an account that shares nothing with the program's own measure.
double longestSoundStretch(const std::filesystem::path& file);

}  // namespace marlet::test
