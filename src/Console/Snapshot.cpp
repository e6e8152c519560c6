#include "Console/Snapshot.h"

#include "Console/ConsolePages.h"
#include "Console/ConsoleWindow.h"
#include "Console/Inspector.h"
#include "Console/KindIcons.h"
#include "Console/LibraryPanel.h"
#include "Console/LibraryPictures.h"
#include "Console/LiveRail.h"
#include "Console/PresentView.h"
#include "Console/ProgramPreview.h"
#include "Console/ReadyView.h"
#include "Console/RunOfShowView.h"
#include "Console/SlideEditorCanvas.h"
#include "Console/SlideEditorWindow.h"
#include "Console/SettingsWindow.h"
#include "DemoShowBuilder.h"
#include "Live/AppModel.h"
#include "Live/OperatorText.h"
#include "LiveModel/ScreenPreset.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollArea>

namespace velarion::console {

namespace {

// Lets the main loop run: pages drawn in the background, pictures loaded.
void settle(int milliseconds, const std::function<bool()>& done = {}) {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds) {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        if (done && done()) return;
    }
}

const Cue* cueNamed(const Show& show, const std::string& name) {
    for (const Cue* cue : show.allCues())
        if (cue->name == name) return cue;
    return nullptr;
}

} // namespace

std::map<std::string, QImage> snapshotViews(AppModel& model, std::function<double()> now,
                                            const std::filesystem::path& workFolder) {
    std::map<std::string, QImage> views;
    ConsoleWindow window(model, now);
    window.resize(snapshotWidth, snapshotHeight);
    window.show();
    settle(100);
    views["start-page.png"] = window.grab().toImage();

    const auto show = buildDemoShow(workFolder / "Demo.velarion");
    model.openShow(show);
    settle(10000, [&] { return !model.isDrawingPages(); });
    // Mid-show: music and the countdown running, the song's first slide and
    // the lower third on the screens.
    for (const char* name : {"Morning Light", "Welcome lower third", "Doors countdown", "Walk-in music"})
        if (const Cue* cue = cueNamed(*model.show(), name)) {
            model.perform(command::Fire{cue->id});
            settle(50);
        }
    if (const Cue* cue = cueNamed(*model.show(), "Morning Light")) model.selectCue(cue->id);
    settle(800);
    window.showPage(ConsoleWindow::Page::cues);
    window.refresh();
    settle(100);
    views["console.png"] = window.grab().toImage();
    views["run-of-show.png"] = window.runOfShow().grab().toImage();
    views["live-rail.png"] = window.rail().grab().toImage();
    {
        // The docks stay closed without preferences: an inspector of its
        // own, at a dock's usual size.
        Inspector inspector(model);
        inspector.resize(snapshotInspectorWidth, snapshotHeight);
        inspector.show();
        settle(100);
        views["inspector.png"] = inspector.grab().toImage();
    }
    // Past every dissolve, so the picture is the settled one.
    views["program.png"] = window.preview().drawAt(now() + 5);
    const auto picturesLoaded = [&] { return window.library().pictures().pending() == 0; };
    settle(10000, picturesLoaded);
    views["library.png"] = window.library().grab().toImage();
    window.showPage(ConsoleWindow::Page::slides);
    settle(10000, picturesLoaded);
    settle(100);
    views["present.png"] = window.present().grab().toImage();
    window.showPage(ConsoleWindow::Page::cues);
    window.action("History")->trigger();
    settle(100);
    views["history.png"] = window.history().grab().toImage();
    // The song's editor on its second slide, the lyric box chosen.
    if (const Cue* cue = cueNamed(*model.show(), "Morning Light"))
        if (SlideEditorWindow* editor = window.slideEditors().open(std::get<SlidesCue>(cue->kind).deckID)) {
            editor->resize(snapshotWidth, snapshotHeight);
            const auto& slides = *model.show()->media(editor->itemID())->deck->made;
            model.selectSlide(editor->itemID(), slides.at(std::min<std::size_t>(1, slides.size() - 1)).id);
            settle(200);
            if (const auto& slide = editor->canvas().slide()) editor->canvas().selectBox(slide->effectiveBoxes().front().id);
            settle(100);
            views["slide-editor.png"] = editor->grab().toImage();
        }
    // Screens as a venue has them: the room's display and a Stage Display
    // still to be chosen.
    OutputSetup setup = model.show()->outputs;
    setup.materializeScreens();
    const auto displays = model.availableDisplays();
    LogicalScreen room{"room", "Main screen", ScreenRole::audience,
                       destination::Display{displays.empty() ? "HDMI-1" : displays.front().id},
                       screenPreset::layers(ScreenPreset::everything), std::nullopt, std::nullopt};
    LogicalScreen stage{"stage", "Stage", ScreenRole::stage, destination::Placeholder{},
                        screenPreset::layers(ScreenPreset::clean), std::nullopt, std::nullopt};
    setup.screens = {room, stage};
    model.edit(edit::SetOutputs{setup});
    window.settings().showTab(SettingsWindow::Tab::screens);
    settle(100);
    views["settings-screens.png"] = window.settings().grab().toImage();
    for (const auto& [tab, name] : {std::pair{SettingsWindow::Tab::sound, "settings-sound.png"},
                                    {SettingsWindow::Tab::agent, "settings-agent.png"},
                                    {SettingsWindow::Tab::midi, "settings-midi.png"}}) {
        window.settings().showTab(tab);
        settle(50);
        views[name] = window.settings().grab().toImage();
    }
    window.settings().hide();
    window.action("Ready Check")->trigger();
    // Its rows wrap their words: a few turns of the loop to settle their heights.
    settle(300);
    views["ready-check.png"] = window.readyView().grab().toImage();
    // The screens set up above are written now, so that no autosave is
    // still writing when the work folder goes.
    model.save();
    model.close();
    return views;
}

int writeSnapshots(AppModel& model, std::function<double()> now, const std::filesystem::path& folder,
                   const std::function<void(const std::string&)>& report) {
    try {
        std::filesystem::create_directories(folder);
        const auto work = folder / ".snapshot-work";
        std::filesystem::remove_all(work);
        std::filesystem::create_directories(work);
        const auto views = snapshotViews(model, std::move(now), work);
        std::filesystem::remove_all(work);
        for (const auto& [name, image] : views) {
            const auto path = folder / name;
            if (!image.save(QString::fromStdString(path.string()), "PNG")) {
                report("Couldn't write " + path.string());
                return 1;
            }
            report(path.string());
        }
        return 0;
    } catch (const std::exception& error) {
        report("The snapshot couldn't be made: " + errorText(error));
        return 1;
    }
}

int writeIcons(const std::filesystem::path& folder, const std::function<void(const std::string&)>& report) {
    for (int size : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        const auto dir = folder / "icons" / "hicolor" / (std::to_string(size) + "x" + std::to_string(size)) / "apps";
        std::error_code error;
        std::filesystem::create_directories(dir, error);
        const auto path = dir / "velarion.png";
        if (error || !drawAppIcon(size).save(QString::fromStdString(path.string()), "PNG")) {
            report("Couldn't write " + path.string());
            return 1;
        }
        report(path.string());
    }
    return 0;
}

} // namespace velarion::console
