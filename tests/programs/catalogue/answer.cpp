#include "catalogue/answer.h"

#include <nlohmann/json.hpp>

namespace marlet::catalogue {

namespace {

struct Refusal {
    int status;
    int code;
    const char* words;
};

constexpr Refusal refusals[] = {
    {401, 7, "Invalid API key: You must be granted a valid key."},
    {404, 34, "The resource you requested could not be found."},
    {429, 25, "Your request count is over the allowed limit."},
    {500, 11, "Internal error: Something went wrong, contact TMDb."},
    {503, 9, "Service offline: This service is temporarily offline, try again later."},
};

}  // namespace

Answer refusal(int status) {
    for (const Refusal& known : refusals)
        if (known.status == status) return refusal(status, known.code, known.words);
    return refusal(status, 15, "Failed.");
}

Answer refusal(int status, int code, const std::string& words) {
    const nlohmann::json body = {
        {"success", false}, {"status_code", code}, {"status_message", words}};
    return {status, body.dump(), jsonType};
}

}  // namespace marlet::catalogue
