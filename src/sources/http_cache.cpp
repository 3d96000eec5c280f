#include "sources/http_cache.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <vector>

#include "foundation/digest.h"
#include "foundation/text.h"
#include "sources/cache_file.h"
#include "sources/http_entry.h"

namespace marlet {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view entrySuffix = ".answer";

/// Headers that carry a secret, in lower case.
constexpr std::array<std::string_view, 3> secretHeaders = {"authorization", "cookie",
                                                           "proxy-authorization"};

std::uint64_t sizeOf(const HttpAnswer& answer) {
    std::uint64_t bytes = answer.body.size() + 256;
    for (const auto& [name, value] : answer.headers) bytes += name.size() + value.size() + 64;
    return bytes;
}

struct OnDisk {
    fs::path path;
    std::uint64_t bytes = 0;
    fs::file_time_type written;
};

bool isEntry(const fs::path& path) {
    return path.extension() == entrySuffix;
}

/// The entries of the folder, oldest first; what a killed process left half written goes.
std::vector<OnDisk> entriesOf(const fs::path& folder) {
    std::vector<OnDisk> entries;
    std::error_code error;
    const auto leftoverBefore = fs::file_time_type::clock::now() - std::chrono::hours(1);
    fs::directory_iterator at(folder, error);
    for (; !error && at != fs::directory_iterator(); at.increment(error)) {
        std::error_code gone;
        OnDisk entry{at->path(), at->file_size(gone), at->last_write_time(gone)};
        if (gone) continue;
        if (isEntry(entry.path))
            entries.push_back(std::move(entry));
        else if (CacheFile::isLeftover(entry.path) && entry.written < leftoverBefore)
            fs::remove(entry.path, gone);
    }
    std::sort(entries.begin(), entries.end(),
              [](const OnDisk& a, const OnDisk& b) { return a.written < b.written; });
    return entries;
}

std::uint64_t total(const std::vector<OnDisk>& entries) {
    std::uint64_t bytes = 0;
    for (const OnDisk& entry : entries) bytes += entry.bytes;
    return bytes;
}

/// Nothing for a file that is larger than the whole cache may be.
std::optional<Bytes> read(const fs::path& file, std::uint64_t limit) {
    std::error_code error;
    const std::uint64_t size = fs::file_size(file, error);
    if (error || size > limit) return std::nullopt;
    std::ifstream in(file, std::ios::binary);
    Bytes bytes(size);
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (!in) return std::nullopt;
    return bytes;
}

}  // namespace

KeylessCache::KeylessCache(fs::path folder, Capacity capacity)
    : folder_(std::move(folder)), capacity_(capacity) {}

std::string KeylessCache::keyOf(const HttpRequest& request) {
    std::vector<std::string> lines;
    for (const auto& [name, value] : request.headers) {
        const std::string lower = Text::lower(name);
        const bool secret =
            std::find(secretHeaders.begin(), secretHeaders.end(), lower) != secretHeaders.end();
        if (!secret) lines.push_back(lower + ": " + value);
    }
    std::sort(lines.begin(), lines.end());
    return "GET " + request.url + "\n" + Text::join(lines, "\n");
}

fs::path KeylessCache::fileOf(const std::string& key) const {
    return folder_ / (sha256Hex(viewOf(key)) + std::string(entrySuffix));
}

std::optional<HttpAnswer> KeylessCache::find(const HttpRequest& request) {
    const std::string key = keyOf(request);
    const auto known = byKey_.find(key);
    if (known != byKey_.end()) {
        held_.splice(held_.begin(), held_, known->second);
        return *known->second->answer;
    }
    const auto bytes = read(fileOf(key), capacity_.disk);
    if (!bytes) return std::nullopt;
    auto answer = HttpEntry::decode(*bytes, key);
    if (answer) hold(key, *answer);
    return answer;
}

void KeylessCache::store(const HttpRequest& request, const HttpAnswer& answer) {
    if (answer.status != 200) return;
    const std::string key = keyOf(request);
    HttpAnswer kept = answer;
    kept.fromCache = true;
    // What a server sets for one visitor is nobody else's business, nor the disk's.
    std::erase_if(kept.headers,
                  [](const auto& header) { return Text::lower(header.first) == "set-cookie"; });
    hold(key, kept);
    const Bytes bytes = HttpEntry::encode(key, kept);
    if (bytes.size() > capacity_.disk) {
        std::error_code ignored;
        fs::remove(fileOf(key), ignored);  // an older answer is not the answer any more
        return;
    }
    if (CacheFile::write(fileOf(key), bytes)) countDisk(bytes.size());
}

void KeylessCache::remove(const HttpRequest& request) {
    const std::string key = keyOf(request);
    letGo(key);
    std::error_code ignored;
    fs::remove(fileOf(key), ignored);
}

void KeylessCache::clear() {
    held_.clear();
    byKey_.clear();
    memoryUsed_ = 0;
    for (const OnDisk& entry : entriesOf(folder_)) {
        std::error_code ignored;
        fs::remove(entry.path, ignored);
    }
    diskUsed_ = 0;
}

void KeylessCache::hold(const std::string& key, const HttpAnswer& answer) {
    letGo(key);
    const std::uint64_t bytes = sizeOf(answer) + key.size();
    if (bytes > capacity_.memory) return;
    held_.push_front({key, std::make_shared<const HttpAnswer>(answer), bytes});
    byKey_[key] = held_.begin();
    memoryUsed_ += bytes;
    while (memoryUsed_ > capacity_.memory) letGo(std::string(held_.back().key));
}

void KeylessCache::letGo(const std::string& key) {
    const auto known = byKey_.find(key);
    if (known == byKey_.end()) return;
    memoryUsed_ -= known->second->bytes;
    held_.erase(known->second);
    byKey_.erase(known);
}

void KeylessCache::countDisk(std::uint64_t added) {
    // Looking through the folder costs a moment when it holds thousands of files: once at the
    // first write, and again only when the sum says that it is full.
    if (!diskUsed_)
        diskUsed_ = total(entriesOf(folder_));
    else
        *diskUsed_ += added;
    if (*diskUsed_ > capacity_.disk) prune();
}

void KeylessCache::prune() {
    const std::vector<OnDisk> entries = entriesOf(folder_);
    std::uint64_t left = total(entries);
    // Some way below the limit, so that the next write doesn't prune again.
    const std::uint64_t goal = capacity_.disk / 10 * 9;
    const bool full = left > capacity_.disk;
    for (const OnDisk& entry : entries) {
        if (!full || left <= goal) break;
        std::error_code error;
        fs::remove(entry.path, error);
        if (!error) left -= entry.bytes;
    }
    diskUsed_ = left;
}

}  // namespace marlet
