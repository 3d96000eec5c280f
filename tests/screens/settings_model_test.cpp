#include "screens/settings/settings_model.h"

#include <fstream>
#include <regex>

#include "app/build_info.h"
#include "app/model_fixture.h"
#include "app/settings.h"
#include "foundation/paths.h"
#include "screens/base/qt_text.h"
#include "sources/source_settings.h"
#include "support/model_stub.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// Counts how often a signal was given.
struct Heard {
    Heard(SettingsModel& screen, void (SettingsModel::*signal)()) {
        QObject::connect(&screen, signal, &screen, [count = count] { ++*count; });
    }
    std::shared_ptr<int> count = std::make_shared<int>(0);
};

class SettingsScreen : public ModelTest {
protected:
    SettingsScreen() {
        screen = std::make_unique<SettingsModel>(*model);
        model->onChanged = [this] {
            ++told;
            screen->refresh();
        };
    }
    ~SettingsScreen() override {
        model->onChanged = nullptr;
        screen.reset();
    }
    static Preferences& stored() { return Preferences::current(); }
    QStringList sources() {
        QStringList titles;
        for (int row = 0; row < screen->sources()->rows()->rowCount({}); ++row)
            titles << cell(*screen->sources()->rows(), row, "title").toString();
        return titles;
    }
    static QVariant cell(const RowListBase& rows, int row, const char* name) {
        return rows.data(rows.index(row, 0), rows.roleNames().key(name));
    }
    static void until(const std::function<bool()>& holds) {
        while (!holds()) pause();
    }

    std::unique_ptr<SettingsModel> screen;
    int told = 0;
};

TEST_F(SettingsScreen, ShowsTheDefaultsWhenNothingIsStored) {
    Preferences::install(std::make_unique<MemoryPreferences>());
    screen->refresh();
    EXPECT_EQ(screen->appearance(), 0);
    EXPECT_EQ(screen->artwork(), 0);
    EXPECT_EQ(screen->languages(), "English");
    EXPECT_TRUE(screen->fixForAppleTV());
    EXPECT_FALSE(screen->libraryWrites());
    EXPECT_FALSE(screen->sameFolder());
    EXPECT_EQ(screen->folder(), "~/Desktop");
    EXPECT_TRUE(screen->notifyAtEnd());
    EXPECT_EQ(sources(), (QStringList{"Apple TV (unofficial)", "TMDB", "iTunes Store"}));
    EXPECT_TRUE(cell(*screen->sources()->rows(), 0, "on").toBool());
}

TEST_F(SettingsScreen, StoresEachChangeAtOnceUnderItsKeyAndTellsAllScreens) {
    screen->setAppearance(2);
    EXPECT_EQ(stored().text("appearance"), "Dark");
    screen->setAppearance(1);
    EXPECT_EQ(stored().text("appearance"), "Light");
    screen->setAppearance(0);
    EXPECT_EQ(stored().text("appearance"), "Automatic");
    screen->setArtwork(1);
    EXPECT_EQ(stored().text("artworkStyle"), "tall");
    screen->setFixForAppleTV(false);
    EXPECT_EQ(stored().boolean("fixForAppleTV"), false);
    screen->setSameFolder(true);
    EXPECT_EQ(stored().boolean("outputSameFolder"), true);
    screen->setNotifyAtEnd(false);
    EXPECT_EQ(stored().boolean("notifyAtEnd"), false);
    screen->setLanguages("English, French");
    EXPECT_EQ(stored().text("keepLanguages"), "English, French");
    EXPECT_EQ(told, 8);
}

TEST_F(SettingsScreen, ShowsWhatSomebodyElseStored) {
    const Heard changes(*screen, &SettingsModel::changed);
    screen->refresh();
    EXPECT_EQ(*changes.count, 0) << "nothing differs";
    Settings::setFixForAppleTV(false);
    Settings::setKeepLanguages("German");
    screen->refresh();
    EXPECT_EQ(*changes.count, 1);
    EXPECT_FALSE(screen->fixForAppleTV());
    EXPECT_EQ(screen->languages(), "German");
}

TEST_F(SettingsScreen, ABadValueFallsToTheDefault) {
    stored().setText("appearance", "Purple");
    stored().setText("fixForAppleTV", "perhaps");
    stored().setText("artworkStyle", "round");
    stored().setText("outputFolder", "");
    screen->refresh();
    EXPECT_EQ(screen->appearance(), 0);
    EXPECT_TRUE(screen->fixForAppleTV());
    EXPECT_EQ(screen->artwork(), 0);
    EXPECT_EQ(screen->folder(), "~/Desktop");
    screen->setAppearance(7);
    EXPECT_EQ(stored().text("appearance"), "Dark");
}

