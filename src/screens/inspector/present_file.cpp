#include "screens/inspector/present_file.h"

#include "foundation/errors.h"
#include "screens/inspector/inspected.h"
#include "screens/pictures/art_files.h"

namespace marlet {

const PresentFile* PresentReader::of(const ScannedFile& file) {
    if (wanted_ != file.url) {
        wanted_ = file.url;
        present_.reset();
        if (Inspected::kindOf(file.url) == Inspected::Kind::mkv)
            present_ = fromScan(file);
        else
            read(this, file.url, life_);
    }
    return present_ ? &*present_ : nullptr;
}

void PresentReader::forget() {
    wanted_.reset();
    present_.reset();
}

Task<> PresentReader::read(PresentReader* self, std::filesystem::path file, CancelToken life) {
    std::function<PresentFile()> work = [file] { return fromDisk(file); };
    auto reading = Async::onWorker(std::move(work));
    PresentFile present = co_await reading;
    // Another file is being looked at, or nobody looks any more.
    if (life.isCancelled() || self->wanted_ != file) co_return;
    self->present_ = std::move(present);
    self->onRead_();
}

PresentFile PresentReader::fromDisk(const std::filesystem::path& file) {
    PresentFile present;
    present.path = file;
    present.stamp = ArtFiles::stampOf(file);
    try {
        present.atoms = IlstEditor::currentIlst(file);
    } catch (const std::exception&) {
        // What can't be read has no tags that could be shown.
    }
    present.details = PresentDetails::of(present.atoms);
    present.hasCover = present.details.cover.has_value();
    present.details.cover.reset();
    std::erase_if(present.atoms, [](const Atom& atom) { return atom.name == "covr"; });
    return present;
}

PresentFile PresentReader::fromScan(const ScannedFile& file) {
    PresentFile present;
    present.path = file.url;
    Details& details = present.details.details;
    details.title = file.tags.title.value_or("");
    details.show = file.tags.show.value_or("");
    details.season = file.tags.season;
    details.episode = file.tags.episode;
    if (file.tags.year) details.releaseDate = std::to_string(*file.tags.year);
    return present;
}

}  // namespace marlet
