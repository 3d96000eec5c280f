#pragma once

#include <optional>
#include <string>
#include <vector>

/// Language codes (ISO 639-1, 639-2/B and /T) and their names in words.
namespace marlet::Lang {

/// A code or an English name to its canonical three-letter code; three unknown letters stay.
std::optional<std::string> code(const std::string& text);
/// A code to its English name; an unknown one in capitals.
std::string name(const std::string& code);
bool same(const std::string& a, const std::string& b);
/// What a tag begins with (BCP 47, 2.1): "en" of "en-GB". A code alone is its own first part.
std::string firstPart(const std::string& tag);
/// A list that a person typed, divided by "," ";" or "/".
std::vector<std::string> parseList(const std::string& text);
/// A short label out of a track's name, without what is told elsewhere (language, format).
std::optional<std::string> descriptor(const std::optional<std::string>& name,
                                      const std::string& language);

}  // namespace marlet::Lang
