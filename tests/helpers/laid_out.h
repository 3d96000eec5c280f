#pragma once

#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "helpers/relayout.h"
#include "support/box_builder.h"

namespace marlet::test {

/// Lays a file of these bytes out anew and gives the result's bytes. The paths of the request are
/// filled in.
Bytes laidOut(ByteView file, Relayout::Request request = {});
/// The sentence with which it is refused; fails the test when it isn't, or when an output stays.
std::string refusal(ByteView file, Relayout::Request request = {});

/// The types of the top-level boxes, in order.
std::vector<std::string> topTypes(ByteView file);
/// The whole nth top-level box of that type.
ByteView topBox(ByteView file, std::string_view type, int nth = 0);

/// Where two indexes differ, chunk tables and the sizes of what holds them aside: paths like
/// "moov/trak[1]/mdia/mdhd". Empty when every other box is byte for byte the same, in order.
std::vector<std::string> changedBoxes(ByteView before, ByteView after);

/// Whether the first so many tracks hold the same samples.
bool samplesEqual(ByteView before, ByteView after, int tracks);

/// The sound layout of a file's bytes, in seconds.
double soundLayout(ByteView file);

/// A film of picture and sound whose sound lies behind the picture.
Movie badlyLaidOut(std::uint32_t seconds = 10);

}  // namespace marlet::test
