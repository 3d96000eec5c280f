// What the program does for the desktop and the desktop for it, over a message bus of its own.

#include <QDBusArgument>

#include "app/model_fixture.h"
#include "foundation/paths.h"
#include "foundation/run_mode.h"
#include "screens/base/file_address.h"
#include "screens/base/qt_text.h"
#include "screens/desktop/file_manager.h"
#include "screens/desktop/run_watch.h"
#include "screens/desktop/settings_portal.h"
#include "screens/desktop_stub.h"
#include "screens/staged_worker.h"

namespace marlet::test {
namespace {

using Scheme = SettingsPortal::Scheme;
using Appearance = Settings::Appearance;

const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
const QString inhibit = QStringLiteral("org.freedesktop.login1.Manager.Inhibit");
const QString notify = QStringLiteral("org.freedesktop.Notifications.Notify");

/// A connection that never was one.
QDBusConnection noBus() {
    return QDBusConnection::connectToBus(QStringLiteral("unix:path=/dev/null"),
                                         QStringLiteral("none"));
}

#define NEEDS_A_BUS \
    if (const auto why = PrivateBus::missing()) GTEST_SKIP() << *why

TEST(DesktopLook, APersonsChoiceComesBeforeTheDesktopsAndThatBeforeWhatOthersLookLike) {
    for (const bool others : {false, true}) {
        for (const Scheme scheme : {Scheme::none, Scheme::dark, Scheme::light}) {
            EXPECT_TRUE(SettingsPortal::isDark(Appearance::dark, scheme, others));
            EXPECT_FALSE(SettingsPortal::isDark(Appearance::light, scheme, others));
        }
        EXPECT_TRUE(SettingsPortal::isDark(Appearance::automatic, Scheme::dark, others));
        EXPECT_FALSE(SettingsPortal::isDark(Appearance::automatic, Scheme::light, others));
        EXPECT_EQ(SettingsPortal::isDark(Appearance::automatic, Scheme::none, others), others);
    }
}

class Desktop : public ModelTest {
protected:
    void SetUp() override {
        NEEDS_A_BUS;
        desktop = std::make_unique<DesktopStub>();
        buses.session = buses.system = [this] { return desktop->client(); };
        worker = std::make_shared<StagedWorker>();
        parts.worker = StagedWorker::of(worker);
        make();
        watch = std::make_unique<RunWatch>(*model, buses);
        watch->isInFront = [this] { return inFront; };
        watch->launcher().setPause(pauseOfTaskBar);
        model->onChanged = [this] {
            watch->refresh();
            wasToldOfARun = model->queue().active();
        };
    }
    void TearDown() override {
        if (worker) worker->letGo();
        if (model) model->onChanged = nullptr;
        watch.reset();
        model.reset();
        desktop.reset();
    }
    static void until(const std::function<bool()>& holds) {
        while (!holds()) pause();
    }
    /// Until everything that was sent has come, which the bus keeps in order.
    void untilDelivered() {
        const int before = desktop->count(QStringLiteral("org.test.Last"));
        desktop->client().send(QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/"),
            QStringLiteral("org.test"), QStringLiteral("Last")));
        until([&] { return desktop->count(QStringLiteral("org.test.Last")) > before; });
    }
    void begin(const std::vector<std::string>& names) {
        std::vector<WriteQueue::Job> jobs;
        for (const std::string& name : names) {
            worker->held.insert(name);
            jobs.push_back(stagedJob(name));
        }
        model->queue().add(std::move(jobs));
        model->queue().start();
    }
    int ended() const {
        const auto& jobs = model->queue().jobs();
        return static_cast<int>(
            std::ranges::count_if(jobs, [](const auto& job) { return job.outcome.has_value(); }));
    }
    /// Ends the job that runs, and begins the next.
    void end(WriteOutcome outcome) {
        const int before = ended();
        worker->end(std::move(outcome));
        const WriteQueue& queue = model->queue();
        until([&] { return ended() > before && (queue.current() != nullptr || !queue.active()); });
    }
    /// The model tells its changes once a turn of the event loop, so an end that is there may not
    /// have been told yet.
    void untilEnded() {
        until([&] { return !model->queue().active() && !wasToldOfARun; });
        untilDelivered();
    }
    void runOne(WriteOutcome::Status status) {
        begin({"a.mp4"});
        end({.status = status, .message = "told"});
        untilEnded();
    }

