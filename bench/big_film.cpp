// Makes a film of a given size, for timings: 2 hours of 25 pictures a second and two sound tracks,
// stored a second at a time, with true tables behind the media (ISO/IEC 14496-12). The media itself
// is noise, which no file system can squeeze.
//
//   big_film FILE GIBIBYTES
#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/box_builder.h"

namespace {

using namespace marlet;
using namespace marlet::test;

constexpr std::uint32_t seconds = 7200;
constexpr std::uint32_t movieTimescale = 1000;
constexpr std::uint32_t soundSize = 250;  // bytes a sample, about 96 kbit/s

/// A track of equal samples whose chunks are a second each.
struct Part {
    const char* handler;
    const char* codec;
    std::uint32_t timescale;
    std::uint32_t samplesPerSecond;
    std::uint32_t size;
    std::vector<std::uint64_t> offsets = {};

    std::uint64_t chunkBytes() const { return std::uint64_t{samplesPerSecond} * size; }
};

/// xorshift64*: noise at the speed of memory.
class Noise {
public:
    std::uint64_t next() {
        state_ ^= state_ >> 12;
        state_ ^= state_ << 25;
        state_ ^= state_ >> 27;
        return state_ * 2685821657736338717ULL;
    }

private:
    std::uint64_t state_ = 88172645463325252ULL;
};

std::vector<Part> partsOf(std::uint64_t bytes) {
    std::vector<Part> parts = {{"vide", "avc1", 25000, 25, 0},
                               {"soun", "mp4a", 48000, 48, soundSize},
                               {"soun", "mp4a", 48000, 48, soundSize}};
    const std::uint64_t sound = parts[1].chunkBytes() + parts[2].chunkBytes();
    if (bytes / seconds < 2 * sound) throw std::runtime_error("too small for two hours");
    parts[0].size = static_cast<std::uint32_t>((bytes / seconds - sound) / 25);
    return parts;
}

std::uint64_t mediaBytes(const std::vector<Part>& parts) {
    std::uint64_t second = 0;
    for (const Part& part : parts) second += part.chunkBytes();
    return second * seconds;
}

void layOut(std::vector<Part>& parts, std::uint64_t at) {
    for (std::uint32_t second = 0; second < seconds; second++) {
        for (Part& part : parts) {
            part.offsets.push_back(at);
            at += part.chunkBytes();
        }
    }
}

Bytes trackBox(const Part& part, std::uint32_t id) {
    const std::uint32_t samples = part.samplesPerSecond * seconds;
    return box("trak",
               {tkhdBox(id), mdiaBox(part.handler, part.timescale, part.timescale * seconds,
                                     {stsdBox(part.codec),
                                      sttsBox({{samples, part.timescale / part.samplesPerSecond}}),
                                      stscBox({{1, part.samplesPerSecond}}),
                                      stszBox(std::vector<std::uint32_t>(samples, part.size)),
                                      co64Box(part.offsets)})});
}

Bytes indexBox(const std::vector<Part>& parts) {
    std::vector<Bytes> children = {mvhdBox(movieTimescale, movieTimescale * seconds)};
    for (std::uint32_t i = 0; i < parts.size(); i++) children.push_back(trackBox(parts[i], i + 1));
    // What an encoder leaves behind, as in any real file.
    children.push_back(udtaBox({textItem("©too", "an encoder")}));
    return box("moov", joined(children));
}

void put(std::ofstream& out, const Bytes& bytes) {
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

void putNoise(std::ofstream& out, std::uint64_t bytes) {
    Noise noise;
    std::vector<std::uint64_t> piece(128 * 1024);
    while (bytes > 0) {
        for (std::uint64_t& word : piece) word = noise.next();
        const std::uint64_t count = std::min<std::uint64_t>(bytes, piece.size() * sizeof(piece[0]));
        out.write(reinterpret_cast<const char*>(piece.data()), static_cast<std::streamsize>(count));
        bytes -= count;
    }
}

void make(const std::string& file, std::uint64_t bytes) {
    std::vector<Part> parts = partsOf(bytes);
    const std::uint64_t media = mediaBytes(parts);
    const Bytes type = ftypBox();
    constexpr std::uint64_t largeHeader = 16;
    layOut(parts, type.size() + largeHeader);

    std::ofstream out(file, std::ios::binary);
    put(out, type);
    put(out, joined({boxHeader("mdat", 1), be64(media + largeHeader)}));
    putNoise(out, media);
    put(out, indexBox(parts));
    out.close();
    if (!out) throw std::runtime_error("cannot write " + file);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: big_film FILE GIBIBYTES\n";
        return 2;
    }
    try {
        make(arguments[1], static_cast<std::uint64_t>(std::stod(arguments[2]) * (1ULL << 30)));
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "big_film: " << failure.what() << '\n';
        return 1;
    }
}
