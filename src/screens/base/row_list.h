#pragma once

#include <QtQml/qqmlregistration.h>
#include <QAbstractListModel>
#include <algorithm>
#include <utility>
#include <vector>

namespace marlet {

/// The untyped half of RowList: each property of the row's gadget is a role of that name.
class RowListBase : public QAbstractListModel {
    Q_OBJECT
    QML_ANONYMOUS
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

    /// How one list of keys becomes another, with as few rows moved as can be.
    struct Step {
        std::vector<bool> stays;  ///< of the old rows
        std::vector<bool> known;  ///< of the new rows: there already, in this order
        int runs = 0;             ///< of neighbours that come or go together
    };
    static Step stepBetween(const std::vector<QString>& before, const std::vector<QString>& after);
    /// Beyond these many a list is quicker to make anew.
    static constexpr int mostRuns = 64;

private:
    const QMetaObject& gadget_;
};

/// A list for QML of plain rows. A Row is a Q_GADGET with MEMBER properties, a `QString key` that
/// no two rows share, and ==. Main context only.
template <typename Row>
class RowList : public marlet::RowListBase {
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
    /// removed and new, so that a list keeps its place and its focus; only a list that is another
    /// one almost everywhere is told as such.
    void set(std::vector<Row> rows) {
        const std::size_t before = rows_.size();
        const Step step = stepBetween(keysOf(rows_), keysOf(rows));
        if (step.runs > mostRuns) {
            beginResetModel();
            rows_ = std::move(rows);
            endResetModel();
        } else {
            removeGone(step.stays);
            insertNew(rows, step.known);
            takeChanges(rows);
        }
        if (rows_.size() != before) Q_EMIT countChanged();
    }
    /// `change` is called with each row and says whether it changed it; never its key.
    template <typename Change>
    void change(const Change& change) {
        for (std::size_t place = 0; place < rows_.size(); ++place) {
            const std::size_t first = place;
            while (place < rows_.size() && change(rows_[place])) ++place;
            tellChanged(first, place);
        }
    }
    void update(int row, Row changed) {
        if (at(row) == changed) return;
        rows_[static_cast<std::size_t>(row)] = std::move(changed);
        Q_EMIT dataChanged(index(row), index(row));
    }

private:
    const void* gadgetAt(int row) const override { return &at(row); }

    static std::vector<QString> keysOf(const std::vector<Row>& rows) {
        std::vector<QString> keys;
        keys.reserve(rows.size());
        for (const Row& row : rows) keys.push_back(row.key);
        return keys;
    }
    void removeGone(const std::vector<bool>& stays) {
        for (std::size_t end = rows_.size(); end > 0; --end) {
            if (stays[end - 1]) continue;
            std::size_t first = end - 1;
            while (first > 0 && !stays[first - 1]) --first;
            beginRemoveRows({}, static_cast<int>(first), static_cast<int>(end) - 1);
            rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(first),
                        rows_.begin() + static_cast<std::ptrdiff_t>(end));
            endRemoveRows();
            end = first + 1;
        }
    }
    /// Copies what is new, so that the places of `rows` stay comparable.
    void insertNew(const std::vector<Row>& rows, const std::vector<bool>& known) {
        for (std::size_t place = 0; place < rows.size(); ++place) {
            if (known[place]) continue;
            std::size_t end = place + 1;
            while (end < rows.size() && !known[end]) ++end;
            const auto at = static_cast<std::ptrdiff_t>(place);
            beginInsertRows({}, static_cast<int>(place), static_cast<int>(end) - 1);
            rows_.insert(rows_.begin() + at, rows.begin() + at,
                         rows.begin() + static_cast<std::ptrdiff_t>(end));
            endInsertRows();
            place = end - 1;
        }
    }
    /// Both have the same keys in the same order; neighbours that differ are told together.
    void takeChanges(std::vector<Row>& rows) {
        for (std::size_t place = 0; place < rows.size(); ++place) {
            const std::size_t first = place;
            for (; place < rows.size() && !(rows_[place] == rows[place]); ++place)
                rows_[place] = std::move(rows[place]);
            tellChanged(first, place);
        }
    }
    void tellChanged(std::size_t first, std::size_t end) {
        if (end > first)
            Q_EMIT dataChanged(index(static_cast<int>(first)), index(static_cast<int>(end) - 1));
    }

    std::vector<Row> rows_;
};

}  // namespace marlet
