#include "sources/source_cache.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "foundation/paths.h"
#include "sources/source.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class SourceCacheTest : public testing::Test {
protected:
    ~SourceCacheTest() override { SourceCache::setNotBefore(SourceCache::Instant::min()); }
    fs::path file(const std::string& key) const {
        return Paths::sourceCacheDir() / (std::to_string(stableHash(key)) + ".json");
    }
    void makeOlder(const std::string& key, std::chrono::seconds by) {
        fs::last_write_time(file(key), fs::last_write_time(file(key)) - by);
    }
    test::OwnHome home_;
};

TEST_F(SourceCacheTest, AnAnswerIsFoundUnderItsKeysHash) {
    SourceCache::write(viewOf("{}"), "shows:x");
    EXPECT_TRUE(fs::exists(file("shows:x")));
    EXPECT_EQ(textOf(SourceCache::read("shows:x").value()), "{}");
    EXPECT_FALSE(SourceCache::read("shows:y"));
}

TEST_F(SourceCacheTest, AnAnswerIsGoodForSixHours) {
    SourceCache::write(viewOf("{}"), "k");
    makeOlder("k", 6h - 60s);
    EXPECT_TRUE(SourceCache::read("k"));
    makeOlder("k", 120s);
    EXPECT_FALSE(SourceCache::read("k"));
}

TEST_F(SourceCacheTest, AnAnswerOfSevenHoursAgoIsNotUsed) {
    SourceCache::write(viewOf("{}"), "k");
    const auto now = std::chrono::system_clock::now();
    EXPECT_TRUE(SourceCache::read("k", now + 5h));
    EXPECT_FALSE(SourceCache::read("k", now + 7h));
}

TEST_F(SourceCacheTest, AnAnswerFromBeforeARefreshIsNotUsedAndOneFromAfterIs) {
    SourceCache::write(viewOf("old"), "k");
    makeOlder("k", 1s);
    SourceCache::refresh();
    EXPECT_FALSE(SourceCache::read("k"));
    SourceCache::write(viewOf("new"), "k");
    EXPECT_EQ(textOf(SourceCache::read("k").value()), "new");
}

TEST_F(SourceCacheTest, ALaterAnswerReplacesTheEarlierAndLeavesNothingBeside) {
    SourceCache::write(viewOf("one"), "k");
    SourceCache::write(viewOf("two"), "k");
    EXPECT_EQ(textOf(SourceCache::read("k").value()), "two");
    int files = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(SourceCache::dir())) files++;
    EXPECT_EQ(files, 1);
}

TEST_F(SourceCacheTest, ItsFolderIsMadeWhenNeeded) {
    EXPECT_FALSE(fs::exists(Paths::sourceCacheDir()));
    EXPECT_EQ(SourceCache::dir(), Paths::sourceCacheDir());
    EXPECT_TRUE(fs::is_directory(Paths::sourceCacheDir()));
}

TEST_F(SourceCacheTest, AFolderInPlaceOfAnAnswerCountsAsAbsent) {
    fs::create_directories(file("k"));
    EXPECT_NO_THROW(EXPECT_FALSE(SourceCache::read("k")));
    EXPECT_NO_THROW(SourceCache::write(viewOf("{}"), "k"));
}

TEST_F(SourceCacheTest, AnAnswerLargerThanAnyThatIsWrittenCountsAsAbsent) {
    SourceCache::write(viewOf("{}"), "k");
    fs::resize_file(file("k"), 64ULL * 1024 * 1024 + 1);  // sparse: takes no room
    EXPECT_FALSE(SourceCache::read("k"));
}

TEST_F(SourceCacheTest, AnEmptyAnswerIsAnAnswer) {
    SourceCache::write({}, "k");
    EXPECT_EQ(SourceCache::read("k"), Bytes());
}

TEST_F(SourceCacheTest, AFolderThatCannotBeMadeIsAnEmptyCache) {
    fs::create_directories(Paths::sourceCacheDir().parent_path());
    test::writeFile(Paths::sourceCacheDir(), viewOf("a file"));
    EXPECT_NO_THROW(SourceCache::write(viewOf("{}"), "k"));
    EXPECT_FALSE(SourceCache::read("k"));
}

}  // namespace
}  // namespace marlet
