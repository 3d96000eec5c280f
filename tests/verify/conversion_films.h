#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "foundation/bytes.h"
#include "support/avc_builder.h"
#include "support/box_builder.h"
#include "support/mkv_builder.h"

// A Matroska file and the M4V that a right conversion makes of it; tests tell one of the two a lie.
namespace marlet::test {

/// A NAL unit behind its length of 4 bytes.
inline Bytes nalUnit(std::uint8_t first, std::string_view rest) {
    Bytes unit{first};
    append(unit, viewOf(rest));
    return joined({be32(static_cast<std::uint32_t>(unit.size())), unit});
}

inline constexpr std::uint8_t idr = 0x65;
inline constexpr std::uint8_t slice = 0x41;
inline constexpr std::uint8_t sequenceUnit = 0x67;
inline constexpr std::uint8_t pictureUnit = 0x68;
inline constexpr std::uint8_t delimiter = 0x09;

/// A frame of the source.
struct SourceFrame {
    int ms = 0;
    Bytes data;
    bool isKeyframe = true;
};

/// Track 1 is H.264, track 2 is AC3, track 3 is sound that gets converted.
struct SourceFilm {
    Bytes record = avcRecord(AVCFormat{});
    std::vector<SourceFrame> picture;
    std::vector<SourceFrame> sound;
    std::vector<SourceFrame> other;
    std::string soundCodec = "A_AC3";
    std::vector<Bytes> soundMore;    ///< of the track's entry
    std::vector<Bytes> soundBlocks;  ///< in place of the frames
    std::vector<std::pair<int, std::string>> chapters = {{0, "One"}, {160, "Two"}};
};

inline SourceFilm sourceFilm() {
    SourceFilm film;
    const std::vector<int> shown = {0, 120, 40, 80, 160, 280, 200, 240};
    for (std::size_t i = 0; i < shown.size(); i++) {
        const bool isKey = i % 4 == 0;
        film.picture.push_back(
            {shown[i], nalUnit(isKey ? idr : slice, "picture " + std::to_string(i)), isKey});
    }
    for (int i = 0; i < 10; i++) {
        film.sound.push_back({32 * i, bytesOf("sound " + std::to_string(i))});
        film.other.push_back({32 * i, bytesOf("other " + std::to_string(i))});
    }
    return film;
}

inline Bytes mkvBytes(const SourceFilm& film) {
    constexpr std::uint32_t codecPrivate = 0x63A2;
    Bytes blocks = mkv::number(0xE7, 0);
    const auto add = [&](std::uint64_t track, const std::vector<SourceFrame>& frames) {
        for (const SourceFrame& frame : frames)
            append(blocks, mkv::simpleBlock(track, static_cast<std::int16_t>(frame.ms), frame.data,
                                            frame.isKeyframe ? mkv::keyframe : 0));
    };
    add(1, film.picture);
    if (film.soundBlocks.empty()) add(2, film.sound);
    for (const Bytes& block : film.soundBlocks) append(blocks, block);
    add(3, film.other);

    Bytes atoms;
    for (const auto& [ms, title] : film.chapters)
        append(atoms, mkv::atom(static_cast<std::uint64_t>(ms) * 1'000'000, title));
    return joined(
        {mkv::header(),
         mkv::segment(
             {mkv::info(),
              mkv::tracks(
                  {mkv::entry(1, 1, "V_MPEG4/ISO/AVC", {mkv::element(codecPrivate, film.record)}),
                   mkv::entry(2, 2, film.soundCodec, {joined(film.soundMore)}),
                   mkv::entry(3, 2, "A_TRUEHD")}),
              mkv::chapters({mkv::element(0x45B9, atoms)}), mkv::element(0x1F43B675, blocks)})});
}

inline Bytes hereBox() {
    return box("dinf", {fullBox("dref", 0, 0, joined({be32(1), fullBox("url ", 0, 1, Bytes())}))});
}

/// A track of these frames, all of that length in ms.
inline MovieTrack copyOf(std::string_view handler, std::string_view codec,
                         const std::vector<SourceFrame>& frames, std::uint32_t length) {
    MovieTrack track;
    track.handler = handler;
    track.codec = codec;
    for (const SourceFrame& frame : frames) {
        track.samples.push_back(frame.data);
        track.sizes.push_back(static_cast<std::uint32_t>(frame.data.size()));
        track.durations.push_back(length);
    }
    track.edits = {{static_cast<std::uint32_t>(frames.size()) * length, 0}};
    track.mediaInfo = {hereBox()};
    return track;
}

inline MovieTrack pictureCopy(const SourceFilm& film) {
    constexpr int length = 40;
    constexpr int latest = 80;  // no frame is shown ahead of its decoding
    MovieTrack track = copyOf("vide", "avc1", film.picture, length);
    std::vector<Run> offsets;
    std::vector<std::uint32_t> keyframes;
    for (std::size_t i = 0; i < film.picture.size(); i++) {
        const int decoded = static_cast<int>(i) * length;
        offsets.emplace_back(1, film.picture[i].ms - film.picture[0].ms + latest - decoded);
        if (film.picture[i].isKeyframe) keyframes.push_back(static_cast<std::uint32_t>(i) + 1);
    }
    track.tables = {cttsBox(offsets), stssBox(keyframes)};
    track.edits = {{320, latest}};
    track.entry = joined({Bytes(78), box("avcC", film.record)});
    return track;
}

/// `dac3` of 5.1 (acmod 7 with lfe) or stereo (acmod 2).
inline Bytes ac3Entry(bool isSurround) {
    const auto modes = static_cast<std::uint8_t>(isSurround ? 7 << 3 | 1 << 2 : 2 << 3);
    return joined({Bytes(28), box("dac3", Bytes{0x10, modes, 0})});
}

/// `esds` of AAC-LC at 48 kHz with so many channels.
inline Bytes aacEntry(std::uint8_t channels) {
    const Bytes config{0x11, static_cast<std::uint8_t>(0x80 | channels << 3)};
    const Bytes decoder = joined({Bytes{0x40, 0x15}, Bytes(11), Bytes{5, 2}, config});
    const Bytes es =
        joined({Bytes{0, 0, 0, 4, static_cast<std::uint8_t>(decoder.size())}, decoder});
    Bytes entry(28);
    entry[17] = 2;
    return joined(
        {entry,
         box("esds", joined({be32(0), Bytes{3, static_cast<std::uint8_t>(es.size())}, es}))});
}

/// Picture and copied sound, with the chapters of the source.
inline Movie builtFilm(const SourceFilm& film) {
    Movie movie;
    movie.tracks = {pictureCopy(film), copyOf("soun", "ac-3", film.sound, 32)};
    movie.tracks[1].altGroup = 1;
    movie.tracks[1].language = "eng";
    movie.tracks[1].entry = ac3Entry(true);
    std::vector<std::pair<std::uint64_t, std::string>> chapters(film.chapters.begin(),
                                                                film.chapters.end());
    movie.userData = {chplBox(chapters)};
    return movie;
}

}  // namespace marlet::test
