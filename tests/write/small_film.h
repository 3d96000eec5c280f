#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "support/temp_folder.h"
#include "write/ilst_editor.h"

namespace marlet::test {

/// The boxes of a film that is small enough to be compared byte by byte.
namespace SmallFilm {

inline constexpr std::size_t mediaSize = 5000;

Bytes joined(std::initializer_list<Bytes> pieces);
Bytes ftyp();
/// Not zeros, so that a byte that moved is a byte that differs.
Bytes media(std::size_t size = mediaSize);
Bytes mdat(std::size_t size = mediaSize);
/// A padding box of so many bytes, header included.
Bytes freeBox(std::size_t size, const std::string& type = "free");
/// The index: a 100-byte `mvhd`, a 300-byte `trak`, and what is given.
Bytes moov(const Bytes& more = {});
/// `udta` / `meta` around a tag block.
Bytes udta(const Bytes& inMeta);
Bytes taggedMoov();

/// A title "Old", an account tag and a tag that this program doesn't know.
std::vector<Atom> oldTags();
/// A much longer title and a 3,000-byte cover.
std::vector<Atom> newTags();

}  // namespace SmallFilm

/// The bytes from `at` on.
Bytes part(const Bytes& bytes, std::uint64_t at, std::uint64_t size);

}  // namespace marlet::test
