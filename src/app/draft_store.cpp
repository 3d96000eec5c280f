#include "app/draft_store.h"

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
    return found == drafts_.end() ? nullptr : &found->second;
}

void DraftStore::put(const Path& file, FileDraft draft) {
    adoptSeasonArt(draft);
    drafts_.insert_or_assign(file, std::move(draft));
}

void DraftStore::forget(const Path& file) {
    drafts_.erase(file);
    loading_.erase(file);
}

void DraftStore::pickArtwork(const ArtworkOption& option, const Path& file) {
    FileDraft* draft = find(file);
    if (draft == nullptr) return;
    choose(*draft, option);
    if (!draft->seasonKey || !sharesSeason(*draft->seasonKey)) return;
    const std::string key = *draft->seasonKey;
    picks_[pickKey(key, option.shape)] = option;
    for (auto& [path, each] : drafts_)
        if (each.seasonKey == key) choose(each, option);
}

void DraftStore::adoptSeasonArt(FileDraft& draft) const {
    if (!draft.seasonKey || !sharesSeason(*draft.seasonKey)) return;
    for (const Shape shape : {Shape::wide, Shape::tall}) {
        const auto pick = picks_.find(pickKey(*draft.seasonKey, shape));
        if (pick != picks_.end()) choose(draft, pick->second);
    }
}

void DraftStore::setShareSeason(bool on, const std::string& key, const Path& file) {
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

}  // namespace marlet
