#pragma once
// A private PulseAudio server for sound tests: three null sinks, "Speakers"
// (the default output), "House" and "Headphones", whose monitors can be
// recorded to prove what was heard where. While it lives, PULSE_SERVER
// points this process at it, so pulsesink and the device monitor use it.
//
// `start` answers null with the reason when no server can run here; a test
// then skips with that reason rather than passing. For tests and
// benchmarks only; one server at a time per process.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velarion::testing {

class PrivateSoundServer {
public:
    static constexpr int sampleRate = 44100;

    static std::unique_ptr<PrivateSoundServer> start(std::string& whyNot);
    ~PrivateSoundServer();
    PrivateSoundServer(const PrivateSoundServer&) = delete;
    PrivateSoundServer& operator=(const PrivateSoundServer&) = delete;

    // Runs `pactl` against this server; true when it succeeded.
    bool pactl(const std::vector<std::string>& arguments) const;
    bool removeSink(const std::string& name) const;
    // Puts back a sink taken away; it is not the default.
    bool addSink(const std::string& name);
    // Kills the server, as a crash does (every stream and recording ends),
    // and starts it again as it was; true when it runs again.
    bool crashAndRestart();

    // Records a sink's monitor, stereo 16-bit at `sampleRate`, until `stop`.
    class Recording {
    public:
        ~Recording();
        Recording(const Recording&) = delete;
        Recording& operator=(const Recording&) = delete;
        // Interleaved stereo samples, as floats from -1 to 1.
        std::vector<float> stop();

    private:
        friend class PrivateSoundServer;
        Recording(pid_t process, std::filesystem::path file) : process_(process), file_(std::move(file)) {}
        pid_t process_;
        std::filesystem::path file_;
    };
    std::unique_ptr<Recording> record(const std::string& sink) const;

    const std::filesystem::path& folder() const { return folder_; }

private:
    PrivateSoundServer() = default;
    std::string address() const;
    bool launch(std::string& whyNot);
    bool keepSinksAwake(const std::vector<std::string>& sinks);

    std::filesystem::path folder_;
    pid_t server_ = -1;
    std::vector<pid_t> keepers_;
    mutable int recordings_ = 0;
};

} // namespace velarion::testing
