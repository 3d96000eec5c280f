#pragma once

#include <optional>

#include "catalogue/answer.h"
#include "catalogue/catalogue.h"

namespace marlet::catalogue {

/// The same titles as the other services tell them: "/uts/v3/..." as the web interface behind
/// Apple's TV app, "/itunes/..." as the iTunes Store. Nothing for any other path.
std::optional<Answer> answerAsAppleTV(const Catalogue& catalogue, const Question& question);
std::optional<Answer> answerAsITunes(const Catalogue& catalogue, const Question& question);

/// What the service hands to its web client, and wants back with each request.
inline constexpr const char* sampleKey = "5amp1e:utsk:00/42";

}  // namespace marlet::catalogue
