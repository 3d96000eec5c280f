#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "verify/rebuild_test.h"

namespace marlet::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

using RebuiltTags = RebuildVerifier;

TEST_F(RebuiltTags, TwoTagsSwappedInOrderAreAReason) {
    Movie movie = interleaved(film());
    std::swap(movie.tags[0], movie.tags[1]);
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons,
                ElementsAre("iTunes metadata differs in its order or structure"));
    terms_.allowTagChange = true;
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons, IsEmpty());
}

TEST_F(RebuiltTags, EveryTagThatDiffersIsAReason) {
    Movie movie = interleaved(film());
    movie.tags = {textItem("©nam", "A Fool"), tagItem("hdvd", 21, Bytes{1}),
                  textItem("©too", "a tool")};
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons,
                ElementsAre("title differs: \"A Film\" vs \"A Fool\"",
                            "artist missing in rebuilt file (original: \"A Person\")",
                            "encoding tool added in rebuilt file: \"a tool\""));
    terms_.allowTagChange = true;
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons, IsEmpty());
}

TEST(CompareTags, AnEqualItemIsFoundWhereverItStands) {
    const auto items = [](const std::vector<Bytes>& raw) {
        const Bytes ilst = ilstBox(raw);
        return tagItems(ilst, Box{"ilst", 0, 8, static_cast<std::int64_t>(ilst.size())});
    };
    const Bytes a = textItem("©cmt", "one");
    const Bytes b = textItem("©cmt", "two");
    const Bytes c = textItem("©cmt", "three");
    EXPECT_THAT(compareTags(items({a, b}), items({b, a})), IsEmpty());
    EXPECT_THAT(compareTags(items({a, a}), items({a})),
                ElementsAre("comment missing in rebuilt file (original: \"one\")"));
    EXPECT_THAT(compareTags(items({a, b}), items({c, a})),
                ElementsAre("comment differs: \"two\" vs \"three\""));
    // The first of that key that is left is the changed one, an equal one behind it or not.
    EXPECT_THAT(compareTags(items({c, a}), items({a, b})),
                ElementsAre("comment differs: \"three\" vs \"one\"",
                            "comment differs: \"one\" vs \"two\""));
    EXPECT_THAT(compareTags(items({}), items({freeformItem("com.apple.iTunes", "X", "y")})),
                ElementsAre("custom item 'X' added in rebuilt file: \"y\""));
}

TEST(CompareTags, ACoverIsToldByItsImage) {
    const Bytes cover = tagItem("covr", 13, Bytes{0xFF, 0xD8, 0xFF, 0xD9});
    const Bytes ilst = ilstBox({cover});
    const auto items = tagItems(ilst, Box{"ilst", 0, 8, static_cast<std::int64_t>(ilst.size())});
    EXPECT_THAT(compareTags(items, {}),
                ElementsAre(StartsWith("cover art missing in rebuilt file (original: JPEG")));
}

TEST(CompareTags, AHundredThousandItemsTakeNoTime) {
    std::vector<TagItem> a;
    std::vector<TagItem> b;
    for (std::uint32_t i = 0; i < 100'000; i++) {
        a.push_back({"©cmt", "comment", be32(i)});
        b.push_back({"©cmt", "comment", be32(99'999 - i)});
    }
    EXPECT_THAT(compareTags(a, b), IsEmpty());
}

}  // namespace
}  // namespace marlet::test
