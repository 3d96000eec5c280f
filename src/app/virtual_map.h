#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace marlet {

/// The map of a virtual run: made-up names of real files.
namespace VirtualMap {

struct Entry {
    std::string fake;        ///< the path that is judged
    std::string real;        ///< the file it stands for, below the library's root
    bool expectAsk = false;  ///< nobody could know, so the person has to be asked
    bool operator==(const Entry&) const = default;
};
/// Lines of fields separated by tabs: the fake path, the real one, and "1" where the person has to
/// be asked. Lines with fewer than two fields, or whose first begins with "#", are none.
std::vector<Entry> parse(std::string_view text);

}  // namespace VirtualMap
}  // namespace marlet
