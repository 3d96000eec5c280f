#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <memory>

#include "app/history_rows.h"

namespace marlet {

/// A row of History as the list shows it. Its texts are made when they are shown: of tens of
/// thousands of rows a window shows a dozen.
struct HistoryLine {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString day MEMBER day)
    Q_PROPERTY(QString title READ title)
    Q_PROPERTY(QString sub READ sub)
    Q_PROPERTY(QString line READ line)
    Q_PROPERTY(QString time READ time)
    Q_PROPERTY(QString kind READ kind)
    Q_PROPERTY(QString poster READ poster)
    Q_PROPERTY(QString otherPoster READ otherPoster)
    Q_PROPERTY(bool open MEMBER open)
    Q_PROPERTY(QStringList details MEMBER details)
    Q_PROPERTY(int restorable MEMBER restorable)
    Q_PROPERTY(QString spoken READ spoken)

public:
    QString key;                            ///< the id of its first entry
    QString day;                            ///< the heading above it
    std::shared_ptr<const HistoryRow> row;  ///< never null in a list
    bool open = false;
    QStringList details;  ///< label, text, label, text; empty until they are known
    int restorable = -1;  ///< files whose originals can be put back; -1: not known

    QString title() const;
    QString sub() const;
    QString line() const;
    QString time() const;    ///< of the day
    QString kind() const;    ///< "done", "failed" or "skipped"
    QString poster() const;  ///< the saved picture's address; empty without one
    /// Where the catalogue has that picture, for when the saved one is gone.
    QString otherPoster() const;
    QString spoken() const;  ///< the row in one sentence
    QList<QUrl> files() const;
    bool isOf(const HistoryList& entries) const;
    bool operator==(const HistoryLine& other) const;
};

}  // namespace marlet
