// WAVE files: Microsoft and IBM, "Multimedia Programming Interface and Data Specifications 1.0".
#include "convert/wav_writer.h"

#include <fcntl.h>

#include <algorithm>
#include <bit>
#include <string_view>

#include "foundation/file_ops.h"

namespace marlet::AudioConvert {

namespace {

constexpr std::uint64_t headerSize = 44;
constexpr std::uint64_t sizeUnknown = 0xFFFFFFFF;
constexpr int bytesASample = 2;

void put16(Bytes& bytes, std::uint32_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

void put32(Bytes& bytes, std::uint64_t value) {
    put16(bytes, static_cast<std::uint32_t>(value));
    put16(bytes, static_cast<std::uint32_t>(value >> 16));
}

void putSize(Bytes& bytes, std::uint64_t size) {
    put32(bytes, std::min(size, sizeUnknown));
}

}  // namespace

WAVWriter::WAVWriter(const std::filesystem::path& file, int channels, std::uint32_t sampleRate)
    : file_(FileHandle::open(file, O_WRONLY | O_CREAT | O_TRUNC, "write failed", 0600)),
      channels_(channels),
      sampleRate_(sampleRate),
      at_(headerSize) {}

void WAVWriter::write(std::span<const std::int16_t> samples) {
    static_assert(std::endian::native == std::endian::little);
    const ByteView bytes(reinterpret_cast<const std::uint8_t*>(samples.data()),
                         samples.size_bytes());
    FileOps::writeAll(file_.get(), bytes, at_);
    at_ += bytes.size();
}

void WAVWriter::finish() {
    FileOps::writeAll(file_.get(), header(), 0);
}

Bytes WAVWriter::header() const {
    constexpr std::uint32_t formatSize = 16;
    constexpr std::uint32_t integers = 1;
    constexpr std::uint64_t riffHead = 8;
    const auto frameSize = static_cast<std::uint32_t>(channels_ * bytesASample);
    Bytes bytes;
    append(bytes, viewOf("RIFF"));
    putSize(bytes, at_ - riffHead);
    append(bytes, viewOf("WAVEfmt "));
    put32(bytes, formatSize);
    put16(bytes, integers);
    put16(bytes, static_cast<std::uint32_t>(channels_));
    put32(bytes, sampleRate_);
    put32(bytes, std::uint64_t{sampleRate_} * frameSize);
    put16(bytes, frameSize);
    put16(bytes, bytesASample * 8);
    append(bytes, viewOf("data"));
    putSize(bytes, at_ - headerSize);
    return bytes;
}

}  // namespace marlet::AudioConvert
