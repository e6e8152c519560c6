#pragma once
// A show's own settings. `isSafe` and `BackupRetentionPolicy::isValid` are
// the limits the validator holds them to. Plain values; any thread.

#include "ShowCore/CaseNames.h"

namespace velarion::showcore {

enum class WorkspaceDensity { compact, comfortable, touchFriendly };
SHOWCORE_CASE_NAMES(WorkspaceDensity, "compact", "comfortable", "touchFriendly");

struct BackupRetentionPolicy {
    static constexpr const char* invalidMessage = "Backup retention must use positive values";

    int hourlyHours = 24;
    int dailyDays = 14;
    int showModeEntries = 20;
    bool isValid() const { return hourlyHours > 0 && dailyDays > 0 && showModeEntries > 0; }
    bool operator==(const BackupRetentionPolicy&) const = default;
};

struct ShowSettings {
    static constexpr const char* unsafeMessage = "Show settings contain unsafe values";
    // The safe ranges, both ends included.
    static constexpr int maximumLockoutMilliseconds = 5000;
    static constexpr double minimumAutosaveSeconds = 1;
    static constexpr double maximumAutosaveSeconds = 3600;
    static constexpr double minimumUIScale = 0.5;
    static constexpr double maximumUIScale = 3;

    int goRepeatLockoutMilliseconds = 250;
    bool structuralEditingLockedInShow = true;
    bool requireVerifiedMusicFallbackInShow = false;
    bool reduceMotion = false;
    bool reduceTransparency = false;
    WorkspaceDensity workspaceDensity = WorkspaceDensity::comfortable;
    double uiScale = 1;
    double autosaveJournalIntervalSeconds = 10;
    BackupRetentionPolicy backupRetention;

    // Lockout, autosave interval and scale within the ranges above.
    bool isSafe() const {
        return goRepeatLockoutMilliseconds >= 0 && goRepeatLockoutMilliseconds <= maximumLockoutMilliseconds &&
               autosaveJournalIntervalSeconds >= minimumAutosaveSeconds &&
               autosaveJournalIntervalSeconds <= maximumAutosaveSeconds && uiScale >= minimumUIScale &&
               uiScale <= maximumUIScale; // NaN fails every comparison
    }
    bool operator==(const ShowSettings&) const = default;
};

} // namespace velarion::showcore