TEST_F(SettingsScreen, ALanguageFieldKeepsWhatIsTypedWhileItIsStoredTrimmed) {
    screen->setLanguages("French, ");
    EXPECT_EQ(screen->languages(), "French, ") << "the next word is about to come";
    EXPECT_EQ(stored().text("keepLanguages"), "French,");
    screen->setLanguages("");
    EXPECT_EQ(screen->languages(), "");
    EXPECT_EQ(Settings::keepLanguages(), "English");
    screen->refresh();
    EXPECT_EQ(screen->languages(), "");
    screen->open();
    EXPECT_EQ(screen->languages(), "English");
}

TEST_F(SettingsScreen, TheLibraryQuestionIsAskedOnlyTheFirstTimeAndCancelSwitchesNothing) {
    const Heard asked(*screen, &SettingsModel::libraryQuestion);
    screen->setLibraryWrites(true);
    EXPECT_EQ(*asked.count, 1);
    EXPECT_FALSE(stored().boolean("allowLibraryWrites").has_value());
    screen->answerLibraryQuestion(false);
    EXPECT_EQ(stored().boolean("libraryWritesExplained"), true);
    EXPECT_FALSE(screen->libraryWrites());
    screen->setLibraryWrites(true);
    EXPECT_EQ(*asked.count, 1);
    EXPECT_TRUE(screen->libraryWrites());
    EXPECT_EQ(stored().boolean("allowLibraryWrites"), true);
    screen->setLibraryWrites(false);
    EXPECT_EQ(stored().boolean("allowLibraryWrites"), false);
}

TEST_F(SettingsScreen, AllowChangesSetsTheSwitchAndTheLockOpens) {
    addConfirmed({"Media Library/Charade (1963).mp4"});
    ASSERT_EQ(model->fileCount(), 1);
    EXPECT_EQ(model->lockedCount(), 1);
    screen->setLibraryWrites(true);
    screen->answerLibraryQuestion(true);
    EXPECT_TRUE(screen->libraryWrites());
    EXPECT_EQ(stored().boolean("libraryWritesExplained"), true);
    EXPECT_EQ(model->lockedCount(), 0);
}

TEST_F(SettingsScreen, TurningTheLibrarySwitchOffAsksNothing) {
    const Heard asked(*screen, &SettingsModel::libraryQuestion);
    stored().setBoolean("allowLibraryWrites", true);
    screen->setLibraryWrites(false);
    EXPECT_EQ(*asked.count, 0);
    EXPECT_FALSE(screen->libraryWrites());
}

TEST_F(SettingsScreen, AChosenFolderTakesNewFilesInsteadOfTheOriginalsOwn) {
    screen->setSameFolder(true);
    const fs::path folder = Paths::homeDir() / "My Films, Series";
    screen->saveNewFilesTo(QUrl::fromLocalFile(toQt(folder)));
    EXPECT_EQ(stored().text("outputFolder"), folder.string());
    EXPECT_EQ(stored().boolean("outputSameFolder"), false);
    EXPECT_EQ(screen->folder(), "~/My Films, Series");
    EXPECT_EQ(screen->folderPlace(), QUrl::fromLocalFile(toQt(folder)));
    screen->saveNewFilesTo(QUrl("sftp://example.org/films"));
    EXPECT_EQ(stored().text("outputFolder"), folder.string());
    EXPECT_EQ(model->toast(),
              "New files can't be saved there: it isn't a folder of this computer.");
    screen->saveNewFilesTo(QUrl::fromEncoded("file:///srv/Caf%E9"));
    EXPECT_EQ(stored().text("outputFolder"), folder.string());
    EXPECT_EQ(model->toast(), "New files can't be saved there: the folder's name isn't UTF-8.");
    screen->saveNewFilesTo(QUrl("file:///srv/films"));
    EXPECT_EQ(screen->folder(), "/srv/films");
    screen->saveNewFilesTo(QUrl::fromLocalFile(toQt(Paths::homeDir())));
    EXPECT_EQ(screen->folder(), "~");
}

