#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/bytes.h"

// Parts of a film's tracks that tests change and look at.
namespace marlet::test {

/// `esds` with that ES_ID, AAC of so many channels in it; with its sizes in four bytes each or in
/// one.
enum class Sizes { Short, Padded };
Bytes esdsBox(std::uint16_t id, Sizes sizes = Sizes::Padded, std::uint8_t channels = 2);

/// The body of a sound sample entry: fields of that version (0, or QuickTime's 1 and 2), boxes.
Bytes soundEntry(const Bytes& boxes, std::uint16_t version = 0, std::uint16_t channels = 2);
/// The body of a picture's entry, and of one that has no fields of its own.
Bytes pictureEntry(const Bytes& boxes);
Bytes systemEntry(const Bytes& boxes);

/// The payload of a box inside the nth track, by its way from `trak`.
ByteView trackBox(ByteView file, int track, const std::vector<std::string_view>& path);
/// Writes into the file where that payload has the offset.
void patchTrack(Bytes& file, int track, const std::vector<std::string_view>& path,
                std::size_t offset, ByteView with);
/// The ES_ID bytes in a film built with esdsBox; it must hold exactly one such track.
std::size_t streamIDAt(ByteView file, int track);

}  // namespace marlet::test
