#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/syscalls.h"

namespace marlet {

/// A range of a file.
struct FilePart {
    std::uint64_t at = 0;
    std::uint64_t size = 0;
    std::uint64_t end() const { return at + size; }
    bool operator==(const FilePart&) const = default;
};

/// An MP4 or QuickTime file that is to be laid out anew: what stands at its top level.
struct SourceFile {
    std::filesystem::path path;
    FileHandle handle;
    std::uint64_t size = 0;
    std::optional<FilePart> ftyp;  ///< whole box
    Bytes moov;                    ///< whole box, header included
    std::vector<FilePart> media;   ///< payloads of `mdat`, ascending
    bool wideMedia = false;        ///< an `mdat` has a 64-bit size
    std::vector<FilePart> others;  ///< whole boxes that are kept, neighbours joined
};

namespace SourceFiles {

/// Opens the file and lists its top level (ISO/IEC 14496-12, 4.2). `free`, `skip` and `wide` are
/// left out; what tells that media lies in fragments, or hold offsets into the file that can't be
/// kept true, is refused with a sentence. So is a file that ends inside a box.
SourceFile open(const std::filesystem::path& path);

}  // namespace SourceFiles
}  // namespace marlet
