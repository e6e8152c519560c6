#include "Live/ports/ManualMIDIInput.h"

#include <algorithm>

namespace velarion {

void ManualMIDIInput::start() {
    if (inbox_) return;
    ++startCount_;
    inbox_ = MIDIInbox::make(
        scheduler_,
        [this](const MIDIMessage& message, std::uint32_t sourceID) {
            std::optional<MIDISourceInfo> source;
            for (const MIDISourceInfo& info : sources_)
                if (info.id == sourceID) source = info;
            if (onMessage) onMessage(message, source);
        },
        [this] {
            if (onNotice) onNotice(std::string(MIDIInbox::floodNotice));
        });
}

void ManualMIDIInput::stop() {
    if (!inbox_) return;
    inbox_->close();
    inbox_.reset();
}

void ManualMIDIInput::send(std::span<const std::uint8_t> bytes, std::uint32_t sourceID) {
    if (inbox_) inbox_->receive(bytes, sourceID);
}

void ManualMIDIInput::plug(MIDISourceInfo source) {
    sources_.push_back(std::move(source));
    if (onSourcesChange) onSourcesChange();
}

void ManualMIDIInput::unplug(std::uint32_t sourceID) {
    std::erase_if(sources_, [&](const MIDISourceInfo& info) { return info.id == sourceID; });
    if (onSourcesChange) onSourcesChange();
}

void ManualMIDIInput::setLastError(std::optional<std::string> error) {
    lastError_ = std::move(error);
    if (onStatusChange) onStatusChange();
}

} // namespace velarion
