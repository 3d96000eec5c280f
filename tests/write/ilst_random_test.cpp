// For any layout and any tags: an edit touches its region and nothing else, and can be undone.
#include <gtest/gtest.h>

#include <random>

#include "mp4/box.h"
#include "write/ilst_editor.h"
#include "write/small_film.h"

namespace marlet::test {
namespace {

using namespace SmallFilm;

class RandomFilm {
public:
    explicit RandomFilm(std::uint32_t seed) : random_(seed) {}

    Bytes file() { return upTo(1) == 0 ? indexLast() : indexFirst(); }

    std::vector<Atom> tags() {
        std::vector<Atom> tags;
        for (std::size_t i = upTo(6); i > 0; i--) {
            switch (upTo(3)) {
                case 0:
                    tags.push_back(IlstEditor::text("©nam", std::string(upTo(400), 'x')));
                    break;
                case 1:
                    tags.push_back(IlstEditor::integer("tvsn", 7, 4));
                    break;
                case 2:
                    tags.push_back(IlstEditor::freeform("Key", std::string(upTo(40), 'y')));
                    break;
                default:
                    tags.push_back(IlstEditor::covers({{media(upTo(2000)), true}}));
                    break;
            }
        }
        return tags;
    }

private:
    std::size_t upTo(std::size_t most) {
        return std::uniform_int_distribution<std::size_t>(0, most)(random_);
    }

    Bytes index() {
        const Bytes other = IlstEditor::box("chpl", media(upTo(20)));
        switch (upTo(4)) {
            case 0:
                return moov();
            case 1:
                return moov(IlstEditor::box("udta", other));
            case 2:
                return moov(udta(other));
            default:
                return moov(joined({udta(joined({other, IlstEditor::ilstBox(tags()), other})),
                                    IlstEditor::box("meta", media(12))}));
        }
    }

    /// None, or boxes of 8 bytes and more.
    Bytes padding() {
        Bytes out;
        for (std::size_t i = upTo(2); i > 0; i--)
            append(out,
                   freeBox(8 + upTo(upTo(1) == 0 ? 12 : 4000), upTo(1) == 0 ? "free" : "skip"));
        return out;
    }

    Bytes indexLast() {
        Bytes out = upTo(3) == 0 ? Bytes() : ftyp();
        for (std::size_t i = 1 + upTo(1); i > 0; i--)
            append(out, joined({padding(), mdat(upTo(3000))}));
        return joined({out, index(), padding()});
    }

    Bytes indexFirst() {
        const Bytes foreign = upTo(1) == 0 ? Bytes() : IlstEditor::box("uuid", media(30));
        return joined({ftyp(), padding(), index(), padding(), mdat(upTo(3000)), foreign,
                       mdat(upTo(100)), media(upTo(7))});
    }

    std::mt19937 random_;
};

std::vector<TagRestore::Top> mediaBoxes(const std::filesystem::path& file) {
    std::vector<TagRestore::Top> media;
    for (auto& box : TagRestore::topLevel(file))
        if (box.type == "mdat") media.push_back(box);
    return media;
}

class IlstRandom : public testing::TestWithParam<std::uint32_t> {};

TEST_P(IlstRandom, AnEditMovesNoMediaAndIsUndoneToTheByte) {
    int planned = 0;
    const TempFolder folder;
    for (std::uint32_t round = 0; round < 40; round++) {
        SCOPED_TRACE(round);
        RandomFilm random(GetParam() * 1000 + round);
        const Bytes before = random.file();
        const auto file = folder.write("film.m4v", before);
        const auto tags = random.tags();
        const auto media = mediaBoxes(file);

        IlstEditor::Plan plan;
        try {
            plan = IlstEditor::plan(file, IlstEditor::ilstBox(tags));
        } catch (const NoRoom&) {
            EXPECT_EQ(IlstEditor::layout(file).kind, IlstEditor::Layout::Kind::front);
            EXPECT_EQ(readFile(file), before);
            continue;
        }
        planned++;
        IlstEditor::apply(plan, file);
        const Bytes after = readFile(file);
        EXPECT_EQ(IlstEditor::currentIlst(file), tags);
        EXPECT_EQ(mediaBoxes(file), media);
        for (const auto& box : media)
            EXPECT_EQ(part(after, box.offset, box.size), part(before, box.offset, box.size));
        EXPECT_EQ(part(after, 0, plan.offset), part(before, 0, plan.offset));
        if (plan.layout.kind == IlstEditor::Layout::Kind::front) {
            ASSERT_EQ(after.size(), before.size());
            const std::uint64_t behind = plan.offset + plan.region.size();
            EXPECT_EQ(part(after, behind, after.size()), part(before, behind, before.size()));
        }
        IlstEditor::apply(plan.undo(), file);
        ASSERT_EQ(readFile(file), before);
    }
    EXPECT_GT(planned, 10);
}

INSTANTIATE_TEST_SUITE_P(Seeds, IlstRandom, testing::Range(1U, 6U));

}  // namespace
}  // namespace marlet::test
