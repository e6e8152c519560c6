#pragma once
// A list of sound outputs that a test sets by hand; `change` replaces it
// and runs the change callback at once, as the real list would on the main
// loop after the sound server told it. Test thread only.

#include "LiveEngine/ports/AudioDevices.h"

namespace velarion::testing {

class FakeAudioDevices final : public AudioDevices {
public:
    explicit FakeAudioDevices(std::vector<AudioDevice> outputs = {}) : outputs_(std::move(outputs)) {}

    std::vector<AudioDevice> outputs() const override { return outputs_; }
    void setOnChange(std::function<void()> onChange) override { onChange_ = std::move(onChange); }

    void change(std::vector<AudioDevice> outputs) {
        outputs_ = std::move(outputs);
        if (onChange_) onChange_();
    }

private:
    std::vector<AudioDevice> outputs_;
    std::function<void()> onChange_;
};

} // namespace velarion::testing
