#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "app/app_model.h"
#include "foundation/preferences.h"
#include "foundation/run_mode.h"
#include "identify/scripted_source.h"
#include "support/catalogue.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet::test {

using namespace std::chrono_literals;

/// The plan of a film that can be converted.
inline std::optional<ConvertPlan> convertible() {
    ConvertPlan plan;
    plan.video = MKVTrack{.number = 1, .type = 1};
    plan.videoVerdict = VideoVerdict::copy();
    return plan;
}

/// Takes the place of the writer: notes what it was asked, and answers by file name.
class NotingWorker {
public:
    WriteOutcome operator()(const WriteRequest& request) {
        const std::lock_guard guard(lock_);
        requests_.push_back(request);
        const auto told = outcomes.find(request.file.filename().string());
        return {.status = told == outcomes.end() ? WriteOutcome::Status::done : told->second,
                .message = "told"};
    }
    std::vector<WriteRequest> requests() {
        const std::lock_guard guard(lock_);
        return requests_;
    }
    std::map<std::string, WriteOutcome::Status> outcomes;

private:
    std::mutex lock_;
    std::vector<WriteRequest> requests_;
};

/// The real model over the sample catalogue, in a home and a library of its own; a person sits at
/// the keyboard. Files are a few bytes: what they are is told by their names.
class ModelTest : public testing::Test {
protected:
    ModelTest() {
        qtApp();
        Preferences::install(std::make_unique<MemoryPreferences>());
        Preferences::current().setBoolean("sourceOn.appleTV", false);
        RunMode::setArguments({});
        for (const auto& [name, value] : server.environment())
            environment.emplace_back(name, value);
        environment.emplace_back("MARLET_NO_KEYCHAIN", "");
        RunMode::setArguments({});
        parts.worker = [worker = worker](const auto& request, auto&, const auto&) {
            return (*worker)(request);
        };
        parts.history = &history;
        parts.externals = {{SourceID::itunes, &itunes}};
        make();
    }
    ~ModelTest() override {
        model.reset();
        EXPECT_TRUE(Async::settle(20s));
        AppModel::outputOverride.reset();
        RunMode::setArguments({});
    }

    /// A model made of the parts as they are now.
    void make() {
        model.reset();
        model = std::make_unique<AppModel>(parts);
    }
    std::filesystem::path file(const std::string& name) {
        return library.write(name, std::string_view("not much of a film"));
    }
    static void pause() { Async::wait(Async::sleep(2ms)); }
    void untilScanned() {
        while (model->isWorking()) pause();
    }
    void add(std::vector<std::filesystem::path> urls) {
        model->add(std::move(urls));
        untilScanned();
    }
    /// Scans files of these names and says yes to each.
    void addConfirmed(const std::vector<std::string>& names) {
        std::vector<std::filesystem::path> urls;
        for (const std::string& name : names) urls.push_back(file(name));
        add(urls);
        for (const auto& url : urls) model->confirm(url);
    }
    void queueAll() { Async::wait(model->addToQueueNow(model->items())); }
    void runQueue() {
        model->queue().start();
        while (model->queue().active()) pause();
    }
    const ResolvedFile* find(const std::string& name) {
        for (const LibraryItem& item : model->items())
            for (const ResolvedFile& each : item.files)
                if (each.file.url == library / name) return &each;
        return nullptr;
    }
    const LibraryItem* itemOf(const std::string& name) {
        for (const LibraryItem& item : model->items())
            for (const ResolvedFile& each : item.files)
                if (each.file.url == library / name) return &item;
        return nullptr;
    }
    const FileDraft* draft(const std::string& name) { return model->drafts().find(library / name); }

    OwnHome home;
    TempFolder library;
    CatalogueServer server;
    std::list<ScopedEnv> environment;
    HistoryStore history;
    ScriptedSource itunes{SourceID::itunes};
    std::shared_ptr<NotingWorker> worker = std::make_shared<NotingWorker>();
    AppModel::Parts parts;
    std::unique_ptr<AppModel> model;
};

}  // namespace marlet::test
