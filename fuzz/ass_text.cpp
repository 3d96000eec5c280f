// A subtitle line of any bytes: what is left of it holds no override that was closed.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "convert/subtitle_text.h"
#include "foundation/bytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace marlet;
    const std::string text = textOf(ByteView(data, size));
    if (SubtitleText::assText(text).size() > text.size()) std::abort();
    const std::string plain = SubtitleText::assText("0,0,Default,,0,0,0,," + text);
    const std::size_t open = plain.find('{');
    if (open != std::string::npos && plain.find('}', open) != std::string::npos) std::abort();
    return 0;
}
