#pragma once

#include <string>
#include <vector>

#include "support/media.h"
#include "support/temp_folder.h"

// Real QuickTime films, made by FFmpeg.
namespace marlet::test {

/// FFmpeg with two seconds of picture as input 0, sound as 1, deeper sound as 2 and perhaps another
/// file as 3, and these arguments; what it made.
inline Bytes movFilm(const std::vector<std::string>& arguments, const std::string& input = "") {
    const TempFolder folder;
    std::vector<std::string> line = {"-bitexact"};
    for (const char* source : {"testsrc2=size=64x36:rate=25:duration=2",
                               "sine=frequency=440:sample_rate=48000:duration=2",
                               "sine=frequency=220:sample_rate=48000:duration=2"})
        line.insert(line.end(), {"-f", "lavfi", "-i", source});
    if (!input.empty()) line.insert(line.end(), {"-i", input});
    line.insert(line.end(), arguments.begin(), arguments.end());
    line.insert(line.end(), {"-f", "mov", (folder / "film.mov").string()});
    ffmpeg(line);
    return readFile(folder / "film.mov");
}

/// H.264 with B-frames.
inline std::vector<std::string> avc(std::vector<std::string> more) {
    std::vector<std::string> all = {"-c:v", "libx264", "-preset", "ultrafast", "-bf",
                                    "2",    "-g",      "25",      "-pix_fmt",  "yuv420p"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

/// H.264 and mono AAC; made once a process.
inline const Bytes& plainMOV() {
    static const Bytes film = movFilm(avc({"-map", "0", "-map", "1", "-c:a", "aac"}));
    return film;
}

/// The same with two chapters, "One" and "Zwei Ä" from 1.25 s on, as text and as a list.
inline const Bytes& chapteredMOV() {
    static const Bytes film = [] {
        const TempFolder folder;
        const auto chapters = folder.write(
            "c.txt", std::string_view(";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1250"
                                      "\ntitle=One\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=1250\n"
                                      "END=2000\ntitle=Zwei Ä\n"));
        return movFilm(avc({"-map", "0", "-map", "1", "-map_chapters", "3", "-c:a", "aac"}),
                       chapters.string());
    }();
    return film;
}

/// What `marlet-mux` makes of its tracks, in slices of so many milliseconds, and of a chapter
/// file.
inline Bytes builtOf(const Bytes& film, const std::vector<int>& tracks, int slice = 500,
                     const std::string& chapters = "") {
    const TempFolder folder;
    const std::string source = folder.write("s.mov", film).string();
    std::vector<std::string> line = {builtProgram("marlet-mux").string(), "-tmp",
                                     folder.path().string()};
    for (const int track : tracks)
        line.insert(line.end(), {"-add", source + "#" + std::to_string(track)});
    if (!chapters.empty())
        line.insert(line.end(),
                    {"-chap", folder.write("c.txt", std::string_view(chapters)).string()});
    line.insert(line.end(), {"-inter", std::to_string(slice), "-moovpad", "9000", "-new",
                             (folder / "b.mp4").string()});
    runTool(line);
    return readFile(folder / "b.mp4");
}

}  // namespace marlet::test
