#pragma once

#include <QtQml/qqmlregistration.h>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "screens/base/row_list.h"
#include "screens/base/screen_part.h"
#include "screens/review/review_filter.h"
#include "screens/review/review_row.h"
#include "screens/review/row_selection.h"

namespace marlet {

class AppModel;

/// The rows of Review. QML knows no templates.
class ReviewRows : public RowList<ReviewRow> {
    Q_OBJECT
    QML_ANONYMOUS

public:
    using RowList::RowList;
};

/// What Review shows: the rows, their states, the search and the filter, the action bar, how far a
/// scan is, and what is left from an earlier run. Several rows can be selected; the current one is
/// the application's selection.
class ReviewModel : public marlet::ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")
    Q_PROPERTY(marlet::ReviewRows* rows READ rows CONSTANT)
    Q_PROPERTY(int current READ current NOTIFY changed)   ///< row of the keyboard; -1: none
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY changed)  ///< nothing at all is in Review
    Q_PROPERTY(bool scanning READ scanning NOTIFY changed)
    Q_PROPERTY(QString scanText READ scanText NOTIFY changed)
    Q_PROPERTY(QString scanCount READ scanCount NOTIFY changed)       ///< "3 of 12"
    Q_PROPERTY(double scanFraction READ scanFraction NOTIFY changed)  ///< below 0: not known
    Q_PROPERTY(int filter READ filter NOTIFY changed)  ///< 0 all, 1 need a look, 2 ready
    Q_PROPERTY(QString query READ query NOTIFY changed)
    Q_PROPERTY(QString found READ found NOTIFY changed)  ///< "3 of 12", empty without a filter
    Q_PROPERTY(QString needsChecking READ needsChecking NOTIFY changed)  ///< empty: nothing does
    Q_PROPERTY(QString selection READ selection NOTIFY changed)          ///< empty for one row
    Q_PROPERTY(bool locked READ locked NOTIFY changed)  ///< some can't be written to
    Q_PROPERTY(bool adding READ adding NOTIFY changed)  ///< to the queue
    Q_PROPERTY(bool canAdd READ canAdd NOTIFY changed)
    Q_PROPERTY(bool canAddAll READ canAddAll NOTIFY changed)
    Q_PROPERTY(bool canAccept READ canAccept NOTIFY changed)
    Q_PROPERTY(QString acceptText READ acceptText NOTIFY changed)
    /// Why no row is shown; empty while there are some.
    Q_PROPERTY(QString nothingHere READ nothingHere NOTIFY changed)
    Q_PROPERTY(QString unfinished READ unfinished NOTIFY changed)  ///< empty: nothing is left

public:
    explicit ReviewModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;

    ReviewRows* rows() { return &rows_; }
    int current() const { return selected_.current(); }
    bool isEmpty() const { return shown_.isEmpty; }
    bool scanning() const { return shown_.scanning; }
    QString scanText() const { return shown_.scanText; }
    QString scanCount() const;
    double scanFraction() const;
    int filter() const { return static_cast<int>(filter_.verdicts()); }
    QString query() const { return shown_.query; }
    QString found() const;
    QString needsChecking() const;
    QString selection() const;
    bool locked() const { return shown_.locked; }
    bool adding() const { return shown_.adding; }
    bool canAdd() const { return shown_.selected > 0 && !shown_.adding; }
    bool canAddAll() const { return shown_.canAddAll; }
    bool canAccept() const { return shown_.canAccept; }
    QString acceptText() const;
    QString nothingHere() const;
    QString unfinished() const { return shown_.unfinished; }

    // What a person sees.
    Q_INVOKABLE void setFilter(int filter);
    Q_INVOKABLE void setQuery(const QString& query);

    // The selection. Modifiers are Qt's.
    Q_INVOKABLE void click(int row, int modifiers);
    /// A click with the other button: keeps a selection that the row belongs to.
    Q_INVOKABLE void clickForMenu(int row);
    /// True when the list has a use for the key. A page is so many rows.
    Q_INVOKABLE bool press(int key, int modifiers, int page);
    Q_INVOKABLE void selectFirst();

    // What is done with the selected items.
    Q_INVOKABLE void addSelected();
    Q_INVOKABLE void addAll();
    Q_INVOKABLE void acceptSelected();
    Q_INVOKABLE void removeSelected();
    Q_INVOKABLE void refreshSelected();
    Q_INVOKABLE void pickMatch();
    Q_INVOKABLE void showInspector();
    Q_INVOKABLE QList<QUrl> selectedFiles() const;

    Q_INVOKABLE void cancelScan();
    Q_INVOKABLE void resumeUnfinished();
    Q_INVOKABLE void discardUnfinished();

Q_SIGNALS:
    void changed();
    /// The row is to be brought into view.
    void reveal(int row);
    /// The keyboard asks for the menu of the row.
    void menuAsked(int row);

private:
    /// What the plain properties tell.
    struct Shown {
        bool isEmpty = true;
        bool scanning = false;
        QString scanText;
        int scanDone = 0;
        int scanTotal = 0;
        int filter = 0;
        QString query;
        int found = 0;
        int all = 0;
        int needsChecking = 0;
        int selected = 0;
        int current = -1;
        bool locked = false;
        bool adding = false;
        bool canAddAll = false;
        bool canAccept = false;
        QString unfinished;
        bool operator==(const Shown&) const = default;
    };
    enum class Stay { selected, nothing };  ///< what stays shown though the filter has no place

    bool pressOnSelection(int key);
    void makeRows(Stay stay, bool goOn);
    void markSelected();
    void selectionChanged();
    void adoptSelection();
    void tellSelection();
    void tellOthers() const;
    void loadDrafts();
    void refreshShown();
    bool anyToAccept() const;
    const LibraryItem* itemAt(int row) const;
    void forSelected(const std::function<void(const LibraryItem&)>& visit) const;

    AppModel& model_;
    ReviewRows rows_;
    RowSelection selected_;
    ReviewFilter filter_;
    Shown shown_;
    std::vector<std::string> texts_;   ///< of all items, for the search
    std::uint64_t textsOf_ = 0;        ///< their revision
    std::uint64_t revision_ = 0;       ///< that the rows show
    std::optional<std::string> told_;  ///< the selection as the application has it from here
    QTimer loading_;                   ///< keeps a held arrow key from loading every row it passes
    bool loadAgain_ = false;
};

}  // namespace marlet
