// Names that mean something to a shell, a URL or a media tool are data wherever they stand.

#include <gtest/gtest.h>

#include <filesystem>

#include "mp4/sound_layout.h"
#include "support/bad_films.h"
#include "support/bundle.h"
#include "support/media.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

class OddNames : public testing::TestWithParam<Bundle::Tools> {
protected:
    Bundle bundle_{toolsOrSkip(GetParam())};
};

std::string quoted(const std::string& text) {
    std::string json = "\"";
    for (const char each : text) {
        if (each == '"' || each == '\\') json += '\\';
        if (each == '\n')
            json += "\\n";
        else
            json += each;
    }
    return json + "\"";
}

TEST_P(OddNames, OfFoldersAndFilmsNeverReachTheToolsOptions) {
    const TempFolder folder;
    const fs::path film = folder / "film.mp4";
    makeBadFilm(badFilms().front(), film);
    for (const char* name : {"-rem", "a#video", "a:b=c@d", "quo'te\"s", "$HOME %d ~", "ü ñ 日本 🎬",
                             "line\nfeed", "back\\slash", "-out"}) {
        const fs::path place = folder / name;
        fs::create_directories(place);
        const fs::path odd = place / (std::string(name) + ".mp4");
        fs::copy_file(film, odd);
        const fs::path request = folder.write(
            "request.json", "{\"file\":" + quoted(odd.string()) +
                                ",\"details\":{\"kind\":\"movie\",\"title\":\"Charade\"}}");
        // The work folder lies below such a name as well.
        Process process(bundle_.program("one_job"), {request.string()},
                        {{"XDG_CACHE_HOME", (place / "cache").string()},
                         {"XDG_DATA_HOME", (place / "data").string()}});
        EXPECT_EQ(process.wait(), 0);
        EXPECT_EQ(process.output().substr(0, 12), "RESULT done:") << process.output();
        EXPECT_LE(measureInterleave(odd), 1.0) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Own, OddNames, testing::Values(Bundle::Tools::own));
INSTANTIATE_TEST_SUITE_P(Gpac, OddNames, testing::Values(Bundle::Tools::gpac));

}  // namespace
}  // namespace marlet::test
