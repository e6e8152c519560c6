#pragma once
// AudioDevices: the sound outputs of this computer, for choosing a bus's
// device and for noticing when one goes away or comes back.
//
// Contract.
// - Main thread only. `outputs` answers from the adapter's present list and
//   never blocks on the sound server.
// - An output's `id` is stable across restarts of the application and of the
//   sound server (the server's own name for it), so a show can keep it.
// - `setOnChange` registers the one callback run, on the main loop, after
//   the list changed; an empty function removes it. It never runs after the
//   adapter is destroyed.

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velarion {

struct AudioDevice {
    std::string id;
    std::string name;
    bool isDefault = false;
    friend bool operator==(const AudioDevice&, const AudioDevice&) = default;
};

class AudioDevices {
public:
    virtual ~AudioDevices() = default;

    virtual std::vector<AudioDevice> outputs() const = 0;
    virtual void setOnChange(std::function<void()> onChange) = 0;

    bool isPresent(const std::string& deviceUID) const;
    std::optional<std::string> name(const std::string& deviceUID) const;
};

} // namespace velarion
