#include <filesystem>

#include "app/model_fixture.h"
#include "foundation/paths.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

class Posters : public ModelTest {
protected:
    static fs::path poster(const std::string& key, std::chrono::days old) {
        const fs::path saved = *HistoryPosters::save(viewOf("a picture"), key);
        fs::last_write_time(saved, fs::file_time_type::clock::now() - old);
        return saved;
    }
    /// A file where the folder of the posters would be made.
    static void blockTheFolder() {
        fs::create_directories(Paths::historyPostersDir());
        fs::remove_all(Paths::historyPostersDir());
        writeFile(Paths::historyPostersDir(), viewOf("no folder"));
    }
};

TEST_F(Posters, OneThatIs181DaysOldIsRemovedWhenTheModelStarts) {
    const fs::path old = poster("/old.jpg", std::chrono::days(181));
    const fs::path young = poster("/young.jpg", std::chrono::days(179));
    make();
    ASSERT_TRUE(Async::settle(20s));
    EXPECT_FALSE(fs::exists(old));
    EXPECT_TRUE(fs::exists(young));
}

TEST_F(Posters, OneThatCannotBeSavedHasNoPath) {
    blockTheFolder();
    EXPECT_EQ(HistoryPosters::save(viewOf("a picture"), "/a.jpg"), std::nullopt);
    EXPECT_EQ(textOf(readFile(Paths::historyPostersDir())), "no folder");
}

TEST_F(Posters, OneThatCannotBeSavedKeepsNoJobFromItsCover) {
    addConfirmed({"Charade (1963).mp4"});
    blockTheFolder();
    queueAll();
    ASSERT_EQ(model->queue().jobs().size(), 1u);
    EXPECT_EQ(model->queue().jobs()[0].posterPath, std::nullopt);
    EXPECT_EQ(server.requestCount("^/t/p/w1280"), 1);
    EXPECT_FALSE(model->notice);
}

}  // namespace
}  // namespace marlet::test
