#pragma once
// Cues, library items, sections and shows for tests, and a builder that
// appends them to a show a test owns. Ids are fresh each call.

#include "LiveModel/Show.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velarion::testing {

inline Cue makeCue(std::string name, CueKind kind = GraphicCue{}, Follow follow = Follow::manual,
                   bool enabled = true) {
    Cue cue;
    cue.id = Uuid::random();
    cue.name = std::move(name);
    cue.kind = std::move(kind);
    cue.follow = follow;
    cue.isEnabled = enabled;
    return cue;
}

// An item whose file name is its name unless told.
inline MediaItem makeItem(MediaKind kind, std::string name, std::optional<double> seconds = {},
                          std::optional<std::string> fileName = {}) {
    MediaItem item;
    item.id = Uuid::random();
    item.kind = kind;
    item.fileName = fileName.value_or(name);
    item.name = std::move(name);
    item.duration = seconds;
    return item;
}

inline Section makeSection(std::string title, std::vector<Cue> cues = {}) {
    Section section;
    section.id = Uuid::random();
    section.title = std::move(title);
    section.cues = std::move(cues);
    return section;
}

inline Show makeShow(std::string title, std::vector<Section> sections = {}, std::vector<MediaItem> library = {}) {
    Show show;
    show.id = Uuid::random();
    show.title = std::move(title);
    for (Section& section : sections) show.sections.push_back(std::move(section));
    for (MediaItem& item : library) show.library.push_back(std::move(item));
    return show;
}

// A screen called "Screen ID" that shows every layer.
inline LogicalScreen makeScreen(std::string id, ScreenDestination destination, ScreenRole role = ScreenRole::audience,
                                std::optional<int> lyricLines = {}) {
    LogicalScreen screen;
    screen.name = "Screen " + id;
    screen.id = std::move(id);
    screen.role = role;
    screen.destination = std::move(destination);
    screen.layers = {LayerKind::background, LayerKind::media,   LayerKind::slides,
                     LayerKind::graphics,   LayerKind::holding, LayerKind::messages};
    screen.lyricLines = lyricLines;
    return screen;
}

// Appends to `show`; the references it returns last until the next append.
class ShowBuilder {
public:
    explicit ShowBuilder(Show& show) : show_(show) {}

    Uuid addItem(const std::string& name, MediaKind kind, std::optional<double> seconds = {}) {
        MediaItem item = makeItem(kind, name, seconds);
        show_.library.push_back(item);
        return item.id;
    }
    Cue& add(std::string name, CueKind kind, Follow follow = Follow::manual, std::size_t section = 0) {
        auto& cues = show_.sections.edit(section).cues;
        cues.push_back(makeCue(std::move(name), std::move(kind), follow));
        return cues.edit(cues.size() - 1);
    }
    Cue& video(std::string name, Follow follow = Follow::manual, std::size_t section = 0) {
        const Uuid item = addItem(name + ".mp4", MediaKind::video, 10);
        return add(std::move(name), VideoCue{item}, follow, section);
    }
    Cue& image(std::string name, Follow follow = Follow::manual) {
        const Uuid item = addItem(name + ".png", MediaKind::image);
        return add(std::move(name), ImageCue{item}, follow);
    }
    Cue& graphic(std::string name, std::optional<double> seconds, Follow follow = Follow::manual) {
        return add(name, GraphicCue{name, "", seconds}, follow);
    }
    Cue& clearCue(std::string name, ClearTarget target, Follow follow = Follow::manual) {
        return add(std::move(name), ClearCue{target, 0, std::nullopt}, follow);
    }

private:
    Show& show_;
};

} // namespace velarion::testing
