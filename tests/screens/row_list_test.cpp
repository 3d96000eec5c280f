#include "screens/base/row_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "screens/review/review_row.h"

namespace marlet::test {
namespace {

/// Does to its own copy what the list tells, as a view does.
class Follower {
public:
    explicit Follower(RowList<ReviewRow>& list) : list_(list) {
        QObject::connect(&list, &QAbstractItemModel::rowsInserted, &context_,
                         [this](const QModelIndex&, int first, int last) {
                             for (int row = first; row <= last; ++row)
                                 rows_.insert(rows_.begin() + row, list_.at(row));
                             inserted += last - first + 1;
                         });
        QObject::connect(&list, &QAbstractItemModel::rowsRemoved, &context_,
                         [this](const QModelIndex&, int first, int last) {
                             rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
                             removed += last - first + 1;
                         });
        QObject::connect(&list, &QAbstractItemModel::dataChanged, &context_,
                         [this](const QModelIndex& first, const QModelIndex& last) {
                             for (int row = first.row(); row <= last.row(); ++row)
                                 rows_[static_cast<std::size_t>(row)] = list_.at(row);
                             changes++;
                         });
        QObject::connect(&list, &QAbstractItemModel::modelReset, &context_, [this] {
            rows_ = list_.rows();
            resets++;
        });
    }
    const std::vector<ReviewRow>& rows() const { return rows_; }

    int inserted = 0;
    int removed = 0;
    int changes = 0;
    int resets = 0;

private:
    RowList<ReviewRow>& list_;
    std::vector<ReviewRow> rows_;
    QObject context_;
};

std::vector<ReviewRow> rowsOf(const std::string& letters, int files = 0) {
    std::vector<ReviewRow> rows;
    for (const char letter : letters) {
        ReviewRow row;
        row.key = QLatin1Char(letter);
        row.files = files;
        rows.push_back(row);
    }
    return rows;
}

class Rows : public testing::Test {
protected:
    Rows() { list.set(rowsOf("abcdef")); }
    RowList<ReviewRow> list;
    Follower view{list};

    void become(const std::string& letters) {
        list.set(rowsOf("abcdef"));
        view.inserted = view.removed = view.changes = view.resets = 0;
        list.set(rowsOf(letters));
        EXPECT_EQ(view.rows(), rowsOf(letters));
    }
};

TEST_F(Rows, ARowThatMovesIsTheOnlyOneToldOf) {
    become("bcdeaf");
    EXPECT_EQ(view.removed, 1);
    EXPECT_EQ(view.inserted, 1);
    EXPECT_EQ(view.resets, 0);
}

TEST_F(Rows, RowsThatComeAndGoLeaveTheOthersAlone) {
    become("xabdfy");
    EXPECT_EQ(view.removed, 2);
    EXPECT_EQ(view.inserted, 2);
}

TEST_F(Rows, TheSameRowsAgainTellNothing) {
    become("abcdef");
    EXPECT_EQ(view.removed + view.inserted + view.changes + view.resets, 0);
}

TEST_F(Rows, NeighboursThatChangeAreToldTogether) {
    view.changes = 0;
    std::vector<ReviewRow> rows = rowsOf("abcdef");
    rows[1].files = rows[2].files = rows[5].files = 7;
    list.set(rows);
    EXPECT_EQ(view.changes, 2);
    EXPECT_EQ(view.rows(), rows);
}

TEST_F(Rows, AChangeInPlaceTellsOnlyTheRowsItTouched) {
    view.changes = 0;
    list.change([](ReviewRow& row) {
        if (row.key != QLatin1String("c")) return false;
        row.files = 3;
        return true;
    });
    EXPECT_EQ(view.changes, 1);
    EXPECT_EQ(view.rows()[2].files, 3);
    EXPECT_EQ(view.rows()[3].files, 0);
}

TEST_F(Rows, AListThatIsAnotherOneAlmostEverywhereIsToldAsSuch) {
    std::vector<ReviewRow> all;
    std::vector<ReviewRow> half;
    for (int i = 0; i < 400; ++i) {
        ReviewRow row;
        row.key = QString::number(i);
        all.push_back(row);
        if (i % 2 == 0) half.push_back(row);
    }
    list.set(all);
    view.resets = 0;
    list.set(half);
    EXPECT_EQ(view.resets, 1);
    EXPECT_EQ(view.rows(), half);
}

TEST_F(Rows, WhateverListFollowsAnotherAViewThatDoesAsItIsToldShowsIt) {
    std::mt19937 random(7);
    for (int turn = 0; turn < 500; ++turn) {
        std::string letters = "abcdefghijkl";
        std::shuffle(letters.begin(), letters.end(), random);
        letters.resize(random() % 13);
        const auto rows = rowsOf(letters, static_cast<int>(random() % 2));
        list.set(rows);
        ASSERT_EQ(view.rows(), rows) << letters;
        ASSERT_EQ(list.count(), static_cast<int>(letters.size()));
    }
}

}  // namespace
}  // namespace marlet::test
