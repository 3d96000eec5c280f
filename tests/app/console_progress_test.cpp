#include "app/console_progress.h"

#include "app/model_fixture.h"

namespace marlet::test {
namespace {

class ConsoleProgressTest : public ModelTest {};

TEST_F(ConsoleProgressTest, WhoeverListenedBeforeIsToldDuringAndAfter) {
    int told = 0;
    model->onChanged = [&told] { told++; };
    {
        const ConsoleProgress progress(*model);
        model->onChanged();
        EXPECT_EQ(told, 1);
    }
    ASSERT_TRUE(model->onChanged);
    model->onChanged();
    EXPECT_EQ(told, 2);
    model->onChanged = nullptr;
}

}  // namespace
}  // namespace marlet::test
