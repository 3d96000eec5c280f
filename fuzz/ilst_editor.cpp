// Any bytes as a tag block: every reader of it ends within the bytes, and what is merged reads
// back.
#include <algorithm>
#include <cstdlib>

#include "foundation/text.h"
#include "mp4/tags.h"
#include "write/change_summary.h"
#include "write/ilst_editor.h"
#include "write/present_details.h"
#include "write/tag_builder.h"

namespace {

using namespace marlet;

void check(bool holds) {
    if (!holds) std::abort();
}

Details someDetails() {
    Details details;
    details.title = "Title";
    details.cast = {"One & Two", "<Three>"};
    return details;
}

void readItem(const Atom& atom) {
    const auto value = IlstEditor::textValue(atom);
    if (value) check(Text::repairUtf8(viewOf(*value)) == *value);
    if (const auto name = IlstEditor::freeformName(atom)) check(atom.name == "----");
    if (!value) return;
    // What was merged once is a list that merging leaves as it is.
    const auto merged = TagBuilder::mergeMovi(*value, TagBuilder::movieInfo(someDetails()));
    if (merged)
        check(TagBuilder::mergeMovi(*merged, TagBuilder::movieInfo(someDetails())) == merged);
    TagBuilder::mergeMovi(TagBuilder::movieInfo(someDetails()).value(), value);
}

void mergeInto(const std::vector<Atom>& existing) {
    const auto fresh = TagBuilder::atoms(someDetails(), std::nullopt);
    const auto merged = TagBuilder::merge(existing, fresh);
    for (const std::string& name : IlstEditor::personal) {
        const auto isThat = [&](const Atom& atom) { return atom.name == name; };
        check(std::count_if(existing.begin(), existing.end(), isThat) ==
              std::count_if(merged.begin(), merged.end(), isThat));
    }
    ChangeSummary::describe(existing, merged);
}

void replaceIn(ByteView bytes) {
    const Bytes block = IlstEditor::ilstBox({IlstEditor::text("©nam", "Title")});
    try {
        const Bytes moov(bytes.begin(), bytes.end());
        check(IlstEditor::replaceIlst(moov, block).size() >= block.size());
    } catch (const MFError& error) {
        check(error.description() == "a tag container uses a 64-bit size; not edited");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes(data, size);
    const auto atoms = IlstEditor::parse(bytes);
    for (const Atom& atom : atoms) {
        check(atom.bytes.size() <= size);
        readItem(atom);
    }
    mergeInto(atoms);
    PresentDetails::of(atoms);
    TagBuilder::people(textOf(bytes));
    tagItems(bytes, {"ilst", 0, 8, static_cast<std::int64_t>(size)});
    for (const Box& block : tagBlocks(bytes)) tagItems(bytes, block);
    replaceIn(bytes);
    TagBuilder::mergeMovi(textOf(bytes), std::nullopt);
    return 0;
}
