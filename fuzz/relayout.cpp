// Any bytes as a film: refused with a sentence, or laid out so that every sample of every track
// that stays is what it was. The first byte chooses the slice and whether track 1 goes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "foundation/errors.h"
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

Bytes contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::optional<MP4Summary> summaryOf(const fs::path& file) {
    try {
        return parseSummary(loadMoov(file), file, Detail::Yes);
    } catch (const MFError&) {
        return std::nullopt;
    }
}

/// All samples of a track behind each other; a refused file never gets here, so that every chunk
/// lies in the file.
Bytes mediaOf(const Track& track, const Bytes& file) {
    Bytes media;
    for (const Chunk& chunk : track.chunks) {
        std::uint64_t size = 0;
        for (std::uint32_t i = 0; i < chunk.count; i++) size += track.sizes[chunk.first + i];
        if (size == 0) continue;
        check(chunk.offset <= file.size() && size <= file.size() - chunk.offset);
        append(media, ByteView(file).subspan(chunk.offset, size));
    }
    return media;
}

void compare(const Track& before, const Track& after, const Bytes& old, const Bytes& now) {
    check(before.id == after.id && before.handler == after.handler);
    check(before.sizes == after.sizes && before.durations == after.durations);
    check(before.ctts == after.ctts && before.sync == after.sync);
    check(before.stsdDigest == after.stsdDigest && before.elstDigest == after.elstDigest);
    check(before.tkhdRest == after.tkhdRest && before.langRaw == after.langRaw);
    check(mediaOf(before, old) == mediaOf(after, now));
}

void compareFiles(const Relayout::Request& request) {
    const auto before = summaryOf(request.input);
    if (!before) return;
    const auto after = summaryOf(request.output);
    check(after.has_value() && before->ilst == after->ilst && before->chpl == after->chpl);
    const Bytes old = contentOf(request.input);
    const Bytes now = contentOf(request.output);
    std::size_t at = 0;
    for (const Track& track : before->tracks) {
        if (request.removedTracks.contains(track.id)) continue;
        check(at < after->tracks.size());
        compare(track, after->tracks[at++], old, now);
    }
    check(at == after->tracks.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    constexpr std::uint32_t slices[] = {500, 1, 100, 60'000};
    Relayout::Request request{.input = MemoryFolder::path() / "in.mp4",
                              .output = MemoryFolder::path() / "out.mp4",
                              .sliceMilliseconds = slices[data[0] & 3],
                              .padding = std::uint32_t{data[0]} >> 3};
    if ((data[0] & 4) != 0) request.removedTracks = {1};
    std::ofstream(request.input, std::ios::binary)
        .write(reinterpret_cast<const char*>(data) + 1, static_cast<std::streamsize>(size) - 1);
    fs::remove(request.output);
    try {
        Relayout::run(request);
    } catch (const MFError&) {
        check(!fs::exists(request.output));
        return 0;
    }
    compareFiles(request);
    // A new layout of the result is the result, but for what removing has already done.
    const Bytes once = contentOf(request.output);
    request.input = request.output;
    request.output = MemoryFolder::path() / "again.mp4";
    request.removedTracks.clear();
    Relayout::run(request);
    check(contentOf(request.output) == once);
    return 0;
}