TEST_F(SettingsScreen, SourcesMoveToAnyPlaceAndStayInOrder) {
    SourceOrder& order = *screen->sources();
    EXPECT_TRUE(order.move(0, 2));
    EXPECT_EQ(sources(), (QStringList{"TMDB", "iTunes Store", "Apple TV (unofficial)"}));
    EXPECT_EQ(SourceSettings::order(),
              (std::vector{SourceID::tmdb, SourceID::itunes, SourceID::appleTV}));
    EXPECT_TRUE(order.move(2, 1));
    EXPECT_EQ(sources(), (QStringList{"TMDB", "Apple TV (unofficial)", "iTunes Store"}));
    told = 0;
    EXPECT_FALSE(order.move(0, -1));
    EXPECT_FALSE(order.move(2, 3));
    EXPECT_FALSE(order.move(1, 1));
    EXPECT_EQ(told, 0);
}

TEST_F(SettingsScreen, OnlyAppleTVHasASwitchAndOthersAreAlwaysOn) {
    SourceOrder& order = *screen->sources();
    const RowListBase& rows = *order.rows();
    EXPECT_FALSE(cell(rows, 0, "on").toBool());
    EXPECT_EQ(cell(rows, 0, "spoken"), "Apple TV (unofficial), 1 of 3, Off");
    order.switchOn(0, true);
    EXPECT_EQ(stored().boolean("sourceOn.appleTV"), true);
    EXPECT_TRUE(cell(rows, 0, "on").toBool());
    EXPECT_EQ(cell(rows, 0, "spoken"), "Apple TV (unofficial), 1 of 3, On");
    EXPECT_FALSE(cell(rows, 1, "switchable").toBool());
    EXPECT_EQ(cell(rows, 1, "spoken"), "TMDB, 2 of 3, Always on");
    order.switchOn(1, false);
    EXPECT_TRUE(cell(rows, 1, "on").toBool());
    EXPECT_EQ(stored().boolean("sourceOn.appleTV"), true);
}

TEST_F(SettingsScreen, TheKeyFieldTellsWhereTheKeyComesFromAndWhatBecameOfIt) {
    screen->open();
    until([&] { return !screen->key()->origin().isEmpty(); });
    EXPECT_EQ(screen->key()->origin(),
              "The key in MARLET_TMDB_TOKEN is used, whatever the keyring holds.");
    EXPECT_EQ(screen->key()->result(), "");
    screen->key()->tryKey();
    EXPECT_TRUE(screen->key()->isBusy());
    EXPECT_EQ(screen->key()->result(), "Trying the key…");
    until([&] { return !screen->key()->isBusy(); });
    EXPECT_EQ(screen->key()->result(), "Key works.");
}

TEST_F(SettingsScreen, TheModelIsOffUntilAnAddressIsSetAndItsStateIsToldInWords) {
    GuessSettings& guessing = *screen->guessing();
    EXPECT_EQ(guessing.note(), "Off: no local model is set");
    EXPECT_FALSE(guessing.canAsk());
    ModelStub stub;
    guessing.setAddress(toQt(stub.root()) + " ");
    EXPECT_EQ(guessing.address(), toQt(stub.root()) + " ");
    EXPECT_EQ(stored().text("localModel"), stub.root());
    EXPECT_EQ(guessing.note(), "On this computer, not asked yet");
    EXPECT_TRUE(guessing.canAsk());
    guessing.ask();
    EXPECT_TRUE(guessing.isAsking());
    until([&] { return !guessing.isAsking(); });
    EXPECT_EQ(guessing.note(), "Ready on this computer");
    guessing.setName("small");
    EXPECT_EQ(stored().text("localModelName"), "small");
    guessing.setAddress("http://192.0.2.1");
    EXPECT_FALSE(guessing.canAsk()) << "not this computer";
    EXPECT_NE(guessing.note(), "Ready on this computer");
    guessing.setAddress("");
    EXPECT_EQ(guessing.note(), "Off: no local model is set");
}

TEST_F(SettingsScreen, AModelThatDoesNotAnswerIsToldAsSuch) {
    GuessSettings& guessing = *screen->guessing();
    guessing.setAddress("http://127.0.0.1:1");
    screen->open();
    until([&] { return !guessing.isAsking(); });
    EXPECT_EQ(guessing.note(), "The local model doesn't answer");
}

class WorkFilesTest : public SettingsScreen {
protected:
    fs::path folder(const std::string& uuid, std::size_t bytes) {
        const fs::path path = Paths::workDir() / uuid;
        fs::create_directories(path);
        std::ofstream(path / "copy.mp4") << std::string(bytes, 'x');
        return path;
    }
    void open() {
        screen->open();
        until([&] { return !files().isBusy(); });
    }
    WorkFiles& files() { return *screen->workFiles(); }
};

