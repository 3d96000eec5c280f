#include "identify/file_names.h"

#include "foundation/bytes.h"
#include "foundation/text.h"

namespace marlet::FileNames {

std::string name(const std::filesystem::path& file) {
    return Text::repairUtf8(viewOf(file.filename().native()));
}

std::string base(const std::filesystem::path& file) {
    const std::string whole = name(file);
    const std::size_t dot = whole.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot > 0 && dot + 1 < whole.size() &&
                              whole.find(' ', dot) == std::string::npos;
    return hasExtension ? whole.substr(0, dot) : whole;
}

}  // namespace marlet::FileNames
