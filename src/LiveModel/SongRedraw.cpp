// Redrawing a song deck: section ids carried over from the old song, new
// slides paired with old ones by their sources, and the operator's own
// slides kept in place.

#include "LiveModel/SongRedraw.h"

#include "LiveModel/AsciiCase.h"

#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace velarion {

namespace {

// Where a generated slide stands in its song: section, appearance, page.
struct SlidePlace {
    Uuid sectionID;
    int occurrence = 0;
    int page = 0;
    friend bool operator==(const SlidePlace&, const SlidePlace&) = default;
};

struct SlidePlaceHash {
    std::size_t operator()(const SlidePlace& place) const noexcept {
        std::size_t hash = std::hash<Uuid>{}(place.sectionID);
        hash ^= std::hash<int>{}(place.occurrence) + 0x9E3779B9u + (hash << 6) + (hash >> 2);
        hash ^= std::hash<int>{}(place.page) + 0x9E3779B9u + (hash << 6) + (hash >> 2);
        return hash;
    }
};

SlidePlace placeOf(const LyricSlideSource& source) {
    return {source.sectionID, source.occurrence, source.page};
}

// Old sections by some key, each handed out once, in their order.
class OldSections {
public:
    template <class Key> OldSections(const std::vector<SongSection>& sections, Key key) {
        for (std::size_t i = 0; i < sections.size(); ++i)
            byKey_[key(sections[i])].push_back(i);
    }

    // The first old section with that key not used yet.
    std::optional<std::size_t> take(const std::string& key, std::vector<bool>& used) {
        const auto found = byKey_.find(key);
        if (found == byKey_.end())
            return std::nullopt;
        Candidates& candidates = found->second;
        while (candidates.next < candidates.indices.size() &&
               used[candidates.indices[candidates.next]]) {
            ++candidates.next;
        }
        if (candidates.next == candidates.indices.size())
            return std::nullopt;
        const std::size_t index = candidates.indices[candidates.next++];
        used[index] = true;
        return index;
    }

private:
    struct Candidates {
        std::vector<std::size_t> indices;
        std::size_t next = 0;
        void push_back(std::size_t index) { indices.push_back(index); }
    };
    std::unordered_map<std::string, Candidates> byKey_;
};

} // namespace

Song Song::preservingSectionIDs(const Song& from) const {
    Song song = *this;
    const std::size_t count = song.sections.size();
    std::vector<std::optional<Uuid>> kept(count);
    std::vector<bool> used(from.sections.size(), false);

    // A section that already carries an old id is that section still.
    std::unordered_map<Uuid, std::size_t> oldByID;
    for (std::size_t i = 0; i < from.sections.size(); ++i)
        oldByID.emplace(from.sections[i].id, i);
    for (std::size_t i = 0; i < count; ++i) {
        const auto found = oldByID.find(song.sections[i].id);
        if (found == oldByID.end() || used[found->second])
            continue;
        used[found->second] = true;
        kept[i] = song.sections[i].id;
    }
    // Then by name in any case, for all sections before any by text, so that
    // a rewritten verse doesn't lose its id to another one's words.
    OldSections byName(from.sections, [](const SongSection& s) { return asciiLowercased(s.name); });
    for (std::size_t i = 0; i < count; ++i) {
        if (kept[i])
            continue;
        const auto old = byName.take(asciiLowercased(song.sections[i].name), used);
        if (old)
            kept[i] = from.sections[*old].id;
    }
    OldSections byText(from.sections, [](const SongSection& s) { return s.text; });
    for (std::size_t i = 0; i < count; ++i) {
        if (kept[i])
            continue;
        const auto old = byText.take(song.sections[i].text, used);
        if (old)
            kept[i] = from.sections[*old].id;
    }

    std::unordered_set<Uuid> taken;
    for (const auto& id : kept) {
        if (id)
            taken.insert(*id);
    }
    std::unordered_map<Uuid, Uuid> renamed;
    for (std::size_t i = 0; i < count; ++i) {
        SongSection& section = song.sections[i];
        Uuid id = kept[i].value_or(section.id);
        // A section left over keeps its id unless another now holds it.
        if (!kept[i] && !taken.insert(id).second)
            id = Uuid::random();
        renamed.emplace(section.id, id);
        section.id = id;
    }
    std::vector<Uuid> order;
    order.reserve(song.order.size());
    for (const Uuid& id : song.order) {
        const auto found = renamed.find(id);
        if (found != renamed.end())
            order.push_back(found->second);
    }
    song.order = std::move(order);
    return song;
}

