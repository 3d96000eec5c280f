#pragma once

#include <cstdint>
#include <string>

namespace marlet {

/// A track's language as three letters; "und" for what is no language: a field that was never set,
/// and QuickTime's numbers of languages.
std::string knownLanguage(const std::string& letters);
/// From the packed field of `mdhd`: three letters of five bits (ISO/IEC 14496-12, 8.4.2).
std::string knownLanguage(std::uint16_t packed);

}  // namespace marlet
