#pragma once

#include <QtQml/qqmlregistration.h>
#include <QStringList>
#include <optional>
#include <vector>

#include "screens/base/screen_part.h"
#include "screens/picker/hand_form.h"
#include "screens/picker/picker_pane.h"

namespace marlet {

class AppModel;

/// The sheet that answers "Which one is this?" for AppModel::matchPickerURL: a tab for each source
/// in use, and the hand form. What a person typed and picked ends with the sheet, and so does
/// whatever is being asked.
class PickerModel : public marlet::ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")
    Q_PROPERTY(bool open READ isOpen NOTIFY changed)
    Q_PROPERTY(QString fileName READ fileName NOTIFY changed)
    Q_PROPERTY(QString fileFacts READ fileFacts NOTIFY changed)  ///< how long it plays
    Q_PROPERTY(QList<QString> tabs READ tabs NOTIFY tabsChanged)
    Q_PROPERTY(int tab READ tab NOTIFY changed)
    Q_PROPERTY(marlet::PickerPane* pane READ pane NOTIFY changed)
    Q_PROPERTY(marlet::HandForm* hand READ hand CONSTANT)

public:
    explicit PickerModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;

    bool isOpen() const { return file_.has_value(); }
    QString fileName() const;
    QString fileFacts() const;
    QStringList tabs() const;
    int tab() const { return tab_; }
    PickerPane* pane() const;
    HandForm* hand() const { return hand_; }

    Q_INVOKABLE void setTab(int tab);
    /// "Not listed?": from the show that is open, else from the words of the search.
    Q_INVOKABLE void tagByHand();
    /// One step back: from the form to the search, from a show to the results; else it closes.
    Q_INVOKABLE void back();
    Q_INVOKABLE void close();

Q_SIGNALS:
    void tabsChanged();
    void changed();

private:
    void begin(PickerFile file);
    void end();
    int firstTab() const;

    AppModel& model_;
    std::optional<PickerFile> file_;
    std::vector<PickerPane*> all_;     ///< one for each source that there is
    std::vector<PickerPane*> active_;  ///< those in use, in the person's order
    int tab_ = 0;
    HandForm* hand_;
};

}  // namespace marlet
