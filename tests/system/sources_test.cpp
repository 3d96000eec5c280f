// The real program on one library, with each order of sources, and with one off or down. What was
// asked is told by the catalogue's own log.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "foundation/text.h"
#include "support/box_builder.h"
#include "system/program_run.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

/// A film of that length and no other use.
Bytes filmOf(double minutes) {
    Movie movie;
    movie.tracks = {evenTrack("vide", 1, 8, static_cast<std::uint32_t>(minutes * 60000))};
    return buildMovie(movie);
}

class Sources : public testing::Test {
protected:
    Sources() { run.environment["LC_ALL"] = "de_DE.UTF-8"; }

    void add(const std::string& name, double minutes) {
        const fs::path file = run.library() / name;
        fs::create_directories(file.parent_path());
        writeFile(file, filmOf(minutes));
    }
    /// Four films, one of which nobody knows, and two episodes.
    void smallLibrary() {
        add("Charade (1963).mp4", 113);
        add("Detour (1945).mp4", 68);
        add("The Stranger (1946).mp4", 95);
        add("Nobody Made This (1999).mp4", 90);
        add("The Tin Observatory (2017)/Season 2/02 Dark Adaptation.mp4", 22);
        add("The Tin Observatory (2017)/Season 2/08 Rain Delay.mp4", 24);
    }
    /// The lines of the report, sorted: films come as they finish.
    std::vector<std::string> scan(const std::vector<std::string>& options) {
        const TempFolder folder;
        std::vector<std::string> arguments = {"--scan", run.library().string(), "--report",
                                              folder / "r.tsv", "--quit"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        EXPECT_EQ(run.marlet(arguments).status, 0);
        std::vector<std::string> lines = Text::split(textOf(readFile(folder / "r.tsv")), '\n');
        lines.erase(lines.begin());
        std::sort(lines.begin(), lines.end());
        return lines;
    }
    std::size_t asked(const std::string& start) { return run.catalogue().log(start).size(); }
    /// The first file of the report's line for a name.
    static std::string lineOf(const std::vector<std::string>& lines, const std::string& name) {
        for (const std::string& line : lines)
            if (line.find(name) != std::string::npos) return line;
        return "(no line)";
    }
    /// All that the caches hold.
    std::string caches() {
        std::string all;
        for (const char* variable : {"XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME"}) {
            const char* folder = std::getenv(variable);
            if (folder == nullptr || !fs::exists(folder)) continue;
            for (const auto& entry : fs::recursive_directory_iterator(folder))
                if (entry.is_regular_file()) all += textOf(readFile(entry.path()));
        }
        return all;
    }

    ProgramRun run;
};

constexpr const char* tmdbKnows = "CERTAIN\tCharade (1963).mp4\tCharade [rules]\tCharade (1963)";

class EachOrder : public Sources, public testing::WithParamInterface<const char*> {};

TEST_P(EachOrder, TheFirstSourceAnswersAndWhatItLacksGoesToTheNext) {
    smallLibrary();
    const std::string order = GetParam();
    const auto lines = scan({"--sources=" + order});
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_THAT(lineOf(lines, "Charade"), StartsWith(tmdbKnows));
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const auto& line) { return line.starts_with("CERTAIN"); }),
              5);
    EXPECT_THAT(lineOf(lines, "Rain Delay"), HasSubstr("The Tin Observatory (2017)\tS2E8\tRain"));

    const std::map<std::string, std::string> roots = {
        {"appleTV", "/uts/v3/"}, {"tmdb", "/3/"}, {"itunes", "/itunes/"}};
    const std::map<std::string, std::string> words = {
        {"appleTV", "No film called “Nobody Made This” on Apple TV"},
        {"tmdb", "No movie called “Nobody Made This” in the database"},
        {"itunes", "No film called “Nobody Made This” on iTunes Store"}};
    const std::vector<std::string> names = Text::split(order, ',');
    EXPECT_THAT(lineOf(lines, "Nobody"), EndsWith(words.at(names[0])));

    // Only the first is asked for what it knows; the others for the unknown film alone.
    const auto log = run.catalogue().log();
    for (std::size_t i = 0; i < names.size(); i++) {
        std::vector<std::string> targets;
        for (const auto& arrival : log)
            if (arrival.target.starts_with(roots.at(names[i]))) targets.push_back(arrival.target);
        EXPECT_THAT(targets, Not(IsEmpty())) << names[i];
        EXPECT_THAT(targets, Contains(HasSubstr("Nobody"))) << names[i];
        const auto named = std::count_if(targets.begin(), targets.end(), [](const auto& target) {
            return contains(target, "Charade");
        });
        EXPECT_EQ(named > 0, i == 0) << names[i];
    }
    // One after the other for the one file: none before the one ahead of it.
    std::vector<std::string> path;
    for (const auto& arrival : log)
        for (const std::string& name : names) {
            const bool isNew = path.empty() || path.back() != name;
            if (isNew && arrival.target.starts_with(roots.at(name)) &&
                arrival.target.find("Nobody") != std::string::npos)
                path.push_back(name);
        }
    EXPECT_EQ(path, names);
}

