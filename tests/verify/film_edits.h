#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "support/box_builder.h"

// Films for the proof of a rebuild, and small lies told in one of them.
namespace marlet::test {

/// A box on the way down: its type and which one of that type it is, from 0.
struct Step {
    std::string_view type;
    int nth = 0;
};
using BoxPath = std::vector<Step>;

/// Where the payload of the box lies in the file; throws when there is none.
std::size_t payloadAt(ByteView file, const BoxPath& path);
ByteView payloadIn(ByteView file, const BoxPath& path);
/// The file with other bytes at this place of the box's payload.
Bytes edited(Bytes file, const BoxPath& path, std::size_t at, ByteView with);
/// The file with all bits of one byte turned.
Bytes flipped(Bytes file, std::size_t at);

/// moov/trak[nth], and boxes of the track further down.
BoxPath trackPath(int nth, const BoxPath& below = {});
BoxPath mediaPath(int nth, const BoxPath& below = {});
BoxPath tablePath(int nth, std::string_view table);

/// 4 s of picture (40 samples), sound (80) and two chapters in a text track, with tags and a
/// chapter list; the sound lies together.
Movie film();
/// The same film with everything interleaved.
Movie interleaved(Movie movie);

}  // namespace marlet::test
