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

std::string pathFor(const std::string& key) {
    const std::string name = Text::replaceAll(Text::replaceAll(key, "/", "_"), ".jpg", "") + ".jpg";
    return (Paths::historyPostersDir() / name).string();
}

std::optional<std::string> save(ByteView data, const std::string& key) {
    try {
        Durable::makeFolders(Paths::historyPostersDir());
        Durable::writeFile(pathFor(key), data);
        return pathFor(key);
    } catch (const MFError&) {
        return std::nullopt;
    }
}

void prune() {
    const fs::path folder = Paths::standardised(Paths::historyPostersDir());
    const FileTime oldest = std::chrono::system_clock::now() - keepFor;
    std::error_code failed;
    for (fs::directory_iterator each(folder, failed), end; !failed && each != end;
         each.increment(failed)) {
        const fs::path item = Paths::standardised(each->path());
        const auto stat = Sys::lstat(item);
        if (!stat || !stat->isRegular || item.parent_path() != folder) continue;
        if (stat->mtime < oldest) Sys::unlink(item);
    }
}

}  // namespace marlet::HistoryPosters
