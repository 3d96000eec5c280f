// How many names a second the rules read on one core. items_per_second is names a second.
#include <benchmark/benchmark.h>

#include <array>

#include "foundation/title_match.h"
#include "identify/filename_rules.h"

namespace marlet {
namespace {

/// Every rule, release names and tidy ones, in the mix of an ordinary library.
const std::array<std::filesystem::path, 12> names{
    "/lib/TV Shows/Frasier/Season 3/01 She's the Boss.mp4",
    "/lib/TV Shows/The Dropout/Season 1/02 Satori (1080p HD).mp4",
    "/lib/TV Shows/The Office/Season 2/2-07 The Client.mp4",
    "/dl/Show.Name.S02E05.720p.WEB-DL.x264.mkv",
    "/dl/Some Show 1x05 Title.mp4",
    "/lib/Frasier/Season 3/frasier ep13 final.mp4",
    "/lib/Frasier/Season 1/Frasier - 01 - The Good Son.m4v",
    "/dl/Dropout 106 Iron Sisters.mp4",
    "/lib/Movies/3_10 to Yuma/3_10 to Yuma (1080p HD).mp4",
    "/dl/The.Matrix.1999.1080p.BluRay.x264-YIFY.mkv",
    "/lib/Movies/Le Fabuleux Destin d'Amélie Poulain (2001)/Amélie (2001).m4v",
    "/dl/Dune.2021.1080p.WEB-DL.DDP5.1.Atmos.H.264.mkv",
};

void readNames(benchmark::State& state) {
    const ExistingTags tags;
    for (auto _ : state) {
        for (const auto& name : names) {
            benchmark::DoNotOptimize(FilenameRules::parse(name, tags));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(names.size()));
}
BENCHMARK(readNames);

void readName(benchmark::State& state) {
    const ExistingTags tags;
    const auto& name = names.at(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(FilenameRules::parse(name, tags));
    state.SetLabel(name.filename().string());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(readName)->DenseRange(0, static_cast<int>(names.size()) - 1);

void compareTitles(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(TitleMatch::similarity("Where There's Smoke There's Fired",
                                                        "Where There's Smoke, There's Fired"));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(compareTitles);

}  // namespace
}  // namespace marlet

BENCHMARK_MAIN();
