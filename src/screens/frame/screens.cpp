#include "screens/frame/screens.h"

#include "app/app_model.h"
#include "app/quit_gate.h"
#include "app/updater.h"
#include "foundation/run_control.h"
#include "identify/scanner.h"
#include "screens/base/file_address.h"
#include "screens/base/qt_text.h"
#include "screens/desktop/desktop_model.h"
#include "screens/history/history_model.h"
#include "screens/inspector/inspector_model.h"
#include "screens/picker/picker_model.h"
#include "screens/queue/queue_model.h"
#include "screens/review/review_model.h"
#include "screens/settings/settings_model.h"

namespace marlet {

namespace {

Screens* living = nullptr;

}  // namespace

Screens::Screens(AppModel& model, QuitGate& gate, QObject* parent)
    : QObject(parent),
      model_(model),
      gate_(gate),
      review_(new ReviewModel(model, this)),
      inspector_(new InspectorModel(model, this)),
      picker_(new PickerModel(model, this)),
      queue_(new QueueModel(model, this)),
      history_(new HistoryModel(model, this)),
      settings_(new SettingsModel(model, this)),
      desktop_(new DesktopModel(model, this)),
      parts_{review_, inspector_, picker_, queue_, history_, settings_, desktop_} {
    living = this;
    soon_.setSingleShot(true);
    connect(&soon_, &QTimer::timeout, this, [this] { refreshNow(); });
    model_.onChanged = [this] { refreshSoon(); };
    gate_.onWait = [this] {
        quitWaits_ = true;
        Q_EMIT changed();
    };
    connect(desktop_, &DesktopModel::queueAsked, this, [this] { setTab(1); });
    refreshNow();
    model_.history().load();
}

Screens::~Screens() {
    model_.onChanged = nullptr;
    gate_.onWait = nullptr;
    living = nullptr;
}

Screens* Screens::create(QQmlEngine*, QJSEngine*) {
    QJSEngine::setObjectOwnership(living, QJSEngine::CppOwnership);
    return living;
}

void Screens::refreshSoon() {
    if (!soon_.isActive()) soon_.start(0);
}

void Screens::refreshNow() {
    soon_.stop();
    for (ScreenPart* part : parts_) part->refresh();
    if (model_.openSettingsTick != settingsTick_) {
        settingsTick_ = model_.openSettingsTick;
        Q_EMIT settingsAsked();
    }
    Q_EMIT changed();
}

int Screens::tab() const {
    return static_cast<int>(model_.tab);
}

void Screens::setTab(int tab) {
    model_.tab = static_cast<AppModel::Tab>(std::clamp(tab, 0, 2));
    Q_EMIT changed();
}

QString Screens::reviewCount() const {
    return tr("%1 ready").arg(model_.readyCount());
}

QString Screens::queueCount() const {
    const WriteQueue& queue = model_.queue();
    if (queue.active())
        return tr("%1 %").arg(static_cast<int>(100 * queue.doneBytes() / queue.totalBytes()));
    return queue.waitingCount() == 0 ? QString() : tr("%1 waiting").arg(queue.waitingCount());
}

QString Screens::historyCount() const {
    const int own =
        model_.forceEmptyHistory ? 0 : static_cast<int>(model_.history().known().size());
    const int count = own + (model_.sampleEntry && !model_.forceEmptyHistory ? 1 : 0);
    return count == 1 ? tr("%1 item").arg(count) : tr("%1 items").arg(count);
}

QString Screens::notice() const {
    return toQt(model_.notice);
}

QString Screens::toast() const {
    return toQt(model_.toast());
}

bool Screens::inspectorShown() const {
    return model_.inspectorShown;
}

void Screens::setInspectorShown(bool shown) {
    model_.inspectorShown = shown;
    Q_EMIT changed();
}

bool Screens::askClearHistory() const {
    return model_.askClearHistory;
}

void Screens::add(const QList<QUrl>& urls) {
    std::vector<std::filesystem::path> paths;
    QStringList elsewhere;
    for (const QUrl& url : urls) {
        if (auto path = FileAddress::pathOf(url))
            paths.push_back(std::move(*path));
        else
            elsewhere << url.toDisplayString(QUrl::RemoveUserInfo | QUrl::RemoveQuery);
    }
    if (!paths.empty()) model_.add(std::move(paths));
    if (elsewhere.size() == 1)
        model_.say(fromQt(tr("“%1” isn't on this computer. Copy it here first, then add it.")
                              .arg(elsewhere.first())));
    else if (!elsewhere.isEmpty())
        model_.say(fromQt(tr("%1 of those aren't on this computer. Copy them here first, then add "
                             "them.")
                              .arg(elsewhere.size())));
}

QString Screens::filmPatterns() const {
    QStringList patterns;
    for (const std::string& extension : Scanner::extensions) {
        QString pattern = QStringLiteral("*.");
        for (const QChar letter : toQt(extension))
            pattern +=
                letter.isLetter() ? u'[' + letter + letter.toUpper() + u']' : QString(letter);
        patterns << pattern;
    }
    return patterns.join(u' ');
}

void Screens::closeNotice() {
    model_.notice.reset();
    refreshSoon();
}

void Screens::askToClearHistory() {
    model_.tab = AppModel::Tab::history;
    model_.askClearHistory = true;
    refreshSoon();
}

void Screens::answerClearHistory(bool clear) {
    model_.askClearHistory = false;
    if (clear) model_.history().clearSoon();
    refreshSoon();
}

void Screens::openSettings() {
    Q_EMIT settingsAsked();
}

void Screens::openAbout() {
    Q_EMIT aboutAsked();
}

bool Screens::canCheckForUpdates() const {
    return Updater::shared().canCheck();
}

void Screens::checkForUpdates() {
    Updater::shared().check();
}

void Screens::quit() {
    gate_.requestQuit();
}

void Screens::endSession(const std::function<void()>& askToWait) {
    model_.keepNow();
    // Otherwise whoever ends the session ends the program as well, or changes their mind.
    if (!RunControl::endMustWait()) return;
    askToWait();
    quit();
}

}  // namespace marlet
