#pragma once

#include <QAbstractListModel>
#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

namespace marlet {

/// The untyped half of RowList: each property of the row's gadget is a role of that name.
class RowListBase : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    RowListBase(const QMetaObject& gadget, QObject* parent);

    int count() const { return rowCount({}); }
    int rowCount(const QModelIndex& parent) const override = 0;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

protected:
    virtual const void* gadgetAt(int row) const = 0;

private:
    const QMetaObject& gadget_;
};

/// A list for QML of plain rows. A Row is a Q_GADGET with MEMBER properties, a `QString key` that
/// no two rows share, and ==. Main context only.
template <typename Row>
class RowList : public RowListBase {
public:
    explicit RowList(QObject* parent = nullptr) : RowListBase(Row::staticMetaObject, parent) {}

    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }
    const std::vector<Row>& rows() const { return rows_; }
    const Row& at(int row) const { return rows_[static_cast<std::size_t>(row)]; }
    /// -1 when there is none.
    int indexOf(const QString& key) const {
        const auto found = std::ranges::find(rows_, key, &Row::key);
        return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
    }

    /// Takes these rows in place of the old ones. Rows that stay are told as changed, never as
    /// removed and new, so that a list keeps its place and its focus.
    void set(std::vector<Row> rows) {
        const std::size_t before = rows_.size();
        removeGone(rows);
        if (!insertNew(rows)) {
            beginResetModel();
            rows_ = std::move(rows);
            endResetModel();
        }
        if (rows_.size() != before) Q_EMIT countChanged();
    }
    void update(int row, Row changed) {
        if (at(row) == changed) return;
        rows_[static_cast<std::size_t>(row)] = std::move(changed);
        Q_EMIT dataChanged(index(row), index(row));
    }

private:
    const void* gadgetAt(int row) const override { return &at(row); }

    void removeGone(const std::vector<Row>& rows) {
        std::unordered_set<QString> keys;
        for (const Row& row : rows) keys.insert(row.key);
        for (int last = static_cast<int>(rows_.size()) - 1; last >= 0; --last) {
            if (keys.contains(at(last).key)) continue;
            int first = last;
            while (first > 0 && !keys.contains(at(first - 1).key)) --first;
            beginRemoveRows({}, first, last);
            rows_.erase(rows_.begin() + first, rows_.begin() + last + 1);
            endRemoveRows();
            last = first;
        }
    }
    /// False when those that stayed stand in another order now.
    bool insertNew(std::vector<Row>& rows) {
        std::unordered_set<QString> kept;
        for (const Row& row : rows_) kept.insert(row.key);
        std::size_t old = 0;
        for (const Row& row : rows) {
            if (!kept.contains(row.key)) continue;
            if (rows_[old++].key != row.key) return false;
        }
        for (std::size_t place = 0; place < rows.size();) {
            if (kept.contains(rows[place].key)) {
                update(static_cast<int>(place), std::move(rows[place]));
                ++place;
                continue;
            }
            std::size_t end = place + 1;
            while (end < rows.size() && !kept.contains(rows[end].key)) ++end;
            const auto at = static_cast<std::ptrdiff_t>(place);
            beginInsertRows({}, static_cast<int>(place), static_cast<int>(end) - 1);
            rows_.insert(rows_.begin() + at, std::make_move_iterator(rows.begin() + at),
                         std::make_move_iterator(rows.begin() + static_cast<std::ptrdiff_t>(end)));
            endInsertRows();
            place = end;
        }
        return true;
    }

    std::vector<Row> rows_;
};

}  // namespace marlet
