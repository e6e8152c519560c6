#pragma once
// ConsoleLaunch: what the command line asks of the console side. The
// console opens unless "--headless" was given or there is no display;
// "--snapshot DIR" writes the console's views of the demo show and exits;
// "--make-icon DIR" writes the application icon at the freedesktop sizes
// and exits. Both run with agent control off.
//
// Contract: main thread; `makeApplication` once, before anything of Qt.

#include "HeadlessApplication.h"

#include <QGuiApplication>

#include <filesystem>
#include <memory>
#include <optional>

namespace velarion {

struct ConsoleLaunch {
    bool headless = false;
    std::optional<std::filesystem::path> snapshotFolder;
    std::optional<std::filesystem::path> iconFolder;

    // Reads "--snapshot DIR" or "--make-icon DIR" at argv[i]: the number of
    // arguments taken, 0 when it is neither, -1 when the folder is missing.
    int take(int argc, char** argv, int i);
    // Widgets for the console and the snapshots; the GUI side alone for a
    // headless run. Without a display the console gives way to headless.
    std::unique_ptr<QGuiApplication> makeApplication(int& argc, char** argv);
    // Hooks the console or the snapshot into the application's options.
    void prepare(HeadlessOptions& options) const;
    int makeIcons() const;
};

} // namespace velarion
