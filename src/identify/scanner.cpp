#include "identify/scanner.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <system_error>
#include <unordered_set>

#include "foundation/paths.h"
#include "foundation/text.h"

namespace marlet::Scanner {

namespace fs = std::filesystem;

const std::set<std::string> extensions = {"mp4", "m4v", "mkv", "mov"};

namespace {

/// Folders that a Mac shows as one thing: what is in them is an application's own business.
constexpr std::array<std::string_view, 20> packages = {
    "app",           "bundle",        "framework",    "plugin",     "kext",
    "photoslibrary", "tvlibrary",     "musiclibrary", "aplibrary",  "migratedphotolibrary",
    "imovielibrary", "imovieproject", "rcproject",    "fcpbundle",  "fcpcache",
    "theater",       "band",          "logicx",       "screenflow", "sparsebundle"};

bool isPackage(const fs::path& folder) {
    return std::find(packages.begin(), packages.end(), extensionOf(folder)) != packages.end();
}

bool isHidden(const fs::path& path) {
    const std::string name = path.filename().native();
    return !name.empty() && name.front() == '.';
}

bool isVideo(const fs::path& path) {
    return extensions.contains(extensionOf(path));
}

/// The other tagging tools' way of keeping what a file was.
bool isKeptOriginal(const fs::path& path) {
    return Text::endsWith(path.stem().native(), "_original");
}

/// One folder's files and the folders below it. A folder that can't be read gives neither.
class FolderWalk {
public:
    FolderWalk(const fs::path& root, std::vector<fs::path>& out) : out_(out) {
        // A list of folders to go and no recursion: depth is the person's, not the stack's.
        waiting_.push_back(root);
        while (!waiting_.empty()) {
            const fs::path folder = std::move(waiting_.back());
            waiting_.pop_back();
            walk(folder);
        }
    }

private:
    void walk(const fs::path& folder) {
        std::error_code error;
        for (fs::directory_iterator entries(folder, error), end; !error && entries != end;
             entries.increment(error))
            visit(*entries);
    }

    void visit(const fs::directory_entry& entry) {
        if (isHidden(entry.path())) return;
        std::error_code error;
        const fs::file_type type = entry.symlink_status(error).type();
        if (type == fs::file_type::directory) {
            if (!isPackage(entry.path())) waiting_.push_back(entry.path());
            return;
        }
        // A link to a folder is not followed, since it could lead back up; one to a file is that
        // file.
        if (!isVideo(entry.path()) || isKeptOriginal(entry.path())) return;
        if (entry.is_regular_file(error)) out_.push_back(entry.path());
    }

    std::vector<fs::path>& out_;
    std::vector<fs::path> waiting_;
};

void addRoot(const fs::path& root, std::vector<fs::path>& out) {
    const fs::path path = Paths::standardised(root);
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) return;
    if (fs::is_directory(status))
        FolderWalk(path, out);
    else if (isVideo(path))
        out.push_back(path);
}

void removeDuplicates(std::vector<fs::path>& files) {
    std::unordered_set<std::string> seen;
    std::erase_if(files, [&](const fs::path& file) { return !seen.insert(file.native()).second; });
}

}  // namespace

std::string extensionOf(const fs::path& file) {
    std::string extension = file.extension().native();
    if (extension.empty()) return extension;
    extension.erase(0, 1);
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return extension;
}

std::vector<fs::path> videoFiles(const std::vector<fs::path>& roots) {
    std::vector<fs::path> files;
    for (const fs::path& root : roots) addRoot(root, files);
    removeDuplicates(files);
    std::stable_sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
        return Text::compareNatural(a.native(), b.native()) < 0;
    });
    return files;
}

}  // namespace marlet::Scanner
