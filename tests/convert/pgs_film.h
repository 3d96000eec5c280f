#pragma once

#include <cstdint>

#include "support/box_builder.h"
#include "support/mkv_builder.h"
#include "support/pgs_builder.h"

namespace marlet::test {

/// A Matroska file with English sound, track 1, and English picture subtitles: track 2 shows
/// nothing but forced ones, track 3 none, track 4 both.
inline Bytes filmWithPictures() {
    const Bytes english = mkv::text(0x22B59C, "eng");
    const auto pictures = [&](std::uint64_t number) {
        return mkv::entry(number, 17, "S_HDMV/PGS", {english});
    };
    const auto shown = [](std::uint64_t track, std::int16_t time, bool isForced) {
        return mkv::simpleBlock(track, time,
                                pgs::compositionSegment({{.id = 1, .forced = isForced}}));
    };
    return joined({mkv::header(),
                   mkv::segment({mkv::info(),
                                 mkv::tracks({mkv::entry(1, 2, "A_AAC", {english}), pictures(2),
                                              pictures(3), pictures(4)}),
                                 mkv::cluster(0, {shown(2, 0, true), shown(3, 0, false),
                                                  shown(4, 0, false), shown(2, 20, true)}),
                                 mkv::cluster(100, {shown(4, 0, true), shown(3, 5, false)})})});
}

}  // namespace marlet::test
