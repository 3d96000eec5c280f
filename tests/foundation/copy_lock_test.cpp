#include "foundation/copy_lock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Holder = CopyLock::Holder;

class CopyLockTest : public ::testing::Test {
protected:
    TempFolder folder;
    std::filesystem::path guarded = folder / "history.json";
};

TEST_F(CopyLockTest, OneHolderAtATimeUntilItLetsGoOrEnds) {
    CopyLock second(guarded);
    {
        CopyLock first(guarded);
        EXPECT_EQ(first.take(), Holder::Us);
        EXPECT_EQ(second.take(), Holder::Others);
        first.release();
        EXPECT_EQ(second.take(), Holder::Us);
        EXPECT_EQ(first.take(), Holder::Others);
        second.release();
        EXPECT_EQ(first.take(), Holder::Us);
    }
    EXPECT_EQ(second.take(), Holder::Us);
}

TEST_F(CopyLockTest, LiesBesideTheFileThatItGuardsForItsOwnerAlone) {
    const CopyLock lock(guarded);
    struct stat told {};
    ASSERT_EQ(stat((folder / "history.lock").c_str(), &told), 0);
    EXPECT_EQ(told.st_mode & 0777U, 0600U);
    EXPECT_FALSE(std::filesystem::exists(guarded));
}

TEST_F(CopyLockTest, ALinkInItsPlaceIsNotFollowed) {
    std::filesystem::create_symlink(folder / "elsewhere", folder / "history.lock");
    CopyLock lock(guarded);
    EXPECT_FALSE(lock.isOpen());
    EXPECT_EQ(lock.take(), Holder::Nobody);
    EXPECT_FALSE(std::filesystem::exists(folder / "elsewhere"));
}

TEST_F(CopyLockTest, WhereNoLockCanLieNobodyHoldsIt) {
    CopyLock lock(folder / "gone" / "history.json");
    EXPECT_FALSE(lock.isOpen());
    EXPECT_EQ(lock.take(), Holder::Nobody);
    lock.release();
    EXPECT_EQ(CopyLock().take(), Holder::Nobody);
}

}  // namespace
}  // namespace marlet::test
