#include "sources/source.h"

#include <gtest/gtest.h>

#include "sources/http_session.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

TEST(StableHash, IsThePlainDjb2Value) {
    EXPECT_EQ(stableHash(""), 5381U);
    EXPECT_EQ(stableHash("a"), 5381U * 33 + 97);
    EXPECT_EQ(stableHash("ab"), (5381U * 33 + 97) * 33 + 98);
    // Bytes, not characters, and none of them negative: U+00E9 is C3 A9.
    EXPECT_EQ(stableHash("é"), (5381U * 33 + 0xC3) * 33 + 0xA9);
}

TEST(StableHash, WrapsAroundAt64Bits) {
    std::uint64_t expected = 5381;
    for (int i = 0; i < 100; i++) expected = (expected << 5) + expected + 'z';
    EXPECT_EQ(stableHash(std::string(100, 'z')), expected);
}

TEST(PseudoID, IsTheLowHalfOfTheHashInvertedWithAllBitsAbove29Set) {
    const ExtShow show{SourceID::appleTV, "umc.cmc.1", "x", {}, "", {}};
    const auto low = static_cast<std::uint32_t>(stableHash("appleTV:umc.cmc.1"));
    const std::int64_t expected =
        static_cast<std::int64_t>(~low & 0x3FFFFFFFU) - (std::int64_t{1} << 30);
    EXPECT_EQ(show.pseudoID(), expected);
}

TEST(PseudoID, IsAlwaysNegativeAndSmallerThanAnyRealNumber) {
    for (int i = 0; i < 5000; i++) {
        const ExtShow show{SourceID::itunes, std::to_string(i), "", {}, "", {}};
        EXPECT_LT(show.pseudoID(), 0);
        EXPECT_GE(show.pseudoID(), -(std::int64_t{1} << 30));
    }
}

TEST(PseudoID, TellsSourcesAndFilmsFromShowsApart) {
    ExtShow show{SourceID::itunes, "7", "", {}, "", {}};
    ExtMovie film;
    film.source = SourceID::itunes;
    film.id = "7";
    EXPECT_NE(show.pseudoID(), film.pseudoID());
    EXPECT_EQ(film.pseudoID(), (ExtShow{SourceID::itunes, "movie:7", "", {}, "", {}}.pseudoID()));
    const auto itunes = show.pseudoID();
    show.source = SourceID::appleTV;
    EXPECT_NE(show.pseudoID(), itunes);
}

TEST(SharedSource, TmdbIsDrivenThroughItsOwnClient) {
    EXPECT_EQ(sharedSource(SourceID::tmdb), nullptr);
}

TEST(SharedSource, ThereIsOneOfEachOtherCatalogue) {
    test::qtApp();
    for (const SourceID id : {SourceID::appleTV, SourceID::itunes}) {
        ASSERT_NE(sharedSource(id), nullptr);
        EXPECT_EQ(sharedSource(id)->id(), id);
        EXPECT_EQ(sharedSource(id), sharedSource(id));
    }
}

TEST(SharedSource, AFailureIsTheCallersToHandle) {
    test::qtApp();
    const test::OwnHome home;
    const test::ScopedEnv nobody("MARLET_ITUNES_API", "http://127.0.0.1:1/");
    EXPECT_THROW(Async::wait(sharedSource(SourceID::itunes)->searchMovies("x", {})),
                 TransportError);
}

}  // namespace
}  // namespace marlet