TEST_F(WorkFilesTest, WithoutFoldersThereIsNothingToCleanUp) {
    EXPECT_EQ(files().usage(), "");
    open();
    EXPECT_EQ(files().usage(), "None");
    EXPECT_FALSE(files().canCleanUp());
}

TEST_F(WorkFilesTest, CleaningUpTellsWhatWasFreedAndWhatStaysAndWhy) {
    const fs::path ended = folder("5C0A1C0E-0001-4000-8000-000000000001", 300000);
    std::ofstream(ended / ".lock");
    folder("5C0A1C0E-0001-4000-8000-000000000002", 4096);
    open();
    EXPECT_THAT(fromQt(files().usage()), HasSubstr(" in 2 folders"));
    ASSERT_TRUE(files().canCleanUp());
    files().cleanUp();
    EXPECT_TRUE(files().isBusy());
    until([&] { return !files().isBusy(); });
    EXPECT_FALSE(fs::exists(ended));
    EXPECT_THAT(fromQt(files().result()), testing::MatchesRegex("Freed 30[0-9] KB\\. 1 folder "
                                                                "stays: changed recently\\."));
    EXPECT_THAT(fromQt(files().usage()), HasSubstr(" in 1 folder"));
}

TEST_F(WorkFilesTest, WordsCountFoldersAndNameEachReasonOnce) {
    EXPECT_EQ(WorkFiles::wordsOf(WorkArea::Usage{}), "None");
    WorkArea::Report report;
    EXPECT_EQ(WorkFiles::wordsOf(report), "Nothing to clean up.");
    report.kept = {{"a", 1, "in use by a running job"}, {"b", 1, "in use by a running job"}};
    EXPECT_EQ(WorkFiles::wordsOf(report),
              "Nothing to clean up. 2 folders stay: in use by a running job.");
    report.removable = {{"c", 2'000'000, "its job has ended"}};
    report.kept.push_back({"d", 1, "changed recently"});
    EXPECT_EQ(WorkFiles::wordsOf(report),
              "Freed 2 MB. 3 folders stay: in use by a running job, changed recently.");
}

TEST_F(SettingsScreen, AboutNamesTheVersionAndWhatMarletStandsOn) {
    EXPECT_EQ(fromQt(screen->versionLine()), BuildInfo::versionLine());
    EXPECT_EQ(fromQt(screen->builtLine()), BuildInfo::builtLine());
    EXPECT_EQ(screen->updates(), "Updates come with those of your system.");
    const RowListBase& rows = *screen->credits()->rows();
    QStringList names;
    for (int row = 0; row < rows.rowCount({}); ++row) {
        names << cell(rows, row, "key").toString();
        EXPECT_NE(cell(rows, row, "license"), "") << row;
        const std::string source = fromQt(cell(rows, row, "source").toString());
        EXPECT_THAT(source, testing::StartsWith("https://")) << row;
        EXPECT_THAT(source, testing::Not(HasSubstr("%"))) << row;
        const bool asked = row < 2;
        EXPECT_EQ(cell(rows, row, "version").toString().isEmpty(), asked) << row;
        // Every name has its notice.
        const QString first = names.back().section(QLatin1Char(' '), 0, 0);
        EXPECT_TRUE(screen->credits()->notices().contains(first)) << fromQt(first);
    }
    EXPECT_EQ(names, (QStringList{"GPAC (MP4Box and gpac)", "FFmpeg", "Qt", "ICU", "OpenSSL",
                                  "zlib", "libplist", "FLAC", "Tesseract", "Leptonica", "QCoro",
                                  "QtKeychain", "JSON for Modern C++"}));
}

TEST_F(SettingsScreen, AboutAsksTheProgramsForTheirVersions) {
    screen->credits()->open();
    const RowListBase& rows = *screen->credits()->rows();
    until([&] { return cell(rows, 1, "version") != ""; });
    const QString version = cell(rows, 1, "version").toString();
    EXPECT_EQ(cell(rows, 1, "source"), "https://ffmpeg.org/releases/ffmpeg-" + version + ".tar.xz");
}

