// A History of 50,000 entries, each operation in turn with a plain write of the same bytes: a new
// file, written and flushed. Prints for each "NAME OURS-MS PEER-MS BYTES", the best of all turns.
//
//   history_bench FOLDER TURNS
//
// The newest day has 5,000 entries, half of them films and half of them episodes; the others lie on
// 900 days before it.
#include <fcntl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <string>

#include "app/history.h"
#include "app/history_json.h"
#include "app/history_rows.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"

namespace {

using namespace marlet;
namespace fs = std::filesystem;

constexpr int entries = 50'000;
constexpr int ofNewestDay = 5'000;
constexpr int ofOtherDays = 50;
constexpr int inSeason = 25;
constexpr int failedEach = 20;

Moment dateOf(int index) {
    const Moment noon = Dates::startOfLocalDay(Dates::now()) + std::chrono::hours(12);
    if (index < ofNewestDay) return noon - std::chrono::seconds(index);
    return noon - std::chrono::days(1 + (index - ofNewestDay) / ofOtherDays);
}

HistoryEntry entry(int index) {
    const std::string number = std::to_string(index);
    char id[64];
    std::snprintf(id, sizeof id, "%08d-0000-4000-8000-000000000000", index);
    HistoryEntry made;
    made.id = id;
    made.date = dateOf(index);
    made.title = "The Film of the Number " + number;
    made.isMovie = index % 2 == 0;
    if (!made.isMovie) {
        const int season = index / 2 / inSeason;
        made.show = "The Show of the Number " + std::to_string(season / 4);
        made.season = season % 4 + 1;
        made.episode = index / 2 % inSeason + 1;
    }
    made.path = "/media/films/" + made.show.value_or(made.title) + "/" + made.title + " (1999).m4v";
    made.result = index % failedEach == 0 ? "failed" : "done";
    made.before = 0.5;
    made.after = 0.46;
    made.changes = {"title: none → " + made.title, "description changed", "cast and crew updated",
                    "genre: none → Drama"};
    made.message = index % failedEach == 0 ? "verification failed: media data differs"
                                           : "Details written in place and read back";
    made.size = 4'000'000'000;
    made.batchID = "00000000-0000-4000-9000-000000000000";
    made.isRestore = false;
    made.posterPath = "/media/films/posters/of/all/of/them/history-posters/_" + number + ".jpg";
    made.year = 1999;
    made.how = "Changed in place";
    made.summary = "details and cover art";
    return made;
}

double millisecondsOf(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    return took.count();
}

void writePlainly(const fs::path& file, const std::string& text) {
    const FileHandle handle =
        FileHandle::open(file, O_WRONLY | O_CREAT | O_TRUNC, "cannot write " + file.string(), 0644);
    FileOps::writeAll(handle.get(), viewOf(text), 0);
    if (Sys::fsync(handle.get()) != 0) failWithErrno("cannot flush " + file.string());
}

class Bench {
public:
    Bench(fs::path folder, int turns) : plain_(std::move(folder)), turns_(turns) {
        plain_ /= "plain";
    }
    void run(const char* name, const std::string& bytes, const std::function<void()>& action) {
        double ours = std::numeric_limits<double>::max();
        double peer = ours;
        for (int i = 0; i < turns_; i++) {
            ours = std::min(ours, millisecondsOf(action));
            peer = std::min(peer, millisecondsOf([&] { writePlainly(plain_, bytes); }));
            Sys::unlink(plain_);
        }
        std::printf("%s %.3f %.3f %zu\n", name, ours, peer, bytes.size());
    }

private:
    fs::path plain_;
    int turns_;
};

std::size_t rowsIn(const std::vector<HistoryDay>& days) {
    std::size_t count = 0;
    for (const HistoryDay& day : days) count += day.rows.size();
    return count;
}

void expect(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "history_bench: %s\n", what);
    std::exit(1);
}

std::string contentOf(const fs::path& file) {
    return textOf(FileOps::readSmall(file).value_or(Bytes()));
}

void measure(const fs::path& folder, int turns) {
    fs::create_directories(HistoryStore::file().parent_path());
    HistoryList all;
    HistoryList day;
    for (int i = 0; i < entries; i++) {
        all.add(std::make_shared<const HistoryEntry>(entry(i)));
        if (i < ofNewestDay) day.add(all.shared().back());
    }
    writePlainly(HistoryStore::file(), HistoryJson::encode(all));
    const std::string text = contentOf(HistoryStore::file());
    Bench bench(folder, turns);

    bench.run("load", text, [] { expect(HistoryStore().entries().size() >= entries, "too few"); });
    HistoryStore store;
    expect(store.entries().size() == entries, "not read back");
    int added = entries;
    bench.run("append", text, [&] { store.append(entry(added++)); });
    expect(HistoryStore().entries().size() == static_cast<std::size_t>(added), "not appended");

    const std::string ofDay = HistoryJson::encode(day);
    bench.run("day", ofDay, [&] { expect(rowsIn(HistoryRows::build(day, 0, "")) > 0, "no row"); });
    bench.run("days", text, [&] {
        expect(rowsIn(HistoryRows::build(store.entries(), 0, "")) > entries / 2, "too few rows");
    });
    bench.run("search", text, [&] {
        expect(rowsIn(HistoryRows::build(store.entries(), 2, "NUMBER 40000")) == 1, "not found");
    });
    const std::string table = store.csv();
    bench.run("csv", table, [&] { expect(store.csv() == table, "another table"); });
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::fprintf(stderr, "usage: history_bench FOLDER TURNS\n");
        return 2;
    }
    try {
        measure(arguments[1], std::atoi(arguments[2]));
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "history_bench: %s\n", failure.what());
        return 2;
    }
}
