#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/records.h"
#include "write/ilst_editor.h"

namespace marlet {

/// Turns Details and a picture into the exact list of iTunes-style tag items, and merges that
/// list with what a file already holds.
namespace TagBuilder {

/// Item types that this program owns: replaced as a whole on a write.
extern const std::set<std::string> managed;
extern const std::set<std::string> managedFreeform;

std::vector<Atom> atoms(const Details& details, const std::optional<CoverImage>& artwork);
/// What isn't owned is kept, in its old order, ahead of everything new.
std::vector<Atom> merge(const std::vector<Atom>& existing, std::vector<Atom> fresh);
/// Updates cast, directors and writers of a property list and keeps its other keys.
std::optional<std::string> mergeMovi(const std::string& old,
                                     const std::optional<std::string>& fresh);
/// "us-tv|TV-PG|400|".
std::string extc(const Details& details);
/// The `iTunMOVI` property list; nothing when there is nobody to name.
std::optional<std::string> movieInfo(const Details& details);
struct People {
    std::vector<std::string> cast;
    std::vector<std::string> directors;
    std::vector<std::string> writers;
};
/// Whom an `iTunMOVI` property list names; nobody when it is none.
People people(const std::string& movieInfo);

}  // namespace TagBuilder
}  // namespace marlet
