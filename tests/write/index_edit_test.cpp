#include "write/index_edit.h"

#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "support/box_builder.h"

namespace marlet::test {

namespace {

TEST(IndexEdit, AShortHeaderHasNoRoomForASizeAbove4GB) {
    EXPECT_EQ(IndexEdit::moovHeader(0xFFFFFFFF, 8), joined({be32(0xFFFFFFFF), bytesOf("moov")}));
    try {
        IndexEdit::moovHeader(0x100000000, 8);
        FAIL() << "no failure";
    } catch (const MFError& error) {
        EXPECT_EQ(error.description(), "moov too large");
    }
    EXPECT_EQ(IndexEdit::moovHeader(0x100000000, 16),
              joined({be32(1), bytesOf("moov"), be64(0x100000000)}));
}

TEST(IndexEdit, APlaceCanNotGoBelowTheStartOfTheFile) {
    Bytes moov = box("trak", {box("mdia", {box("minf", {box("stbl", {stcoBox({5})})})})});
    try {
        IndexEdit::shiftOffsets(moov, 0, -6);
        FAIL() << "no failure";
    } catch (const MFError& error) {
        EXPECT_EQ(error.description(), "bad chunk offset table");
    }
}

}  // namespace
}  // namespace marlet::test
