// The inspector's pages for sound: audio files, playlists of them, and the
// music apps' songs (with their audition) and playlists; and where music
// goes.

#include "Console/InspectorPages.h"
#include "Live/AppModel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace velarion::console {

namespace {

ChoiceItems busChoices() { return fixedChoices({{"house", "House"}, {"headphones", "Headphones"}}); }

InspectorForm* audioPage(const PageContext& context) {
    auto* form = new InspectorForm("Audio", context.commit, context.parent);
    form->choice(
        "Sound", [](const Show& show, const Cue& cue) {
            return mediaChoices(show, MediaKind::audio, payload<AudioCue>(cue).mediaID);
        },
        [](const Cue& cue) { return key(payload<AudioCue>(cue).mediaID); },
        [](Cue& cue, const QString& value) {
            if (const auto id = uuidOf(value)) payload<AudioCue>(cue).mediaID = *id;
        });
    form->number("In point", VELARION_FIELD(AudioCue, &AudioCue::inPoint), {0, 86400, 2, " s"});
    form->optionalNumber("Out point", VELARION_FIELD(AudioCue, &AudioCue::outPoint), {0, 86400, 2, " s"});
    form->number("Fade in", VELARION_FIELD(AudioCue, &AudioCue::fadeIn));
    form->number("Fade out", VELARION_FIELD(AudioCue, &AudioCue::fadeOut));
    form->number("Level", VELARION_FIELD(AudioCue, &AudioCue::level), percentFormat());
    form->toggle("Loops", VELARION_FIELD(AudioCue, &AudioCue::loops));
    form->choice(
        "Crossfade the loop", [](const Show&, const Cue&) { return optionalSwitchChoices(); },
        [](const Cue& cue) { return optionalSwitchKey(payload<AudioCue>(cue).crossfadesLoop); },
        [](Cue& cue, const QString& value) { payload<AudioCue>(cue).crossfadesLoop = optionalSwitchValue(value); });
    enumChoice<AudioBus>(*form, "Bus", busChoices(), VELARION_FIELD(AudioCue, &AudioCue::bus));
    optionalEnumChoice<SoundRole>(*form, "Plays as",
                                  fixedChoices({{"", "Automatic (by length)"}, {"music", "Music"}, {"effect", "Effect"}}),
                                  VELARION_FIELD(AudioCue, &AudioCue::role));
    return form;
}

// The playlist's sounds in order, with adding from the library, removing
// and moving one up.
void playlistSounds(InspectorForm& form) {
    auto* holder = new QWidget(&form);
    auto* column = new QVBoxLayout(holder);
    column->setContentsMargins(0, 0, 0, 0);
    auto* list = new QListWidget(holder);
    list->setFixedHeight(110);
    column->addWidget(list);
    auto* buttons = new QHBoxLayout;
    auto* adding = new QComboBox(holder);
    auto* add = new QPushButton("Add", holder);
    auto* remove = new QPushButton("Remove", holder);
    auto* up = new QPushButton("Up", holder);
    buttons->addWidget(adding, 1);
    buttons->addWidget(add);
    buttons->addWidget(remove);
    buttons->addWidget(up);
    column->addLayout(buttons);
    QObject::connect(add, &QPushButton::clicked, &form, [&form, adding] {
        const auto id = uuidOf(adding->currentData().toString());
        if (id) form.commit([id = *id](Cue& cue) { payload<PlaylistCue>(cue).mediaIDs.push_back(id); });
    });
    QObject::connect(remove, &QPushButton::clicked, &form, [&form, list] {
        const int row = list->currentRow();
        if (row < 0) return;
        form.commit([row](Cue& cue) {
            auto& ids = payload<PlaylistCue>(cue).mediaIDs;
            if (row < int(ids.size())) ids.erase(ids.begin() + row);
        });
    });
    QObject::connect(up, &QPushButton::clicked, &form, [&form, list] {
        const int row = list->currentRow();
        if (row < 1) return;
        form.commit([row](Cue& cue) {
            auto& ids = payload<PlaylistCue>(cue).mediaIDs;
            if (row < int(ids.size())) std::swap(ids[row - 1], ids[row]);
        });
        list->setCurrentRow(row - 1);
    });
    form.row("Sounds", holder, [list, adding](const Show& show, const Cue& cue) {
        const auto& ids = payload<PlaylistCue>(cue).mediaIDs;
        QStringList names;
        for (const Uuid& id : ids) {
            const MediaItem* item = show.media(id);
            names << (item ? QString::fromStdString(item->name) : QString("Missing item"));
        }
        bool same = list->count() == names.size();
        for (int i = 0; same && i < names.size(); ++i) same = list->item(i)->text() == names[i];
        if (!same) {
            const int row = list->currentRow();
            list->clear();
            list->addItems(names);
            list->setCurrentRow(std::min(row, int(names.size()) - 1));
        }
        const ChoiceItems sounds = mediaChoices(show, MediaKind::audio, std::nullopt);
        if (adding->count() != int(sounds.size())) {
            adding->clear();
            for (const auto& [words, value] : sounds) adding->addItem(words, value);
        }
    });
}

InspectorForm* playlistPage(const PageContext& context) {
    auto* form = new InspectorForm("Playlist", context.commit, context.parent);
    playlistSounds(*form);
    form->toggle("Shuffle", VELARION_FIELD(PlaylistCue, &PlaylistCue::shuffle));
    form->toggle("Repeat", VELARION_FIELD(PlaylistCue, &PlaylistCue::repeats));
    form->number("Crossfade", VELARION_FIELD(PlaylistCue, &PlaylistCue::crossfade), {0, 20, 1, " s"});
    form->number("Fade in", VELARION_FIELD(PlaylistCue, &PlaylistCue::fadeIn));
    form->number("Level", VELARION_FIELD(PlaylistCue, &PlaylistCue::level), percentFormat());
    enumChoice<AudioBus>(*form, "Bus", busChoices(), VELARION_FIELD(PlaylistCue, &PlaylistCue::bus));
    return form;
}

template <class P> void percentLevel(InspectorForm& form) {
    form.number(
        "Level", [](const Cue& cue) { return double(payload<P>(cue).level); },
        [](Cue& cue, double value) { payload<P>(cue).level = int(std::lround(value)); }, {0, 100, 0, " %"});
}

// The audition: plays the song in its app from its start point, or stops
// the test; its note says how the test goes.
void auditionRow(InspectorForm& form, AppModel& model) {
    auto* holder = new QWidget(&form);
    auto* column = new QVBoxLayout(holder);
    column->setContentsMargins(0, 0, 0, 0);
    auto* button = new QPushButton("Audition", holder);
    button->setObjectName("audition");
    auto* note = new QLabel(holder);
    note->setObjectName("auditionNote");
    note->setWordWrap(true);
    note->setStyleSheet("color: #808690;");
    column->addWidget(button);
    column->addWidget(note);
    auto shown = std::make_shared<std::optional<Uuid>>();
    QObject::connect(button, &QPushButton::clicked, &form, [&model, shown] {
        const auto state = model.auditionState();
        if (state.cueID && state.cueID == *shown) model.stopAudition();
        else if (*shown) model.audition(**shown);
    });
    form.row("Test", holder, [&model, button, note, shown](const Show&, const Cue& cue) {
        *shown = cue.id;
        const auto state = model.auditionState();
        const bool testing = state.cueID == cue.id;
        const QString words = testing ? "Stop Audition" : "Audition";
        if (button->text() != words) button->setText(words);
        const QString text = QString::fromStdString(state.note);
        if (note->text() != text) note->setText(text);
    });
}

QString kindLabel(CueKindCase kind) { return enumKey(cueKind::label(kind)); }

template <class P> InspectorForm* songPage(CueKindCase kind, const PageContext& context) {
    auto* form = new InspectorForm(kindLabel(kind), context.commit, context.parent);
    form->text("Title", VELARION_FIELD(P, &StreamTrackCue::title));
    form->text("Artist", VELARION_FIELD(P, &StreamTrackCue::artist));
    form->text("Reference", VELARION_FIELD(P, &StreamTrackCue::reference));
    form->number("Start at", VELARION_FIELD(P, &StreamTrackCue::startAt), {0, 86400, 1, " s"});
    form->number("Fade in", VELARION_FIELD(P, &StreamTrackCue::fadeIn));
    form->optionalNumber("Play for", VELARION_FIELD(P, &StreamTrackCue::playFor), {0, 86400, 1, " s"});
    form->number("Fade out", VELARION_FIELD(P, &StreamTrackCue::fadeOut));
    percentLevel<P>(*form);
    auditionRow(*form, context.model);
    return form;
}

InspectorForm* streamPlaylistPage(const PageContext& context) {
    auto* form = new InspectorForm(kindLabel(CueKindCase::spotifyPlaylist), context.commit, context.parent);
    form->text("Title", VELARION_FIELD(StreamPlaylistCue, &StreamPlaylistCue::title));
    form->text("Reference", VELARION_FIELD(StreamPlaylistCue, &StreamPlaylistCue::reference));
    form->toggle("Shuffle", VELARION_FIELD(StreamPlaylistCue, &StreamPlaylistCue::shuffle));
    form->number("Fade in", VELARION_FIELD(StreamPlaylistCue, &StreamPlaylistCue::fadeIn));
    percentLevel<StreamPlaylistCue>(*form);
    return form;
}

} // namespace

