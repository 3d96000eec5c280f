// The windows: how soon they are there, and how they bear a long list.
//
//   screens_bench empty          an empty Qt Quick window, closed after its first picture
//   screens_bench open           Marlet's window, the same
//   screens_bench review COUNT   so many films come into Review of an open window: prints the
//                                milliseconds to their first picture, then pictures a second, the
//                                longest one and how many took longer than a thirtieth of a second
//                                while the list is scrolled, once by steps and once by leaps,
//                                then the milliseconds that it takes to take one film away
#include <QEventLoop>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "app/app_model.h"
#include "app/front.h"
#include "app/quit_gate.h"
#include "app/settings.h"
#include "foundation/preferences.h"
#include "foundation/run_mode.h"

namespace {

using namespace marlet;
using Clock = std::chrono::steady_clock;

double since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

QQuickWindow* openWindow() {
    for (QWindow* window : QGuiApplication::topLevelWindows())
        if (auto* quick = qobject_cast<QQuickWindow*>(window)) return quick;
    return nullptr;
}

/// Until the window has shown another picture.
void untilShown(QQuickWindow& window) {
    QEventLoop loop;
    QObject::connect(&window, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
    window.update();
    loop.exec();
}

std::vector<ResolvedFile> films(int count) {
    std::vector<ResolvedFile> all;
    for (int i = 0; i < count; i++) {
        const std::string title = "A film of the long list, number " + std::to_string(i);
        ResolvedFile film;
        film.file.url = "/films/" + title + " (1999)." + (i % 3 == 0 ? "mkv" : "mp4");
        film.guess = Guess{.title = title, .year = 1999};
        film.match = Match{.tmdbID = i + 1, .title = title, .year = 1999};
        film.verdict =
            i % 10 == 0 ? Verdict::needsLook({"The length doesn't fit"}) : Verdict::certain();
        all.push_back(std::move(film));
    }
    return all;
}

/// Scrolls by so much a picture and prints what the pictures took.
void scroll(QQuickWindow& window, QQuickItem& list, double step, int pictures) {
    double longest = 0;
    int late = 0;
    double at = 0;
    const auto start = Clock::now();
    for (int i = 0; i < pictures; i++) {
        const auto began = Clock::now();
        const double end = list.property("contentHeight").toDouble() - list.height();
        at = at + step > end ? 0 : at + step;
        list.setProperty("contentY", at);
        untilShown(window);
        const double took = since(began);
        longest = std::max(longest, took);
        late += took > 1000.0 / 30 ? 1 : 0;
    }
    std::printf("%.1f %.1f %d\n", 1000 * pictures / since(start), longest, late);
}

int showReview(AppModel& model, QQuickWindow& window, int count) {
    const std::vector<ResolvedFile> all = films(count);
    auto* list = window.findChild<QQuickItem*>(QStringLiteral("reviewList"));
    if (list == nullptr) return 1;
    const auto start = Clock::now();
    model.place(all);
    do {
        untilShown(window);
    } while (list->property("count").toInt() != count);
    std::printf("%.1f\n", since(start));
    scroll(window, *list, 40, 600);
    scroll(window, *list, 3000, 200);
    const auto taken = Clock::now();
    model.removeItem(model.items()[model.items().size() / 2].id);
    while (list->property("count").toInt() == count) untilShown(window);
    std::printf("%.1f\n", since(taken));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    if (what != "empty" && what != "open" && what != "review") return 2;
    RunMode::setArguments({});
    if (what == "empty") {
        const QGuiApplication application(argc, argv);
        QQuickWindow window;
        window.resize(1180, 760);
        window.show();
        untilShown(window);
        return 0;
    }
    const auto application = Front::makeApplication(argc, argv, {});
    Preferences::install(Settings::open());
    AppModel::Parts parts;
    // No disk in this measurement.
    parts.planBuilder = [](const PlanStore::Order&) { return std::nullopt; };
    AppModel model(std::move(parts));
    QuitGate gate;
    const auto front = Front::make(model, gate, {});
    if (!front) return 1;
    front->open();
    QQuickWindow* window = openWindow();
    if (window == nullptr) return 1;
    untilShown(*window);
    if (what == "open") return 0;
    return showReview(model, *window, argc > 2 ? std::stoi(argv[2]) : 5000);
}
