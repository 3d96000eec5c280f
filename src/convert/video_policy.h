#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "foundation/bytes.h"
#include "matroska/mkv_file.h"

namespace marlet {

/// Whether a video track can go into the new file as it is, or why it can't.
class VideoVerdict {
public:
    static VideoVerdict copy() { return VideoVerdict(std::nullopt); }
    static VideoVerdict unsupported(std::string message) {
        return VideoVerdict(std::move(message));
    }

    bool isCopy() const { return !message_; }
    /// The reason in words; empty when the video can be copied.
    std::string message() const { return message_.value_or(""); }
    bool operator==(const VideoVerdict&) const = default;

private:
    explicit VideoVerdict(std::optional<std::string> message) : message_(std::move(message)) {}
    std::optional<std::string> message_;
};

/// What Apple TV plays. Video is never re-encoded, so what it doesn't play can't be converted.
namespace VideoPolicy {

VideoVerdict check(const MKVTrack& track);
/// Bits a luma sample, from an AVC decoder configuration record (ISO/IEC 14496-15, 5.3.3.1);
/// nothing for what is no such record.
std::optional<std::int64_t> avcBitDepth(ByteView configuration);

}  // namespace VideoPolicy
}  // namespace marlet
