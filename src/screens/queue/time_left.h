#pragma once

#include <QString>

namespace marlet {

/// A time that is only guessed, in round words: "20 seconds", "1 minute", "2 hours 10 minutes".
/// Empty for what is no time.
QString timeLeftWords(double seconds);

}  // namespace marlet
