// WAVE files: Microsoft and IBM, "Multimedia Programming Interface and Data Specifications 1.0",
// and WAVEFORMATEXTENSIBLE.
#include "convert/wav.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/syscalls.h"

namespace marlet::AudioConvert {

namespace {

constexpr std::int64_t riffHeader = 12;
constexpr std::int64_t chunkHeader = 8;
constexpr std::size_t shortestFormat = 16;
constexpr std::size_t longestFormat = 40;
constexpr std::uint16_t formatFloat = 3;
constexpr std::uint16_t formatExtensible = 65534;
constexpr std::size_t subformat = 24;
constexpr std::uint32_t sizeUnknown = 0xFFFFFFFF;
/// Decoders write a handful; a file of nothing but chunk headers would be read for an hour.
constexpr int mostChunks = 10'000;

[[noreturn]] void refuse() {
    throw MFError("the decoded sound isn't a readable WAV file");
}

std::uint16_t little16(ByteView data, std::size_t at) {
    return static_cast<std::uint16_t>(data[at] | data[at + 1] << 8);
}

std::uint32_t little32(ByteView data, std::size_t at) {
    return little16(data, at) | static_cast<std::uint32_t>(little16(data, at + 2)) << 16;
}

struct Chunk {
    std::string_view name() const { return {reinterpret_cast<const char*>(header.data()), 4}; }
    std::uint32_t size() const { return little32(header, 4); }
    std::array<std::uint8_t, chunkHeader> header;
};

/// A "fmt " chunk; its rate, channels and sample size stand at fixed places.
WAV readFormat(int fd, std::int64_t at, std::uint32_t size) {
    std::array<std::uint8_t, longestFormat> room{};
    const std::span<std::uint8_t> wanted(room.data(), std::min<std::size_t>(size, room.size()));
    const std::size_t got = FileOps::readFull(fd, wanted, static_cast<std::uint64_t>(at));
    if (got < shortestFormat) refuse();
    const ByteView format = wanted.first(got);
    std::uint16_t tag = little16(format, 0);
    if (tag == formatExtensible && got >= subformat + 2) tag = little16(format, subformat);
    return {.channels = little16(format, 2),
            .sampleRate = static_cast<double>(little32(format, 4)),
            .bits = little16(format, 14),
            .isFloat = tag == formatFloat};
}

/// A decoder that writes into a pipe, or more than 4 GiB, can't say the size.
std::int64_t dataSize(std::uint32_t stated, std::int64_t left) {
    return stated == 0 || stated == sizeUnknown || stated > left ? left : stated;
}

WAV readChunks(int fd, std::int64_t fileSize) {
    std::optional<WAV> wav;
    std::int64_t at = riffHeader;
    for (int i = 0; i < mostChunks; i++) {
        Chunk chunk;
        if (FileOps::readFull(fd, chunk.header, static_cast<std::uint64_t>(at)) < chunkHeader)
            refuse();
        at += chunkHeader;
        if (chunk.name() == "fmt ") {
            wav = readFormat(fd, at, chunk.size());
        } else if (chunk.name() == "data" && wav) {
            wav->dataOffset = at;
            wav->dataSize = dataSize(chunk.size(), std::max<std::int64_t>(fileSize - at, 0));
            return *wav;
        }
        at += std::int64_t{chunk.size()} + chunk.size() % 2;
    }
    refuse();
}

}  // namespace

WAV readWAVHeader(const std::filesystem::path& file) {
    const FileHandle handle =
        FileHandle::open(file, O_RDONLY, "the decoded sound could not be opened");
    const auto stat = Sys::fstat(handle.get());
    if (!stat) failWithErrno("the decoded sound could not be opened");
    return readChunks(handle.get(), static_cast<std::int64_t>(stat->size));
}

}  // namespace marlet::AudioConvert
