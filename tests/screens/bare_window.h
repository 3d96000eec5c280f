#pragma once

#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "app/app_model.h"
#include "app/quit_gate.h"
#include "foundation/preferences.h"
#include "screens/frame/screens.h"

namespace marlet::test {

/// "App" over a real model, with a window system: for tests that are a process of their own.
struct Window {
    Window() {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        application.emplace(argc, argv);
        Preferences::install(std::make_unique<MemoryPreferences>());
        model.emplace();
        gate.emplace();
        screens.emplace(*model, *gate);
    }
    void endSession() {
        screens->endSession([] { std::fputs("asked to wait, ", stderr); });
    }

    int argc = 1;
    char name[7] = "marlet";
    char* argv[2] = {name, nullptr};
    std::optional<QGuiApplication> application;
    std::optional<AppModel> model;
    std::optional<QuitGate> gate;
    std::optional<Screens> screens;
};

}  // namespace marlet::test
