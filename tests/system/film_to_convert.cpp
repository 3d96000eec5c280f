#include "system/film_to_convert.h"

#include <chrono>
#include <thread>

#include "support/media.h"
#include "support/proc_file.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace fs = std::filesystem;

Bytes filmToConvert(const FilmToConvert& film) {
    const TempFolder folder;
    const auto part = [&](const char* name) { return (folder / name).string(); };
    const std::string noise = "anoisesrc=duration=1:sample_rate=48000:amplitude=0.4,";
    const std::string channels =
        film.surround ? "pan=5.1|c0=c0|c1=c0|c2=c0|c3=c0|c4=c0|c5=c0" : "pan=stereo|c0=c0|c1=c0";
    ffmpeg({"-f", "lavfi", "-i", "testsrc2=size=320x180:rate=25:duration=1", "-f", "lavfi", "-i",
            noise + channels, "-c:v", "libx264", "-preset", "ultrafast", "-qp",
            std::to_string(film.quantiser), "-pix_fmt", "yuv420p", "-c:a", "flac",
            part("raw.mkv")});
    folder.write("s.srt", std::string_view("1\n00:00:00,200 --> 00:00:00,800\nHello\n"));
    folder.write("c.txt", std::string_view("CHAPTER01=00:00:00.000\nCHAPTER01NAME=One\n"
                                           "CHAPTER02=00:00:00.500\nCHAPTER02NAME=Two\n"));
    mkvmerge(folder / "film.mkv", {"--chapters", part("c.txt"), "--language", "1:eng",
                                   part("raw.mkv"), "--language", "0:eng", part("s.srt")});
    return readFile(folder / "film.mkv");
}

std::vector<std::string> processesAt(const fs::path& place) {
    std::vector<std::string> found;
    for (const pid_t process : allProcesses()) {
        std::string line = commandLineOf(process);
        if (line.find(place.string()) != std::string::npos) found.push_back(std::move(line));
    }
    return found;
}

std::vector<std::string> processesLeftAt(const fs::path& place) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::vector<std::string> left = processesAt(place);
    while (!left.empty() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        left = processesAt(place);
    }
    return left;
}

}  // namespace marlet::test
