#pragma once
// The snapshot tool ("--snapshot DIR"): opens the demo show, fires a few of
// its cues and writes each view of the console as a PNG at a fixed size, so
// that a change to the console can be seen without running a show by hand.
// Also the application icon at the freedesktop sizes ("--make-icon DIR").
//
// Contract: main thread, in a QApplication (the offscreen platform will do).
// The model must be a snapshot run (no session key, no keep-awake) with no
// show open; agent control stays off. Returns a process exit code and
// writes one line per file, or the failure, to `report`.

#include <QImage>

#include <filesystem>
#include <functional>
#include <map>
#include <string>

namespace velarion {
class AppModel;
}

namespace velarion::console {

inline constexpr int snapshotWidth = 1280;
inline constexpr int snapshotHeight = 800;
inline constexpr int snapshotInspectorWidth = 400;

// File name ("start-page.png") to picture.
std::map<std::string, QImage> snapshotViews(AppModel& model, std::function<double()> now,
                                            const std::filesystem::path& workFolder);
int writeSnapshots(AppModel& model, std::function<double()> now, const std::filesystem::path& folder,
                   const std::function<void(const std::string&)>& report);
// icons/hicolor/SIZExSIZE/apps/velarion.png under `folder`.
int writeIcons(const std::filesystem::path& folder, const std::function<void(const std::string&)>& report);

} // namespace velarion::console
