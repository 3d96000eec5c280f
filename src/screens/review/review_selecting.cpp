// How rows of Review are selected, and how the selection reaches the application.

#include <algorithm>

#include "app/app_model.h"
#include "screens/review/review_model.h"

namespace marlet {

namespace {

RowSelection::How howOf(int modifiers) {
    if ((modifiers & Qt::ShiftModifier) != 0) return RowSelection::How::extend;
    if ((modifiers & Qt::ControlModifier) != 0) return RowSelection::How::toggle;
    return RowSelection::How::only;
}

/// Where a key takes the current row; nothing for a key that doesn't move it.
std::optional<int> targetOf(int key, int current, int count, int page) {
    switch (key) {
        case Qt::Key_Up:
            return current < 0 ? count - 1 : current - 1;
        case Qt::Key_Down:
            return current + 1;
        case Qt::Key_PageUp:
            return std::max(0, current) - page;
        case Qt::Key_PageDown:
            return std::max(0, current) + page;
        case Qt::Key_Home:
            return 0;
        case Qt::Key_End:
            return count - 1;
        default:
            return std::nullopt;
    }
}

}  // namespace

void ReviewModel::click(int row, int modifiers) {
    selected_.go(row, howOf(modifiers));
    selectionChanged();
}

void ReviewModel::clickForMenu(int row) {
    if (row < 0 || row >= rows_.count()) return;
    selected_.go(row, selected_.contains(rows_.at(row).key) ? RowSelection::How::focus
                                                            : RowSelection::How::only);
    selectionChanged();
}

bool ReviewModel::press(int key, int modifiers, int page) {
    const bool control = (modifiers & Qt::ControlModifier) != 0;
    if (const auto target = targetOf(key, current(), rows_.count(), std::max(1, page))) {
        // Ctrl alone moves the keyboard and leaves what is selected.
        const auto how = howOf(modifiers);
        selected_.go(*target, how == RowSelection::How::toggle ? RowSelection::How::focus : how);
    } else if (control && key == Qt::Key_A) {
        selected_.selectAll();
    } else if (key == Qt::Key_Space && current() >= 0) {
        selected_.go(current(), control ? RowSelection::How::toggle : RowSelection::How::only);
    } else {
        const bool asksMenu =
            key == Qt::Key_Menu || (key == Qt::Key_F10 && (modifiers & Qt::ShiftModifier) != 0);
        if (asksMenu && current() >= 0) {
            Q_EMIT menuAsked(current());
            return true;
        }
        const bool isReturn = key == Qt::Key_Return || key == Qt::Key_Enter;
        if (control && isReturn) {
            (modifiers & Qt::ShiftModifier) != 0 ? acceptSelected() : addSelected();
            return true;
        }
        return !control && pressOnSelection(key);
    }
    selectionChanged();
    return true;
}

bool ReviewModel::pressOnSelection(int key) {
    switch (key) {
        case Qt::Key_Delete:
        case Qt::Key_Backspace:
            removeSelected();
            return true;
        case Qt::Key_F2:
            pickMatch();
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            showInspector();
            return true;
        case Qt::Key_Escape:
            if (selected_.count() < 2) return false;
            selected_.go(current(), RowSelection::How::only);
            selectionChanged();
            return true;
        default:
            return false;
    }
}

void ReviewModel::selectFirst() {
    if (current() < 0) selected_.go(0, RowSelection::How::only);
    selectionChanged();
}

void ReviewModel::selectionChanged() {
    markSelected();
    tellSelection();
    refreshShown();
    if (current() >= 0) Q_EMIT reveal(current());
}

void ReviewModel::markSelected() {
    rows_.change(
        [this](ReviewRow& row) { return take(row.selected, selected_.contains(row.key)); });
}

/// Somebody else has selected a row, or a choice of match gave the selected one another name.
void ReviewModel::adoptSelection() {
    const bool wasGone = told_ && model_.item(*told_) == nullptr;
    told_ = model_.reviewID;
    if (!told_) {
        // What was selected is gone from Review, and the list has gone on to the next row.
        if (!wasGone) selected_.clear();
        markSelected();
        tellSelection();
        return;
    }
    const QString key = ReviewRow::keyOf(*told_);
    if (rows_.indexOf(key) < 0 && filter_.isOn()) {
        filter_ = {};
        makeRows(Stay::selected, false);
    }
    const int row = rows_.indexOf(key);
    if (row < 0) return;
    selected_.go(row, RowSelection::How::only);
    markSelected();
    loadDrafts();
    Q_EMIT reveal(row);
}

void ReviewModel::tellSelection() {
    const std::vector<int> rows = selected_.rows();
    const bool onCurrent = std::ranges::find(rows, current()) != rows.end();
    const LibraryItem* item = rows.empty() ? nullptr : itemAt(onCurrent ? current() : rows.front());
    const auto id = item == nullptr ? std::nullopt : std::optional(item->id);
    if (id == told_ && id == model_.reviewID) return;
    told_ = id;
    model_.reviewID = id;
    model_.inspectorFile =
        item == nullptr ? std::nullopt : std::optional(item->files.front().file.url);
    tellOthers();
    loadDrafts();
}

/// The other screens show what is selected here.
void ReviewModel::tellOthers() const {
    if (model_.onChanged) model_.onChanged();
}

void ReviewModel::loadDrafts() {
    if (loading_.isActive()) {
        loadAgain_ = true;
        return;
    }
    if (!told_) return;
    const LibraryItem* item = model_.item(*told_);
    if (item == nullptr) return;
    loading_.start();
    model_.loadDrafts(*item);
}

}  // namespace marlet
