#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/errors.h"

namespace marlet {

/// The new tag block doesn't fit beside the media data. Kept apart from MFError because the
/// pipeline has a remedy for it.
class NoRoom : public std::exception {
public:
    explicit NoRoom(std::string description) : description_(std::move(description)) {}
    const std::string& description() const noexcept { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }

private:
    std::string description_;
};

/// One tag item: its type ("©nam", "covr", "----") and its whole box.
struct Atom {
    std::string name;
    Bytes bytes;
    bool operator==(const Atom&) const = default;
};

/// An image that goes into a `covr` item.
struct CoverImage {
    Bytes data;
    bool isPNG = false;
    bool operator==(const CoverImage&) const = default;
};

/// Computes a new index box with the tag block (`moov`/`udta`/`meta`/`ilst`) replaced, laid over
/// the old index and the padding beside it so that no byte of media moves. What it can't fit, it
/// refuses.
namespace IlstEditor {

/// Account tags: they name the person who bought a file; never written, never saved, never lost.
extern const std::set<std::string> personal;

struct Layout {
    /// last: `moov` behind all media data. front: `moov` ahead of it.
    enum class Kind { last, front };
    Kind kind = Kind::last;
    std::uint64_t moovPos = 0;
    std::uint64_t moovSize = 0;
    std::uint64_t total = 0;         ///< end of the last top-level box
    std::uint64_t trailingFree = 0;  ///< last: bytes from the end of `moov` to total
    std::uint64_t gapStart = 0;      ///< front: end of `ftyp`
    std::uint64_t leadingFree = 0;   ///< front: bytes from gapStart to moovPos
    std::uint64_t mdatPos = 0;       ///< front: first `mdat`
    bool operator==(const Layout&) const = default;
};

struct Plan {
    std::uint64_t offset = 0;    ///< where the region starts in the file
    Bytes region;                ///< the new bytes
    Bytes oldRegion;             ///< what the file holds there now
    std::uint64_t newTotal = 0;  ///< file size after the edit
    Layout layout;
    std::uint64_t newMoovSize = 0;

    /// The plan that puts every byte and the length back.
    Plan undo() const;
};

// Building.
Bytes be32(std::uint32_t value);
Bytes box(const std::string& type, ByteView payload);
Bytes ilstBox(const std::vector<Atom>& atoms);
Atom text(const std::string& name, const std::string& value);
/// The value as `bytes` big-endian bytes.
Atom integer(const std::string& name, std::int64_t value, int bytes);
Atom freeform(const std::string& name, const std::string& value);
Atom covers(const std::vector<CoverImage>& list);

// Reading.
std::vector<Atom> parse(ByteView ilstBox);
/// The first `data` child as text, if its type is 1 (UTF-8).
std::optional<std::string> textValue(const Atom& atom);
/// The `name` child of a `----` item; nothing for other items or without one.
std::optional<std::string> freeformName(const Atom& atom);
/// The file's tag block; empty when it has none.
std::vector<Atom> currentIlst(const std::filesystem::path& file);

// Editing.
Layout layout(const std::filesystem::path& file);
/// The whole `moov` box, header included.
Bytes readMoov(const std::filesystem::path& file, const Layout& layout);
Bytes replaceIlst(const Bytes& moov, const Bytes& newIlst);
/// Throws NoRoom when the new block can't be laid in.
Plan plan(const std::filesystem::path& file, const Bytes& newIlst);
/// Writes the region, sets a `last` file's length, flushes. The one function here that writes.
void apply(const Plan& plan, const std::filesystem::path& file);

}  // namespace IlstEditor
}  // namespace marlet
