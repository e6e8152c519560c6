#include "LiveEngine/ReadyCheck.h"

#include "LiveEngine/ReadyCheckWords.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace velarion {

using namespace readyWords;

std::string_view heading(ReadyGroup group) {
    constexpr std::string_view headings[] = {"Screens", "Sound", "Music", "Slides & media", "Schedule", "Control"};
    return headings[static_cast<std::size_t>(group)];
}

namespace {

const std::string testWindowID(OutputSetup::testWindowID);

std::optional<std::string> destinationKey(const LogicalScreen& screen) {
    if (const auto* display = std::get_if<destination::Display>(&screen.destination)) return display->id;
    if (const auto* feed = std::get_if<destination::Ndi>(&screen.destination)) return feed->feedID.text();
    return std::nullopt;
}

bool isDisplay(const LogicalScreen& screen) { return std::holds_alternative<destination::Display>(screen.destination); }
bool isTestWindow(const LogicalScreen& screen) { return destinationKey(screen) == testWindowID; }

// A screen's row: by destination and name, or by destination alone when the
// manager names rows differently.
const OutputHealth* rowFor(const LogicalScreen& screen, const std::vector<OutputHealth>& health) {
    const std::optional<std::string> key = destinationKey(screen);
    if (!key) return nullptr;
    const OutputHealth* byKey = nullptr;
    for (const OutputHealth& row : health) {
        if (row.destinationID != key) continue;
        if (row.name == screen.name) return &row;
        if (byKey == nullptr) byKey = &row;
    }
    return byKey;
}

std::optional<OutputHealth> feedRow(const NetworkFeed& feed, const std::vector<OutputHealth>& health) {
    const std::string key = feed.id.text();
    for (const OutputHealth& row : health) {
        if (row.role == OutputHealth::Role::feed && row.destinationID == key) return row;
    }
    return std::nullopt;
}

bool isConnected(const OutputHealth* row) { return row != nullptr && row->isConnected; }

std::string formatted(const char* format, double value) {
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

ReadyItem screensItem(ReadyStatus status, std::string title, std::string detail) {
    ReadyItem item{ReadyGroup::screens, status, std::move(title), std::move(detail)};
    if (status == ReadyStatus::attention) addFix(item, readyFix::OpenOutputs{}, "Screens");
    return item;
}

} // namespace

std::optional<ReadyItem> ReadyCheck::audienceSetupItem(const OutputSetup& setup) {
    const std::vector<LogicalScreen> screens = setup.effectiveScreens();
    if (setup.usesLogicalScreens && !screens.empty() &&
        std::all_of(screens.begin(), screens.end(), [](const LogicalScreen& screen) {
            return std::holds_alternative<destination::Placeholder>(screen.destination);
        })) {
        return screensItem(ReadyStatus::attention, "No audience output connected",
                           "Named screens keep their looks, but need a display or NDI connection to send a picture.");
    }
    bool hasDisplay = false;
    bool hasTestWindow = false;
    for (const LogicalScreen& screen : screens) {
        if (screen.role == ScreenRole::stage || !isDisplay(screen)) continue;
        (isTestWindow(screen) ? hasTestWindow : hasDisplay) = true;
    }
    if (hasDisplay) return std::nullopt;
    const std::size_t feeds = setup.effectiveFeeds().size();
    if (hasTestWindow) {
        return screensItem(ReadyStatus::optional, "No audience screen chosen",
                           feeds > 0 ? "A test window is enabled on this computer, alongside the configured NDI "
                                       "network feeds."
                                     : "The audience output is a test window on this computer.");
    }
    if (feeds > 0) {
        return screensItem(ReadyStatus::optional, "Network outputs only",
                           counted(feeds, "NDI network feed is", "NDI network feeds are") +
                               " configured. No audience screen or test window is enabled.");
    }
    return screensItem(ReadyStatus::attention, "No audience output configured",
                       "Choose an audience screen, enable the test window, or add an NDI network feed.");
}

ReadyItem ReadyCheck::feedItem(const NetworkFeed& feed, const std::optional<OutputHealth>& health) {
    const std::optional<NDISenderStatus> sender = health ? health->sender : std::nullopt;
    if (!sender || !sender->isSending) {
        std::string detail = "NDI · not sending.";
        if (health && health->detail && !health->detail->empty()) detail += " " + *health->detail;
        return screensItem(ReadyStatus::attention, feed.name, detail);
    }
    std::string detail = "NDI";
    if (sender->connections == 0) {
        detail += " · sending, but no receiver is connected yet.";
    } else {
        detail += " · " + counted(sender->connections, "receiver", "receivers");
        detail += " · " + formatted("%.1f", sender->framesPerSecond) + " fps";
        detail += sender->droppedVideoFrames == 0 ? " · no dropped frames"
                                                  : " · " + std::to_string(sender->droppedVideoFrames) + " dropped";
    }
    if (feed.sendsSound.value_or(false)) {
        detail += " · video sound: " + std::to_string(sender->audioFrames) + " blocks sent";
    }
    return {ReadyGroup::screens, ReadyStatus::ready, feed.name, detail};
}

std::vector<ReadyItem> ReadyCheck::screenItems(const OutputSetup& setup, const std::vector<OutputHealth>& health,
                                               const std::optional<std::string>& mainDisplayID) {
    std::vector<ReadyItem> items;
    const std::vector<LogicalScreen> screens = setup.effectiveScreens();

    for (const LogicalScreen& screen : screens) {
        if (screen.role == ScreenRole::stage || !isDisplay(screen)) continue;
        const OutputHealth* row = rowFor(screen, health);
        if (isTestWindow(screen)) {
            // A closed test window is reported with the outputs that show nothing.
            if (isConnected(row)) items.push_back(screensItem(ReadyStatus::ready, screen.name, "Test window"));
        } else if (isConnected(row)) {
            std::string detail = "Connected";
            if (destinationKey(screen) == mainDisplayID) detail += " · covers the menu bar";
            items.push_back(screensItem(ReadyStatus::ready, screen.name, detail));
        } else {
            items.push_back(screensItem(ReadyStatus::attention, "Audience screen not connected",
                                        screen.name + " · Plug it in, or choose another screen."));
        }
    }

    const auto stage = std::find_if(screens.begin(), screens.end(), [](const LogicalScreen& screen) {
        return screen.role == ScreenRole::stage && isDisplay(screen);
    });
    if (stage == screens.end()) {
        items.push_back(screensItem(ReadyStatus::optional, "No Stage Display",
                                    "Optional · shows the speaker slides, notes, and time."));
    } else if (isConnected(rowFor(*stage, health))) {
        items.push_back(screensItem(ReadyStatus::ready, "Stage Display", stage->name));
    } else {
        items.push_back(screensItem(ReadyStatus::attention, "Stage Display not connected",
                                    "The speaker's screen is missing."));
    }

    for (const NetworkFeed& feed : setup.effectiveFeeds()) items.push_back(feedItem(feed, feedRow(feed, health)));

    if (!setup.usesLogicalScreens) return items;
    for (const LogicalScreen& screen : screens) {
        if (std::holds_alternative<destination::Placeholder>(screen.destination)) {
            items.push_back(screensItem(ReadyStatus::optional, screen.name,
                                        "Placeholder · preview only. Choose a connection before using this screen."));
            continue;
        }
        const auto* ndi = std::get_if<destination::Ndi>(&screen.destination);
        if (ndi == nullptr) continue;
        const auto feed = std::find_if(setup.feeds.begin(), setup.feeds.end(),
                                       [&](const NetworkFeed& candidate) { return candidate.id == ndi->feedID; });
        if (feed == setup.feeds.end()) {
            items.push_back(screensItem(ReadyStatus::attention, screen.name, "The selected output is not connected."));
            continue;
        }
        const std::optional<OutputHealth> row = feedRow(*feed, health);
        if (row && row->sender && row->sender->isSending && row->sender->connections == 0) {
            items.push_back(
                screensItem(ReadyStatus::optional, screen.name, "NDI sender is active; no receiver is connected."));
        }
    }
    return items;
}

std::vector<ReadyItem> ReadyCheck::disconnectedOutputItems(const OutputSetup& setup,
                                                           const std::vector<OutputHealth>& health) {
    // Rows the screens lines spoke for already: audience displays, the
    // Stage Display they chose, and every feed.
    std::vector<const OutputHealth*> named;
    bool stageNamed = false;
    for (const LogicalScreen& screen : setup.effectiveScreens()) {
        if (!isDisplay(screen) || isTestWindow(screen)) continue;
        if (screen.role == ScreenRole::stage) {
            if (std::exchange(stageNamed, true)) continue;
        }
        named.push_back(rowFor(screen, health));
    }
    std::vector<ReadyItem> items;
    for (const OutputHealth& row : health) {
        if (row.isConnected || row.isPlaceholder || row.role == OutputHealth::Role::feed) continue;
        if (std::find(named.begin(), named.end(), &row) != named.end()) continue;
        ReadyItem item{ReadyGroup::control, ReadyStatus::attention, row.name + " isn't showing",
                       "It is disconnected. Check the Screens section."};
        addFix(item, readyFix::OpenOutputs{}, "Screens");
        items.push_back(std::move(item));
    }
    return items;
}

std::vector<ReadyItem> ReadyCheck::busItems(const Show& show, const std::vector<AudioDevice>& devices) {
    const auto named = [&](const std::string& id) -> const AudioDevice* {
        const auto found =
            std::find_if(devices.begin(), devices.end(), [&](const AudioDevice& device) { return device.id == id; });
        return found == devices.end() ? nullptr : &*found;
    };
    const auto soundItem = [](ReadyStatus status, std::string title, std::string detail) {
        ReadyItem item{ReadyGroup::sound, status, std::move(title), std::move(detail)};
        if (status == ReadyStatus::attention) addFix(item, readyFix::OpenAudio{}, "Sound settings");
        return item;
    };
    std::vector<ReadyItem> items;

    // No chosen device means the sound server's default, which is always there.
    const AudioSetup& audio = show.audio;
    const auto systemDefault =
        std::find_if(devices.begin(), devices.end(), [](const AudioDevice& device) { return device.isDefault; });
    const AudioDevice* house = audio.houseDeviceID ? named(*audio.houseDeviceID)
                                                   : (systemDefault == devices.end() ? nullptr : &*systemDefault);
    if (audio.houseDeviceID && house == nullptr) {
        items.push_back(soundItem(ReadyStatus::attention, "House output missing", "The chosen sound device isn't connected."));
    } else {
        items.push_back(soundItem(ReadyStatus::ready, "House", house != nullptr ? house->name : "System default"));
    }

    if (!audio.headphonesDeviceID) {
        const auto sendsToHeadphones = [](const Cue* cue) {
            if (!cue->isEnabled) return false;
            if (const auto* sound = std::get_if<AudioCue>(&cue->kind)) return sound->bus == AudioBus::headphones;
            if (const auto* list = std::get_if<PlaylistCue>(&cue->kind)) return list->bus == AudioBus::headphones;
            return false;
        };
        const std::vector<const Cue*> cues = show.allCues();
        if (std::any_of(cues.begin(), cues.end(), sendsToHeadphones)) {
            items.push_back(soundItem(ReadyStatus::attention, "Headphones not chosen",
                                      "Cues sent to Headphones will play through the house."));
        }
    } else if (const AudioDevice* headphones = named(*audio.headphonesDeviceID)) {
        items.push_back(soundItem(ReadyStatus::ready, "Headphones", headphones->name));
        if (house != nullptr && house->id == headphones->id) {
            items.push_back(soundItem(ReadyStatus::optional, "Audition plays in the room",
                                      "Headphones and House are the same output. Choose a separate Headphones "
                                      "output to listen privately."));
        }
    } else {
        items.push_back(soundItem(ReadyStatus::attention, "Headphones missing",
                                  "Cues sent to Headphones have nowhere to play."));
    }
    return items;
}

std::vector<ReadyItem> ReadyCheck::levelItems(bool isMuted, double masterLevel) {
    if (isMuted) {
        return {{ReadyGroup::sound, ReadyStatus::attention, "The house is muted",
                 "Nothing Velarion plays will be heard. Unmute under Music and Sound."}};
    }
    if (masterLevel < 0.25) {
        const long percent = std::lround(std::max(masterLevel, 0.0) * 100);
        return {{ReadyGroup::sound, ReadyStatus::attention, "House level is low",
                 "The house level is at " + std::to_string(percent) + "%. Raise it under Music and Sound."}};
    }
    return {};
}

std::vector<ReadyItem> ReadyCheck::overrideItems(const Show& show, const std::vector<std::string>& audioDeviceIDs) {
    const std::vector<std::string> destinations = show.outputs.visualDestinations();
    const auto configured = [&](const std::string& id) {
        return std::find(destinations.begin(), destinations.end(), id) != destinations.end();
    };
    std::vector<ReadyItem> items;
    const auto add = [&](const Cue& cue, const char* title, std::string detail) {
        ReadyItem item{ReadyGroup::sound, ReadyStatus::attention, cue.name + title, std::move(detail)};
        items.push_back(withFix(std::move(item), readyFix::EditCue{cue.id}, editCueLabel));
    };
    for (const Cue* cue : show.allCues()) {
        if (!cue->isEnabled) continue;
        if (const auto& ids = cue->visualOutputIDs) {
            if (ids->empty()) {
                add(*cue, " has no picture output", "No audience screen or network feed is selected for this cue.");
            } else if (!std::all_of(ids->begin(), ids->end(), configured)) {
                add(*cue, " picture output is missing",
                    "A chosen audience screen or network feed is no longer configured. Choose a current destination.");
            }
        }
        if (cue->audioDeviceID && std::find(audioDeviceIDs.begin(), audioDeviceIDs.end(), *cue->audioDeviceID) ==
                                      audioDeviceIDs.end()) {
            add(*cue, " sound output is missing",
                "This cue overrides the show sound settings with a device that is not connected.");
        }
    }
    return items;
}

std::vector<ReadyItem> ReadyCheck::evaluate(const Show& show, const ShowPackage* package, const AudioDevices& devices,
                                            const ReadyCheckInputs& inputs) {
    const std::vector<AudioDevice> outputs = devices.outputs();
    std::vector<std::string> deviceIDs;
    for (const AudioDevice& device : outputs) deviceIDs.push_back(device.id);
    const std::vector<const Cue*> cues = show.allCues();

    std::vector<ReadyItem> items;
    const auto append = [&](std::vector<ReadyItem> more) {
        items.insert(items.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    };
    if (std::optional<ReadyItem> audience = audienceSetupItem(show.outputs)) items.push_back(std::move(*audience));
    append(screenItems(show.outputs, inputs.outputs, inputs.mainDisplayID));
    append(busItems(show, outputs));
    append(levelItems(inputs.isMuted, inputs.masterLevel));
    append(overrideItems(show, deviceIDs));
    append(songClashItems(show));
    append(musicItems(cues, inputs.spotify, inputs.music));
    append(mediaItems(show, package));
    append(networkItems(cues, show, inputs.ndi));
    append(scheduleItems(show));
    append(cueGroupItems(show));
    items.push_back(keyboardItem());
    append(midiItems(inputs.midi));
    append(disconnectedOutputItems(show.outputs, inputs.outputs));
    return items;
}

} // namespace velarion
