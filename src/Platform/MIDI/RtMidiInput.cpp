#include "Platform/MIDI/RtMidiInput.h"

#include "Live/ports/MIDIInbox.h"

#include <RtMidi.h>
#include <jack/jack.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <map>
#include <mutex>
#include <regex>
#include <thread>
#include <unistd.h>

namespace velarion {

namespace {

const std::string portName = "Velarion input";

std::string notAvailableYet(int status) {
    return "MIDI isn't available yet (error " + std::to_string(status) + "). Trying again…";
}
std::string couldNotOpenYet(int status) {
    return "MIDI input couldn't open yet (error " + std::to_string(status) + "). Trying again…";
}
const std::string gaveUp = "MIDI isn't available on this computer right now. Restart Velarion to try again.";

void quiet(const char*) {}

// Whether a JACK server answers, without starting one and without the
// library's complaints on standard error. Zero when it does, else JACK's
// status bits.
int jackStatus() {
    static std::once_flag silenced;
    std::call_once(silenced, [] {
        jack_set_error_function(quiet);
        jack_set_info_function(quiet);
    });
    jack_status_t status{};
    jack_client_t* client = jack_client_open("Velarion probe", JackNoStartServer, &status);
    if (!client) return status != 0 ? static_cast<int>(status) : -1;
    jack_client_close(client);
    return 0;
}

// Zero when the ALSA sequencer can be opened, else the errno.
int alsaStatus() { return ::access("/dev/snd/seq", R_OK | W_OK) == 0 ? 0 : errno; }

// RtMidi reports through this instead of standard error and exceptions;
// the last report stays for the caller to read.
struct ErrorNote {
    std::optional<RtMidiError::Type> type;
    static void record(RtMidiError::Type type, const std::string&, void* user) {
        if (type != RtMidiError::WARNING && type != RtMidiError::DEBUG_WARNING)
            static_cast<ErrorNote*>(user)->type = type;
    }
};

} // namespace

// Main-thread side of one start; posted reports find the input through it
// and are dropped once it is gone.
struct RtMidiInput::Session {
    RtMidiInput* owner;
    std::shared_ptr<MIDIInbox> inbox;
};

class RtMidiInput::Scanner {
public:
    Scanner(Scheduler& scheduler, Options options, std::weak_ptr<Session> session, std::shared_ptr<MIDIInbox> inbox)
        : scheduler_(scheduler), options_(std::move(options)), session_(std::move(session)),
          inbox_(std::move(inbox)), thread_([this] { run(); }) {}

    ~Scanner() {
        {
            std::lock_guard guard(lock_);
            stopping_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }

private:
    struct Source {
        // The driver's callback reads these: declared before the port, so
        // they outlive it.
        std::uint32_t id = 0;
        std::shared_ptr<MIDIInbox> inbox;
        ErrorNote errors;
        std::unique_ptr<RtMidiIn> port;
    };

    static void received(double, std::vector<unsigned char>* bytes, void* user) {
        const auto* source = static_cast<const Source*>(user);
        if (bytes && !bytes->empty()) source->inbox->receive(*bytes, source->id);
    }

    void run() {
        int retries = 0;
        for (;;) {
            if (!lister_ && retries <= options_.maxRetries) {
                if (openLister()) {
                    report(std::nullopt);
                } else if (++retries > options_.maxRetries) {
                    report(gaveUp);
                } else {
                    report(notAvailableYet(status_));
                }
            }
            if (lister_) rescan();
            std::unique_lock guard(lock_);
            if (wake_.wait_for(guard, std::chrono::duration<double>(options_.rescanSeconds), [this] { return stopping_; }))
                break;
        }
        sources_.clear(); // closes every port on this thread
        lister_.reset();
    }

    RtMidi::Api api() {
        switch (options_.backend) {
        case Backend::jack: return RtMidi::UNIX_JACK;
        case Backend::alsa: return RtMidi::LINUX_ALSA;
        case Backend::automatic: break;
        }
        return jackStatus() == 0 ? RtMidi::UNIX_JACK : RtMidi::LINUX_ALSA;
    }

    bool openLister() {
        api_ = api();
        status_ = api_ == RtMidi::UNIX_JACK ? jackStatus() : alsaStatus();
        if (status_ != 0) return false;
        try {
            lister_ = std::make_unique<RtMidiIn>(api_, options_.clientName);
            lister_->setErrorCallback(&ErrorNote::record, &listerErrors_);
            return true;
        } catch (const RtMidiError& error) {
            status_ = static_cast<int>(error.getType());
            return false;
        }
    }

    void rescan() {
        std::vector<std::string> names;
        const unsigned count = lister_->getPortCount();
        for (unsigned i = 0; i < count; ++i)
            if (auto name = lister_->getPortName(i); !name.empty()) names.push_back(std::move(name));

        bool changed = false;
        for (auto it = sources_.begin(); it != sources_.end();) {
            if (std::find(names.begin(), names.end(), it->first) == names.end()) {
                it = sources_.erase(it); // gone: closed quietly
                changed = true;
            } else {
                ++it;
            }
        }
        std::optional<std::string> failure;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (sources_.contains(names[i])) continue;
            if (auto source = open(static_cast<unsigned>(i), names[i], failure)) {
                sources_.emplace(names[i], std::move(source));
                changed = true;
            }
        }
        if (changed || failure != lastFailure_) {
            std::vector<MIDISourceInfo> infos;
            for (const auto& [name, source] : sources_) infos.push_back({source->id, displayName(name)});
            post([infos = std::move(infos), failure](RtMidiInput& input) {
                input.setSources(infos);
                input.setError(failure);
            });
            lastFailure_ = failure;
        }
    }

