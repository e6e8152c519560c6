#pragma once
// MIDIControlCenter: joins a MIDIInput, the matcher and the engine. Bound
// buttons run their actions as engine commands; Learn binds the next button
// pressed; the settings are handed to `save` at each change, to be kept
// with the computer's preferences. It also holds the MIDI status the
// console and the Ready check read: sources, the last message heard, the
// last error.
//
// Contract.
// - Main thread only. The scheduler must outlive the center; the input it
//   makes is owned by it and stopped on `stop` and on destruction.
// - Hooks are optional; one left empty does nothing (`isAnythingPlaying`
//   then answers false). They are called on the main thread, never from
//   inside the input's driver.
// - `onChange` runs after observable state changed, at most once per turn
//   of the main loop however many messages arrived.

#include "Live/ports/MIDIInput.h"
#include "LiveEngine/EngineCommand.h"
#include "LiveEngine/ports/Scheduler.h"
#include "LiveModel/MIDIControl.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velarion {

struct MIDIHeard {
    std::string message;
    double wallSeconds = 0; // calendar time, Unix seconds
    friend bool operator==(const MIDIHeard&, const MIDIHeard&) = default;
};

class MIDIControlCenter {
public:
    using MakeInput = std::function<std::unique_ptr<MIDIInput>()>;

    // The label of an action's button while it waits for a press.
    static constexpr std::string_view learningLabel = "Press a button…";

    MIDIControlCenter(Scheduler& scheduler, MIDISettings settings, MakeInput makeInput);
    ~MIDIControlCenter();
    MIDIControlCenter(const MIDIControlCenter&) = delete;
    MIDIControlCenter& operator=(const MIDIControlCenter&) = delete;

    // Hooks.
    std::function<void(const EngineCommand&)> perform;
    std::function<bool()> isAnythingPlaying;
    std::function<void(const MIDISettings&)> save;
    std::function<void(const std::string&)> note;
    std::function<void()> onChange;

    // Observable state.
    const MIDISettings& settings() const { return settings_; }
    const std::optional<MIDIAction>& learning() const { return learning_; }
    const std::vector<MIDISourceInfo>& sources() const { return sources_; }
    const std::optional<MIDIHeard>& lastHeard() const { return lastHeard_; }
    const std::optional<std::string>& lastError() const { return lastError_; }
    bool isListening() const { return input_ != nullptr; }

    // Makes and starts the input unless there is one.
    void start();
    // Stops and drops the input.
    void stop();
    // Stores, saves, and starts or stops the input.
    void setEnabled(bool enabled);
    // The next button pressed is bound to `action`; none cancels.
    void learn(std::optional<MIDIAction> action);
    void unbind(MIDIAction action);

    void receive(const MIDIMessage& message, const std::optional<MIDISourceInfo>& source);

    // The message as "last heard" shows it, with " from " and the source.
    static std::string describe(const MIDIMessage& message, const std::optional<MIDISourceInfo>& source);
    // The command an action runs now.
    EngineCommand commandFor(MIDIAction action) const;

private:
    void changed();
    void saveSettings();

    Scheduler& scheduler_;
    MIDISettings settings_;
    MakeInput makeInput_;
    MIDIMatcher matcher_;
    std::unique_ptr<MIDIInput> input_;
    std::optional<MIDIAction> learning_;
    std::vector<MIDISourceInfo> sources_;
    std::optional<MIDIHeard> lastHeard_;
    std::optional<std::string> lastError_;
    bool notifyPosted_ = false;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

} // namespace velarion
