#include "screens/review/row_selection.h"

#include <gtest/gtest.h>

namespace marlet::test {
namespace {

using How = RowSelection::How;

class Selecting : public testing::Test {
protected:
    Selecting() { selection.setKeys(list("abcdef"), true); }
    static std::vector<QString> list(const std::string& letters) {
        std::vector<QString> keys;
        for (const char letter : letters) keys.push_back(QString(QLatin1Char(letter)));
        return keys;
    }
    std::string selected() const {
        std::string letters;
        for (const int row : selection.rows())
            letters += selection.keys()[static_cast<std::size_t>(row)].toStdString();
        return letters;
    }
    RowSelection selection;
};

TEST_F(Selecting, APlainClickSelectsOneRowAlone) {
    selection.go(1, How::only);
    selection.go(3, How::only);
    EXPECT_EQ(selected(), "d");
    EXPECT_EQ(selection.current(), 3);
}

TEST_F(Selecting, AControlClickAddsARowAndTakesItAwayAgain) {
    selection.go(1, How::only);
    selection.go(3, How::toggle);
    EXPECT_EQ(selected(), "bd");
    selection.go(1, How::toggle);
    EXPECT_EQ(selected(), "d");
    EXPECT_EQ(selection.current(), 1);
}

TEST_F(Selecting, ShiftReachesFromTheAnchorInBothDirections) {
    selection.go(2, How::only);
    selection.go(4, How::extend);
    EXPECT_EQ(selected(), "cde");
    selection.go(0, How::extend);
    EXPECT_EQ(selected(), "abc");
    EXPECT_EQ(selection.current(), 0);
}

TEST_F(Selecting, ShiftWithoutAnAnchorSelectsThatRow) {
    selection.go(4, How::extend);
    EXPECT_EQ(selected(), "e");
}

TEST_F(Selecting, ShiftReachesFromTheRowThatControlTouchedLast) {
    selection.go(0, How::only);
    selection.go(2, How::toggle);
    selection.go(4, How::extend);
    EXPECT_EQ(selected(), "cde");
}

TEST_F(Selecting, TheKeyboardCanMoveWithoutSelecting) {
    selection.go(1, How::only);
    selection.go(4, How::focus);
    EXPECT_EQ(selected(), "b");
    EXPECT_EQ(selection.current(), 4);
}

TEST_F(Selecting, ARowBeyondTheListIsItsEnd) {
    selection.go(99, How::only);
    EXPECT_EQ(selected(), "f");
    selection.go(-5, How::only);
    EXPECT_EQ(selected(), "a");
}

TEST_F(Selecting, AllMeansAll) {
    selection.selectAll();
    EXPECT_EQ(selected(), "abcdef");
    EXPECT_EQ(selection.current(), 0);
}

TEST_F(Selecting, SelectedRowsStaySelectedWhereverTheListMovesThem) {
    selection.go(1, How::only);
    selection.go(3, How::toggle);
    selection.setKeys(list("xdyb"), true);
    EXPECT_EQ(selected(), "db");
    EXPECT_EQ(selection.current(), 1);
}

TEST_F(Selecting, WhenTheOnlySelectedRowGoesTheNextOneIsSelected) {
    selection.go(2, How::only);
    selection.setKeys(list("abdef"), true);
    EXPECT_EQ(selected(), "d");
}

TEST_F(Selecting, WhenTheLastRowGoesTheOneBeforeItIsSelected) {
    selection.go(5, How::only);
    selection.setKeys(list("abcde"), true);
    EXPECT_EQ(selected(), "e");
}

TEST_F(Selecting, WhenABlockGoesTheFirstRowBehindItsCurrentOneIsSelected) {
    selection.go(1, How::only);
    selection.go(3, How::extend);
    selection.setKeys(list("aef"), true);
    EXPECT_EQ(selected(), "e");
}

TEST_F(Selecting, AnEmptiedListHasNoCurrentRow) {
    selection.go(1, How::only);
    selection.setKeys({}, true);
    EXPECT_EQ(selection.current(), -1);
    EXPECT_TRUE(selection.isEmpty());
    selection.go(0, How::only);
    EXPECT_EQ(selection.current(), -1);
}

TEST_F(Selecting, ASearchThatHidesTheSelectionSelectsNothingElse) {
    selection.go(2, How::only);
    selection.setKeys(list("abd"), false);
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(selection.current(), -1);
}

}  // namespace
}  // namespace marlet::test
