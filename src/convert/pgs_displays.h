#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "convert/pgs_objects.h"
#include "convert/pgs_parser.h"
#include "convert/pgs_segments.h"

namespace marlet {

/// What a stream of segments puts on the screen, one display after the other. An event begins and
/// ends with compositions; the one that is on the screen when the stream stops has no end, and is
/// none.
class PGSDisplays {
public:
    using Body = std::function<void(PGSParser::Event)>;

    /// Takes the segments of a frame, all of one time, and hands out the event that they end, if
    /// any: since it lasted from an earlier time, a frame ends one at most.
    void frame(ByteView segments, std::int64_t ms, const Body& body);

private:
    /// On the screen; its pictures are decoded when it has lasted.
    struct Display {
        PGSParser::Event event;
        std::map<int, std::shared_ptr<const PGSPicture>> pictures;
    };

    void compose(ByteView payload);
    void show(std::int64_t ms, const Body& body);
    Display pendingDisplay(std::int64_t ms) const;

    PGSSegments::Palette palette_{};
    PGSObjects objects_;
    std::optional<PGSSegments::Composition> pending_;
    std::optional<Display> shown_;
};

}  // namespace marlet
