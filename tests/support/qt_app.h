#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <memory>

namespace marlet::test {
namespace detail {

/// Holds the application object and takes it down while the tests' program is still whole, as the
/// end of main does in Marlet: its destructor waits for the workers, and a worker that is let go by
/// a cancelled wait may still be using tables that static destruction takes away.
class AppEnvironment final : public ::testing::Environment {
public:
    QCoreApplication& app() {
        static int argc = 1;
        static char name[] = "marlet-tests";
        static char* argv[] = {name, nullptr};
        if (!app_) app_ = std::make_unique<QCoreApplication>(argc, argv);
        return *app_;
    }
    void TearDown() override { app_.reset(); }

private:
    std::unique_ptr<QCoreApplication> app_;
};

/// Googletest owns it and has to know it before the tests start.
inline auto* const appEnvironment =
    static_cast<AppEnvironment*>(::testing::AddGlobalTestEnvironment(new AppEnvironment));

}  // namespace detail

/// The application object that everything asynchronous needs: one per test program, made on first
/// use on the thread of the tests. A line `const auto& app = test::qtApp();` in a test (or a
/// fixture that calls it) is enough.
inline QCoreApplication& qtApp() {
    return detail::appEnvironment->app();
}

}  // namespace marlet::test
