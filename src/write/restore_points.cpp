#include "write/restore_points.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "foundation/digest.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/paths.h"
#include "foundation/syscalls.h"
#include "write/restore_manifest.h"

namespace marlet::RestorePoints {

namespace {

namespace fs = std::filesystem;

constexpr const char* blockName = "ilst.bin";
constexpr const char* manifestName = "manifest.json";
constexpr const char* noOriginal = "there is no saved original for this file";
constexpr std::size_t largestManifest = 16 * 1024 * 1024;

/// What can't be looked at isn't taken for missing: a restore point is never overwritten.
bool stands(const fs::path& path) {
    if (Sys::stat(path)) return true;
    if (errno != ENOENT && errno != ENOTDIR) failWithErrno("cannot look for the saved original");
    return false;
}

/// The folder under its temporary name; what a failure or an earlier crash left is removed.
class UnfinishedFolder {
public:
    explicit UnfinishedFolder(const fs::path& final) : path_(final) {
        path_ += ".new";
        clear();
        Durable::makeFolders(path_);
    }
    ~UnfinishedFolder() { clear(); }
    UnfinishedFolder(const UnfinishedFolder&) = delete;
    UnfinishedFolder& operator=(const UnfinishedFolder&) = delete;

    const fs::path& path() const { return path_; }

private:
    void clear() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    fs::path path_;
};

struct Saved {
    Bytes block;
    Manifest manifest;
};

Saved split(const fs::path& file, const std::vector<Atom>& atoms, std::uint64_t fileSize) {
    Saved saved;
    std::vector<Atom> kept;
    for (std::size_t i = 0; i < atoms.size(); i++) {
        if (IlstEditor::personal.contains(atoms[i].name))
            saved.manifest.carried.push_back({atoms[i].name, i});
        else
            kept.push_back(atoms[i]);
    }
    saved.block = IlstEditor::ilstBox(kept);
    saved.manifest.path = Paths::standardised(file).string();
    saved.manifest.date = Dates::now();
    saved.manifest.fileSize = fileSize;
    saved.manifest.ilstSHA256 = sha256Hex(saved.block);
    return saved;
}

/// The block first: a folder with a block counts as a restore point, and one that then lacks its
/// manifest stops every write.
void writeInto(const fs::path& folder, const Saved& saved) {
    Durable::writeFile(folder / blockName, saved.block);
    Durable::writeFile(folder / manifestName, viewOf(encode(saved.manifest)));
}

}  // namespace

fs::path root() {
    return Paths::restoreDir();
}

fs::path folder(const fs::path& file) {
    constexpr std::size_t keyLength = 20;
    const std::string path = Paths::standardised(file).string();
    return root() / sha256Hex(viewOf(path)).substr(0, keyLength);
}

bool exists(const fs::path& file) {
    return Sys::stat(folder(file) / blockName).has_value();
}

bool saveIfMissing(const fs::path& file, const std::vector<Atom>& atoms, std::uint64_t fileSize) {
    const fs::path place = folder(file);
    if (stands(place / blockName)) return false;
    const Saved saved = split(file, atoms, fileSize);
    if (stands(place)) {
        writeInto(place, saved);
        return true;
    }
    const UnfinishedFolder unfinished(place);
    writeInto(unfinished.path(), saved);
    Durable::rename(unfinished.path(), place);
    return true;
}

std::vector<Atom> originalAtoms(const fs::path& file, const std::vector<Atom>& current) {
    const fs::path place = folder(file);
    const auto json = FileOps::readSmall(place / manifestName, largestManifest);
    const auto manifest = json ? decodeManifest(*json) : std::nullopt;
    const auto block = FileOps::readSmall(place / blockName);
    if (!manifest || !block) throw MFError(noOriginal);
    if (sha256Hex(*block) != manifest->ilstSHA256) throw MFError("the saved original is damaged");

    std::vector<Atom> atoms = IlstEditor::parse(*block);
    for (const Carried& carried : manifest->carried) {
        const auto now = std::find_if(current.begin(), current.end(),
                                      [&](const Atom& atom) { return atom.name == carried.name; });
        if (now == current.end()) continue;
        const auto at = std::min<std::uint64_t>(carried.index, atoms.size());
        atoms.insert(atoms.begin() + static_cast<std::ptrdiff_t>(at), *now);
    }
    return atoms;
}

void verifySaved(const fs::path& file, const std::vector<Atom>& current, bool created) {
    const std::vector<Atom> saved = originalAtoms(file, current);
    if (created && saved != current) throw MFError("the saved copy doesn't read back identically");
    if (!created && saved.empty() && !current.empty())
        throw MFError("the older saved copy is empty");
}

}  // namespace marlet::RestorePoints
