#include "support/box_builder.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

namespace marlet::test {

Bytes be16(std::uint16_t value) {
    Bytes out;
    BigEndian::put16(out, value);
    return out;
}

Bytes be32(std::uint32_t value) {
    Bytes out;
    BigEndian::put32(out, value);
    return out;
}

Bytes be64(std::uint64_t value) {
    Bytes out;
    BigEndian::put64(out, value);
    return out;
}

Bytes joined(std::initializer_list<Bytes> parts) {
    return joined(std::vector<Bytes>(parts));
}

Bytes joined(const std::vector<Bytes>& parts) {
    Bytes out;
    for (const Bytes& part : parts) append(out, part);
    return out;
}

Bytes patched(Bytes bytes, std::size_t at, ByteView with) {
    if (at + with.size() > bytes.size()) throw std::out_of_range("patch past the bytes");
    std::copy(with.begin(), with.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
    return bytes;
}

Bytes boxHeader(std::string_view type, std::uint32_t size) {
    const Bytes code = utf8ToLatin1(type);
    if (code.size() != 4) throw std::invalid_argument("a box type has four characters");
    return joined({be32(size), code});
}

Bytes box(std::string_view type, ByteView payload) {
    Bytes out = boxHeader(type, static_cast<std::uint32_t>(payload.size() + 8));
    append(out, payload);
    return out;
}

Bytes box(std::string_view type, std::initializer_list<Bytes> children) {
    return box(type, joined(children));
}

Bytes largeBox(std::string_view type, ByteView payload) {
    Bytes out = joined({boxHeader(type, 1), be64(payload.size() + 16)});
    append(out, payload);
    return out;
}

Bytes fullBox(std::string_view type, std::uint8_t version, std::uint32_t flags, ByteView payload) {
    Bytes content = be32(static_cast<std::uint32_t>(version) << 24 | flags);
    append(content, payload);
    return box(type, content);
}

namespace {

template <typename Row>
Bytes tableBox(std::string_view type, std::uint8_t version, const std::vector<Row>& rows,
               Bytes (*render)(const Row&)) {
    Bytes content = be32(static_cast<std::uint32_t>(rows.size()));
    for (const Row& row : rows) append(content, render(row));
    return fullBox(type, version, 0, content);
}

Bytes renderPair(const Run& run) {
    return joined({be32(run.first), be32(run.second)});
}

Bytes render32(const std::uint32_t& value) {
    return be32(value);
}

std::uint32_t sumOf(const std::vector<std::uint32_t>& values) {
    return std::accumulate(values.begin(), values.end(), std::uint32_t{0});
}

}  // namespace

Bytes ftypBox() {
    return box("ftyp", joined({bytesOf("isom"), be32(512), bytesOf("isomiso2mp41")}));
}

Bytes mvhdBox(std::uint32_t timescale, std::uint32_t duration) {
    Bytes content = joined({Bytes(8), be32(timescale), be32(duration), be32(0x00010000),
                            be16(0x0100), Bytes(10), be32(0x00010000), Bytes(12), be32(0x00010000),
                            Bytes(12), be32(0x40000000), Bytes(24), be32(100)});
    return fullBox("mvhd", 0, 0, content);
}

Bytes tkhdBox(std::uint32_t id, std::uint32_t flags, std::uint16_t altGroup) {
    Bytes content =
        joined({be32(0x11111111), be32(0x22222222), be32(id), Bytes(4), be32(0), Bytes(8), be16(0),
                be16(altGroup), be16(0x0100), Bytes(2), be32(0x00010000), Bytes(12),
                be32(0x00010000), Bytes(12), be32(0x40000000), Bytes(8)});
    return fullBox("tkhd", 0, flags, content);
}

Bytes mdhdBox(std::uint32_t timescale, std::uint32_t duration, std::string_view language) {
    std::uint16_t packed = 0;
    for (const char letter : language)
        packed = static_cast<std::uint16_t>(packed << 5 | ((letter - 0x60) & 0x1F));
    return fullBox("mdhd", 0, 0,
                   joined({be32(0x33333333), be32(0x44444444), be32(timescale), be32(duration),
                           be16(packed), be16(0)}));
}

Bytes hdlrBox(std::string_view handler) {
    return fullBox("hdlr", 0, 0, joined({be32(0), bytesOf(handler), Bytes(13)}));
}

Bytes elstBox(const std::vector<EditRow>& rows) {
    return tableBox<EditRow>("elst", 0, rows, [](const EditRow& row) {
        return joined(
            {be32(row.first), be32(static_cast<std::uint32_t>(row.second)), be32(0x00010000)});
    });
}

Bytes stszBox(std::uint32_t uniform, std::uint32_t count) {
    return fullBox("stsz", 0, 0, joined({be32(uniform), be32(count)}));
}

Bytes stszBox(const std::vector<std::uint32_t>& sizes) {
    Bytes content = joined({be32(0), be32(static_cast<std::uint32_t>(sizes.size()))});
    for (const std::uint32_t size : sizes) append(content, be32(size));
    return fullBox("stsz", 0, 0, content);
}

Bytes sttsBox(const std::vector<Run>& runs) {
    return tableBox<Run>("stts", 0, runs, renderPair);
}

Bytes cttsBox(const std::vector<Run>& runs, std::uint8_t version) {
    return tableBox<Run>("ctts", version, runs, renderPair);
}

Bytes stssBox(const std::vector<std::uint32_t>& numbers) {
    return tableBox<std::uint32_t>("stss", 0, numbers, render32);
}

Bytes stscBox(const std::vector<ChunkRow>& rows) {
    return tableBox<ChunkRow>("stsc", 0, rows, [](const ChunkRow& row) {
        return joined({be32(row.first), be32(row.second), be32(1)});
    });
}

Bytes stcoBox(const std::vector<std::uint32_t>& offsets) {
    return tableBox<std::uint32_t>("stco", 0, offsets, render32);
}

Bytes co64Box(const std::vector<std::uint64_t>& offsets) {
    return tableBox<std::uint64_t>("co64", 0, offsets,
                                   [](const std::uint64_t& offset) { return be64(offset); });
}

Bytes stsdBox(std::string_view codec) {
    return fullBox("stsd", 0, 0, joined({be32(1), box(codec, Bytes(28))}));
}

Bytes mdiaBox(std::string_view handler, std::uint32_t timescale, std::uint32_t duration,
              std::initializer_list<Bytes> tables, std::string_view language) {
    return box("mdia", {mdhdBox(timescale, duration, language), hdlrBox(handler),
                        box("minf", {box("stbl", tables)})});
}

Bytes tagItem(std::string_view type, std::uint32_t kind, ByteView value) {
    Bytes data = joined({be32(kind), be32(0)});
    append(data, value);
    return box(type, {box("data", data)});
}

Bytes textItem(std::string_view type, std::string_view text) {
    return tagItem(type, 1, viewOf(text));
}

Bytes freeformItem(std::string_view mean, std::string_view name, std::string_view text) {
    return box("----", {fullBox("mean", 0, 0, viewOf(mean)), fullBox("name", 0, 0, viewOf(name)),
                        box("data", joined({be32(1), be32(0), bytesOf(text)}))});
}

Bytes ilstBox(const std::vector<Bytes>& items) {
    return box("ilst", joined(items));
}

Bytes udtaBox(const std::vector<Bytes>& items, std::uint32_t room) {
    const Bytes hdlr = fullBox("hdlr", 0, 0, joined({be32(0), bytesOf("mdirappl"), Bytes(9)}));
    Bytes content = joined({hdlr, ilstBox(items)});
    if (room >= 8) append(content, box("free", Bytes(room - 8)));
    return box("udta", {fullBox("meta", 0, 0, content)});
}

MovieTrack evenTrack(std::string_view handler, std::uint32_t samples, std::uint32_t size,
                     std::uint32_t duration, std::uint32_t samplesPerChunk) {
    MovieTrack track;
    track.handler = handler;
    track.codec = handler == "vide" ? "avc1" : "mp4a";
    track.sizes.assign(samples, size);
    track.durations.assign(samples, duration);
    track.samplesPerChunk = samplesPerChunk;
    return track;
}

MovieTrack textTrack(const std::vector<std::string>& texts, std::uint32_t duration) {
    MovieTrack track;
    track.handler = "text";
    track.codec = "tx3g";
    for (const std::string& text : texts) {
        track.samples.push_back(
            joined({be16(static_cast<std::uint16_t>(text.size())), bytesOf(text)}));
        track.sizes.push_back(static_cast<std::uint32_t>(text.size() + 2));
        track.durations.push_back(duration);
    }
    return track;
}

Bytes chplBox(const std::vector<std::pair<std::uint64_t, std::string>>& chapters) {
    Bytes content = joined({be32(0), {static_cast<std::uint8_t>(chapters.size())}});
    for (const auto& [ms, title] : chapters)
        append(
            content,
            joined({be64(ms * 10'000), {static_cast<std::uint8_t>(title.size())}, bytesOf(title)}));
    return fullBox("chpl", 1, 0, content);
}

Bytes sampleBytes(std::uint32_t trackID, std::uint32_t number, std::uint32_t size) {
    Bytes bytes(size);
    std::uint32_t state = trackID * 2654435761U ^ number * 40503U;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

namespace {

/// The media data and where each chunk lies in it.
struct Media {
    Bytes bytes;
    std::vector<std::vector<std::uint64_t>> chunkOffsets;  ///< a track, from the payload's start
};

std::size_t chunkCount(const MovieTrack& track) {
    return (track.sizes.size() + track.samplesPerChunk - 1) / track.samplesPerChunk;
}

void addChunk(const Movie& movie, std::size_t trackIndex, std::size_t chunk, Media& media) {
    const MovieTrack& track = movie.tracks[trackIndex];
    media.chunkOffsets[trackIndex].push_back(media.bytes.size());
    const std::size_t first = chunk * track.samplesPerChunk;
    const std::size_t end = std::min(first + track.samplesPerChunk, track.sizes.size());
    for (std::size_t i = first; i < end; i++)
        append(media.bytes, !track.samples.empty()
                                ? track.samples[i]
                                : sampleBytes(static_cast<std::uint32_t>(trackIndex + 1),
                                              static_cast<std::uint32_t>(i), track.sizes[i]));
}

Media layOut(const Movie& movie) {
    Media media;
    media.chunkOffsets.resize(movie.tracks.size());
    std::size_t turns = 0;
    for (const MovieTrack& track : movie.tracks) turns = std::max(turns, chunkCount(track));
    if (movie.layout == Movie::Layout::Interleaved) {
        for (std::size_t turn = 0; turn < turns; turn++)
            for (std::size_t t = 0; t < movie.tracks.size(); t++)
                if (turn < chunkCount(movie.tracks[t])) addChunk(movie, t, turn, media);
        return media;
    }
    for (std::size_t t = 0; t < movie.tracks.size(); t++)
        for (std::size_t chunk = 0; chunk < chunkCount(movie.tracks[t]); chunk++)
            addChunk(movie, t, chunk, media);
    return media;
}

std::vector<Run> runsOf(const std::vector<std::uint32_t>& values) {
    std::vector<Run> runs;
    for (const std::uint32_t value : values) {
        if (runs.empty() || runs.back().second != value) runs.push_back({0, value});
        runs.back().first++;
    }
    return runs;
}

std::vector<ChunkRow> chunkRows(const MovieTrack& track) {
    const auto samples = static_cast<std::uint32_t>(track.sizes.size());
    const std::uint32_t whole = samples / track.samplesPerChunk;
    const std::uint32_t rest = samples % track.samplesPerChunk;
    std::vector<ChunkRow> rows;
    if (whole > 0) rows.push_back({1, track.samplesPerChunk});
    if (rest > 0) rows.push_back({whole + 1, rest});
    return rows;
}

Bytes offsetsBox(const std::vector<std::uint64_t>& offsets, std::uint64_t base, bool wide) {
    std::vector<std::uint64_t> absolute;
    for (const std::uint64_t offset : offsets) absolute.push_back(base + offset);
    if (wide) return co64Box(absolute);
    return stcoBox({absolute.begin(), absolute.end()});
}

Bytes trakBox(const MovieTrack& track, std::uint32_t id, const Bytes& offsets) {
    const std::uint32_t duration = sumOf(track.durations);
    Bytes content = tkhdBox(id, track.flags, track.altGroup);
    if (!track.edits.empty()) append(content, box("edts", {elstBox(track.edits)}));
    append(content, joined(track.boxes));
    const Bytes stsd =
        track.entry.empty()
            ? stsdBox(track.codec)
            : fullBox("stsd", 0, 0, joined({be32(1), box(track.codec, track.entry)}));
    const Bytes stbl =
        box("stbl", {stsd, sttsBox(runsOf(track.durations)), stscBox(chunkRows(track)),
                     stszBox(track.sizes), offsets, joined(track.tables)});
    append(content,
           box("mdia", {mdhdBox(track.timescale, duration, track.language), hdlrBox(track.handler),
                        box("minf", {joined(track.mediaInfo), stbl})}));
    return box("trak", content);
}

Bytes moovBox(const Movie& movie, const Media& media, std::uint64_t base) {
    double seconds = 0;
    for (const MovieTrack& track : movie.tracks)
        seconds = std::max(seconds, static_cast<double>(sumOf(track.durations)) / track.timescale);
    Bytes content = mvhdBox(movie.timescale, static_cast<std::uint32_t>(seconds * movie.timescale));
    for (std::size_t t = 0; t < movie.tracks.size(); t++)
        append(content, trakBox(movie.tracks[t], static_cast<std::uint32_t>(t + 1),
                                offsetsBox(media.chunkOffsets[t], base, movie.wideOffsets)));
    append(content, joined(movie.boxes));
    if (movie.hasTagBlock) {
        Bytes userData = udtaBox(movie.tags, movie.tagRoom);
        userData.erase(userData.begin(), userData.begin() + 8);
        append(content, box("udta", {userData, joined(movie.userData)}));
    }
    return box("moov", content);
}

}  // namespace

Bytes buildMovie(const Movie& movie) {
    const Media media = layOut(movie);
    const Bytes ftyp = ftypBox();
    const Bytes mdat = box("mdat", media.bytes);
    const Bytes padding = movie.padding >= 8 ? box("free", Bytes(movie.padding - 8)) : Bytes();
    if (movie.index == Movie::Index::Last)
        return joined({ftyp, mdat, moovBox(movie, media, ftyp.size() + 8), padding});
    // The index has the same length wherever the media data lies.
    const std::uint64_t base = ftyp.size() + moovBox(movie, media, 0).size() + padding.size() + 8;
    return joined({ftyp, moovBox(movie, media, base), padding, mdat});
}

}  // namespace marlet::test