    std::unique_ptr<Source> open(unsigned index, const std::string& name, std::optional<std::string>& failure) {
        auto source = std::make_unique<Source>();
        source->id = sourceID(name);
        source->inbox = inbox_;
        try {
            source->port = std::make_unique<RtMidiIn>(api_, options_.clientName);
            source->port->setErrorCallback(&ErrorNote::record, &source->errors);
            // SysEx comes through, for the parser to skip whatever follows
            // it; clock and active sensing are left out at the driver.
            source->port->ignoreTypes(false, true, true);
            source->port->setCallback(&received, source.get());
            // The list may have moved since it was read: open by name.
            if (source->port->getPortName(index) != name) {
                const unsigned count = source->port->getPortCount();
                index = count;
                for (unsigned i = 0; i < count; ++i)
                    if (source->port->getPortName(i) == name) index = i;
                if (index == count) return nullptr; // gone meanwhile
            }
            source->port->openPort(index, portName);
            if (!source->port->isPortOpen()) {
                failure = couldNotOpenYet(static_cast<int>(source->errors.type.value_or(RtMidiError::DRIVER_ERROR)));
                return nullptr;
            }
        } catch (const RtMidiError& error) {
            failure = couldNotOpenYet(static_cast<int>(error.getType()));
            return nullptr;
        }
        return source;
    }

    void report(const std::optional<std::string>& error) {
        post([error](RtMidiInput& input) { input.setError(error); });
    }

    void post(std::function<void(RtMidiInput&)> change) {
        scheduler_.post([session = session_, change = std::move(change)] {
            if (auto live = session.lock()) change(*live->owner);
        });
    }

    Scheduler& scheduler_;
    const Options options_;
    const std::weak_ptr<Session> session_;
    const std::shared_ptr<MIDIInbox> inbox_;

    // The scanning thread's own.
    RtMidi::Api api_ = RtMidi::UNSPECIFIED;
    int status_ = 0;
    ErrorNote listerErrors_;
    std::unique_ptr<RtMidiIn> lister_;
    std::map<std::string, std::unique_ptr<Source>> sources_;
    std::optional<std::string> lastFailure_;

    std::mutex lock_;
    std::condition_variable wake_;
    bool stopping_ = false;
    std::thread thread_; // last: starts once everything above exists
};

RtMidiInput::RtMidiInput(Scheduler& scheduler) : RtMidiInput(scheduler, Options{}) {}

RtMidiInput::RtMidiInput(Scheduler& scheduler, Options options)
    : scheduler_(scheduler), options_(std::move(options)) {}

RtMidiInput::~RtMidiInput() { stop(); }

void RtMidiInput::start() {
    if (session_) return;
    session_ = std::make_shared<Session>();
    session_->owner = this;
    session_->inbox = MIDIInbox::make(
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
    scanner_ = std::make_unique<Scanner>(scheduler_, options_, session_, session_->inbox);
}

void RtMidiInput::stop() {
    if (!session_) return;
    session_->inbox->close();
    session_.reset();
    scanner_.reset();
    sources_.clear();
    lastError_.reset();
}

void RtMidiInput::setSources(std::vector<MIDISourceInfo> sources) {
    if (sources == sources_) return;
    sources_ = std::move(sources);
    if (onSourcesChange) onSourcesChange();
}

void RtMidiInput::setError(std::optional<std::string> error) {
    if (error == lastError_) return;
    lastError_ = std::move(error);
    if (onStatusChange) onStatusChange();
}

std::uint32_t RtMidiInput::sourceID(const std::string& portName) {
    std::uint32_t hash = 2166136261u; // FNV-1a
    for (unsigned char c : portName) hash = (hash ^ c) * 16777619u;
    return hash;
}

std::string RtMidiInput::displayName(const std::string& portName) {
    static const std::regex alsaNumbers(R"( \d+:\d+$)");
    return std::regex_replace(portName, alsaNumbers, "");
}

} // namespace velarion
