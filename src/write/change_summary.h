#pragma once

#include <map>
#include <string>
#include <vector>

#include "write/ilst_editor.h"

namespace marlet {

/// Tells in words what changed between two lists of tag items.
namespace ChangeSummary {

/// The words for an item, by its type or freeform name; what has none is never told.
extern const std::map<std::string, std::string> labels;

/// One text a changed item that has words ("title: Old → New"), in the order of the item types.
/// Numbers aren't decoded: a changed season reads "season: (set) → (set)".
std::vector<std::string> describe(const std::vector<Atom>& old, const std::vector<Atom>& fresh);

}  // namespace ChangeSummary
}  // namespace marlet
