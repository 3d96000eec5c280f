#pragma once

#include <string>

#include "foundation/languages.h"

// A track's language as a plan judges it: by the first part of its tag, so that "en-GB" (BCP 47) is
// English.
namespace marlet::PlanLanguage {

/// The canonical code, or the first part as it stands when it has none.
inline std::string code(const std::string& tag) {
    const std::string part = Lang::firstPart(tag);
    return Lang::code(part).value_or(part);
}
inline std::string name(const std::string& tag) {
    return Lang::name(Lang::firstPart(tag));
}
inline bool same(const std::string& a, const std::string& b) {
    return code(a) == code(b);
}

}  // namespace marlet::PlanLanguage
