#include <gtest/gtest.h>

#include "app/write_queue.h"
#include "foundation/text.h"

namespace marlet::test {
namespace {

PlainText::Explanation explain(const std::string& text) {
    return PlainText::explain(text);
}

TEST(PlainText, EachPhraseGivesItsTwoSentences) {
    const struct {
        const char* message;
        const char* happened;
        const char* next;
    } rows[] = {
        {"Marlet could not make this file Apple TV-safe: even with ...",
         "The sound couldn't be made Apple TV-safe, even with the finest settings.",
         "The original was not changed. You can still play it on the Mac."},
        {"There's no room for the new details in this file (x). Turn on ...",
         "There's no room for the new details in this file.",
         "Turn on “Fix for Apple TV” in Settings and add it again."},
        {"This file is in your Media Library and “Allow changes to my Media Library” is off in "
         "Settings",
         "This file is in your Media Library, which is locked.",
         "Turn on “Allow changes to my Media Library” in Settings, or add a copy instead."},
        {"curl has this file open for writing (a download or another app); left untouched.",
         "Another app is still using this file (a download that hasn't finished?).",
         "Wait until it has finished, then press Retry."},
        {"Not enough free space on the internal disk for the temporary files: need 1, have 0.",
         "There isn't enough free space.", "Free up some space, then press Retry."},
        {"a restore point couldn't be saved and verified (x); nothing was written",
         "Marlet couldn't save a copy of the original details first, so it changed nothing.",
         "Check there is free space on this Mac and press Retry."},
        {"the file changed while it was being read; left untouched",
         "The file changed while Marlet was working on it.",
         "Wait until whatever is using it has finished, then press Retry."},
        {"Marlet never re-encodes video", "Marlet never re-encodes video",
         "Marlet never re-encodes video, so this file can't be converted."},
        {"apple TV can't play it", "Apple TV can't play it",
         "Marlet never re-encodes video, so this file can't be converted."},
        {"MKV files can't be tagged in place yet (conversion comes in Phase 3)",
         "This kind of file can't be changed in place.", "Marlet makes a new .m4v instead."},
        {"cancelled; the file was left untouched", "Cancelled.", "Nothing was changed."},
        {"some odd failure", "some odd failure", "The original was not changed."},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(explain(row.message).happened, row.happened) << row.message;
        EXPECT_EQ(explain(row.message).next, row.next) << row.message;
    }
}

TEST(PlainText, AFailedVerificationIsToldAsADifference) {
    const auto told = explain("Verification failed: the new file doesn't match the original");
    EXPECT_EQ(told.happened,
              "Marlet checked the new file against the original and found a difference, so it "
              "wasn't saved.");
    EXPECT_EQ(told.next,
              "The original was not changed. Press Retry; if it happens again the file may be "
              "damaged.");
    EXPECT_EQ(explain("the result didn't match").happened, told.happened);
}

TEST(PlainText, OpenForWritingComesBeforeNotEnoughFreeSpace) {
    EXPECT_EQ(explain("not enough free space and open for writing").next,
              "Wait until it has finished, then press Retry.");
}

TEST(PlainText, MediaLibraryWithoutOffInSettingsPassesOnToTheRowsBelow) {
    EXPECT_EQ(explain("the media library: not enough free space").happened,
              "There isn't enough free space.");
    EXPECT_EQ(explain("the media library").happened, "the media library");
}

TEST(PlainText, AFileThatMayBeDamagedIsNeverToldToBeUnchanged) {
    const char* messages[] = {
        "writing failed (the result didn't match the rebuilt copy). The verified copy is kept at "
        "/w/candidate.mp4; Marlet finishes it the next time it opens",
        "after writing, the sound layout measured 3.0 s and the original could not be put back; "
        "the original copy is at /w/a.mp4",
        "the file's identity changed during the write; check it"};
    for (const char* message : messages) {
        EXPECT_EQ(explain(message).happened, Text::upperFirst(message));
        EXPECT_FALSE(Text::contains(explain(message).next, "not changed")) << message;
        EXPECT_TRUE(PlainText::tellsOfDamage(message)) << message;
    }
    EXPECT_FALSE(PlainText::tellsOfDamage("writing failed (no space); the original was put back"));
}

}  // namespace
}  // namespace marlet::test
