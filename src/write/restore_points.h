#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "write/change_summary.h"
#include "write/ilst_editor.h"

namespace marlet {

/// The original tags of each file, saved before its first change, written once per path and never
/// overwritten. Account tags are left out: only their names and positions are noted.
namespace RestorePoints {

std::filesystem::path root();
/// Keyed by the standardised path alone: 20 hexadecimal digits of its SHA-256.
std::filesystem::path folder(const std::filesystem::path& file);
/// True when the file has a saved block.
bool exists(const std::filesystem::path& file);

/// True when it made a restore point, false when one stood already. Durable when it returns.
bool saveIfMissing(const std::filesystem::path& file, const std::vector<Atom>& atoms,
                   std::uint64_t fileSize);
/// Reads the saved copy back and fails when it isn't what it should be.
void verifySaved(const std::filesystem::path& file, const std::vector<Atom>& current, bool created);
/// The atoms to put back; the account tags come from `current`.
std::vector<Atom> originalAtoms(const std::filesystem::path& file,
                                const std::vector<Atom>& current);

}  // namespace RestorePoints
}  // namespace marlet
