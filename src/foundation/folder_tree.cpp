#include "foundation/folder_tree.h"

#include <system_error>
#include <vector>

namespace marlet::FolderTree {

namespace fs = std::filesystem;

void forEach(const fs::path& folder, const Visit& visit) {
    std::vector<fs::path> open{folder};
    while (!open.empty()) {
        const fs::path place = std::move(open.back());
        open.pop_back();
        std::error_code failed;
        fs::directory_iterator item(place, failed);
        for (; !failed && item != fs::directory_iterator(); item.increment(failed)) {
            const auto found = Sys::lstat(item->path());
            if (!found) continue;
            visit(item->path(), *found);
            if (found->isFolder) open.push_back(item->path());
        }
    }
}

void remove(const fs::path& folder) noexcept {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

}  // namespace marlet::FolderTree
