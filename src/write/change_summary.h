#pragma once

#include <string>
#include <vector>

#include "write/ilst_editor.h"

namespace marlet {

/// Tells in words what changed between two lists of tag items.
namespace ChangeSummary {

/// One text a changed item that has words ("title: Old → New"), in the order of the item types.
/// Numbers aren't decoded: a changed season reads "season: (set) → (set)".
std::vector<std::string> describe(const std::vector<Atom>& old, const std::vector<Atom>& fresh);

}  // namespace ChangeSummary
}  // namespace marlet
