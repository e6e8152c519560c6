#include "Live/MIDIControlCenter.h"

namespace velarion {

MIDIControlCenter::MIDIControlCenter(Scheduler& scheduler, MIDISettings settings, MakeInput makeInput)
    : scheduler_(scheduler), settings_(std::move(settings)), makeInput_(std::move(makeInput)) {}

MIDIControlCenter::~MIDIControlCenter() {
    if (input_) input_->stop();
}

void MIDIControlCenter::changed() {
    if (notifyPosted_) return;
    notifyPosted_ = true;
    scheduler_.post([this, alive = std::weak_ptr<int>(life_)] {
        if (alive.expired()) return;
        notifyPosted_ = false;
        if (onChange) onChange();
    });
}

void MIDIControlCenter::saveSettings() {
    if (save) save(settings_);
}

void MIDIControlCenter::start() {
    if (input_ || !makeInput_) return;
    input_ = makeInput_();
    if (!input_) return;
    MIDIInput& input = *input_;
    input.onMessage = [this](const MIDIMessage& message, const std::optional<MIDISourceInfo>& source) {
        receive(message, source);
    };
    input.onSourcesChange = [this, &input] {
        sources_ = input.sources();
        changed();
    };
    input.onStatusChange = [this, &input] {
        lastError_ = input.lastError();
        changed();
    };
    input.onNotice = [this](const std::string& text) {
        if (note) note(text);
    };
    input.start();
    sources_ = input.sources();
    lastError_ = input.lastError();
    changed();
}

void MIDIControlCenter::stop() {
    if (!input_) return;
    input_->stop();
    input_.reset();
    sources_.clear();
    lastError_.reset();
    changed();
}

void MIDIControlCenter::setEnabled(bool enabled) {
    settings_.isEnabled = enabled;
    saveSettings();
    if (enabled) start();
    else stop();
    changed();
}

void MIDIControlCenter::learn(std::optional<MIDIAction> action) {
    learning_ = action;
    changed();
}

void MIDIControlCenter::unbind(MIDIAction action) {
    settings_.unbind(action);
    saveSettings();
    changed();
}

std::string MIDIControlCenter::describe(const MIDIMessage& message, const std::optional<MIDISourceInfo>& source) {
    std::string text = midiMessage::description(message);
    if (source && !source->name.empty()) text += " from " + source->name;
    return text;
}

EngineCommand MIDIControlCenter::commandFor(MIDIAction action) const {
    switch (action) {
    case MIDIAction::go: return command::Go{};
    case MIDIAction::stopAll: return command::Clear{ClearTarget::everything, 1.0};
    case MIDIAction::panic: return command::Panic{};
    case MIDIAction::pauseResume:
        if (isAnythingPlaying && isAnythingPlaying()) return command::PauseAll{};
        return command::ResumeAll{};
    }
    return command::Go{};
}

void MIDIControlCenter::receive(const MIDIMessage& message, const std::optional<MIDISourceInfo>& source) {
    if (!std::holds_alternative<midi::NoteOff>(message)) {
        lastHeard_ = MIDIHeard{describe(message, source), scheduler_.wallNow()};
        changed();
    }

    if (learning_) {
        std::optional<MIDITrigger> trigger = MIDIMatcher::learnableTrigger(message);
        // A controller let go is no press; the matcher still sees it to stay in step.
        if (const auto* change = std::get_if<midi::ControlChange>(&message);
            change && change->value < midiMessage::controllerThreshold) {
            matcher_.actions(message, settings_);
            trigger.reset();
        }
        if (!trigger) return;
        // This very press must not count as a new edge later.
        matcher_.actions(message, settings_);
        const MIDIAction action = *learning_;
        settings_.bind(action, *trigger);
        learning_.reset();
        saveSettings();
        if (note) note(std::string(midiAction::name(action)) + " is now " + midiTrigger::description(*trigger));
        changed();
        return;
    }

    for (MIDIAction action : matcher_.actions(message, settings_))
        if (perform) perform(commandFor(action));
}

} // namespace velarion
