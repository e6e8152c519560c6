#pragma once
// ShowSession: what crash reopening rests on. The preference key
// "live.session.openShow" holds the open package's path whenever a show is
// open and is removed at every orderly end, so a key found at start means
// the last run didn't end in order.
//
// Contract. A thin view over Preferences, which must outlive it; main
// thread only. A failed write of the key is not reported: the worst case is
// a reopening offered when none was needed, or none after a crash.

#include "Live/Preferences.h"

#include <filesystem>
#include <optional>

namespace velarion {

class ShowSession {
public:
    explicit ShowSession(Preferences& preferences) : preferences_(preferences) {}

    // Stores the package's path.
    void opened(const std::filesystem::path& package);
    // Removes the key.
    void closed();
    // The location once: reads the key and removes it. None when there was
    // no key, or when nothing exists at that path any more.
    std::optional<std::filesystem::path> takeShowToRecover();

private:
    Preferences& preferences_;
};

} // namespace velarion
