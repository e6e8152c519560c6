#include "Platform/NDI/NDILibrary.h"

#include "Platform/NDI/CNDIBridge.h"

#include <cstdlib>
#include <mutex>
#include <system_error>

namespace velarion::NDILibrary {

namespace {

struct State {
    std::mutex lock;
    std::optional<NDIRuntimeStatus> loaded;
};

State& state() {
    static State shared;
    return shared;
}

} // namespace

std::vector<std::filesystem::path> candidates() {
    std::vector<std::filesystem::path> paths;
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) {
        paths.push_back(program.parent_path() / fileName);
        paths.push_back(program.parent_path().parent_path() / "lib" / fileName);
    }
    if (const char* dir = std::getenv("NDI_RUNTIME_DIR_V6"); dir && *dir) paths.push_back(std::filesystem::path(dir) / fileName);
    for (const char* fixed : {"/usr/local/lib", "/usr/lib/x86_64-linux-gnu", "/usr/lib"})
        paths.push_back(std::filesystem::path(fixed) / fileName);
    return paths;
}

NDIRuntimeStatus search(const std::vector<std::filesystem::path>& paths) {
    std::optional<std::string> lastError;
    for (const auto& path : paths) {
        std::error_code error;
        if (!std::filesystem::exists(path, error)) continue;
        char text[512] = {};
        if (vela_ndi_load(path.c_str(), text, sizeof text)) {
            NDIRuntimeStatus status{true, std::nullopt, availableWords};
            if (const char* version = vela_ndi_version()) status.version = version;
            return status;
        }
        lastError = text;
    }
    if (!lastError) return {false, std::nullopt, notInstalledWords};
    return {false, std::nullopt, couldNotLoadWords + *lastError};
}

NDIRuntimeStatus status() {
    State& shared = state();
    std::lock_guard guard(shared.lock);
    if (!shared.loaded) shared.loaded = search(candidates());
    return *shared.loaded;
}

} // namespace velarion::NDILibrary
