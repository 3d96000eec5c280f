#pragma once

#include <QSet>
#include <QString>
#include <vector>

namespace marlet {

/// Which rows of a list are selected and where the keyboard is, as file managers have it: a row
/// that is current, and an anchor from which Shift reaches. Rows are told by their keys, so that
/// both follow them through a changed list.
class RowSelection {
public:
    enum class How { only, toggle, extend, focus };

    bool contains(const QString& key) const { return selected_.contains(key); }
    int count() const { return static_cast<int>(selected_.size()); }
    bool isEmpty() const { return selected_.isEmpty(); }
    /// -1 when there is none.
    int current() const { return current_; }
    const std::vector<QString>& keys() const { return keys_; }
    /// The rows selected, in their order.
    std::vector<int> rows() const;

    /// Another list. What is gone from it is no longer selected; when the current row is gone the
    /// next one that is left becomes current, and the one selected row if none is left selected
    /// and `goOn` says so.
    void setKeys(std::vector<QString> keys, bool goOn);
    /// `row` is brought within the list; an empty list ignores it.
    void go(int row, How how);
    void selectAll();
    void clear();

private:
    int neighbourOfCurrent(const std::vector<QString>& keys) const;

    std::vector<QString> keys_;
    QSet<QString> selected_;
    int current_ = -1;
    int anchor_ = -1;
};

}  // namespace marlet
