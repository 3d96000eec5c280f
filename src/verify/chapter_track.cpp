#include "verify/chapter_track.h"

#include <fcntl.h>

#include <algorithm>
#include <cmath>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/text.h"

namespace marlet {

namespace {

/// Far longer than any title; what stands behind it in a sample is style.
constexpr std::uint32_t mostTextBytes = 65'535;
/// Far more than the chapters of any film, in bytes and in number.
constexpr std::size_t mostTitleBytes = 16 * 1024 * 1024;
constexpr std::size_t mostChapters = 100'000;
/// Beyond any film, and well within what milliseconds can count.
constexpr double mostSeconds = 1e12;

void putUtf8(std::string& text, std::uint32_t code) {
    const auto put = [&](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    }
}

/// An unpaired surrogate becomes U+FFFD.
std::string fromUtf16(ByteView bytes, bool isLittle) {
    const auto unitAt = [&](std::size_t at) -> std::uint32_t {
        return isLittle ? bytes[at] | bytes[at + 1] << 8 : bytes[at] << 8 | bytes[at + 1];
    };
    std::string text;
    for (std::size_t at = 0; at + 2 <= bytes.size(); at += 2) {
        std::uint32_t code = unitAt(at);
        if (code >= 0xD800 && code < 0xE000) {
            const std::uint32_t low = at + 4 <= bytes.size() ? unitAt(at + 2) : 0;
            const bool isPair = code < 0xDC00 && low >= 0xDC00 && low < 0xE000;
            code = isPair ? 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00) : 0xFFFD;
            if (isPair) at += 2;
        }
        putUtf8(text, code);
    }
    return text;
}

/// A length of 16 bits, then UTF-8, or UTF-16 behind its byte order mark (3GPP TS 26.245, 5.17). A
/// sample that is shorter than its length is read as far as it goes.
std::string titleOf(ByteView sample) {
    const ByteView text = slice(sample, 2, 2 + std::int64_t{BigEndian::u16(sample, 0)});
    const std::uint16_t mark = BigEndian::u16(text, 0);
    if (mark == 0xFEFF) return fromUtf16(text.subspan(2), false);
    if (mark == 0xFFFE) return fromUtf16(text.subspan(2), true);
    return Text::repairUtf8(text);
}

/// Gives each sample's text by number, reading chunk by chunk.
std::vector<std::string> titlesOf(int fd, const Track& track) {
    std::vector<std::string> titles;
    std::size_t bytes = 0;
    Bytes sample;
    for (const Chunk& chunk : track.chunks) {
        std::uint64_t at = chunk.offset;
        const std::size_t end =
            std::min<std::size_t>(std::size_t{chunk.first} + chunk.count, track.sizes.size());
        for (std::size_t i = chunk.first; i < end; i++) {
            sample.resize(std::min(track.sizes[i], 2 + mostTextBytes));
            sample.resize(FileOps::readFull(fd, sample, at));
            titles.push_back(titleOf(sample));
            bytes += titles.back().size();
            if (bytes > mostTitleBytes || titles.size() > mostChapters)
                throw MFError("too many chapters to compare");
            at += track.sizes[i];
        }
    }
    return titles;
}

}  // namespace

std::vector<Chapter> chaptersInTrack(const std::filesystem::path& file, const Track& track) {
    const FileHandle handle =
        FileHandle::open(file, O_RDONLY, "cannot open " + file.filename().string());
    std::vector<Chapter> chapters;
    std::uint64_t units = 0;
    std::size_t number = 0;
    for (std::string& title : titlesOf(handle.get(), track)) {
        const double seconds =
            std::clamp(track.presOffset + static_cast<double>(units) / track.timescale,
                       -mostSeconds, mostSeconds);
        chapters.push_back({std::llround(seconds * 1000), std::move(title)});
        units += number < track.durations.size() ? track.durations[number] : 0;
        number++;
    }
    return chapters;
}

}  // namespace marlet
