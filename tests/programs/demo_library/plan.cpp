#include "demo_library/plan.h"

namespace marlet::demo {

namespace {

using Tags = std::vector<std::pair<std::string, std::string>>;

/// Nobody's copy is as long as the catalogue says to the second.
constexpr int secondsShort = 9;

struct FilmRow {
    const char* title;
    int year;
    const char* path;
    Index index;
    Tags tags = {};
    bool accountTags = false;
    SoundLayout sound = SoundLayout::interleaved;
};

const std::vector<FilmRow>& filmRows() {
    static const std::vector<FilmRow> rows = {
        {"Night of the Living Dead", 1968,
         "Movies/Night.of.the.Living.Dead.1968.1080p.BluRay.x264-GRP.mp4", Index::last},
        {"Charade",
         1963,
         "Movies/Charade (1963)/Charade (1963).m4v",
         Index::firstWithRoom,
         {{"title", "Charade"}, {"date", "1963"}},
         true},
        {"Nosferatu: A Symphony of Horror", 1922, "Movies/Nosferatu (1922).mp4", Index::first},
        {"The Lodger: A Story of the London Fog", 1927,
         "Movies/The Lodger_ A Story of the London Fog.m4v", Index::lastWithRoom},
        {"Sintel", 2010, "Movies/Sintel.mp4", Index::firstWithRoom},
        {"Big Buck Bunny",
         2008,
         "Movies/Big Buck Bunny 2008.m4v",
         Index::lastWithRoom,
         {{"title", "bbb_final_v2"}}},
        {"Tears of Steel", 2012, "Movies/Tears.of.Steel.2012.WEB-DL.H.264.mp4", Index::last},
        {"D.O.A.", 1950, "Movies/D.O.A. (1950).mp4", Index::firstWithRoom},
        {"Häxan", 1922, "Movies/Häxan (1922).m4v", Index::last},
        {"20,000 Leagues Under the Sea", 1916, "Movies/20,000 Leagues Under the Sea (1916).mp4",
         Index::last},
        {"The General", 1926, "Movies/The General/The General.m4v", Index::firstWithRoom},
        {"Gulliver's Travels", 1939, "Movies/Gullivers Travels (1939).m4v", Index::last},
        {"House on Haunted Hill", 1959, "Movies/house_on_haunted_hill_1959_DVDRip.mp4",
         Index::last},
        {"Dr. Jekyll and Mr. Hyde", 1920, "Movies/Dr. Jekyll and Mr. Hyde (1920) 720p.m4v",
         Index::last},
        // Three films have this name, and the one of this length is far the least known.
        {"Dr. Jekyll and Mr. Hyde", 1912, "Movies/Dr. Jekyll and Mr. Hyde.mp4", Index::first}};
    return rows;
}

struct EpisodeRow {
    int season;
    int first;
    int last;  ///< the same as first but for a double episode
    const char* path;
    Index index;
    Tags tags = {};
};

constexpr const char* show = "The Tin Observatory";
constexpr int showYear = 2017;

const std::vector<EpisodeRow>& episodeRows() {
    static const std::vector<EpisodeRow> rows = {
        {0, 1, 1, "Season 0/01 The Longest Night.m4v", Index::last},
        {2, 1, 1, "Season 2/01 Second Light.m4v", Index::firstWithRoom},
        {2, 2, 2, "Season 2/02 Dark Adaptation (1080p HD).m4v", Index::last},
        {2, 3, 3, "Season 2/2-03 The Borrowed Lens.mp4", Index::last},
        {2, 4, 5, "Season 2/04 A Comet for Mrs. Pell.m4v", Index::lastWithRoom},
        {2, 6, 6, "Season 2/The.Tin.Observatory.S02E06.720p.WEB-DL.x264-GRP.mp4", Index::last},
        {2, 7, 7, "Season 2/The Tin Observatory - 07 - The Mayor's New Moon.m4v",
         Index::firstWithRoom},
        {2,
         8,
         8,
         "Season 2/08 Rain Delay.mp4",
         Index::last,
         {{"title", "Rain Delay"}, {"show", show}, {"season_number", "2"}, {"episode_sort", "8"}}}};
    return rows;
}

Item itemOf(const FilmRow& row, const catalogue::Catalogue& catalogue) {
    const int minutes = catalogue.film(row.title, row.year).minutes;
    return {row.path, minutes * 60 - secondsShort, row.index, row.tags, row.accountTags, row.sound};
}

Item itemOf(const EpisodeRow& row, const catalogue::Catalogue& catalogue) {
    const catalogue::Season* season = catalogue.show(show, showYear).season(row.season);
    int minutes = 0;
    for (int number = row.first; number <= row.last; number++)
        minutes += season->episode(number)->minutes;
    return {std::string("TV Shows/") + show + "/" + row.path, minutes * 60 - secondsShort,
            row.index, row.tags};
}

}  // namespace

std::vector<Item> tidyLibrary(const catalogue::Catalogue& catalogue) {
    std::vector<Item> items;
    for (const FilmRow& row : filmRows()) items.push_back(itemOf(row, catalogue));
    for (const EpisodeRow& row : episodeRows()) items.push_back(itemOf(row, catalogue));
    items.push_back({"Movies/VID_0042.mp4", 437, Index::last});  // somebody's holiday
    return items;
}

std::vector<Item> trouble(const catalogue::Catalogue& catalogue) {
    const FilmRow row = {"Detour", 1945,  "Movies/Detour (1945).m4v", Index::last,
                         {},       false, SoundLayout::oneStretch};
    return {itemOf(row, catalogue)};
}

}  // namespace marlet::demo
