// Answers of a model on this machine from anywhere: as a completion, and as what a whole completion
// says. What is read is made a guess and compared with names.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "foundation/errors.h"
#include "identify/guess_reading.h"
#include "identify/model_wire.h"

using namespace marlet;

namespace {

void read(ByteView completion) {
    try {
        const FileGuess answer = ModelWire::answer(completion);
        const AIGuesser::Input input{"Heat.1995.x264.mkv", "/films/Crime", {}};
        const auto settled = GuessReading::settled({}, ModelCall::guessFrom(answer), input);
        // Half an episode never gets through, and no year before films.
        if (settled && settled->season.has_value() != settled->episode.has_value()) std::abort();
        if (settled && settled->year && *settled->year < 1901) std::abort();
        if (settled && settled->title.empty()) std::abort();
    } catch (const MFError&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes(data, size);
    read(bytes);
    const std::string text = textOf(bytes);
    const nlohmann::json message = {{"message", {{"content", text}}}};
    const nlohmann::json whole = {{"choices", nlohmann::json::array({message})}};
    const std::string completion =
        whole.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    read(viewOf(completion));
    try {
        (void)ModelWire::firstModel(bytes);
    } catch (const MFError&) {
    }
    return 0;
}
