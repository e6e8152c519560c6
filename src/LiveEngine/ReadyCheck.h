#pragma once
// ReadyCheck: the one pre-show list of what will go wrong, grouped by area,
// each line in plain words with, where it helps, a button to the fix.
//
// Contract.
// - Pure: the list depends only on what it is given. The two look-ups it
//   makes are the sound devices, through the AudioDevices port (main thread,
//   as that port requires), and whether the package's media files exist.
// - It never fails and changes nothing: what it can't look at becomes a line.
// - The parts are public so that a view can show one area alone; `evaluate`
//   joins them in the list's order.
//
// Thread: main thread, for the AudioDevices port; every other part is a pure
// function of values, any thread.

#include "LiveEngine/OutputHealth.h"
#include "LiveEngine/ReadyItem.h"
#include "LiveEngine/ports/AudioDevices.h"
#include "LiveModel/Show.h"
#include "LiveModel/ShowPackage.h"
#include "LiveModel/StreamApp.h"

#include <optional>
#include <string>
#include <vector>

namespace velarion {

// What is known of one music app on this computer.
struct ReadyMusicApp {
    enum class Presence { unknown, notInstalled, notRunning, running };
    std::string name; // the operator's name of the app: "Spotify"
    // `unknown` until something asked the computer; the check then says it
    // couldn't tell, rather than guess either way.
    Presence presence = Presence::unknown;
    friend bool operator==(const ReadyMusicApp&, const ReadyMusicApp&) = default;
};

// MIDI control as the check needs it: the learned buttons and the plugged-in
// controllers.
struct ReadyMIDI {
    bool isEnabled = false;
    // The operator's names of the actions that have a button, in the order
    // the settings list them: "GO", "Stop all" …
    std::vector<std::string> boundActions;
    std::vector<std::string> sources; // names of the MIDI inputs present
    friend bool operator==(const ReadyMIDI&, const ReadyMIDI&) = default;
};

// Whether the NDI runtime could be used, and its own words when not.
struct ReadyNDIRuntime {
    bool isAvailable = false;
    std::string message;
    friend bool operator==(const ReadyNDIRuntime&, const ReadyNDIRuntime&) = default;
};

// Everything beyond the show, its package and the sound devices. Each part
// is filled by the application from the component that knows it; the
// defaults are what is true when that component isn't there at all.
struct ReadyCheckInputs {
    std::vector<OutputHealth> outputs; // the output manager's rows: screens, then feeds
    std::optional<std::string> mainDisplayID; // the display that holds the menu bar
    ReadyMusicApp spotify{"Spotify"};
    ReadyMusicApp music{"Apple Music"};
    ReadyMIDI midi;
    ReadyNDIRuntime ndi;
    bool isMuted = false;
    double masterLevel = 1;
};

class ReadyCheck {
public:
    // The whole list: screens, sound, music, slides and media, schedule,
    // control. `package` may be null (nothing on disk to look at yet).
    static std::vector<ReadyItem> evaluate(const Show& show, const ShowPackage* package,
                                           const AudioDevices& devices, const ReadyCheckInputs& inputs);

    // ---- Screens ----
    // The audience output as a whole; none when audience displays are set.
    static std::optional<ReadyItem> audienceSetupItem(const OutputSetup& setup);
    // Audience screens, the Stage Display, every feed, and screens on a
    // placeholder or a destination that has gone.
    static std::vector<ReadyItem> screenItems(const OutputSetup& setup, const std::vector<OutputHealth>& health,
                                              const std::optional<std::string>& mainDisplayID);
    // One network feed; `health` is its row, none when the feed has no sender.
    static ReadyItem feedItem(const NetworkFeed& feed, const std::optional<OutputHealth>& health);

    // ---- Sound ----
    static std::vector<ReadyItem> busItems(const Show& show, const std::vector<AudioDevice>& devices);
    static std::vector<ReadyItem> levelItems(bool isMuted, double masterLevel);
    // Cues that override the show's picture or sound destinations.
    static std::vector<ReadyItem> overrideItems(const Show& show, const std::vector<std::string>& audioDeviceIDs);

    // ---- Music ----
    static std::vector<ReadyItem> songClashItems(const Show& show);
    static std::vector<ReadyItem> musicItems(const std::vector<const Cue*>& cues, const ReadyMusicApp& spotify,
                                             const ReadyMusicApp& music);
    // Why a music-app cue can't start its song, in the operator's words;
    // none when its reference is usable or the cue isn't a music-app cue.
    static std::optional<std::string> musicConfigurationIssue(const Cue& cue);

    // ---- Slides and media ----
    static std::vector<ReadyItem> mediaItems(const Show& show, const ShowPackage* package);
    static std::vector<ReadyItem> networkItems(const std::vector<const Cue*>& cues, const Show& show,
                                               const ReadyNDIRuntime& runtime);

    // ---- Schedule ----
    static std::vector<ReadyItem> scheduleItems(const Show& show);

    // ---- Control ----
    static std::vector<ReadyItem> cueGroupItems(const Show& show);
    static ReadyItem keyboardItem();
    static std::vector<ReadyItem> midiItems(const ReadyMIDI& midi);
    // Outputs that are on but show nothing, and no other line named.
    static std::vector<ReadyItem> disconnectedOutputItems(const OutputSetup& setup,
                                                          const std::vector<OutputHealth>& health);
};

} // namespace velarion
