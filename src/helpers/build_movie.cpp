#include "helpers/build_movie.h"

#include "foundation/errors.h"
#include "helpers/boxes.h"
#include "helpers/interleave.h"
#include "helpers/media_reader.h"
#include "helpers/movie_assembly.h"
#include "helpers/movie_map.h"
#include "helpers/new_file.h"
#include "helpers/new_layout.h"

namespace marlet::BuildMovie {

namespace {

/// A film for Apple's players. Those of iTunes have this brand; the others say that any reader of
/// the base format will do (ISO/IEC 14496-12, 4.3; ISO/IEC 14496-14).
Bytes fileType() {
    return Boxes::box(boxCode("ftyp"), {viewOf("M4V "), Boxes::u32s({0}), viewOf("M4V "),
                                        viewOf("M4A "), viewOf("mp42"), viewOf("isom")});
}

/// Reads the tracks' samples, each from its file. Samples that follow each other there are read
/// as one.
class Samples {
public:
    Samples(const AssembledMovie& movie, const MovieMap& map, NewFile& out,
            std::function<void()> report)
        : movie_(movie), out_(out), report_(std::move(report)) {
        std::vector<std::vector<std::uint64_t>> shares(movie.files.size());
        for (std::size_t t = 0; t < map.tracks.size(); t++) {
            std::vector<std::uint64_t>& ofFile = shares[movie.media[t].file];
            places_.push_back(ofFile.size());
            const TrackTables& tables = map.tracks[t].tables;
            ofFile.push_back(tables.bytesOf(0, tables.samples));
        }
        for (std::size_t f = 0; f < shares.size(); f++)
            readers_.emplace_back(movie.files[f], shares[f]);
    }

    void add(std::size_t track, const Piece& piece) {
        const Bytes& prefix = movie_.media[track].prefix;
        FilePart part{piece.offset, piece.bytes};
        if (!prefix.empty()) {
            flush();
            out_.append(prefix);
            part.size -= prefix.size();
        }
        if (track == track_ && part.at == run_.end()) {
            run_.size += part.size;
            return;
        }
        flush();
        track_ = track;
        run_ = part;
    }

    void flush() {
        if (run_.size == 0) return;
        MediaReader& reader = readers_[movie_.media[track_].file];
        const std::size_t place = places_[track_];
        std::uint64_t at = run_.at;
        reader.expect(place, at, 0);
        out_.appendFilled(run_.size, [&](std::span<std::uint8_t> part) {
            reader.expect(place, at, part.size());
            reader.read(place, part, at);
            at += part.size();
        });
        run_ = {};
        report_();
    }

private:
    const AssembledMovie& movie_;
    NewFile& out_;
    std::function<void()> report_;
    std::deque<MediaReader> readers_;
    std::vector<std::size_t> places_;  // of a track among those of its file
    std::size_t track_ = 0;
    FilePart run_;
};

void refuseInputs(const AssembledMovie& movie, const std::filesystem::path& output) {
    const auto out = Sys::stat(output);
    if (!out) return;
    for (const SourceFile& file : movie.files) {
        const auto in = Sys::fstat(file.handle.get());
        if (in && in->inode == out->inode && in->device == out->device)
            throw MFError("the output is an input");
    }
}

void appendHeader(NewFile& out, BoxCode type, std::uint64_t size, std::uint64_t header) {
    Bytes bytes = Boxes::u32s({header == 16 ? 1 : static_cast<std::uint32_t>(size), type});
    if (header == 16) BigEndian::put64(bytes, size);
    out.append(bytes);
}

void appendMedia(const AssembledMovie& movie, const MovieMap& map, const Request& request,
                 NewFile& out, std::function<void()> report) {
    const Bytes gap = Boxes::u32s({Interleave::gapBytes, boxCode("free")});
    Samples samples(movie, map, out, std::move(report));
    Interleave pieces(map, request.sliceMilliseconds);
    while (const auto placed = pieces.next()) {
        if (placed->gap > 0) {
            samples.flush();
            out.append(gap);
        }
        samples.add(placed->track, placed->piece);
    }
    samples.flush();
}

}  // namespace

void run(const Request& request, const Progress& progress) {
    ScratchFolder scratch(request.scratch);
    AssembledMovie movie = MovieAssembly::make(request, scratch);
    refuseInputs(movie, request.output);

    const Bytes type = fileType();
    SourceFile whole;
    whole.ftyp = FilePart{0, type.size()};
    whole.media = {FilePart{}};
    whole.moov = std::move(movie.moov);
    const MovieMap map = MovieMaps::read(whole.moov, {});
    const NewLayout layout =
        NewLayouts::make(whole, map, request.sliceMilliseconds, request.padding);

    const NewLayout::Places& places = layout.places;
    const std::uint64_t total = places.mediaAt + places.mediaBytes;
    NewFile out(request.output);
    const std::function<void()> report = [&] {
        if (progress) progress(static_cast<double>(out.size()) / static_cast<double>(total));
    };
    out.append(type);
    out.append(layout.index.moov);
    if (places.padding > 0) {
        appendHeader(out, boxCode("free"), places.padding, 8);
        out.appendZeros(places.padding - 8);
    }
    appendHeader(out, boxCode("mdat"), places.mediaBytes + places.mediaHeader, places.mediaHeader);
    appendMedia(movie, map, request, out, report);
    if (out.size() != total) throw MFError("the output came out at an unexpected length");
    out.finish();
    report();
}

}  // namespace marlet::BuildMovie
