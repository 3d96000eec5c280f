#include "screens/pictures/scenes.h"
#include "screens/queue/queue_model.h"

namespace marlet::test {
namespace {

using Status = WriteOutcome::Status;

struct Made {
    const char* name;
    const char* label;
    const char* summary = "details and cover art";
};

const std::vector<Made> films = {
    {"The.Long.Road.S02E05.1080p.mkv", "The Long Road · S2E5", "2 sound, 3 subtitle removed"},
    {"The.Long.Road.S02E06.1080p.mkv", "The Long Road · S2E6", "2 sound, 3 subtitle removed"},
    {"Charade (1963).mp4", "Charade"},
    {"Metropolis (1927) restored.m4v", "Metropolis"},
    {"A Trip to the Moon.mp4", "A Trip to the Moon"},
    {"Nosferatu 1922.mov", "Nosferatu: A Symphony of Horror"},
};

/// Jobs of these films; each is held when it runs.
void give(Stage& stage) {
    std::vector<WriteQueue::Job> jobs;
    for (const Made& film : films) {
        WriteQueue::Job job = stagedJob(film.name, 1'400'000'000);
        job.label = film.label;
        job.summary = film.summary;
        if (!std::string(film.name).ends_with("4") && !std::string(film.name).ends_with("v"))
            job.request.mode = ConvertRequest{job.request.file, {}, {}, "/films/Desktop"};
        jobs.push_back(job);
        stage.worker().held.insert(film.name);
    }
    stage.screens().setTab(1);
    stage.model().queue().add(std::move(jobs));
}

using Clock = std::chrono::steady_clock;

/// The run began so long ago.
void beginRun(Stage& stage, std::chrono::seconds ago) {
    const Clock::time_point begun = Clock::now();
    stage.model().queue().clock = [begun] { return begun; };
    stage.model().queue().start();
    stage.model().queue().clock = [begun, ago] { return begun + ago; };
}

/// The run after two jobs, in the middle of the third.
void run(Stage& stage) {
    give(stage);
    beginRun(stage, std::chrono::seconds(372));
    for (int i = 0; i < 2; i++)
        stage.endJobWith({{"status", "done"},
                          {"message", "Details written; sound layout fixed (3.21 s to 0.50 s)"},
                          {"before", 3.21},
                          {"after", 0.5}});
    stage.reportStep("Building again with finer sound slices (500 ms)", 0.37);
}

void finish(Stage& stage, const std::vector<WriteOutcome>& outcomes) {
    give(stage);
    stage.model().queue().start();
    for (WriteOutcome outcome : outcomes) {
        if (outcome.status == Status::done) outcome.output = stage.path("a.m4v");
        const WriteQueue& queue = stage.model().queue();
        const std::string id = queue.current() == nullptr ? "" : queue.current()->id;
        stage.worker().end(outcome);
        // Whoever tells the next one something waits for it here, where it would begin.
        while (queue.active() && (queue.current() == nullptr || queue.current()->id == id))
            Async::wait(Async::sleep(std::chrono::milliseconds(1)));
    }
}

const WriteOutcome done{
    .status = Status::done, .before = 0.62, .after = 0.62, .message = "Details written"};
const WriteOutcome fixed{.status = Status::done,
                         .before = 3.21,
                         .after = 0.5,
                         .message = "Details written; sound layout fixed (3.21 s to 0.50 s)"};

/// An evening's work, a quarter of it done.
void evening(Stage& stage) {
    const std::vector<std::pair<const char*, const char*>> works = {
        {"Charade (1963).m4v", "Charade"},
        {"Nosferatu (1922).mp4", "Nosferatu: A Symphony of Horror"},
        {"His Girl Friday (1940).mkv", "His Girl Friday"},
        {"The Tin Observatory S02E01.mkv", "The Tin Observatory · S2E1"},
        {"The Tin Observatory S02E02.mkv", "The Tin Observatory · S2E2"},
        {"The Tin Observatory S02E03.mkv", "The Tin Observatory · S2E3"},
        {"The Tin Observatory S02E04.mkv", "The Tin Observatory · S2E4"},
        {"The Tin Observatory S02E06.mkv", "The Tin Observatory · S2E6"},
        {"Detour (1945).mov", "Detour"},
        {"The General (1926).mp4", "The General"},
        {"Sintel (2010).mp4", "Sintel"},
        {"Night of the Living Dead (1968).mp4", "Night of the Living Dead"},
    };
    std::vector<WriteQueue::Job> jobs;
    for (const auto& [name, label] : works) {
        const std::string file = name;
        WriteQueue::Job job = stagedJob(file, 1'400'000'000);
        job.label = label;
        if (file.ends_with(".mkv")) {
            job.summary = file.starts_with("His") ? "1 sound, 4 subtitle removed"
                                                  : "2 sound, 3 subtitle removed";
            job.request.mode = ConvertRequest{job.request.file, {}, {}, "/films/New"};
        }
        jobs.push_back(job);
        stage.worker().held.insert(file);
    }
    stage.screens().setTab(1);
    stage.model().queue().add(std::move(jobs));
    beginRun(stage, std::chrono::seconds(214));
    stage.endJobWith({{"status", "done"},
                      {"message", "Details written; sound layout fixed (3.21 s to 0.50 s)"}});
    stage.endJobWith({{"status", "done"}, {"message", "Details written"}});
    stage.reportStep("Converting sound (eng)", 0.62);
}

const Scene library("library-queue", evening);
const Scene empty("queue-empty", [](Stage& stage) { stage.screens().setTab(1); });
const Scene waiting("queue-waiting", give);
const Scene running("queue-running", run);
const Scene paused("queue-paused", [](Stage& stage) {
    run(stage);
    stage.model().queue().pause();
});
const Scene locked("queue-locked", [](Stage& stage) {
    run(stage);
    stage.setCritical(true);
});
const Scene allDone("queue-done", [](Stage& stage) {
    finish(stage, {fixed, fixed, done, done, done, done});
});
const Scene failures("queue-failures", [](Stage& stage) {
    const WriteOutcome busy{.message =
                                "VLC has this file open for writing (a download or another "
                                "app); left untouched. Try again when it has finished."};
    const WriteOutcome unlike{.before = 3.21,
                              .message = "verification failed: the sound of track 2 differs"};
    const WriteOutcome skipped{.status = Status::skipped,
                               .message = "Dolby Vision profile 5: Apple TV can't play it"};
    finish(stage, {fixed, busy, done, unlike, done, skipped});
    for (const auto& job : stage.model().queue().jobs())
        if (job.label == "Metropolis")
            stage.screens().queue()->toggle(QString::fromStdString(job.id));
});
const Scene damaged("queue-damaged", [](Stage& stage) {
    finish(stage,
           {fixed,
            fixed,
            {.status = Status::stopped,
             .message = "writing failed (pwrite: Input/output error). The verified copy is kept at "
                        "/var/marlet/7F1C/candidate.mp4; Marlet "
                        "finishes it the next time it opens"}});
});

}  // namespace
}  // namespace marlet::test
