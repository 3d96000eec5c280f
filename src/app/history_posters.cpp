#include <chrono>
#include <system_error>

#include "app/history.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/paths.h"
#include "foundation/syscalls.h"
#include "foundation/text.h"

namespace marlet::HistoryPosters {

namespace fs = std::filesystem;

namespace {
constexpr auto keepFor = std::chrono::days(180);
}

fs::path dir() {
    return Paths::historyPostersDir();
}

std::string pathFor(const std::string& key) {
    const std::string name = Text::replaceAll(Text::replaceAll(key, "/", "_"), ".jpg", "") + ".jpg";
    return (dir() / name).string();
}

std::optional<std::string> save(ByteView data, const std::string& key) {
    try {
        Durable::makeFolders(dir());
        Durable::writeFile(pathFor(key), data);
        return pathFor(key);
    } catch (const MFError&) {
        return std::nullopt;
    }
}

void prune() {
    const fs::path folder = Paths::standardised(dir());
    const FileTime oldest = std::chrono::system_clock::now() - keepFor;
    std::error_code failed;
    for (fs::directory_iterator each(folder, failed), end; !failed && each != end;
         each.increment(failed)) {
        const fs::path item = Paths::standardised(each->path());
        const auto stat = Sys::lstat(item);
        if (!stat || item.parent_path() != folder || stat->mtime >= oldest) continue;
        // What lies in a folder doesn't stand here directly: only an empty one goes.
        if (stat->isFolder)
            Sys::rmdir(item);
        else
            Sys::unlink(item);
    }
}

}  // namespace marlet::HistoryPosters
