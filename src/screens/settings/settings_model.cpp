#include "screens/settings/settings_model.h"

#include <algorithm>

#include "app/app_model.h"
#include "app/build_info.h"
#include "app/settings.h"
#include "app/updater.h"
#include "foundation/paths.h"
#include "foundation/text.h"
#include "screens/base/file_address.h"
#include "screens/base/qt_text.h"

namespace marlet {

SettingsModel::SettingsModel(AppModel& model, QObject* parent) : ScreenPart(parent), model_(model) {
    keys_.set(KeyTable::rows());
    const auto tellAll = [this] { stored(); };
    connect(&sources_, &SourceOrder::stored, this, tellAll);
    connect(&guessing_, &GuessSettings::stored, this, tellAll);
    refresh();
}

SettingsModel::Shown SettingsModel::read() {
    return {.appearance = static_cast<int>(Settings::appearance()),
            .artwork = Settings::artworkStyle() == ArtworkStyle::tall ? 1 : 0,
            .fixForAppleTV = Settings::fixForAppleTV(),
            .libraryWrites = Settings::allowLibraryWrites(),
            .sameFolder = Settings::outputSameFolder(),
            .notifyAtEnd = Settings::notifyAtEnd(),
            .folder = Settings::outputFolder().string()};
}

void SettingsModel::refresh() {
    const bool typed = languages_.refresh(Settings::keepLanguages());
    const bool other = take(shown_, read());
    sources_.refresh();
    guessing_.refresh();
    if (typed || other) Q_EMIT changed();
}

void SettingsModel::stored() {
    refresh();
    if (model_.onChanged) model_.onChanged();
}

void SettingsModel::open() {
    // What was typed and not taken as it stands is seen as it counts.
    languages_.forget(Settings::keepLanguages());
    Q_EMIT changed();
    key_.look();
    guessing_.open();
    workFiles_.measure();
}

void SettingsModel::setAppearance(int look) {
    Settings::setAppearance(static_cast<Settings::Appearance>(std::clamp(look, 0, 2)));
    stored();
}

void SettingsModel::setArtwork(int style) {
    Settings::setArtworkStyle(style == 1 ? ArtworkStyle::tall : ArtworkStyle::wide);
    stored();
}

void SettingsModel::setLanguages(const QString& list) {
    languages_.type(list);
    Settings::setKeepLanguages(fromQt(list));
    languages_.see(Settings::keepLanguages());
    Q_EMIT changed();
    stored();
}

void SettingsModel::setFixForAppleTV(bool on) {
    Settings::setFixForAppleTV(on);
    stored();
}

void SettingsModel::setLibraryWrites(bool on) {
    if (on && !Settings::libraryWritesExplained()) {
        // The switch shows what is stored, not that it was touched.
        Q_EMIT changed();
        Q_EMIT libraryQuestion();
        return;
    }
    Settings::setAllowLibraryWrites(on);
    stored();
}

void SettingsModel::answerLibraryQuestion(bool allow) {
    Settings::setLibraryWritesExplained(true);
    if (allow) Settings::setAllowLibraryWrites(true);
    stored();
}

void SettingsModel::setSameFolder(bool on) {
    Settings::setOutputSameFolder(on);
    stored();
}

void SettingsModel::saveNewFilesTo(const QUrl& folder) {
    const auto path = FileAddress::pathOf(folder);
    if (!path) {
        model_.say(
            fromQt(tr("New files can't be saved there: it isn't a folder of this computer.")));
        return;
    }
    // Settings are text; what they would give back is another folder.
    if (Text::repairUtf8(viewOf(path->native())) != path->native()) {
        model_.say(fromQt(tr("New files can't be saved there: the folder's name isn't UTF-8.")));
        return;
    }
    Settings::setOutputFolder(*path);
    Settings::setOutputSameFolder(false);
    stored();
}

void SettingsModel::setNotifyAtEnd(bool on) {
    Settings::setNotifyAtEnd(on);
    stored();
}

QString SettingsModel::folder() const {
    const auto bare = [](QString path) {
        if (path.size() > 1 && path.endsWith(QLatin1Char('/'))) path.chop(1);
        return path;
    };
    const QString path = bare(toQt(shown_.folder));
    const QString home = bare(toQt(Paths::homeDir()));
    if (path == home) return QStringLiteral("~");
    if (!home.isEmpty() && path.startsWith(home + QLatin1Char('/')))
        return QLatin1Char('~') + path.mid(home.size());
    return path;
}

QUrl SettingsModel::folderPlace() const {
    return FileAddress::of(shown_.folder);
}

QString SettingsModel::versionLine() const {
    return toQt(BuildInfo::versionLine());
}

QString SettingsModel::builtLine() const {
    return toQt(BuildInfo::builtLine());
}

QString SettingsModel::updates() const {
    return toQt(Updater::shared().words());
}

}  // namespace marlet
