#include "screens/inspector/inspected.h"

#include "identify/scanner.h"

namespace marlet {

Inspected::Kind Inspected::kindOf(const std::filesystem::path& file) {
    const std::string extension = Scanner::extensionOf(file);
    if (extension == "mp4" || extension == "m4v") return Kind::mp4;
    return extension == "mov" ? Kind::mov : Kind::mkv;
}

}  // namespace marlet