TEST(CreditsTest, ReadsVersionAndCommitOutOfWhatAToolSays) {
    using Told = Credits::Told;
    EXPECT_EQ(Credits::toldIn("MP4Box - GPAC version 26.07-rev0-g0a1b2c3-HEAD\n(c) 2000",
                              "GPAC version "),
              (Told{"26.07", "0a1b2c3"}));
    EXPECT_EQ(Credits::toldIn("ffmpeg version 5.1.9-0+deb12u1 Copyright (c)", "ffmpeg version "),
              (Told{"5.1.9", ""}));
    EXPECT_EQ(Credits::toldIn("ffmpeg version 7.1", "ffmpeg version "), (Told{"7.1", ""}));
    EXPECT_EQ(Credits::toldIn("ffmpeg version n7.1", "ffmpeg version "), (Told{"7.1", ""}));
    EXPECT_EQ(Credits::toldIn("ffmpeg version N-113007-g8d24a28d06-20231205 Copyright (c)",
                              "ffmpeg version "),
              (Told{"N-113007", "8d24a28d06"}));
    EXPECT_EQ(Credits::toldIn("ffmpeg version 8.0-git ", "ffmpeg version "), (Told{"8.0", ""}))
        << "no commit";
    EXPECT_EQ(Credits::toldIn("no such option", "ffmpeg version "), Told{});
    EXPECT_EQ(Credits::toldIn("", ""), Told{});
}

fs::path screensTree() {
    return sourceTree() / "src/screens";
}

/// What the files of a screen's folder say, QML and C++.
std::string sourcesOf(const std::string& folder) {
    std::string text;
    for (const auto& entry : fs::directory_iterator(screensTree() / folder)) {
        const fs::path file = entry.path();
        const bool isTable = file.stem() == "key_table";
        if (isTable || (file.extension() != ".qml" && file.extension() != ".cpp")) continue;
        std::ifstream stream(file);
        text.append(std::istreambuf_iterator<char>(stream), {});
    }
    return text;
}

/// How a screen may define the key: a shortcut, a standard key, a handler of the key's own, or a
/// comparison with it.
std::vector<std::string> spellings(const std::string& keys) {
    static const std::map<std::string, std::string> standard = {{"Ctrl+F", "StandardKey.Find"},
                                                                {"Ctrl+Z", "StandardKey.Undo"},
                                                                {"Escape", "StandardKey.Cancel"}};
    std::vector<std::string> ways = {'"' + keys + '"'};
    if (const auto found = standard.find(keys); found != standard.end())
        ways.push_back(found->second);
    const std::string last = keys.substr(keys.rfind('+') + 1);
    if (keys == "Escape") ways.emplace_back("CloseOnEscape");
    ways.push_back("Key_" + last);
    ways.push_back("Keys.on" + last + "Pressed");
    return ways;
}

TEST(KeyTableTest, EachListedKeyIsOneThatItsScreenHas) {
    for (const KeyTable::Entry& entry : KeyTable::entries()) {
        const std::string text = sourcesOf(entry.folder);
        const auto ways = spellings(entry.keys);
        EXPECT_TRUE(std::ranges::any_of(
            ways, [&](const std::string& way) { return text.find(way) != std::string::npos; }))
            << entry.keys << " in " << entry.folder;
    }
}

TEST(KeyTableTest, EachShortcutOfAScreenIsListed) {
    const std::regex shortcut(R"re(sequences?: *\[?((?:"[^"]+"|StandardKey\.\w+)))re");
    const std::map<std::string, std::string> standard = {{"StandardKey.Find", "Ctrl+F"},
                                                         {"StandardKey.Undo", "Ctrl+Z"},
                                                         {"StandardKey.Cancel", "Escape"}};
    int seen = 0;
    for (const auto& folder : fs::directory_iterator(screensTree())) {
        if (!folder.is_directory()) continue;
        const std::string name = folder.path().filename();
        const std::string text = sourcesOf(name);
        for (std::sregex_iterator each(text.begin(), text.end(), shortcut), end; each != end;
             ++each) {
            std::string keys = (*each)[1];
            if (const auto found = standard.find(keys); found != standard.end())
                keys = found->second;
            std::erase(keys, '"');
            ++seen;
            EXPECT_TRUE(std::ranges::any_of(
                KeyTable::entries(),
                [&](const auto& entry) { return entry.folder == name && entry.keys == keys; }))
                << keys << " of " << name << " isn't listed";
        }
    }
    EXPECT_GE(seen, 14);
}

TEST(KeyTableTest, RowsShowTheirKeysOneByOne) {
    const std::vector<KeyRow> rows = KeyTable::rows();
    ASSERT_GT(rows.size(), 2U);
    EXPECT_EQ(rows[1].caps, (QStringList{"Ctrl", "Shift", "O"}));
    EXPECT_EQ(rows[1].spoken, "Ctrl+Shift+O: Add a folder");
    EXPECT_EQ(rows[1].place, "Anywhere");
}

}  // namespace
}  // namespace marlet::test