InspectorForm* soundPage(CueKindCase kind, const PageContext& context) {
    switch (kind) {
    case CueKindCase::audio: return audioPage(context);
    case CueKindCase::playlist: return playlistPage(context);
    case CueKindCase::spotifyTrack: return songPage<SpotifyTrack>(kind, context);
    case CueKindCase::spotifyPlaylist: return streamPlaylistPage(context);
    case CueKindCase::musicTrack: return songPage<MusicTrack>(kind, context);
    default: return nullptr;
    }
}

InspectorForm* musicOutForm(const PageContext& context) {
    auto* form = new InspectorForm("Music", context.commit, context.parent);
    optionalEnumChoice<MusicHandoff>(
        *form, "Takes over music", fixedChoices({{"", "Automatic"}, {"crossfade", "Crossfade"}, {"cut", "Cut"}}),
        [](const Cue& cue) { return cue.musicHandoff; },
        [](Cue& cue, std::optional<MusicHandoff> handoff) { cue.musicHandoff = handoff; });
    form->choice(
        "Sound output",
        // The computer's outputs as Settings lists them; a chosen one that
        // is gone stays listed, so the cue's choice is seen, not lost.
        [&model = context.model](const Show&, const Cue& cue) {
            ChoiceItems items{{"The bus's output", ""}};
            for (const AudioDevice& device : model.soundOutputs())
                items.emplace_back(QString::fromStdString(device.name) + (device.isDefault ? " (system default)" : ""),
                                   QString::fromStdString(device.id));
            const QString chosen = QString::fromStdString(cue.audioDeviceID.value_or(""));
            if (!chosen.isEmpty() && std::ranges::none_of(items, [&](const auto& item) { return item.second == chosen; }))
                items.emplace_back(chosen + " (not connected)", chosen);
            return items;
        },
        [](const Cue& cue) { return QString::fromStdString(cue.audioDeviceID.value_or("")); },
        [](Cue& cue, const QString& id) {
            cue.audioDeviceID = id.isEmpty() ? std::nullopt : std::optional(id.toStdString());
        });
    return form;
}

} // namespace velarion::console
