// Unfinished work of films whose disk comes and goes, or doesn't answer.

#include <filesystem>
#include <limits>

#include "app/unfinished_fixture.h"
#include "app/unfinished_json.h"
#include "app/unfinished_shelf.h"
#include "app/unfinished_store.h"
#include "write/restore_points.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* charade = "Charade (1963).mp4";
constexpr const char* sintel = "Sintel (2010).mp4";
constexpr const char* onNas = "nas/Detour (1945).mp4";

class UnfinishedOnDisks : public UnfinishedTest {
protected:
    void unmount() { fs::rename(library / "nas", library / "gone"); }
    void mount() { fs::rename(library / "gone", library / "nas"); }
    /// One record as the program writes it.
    static void keep(const UnfinishedFile& file, const FilmMark& mark,
                     const std::string& name = "unfinished.json") {
        const std::string line =
            UnfinishedJson::line(UnfinishedJson::encode(file), mark, file.isQueued);
        writeFile(keptFile(name), viewOf(UnfinishedJson::document({line})));
    }
    UnfinishedFile accepted(const std::string& name) {
        return {.resolved = {.file = {.url = file(name)}}, .isAccepted = true};
    }
};

TEST_F(UnfinishedOnDisks, WorkOnADiskThatIsAwayWaitsForItsReturn) {
    addConfirmed({onNas});
    queue(onNas);
    model->keepUnfinished();
    unmount();
    start();
    EXPECT_FALSE(model->unfinishedOffer()) << "nothing could be done with it now";
    addConfirmed({charade});
    model->keepUnfinished();
    EXPECT_THAT(kept(), testing::HasSubstr("Charade"));
    mount();
    start();
    EXPECT_THAT(offered(), ElementsAre("Detour (1945).mp4", charade));
    EXPECT_EQ(model->unfinishedOffer()->queued, 1);
}

TEST_F(UnfinishedOnDisks, AFilmThatCannotBeReadIsKeptForLater) {
    addConfirmed({charade, sintel});
    model->keepUnfinished();
    {
        const Sys::Fault fault(Sys::Call::Stat, EIO, 1, true, library / charade);
        start();
        EXPECT_THAT(offered(), ElementsAre(sintel));
        model->discardUnfinished();
        model->keepUnfinished();
    }
    start();
    EXPECT_THAT(offered(), ElementsAre(charade));
}

TEST_F(UnfinishedOnDisks, ADiskThatGoesAfterTheOfferTakesNothingAlong) {
    const fs::path restored = file("nas/Sintel (2010).mp4");
    RestorePoints::saveIfMissing(restored, {}, 1);
    addConfirmed({onNas, charade});
    queue(onNas);
    Async::wait(model->restoreOriginal(restored));
    restart();
    ASSERT_EQ(offered().size(), 3U);
    unmount();
    Async::wait(model->resumeUnfinished());
    EXPECT_THAT(model->queue().jobs(), IsEmpty());
    EXPECT_NE(find(charade), nullptr);
    restart();
    EXPECT_THAT(offered(), ElementsAre(charade));
    mount();
    restart();
    EXPECT_THAT(offered(), ElementsAre("Sintel (2010).mp4", "Detour (1945).mp4", charade));
    EXPECT_EQ(model->unfinishedOffer()->queued, 2);
}

TEST_F(UnfinishedOnDisks, RestoresOfADiskThatIsAwayWaitForItsReturn) {
    const fs::path restored = file("nas/Sintel (2010).mp4");
    RestorePoints::saveIfMissing(restored, {}, 1);
    Async::wait(model->restoreOriginal(restored));
    model->keepUnfinished();
    unmount();
    start();
    EXPECT_FALSE(model->unfinishedOffer());
    addConfirmed({charade});
    restart();
    mount();
    restart();
    EXPECT_THAT(offered(), ElementsAre("Sintel (2010).mp4", charade));
}

TEST_F(UnfinishedOnDisks, NoMoreThanSoManyRecordsOfFilmsThatAreAwayAreKept) {
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < UnfinishedShelf::mostAway + 5; i++) {
        const UnfinishedFile film{
            .resolved = {.file = {.url = "/nowhere/" + std::to_string(i) + ".mp4"}},
            .isAccepted = true};
        lines.push_back(UnfinishedJson::line(UnfinishedJson::encode(film), {}, false));
    }
    writeFile(keptFile(), viewOf(UnfinishedJson::document(lines)));
    start();
    addConfirmed({charade});
    model->keepUnfinished();
    EXPECT_EQ(UnfinishedJson::decode(viewOf(kept()))->files.size(), UnfinishedShelf::mostAway + 1);
}

TEST_F(UnfinishedOnDisks, AFilmIsTheSameUnderAnotherInode) {
    parts.unfinishedPause = 1ms;
    start();
    addConfirmed({charade});
    while (!fs::exists(keptFile()) || kept().find("\"modified\"") == std::string::npos) pause();
    const fs::path film = library / charade;
    const auto modified = fs::last_write_time(film);
    fs::copy_file(film, library / "copy");
    fs::rename(library / "copy", film);
    fs::last_write_time(film, modified);
    start();
    EXPECT_THAT(offered(), ElementsAre(charade));
    fs::last_write_time(film, modified + 1s);
    start();
    EXPECT_FALSE(model->unfinishedOffer()) << "of the same size, but another one";
}

