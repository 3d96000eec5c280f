#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <map>
#include <optional>
#include <vector>

#include "screens/base/row_list.h"
#include "screens/inspector/draft_fields.h"
#include "screens/inspector/inspected.h"

namespace marlet {

/// One field of the form.
struct FieldRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString label MEMBER label)
    Q_PROPERTY(QString prompt MEMBER prompt)
    Q_PROPERTY(QString text MEMBER text)
    Q_PROPERTY(bool isLong MEMBER isLong)
    Q_PROPERTY(bool mark MEMBER mark)  ///< differs from what is in the file now
    Q_PROPERTY(QString oldValue MEMBER oldValue)

public:
    QString key;
    QString label;
    QString prompt;
    QString text;
    QString oldValue;
    bool isLong = false;
    bool mark = false;
    bool operator==(const FieldRow&) const = default;
};

/// The form over a draft's details, and the way back through a person's edits.
class InspectorDetails : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App.inspector has it")
    Q_PROPERTY(QAbstractItemModel* fields READ fields CONSTANT)
    Q_PROPERTY(bool edited READ isEdited NOTIFY changed)  ///< there are edits to undo

public:
    explicit InspectorDetails(AppModel& model, QObject* parent = nullptr);
    RowListBase* fields() { return &fields_; }
    bool isEdited() const { return edited_; }
    void refresh(const Inspected& now);

    /// What was typed into the field at that place of the form.
    Q_INVOKABLE void edit(int row, const QString& typed);
    /// "Undo my edits": as loaded.
    Q_INVOKABLE void undoAll();
    /// Takes back the last edit; typing on in one field is one edit.
    Q_INVOKABLE void undo();

Q_SIGNALS:
    void changed();

private:
    struct Step {
        std::optional<DraftField> field;  ///< none: all of them
        Details before;
    };
    FieldRow rowOf(DraftField field, const Inspected& now, const Details& written) const;
    const FileDraft* draft() const;
    void put(Details details);
    void remember(std::optional<DraftField> field, const Details& before);

    AppModel& model_;
    RowList<FieldRow> fields_;
    std::vector<DraftField> shown_;
    std::optional<std::filesystem::path> file_;
    std::map<DraftField, QString> typed_;  ///< in this file, as it was typed
    std::map<std::filesystem::path, std::vector<Step>> steps_;
    bool edited_ = false;
};

}  // namespace marlet
