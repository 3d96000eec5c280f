#include "write/small_film.h"

namespace marlet::test {

namespace SmallFilm {

Bytes joined(std::initializer_list<Bytes> pieces) {
    Bytes out;
    for (const Bytes& piece : pieces) append(out, piece);
    return out;
}

Bytes ftyp() {
    return IlstEditor::box("ftyp", viewOf(std::string("M4V \0\0\0\0M4V mp42isom", 20)));
}

Bytes media(std::size_t size) {
    Bytes bytes(size);
    std::uint32_t state = 12345;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

Bytes mdat(std::size_t size) {
    return IlstEditor::box("mdat", media(size));
}

Bytes freeBox(std::size_t size, const std::string& type) {
    return IlstEditor::box(type, Bytes(size - 8));
}

Bytes moov(const Bytes& more) {
    return IlstEditor::box("moov", joined({IlstEditor::box("mvhd", Bytes(92)),
                                           IlstEditor::box("trak", media(292)), more}));
}

Bytes udta(const Bytes& inMeta) {
    return IlstEditor::box("udta", IlstEditor::box("meta", joined({Bytes(4), inMeta})));
}

Bytes taggedMoov() {
    return moov(udta(joined({IlstEditor::box("hdlr", Bytes(25)), IlstEditor::ilstBox(oldTags())})));
}

std::vector<Atom> oldTags() {
    return {IlstEditor::text("©nam", "Old"), IlstEditor::text("apID", "someone@example.com"),
            IlstEditor::integer("hdvd", 2, 1)};
}

std::vector<Atom> newTags() {
    return {IlstEditor::text("apID", "someone@example.com"), IlstEditor::integer("hdvd", 2, 1),
            IlstEditor::text("©nam", std::string(200, 'N') + " and so on"),
            IlstEditor::covers({{media(3000), false}})};
}

}  // namespace SmallFilm

Bytes part(const Bytes& bytes, std::uint64_t at, std::uint64_t size) {
    const ByteView view =
        slice(bytes, static_cast<std::int64_t>(at), static_cast<std::int64_t>(at + size));
    return {view.begin(), view.end()};
}

}  // namespace marlet::test
