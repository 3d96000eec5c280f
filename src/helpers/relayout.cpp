#include "helpers/relayout.h"

#include <functional>
#include <vector>

#include "foundation/errors.h"
#include "helpers/chunk_check.h"
#include "helpers/interleave.h"
#include "helpers/media_reader.h"
#include "helpers/movie_map.h"
#include "helpers/new_file.h"
#include "helpers/new_layout.h"
#include "helpers/source_file.h"

namespace marlet::Relayout {

namespace {

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
               const NewLayout& layout, const Progress& progress) {
    const NewLayout::Places& places = layout.places;
    std::uint64_t total = places.mediaAt + places.mediaBytes;
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
    out.append(layout.index.moov);
    if (places.padding > 0) {
        appendHeader(out, "free", places.padding, 8);
        out.appendZeros(places.padding - 8);
    }
    if (places.mediaHeader > 0)
        appendHeader(out, "mdat", places.mediaBytes + places.mediaHeader, places.mediaHeader);
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
    const NewLayout layout =
        NewLayouts::make(file, map, request.sliceMilliseconds, request.padding);
    writeFile(file, request, map, layout, progress);
}

}  // namespace marlet::Relayout
