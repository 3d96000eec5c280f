#include "write/journal.h"

#include <cerrno>
#include <nlohmann/json.hpp>
#include <string>

#include "foundation/durable.h"
#include "foundation/file_ops.h"
#include "foundation/paths.h"
#include "foundation/text.h"

namespace marlet {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr std::size_t largestJournal = 1024 * 1024;

// A name on Linux is bytes, JSON is text. A path that isn't UTF-8 is written for reading with its
// bad bytes replaced, and beside it, exactly, in hexadecimal.
constexpr const char* exactly = "Hex";

void put(json& out, const std::string& key, const fs::path& path) {
    const std::string text = Text::repairUtf8(viewOf(path.native()));
    out[key] = text;
    if (text != path.native()) out[key + exactly] = toHex(viewOf(path.native()));
}

std::string fromHex(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

fs::path path(const json& in, const std::string& key) {
    if (in.contains(key + exactly)) return fromHex(in.at(key + exactly).get<std::string>());
    return in.at(key).get<std::string>();
}

/// A disk that doesn't answer may still hold the copy.
bool namesNothing(int error) {
    return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
}

}  // namespace

std::string WriteJournal::encode() const {
    json out;
    put(out, "file", file);
    put(out, "temp", temp);
    out["size"] = size;
    return out.dump();
}

std::optional<WriteJournal> WriteJournal::decode(ByteView text) {
    try {
        const json in = json::parse(text.begin(), text.end());
        const json& size = in.at("size");
        if (!size.is_number_unsigned()) return std::nullopt;
        return WriteJournal{path(in, "file"), path(in, "temp"), size.get<std::uint64_t>()};
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void WriteJournal::save() const {
    Durable::makeFolders(Paths::documentsDir());
    Durable::writeFile(Paths::journalFile(), viewOf(encode()));
}

std::optional<WriteJournal> WriteJournal::load() {
    const auto text = FileOps::readSmall(Paths::journalFile(), largestJournal);
    return text ? decode(*text) : std::nullopt;
}

void WriteJournal::remove() {
    Durable::remove(Paths::journalFile());
}

bool WriteJournal::hasCopy() const {
    // Our copy is a file of its own, never a link, and never empty: an empty video isn't written.
    const auto found = Sys::lstat(temp);
    if (!found) return !namesNothing(errno);
    return found->isRegular && size > 0 && found->size == size;
}

}  // namespace marlet
