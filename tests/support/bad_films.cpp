#include "support/bad_films.h"

#include <algorithm>
#include <map>
#include <sstream>

#include "support/box_reader.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* length = "10";  // seconds

const std::vector<std::string> h264 = {"-c:v", "libx264", "-preset",  "ultrafast", "-bf",      "2",
                                       "-g",   "25",      "-pix_fmt", "yuv420p",   "-threads", "1"};

std::vector<std::string> with(std::vector<std::string> start,
                              const std::vector<std::string>& more) {
    start.insert(start.end(), more.begin(), more.end());
    return start;
}

constexpr const char* chapterFile =
    ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=4000\ntitle=First\n"
    "[CHAPTER]\nTIMEBASE=1/1000\nSTART=4000\nEND=10000\ntitle=Second é\n";

}  // namespace

const std::vector<BadFilm>& badFilms() {
    using Layout = BadFilm::Layout;
    const std::vector<std::string> sine2 = {"testsrc2=size=64x36:rate=25", "sine=sample_rate=48000",
                                            "sine=frequency=880"};
    static const std::vector<BadFilm> films = {
        {"AacWithBFrames", with(h264, {"-c:a", "aac"})},
        {"AacInLongChunks", with(h264, {"-c:a", "aac"}), Layout::longChunks},
        {"Ac3", with(h264, {"-c:a", "ac3", "-ac", "6"})},
        {"EAc3", with(h264, {"-c:a", "eac3", "-ac", "2"})},
        {"Hevc",
         {"-c:v", "libx265", "-preset", "ultrafast", "-x265-params", "log-level=none:pools=1",
          "-tag:v", "hvc1", "-c:a", "aac"}},
        {"ChaptersAsTrackAndList",
         with(h264, {"-c:a", "aac"}),
         Layout::soundBehindPicture,
         {"testsrc2=size=64x36:rate=25", "sine=sample_rate=48000"},
         true},
        {"ChaptersAsTrackAlone",
         with(h264, {"-c:a", "aac", "-movflags", "disable_chpl"}),
         Layout::soundBehindPicture,
         {"testsrc2=size=64x36:rate=25", "sine=sample_rate=48000"},
         true},
        {"TwoLanguages",
         with(h264, {"-map", "0", "-map", "1", "-map", "2", "-c:a", "aac", "-metadata:s:a:0",
                     "language=eng", "-metadata:s:a:1", "language=fre"}),
         Layout::soundBehindPicture, sine2},
        {"SoundThatStartsLate",
         with(h264, {"-c:a", "aac"}),
         Layout::soundBehindPicture,
         {"testsrc2=size=64x36:rate=25", "sine=sample_rate=48000"},
         false,
         1.5},
        {"ItunesBrand",
         with(h264, {"-c:a", "aac"}),
         Layout::soundBehindPicture,
         {"testsrc2=size=64x36:rate=25", "sine=sample_rate=48000"},
         false,
         0,
         ".m4v"},
        {"OldDates",
         with(h264, {"-c:a", "aac", "-metadata", "creation_time=2004-05-06T07:08:09Z"})},
    };
    return films;
}

void makeBadFilm(const BadFilm& film, const fs::path& file) {
    const TempFolder folder;
    std::vector<std::string> arguments;
    for (std::size_t i = 0; i < film.inputs.size(); i++) {
        if (i > 0 && film.soundStart > 0)
            arguments = with(arguments, {"-itsoffset", std::to_string(film.soundStart)});
        arguments = with(arguments, {"-f", "lavfi", "-t", length, "-i", film.inputs[i]});
    }
    if (film.chapters) {
        const fs::path chapters = folder.write("chapters.txt", chapterFile);
        arguments = with(arguments, {"-i", chapters.string(), "-map_chapters",
                                     std::to_string(film.inputs.size())});
    }
    arguments = with(arguments, film.arguments);
    arguments = with(arguments, {"-metadata", "title=Old"});
    if (film.layout == BadFilm::Layout::longChunks)
        arguments = with(arguments, {"-chunk_duration", "4000000"});  // microseconds
    ffmpeg(with(arguments, {file.string()}));
    if (film.layout == BadFilm::Layout::soundBehindPicture)
        writeFile(file, storedTrackByTrack(readFile(file)));
}

double longestSoundStretch(const fs::path& file) {
    struct Packet {
        long long at = 0;
        long long size = 0;
        double seconds = 0;
    };
    const std::string text =
        runTool({"ffprobe", "-v", "error", "-select_streams", "a", "-show_entries",
                 "packet=stream_index,duration_time,size,pos", "-of", "csv=p=0", file.string()});
    std::map<int, std::vector<Packet>> tracks;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::replace(line.begin(), line.end(), ',', ' ');
        std::istringstream fields(line);
        int stream = 0;
        Packet packet;
        if (fields >> stream >> packet.seconds >> packet.size >> packet.at)
            tracks[stream].push_back(packet);
    }
    double longest = 0;
    for (auto& [stream, packets] : tracks) {
        std::ranges::sort(packets, {}, &Packet::at);
        double together = 0;
        long long next = -1;
        for (const Packet& packet : packets) {
            together = packet.at == next ? together + packet.seconds : packet.seconds;
            longest = std::max(longest, together);
            next = packet.at + packet.size;
        }
    }
    return longest;
}

}  // namespace marlet::test