    std::unique_ptr<DesktopStub> desktop;
    Buses buses;
    std::shared_ptr<StagedWorker> worker;
    std::unique_ptr<RunWatch> watch;
    bool inFront = false;
    bool wasToldOfARun = false;
    std::chrono::milliseconds pauseOfTaskBar{1};
};

TEST_F(Desktop, ThePortalsColoursAreReadAndFollowed) {
    desktop->settings[QStringLiteral("org.freedesktop.appearance color-scheme")] = 1U;
    SettingsPortal portal(desktop->client());
    EXPECT_EQ(portal.scheme(), Scheme::none);
    int told = 0;
    QObject::connect(&portal, &SettingsPortal::changed, &portal, [&] { ++told; });
    until([&] { return portal.scheme() == Scheme::dark; });
    EXPECT_FALSE(portal.isCalm());
    desktop->change(appearance, colorScheme, 2U);
    until([&] { return portal.scheme() == Scheme::light; });
    desktop->change(appearance, colorScheme, 0U);
    until([&] { return portal.scheme() == Scheme::none; });
    EXPECT_EQ(told, 3);
    desktop->change(appearance, QStringLiteral("accent-color"), 1U);
    desktop->change(QStringLiteral("org.example"), colorScheme, 1U);
    desktop->change(appearance, colorScheme, 2U);
    until([&] { return portal.scheme() == Scheme::light; });
    EXPECT_EQ(told, 4);
}

TEST_F(Desktop, MotionIsReducedWhereTheDesktopSaysSoInEitherWay) {
    desktop->settings[QStringLiteral("org.gnome.desktop.interface enable-animations")] = false;
    SettingsPortal portal(desktop->client());
    EXPECT_FALSE(portal.isCalm());
    until([&] { return portal.isCalm(); });
    desktop->change(QStringLiteral("org.gnome.desktop.interface"),
                    QStringLiteral("enable-animations"), true);
    until([&] { return !portal.isCalm(); });
    desktop->change(appearance, QStringLiteral("reduced-motion"), 1U);
    until([&] { return portal.isCalm(); });
}

TEST_F(Desktop, APortalThatAnswersNonsenseOrNothingLeavesThingsAsTheyAre) {
    desktop->settings[QStringLiteral("org.freedesktop.appearance color-scheme")] =
        QStringLiteral("dark");
    SettingsPortal portal(desktop->client());
    until([&] {
        return desktop->count(QStringLiteral("org.freedesktop.portal.Settings.Read")) == 3;
    });
    desktop->change(appearance, colorScheme, 99U);
    desktop->change(appearance, QStringLiteral("reduced-motion"), 1U);
    until([&] { return portal.isCalm(); });
    EXPECT_EQ(portal.scheme(), Scheme::none);
}

TEST_F(Desktop, TheComputerStaysAwakeWhileARunIsOnAndNoLonger) {
    EXPECT_EQ(desktop->count(inhibit), 0);
    begin({"a.mp4", "b.mp4"});
    until([&] { return watch->sleep().isHeld(); });
    EXPECT_EQ(desktop->arguments(inhibit),
              (QVariantList{QStringLiteral("shutdown:sleep:idle"), QStringLiteral("Marlet"),
                            QStringLiteral("Files are being written"), QStringLiteral("block")}));
    end({.status = WriteOutcome::Status::done});
    untilDelivered();
    EXPECT_TRUE(desktop->isLockHeld());
    end({.status = WriteOutcome::Status::failed, .message = "told"});
    untilEnded();
    EXPECT_FALSE(watch->sleep().isHeld());
    until([&] { return !desktop->isLockHeld(); });
    EXPECT_EQ(desktop->count(inhibit), 1);
}

TEST_F(Desktop, ALockThatComesAfterTheRunIsGivenBack) {
    desktop->holdAnswers = true;
    begin({"a.mp4"});
    until([&] { return desktop->count(inhibit) == 1; });
    end({.status = WriteOutcome::Status::done});
    untilEnded();
    desktop->answerNow();
    untilDelivered();
    until([&] { return !desktop->isLockHeld(); });
    EXPECT_FALSE(watch->sleep().isHeld());
}

TEST_F(Desktop, ACancelledRunGivesTheLockBackToo) {
    begin({"a.mp4", "b.mp4"});
    until([&] { return watch->sleep().isHeld(); });
    model->queue().cancel();
    worker->endCancelled();
    untilEnded();
    until([&] { return !desktop->isLockHeld(); });
}

TEST_F(Desktop, TheLockGoesWithTheProgram) {
    begin({"a.mp4"});
    until([&] { return desktop->isLockHeld(); });
    model->onChanged = nullptr;
    watch.reset();
    until([&] { return !desktop->isLockHeld(); });
}

TEST_F(Desktop, TheEndOfARunIsToldWithTheCountOfFailuresWhenNobodyLooks) {
    begin({"a.mp4", "b.mp4", "c.mp4"});
    end({.status = WriteOutcome::Status::done});
    end({.status = WriteOutcome::Status::failed, .message = "told"});
    EXPECT_EQ(desktop->count(notify), 0);
    end({.status = WriteOutcome::Status::done});
    untilEnded();
    ASSERT_EQ(desktop->count(notify), 1);
    const QVariantList said = desktop->arguments(notify);
    EXPECT_EQ(said.at(0).toString(), QStringLiteral("Marlet"));
    EXPECT_EQ(said.at(2).toString(), toQt(Paths::applicationID()));
    EXPECT_EQ(said.at(3).toString(), QStringLiteral("Finished, 1 failed"));
    EXPECT_EQ(said.at(4).toString(),
              QStringLiteral("2 done, 1 failed (the originals are untouched)"));
    const auto hints = qdbus_cast<QVariantMap>(said.at(6));
    EXPECT_EQ(hints.value(QStringLiteral("desktop-entry")).toString(),
              toQt(Paths::applicationID()));
}

TEST_F(Desktop, AnEndThatAPersonSeesOrDoesntWantToHearOfIsNotTold) {
    inFront = true;
    runOne(WriteOutcome::Status::done);
    inFront = false;
    Settings::setNotifyAtEnd(false);
    runOne(WriteOutcome::Status::done);
    EXPECT_EQ(desktop->count(notify), 0);
    Settings::setNotifyAtEnd(true);
    runOne(WriteOutcome::Status::done);
    EXPECT_EQ(desktop->count(notify), 1);
    EXPECT_EQ(desktop->arguments(notify).at(3).toString(), QStringLiteral("All done"));
}

TEST_F(Desktop, AScriptedRunTellsItsEndByItsLinesAlone) {
    RunMode::setArguments({"--tag=a.mp4"});
    runOne(WriteOutcome::Status::done);
    EXPECT_EQ(desktop->count(notify), 0);
}

TEST_F(Desktop, ANewerMessageTakesTheOldOnesPlaceAndAClickOnItAsksForTheQueue) {
    int asked = 0;
    QObject::connect(watch.get(), &RunWatch::queueAsked, watch.get(), [&] { ++asked; });
    runOne(WriteOutcome::Status::done);
    EXPECT_EQ(desktop->arguments(notify).at(1).toUInt(), 0U);
    untilDelivered();
    pause();
    runOne(WriteOutcome::Status::done);
    EXPECT_EQ(desktop->arguments(notify).at(1).toUInt(), 7U);
    desktop->click(8, QStringLiteral("default"));
    desktop->click(7, QStringLiteral("other"));
    desktop->click(7, QStringLiteral("default"));
    until([&] { return asked > 0; });
    EXPECT_EQ(asked, 1);
}

TEST_F(Desktop, TheTaskBarShowsHowFarARunIsAndNothingAfterIt) {
    begin({"a.mp4", "b.mp4"});
    worker->report("Copying", 0.5);
    until([&] {
        return !desktop->updates.empty() &&
               desktop->updates.back().values.value(QStringLiteral("progress")) == 0.25;
    });
    EXPECT_EQ(desktop->updates.back().application,
              QStringLiteral("application://%1.desktop").arg(toQt(Paths::applicationID())));
    EXPECT_TRUE(desktop->updates.back().values.value(QStringLiteral("progress-visible")).toBool());
    end({.status = WriteOutcome::Status::done});
    end({.status = WriteOutcome::Status::done});
    untilEnded();
    until([&] {
        return !desktop->updates.back().values.value(QStringLiteral("progress-visible")).toBool();
    });
}

TEST_F(Desktop, TheTaskBarIsToldNoMoreOftenThanItsPauseAllowsAndTheLatestIsNotLost) {
    LauncherEntry entry(buses);
    entry.setPause(std::chrono::hours(1));
    for (int i = 1; i <= 100; i++) entry.show(i / 100.0);
    entry.clear();
    untilDelivered();
    until([&] { return desktop->updates.size() >= 2; });
    ASSERT_EQ(desktop->updates.size(), 2U);
    EXPECT_EQ(desktop->updates[0].values.value(QStringLiteral("progress")), 0.01);
    EXPECT_EQ(desktop->updates[1].values.value(QStringLiteral("progress-visible")), false);

    desktop->updates.clear();
    entry.setPause(std::chrono::milliseconds(1));
    for (int i = 1; i <= 100; i++) entry.show(i / 100.0);
    until([&] {
        return !desktop->updates.empty() &&
               desktop->updates.back().values.value(QStringLiteral("progress")) == 1.0;
    });
    EXPECT_EQ(desktop->updates.size(), 2U);
}

TEST_F(Desktop, TheFileManagerIsAskedForTheFilesByTheirAddresses) {
    FileManager::show({FileAddress::of("/films/Amélie #1.mp4"), FileAddress::of("/films/b 50%.mp4"),
                       FileAddress::of("/films/Latin \xE9.mp4")},
                      desktop->client());
    const QString showItems = QStringLiteral("org.freedesktop.FileManager1.ShowItems");
    until([&] { return desktop->count(showItems) == 1; });
    EXPECT_EQ(desktop->arguments(showItems),
              (QVariantList{QStringList{QStringLiteral("file:///films/Am%C3%A9lie%20%231.mp4"),
                                        QStringLiteral("file:///films/b%2050%25.mp4"),
                                        QStringLiteral("file:///films/Latin%20%E9.mp4")},
                            QString()}));
    FileManager::show({}, desktop->client());
    untilDelivered();
    EXPECT_EQ(desktop->count(showItems), 1);
}

QStringList said;

TEST_F(Desktop, WithoutABusNothingHappensAndNothingIsSaidOnTheConsole) {
    said.clear();
    const auto before = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { said << text; });
    const Buses none{&noBus, &noBus};
    {
        const SettingsPortal portal(noBus());
        EXPECT_EQ(portal.scheme(), Scheme::none);
        EXPECT_FALSE(portal.isCalm());
        watch = std::make_unique<RunWatch>(*model, none);
        watch->isInFront = [] { return false; };
        begin({"a.mp4"});
        worker->report("Copying", 0.5);
        EXPECT_FALSE(watch->sleep().isHeld());
        end({.status = WriteOutcome::Status::done});
        until([&] { return !model->queue().active(); });
        for (int i = 0; i < 20; i++) pause();
    }
    qInstallMessageHandler(before);
    EXPECT_TRUE(said.isEmpty()) << fromQt(said.join(QLatin1Char('\n')));
}

}  // namespace
}  // namespace marlet::test
