#include "PrivateSoundServer.h"

#include "ChildProcess.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <utility>

namespace velarion::testing {

namespace {

std::string nullSinkArguments(const std::string& name) {
    return "sink_name=" + name + " rate=" + std::to_string(PrivateSoundServer::sampleRate) +
           " channels=2 sink_properties=device.description=" + name + "-desk";
}

} // namespace

std::unique_ptr<PrivateSoundServer> PrivateSoundServer::start(std::string& whyNot) {
    std::unique_ptr<PrivateSoundServer> server(new PrivateSoundServer());
    char pattern[] = "/tmp/velarion-sound-XXXXXX";
    if (mkdtemp(pattern) == nullptr) {
        whyNot = "no temporary folder for the sound server";
        return nullptr;
    }
    server->folder_ = pattern;
    const auto runtime = server->folder_ / "run";
    std::filesystem::create_directories(runtime);
    std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
    {
        std::ofstream script(server->folder_ / "server.pa");
        script << "load-module module-native-protocol-unix socket=" << (server->folder_ / "native").string()
               << " auth-anonymous=1\n";
        for (const char* sink : {"Speakers", "House", "Headphones"})
            script << "load-module module-null-sink " << nullSinkArguments(sink) << "\n";
        script << "set-default-sink Speakers\n";
        std::ofstream client(server->folder_ / "client.conf");
        client << "autospawn = no\n";
    }
    setenv("PULSE_RUNTIME_PATH", runtime.c_str(), 1);
    setenv("PULSE_CLIENTCONFIG", (server->folder_ / "client.conf").c_str(), 1);
    setenv("PULSE_SERVER", server->address().c_str(), 1);
    if (!server->launch(whyNot)) return nullptr;
    return server;
}

bool PrivateSoundServer::launch(std::string& whyNot) {
    server_ = spawnBeside({"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--system=false",
                     "--use-pid-file=no", "--disallow-exit", "--log-target=stderr",
                     "-F", (folder_ / "server.pa").string()});
    if (server_ < 0) {
        whyNot = "no process could be started for the sound server";
        return false;
    }
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (pactl({"info"})) {
            if (keepSinksAwake({"Speakers", "House", "Headphones"})) return true;
            whyNot = "the sound server's sinks did not start running";
            return false;
        }
        int status = 0;
        if (waitpid(server_, &status, WNOHANG) == server_) {
            server_ = -1;
            whyNot = WIFEXITED(status) && WEXITSTATUS(status) == 127
                         ? "pulseaudio is not installed (scripts/install-deps installs it)"
                         : "pulseaudio exited at start";
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    whyNot = "pulseaudio did not answer within 5 seconds";
    return false;
}

// An idle null sink sleeps for up to two seconds at a time and only then
// notices a stream that wants less latency; a quiet recording of each
// monitor keeps every sink running at a few milliseconds from the start.
// Suspending and resuming a sink wakes it at once, so that the recording is
// noticed without that wait; every test starts with awake sinks.
bool PrivateSoundServer::keepSinksAwake(const std::vector<std::string>& sinks) {
    std::vector<std::filesystem::path> files;
    for (const std::string& sink : sinks) {
        files.push_back(folder_ / ("awake-" + sink + "-" + std::to_string(keepers_.size()) + ".raw"));
        keepers_.push_back(spawnBeside({"parec", "-s", address(), "-d", sink + ".monitor",
                                  "--latency-msec=5", "--format=u8", "--rate=4000", "--channels=1"},
                                 files.back()));
    }
    for (int attempt = 0; attempt < 100; ++attempt) {
        bool awake = true;
        for (std::size_t i = 0; i < sinks.size(); ++i) {
            std::error_code error;
            if (std::filesystem::file_size(files[i], error) > 0) continue;
            awake = false;
            // Once a recording has had time to connect, and again now and then.
            if (attempt % 4 == 2) {
                pactl({"suspend-sink", sinks[i], "1"});
                pactl({"suspend-sink", sinks[i], "0"});
            }
        }
        if (awake) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

PrivateSoundServer::~PrivateSoundServer() {
    for (pid_t keeper : keepers_) endProcess(keeper);
    endProcess(server_);
    unsetenv("PULSE_SERVER");
    unsetenv("PULSE_CLIENTCONFIG");
    unsetenv("PULSE_RUNTIME_PATH");
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
}

std::string PrivateSoundServer::address() const { return "unix:" + (folder_ / "native").string(); }

bool PrivateSoundServer::pactl(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{"pactl", "-s", address()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runToEnd(command) == 0;
}

bool PrivateSoundServer::removeSink(const std::string& name) const {
    // The sink's module is found by its arguments in the module list.
    const auto list = folder_ / "modules.txt";
    if (runToEnd({"pactl", "-s", address(), "list", "short", "modules"}, list) != 0) return false;
    std::ifstream in(list);
    std::string line;
    while (std::getline(in, line)) {
        if (line.find("module-null-sink") == std::string::npos ||
            line.find("sink_name=" + name + " ") == std::string::npos)
            continue;
        return pactl({"unload-module", line.substr(0, line.find('\t'))});
    }
    return false;
}

bool PrivateSoundServer::addSink(const std::string& name) {
    std::vector<std::string> arguments{"load-module", "module-null-sink"};
    std::istringstream words(nullSinkArguments(name));
    for (std::string word; words >> word;) arguments.push_back(word);
    return pactl(arguments) && keepSinksAwake({name});
}

bool PrivateSoundServer::crashAndRestart() {
    kill(server_, SIGKILL);
    waitpid(std::exchange(server_, -1), nullptr, 0);
    for (pid_t keeper : std::exchange(keepers_, {})) endProcess(keeper);
    std::string whyNot;
    return launch(whyNot);
}

std::unique_ptr<PrivateSoundServer::Recording> PrivateSoundServer::record(const std::string& sink) const {
    const auto file = folder_ / ("recording-" + std::to_string(++recordings_) + ".raw");
    const pid_t process = spawnBeside({"parec", "-s", address(), "-d", sink + ".monitor", "--format=s16le",
                                 "--rate=" + std::to_string(sampleRate), "--channels=2", "--latency-msec=20"},
                                file);
    if (process <= 0) return nullptr;
    return std::unique_ptr<Recording>(new Recording(process, file));
}

PrivateSoundServer::Recording::~Recording() {
    if (process_ > 0) endProcess(process_);
}

std::vector<float> PrivateSoundServer::Recording::stop() {
    endProcess(std::exchange(process_, -1));
    std::ifstream in(file_, std::ios::binary);
    std::vector<float> samples;
    std::int16_t value = 0;
    while (in.read(reinterpret_cast<char*>(&value), sizeof value)) samples.push_back(value / 32768.0f);
    return samples;
}

} // namespace velarion::testing
