#include "ConsoleLaunch.h"

#include "Console/ConsoleTheme.h"
#include "Console/ConsoleWindow.h"
#include "Console/KindIcons.h"
#include "Console/Snapshot.h"
#include "Live/AppModel.h"
#include "LiveEngine/ports/Scheduler.h"

#include <QApplication>
#include <QIcon>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace velarion {

namespace {

void say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

QIcon applicationIcon() {
    QIcon icon;
    for (int size : {16, 32, 48, 64, 128, 256}) icon.addPixmap(QPixmap::fromImage(console::drawAppIcon(size)));
    return icon;
}

// The question before quitting while cues run; true to quit.
bool mayQuit(AppModel& model, QWidget* parent) {
    const auto question = model.quitQuestion();
    if (!question) return true;
    QMessageBox box(QMessageBox::Warning, QString::fromStdString(question->title),
                    QString::fromStdString(question->text), QMessageBox::NoButton, parent);
    QPushButton* keep = nullptr;
    QPushButton* quit = nullptr;
    for (std::size_t i = 0; i < question->buttons.size(); ++i) {
        auto* button = box.addButton(QString::fromStdString(question->buttons[i]),
                                     i == 0 ? QMessageBox::RejectRole : QMessageBox::AcceptRole);
        (i == 0 ? keep : quit) = button;
    }
    if (keep) box.setDefaultButton(keep);
    box.exec();
    return box.clickedButton() == quit;
}

} // namespace

int ConsoleLaunch::take(int argc, char** argv, int i) {
    const std::string argument = argv[i];
    if (argument != "--snapshot" && argument != "--make-icon") return 0;
    if (i + 1 >= argc) return -1;
    (argument == "--snapshot" ? snapshotFolder : iconFolder) = std::filesystem::path(argv[i + 1]);
    return 2;
}

std::unique_ptr<QGuiApplication> ConsoleLaunch::makeApplication(int& argc, char** argv) {
    const bool hasDisplay = std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
    // Snapshots look the same wherever they are made: drawn off screen.
    if (snapshotFolder || iconFolder) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    else if (!headless && !hasDisplay) {
        std::printf("No display: Velarion runs headless.\n");
        headless = true;
    }
    if (headless && !snapshotFolder && !iconFolder) return std::make_unique<QGuiApplication>(argc, argv);
    auto application = std::make_unique<QApplication>(argc, argv);
    QApplication::setWindowIcon(applicationIcon());
    QGuiApplication::setDesktopFileName("velarion");
    console::applyBoothTheme(*application);
    return application;
}

void ConsoleLaunch::prepare(HeadlessOptions& options) const {
    if (snapshotFolder) {
        options.agentGrants.reset();
        options.snapshot = [folder = *snapshotFolder](AppModel& model, Scheduler& scheduler) {
            return console::writeSnapshots(model, [&scheduler] { return scheduler.now(); }, folder, say);
        };
        return;
    }
    if (headless) return;
    options.console = [](AppModel& model, Scheduler& scheduler, Preferences& preferences) -> std::shared_ptr<void> {
        auto window = std::make_shared<console::ConsoleWindow>(model, [&scheduler] { return scheduler.now(); },
                                                               &preferences);
        console::ConsoleWindow* raw = window.get();
        window->confirmQuit = [&model, raw] { return mayQuit(model, raw); };
        window->show();
        return window;
    };
}

int ConsoleLaunch::makeIcons() const { return console::writeIcons(*iconFolder, say); }

} // namespace velarion
