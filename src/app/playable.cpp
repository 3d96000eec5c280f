#include "app/playable.h"

#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <sstream>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/text.h"
#include "foundation/tool_runner.h"
#include "foundation/work_area.h"

namespace marlet::Playable {

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr std::array points = {0.02, 0.25, 0.5, 0.75, 0.95};

std::optional<fs::path> programOnPath(const std::string& name) {
    const char* path = std::getenv("PATH");
    for (const std::string& folder : Text::words(path == nullptr ? "" : path, ':')) {
        fs::path program = fs::path(folder) / name;
        if (program.is_absolute() && ::access(program.c_str(), X_OK) == 0) return program;
    }
    return std::nullopt;
}

/// FFmpeg reads what stands before a colon as a protocol.
std::string asFile(const fs::path& path) {
    return "file:" + path.string();
}

class Attempt {
public:
    Attempt(fs::path ffprobe, fs::path ffmpeg, const fs::path& file)
        : ffprobe_(std::move(ffprobe)), ffmpeg_(std::move(ffmpeg)), file_(fs::absolute(file)) {
        work_.create();
    }

    Probed probe() {
        RunControl control;
        return parseProbe(ToolRunner::listing(
            ffprobe_,
            {"-v", "error", "-protocol_whitelist", "file", "-show_entries",
             "format=duration:stream=codec_type:stream_disposition=attached_pic", "-of",
             "default=noprint_wrappers=1", asFile(file_)},
            confinement(), control));
    }

    /// "1920 x 1080" or "FAILED". Grey, since that is enough to tell that the picture is there.
    std::string frameAt(double seconds) {
        const fs::path out = work_.path() / "frame.pgm";
        decode(seconds,
               {"-map", "0:V:0", "-frames:v", "1", "-pix_fmt", "gray", "-c:v", "pgm", "-f",
                "image2", "-update", "1"},
               out);
        const auto picture = FileOps::readSmall(out);
        fs::remove(out);
        // A PGM begins "P5", its width and its height.
        std::istringstream head(picture ? textOf(*picture).substr(0, 64) : "");
        std::string magic;
        int width = 0;
        int height = 0;
        if (!(head >> magic >> width >> height) || magic != "P5") return "FAILED";
        return std::to_string(width) + " x " + std::to_string(height);
    }

    /// The bytes of ten seconds as 16-bit samples.
    std::uint64_t soundAt(double seconds) {
        const fs::path out = work_.path() / "sound.pcm";
        decode(seconds, {"-t", "10", "-map", "0:a:0", "-c:a", "pcm_s16le", "-f", "s16le"}, out);
        std::error_code none;
        const std::uint64_t size = fs::exists(out, none) ? FileOps::size(out) : 0;
        fs::remove(out, none);
        return size;
    }

private:
    ToolRunner::Confinement confinement() const {
        return {.reads = {file_}, .writes = {work_.path()}, .home = {}};
    }

    void decode(double seconds, const Words& how, const fs::path& out) {
        Words words = {"-nostdin",
                       "-v",
                       "error",
                       "-y",
                       "-protocol_whitelist",
                       "file",
                       "-ss",
                       Text::fixed(seconds, 3),
                       "-i",
                       asFile(file_)};
        words.insert(words.end(), how.begin(), how.end());
        words.push_back(asFile(out));
        RunControl control;
        ToolRunner::runToEnd(ffmpeg_, words, confinement(), control);
    }

    fs::path ffprobe_;
    fs::path ffmpeg_;
    fs::path file_;
    WorkFolder work_;
};

std::string linesAt(Attempt& attempt, const Probed& probed, double seconds) {
    const std::string at = Text::fixed(seconds, 1) + " s: ";
    std::string text;
    if (probed.hasPicture) text += "frame at " + at + attempt.frameAt(seconds) + "\n";
    if (!probed.hasSound) return text;
    const std::uint64_t bytes = attempt.soundAt(seconds);
    return text + "sound at " + at + "decoded " + std::to_string(bytes) +
           " bytes of the next 10 s " + (bytes > 0 ? "ok" : "FAILED") + "\n";
}

}  // namespace

Probed parseProbe(const std::string& text) {
    Probed probed;
    std::string type;
    for (const std::string& line : Text::words(text, '\n')) {
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos) continue;
        const std::string name = line.substr(0, equals);
        const std::string value = line.substr(equals + 1);
        if (name == "codec_type") {
            type = value;
            probed.tracks++;
            probed.hasSound = probed.hasSound || type == "audio";
        } else if (name == "DISPOSITION:attached_pic") {
            const bool isCover = value == "1";
            if (isCover && !type.empty()) probed.tracks--;
            probed.hasPicture = probed.hasPicture || (type == "video" && !isCover);
            type.clear();
        } else if (name == "duration") {
            double seconds = 0;
            const auto [end, failed] =
                std::from_chars(value.data(), value.data() + value.size(), seconds);
            if (failed == std::errc() && seconds > 0 && seconds < 1e9) probed.duration = seconds;
        }
    }
    return probed;
}

std::string account(const fs::path& file) {
    const auto ffprobe = programOnPath("ffprobe");
    const auto ffmpeg = programOnPath("ffmpeg");
    if (!ffprobe || !ffmpeg)
        return "playable unknown: FFmpeg's programs ffprobe and ffmpeg aren't installed\n";
    try {
        Attempt attempt(*ffprobe, *ffmpeg, file);
        const Probed probed = attempt.probe();
        std::string text = std::string("playable ") + (probed.isPlayable() ? "true" : "false") +
                           ", duration " + Text::fixed(probed.duration, 1) + " s, tracks " +
                           std::to_string(probed.tracks) + "\n";
        if (probed.isPlayable())
            for (const double point : points)
                text += linesAt(attempt, probed, probed.duration * point);
        return text;
    } catch (const std::exception& failure) {
        return std::string("playable unknown: ") + failure.what() + "\n";
    }
}

}  // namespace marlet::Playable
