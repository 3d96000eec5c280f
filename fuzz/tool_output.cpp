// Whatever a tool prints, in whatever pieces: the tail stays valid UTF-8 within its bound, and
// progress within 0 and 1. The first byte of each piece is its length.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "foundation/text.h"
#include "foundation/tool_output.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace marlet;
    constexpr std::size_t longestCharacter = 4;
    ToolOutput output([](double done) {
        if (!(done >= 0 && done <= 1)) std::abort();
    });
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    while (!rest.empty()) {
        const auto announced = static_cast<unsigned char>(rest.front());
        rest.remove_prefix(1);
        const std::string_view chunk = rest.substr(0, announced);
        rest.remove_prefix(chunk.size());
        output.take(chunk);
        const std::string tail = output.tail();
        if (tail.size() > ToolOutput::mostCharacters * longestCharacter) std::abort();
        if (Text::repairUtf8(viewOf(tail)) != tail) std::abort();
    }
    return 0;
}