INSTANTIATE_TEST_SUITE_P(Orders, EachOrder,
                         testing::Values("appleTV,tmdb,itunes", "appleTV,itunes,tmdb",
                                         "tmdb,appleTV,itunes", "tmdb,itunes,appleTV",
                                         "itunes,appleTV,tmdb", "itunes,tmdb,appleTV"));

TEST_F(Sources, AScriptAsksAppleTVOnlyWhenToldTo) {
    add("Nobody Made This (1999).mp4", 90);
    EXPECT_THAT(scan({})[0], EndsWith("No movie called “Nobody Made This” in the database"));
    EXPECT_EQ(asked("/uts/"), 0U);
    EXPECT_EQ(asked("/itunes/"), 1U);
    EXPECT_THAT(scan({"--apple-tv"})[0], EndsWith("No film called “Nobody Made This” on Apple TV"));
    EXPECT_EQ(asked("/uts/"), 2U);
}

TEST_F(Sources, ASourceThatIsOffIsNotAsked) {
    add("Charade (1963).mp4", 113);
    for (const char* list : {"appleTV", "tmdb", "itunes"}) {
        run.catalogue().resetStats();
        EXPECT_THAT(scan({std::string("--sources=") + list})[0], StartsWith(tmdbKnows)) << list;
        EXPECT_EQ(asked("/uts/") > 0, std::string(list) == "appleTV");
        EXPECT_EQ(asked("/3/") > 0, std::string(list) == "tmdb");
        EXPECT_EQ(asked("/itunes/") > 0, std::string(list) == "itunes");
    }
    run.catalogue().resetStats();
    EXPECT_THAT(scan({"--sources="})[0], EndsWith("\tNo source is switched on"));
    EXPECT_THAT(run.catalogue().log(), IsEmpty());
}

struct Down {
    const char* name;
    const char* fault;  ///< of a service; empty: nobody listens
};

class SourceDown : public Sources, public testing::WithParamInterface<Down> {
protected:
    void bringDown(const std::string& root, const std::string& variable) {
        const std::string fault = GetParam().fault;
        if (fault.empty())
            run.environment[variable] = "http://127.0.0.1:9" + root;
        else
            run.catalogue().fault(R"({"path":"^)" + root + R"(","times":0,)" + fault + "}");
    }
};

TEST_P(SourceDown, LeavesItsPlaceToTheNext) {
    add("Charade (1963).mp4", 113);
    bringDown("/uts/v3/", "MARLET_APPLE_TV_API");
    EXPECT_THAT(scan({"--sources=appleTV,tmdb"})[0], StartsWith(tmdbKnows));
    EXPECT_LE(asked("/uts/"), 1U) << "one try, and no second";
    bringDown("/itunes/", "MARLET_ITUNES_API");
    EXPECT_THAT(scan({"--sources=itunes,tmdb"})[0], StartsWith(tmdbKnows));
    EXPECT_LE(asked("/itunes/"), 1U);
}

TEST_P(SourceDown, IsToldInItsWordsWhenNoOtherKnows) {
    add("Charade (1963).mp4", 113);
    bringDown("/uts/v3/", "MARLET_APPLE_TV_API");
    bringDown("/itunes/", "MARLET_ITUNES_API");
    EXPECT_THAT(scan({"--sources=appleTV,itunes"})[0],
                EndsWith("\tNo film called “Charade” on Apple TV"));
    EXPECT_THAT(scan({"--sources=itunes"})[0],
                EndsWith("\tNo film called “Charade” on iTunes Store"));
}

