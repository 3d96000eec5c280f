#pragma once

#include <string>
#include <string_view>

namespace marlet {

/// UTF-8 to code points and back; a bad byte stands for itself.
std::u32string codePointsOf(std::string_view text);
std::string utf8Of(std::u32string_view points);

}  // namespace marlet
