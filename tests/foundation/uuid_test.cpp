#include "foundation/uuid.h"

#include <gtest/gtest.h>

#include <set>

namespace marlet {

TEST(Uuid, ANewOneIsRandomUpperCaseAndOfVersionFour) {
    std::set<std::string> seen;
    for (int i = 0; i < 100; i++) {
        const std::string uuid = newUUID();
        EXPECT_TRUE(isUUID(uuid)) << uuid;
        EXPECT_EQ(uuid[14], '4');
        EXPECT_NE(std::string("89AB").find(uuid[19]), std::string::npos) << uuid;
        EXPECT_EQ(uuid.find_first_of("abcdef"), std::string::npos);
        seen.insert(uuid);
    }
    EXPECT_EQ(seen.size(), 100U);
}

TEST(Uuid, OnlyTheWholeFormCounts) {
    EXPECT_TRUE(isUUID("0f8fad5b-d9cb-469f-a165-70867728950e"));
    EXPECT_FALSE(isUUID(""));
    EXPECT_FALSE(isUUID("0f8fad5b-d9cb-469f-a165-70867728950"));
    EXPECT_FALSE(isUUID("0f8fad5b-d9cb-469f-a165-70867728950e.m4v"));
    EXPECT_FALSE(isUUID("0f8fad5bd9cb-469f-a165-70867728950e-"));
    EXPECT_FALSE(isUUID("zf8fad5b-d9cb-469f-a165-70867728950e"));
}

}  // namespace marlet