TEST_F(UnfinishedOnDisks, ADamagedRecordThatLeavesOutTracksOfAnMkvDoesNoHarm) {
    parts.planBuilder = [](const auto&) { return convertible(); };
    start();
    addConfirmed({"Charade (1963).mkv"});
    UnfinishedFile record{.resolved = *find("Charade (1963).mkv"), .isQueued = true};
    record.isAccepted = true;
    record.dropped = {1};
    model.reset();
    ASSERT_TRUE(Async::settle(20s));
    keep(record, {});
    start();
    ASSERT_THAT(offered(), ElementsAre("Charade (1963).mkv"));
    Async::wait(model->resumeUnfinished());
    ASSERT_EQ(model->queue().jobs().size(), 1U);
    EXPECT_THAT(model->queue().jobs()[0].request.dropTracks, IsEmpty());
}

TEST_F(UnfinishedOnDisks, TheEndOfTheProgramAsksNoFilm) {
    addConfirmed({charade});
    model->keepUnfinished();
    EXPECT_THAT(kept(), testing::HasSubstr("Charade"));
    EXPECT_THAT(kept(), testing::Not(testing::HasSubstr("\"modified\"")))
        << "only a look at the film could tell";
}

TEST_F(UnfinishedOnDisks, WithoutLocksTheFirstFileIsKeptAndNoOtherTakenOver) {
    keep(accepted(charade), {});
    keep(accepted(sintel), {}, "unfinished 2.json");
    const Sys::Fault fault(Sys::Call::Lock, ENOLCK, 1, true);
    UnfinishedShelf shelf;
    shelf.open();
    const UnfinishedWork work = shelf.look();
    ASSERT_EQ(work.files.size(), 1U);
    EXPECT_EQ(work.files[0].resolved.file.url, library / charade);
    shelf.put({.gone = {library / charade}});
    shelf.write();
    EXPECT_FALSE(fs::exists(keptFile())) << "it is written";
    EXPECT_TRUE(fs::exists(keptFile("unfinished 2.json")));
}

TEST_F(UnfinishedOnDisks, AFileOfAnEndedCopyThatCouldNotBeReadIsNotRemoved) {
    model.reset();
    ASSERT_TRUE(Async::settle(20s));
    keep(accepted(charade), {});
    keep(accepted(sintel), {}, "unfinished 2.json");
    writeFile(keptFile("unfinished 3.json"), viewOf(std::string("{")));
    UnfinishedShelf shelf;
    shelf.open();
    EXPECT_EQ(shelf.look().files.size(), 2U);
    shelf.write();
    EXPECT_FALSE(fs::exists(keptFile("unfinished 2.json")));
    EXPECT_TRUE(fs::exists(keptFile("unfinished 3.json")));
}

TEST_F(UnfinishedOnDisks, WhatThePersonDidLastIsMeantForTheFilmAsItIsThen) {
    model.reset();
    ASSERT_TRUE(Async::settle(20s));
    UnfinishedFile record = accepted(charade);
    keep(record, {});
    UnfinishedShelf shelf;
    shelf.open();
    ASSERT_EQ(shelf.look().files.size(), 1U);
    library.write(charade, std::string_view("changed from outside"));
    EXPECT_THAT(shelf.lookAt({library / charade}).same, IsEmpty());
    record.ticks.sounds = {{2, false}};
    shelf.put({.changed = {record}});
    shelf.write();
    EXPECT_THAT(shelf.lookAt({library / charade}).same, ElementsAre(library / charade));
}

TEST_F(UnfinishedOnDisks, AfterAFailureTheNextChangeIsKept) {
    model.reset();
    ASSERT_TRUE(Async::settle(20s));
    int calls = 0;
    UnfinishedStore store({.file = [&](const fs::path&) -> std::optional<UnfinishedFile> {
                               if (++calls == 1) throw std::runtime_error("for once");
                               return accepted(charade);
                           },
                           .queue = [] { return std::vector<fs::path>(); },
                           .restores = [] { return std::vector<UnfinishedRestore>(); }});
    store.pause = 1ms;
    Async::wait(store.open());
    store.touch(library / charade);
    while (calls == 0) pause();
    pause();
    store.touch(library / charade);
    while (!fs::exists(keptFile())) pause();
    EXPECT_EQ(calls, 2);
}

TEST_F(UnfinishedOnDisks, ANumberThatHasNoTextIsLeftOutOfItsRecord) {
    UnfinishedFile record = accepted(charade);
    record.resolved.file.duration = std::numeric_limits<double>::quiet_NaN();
    record.resolved.file.interleave = std::numeric_limits<double>::infinity();
    keep(record, {});
    EXPECT_EQ(UnfinishedJson::decode(viewOf(kept()))->files.size(), 1U);
}

}  // namespace
}  // namespace marlet::test
