#pragma once
// The show document: the one persisted description of an event. A plain
// value; every change makes a new one. Sections, cues and library items sit in
// SharedList<>s so that copies (undo snapshots, the engine's copy) share
// whatever they didn't change.
//
// Thread: a Show may be read on any thread; it has no identity of its own.

#include "LiveModel/Cue.h"
#include "LiveModel/CueGroup.h"
#include "LiveModel/MediaItem.h"
#include "LiveModel/OutputSetup.h"
#include "LiveModel/SharedList.h"
#include "Identity/Uuid.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velarion {

struct Section {
    Uuid id;
    std::string title;
    std::optional<int> plannedStart;   // minute of the day
    std::optional<int> plannedMinutes; // planned length
    SharedList<Cue> cues;
    friend bool operator==(const Section&, const Section&) = default;
};

struct AudioSetup {
    std::optional<std::string> houseDeviceID;
    std::optional<std::string> headphonesDeviceID;
    double houseLevel = 1;
    std::optional<bool> newSoundFadesOld;
    friend bool operator==(const AudioSetup&, const AudioSetup&) = default;
};

// The safe slide.
struct HoldingScreen {
    std::optional<Uuid> mediaID;
    std::string title;
    std::string subtitle;
    friend bool operator==(const HoldingScreen&, const HoldingScreen&) = default;
};

struct CueLocation {
    std::size_t section = 0;
    std::size_t index = 0;
    friend bool operator==(const CueLocation&, const CueLocation&) = default;
};

// Two cues of one music app that would start together; the later one
// takes the app over from the earlier.
struct SongClash {
    const Cue* earlier = nullptr;
    const Cue* later = nullptr;
    friend bool operator==(const SongClash&, const SongClash&) = default;
};

struct Show {
    static constexpr int currentFormatVersion = 1;
    static constexpr double defaultSlideDissolveSeconds = 0.15;

    int formatVersion = currentFormatVersion;
    Uuid id;
    std::string title;
    std::string subtitle;
    SharedList<Section> sections;
    SharedList<MediaItem> library;
    OutputSetup outputs;
    AudioSetup audio;
    HoldingScreen holding;
    std::optional<double> slideDissolve;
    std::optional<std::vector<CueGroup>> cueGroups;

    // Every cue of every section, in order. The pointers stay valid while
    // this Show (or a copy sharing its sections) lives unchanged.
    std::vector<const Cue*> allCues() const;
    const Cue* cue(const Uuid& id) const;
    const MediaItem* media(const Uuid& id) const;
    std::optional<CueLocation> location(const Uuid& cueID) const;
    // 1-based position in allCues; cues are shown numbered by it.
    std::optional<int> number(const Uuid& cueID) const;

    double effectiveSlideDissolve() const;
    // The screens a cue's picture goes to; no value means every screen.
    std::optional<std::set<std::string>> visualOutputs(const Cue& cue) const;
    // The first playable cue can never follow anything.
    Follow effectiveFollow(const Cue& cue) const;
    std::optional<SoundRole> soundRole(const Cue& cue) const;
    // The same, with the audio cue's library item already looked up (null
    // when it is gone), for callers that keep their own index.
    static std::optional<SoundRole> soundRole(const Cue& cue, const MediaItem* audioItem);
    // Whether the cue, as a step of a playback group, ends by itself.
    bool groupCueHasEnd(const Cue& cue) const;
    // Enabled cues of the same music app that one GO would start together,
    // because With Previous joins them (inside a playback group as well, where
    // With Previous makes one step). Each pair is the earlier and the later
    // of two neighbours of one app in such a bundle: three clashing cues give
    // two pairs. After Previous waits for an end, so it never clashes.
    // Pointers as allCues().
    std::vector<SongClash> songClashes() const;
    // Gives generated library names a readable one; true if any changed.
    bool nameMachineNamedMedia();

    friend bool operator==(const Show&, const Show&) = default;
};

} // namespace velarion
