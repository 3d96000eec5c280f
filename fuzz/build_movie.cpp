// Any bytes as a source of a new film: refused with a sentence, or a film whose index holds true.
// The first byte tells the kind of the source, whether it gives the chapters, too, and whether its
// tracks are copied as they are.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "foundation/errors.h"
#include "helpers/build_movie.h"
#include "helpers/relayout.h"
#include "memory_folder.h"
#include "mp4/box.h"
#include "mp4/summary.h"

namespace {

using namespace marlet;
namespace fs = std::filesystem;

void check(bool holds) {
    if (!holds) std::abort();
}

void write(const fs::path& file, const std::uint8_t* data, std::size_t size) {
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

/// Every sample lies in the file, and the film can be laid out anew.
void judge(const fs::path& film) {
    const std::uint64_t size = fs::file_size(film);
    const MP4Summary summary = parseSummary(loadMoov(film), film, Detail::Yes);
    for (const Track& track : summary.tracks)
        for (const Chunk& chunk : track.chunks) {
            std::uint64_t end = chunk.offset;
            for (std::uint32_t i = 0; i < chunk.count; i++) end += track.sizes[chunk.first + i];
            check(end <= size);
        }
    Relayout::run({.input = film, .output = MemoryFolder::path() / "again.mp4"});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const fs::path source = MemoryFolder::path() / ((data[0] & 1) != 0 ? "s.srt" : "source.mkv");
    write(source, data + 1, size - 1);
    BuildMovie::Request request{.scratch = MemoryFolder::path(),
                                .output = MemoryFolder::path() / "out.mp4"};
    if ((data[0] & 1) != 0) request.tracks = {{.file = source, .textFlags = 0x40000000}};
    if ((data[0] & 1) == 0)
        request.tracks = {{.file = source, .track = 1, .name = "Video"},
                          {.file = source, .track = 2, .language = "eng", .delayMs = data[0]}};
    if ((data[0] & 8) != 0 && request.tracks.size() > 1)
        request.tracks = {{.file = source, .track = 1}, {.file = source, .track = 2}};
    if ((data[0] & 2) != 0) request.tracks.resize(1);
    if ((data[0] & 4) != 0) request.chapters = source;
    fs::remove(request.output);
    try {
        BuildMovie::run(request);
    } catch (const MFError&) {
        check(!fs::exists(request.output));
        return 0;
    }
    judge(request.output);
    return 0;
}
