#pragma once

#include <QCoreApplication>

namespace marlet::test {

/// The application object that everything asynchronous needs: one per test program, made on first
/// use on the thread of the tests. A line `const auto& app = test::qtApp();` at the top of a file
/// (or a fixture that calls it) is enough.
inline QCoreApplication& qtApp() {
    static int argc = 1;
    static char name[] = "marlet-tests";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return app;
}

}  // namespace marlet::test
