#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <vector>

#include "screens/base/row_list.h"
#include "screens/inspector/inspected.h"

namespace marlet {

/// One field, as it is in the file now and as it will be.
struct CompareRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString label MEMBER label)
    Q_PROPERTY(QString before MEMBER before)
    Q_PROPERTY(QString after MEMBER after)
    Q_PROPERTY(bool differs MEMBER differs)
    Q_PROPERTY(QString spoken MEMBER spoken)

public:
    QString key;
    QString label;
    QString before;
    QString after;
    QString spoken;
    bool differs = false;
    bool operator==(const CompareRow&) const = default;
};

/// What is in the file now beside what will be written, covers included: reckoned by the very
/// rules that a write goes by.
class InspectorCompare : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App.inspector has it")
    Q_PROPERTY(QAbstractItemModel* fields READ fields CONSTANT)
    Q_PROPERTY(bool possible READ isPossible NOTIFY changed)
    Q_PROPERTY(QString head READ head NOTIFY changed)  ///< how much differs
    Q_PROPERTY(QString foot READ foot NOTIFY changed)  ///< what else stays
    Q_PROPERTY(QString left READ left NOTIFY changed)
    Q_PROPERTY(QString right READ right NOTIFY changed)
    Q_PROPERTY(QString coverBefore READ coverBefore NOTIFY changed)
    Q_PROPERTY(QString coverAfter READ coverAfter NOTIFY changed)
    Q_PROPERTY(QString coverWords READ coverWords NOTIFY changed)
    Q_PROPERTY(bool wide READ isWide NOTIFY changed)

public:
    using QObject::QObject;
    void refresh(const Inspected& now);

    RowListBase* fields() { return &fields_; }
    bool isPossible() const { return shown_.possible; }
    QString head() const { return shown_.head; }
    QString foot() const { return shown_.foot; }
    QString left() const { return shown_.left; }
    QString right() const { return shown_.right; }
    QString coverBefore() const { return shown_.coverBefore; }
    QString coverAfter() const { return shown_.coverAfter; }
    QString coverWords() const { return shown_.coverWords; }
    bool isWide() const { return shown_.wide; }

Q_SIGNALS:
    void changed();

private:
    struct Shown {
        bool possible = false;
        bool wide = false;
        QString head, foot, left, right, coverBefore, coverAfter, coverWords;
        bool operator==(const Shown&) const = default;
    };
    void showCovers(const Inspected& now, Shown& shown, int& changes) const;

    Shown shown_;
    RowList<CompareRow> fields_;
};

}  // namespace marlet
