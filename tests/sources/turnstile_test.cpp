#include "sources/turnstile.h"

#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "support/qt_app.h"

namespace marlet {
namespace {

class TurnstileTest : public testing::Test {
protected:
    TurnstileTest() { test::qtApp(); }
    Task<Turnstile::Place> enter(CancelToken cancel = {}) {
        return Turnstile::enter(turnstile, std::move(cancel));
    }
    std::shared_ptr<Turnstile> turnstile = std::make_shared<Turnstile>(1);
};

TEST_F(TurnstileTest, LetsTheNextInAsSoonAsOneLeavesInTheirOrder) {
    auto first = Async::wait(enter());
    auto second = enter();
    auto third = enter();
    EXPECT_FALSE(second.isReady());
    first.reset();
    EXPECT_TRUE(second.isReady());
    EXPECT_FALSE(third.isReady());
}

TEST_F(TurnstileTest, ACancelledCallerLeavesTheQueue) {
    auto inside = Async::wait(enter());
    const CancelToken cancel;
    auto leaver = enter(cancel);
    auto last = enter();
    cancel.cancel();
    EXPECT_TRUE(leaver.isReady());
    EXPECT_THROW(Async::wait(std::move(leaver)), CancelError);
    inside.reset();
    EXPECT_TRUE(last.isReady());
}

Task<> insideUntilCancelled(std::shared_ptr<Turnstile> turnstile, CancelToken cancel) {
    auto entering = Turnstile::enter(turnstile, cancel);
    const Turnstile::Place place = co_await entering;
    Gate ended;
    const auto registration = cancel.onCancel([ended] { ended.open(); });
    co_await ended;
    cancel.check();
}

TEST_F(TurnstileTest, OneCancelOfWhoIsInsideAndWhoIsNextLetsTheThirdIn) {
    const CancelToken cancel;
    auto inside = insideUntilCancelled(turnstile, cancel);
    auto next = insideUntilCancelled(turnstile, cancel);
    auto third = enter();
    cancel.cancel();
    EXPECT_THROW(Async::wait(std::move(inside)), CancelError);
    EXPECT_THROW(Async::wait(std::move(next)), CancelError);
    EXPECT_TRUE(third.isReady());
}

TEST_F(TurnstileTest, ACancelledTokenDoesNotEnter) {
    const CancelToken cancel;
    cancel.cancel();
    EXPECT_THROW(Async::wait(enter(cancel)), CancelError);
    EXPECT_TRUE(enter().isReady());
}

}  // namespace
}  // namespace marlet
