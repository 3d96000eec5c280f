#include "convert/pgs_parser.h"

#include <set>

#include "convert/pgs_displays.h"

namespace marlet::PGSParser {

void forEachEvent(const MKVFile& mkv, const MKVTrack& track, RunControl& control,
                  const std::function<void(Event)>& body) {
    constexpr std::int64_t nsPerMs = 1'000'000;
    constexpr std::int64_t blocksPerCheck = 200;
    PGSDisplays displays;
    std::int64_t blocks = 0;
    mkv.forEachBlock(std::set<int>{track.number}, {}, [&](const MKVBlock& block) {
        if (blocks++ % blocksPerCheck == 0) control.checkpoint();
        for (const Bytes& frame : mkv.data(block))
            displays.frame(frame, block.timeNs / nsPerMs, body);
        return true;
    });
}

std::vector<Event> events(const MKVFile& mkv, const MKVTrack& track, RunControl& control) {
    std::vector<Event> all;
    forEachEvent(mkv, track, control, [&](Event event) { all.push_back(std::move(event)); });
    return all;
}

}  // namespace marlet::PGSParser
