#pragma once

#include <QtQml/qqmlregistration.h>
#include <QHash>
#include <QTimer>
#include <QUrl>
#include <memory>
#include <vector>

#include "app/history_rows.h"
#include "screens/base/row_list.h"
#include "screens/base/screen_part.h"
#include "screens/history/history_line.h"
#include "sources/async.h"

namespace marlet {

class AppModel;

/// The rows of History under their days. They are made on a worker, and only while somebody looks
/// at them; what needs a look at files is found out there, too, a row at a time.
class HistoryModel : public marlet::ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")
    Q_PROPERTY(QAbstractItemModel* rows READ rows CONSTANT)
    /// "unknown" until the first rows are there, then "empty", "nothing" (after the filter) or
    /// "rows"
    Q_PROPERTY(QString stage READ stage NOTIFY changed)
    Q_PROPERTY(bool shown READ shown WRITE setShown NOTIFY changed)
    Q_PROPERTY(
        int filter READ filter WRITE setFilter NOTIFY changed)  ///< 0 all, 1 done, 2 not done
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY changed)
    Q_PROPERTY(bool canRestore READ canRestore NOTIFY changed)  ///< no run is on
    Q_PROPERTY(QString restoreMessage READ restoreMessage NOTIFY restoreAsked)
    Q_PROPERTY(QString restoreButton READ restoreButton NOTIFY restoreAsked)

public:
    explicit HistoryModel(AppModel& model, QObject* parent = nullptr);
    /// What a worker still finds out is dropped.
    ~HistoryModel() override;
    void refresh() override;

    QAbstractItemModel* rows() { return &lines_; }
    QString stage() const { return stage_; }
    bool shown() const { return shown_; }
    void setShown(bool shown);
    int filter() const;
    void setFilter(int filter);
    QString query() const;
    void setQuery(const QString& query);
    bool canRestore() const { return canRestore_; }
    QString restoreMessage() const;
    QString restoreButton() const;

    /// Opens or shuts a row.
    Q_INVOKABLE void toggle(const QString& key);
    /// Finds out what a row's menu may offer.
    Q_INVOKABLE void look(const QString& key);
    Q_INVOKABLE QList<QUrl> filesOf(const QString& key) const;
    /// Hands the row's files over again, to Review.
    Q_INVOKABLE void tryAgain(const QString& key);
    /// "Restore Original Details…": asks; nothing when there is nothing to put back.
    Q_INVOKABLE void askRestore(const QString& key);
    Q_INVOKABLE void answerRestore(bool restore);
    /// What the save panel offers.
    Q_INVOKABLE QUrl exportPlace() const;
    /// Writes History as CSV and tells how it went.
    Q_INVOKABLE void exportTo(const QUrl& file);

Q_SIGNALS:
    void changed();
    void restoreAsked();

private:
    /// What was found out about a row's files.
    struct Known {
        HistoryList entries;
        QStringList details;
        HistoryList restorable;
    };
    struct Built {
        std::vector<HistoryLine> lines;
        bool isEmpty = true;
    };
    using Rows = std::shared_ptr<const Built>;

    bool isOutdated() const;
    const HistoryList& entries() const;
    void buildSoon();
    Task<> load();
    Task<> build();
    void take(Built built);
    void complete(HistoryLine& line) const;
    Task<> findOut(QString key);
    void tell(const QString& notice);
    Task<> restore(HistoryList entries);
    Task<> write(std::filesystem::path file);

    AppModel& model_;
    RowList<HistoryLine> lines_;
    QString stage_ = QStringLiteral("unknown");
    bool shown_ = false;
    bool canRestore_ = true;
    mutable HistoryList sampled_;  ///< History's own below the sample
    HistoryList built_;            ///< the entries of the newest build, finished or not
    int builtFilter_ = -1;         ///< -1: nothing has been built
    std::string builtQuery_;
    Moment builtDay_{};  ///< its headings say "Today"
    bool loading_ = false;
    bool building_ = false;
    QTimer typing_;  ///< runs while a person types in the search field
    QHash<QString, Known> known_;
    HistoryList toRestore_;  ///< what the open question is about
    CancelToken life_;
};

}  // namespace marlet
