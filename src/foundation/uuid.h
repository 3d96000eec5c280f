#pragma once

#include <string>

namespace marlet {

/// A new random UUID (RFC 9562, version 4), upper case.
std::string newUUID();
/// 32 hexadecimal digits of either case in groups of 8, 4, 4, 4 and 12.
bool isUUID(const std::string& text);

}  // namespace marlet
