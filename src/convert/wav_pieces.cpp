#include "convert/wav_pieces.h"

#include <fcntl.h>

#include <algorithm>

#include "foundation/file_ops.h"

namespace marlet::AudioConvert {

WAVPieces::WAVPieces(const std::filesystem::path& file, const WAV& wav, std::size_t frames)
    : file_(FileHandle::open(file, O_RDONLY, "the decoded sound could not be opened")),
      wav_(wav),
      frameSize_(static_cast<std::size_t>(wav.channels) * static_cast<std::size_t>(wav.bits) / 8),
      buffer_(frames * frameSize_) {}

ByteView WAVPieces::next() {
    const auto left = static_cast<std::size_t>(std::max<std::int64_t>(wav_.dataSize - at_, 0));
    const std::span<std::uint8_t> wanted(buffer_.data(), std::min(left, buffer_.size()));
    const std::size_t got =
        FileOps::readFull(file_.get(), wanted, static_cast<std::uint64_t>(wav_.dataOffset + at_));
    at_ += static_cast<std::int64_t>(got);
    return {buffer_.data(), got - got % frameSize_};
}

double WAVPieces::done() const {
    if (wav_.dataSize <= 0) return 1;
    return static_cast<double>(at_) / static_cast<double>(wav_.dataSize);
}

}  // namespace marlet::AudioConvert
