// velarion: the show-control application, with the operator's console:
// `velarion [--headless] [--allow-agent=run,edit|none] [SHOW]`, or
// `velarion --snapshot DIR` / `--make-icon DIR`. Headless means no console
// only: where a display server is there, the audience's windows open on
// their displays.

#include "ConsoleLaunch.h"
#include "HeadlessApplication.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

int main(int argc, char** argv) {
    velarion::HeadlessOptions options;
    bool headless = false;
    velarion::ConsoleLaunch launch;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (const int taken = launch.take(argc, argv, i); taken > 0) i += taken - 1;
        else if (taken < 0) {
            std::fprintf(stderr, "velarion: %s needs a folder.\n", argv[i]);
            return 2;
        }
        else if (argument == "--headless") headless = true;
        else if (argument == "--test-edit-burst") options.editBurst = true;
        else if (argument.rfind("--allow-agent=", 0) == 0) {
            options.agentGrants = velarion::parseAgentGrants(std::string_view(argument).substr(14));
            if (!options.agentGrants) {
                std::fprintf(stderr, "velarion: --allow-agent takes run, edit, or both as run,edit; "
                                     "none turns both off.\n");
                return 2;
            }
        }
        else if (argument.rfind("-", 0) == 0) {
            std::fprintf(stderr, "usage: velarion [--headless] [--allow-agent=run,edit|none] [SHOW.velarion]\n"
                                 "       velarion --snapshot DIR | --make-icon DIR\n");
            return 2;
        } else options.show = argument;
    }
    // Text and pictures need Qt's GUI side; without a display server it
    // draws off screen and opens no windows.
    if (std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr)
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    launch.headless = headless;
    const auto application = launch.makeApplication(argc, argv);
    QGuiApplication::setApplicationName("Velarion");
    if (launch.iconFolder) return launch.makeIcons();
    launch.prepare(options);
    velarion::HeadlessApplication velarion(std::move(options));
    return velarion.run();
}
