#include "app/draft_store.h"

#include <utility>

namespace marlet {

namespace {

using Shape = ArtworkOption::Shape;

std::string pickKey(const std::string& season, Shape shape) {
    return season + (shape == Shape::wide ? "|wide" : "|tall");
}

void choose(FileDraft& draft, const ArtworkOption& option) {
    (option.shape == Shape::wide ? draft.chosenWide : draft.chosenTall) = option;
}

}  // namespace

const FileDraft* DraftStore::find(const Path& file) const {
    const auto found = drafts_.find(file);
    return found == drafts_.end() ? nullptr : &found->second;
}

FileDraft* DraftStore::find(const Path& file) {
    const auto found = drafts_.find(file);
    if (found == drafts_.end()) return nullptr;
    touched(file);
    return &found->second;
}

void DraftStore::touched(const Path& file) const {
    if (onTouched) onTouched(file);
}

void DraftStore::put(const Path& file, FileDraft draft) {
    adoptSeasonArt(draft);
    FileDraft& placed = drafts_.insert_or_assign(file, std::move(draft)).first->second;
    grant(file, placed);
    touched(file);
}

void DraftStore::forget(const Path& file) {
    drafts_.erase(file);
    wishes_.erase(file);
    touched(file);
    const auto found = loading_.find(file);
    if (found != loading_.end()) endLoading(file, found->second.number);
}

int DraftStore::beginLoading(const Path& file) {
    const int number = ++lastNumber_;
    loading_.insert_or_assign(file, Loading{number, Gate()});
    return number;
}

bool DraftStore::isCurrent(const Path& file, int number) const {
    const auto found = loading_.find(file);
    return found != loading_.end() && found->second.number == number;
}

void DraftStore::endLoading(const Path& file, int number) {
    if (!isCurrent(file, number)) return;
    const auto found = loading_.find(file);
    // Soon and not now: those who wait go on to change the model, in which the caller is at work.
    Async::post([ended = found->second.ended] { ended.open(); });
    loading_.erase(found);
}

void DraftStore::endAll() {
    for (const auto& [file, loading] : std::exchange(loading_, {})) loading.ended.open();
}

std::optional<Gate> DraftStore::loadingOf(const Path& file) const {
    const auto found = loading_.find(file);
    if (found == loading_.end()) return std::nullopt;
    return found->second.ended;
}

void DraftStore::pickArtwork(const ArtworkOption& option, const Path& file) {
    FileDraft* draft = find(file);
    if (draft == nullptr) return;
    choose(*draft, option);  // find() has told that it may be another
    if (!draft->seasonKey || !sharesSeason(*draft->seasonKey)) return;
    const std::string key = *draft->seasonKey;
    picks_[pickKey(key, option.shape)] = option;
    for (auto& [path, each] : drafts_) {
        if (each.seasonKey != key) continue;
        choose(each, option);
        touched(path);
    }
}

void DraftStore::adoptSeasonArt(FileDraft& draft) const {
    if (!draft.seasonKey || !sharesSeason(*draft.seasonKey)) return;
    for (const Shape shape : {Shape::wide, Shape::tall}) {
        const auto pick = picks_.find(pickKey(*draft.seasonKey, shape));
        if (pick != picks_.end()) choose(draft, pick->second);
    }
}

void DraftStore::setShareSeason(bool on, const std::string& key, const Path& file) {
    for (const auto& [path, each] : drafts_)
        if (each.seasonKey == key) touched(path);
    if (!on) {
        apart_.insert(key);
        return;
    }
    apart_.erase(key);
    const FileDraft* draft = find(file);
    if (draft == nullptr) return;
    const auto wide = draft->chosenWide;
    const auto tall = draft->chosenTall;
    if (wide) pickArtwork(*wide, file);
    if (tall) pickArtwork(*tall, file);
}

DraftCorrections DraftStore::corrections(const Path& file) const {
    const FileDraft* draft = find(file);
    if (draft == nullptr) {
        const auto wished = wishes_.find(file);
        return wished == wishes_.end() ? DraftCorrections() : wished->second;
    }
    DraftCorrections corrections = DraftCorrections::of(*draft);
    corrections.isApart = draft->seasonKey && !sharesSeason(*draft->seasonKey);
    return corrections;
}

void DraftStore::wish(const Path& file, const DraftCorrections& corrections) {
    if (!corrections.empty() || corrections.isApart) wishes_.insert_or_assign(file, corrections);
}

void DraftStore::grant(const Path& file, FileDraft& draft) {
    const auto wished = wishes_.extract(file);
    if (!wished) return;
    const DraftCorrections& corrections = wished.mapped();
    if (draft.seasonKey && corrections.isApart) apart_.insert(*draft.seasonKey);
    corrections.applyTo(draft);
    for (const auto& option : {corrections.wide, corrections.tall})
        if (option) pickArtwork(*option, file);
}

}  // namespace marlet
