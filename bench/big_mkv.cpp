// Makes a Matroska file of a given size, for timings: a small film's frames over and over for 2
// hours. A picture is made as large as it takes by a filler NAL unit (ITU-T H.264, 7.3.2.7) of
// zeros, which take no room on a disk. Chapters and Cues stand behind the clusters, as a SeekHead
// in front tells.
//
//   big_mkv SMALL.mkv FILE GIBIBYTES
#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "matroska/mkv_file.h"
#include "matroska/mkv_writer.h"
#include "support/box_builder.h"
#include "support/mkv_builder.h"

namespace {

using namespace marlet;
using namespace marlet::test;

constexpr std::int64_t seconds = 7200;
constexpr std::int64_t clusterMs = 2000;

struct Frame {
    int track = 0;
    std::int64_t ms = 0;
    bool isKeyframe = false;
    Bytes bytes;
    std::uint32_t filler = 0;  ///< bytes of zeros behind it
};

struct Film {
    std::vector<Frame> frames;
    std::int64_t ms = 0;
    std::vector<MKVTrack> tracks;
};

Film filmOf(const std::string& path) {
    const auto file = MKVFile::open(path);
    if (!file || !file->durationSeconds()) throw std::runtime_error("no small film");
    Film film;
    film.tracks = file->tracks();
    // Whole clusters, so that each begins with a keyframe.
    film.ms = static_cast<std::int64_t>(*file->durationSeconds() * 1000) / clusterMs * clusterMs;
    file->forEachBlock({}, {}, [&](const MKVBlock& block) {
        const std::int64_t ms = block.timeNs / 1'000'000;
        if (ms < film.ms)
            film.frames.push_back({block.track, ms, block.isKeyframe, file->data(block).at(0), 0});
        return true;
    });
    std::stable_sort(film.frames.begin(), film.frames.end(), [](const Frame& a, const Frame& b) {
        return a.ms / clusterMs < b.ms / clusterMs;
    });
    return film;
}

void fill(Film& film, std::uint64_t bytes) {
    std::uint64_t media = 0, pictures = 0;
    for (const Frame& frame : film.frames) {
        media += frame.bytes.size();
        pictures += frame.track == 1 ? 1 : 0;
    }
    const auto rounds = static_cast<std::uint64_t>(seconds * 1000 / film.ms);
    if (pictures == 0 || bytes / rounds < media) throw std::runtime_error("too small");
    const auto filler = static_cast<std::uint32_t>((bytes / rounds - media) / pictures);
    constexpr std::uint32_t head = 5;
    for (Frame& frame : film.frames) {
        if (frame.track != 1 || filler <= head) continue;
        append(frame.bytes, joined({be32(filler - 4), Bytes{0x0C}}));
        frame.filler = filler - head;
    }
}

Bytes entryOf(const MKVTrack& track) {
    const auto number = static_cast<std::uint64_t>(track.number);
    const Bytes form =
        track.type == 1
            ? mkv::element(0xE0, {mkv::number(0xB0, static_cast<std::uint64_t>(track.pixelWidth)),
                                  mkv::number(0xBA, static_cast<std::uint64_t>(track.pixelHeight))})
            : mkv::element(0xE1, {mkv::real(0xB5, track.sampleRate),
                                  mkv::number(0x9F, static_cast<std::uint64_t>(track.channels))});
    const Bytes codecPrivate =
        track.codecPrivate.empty() ? Bytes() : mkv::element(0x63A2, track.codecPrivate);
    return mkv::entry(number, static_cast<std::uint64_t>(track.type), track.codecID,
                      {mkv::number(0x73C5, number), codecPrivate, form});
}

/// Writes behind one another, leaving holes.
class Output {
public:
    explicit Output(const std::string& path) : out_(path, std::ios::binary) {}
    void put(const Bytes& bytes) {
        out_.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }
    void skip(std::uint32_t bytes) { out_.seekp(bytes, std::ios::cur); }
    void putAt(std::uint64_t at, const Bytes& bytes) {
        out_.seekp(static_cast<std::streamoff>(at));
        put(bytes);
    }
    std::uint64_t at() { return static_cast<std::uint64_t>(out_.tellp()); }
    void close() {
        out_.close();
        if (!out_) throw std::runtime_error("the file can't be written");
    }

private:
    std::ofstream out_;
};

/// Writes the clusters and gives their offsets.
std::vector<std::uint64_t> putClusters(Output& out, const Film& film) {
    std::vector<std::uint64_t> starts;
    for (std::int64_t round = 0; round < seconds * 1000; round += film.ms) {
        auto next = film.frames.begin();
        while (next != film.frames.end()) {
            const std::int64_t start = next->ms / clusterMs * clusterMs;
            std::vector<std::pair<Bytes, std::uint32_t>> blocks;
            const Bytes time = mkv::number(0xE7, static_cast<std::uint64_t>(round + start));
            std::uint64_t size = time.size();
            for (; next != film.frames.end() && next->ms < start + clusterMs; ++next) {
                const Bytes body = mkv::blockBody(static_cast<std::uint64_t>(next->track),
                                                  static_cast<std::int16_t>(next->ms - start),
                                                  next->isKeyframe ? 0x80 : 0, next->bytes);
                blocks.emplace_back(
                    joined({Bytes{0xA3}, MKVWriter::size(body.size() + next->filler), body}),
                    next->filler);
                size += blocks.back().first.size() + next->filler;
            }
            starts.push_back(out.at());
            out.put(joined({be32(0x1F43B675), MKVWriter::size(size), time}));
            for (const auto& [bytes, filler] : blocks) {
                out.put(bytes);
                out.skip(filler);
            }
        }
    }
    return starts;
}

Bytes cuesOf(const std::vector<std::uint64_t>& starts, std::uint64_t segment) {
    std::vector<Bytes> points;
    for (std::size_t i = 0; i < starts.size(); i++)
        points.push_back(mkv::element(
            0xBB,
            {mkv::number(0xB3, i * clusterMs),
             mkv::element(0xB7, {mkv::number(0xF7, 1), mkv::number(0xF1, starts[i] - segment)})}));
    return mkv::element(0x1C53BB6B, joined(points));
}

Bytes chaptersOf() {
    std::vector<Bytes> atoms;
    for (std::uint64_t i = 0; i < 24; i++)
        atoms.push_back(mkv::atom(i * 300'000'000'000, "Chapter", {mkv::number(0x73C4, i + 1)}));
    return mkv::chapters({mkv::edition({joined(atoms)})});
}

/// With positions of 8 bytes, so that it is as long before they are known.
Bytes seekHead(const std::vector<std::pair<std::uint32_t, std::uint64_t>>& places) {
    std::vector<Bytes> seeks;
    for (const auto& [id, at] : places)
        seeks.push_back(
            mkv::element(0x4DBB, {mkv::element(0x53AB, be32(id)), mkv::element(0x53AC, be64(at))}));
    return mkv::element(0x114D9B74, joined(seeks));
}

void make(const std::string& small, const std::string& path, std::uint64_t bytes) {
    Film film = filmOf(small);
    fill(film, bytes);
    std::vector<Bytes> entries;
    for (const MKVTrack& track : film.tracks) entries.push_back(entryOf(track));
    const Bytes tracks = mkv::element(0x1654AE6B, joined(entries));
    const Bytes info = mkv::info(static_cast<double>(seconds * 1000));

    Output out(path);
    out.put(mkv::header());
    out.put(mkv::lying(0x18538067, 0));
    const std::uint64_t segment = out.at();
    const std::uint64_t head = seekHead({{0, 0}, {0, 0}, {0, 0}, {0, 0}}).size();
    out.skip(static_cast<std::uint32_t>(head));
    out.put(joined({info, tracks}));
    const auto starts = putClusters(out, film);
    const std::uint64_t cues = out.at();
    out.put(cuesOf(starts, segment));
    const std::uint64_t chapters = out.at();
    out.put(chaptersOf());
    const std::uint64_t end = out.at();
    out.putAt(segment, seekHead({{0x1549A966, head},
                                 {0x1654AE6B, head + info.size()},
                                 {0x1C53BB6B, cues - segment},
                                 {0x1043A770, chapters - segment}}));
    out.putAt(segment - 8, be64(std::uint64_t{1} << 56 | (end - segment)));
    out.close();
    std::cout << starts.size() << " clusters, " << end << " bytes\n";
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        std::cerr << "usage: big_mkv SMALL.mkv FILE GIBIBYTES\n";
        return 2;
    }
    try {
        make(arguments[1], arguments[2],
             static_cast<std::uint64_t>(std::stod(arguments[3]) * (1ULL << 30)));
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "big_mkv: " << failure.what() << '\n';
        return 1;
    }
}