INSTANTIATE_TEST_SUITE_P(Ways, SourceDown,
                         testing::Values(Down{"ServerError", R"("status":500)"},
                                         Down{"TooMany", R"("status":429)"},
                                         Down{"Html", R"("answer":"html")"},
                                         Down{"Half", R"("answer":"half")"},
                                         Down{"CutOff", R"("cut":"middle")"}, Down{"Refused", ""}),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_F(Sources, TMDBThatIsDownLeavesItsPlaceToTheOthers) {
    add("Charade (1963).mp4", 113);
    run.environment["MARLET_TMDB_API"] = "http://127.0.0.1:9/3";
    EXPECT_THAT(scan({"--sources=tmdb,itunes"})[0], StartsWith(tmdbKnows));
    run.environment["MARLET_TMDB_TOKEN"] = "";
    EXPECT_THAT(scan({"--sources=tmdb,appleTV"})[0], StartsWith(tmdbKnows));
}

/// A request may be held up on its way, so two neighbours can arrive closer than they were sent;
/// any three of a row lie more than one gap apart.
void expectGaps(const std::vector<CatalogueServer::Arrival>& log, long long gap) {
    for (std::size_t i = 2; i < log.size(); i++)
        EXPECT_GE(log[i].ms - log[i - 2].ms, gap) << log[i - 2].target << "\n"
                                                  << log[i - 1].target << "\n"
                                                  << log[i].target;
    const auto gaps = static_cast<long long>(log.size()) - 2;
    EXPECT_GE(log.back().ms - log.front().ms, gaps * gap);
}

TEST_F(Sources, NoSourceIsAskedFasterThanItsGapUnderFourFilmsAtATime) {
    smallLibrary();
    add("Sintel (2010).mp4", 15);
    add("Spring (2019).mp4", 8);
    scan({"--sources=appleTV"});
    const auto apple = run.catalogue().log("/uts/v3/");
    EXPECT_GE(apple.size(), 12U);
    expectGaps(apple, 350);
    scan({"--sources=itunes"});
    const auto itunes = run.catalogue().log("/itunes/");
    EXPECT_GE(itunes.size(), 6U);
    expectGaps(itunes, 1000);
}

TEST_F(Sources, CountryAndStoreAreThePersonsOwn) {
    add("Nobody Made This (1999).mp4", 90);
    scan({"--sources=appleTV,itunes"});
    for (const auto& arrival : run.catalogue().log("/uts/v3/")) {
        EXPECT_THAT(arrival.target, HasSubstr("sf=143443"));
        EXPECT_THAT(arrival.target, HasSubstr("locale=de_DE"));
    }
    for (const auto& arrival : run.catalogue().log("/itunes/"))
        EXPECT_THAT(arrival.target, HasSubstr("country=DE"));
}

TEST_F(Sources, NoKeyStandsInAnotherServicesAddressOrInAnyFile) {
    smallLibrary();
    run.environment["MARLET_TMDB_TOKEN"] = "very-secret-token";
    scan({"--sources=appleTV,tmdb,itunes"});
    const std::string key = "5amp1e";
    bool keySeen = false;
    for (const auto& arrival : run.catalogue().log()) {
        const bool apple = arrival.target.starts_with("/uts/v3/");
        EXPECT_THAT(arrival.target, Not(HasSubstr("very-secret-token")));
        EXPECT_EQ(arrival.hasToken, arrival.target.starts_with("/3/")) << arrival.target;
        keySeen = keySeen || (apple && contains(arrival.target, key));
        EXPECT_TRUE(apple || !contains(arrival.target, key)) << arrival.target;
    }
    EXPECT_TRUE(keySeen) << "the key that is looked for is the one in use";
    const std::string files = caches();
    EXPECT_THAT(files, HasSubstr("Charade")) << "the caches are where they are looked for";
    EXPECT_EQ(files.find(key), std::string::npos);
    EXPECT_EQ(files.find("very-secret-token"), std::string::npos);
}

TEST_F(Sources, ASecondScanOfALargeLibraryAsksNobody) {
    const std::vector<std::pair<std::string, double>> films = {{"Charade (1963)", 113},
                                                               {"Detour (1945)", 68},
                                                               {"Nobody Made This (1999)", 90},
                                                               {"Sintel (2010)", 15}};
    constexpr std::size_t count = 2000;
    for (std::size_t i = 0; i < count; i++) {
        const auto& [name, minutes] = films[i % films.size()];
        add("Shelf " + std::to_string(i) + "/" + name + ".mp4", minutes);
    }
    const auto first = scan({"--sources=appleTV,tmdb,itunes"});
    ASSERT_EQ(first.size(), count);
    EXPECT_LT(run.catalogue().log().size(), 40U) << "no title is asked for twice";
    run.catalogue().resetStats();
    EXPECT_EQ(scan({"--sources=appleTV,tmdb,itunes"}), first);
    EXPECT_THAT(run.catalogue().log(), IsEmpty());
}

TEST_F(Sources, AnEndedProgramDoesNotWaitForAServiceThatHangs) {
    add("Charade (1963).mp4", 113);
    run.catalogue().fault(R"({"times":0,"delayMs":20000})");
    const TempFolder folder;
    const auto process = run.start("marlet", {"--scan", run.library().string(), "--report",
                                              folder / "r.tsv", "--sources=appleTV,itunes"});
    for (int i = 0; i < 3000 && run.catalogue().log().empty(); i++) usleep(10000);
    ASSERT_THAT(run.catalogue().log(), SizeIs(1));
    process->signal(SIGTERM);
    process->wait(std::chrono::seconds(15));
}

}  // namespace
}  // namespace marlet::test
