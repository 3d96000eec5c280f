#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/model_fixture.h"
#include "foundation/paths.h"

namespace marlet::test {

/// The program keeps its unfinished work only when it ends, and starts anew as often as a test
/// wants.
class UnfinishedTest : public ModelTest {
protected:
    UnfinishedTest() {
        parts.unfinishedPause = 1h;
        start();
    }
    void start() {
        model.reset();
        EXPECT_TRUE(Async::settle(20s));
        make();
        Async::wait(model->openUnfinished());
    }
    void restart() {
        model->keepUnfinished();
        start();
    }
    void queue(const std::string& name) { Async::wait(model->addToQueueNow({*itemOf(name)})); }
    std::vector<std::string> offered() {
        return model->unfinishedOffer() ? model->unfinishedOffer()->names
                                        : std::vector<std::string>();
    }
    static std::filesystem::path keptFile(const std::string& name = "unfinished.json") {
        return Paths::documentsDir() / name;
    }
    /// "" when nothing is kept.
    static std::string kept() { return exists(keptFile()) ? textOf(readFile(keptFile())) : ""; }
};

}  // namespace marlet::test
