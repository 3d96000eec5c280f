#include <QtQuickTest/quicktest.h>

#include <QCoreApplication>
#include <cstdio>

#include "screens/stage/own_ground.h"
#include "screens/stage/stage.h"

/// Drives the screens by mouse and keyboard. A warning on the console fails the run, whatever the
/// tests say: bindings that loop and names that aren't there are told nowhere else.
int main(int argc, char** argv) {
    using namespace marlet::test;
    standOnOwnGround();
    const QGuiApplication application(argc, argv);
    watchTheConsole();
    int failed = 0;
    {
        Stage stage;
        failed = quick_test_main_with_setup(argc, argv, "screens", MARLET_QML_TESTS, &stage);
    }
    if (warningsSoFar() > 0) {
        std::fprintf(stderr, "%d warnings on the console\n", warningsSoFar());
        return 1;
    }
    return failed;
}
