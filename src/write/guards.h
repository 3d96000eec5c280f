#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/run_control.h"
#include "write/ilst_editor.h"

namespace marlet {

namespace WriteGuard {
/// Fails when the path lies in a "Media Library" folder and changes there are not allowed.
void check(const std::filesystem::path& path);
}  // namespace WriteGuard

namespace TagWriter {

/// Names of the programs that have the file open for writing; this process doesn't count.
std::vector<std::string> openForWriting(const std::filesystem::path& file);
Bytes readRange(const std::filesystem::path& file, std::uint64_t offset, std::uint64_t count);
bool sameRange(const std::filesystem::path& a, const std::filesystem::path& b, std::uint64_t from,
               std::uint64_t count, RunControl& control);

/// Whether the candidate differs from the original only and exactly as planned.
struct RegionProof {
    std::vector<std::string> reasons;  ///< empty: proved
    /// SHA-256 of the whole candidate, from the same pass; empty when the size was wrong.
    std::string candidateDigest;
};
RegionProof proveRegionEdit(const std::filesystem::path& original,
                            const std::filesystem::path& candidate, const IlstEditor::Plan& plan,
                            const std::vector<Atom>& target, RunControl& control);
/// The reasons of proveRegionEdit.
std::vector<std::string> verifyRegionEdit(const std::filesystem::path& original,
                                          const std::filesystem::path& candidate,
                                          const IlstEditor::Plan& plan,
                                          const std::vector<Atom>& target, RunControl& control);

}  // namespace TagWriter
}  // namespace marlet
