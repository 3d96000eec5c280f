#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace marlet {

using Moment = std::chrono::sys_seconds;

namespace Dates {

Moment now();
/// "2026-11-21T10:15:00Z".
std::string iso8601(Moment moment);
std::optional<Moment> parseIso8601(const std::string& text);
/// Local time by an ICU date pattern in English, e.g. "yyyy-MM-dd HH:mm:ss", "EEEE, MMMM d".
std::string local(Moment moment, const std::string& pattern);
/// Midnight of the local day that holds the moment.
Moment startOfLocalDay(Moment moment);
/// "Sat, 21 Nov 2026 10:15:00 GMT" (RFC 9110); nothing for anything else.
std::optional<Moment> parseHttpDate(const std::string& text);

}  // namespace Dates
}  // namespace marlet
