#include "sources/http_cache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "sources/http_entry.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;

HttpRequest ask(const std::string& url, const std::string& token = "secret-1") {
    HttpRequest request;
    request.url = url;
    request.headers = {{"Authorization", "Bearer " + token}, {"accept", "application/json"}};
    return request;
}

HttpAnswer answer(const std::string& body, int status = 200) {
    HttpAnswer made;
    made.status = status;
    made.body = bytesOf(body);
    made.headers = {{"Date", "Sat, 21 Nov 2026 10:15:00 GMT"}, {"Set-Cookie", "visitor=77"}};
    return made;
}

std::vector<fs::path> filesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::uint64_t bytesIn(const fs::path& folder) {
    std::uint64_t bytes = 0;
    for (const fs::path& file : filesIn(folder)) bytes += fs::file_size(file);
    return bytes;
}

TEST(KeylessCache, AnAnswerComesBackWithItsStatusHeadersAndBody) {
    const TempFolder folder;
    KeylessCache(folder / "tmdb").store(ask("https://a/1"), answer("{}"));
    const auto found = KeylessCache(folder / "tmdb").find(ask("https://a/1"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->status, 200);
    EXPECT_EQ(textOf(found->body), "{}");
    EXPECT_EQ(found->header("date"), "Sat, 21 Nov 2026 10:15:00 GMT");
    EXPECT_TRUE(found->fromCache);
}

TEST(KeylessCache, AChangedTokenFindsTheSameAnswer) {
    const TempFolder folder;
    KeylessCache cache(folder / "tmdb");
    cache.store(ask("https://a/1", "old"), answer("{}"));
    EXPECT_TRUE(cache.find(ask("https://a/1", "new")));
    EXPECT_TRUE(KeylessCache(folder / "tmdb").find(ask("https://a/1", "new")));
}

TEST(KeylessCache, NeitherKeyNorFileHoldsTheToken) {
    const TempFolder folder;
    KeylessCache cache(folder / "tmdb");
    cache.store(ask("https://a/1", "very-secret"), answer("{}"));
    EXPECT_EQ(KeylessCache::keyOf(ask("https://a/1", "very-secret")).find("very-secret"),
              std::string::npos);
    for (const fs::path& file : filesIn(folder / "tmdb")) {
        const std::string content = textOf(test::readFile(file));
        EXPECT_EQ(content.find("very-secret"), std::string::npos);
        EXPECT_EQ(content.find("visitor=77"), std::string::npos);
        EXPECT_EQ(file.string().find("very-secret"), std::string::npos);
    }
}

TEST(KeylessCache, TheKeyTellsAddressesAndHeadersApartButNotTheirOrderOrCase) {
    HttpRequest other = ask("https://a/1");
    std::swap(other.headers[0], other.headers[1]);
    other.headers[0].first = "Accept";
    EXPECT_EQ(KeylessCache::keyOf(ask("https://a/1")), KeylessCache::keyOf(other));
    EXPECT_NE(KeylessCache::keyOf(ask("https://a/1")), KeylessCache::keyOf(ask("https://a/2")));
    other.headers[0].second = "image/jpeg";
    EXPECT_NE(KeylessCache::keyOf(ask("https://a/1")), KeylessCache::keyOf(other));
}

TEST(KeylessCache, OnlyAnswersOfStatus200AreKept) {
    const TempFolder folder;
    KeylessCache cache(folder / "tmdb");
    for (const int status : {0, 201, 301, 401, 404, 429, 500})
        cache.store(ask("https://a/1"), answer("{}", status));
    EXPECT_FALSE(cache.find(ask("https://a/1")));
    EXPECT_FALSE(fs::exists(folder / "tmdb"));
}

TEST(KeylessCache, ALaterAnswerReplacesTheEarlier) {
    const TempFolder folder;
    KeylessCache cache(folder / "tmdb");
    cache.store(ask("https://a/1"), answer("one"));
    cache.store(ask("https://a/1"), answer("two"));
    EXPECT_EQ(textOf(cache.find(ask("https://a/1"))->body), "two");
    EXPECT_EQ(textOf(KeylessCache(folder / "tmdb").find(ask("https://a/1"))->body), "two");
    EXPECT_EQ(filesIn(folder / "tmdb").size(), 1U);
}

TEST(KeylessCache, AnEntryDamagedAnywhereCountsAsAbsent) {
    const std::string key = "GET https://a/1\n";
    const Bytes whole = HttpEntry::encode(key, answer("{\"id\":1}"));
    ASSERT_TRUE(HttpEntry::decode(whole, key));
    for (std::size_t i = 0; i < whole.size(); i++) {
        Bytes broken = whole;
        broken[i] ^= 0x20;
        EXPECT_FALSE(HttpEntry::decode(broken, key)) << "byte " << i;
    }
    for (std::size_t length = 0; length < whole.size(); length++)
        EXPECT_FALSE(HttpEntry::decode(ByteView(whole).first(length), key)) << length << " bytes";
}

TEST(KeylessCache, ADamagedFileCountsAsAbsentAndIsReplacedByTheNextAnswer) {
    const TempFolder folder;
    KeylessCache(folder / "tmdb").store(ask("https://a/1"), answer("{}"));
    test::writeFile(filesIn(folder / "tmdb").front(), viewOf("half of"));
    EXPECT_FALSE(KeylessCache(folder / "tmdb").find(ask("https://a/1")));
    KeylessCache(folder / "tmdb").store(ask("https://a/1"), answer("{}"));
    EXPECT_TRUE(KeylessCache(folder / "tmdb").find(ask("https://a/1")));
}

TEST(KeylessCache, AnEntryUnderAnotherKeysNameCountsAsAbsent) {
    const Bytes bytes = HttpEntry::encode("GET https://a/1\n", answer("{}"));
    EXPECT_TRUE(HttpEntry::decode(bytes, "GET https://a/1\n"));
    EXPECT_FALSE(HttpEntry::decode(bytes, "GET https://a/2\n"));
}

TEST(KeylessCache, AFolderInPlaceOfAnEntryCountsAsAbsent) {
    const TempFolder folder;
    KeylessCache(folder / "tmdb").store(ask("https://a/1"), answer("{}"));
    const fs::path file = filesIn(folder / "tmdb").front();
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_FALSE(KeylessCache(folder / "tmdb").find(ask("https://a/1")));
}

TEST(KeylessCache, AFolderThatCannotBeMadeMakesACacheInMemoryOnly) {
    const TempFolder folder;
    folder.write("file", "not a folder");
    KeylessCache cache(folder / "file/tmdb");
    cache.store(ask("https://a/1"), answer("{}"));
    EXPECT_TRUE(cache.find(ask("https://a/1")));
    EXPECT_FALSE(KeylessCache(folder / "file/tmdb").find(ask("https://a/1")));
}

TEST(KeylessCache, RemovingTakesOneEntryAndClearingAll) {
    const TempFolder folder;
    KeylessCache cache(folder / "tmdb");
    for (const char* url : {"https://a/1", "https://a/2", "https://a/3"})
        cache.store(ask(url), answer("{}"));
    cache.remove(ask("https://a/2"));
    EXPECT_TRUE(cache.find(ask("https://a/1")));
    EXPECT_FALSE(cache.find(ask("https://a/2")));
    KeylessCache(folder / "tmdb").clear();
    EXPECT_TRUE(filesIn(folder / "tmdb").empty());
}

TEST(KeylessCache, ClearingLeavesForeignFilesAlone) {
    const TempFolder folder;
    folder.write("tmdb/notes.txt", "mine");
    KeylessCache(folder / "tmdb").clear();
    EXPECT_TRUE(fs::exists(folder / "tmdb/notes.txt"));
}

TEST(KeylessCache, MemoryHoldsWhatWasUsedLastWithinItsCapacity) {
    const TempFolder folder;
    KeylessCache cache(folder / "tmdb", {.memory = 10'000, .disk = 200'000'000});
    for (int i = 0; i < 10; i++)
        cache.store(ask("https://a/" + std::to_string(i)), answer(std::string(2000, 'x')));
    EXPECT_LE(cache.memoryUsed(), 10'000U);
    EXPECT_GT(cache.memoryUsed(), 4'000U);
    fs::remove_all(folder / "tmdb");
    EXPECT_FALSE(cache.find(ask("https://a/0")));
    EXPECT_TRUE(cache.find(ask("https://a/9")));
}

TEST(KeylessCache, AnAnswerLargerThanMemoryIsServedFromDisk) {
    const TempFolder folder;
    KeylessCache cache(folder / "tmdb", {.memory = 1'000, .disk = 200'000'000});
    cache.store(ask("https://a/1"), answer(std::string(5000, 'x')));
    EXPECT_EQ(cache.memoryUsed(), 0U);
    EXPECT_EQ(cache.find(ask("https://a/1"))->body.size(), 5000U);
}

TEST(KeylessCache, AFullDiskCacheLetsTheOldestGo) {
    const TempFolder folder;
    KeylessCache cache(folder / "tmdb", {.memory = 0, .disk = 20'000});
    for (int i = 0; i < 12; i++) {
        const HttpRequest request = ask("https://a/" + std::to_string(i));
        cache.store(request, answer(std::string(2000, 'x')));
        EXPECT_LE(bytesIn(folder / "tmdb"), 20'000U);
        // Apart in age, as files written in the same tick are not.
        for (const fs::path& file : filesIn(folder / "tmdb"))
            fs::last_write_time(file, fs::last_write_time(file) - std::chrono::seconds(10));
    }
    EXPECT_FALSE(cache.find(ask("https://a/0")));
    EXPECT_TRUE(cache.find(ask("https://a/11")));
    EXPECT_TRUE(cache.find(ask("https://a/10")));
}

TEST(KeylessCache, WhatOthersPutOnTheDiskCountsTowardsItsCapacity) {
    const TempFolder folder;
    KeylessCache first(folder / "tmdb", {.memory = 0, .disk = 20'000});
    for (int i = 0; i < 7; i++)
        first.store(ask("https://a/" + std::to_string(i)), answer(std::string(2000, 'x')));
    KeylessCache second(folder / "tmdb", {.memory = 0, .disk = 20'000});
    for (int i = 7; i < 12; i++)
        second.store(ask("https://a/" + std::to_string(i)), answer(std::string(2000, 'x')));
    EXPECT_LE(bytesIn(folder / "tmdb"), 20'000U);
}

TEST(KeylessCache, AnAnswerLargerThanTheDiskCacheReplacesNothingAndTheOldOneGoes) {
    const TempFolder folder;
    KeylessCache cache(folder / "tmdb", {.memory = 0, .disk = 4'000});
    cache.store(ask("https://a/1"), answer("small"));
    cache.store(ask("https://a/1"), answer(std::string(5000, 'x')));
    EXPECT_FALSE(cache.find(ask("https://a/1")));
}

TEST(KeylessCache, WhatAKilledProcessLeftHalfWrittenIsSweptAway) {
    const TempFolder folder;
    const fs::path old = folder.write("tmdb/.part-1-0", "half");
    fs::last_write_time(old, fs::last_write_time(old) - std::chrono::hours(2));
    const fs::path young = folder.write("tmdb/.part-2-0", "half");
    KeylessCache(folder / "tmdb").store(ask("https://a/1"), answer("{}"));
    EXPECT_FALSE(fs::exists(old));
    EXPECT_TRUE(fs::exists(young));
}

}  // namespace
}  // namespace marlet
