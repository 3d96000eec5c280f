#include "helpers/relayout.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

#include "foundation/errors.h"
#include "helpers/chunk_check.h"
#include "helpers/index_writer.h"
#include "helpers/interleave.h"
#include "helpers/layout_plan.h"
#include "helpers/media_reader.h"
#include "helpers/movie_map.h"
#include "helpers/new_file.h"
#include "helpers/source_file.h"

namespace marlet::Relayout {

namespace {

constexpr std::uint64_t most32 = std::numeric_limits<std::uint32_t>::max();

/// Where things stand in the result.
struct Places {
    std::uint64_t padding = 0;
    std::uint64_t mediaHeader = 0;  ///< 8 or 16; 0 without media data
    std::uint64_t mediaAt = 0;      ///< first byte of media data
};

Places placesOf(const SourceFile& file, const Request& request, const LayoutPlan& plan,
                std::uint64_t indexSize) {
    Places places;
    places.padding = request.padding == 0 ? 0 : std::max<std::uint64_t>(request.padding, 8);
    const bool isWide = file.wideMedia || plan.mediaBytes > most32 - 8;
    places.mediaHeader = file.media.empty() ? 0 : isWide ? 16 : 8;
    places.mediaAt =
        (file.ftyp ? file.ftyp->size : 0) + indexSize + places.padding + places.mediaHeader;
    return places;
}

/// The index whose offsets have the width that they need. A longer index moves the media, which
/// may make another table wide; tables never become narrow again, so this ends.
NewIndex makeIndex(const SourceFile& file, const Request& request, const MovieMap& map,
                   const LayoutPlan& plan) {
    std::vector<bool> wide;
    for (const MappedTrack& track : map.tracks) wide.push_back(track.tables.wideOffsets);
    for (;;) {
        NewIndex index = IndexWriter::write(file.moov, map, plan, wide);
        const std::uint64_t base = placesOf(file, request, plan, index.moov.size()).mediaAt;
        bool changed = false;
        for (std::size_t t = 0; t < wide.size(); t++) {
            if (wide[t] || plan.tracks[t].lastAt + base <= most32) continue;
            wide[t] = changed = true;
        }
        if (changed) continue;
        IndexWriter::fillOffsets(index, map, request.sliceMilliseconds, base);
        return index;
    }
}

void appendHeader(NewFile& out, const char (&type)[5], std::uint64_t size, std::uint64_t header) {
    Bytes bytes;
    BigEndian::put32(bytes, header == 16 ? 1 : static_cast<std::uint32_t>(size));
    BigEndian::put32(bytes, boxCode(type));
    if (header == 16) BigEndian::put64(bytes, size);
    out.append(bytes);
}

/// Pieces that follow each other in the source too are read as one.
class MediaCopy {
public:
    MediaCopy(MediaReader& reader, NewFile& out, const std::function<void()>& report)
        : reader_(reader), out_(out), report_(report) {}

    void add(std::size_t reader, const FilePart& part) {
        if (reader == who_ && part.at == run_.end()) {
            run_.size += part.size;
            return;
        }
        flush();
        who_ = reader;
        run_ = part;
    }
    void flush() {
        std::uint64_t at = run_.at;
        if (run_.size > 0) reader_.expect(who_, at, 0);
        out_.appendFilled(run_.size, [&](std::span<std::uint8_t> part) {
            reader_.expect(who_, at, part.size());
            reader_.read(who_, part, at);
            at += part.size();
            report_();
        });
        run_ = {};
    }

private:
    MediaReader& reader_;
    NewFile& out_;
    const std::function<void()>& report_;
    std::size_t who_ = 0;
    FilePart run_;
};

void copyMedia(const MovieMap& map, const Request& request, MediaCopy& copy, NewFile& out) {
    Bytes gap;
    BigEndian::put32(gap, Interleave::gapBytes);
    BigEndian::put32(gap, boxCode("free"));
    Interleave pieces(map, request.sliceMilliseconds);
    while (const auto placed = pieces.next()) {
        if (placed->gap > 0) {
            copy.flush();
            out.append(gap);
        }
        copy.add(placed->track, {placed->piece.offset, placed->piece.bytes});
    }
    copy.flush();
}

/// The bytes of each track, and of everything that is none.
std::vector<std::uint64_t> shares(const SourceFile& file, const MovieMap& map) {
    std::vector<std::uint64_t> bytes;
    for (const MappedTrack& track : map.tracks)
        bytes.push_back(track.tables.bytesOf(0, track.tables.samples));
    bytes.push_back(file.size / 256);
    return bytes;
}

void writeFile(const SourceFile& file, const Request& request, const MovieMap& map,
               const LayoutPlan& plan, const NewIndex& index, const Progress& progress) {
    const Places places = placesOf(file, request, plan, index.moov.size());
    std::uint64_t total = places.mediaAt + plan.mediaBytes;
    for (const FilePart& part : file.others) total += part.size;

    NewFile out(request.output);
    MediaReader reader(file, shares(file, map));
    const std::function<void()> report = [&] {
        if (progress) progress(static_cast<double>(out.size()) / static_cast<double>(total));
    };
    MediaCopy copy(reader, out, report);
    const std::size_t outsideTracks = map.tracks.size();
    if (file.ftyp) copy.add(outsideTracks, *file.ftyp);
    copy.flush();
    out.append(index.moov);
    if (places.padding > 0) {
        appendHeader(out, "free", places.padding, 8);
        out.appendZeros(places.padding - 8);
    }
    if (places.mediaHeader > 0)
        appendHeader(out, "mdat", plan.mediaBytes + places.mediaHeader, places.mediaHeader);
    copyMedia(map, request, copy, out);
    for (const FilePart& part : file.others) copy.add(outsideTracks, part);
    copy.flush();
    if (out.size() != total) throw MFError("the output came out at an unexpected length");
    out.finish();
    report();
}

void refuseSameFile(const SourceFile& file, const std::filesystem::path& output) {
    const auto in = Sys::fstat(file.handle.get());
    const auto out = Sys::stat(output);
    if (in && out && in->inode == out->inode && in->device == out->device)
        throw MFError("the output is the input");
}

}  // namespace

void run(const Request& request, const Progress& progress) {
    const SourceFile file = SourceFiles::open(request.input);
    refuseSameFile(file, request.output);
    const MovieMap map = MovieMaps::read(file.moov, request.removedTracks);
    ChunkCheck::run(map, file.media);
    const LayoutPlan plan = LayoutPlans::make(map, request.sliceMilliseconds, file.moov.size());
    const NewIndex index = makeIndex(file, request, map, plan);
    writeFile(file, request, map, plan, index, progress);
}

}  // namespace marlet::Relayout
