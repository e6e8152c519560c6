// velarion: the show-control application. Until the console exists it runs
// headless, whatever it is asked:
// `velarion [--headless] [--allow-agent=run,edit|none] [SHOW]`. Headless
// means no console only: where a display server is there, the audience's
// windows open on their displays.

#include "HeadlessApplication.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

int main(int argc, char** argv) {
    velarion::HeadlessOptions options;
    bool headless = false;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--headless") headless = true;
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
            std::fprintf(stderr, "usage: velarion [--headless] [--allow-agent=run,edit|none] [SHOW.velarion]\n");
            return 2;
        } else options.show = argument;
    }
    // Text and pictures need Qt's GUI side; without a display server it
    // draws off screen and opens no windows.
    if (std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr)
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName("Velarion");
    if (!headless) std::printf("The console isn't built yet: Velarion runs headless.\n");
    velarion::HeadlessApplication velarion(std::move(options));
    return velarion.run();
}
