#include "matroska/mkv_file.h"

#include <fcntl.h>

#include <algorithm>

#include "matroska/byte_window.h"

namespace marlet {

namespace {

/// Of one block, as it is stored and again when its encodings are undone. A picture of 8K without
/// any compression is smaller.
constexpr std::size_t mostBlockBytes = std::size_t{128} << 20;

}  // namespace

std::unique_ptr<MKVFile> MKVFile::open(const std::filesystem::path& url) {
    // O_NONBLOCK: a pipe that is named like a film must not hold up the reader.
    FileHandle handle(Sys::open(url, O_RDONLY | O_NONBLOCK));
    if (!handle.isOpen()) return nullptr;
    const auto attributes = Sys::fstat(handle.get());
    if (!attributes || !attributes->isRegular || attributes->size == 0) return nullptr;

    std::unique_ptr<MKVFile> file(new MKVFile);
    file->url_ = url;
    file->size_ = attributes->size;
    file->file_ = std::move(handle);
    if (!file->parseHeader()) return nullptr;
    return file;
}

std::vector<Bytes> MKVFile::data(const MKVBlock& block) const {
    const auto encodings = encodings_.find(block.track);
    std::vector<Bytes> result;
    result.reserve(block.frames.size());
    std::size_t left = mostBlockBytes;
    for (const MKVBlock::Frame& frame : block.frames) {
        Bytes bytes = stored(frame, left);
        if (encodings != encodings_.end())
            bytes = ContentDecoder::undo(encodings->second, ContentEncoding::frames,
                                         std::move(bytes), left)
                        .value_or(Bytes());
        left -= std::min(left, bytes.size());
        result.push_back(std::move(bytes));
    }
    return result;
}

Bytes MKVFile::head(const MKVBlock& block, const MKVBlock::Frame& frame, std::size_t most) const {
    // Ahead of the first byte a compressed stream tells its codes, hardly ever in more.
    constexpr std::size_t codes = 256;
    constexpr std::size_t mostCodes = std::size_t{64} << 10;
    const ContentEncodings& encoded = encodings(block.track);
    const auto size = static_cast<std::uint64_t>(std::max<std::int64_t>(frame.size, 0));
    for (std::size_t ahead = encoded.empty() ? 0 : codes;; ahead *= 4) {
        const std::size_t length = std::min<std::uint64_t>(most + ahead, size);
        Bytes bytes = stored({frame.offset, static_cast<std::int64_t>(length)}, length);
        if (!encoded.empty())
            bytes = ContentDecoder::undoBeginning(encoded, ContentEncoding::frames,
                                                  std::move(bytes), most);
        if (bytes.size() >= most || length == size || ahead == 0 || ahead >= mostCodes)
            return bytes;
    }
}

/// Less than the frame's size at the end of the file; nothing of a frame larger than `most`.
Bytes MKVFile::stored(const MKVBlock::Frame& frame, std::size_t most) const {
    if (frame.size <= 0 || frame.offset >= size_) return {};
    const std::uint64_t length =
        std::min(static_cast<std::uint64_t>(frame.size), size_ - frame.offset);
    if (length > most) return {};
    Bytes bytes(static_cast<std::size_t>(length));
    bytes.resize(readWhatIsThere(file_.get(), frame.offset, bytes));
    return bytes;
}

const MKVTrack* MKVFile::track(int number) const {
    const auto found = std::find_if(tracks_.begin(), tracks_.end(),
                                    [&](const MKVTrack& one) { return one.number == number; });
    return found == tracks_.end() ? nullptr : &*found;
}

const ContentEncodings& MKVFile::encodings(int track) const {
    static const ContentEncodings none;
    const auto found = encodings_.find(track);
    return found == encodings_.end() ? none : found->second;
}

std::optional<std::string> MKVFile::unreadable(int track) const {
    const auto encodings = encodings_.find(track);
    if (encodings == encodings_.end()) return std::nullopt;
    return ContentDecoder::obstacle(encodings->second);
}

}  // namespace marlet
