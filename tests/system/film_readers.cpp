#include "system/film_readers.h"

#include "support/media.h"

namespace marlet::test {

std::string complaintsOf(const std::filesystem::path& film) {
    // Two things FFmpeg says of its own files, too: of each with a cover, and of each with a track
    // of chapters, which it has no decoder for. And it guesses what seven channels are.
    const std::string harmless =
        "stream 0, timescale not set|Unsupported codec with id 98314|Guessed Channel Layout|^$";
    return runTool(
        {"sh", "-c",
         "{ ffprobe -v warning \"$0\" 2>&1 >/dev/null;"
         "ffmpeg -v warning -xerror -nostdin -i \"$0\" -map 0:v -map 0:a -f null - 2>&1 || "
         "echo decoding failed; } | grep -vE '" +
             harmless +
             "'; if command -v mediainfo >/dev/null; then mediainfo --Output=JSON \"$0\" | "
             "grep -iE '\"(ConformanceErrors|ConformanceWarnings|IsTruncated)'; fi; :",
         film.string()});
}

}  // namespace marlet::test
