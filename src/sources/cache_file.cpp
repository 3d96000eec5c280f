#include "sources/cache_file.h"

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <string>
#include <system_error>

namespace marlet::CacheFile {

namespace fs = std::filesystem;

bool write(const fs::path& file, ByteView content) {
    static std::atomic<unsigned> counter{0};
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    const fs::path part = file.parent_path() /
                          (".part-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
    {
        std::ofstream out(part, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(content.data()),
                  static_cast<std::streamsize>(content.size()));
        out.close();
        if (!out) {
            fs::remove(part, error);
            return false;
        }
    }
    fs::rename(part, file, error);
    if (!error) return true;
    fs::remove(part, error);
    return false;
}

bool isLeftover(const fs::path& name) {
    return name.filename().string().rfind(".part-", 0) == 0;
}

}  // namespace marlet::CacheFile
