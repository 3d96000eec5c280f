#include "sources/source_cache.h"

#include <cstdint>
#include <ctime>
#include <fstream>
#include <system_error>

#include "foundation/paths.h"
#include "sources/cache_file.h"
#include "sources/source.h"

namespace marlet::SourceCache {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds longestAge{21600};
/// Bytes. What is larger was not written here.
constexpr std::uintmax_t largestAnswer = 64 * 1024 * 1024;

Instant& oldest() {
    static Instant instant = Instant::min();
    return instant;
}

fs::path fileOf(const std::string& key) {
    return Paths::sourceCacheDir() / (std::to_string(stableHash(key)) + ".json");
}

}  // namespace

std::optional<Bytes> read(const std::string& key, Instant now) {
    const fs::path file = fileOf(key);
    std::error_code error;
    const auto written = fs::last_write_time(file, error);
    if (error) return std::nullopt;
    const auto saved =
        std::chrono::time_point_cast<Instant::duration>(std::chrono::file_clock::to_sys(written));
    if (!isGood(saved, now)) return std::nullopt;
    const std::uintmax_t size = fs::file_size(file, error);
    if (error || size > largestAnswer) return std::nullopt;
    std::ifstream in(file, std::ios::binary);
    Bytes bytes(size);
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (!in) return std::nullopt;
    return bytes;
}

bool isGood(Instant learnt, Instant now) {
    return now - learnt <= longestAge && learnt >= oldest();
}

void write(ByteView data, const std::string& key) {
    // Without a cache the answer is asked for again; nothing else is lost.
    CacheFile::write(fileOf(key), data);
}

Instant notBefore() {
    return oldest();
}

void setNotBefore(Instant instant) {
    oldest() = instant;
}

void refresh() {
    // File systems stamp files by the coarse clock, which lags a few milliseconds behind the fine
    // one: an answer written right after a refresh must not look older than it.
    timespec coarse{};
    clock_gettime(CLOCK_REALTIME_COARSE, &coarse);
    setNotBefore(
        Instant(std::chrono::seconds(coarse.tv_sec) + std::chrono::nanoseconds(coarse.tv_nsec)));
}

fs::path dir() {
    const fs::path folder = Paths::sourceCacheDir();
    std::error_code ignored;
    fs::create_directories(folder, ignored);
    return folder;
}

}  // namespace marlet::SourceCache
