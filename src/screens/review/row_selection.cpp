#include "screens/review/row_selection.h"

#include <QHash>
#include <algorithm>

namespace marlet {

namespace {

QHash<QString, int> placesOf(const std::vector<QString>& keys) {
    QHash<QString, int> places;
    places.reserve(static_cast<qsizetype>(keys.size()));
    for (std::size_t i = 0; i < keys.size(); ++i) places.insert(keys[i], static_cast<int>(i));
    return places;
}

}  // namespace

std::vector<int> RowSelection::rows() const {
    std::vector<int> rows;
    for (std::size_t i = 0; i < keys_.size(); ++i)
        if (selected_.contains(keys_[i])) rows.push_back(static_cast<int>(i));
    return rows;
}

void RowSelection::setKeys(std::vector<QString> keys, bool goOn) {
    const QHash<QString, int> places = placesOf(keys);
    const auto at = [&](int row) {
        return row < 0 ? -1 : places.value(keys_[static_cast<std::size_t>(row)], -1);
    };
    int current = at(current_);
    const int anchor = at(anchor_);
    const bool hadSome = !selected_.isEmpty();
    selected_.removeIf([&](const QString& key) { return !places.contains(key); });
    if (current < 0 && current_ >= 0 && !keys.empty()) {
        // Where the list goes on behind the row that is gone, else its end.
        current = static_cast<int>(keys.size()) - 1;
        for (int row = current_; row < static_cast<int>(keys_.size()); ++row)
            if (at(row) >= 0) {
                current = at(row);
                break;
            }
    }
    keys_ = std::move(keys);
    current_ = current;
    anchor_ = anchor < 0 ? current : anchor;
    if (hadSome && selected_.isEmpty()) {
        if (goOn && current_ >= 0)
            selected_.insert(keys_[static_cast<std::size_t>(current_)]);
        else if (!goOn)
            current_ = anchor_ = -1;
    }
}

void RowSelection::go(int row, How how) {
    if (keys_.empty()) return;
    row = std::clamp(row, 0, static_cast<int>(keys_.size()) - 1);
    const QString& key = keys_[static_cast<std::size_t>(row)];
    current_ = row;
    if (how == How::focus) return;
    if (how == How::toggle) {
        if (!selected_.remove(key)) selected_.insert(key);
        anchor_ = row;
        return;
    }
    selected_.clear();
    if (how == How::only || anchor_ < 0) anchor_ = row;
    for (int each = std::min(anchor_, row); each <= std::max(anchor_, row); ++each)
        selected_.insert(keys_[static_cast<std::size_t>(each)]);
}

void RowSelection::selectAll() {
    selected_ = QSet<QString>(keys_.begin(), keys_.end());
    if (current_ < 0 && !keys_.empty()) current_ = anchor_ = 0;
}

void RowSelection::clear() {
    selected_.clear();
    current_ = anchor_ = -1;
}

}  // namespace marlet
