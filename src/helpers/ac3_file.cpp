#include "helpers/ac3_file.h"

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "helpers/dolby_sound.h"
#include "helpers/matroska_media.h"

namespace marlet::AC3File {

namespace {

/// Hands out the heads of frames from a window over the file.
class Window {
public:
    explicit Window(const FileHandle& file) : file_(file) {}

    ByteView at(std::uint64_t at, std::size_t count) {
        if (at < start_ || at + count > start_ + bytes_.size()) {
            bytes_.resize(windowSize);
            bytes_.resize(FileOps::readFull(file_.get(), bytes_, at));
            start_ = at;
        }
        const ByteView rest = ByteView(bytes_).subspan(static_cast<std::size_t>(at - start_));
        return rest.first(std::min(rest.size(), count));
    }

private:
    static constexpr std::size_t windowSize = std::size_t{256} * 1024;
    const FileHandle& file_;
    std::uint64_t start_ = 0;
    Bytes bytes_;
};

}  // namespace

TrackMedia read(const FileHandle& file, std::uint64_t size) {
    constexpr std::size_t longestSample = 65'536;
    TrackMedia media;
    media.handler = boxCode("soun");
    media.mediaHeader = MediaHeaders::sound();
    Window window(file);
    for (std::uint64_t at = 0; at < size;) {
        const auto frame = DolbySound::frame(window.at(at, DolbySound::longestHead));
        if (!frame || frame->bytes == 0 || frame->bytes > size - at) break;
        if (frame->isDependent && !media.frames.sizes.empty()) {
            media.frames.sizes.back() += frame->bytes;
        } else {
            media.frames.offsets.push_back(at);
            media.frames.sizes.push_back(frame->bytes);
            media.times.durations.push_back(frame->length);
            media.times.length += frame->length;
        }
        at += frame->bytes;
    }
    if (media.frames.sizes.empty()) throw MFError("a sound file doesn't begin with a frame of AC3");
    const auto description = DolbySound::describe(
        window.at(0, std::min<std::size_t>(media.frames.sizes.front(), longestSample)));
    if (!description) throw MFError("a sound file doesn't begin with a frame of AC3");
    media.entry = description->entry;
    media.times.timescale = description->rate;
    return media;
}

}  // namespace marlet::AC3File
