// A map of made-up names of any bytes gives entries whose fields stand in it.
#include "app/virtual_map.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    for (const auto& entry : marlet::VirtualMap::parse(text)) {
        const bool isOne = !entry.fake.starts_with('#') &&
                           (entry.fake + entry.real).find_first_of("\t\n") == std::string::npos &&
                           text.find(entry.fake + "\t" + entry.real) != std::string::npos;
        if (!isOne) std::abort();
    }
    return 0;
}
