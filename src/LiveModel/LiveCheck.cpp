#include "LiveModel/LiveCheck.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>

namespace velarion::liveCheck {

namespace {
std::mutex reporterLock;
Reporter& reporter() {
    static Reporter installed;
    return installed;
}
} // namespace

void setReporter(Reporter newReporter) {
    std::lock_guard guard(reporterLock);
    reporter() = std::move(newReporter);
}

bool isFatal() {
#ifndef NDEBUG
    return true;
#else
    // Read at every failure: failures are rare, and tests may switch it.
    const char* value = std::getenv("VELARION_FATAL_CHECKS");
    return value != nullptr && std::strcmp(value, "1") == 0;
#endif
}

bool failed(const char* expression, std::string_view message, const char* file, int line) {
    const std::string text = std::string(message) + " (" + expression + " at " + file + ":" +
                             std::to_string(line) + ")";
    if (isFatal()) {
        std::fprintf(stderr, "Internal check failed: %s\n", text.c_str());
        std::abort();
    }
    std::lock_guard guard(reporterLock);
    if (reporter()) {
        reporter()(text);
    } else {
        std::fprintf(stderr, "warning: internal check failed: %s\n", text.c_str());
    }
    return false;
}

} // namespace velarion::liveCheck