bool prepareSongSlidesForEditing(MediaItem& item) {
    if (!item.song || !item.deck || !item.deck->made || !item.deck->lyricSources)
        return false;
    DeckInfo& deck = *item.deck;
    std::unordered_map<Uuid, const LyricSlideSource*> byID;
    for (const LyricSlideSource& source : *deck.lyricSources)
        byID.emplace(source.id, &source);
    for (MadeSlide& slide : *deck.made) {
        if (slide.lyricSource)
            continue;
        const auto found = byID.find(slide.id);
        if (found != byID.end())
            slide.lyricSource = *found->second;
    }
    deck.lyricSources.reset();
    return true;
}

std::vector<MadeSlide> reconcileGenerated(const MediaItem& item, std::vector<MadeSlide> with) {
    static const std::vector<MadeSlide> none;
    const std::vector<MadeSlide>& old = item.deck && item.deck->made ? *item.deck->made : none;

    std::unordered_map<SlidePlace, std::size_t, SlidePlaceHash> oldByPlace;
    for (std::size_t i = 0; i < old.size(); ++i) {
        if (old[i].lyricSource)
            oldByPlace.emplace(placeOf(*old[i].lyricSource), i);
    }
    std::vector<bool> paired(old.size(), false);
    // Position in `with` of each paired old slide, plus one; 0 when unpaired.
    std::vector<std::size_t> pairedAt(old.size(), 0);
    for (std::size_t k = 0; k < with.size(); ++k) {
        if (!with[k].lyricSource)
            continue;
        const auto found = oldByPlace.find(placeOf(*with[k].lyricSource));
        if (found == oldByPlace.end() || paired[found->second])
            continue;
        paired[found->second] = true;
        pairedAt[found->second] = k + 1;
        with[k] = mergingLyrics(old[found->second], with[k]);
    }

    // Old slides without a pair follow the nearest slide before them that
    // carries on, in their old order; with none before, they lead the deck.
    std::vector<std::vector<std::size_t>> keptAfter(with.size() + 1);
    std::size_t anchor = 0;
    for (std::size_t i = 0; i < old.size(); ++i) {
        if (paired[i]) {
            anchor = pairedAt[i];
        } else if (hasManualLyricEdits(old[i])) {
            keptAfter[anchor].push_back(i);
        }
    }
    std::vector<MadeSlide> slides;
    slides.reserve(with.size() + old.size());
    for (std::size_t i : keptAfter[0])
        slides.push_back(old[i]);
    for (std::size_t k = 0; k < with.size(); ++k) {
        slides.push_back(std::move(with[k]));
        for (std::size_t i : keptAfter[k + 1])
            slides.push_back(old[i]);
    }
    return slides;
}

MediaItem updatingSong(const MediaItem& item, const Song& song) {
    MediaItem updated = item;
    prepareSongSlidesForEditing(updated);
    Song drawn = updated.song ? song.preservingSectionIDs(*updated.song) : song;
    std::vector<MadeSlide> slides = reconcileGenerated(updated, drawn.madeSlides());
    if (!updated.deck) {
        updated.deck = DeckInfo{};
        updated.deck->source = "Velarion";
    }
    updated.deck->made = std::move(slides);
    updated.song = std::move(drawn);
    return updated;
}

} // namespace velarion
