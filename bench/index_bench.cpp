// Reading a film's index and measuring it, against mediainfo and ffprobe on the same file in the
// same run. Each figure is the wall time of a whole process, the best of several turns.
//
//   index_bench              makes films of 10 minutes, 2 hours and 10 hours and prints the table
//   index_bench --read FILE  reads one file: what the table times
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "mp4/box.h"
#include "mp4/sound_layout.h"
#include "mp4/summary.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

using test::runTool;
using Clock = std::chrono::steady_clock;
constexpr int turns = 7;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// The most memory that this process has held, in KiB.
long peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:")) return std::stol(line.substr(6));
    return 0;
}

/// Prints: index bytes, milliseconds of processor time for the reading alone, growth of peak memory
/// in KiB.
int readOne(const std::string& file) {
    const long before = peakMemory();
    const std::clock_t start = std::clock();
    const Bytes moov = loadMoov(file);
    const double seconds = measure(parseSummary(moov, file, Detail::No));
    const double took = static_cast<double>(std::clock() - start) * 1000 / CLOCKS_PER_SEC;
    std::cout << moov.size() << ' ' << took << ' ' << peakMemory() - before << ' ' << seconds
              << '\n';
    return 0;
}

double timed(const std::vector<std::string>& arguments) {
    const auto start = Clock::now();
    runTool(arguments);
    return millisecondsSince(start);
}

/// A minute of H.264 with B-frames and two sound tracks, small in bytes and true in samples: 25
/// pictures and twice 23.4 sound samples a second, half a million in two hours.
void makeMinute(const std::string& file) {
    runTool({"ffmpeg",
             "-v",
             "error",
             "-f",
             "lavfi",
             "-i",
             "color=black:size=64x36:rate=25:duration=60",
             "-f",
             "lavfi",
             "-i",
             "anullsrc=sample_rate=24000:cl=mono:duration=60",
             "-f",
             "lavfi",
             "-i",
             "anullsrc=sample_rate=24000:cl=mono:duration=60",
             "-map",
             "0",
             "-map",
             "1",
             "-map",
             "2",
             "-c:v",
             "libx264",
             "-preset",
             "veryfast",
             "-pix_fmt",
             "yuv420p",
             "-c:a",
             "aac",
             "-b:a",
             "16k",
             file});
}

void makeFilm(const std::string& minute, int minutes, const std::string& file) {
    runTool({"ffmpeg", "-v", "error", "-stream_loop", std::to_string(minutes - 1), "-i", minute,
             "-map", "0", "-c", "copy", "-movflags", "+faststart", file});
}

std::size_t samplesIn(const std::string& file) {
    std::size_t samples = 0;
    for (const Track& track : parseSummary(loadMoov(file), file, Detail::Yes).tracks)
        samples += track.sizes.size();
    return samples;
}

struct Times {
    double marlet = 1e9;
    double mediainfo = 1e9;
    double ffprobe = 1e9;
};

Times compare(const std::string& self, const std::string& file) {
    Times best;
    for (int i = 0; i < turns; i++) {
        best.marlet = std::min(best.marlet, timed({self, "--read", file}));
        best.mediainfo = std::min(best.mediainfo, timed({"mediainfo", file}));
        best.ffprobe = std::min(
            best.ffprobe, timed({"ffprobe", "-v", "error", "-show_format", "-show_streams", file}));
    }
    return best;
}

struct Inside {
    double index = 0;     ///< bytes
    double took = 1e9;    ///< milliseconds
    double memory = 1e9;  ///< bytes
};

Inside readInside(const std::string& self, const std::string& file) {
    Inside best;
    for (int i = 0; i < turns; i++) {
        std::istringstream line(runTool({self, "--read", file}));
        double took = 0;
        double memory = 0;
        line >> best.index >> took >> memory;
        best.took = std::min(best.took, took);
        best.memory = std::min(best.memory, memory * 1024);
    }
    return best;
}

void printRow(const char* name, const std::string& self, const std::string& file) {
    const Inside inside = readInside(self, file);
    const double samples = static_cast<double>(samplesIn(file));
    const Times times = compare(self, file);
    std::printf("%-7s %8.0f %7.2f %8.1f %10.1f %8.1f %7.3f %8.3f %7.2f %9.2f %7.2f\n", name,
                samples, inside.index / 1e6, times.marlet, times.mediainfo, times.ffprobe,
                times.marlet / times.mediainfo, times.marlet / times.ffprobe, inside.took,
                inside.took * 1e5 / samples, inside.memory / inside.index);
    std::fflush(stdout);
}

int printTable(const std::string& self) {
    const test::TempFolder folder;
    const std::string minute = (folder / "minute.mp4").string();
    makeMinute(minute);
    std::printf(
        "                          process, wall ms              marlet to a peer  reading, CPU ms "
        "  peak/\n"
        "film     samples  MB idx   marlet  mediainfo  ffprobe    info    probe     all  per 100k  "
        " index\n");
    const std::vector<std::pair<const char*, int>> films = {
        {"10 min", 10}, {"2 h", 120}, {"10 h", 600}};
    for (const auto& [name, minutes] : films) {
        const std::string file = (folder / "film.mp4").string();
        std::filesystem::remove(file);
        makeFilm(minute, minutes, file);
        printRow(name, self, file);
    }
    return 0;
}

}  // namespace
}  // namespace marlet

int main(int count, char** arguments) {
    if (count == 3 && std::string(arguments[1]) == "--read") return marlet::readOne(arguments[2]);
    return marlet::printTable(std::filesystem::canonical("/proc/self/exe").string());
}
