#include "sources/http_message.h"

#include "foundation/text.h"

namespace marlet {

std::optional<std::string> HttpAnswer::header(const std::string& name) const {
    const std::string wanted = Text::lower(name);
    for (const auto& [known, value] : headers) {
        if (Text::lower(known) == wanted) return value;
    }
    return std::nullopt;
}

}  // namespace marlet
