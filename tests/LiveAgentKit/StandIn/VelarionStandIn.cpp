// A stand-in for the Velarion application in the bridge's tests: it serves
// the agent socket as the application does, as far as the bridge can tell.
// The bridge starts it with nothing but the socket's path in its
// environment, so it takes its orders from "stand-in.conf" beside the
// socket, key=value lines:
//   listen_after_seconds  wait this long before listening (default 0)
//   listen                0: never listen
//   exit_status           exit at once with this status
//   lifetime_seconds      exit after this long whatever happens (default 60)
// and describes how it was started in "stand-in.report" beside the socket.
//
// Tools: quit_app answers {"quitting": true} and exits 0.4 seconds later,
// as the application does; any other answers {"running": true}.

#include "../AgentSocketTestSupport.h"
#include "LiveAgentKit/AgentSocketPath.h"
#include "LiveAgentKit/AgentSocketServer.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace velarion;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

std::map<std::string, std::string> readSettings(const fs::path& file) {
    std::map<std::string, std::string> settings;
    std::ifstream input(file);
    std::string line;
    while (std::getline(input, line)) {
        if (const auto equals = line.find('='); equals != std::string::npos)
            settings[line.substr(0, equals)] = line.substr(equals + 1);
    }
    return settings;
}

double number(const std::map<std::string, std::string>& settings, const std::string& key,
              double fallback) {
    const auto found = settings.find(key);
    return found == settings.end() ? fallback : std::stod(found->second);
}

bool isDevNull(int fd) {
    struct stat stream {};
    struct stat devNull {};
    return ::fstat(fd, &stream) == 0 && ::stat("/dev/null", &devNull) == 0 &&
           S_ISCHR(stream.st_mode) && stream.st_rdev == devNull.st_rdev;
}

// Descriptors beyond the standard streams that it was given.
int inheritedDescriptors() {
    int count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        const int fd = std::stoi(entry.path().filename().string());
        if (fd > 2)
            ++count;
    }
    return count - 1; // the directory listing's own
}

// Written whole, then renamed, so that a test never reads half of it.
void writeReport(const fs::path& folder, int descriptors) {
    const fs::path report = folder / "stand-in.report";
    {
        std::ofstream output(report.string() + ".part");
        output << "pid=" << ::getpid() << "\n"
               << "parent=" << ::getppid() << "\n"
               << "session=" << ::getsid(0) << "\n"
               << "standard_streams_null="
               << (isDevNull(0) && isDevNull(1) && isDevNull(2)) << "\n"
               << "inherited_descriptors=" << descriptors << "\n";
    }
    fs::rename(report.string() + ".part", report);
}

std::atomic<bool> quitRequested{false};

AgentSocketServer::Handler handler() {
    return [](const AgentRequest& request, const AgentSocketServer::Reply& reply) {
        using Object = JSONValue::Object;
        if (request.tool == "quit_app") {
            reply(AgentResponse::success(request.id, Object{{"quitting", true}}));
            quitRequested = true;
        } else {
            reply(AgentResponse::success(request.id, Object{{"running", true}}));
        }
    };
}

} // namespace

int main() {
    const int descriptors = inheritedDescriptors();
    const std::string socketPath = agentSocketPath::standard();
    const fs::path folder = fs::path(socketPath).parent_path();
    const auto settings = readSettings(folder / "stand-in.conf");
    writeReport(folder, descriptors);

    if (settings.contains("exit_status"))
        return std::stoi(settings.at("exit_status"));
    const Clock::time_point lifetimeEnd =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(
                           number(settings, "lifetime_seconds", 60)));
    if (number(settings, "listen", 1) == 0) {
        std::this_thread::sleep_until(lifetimeEnd);
        return 0;
    }
    std::this_thread::sleep_for(
        std::chrono::duration<double>(number(settings, "listen_after_seconds", 0)));

    // The loop may still run a request's task until it is gone.
    socketTest::ThreadMainLoop loop;
    AgentSocketServer server(socketPath, loop, handler());
    server.start();
    while (!quitRequested && Clock::now() < lifetimeEnd)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (quitRequested)
        std::this_thread::sleep_for(std::chrono::milliseconds(400)); // as the application does
    server.stop();
    return 0;
}
