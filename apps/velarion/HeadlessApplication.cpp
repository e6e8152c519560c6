#include "HeadlessApplication.h"

#include "QuitSignals.h"

#include "Live/AgentControl.h"
#include "Live/AppModel.h"
#include "Live/AppModelAgentHost.h"
#include "Live/SpotifyMetadata.h"
#include "Live/ThreadShowWriter.h"
#include "Platform/App/FreedesktopServices.h"
#include "Platform/App/HeadlessOutputManagers.h"
#include "Platform/App/ProcessControl.h"
#include "Platform/App/QtScheduler.h"
#include "Platform/Import/DeckImporter.h"
#include "Platform/Import/LibreOfficeExporter.h"
#include "Platform/Import/MediaInspection.h"
#include "Platform/MIDI/RtMidiInput.h"
#include "Platform/NDI/NDIDiscovery.h"
#include "Platform/NDI/NDIFeeds.h"
#include "Platform/NDI/NDIInputSurface.h"
#include "Platform/Music/MprisRemote.h"
#include "Platform/Music/QtWebRequests.h"
#include "Platform/Outputs/QtOutputDisplays.h"
#include "Platform/Outputs/ScreenOutputManagers.h"
#include "Platform/Pictures/BackdropLoopService.h"
#include "Platform/Pictures/PictureFile.h"
#include "Platform/Pictures/QtSlidePages.h"
#include "Platform/Pictures/QtSlidePictures.h"
#include "Platform/Pictures/QtTextCards.h"
#include "Platform/Sound/GstAudioDevices.h"
#include "Platform/Sound/GstMediaPlayers.h"
#include "Platform/Video/GstVideoSurface.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <csignal>

#include <cstdio>
#include <string>

namespace velarion {

namespace {

constexpr int logPollMilliseconds = 200;
// The test hook's rhythm: bursts of quick edits with a pause after each,
// longer than the autosave's wait, so each burst gets saved.
constexpr double editBurstSeconds = 0.05;
constexpr int editsPerBurst = 8;
constexpr double pauseAfterBurstSeconds = 1.2;

void say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

} // namespace

std::optional<AgentGrants> parseAgentGrants(std::string_view list) {
    AgentGrants grants;
    bool none = false;
    std::size_t start = 0;
    while (start <= list.size()) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        const std::string_view word = list.substr(start, end - start);
        if (word == "run") grants.run = true;
        else if (word == "edit") grants.edit = true;
        else if (word == "none") none = true;
        else return std::nullopt;
        start = end + 1;
    }
    if (none && (grants.run || grants.edit)) return std::nullopt;
    return grants;
}

// Declared in the order they must be built; destroyed the other way round,
// so the model goes before everything it was given.
struct HeadlessApplication::Parts {
    QtScheduler scheduler;
    GstAudioDevices devices{scheduler};
    GstMediaPlayers players{&devices, [this](const SceneID& id, const std::filesystem::path& path) {
                                return GstVideoSurface::make(scheduler, &devices, id, path);
                            }};
    QtImageLoader images;
    QtTextCards cards;
    QtSlidePictures slides{[this](const Uuid& mediaID) -> std::optional<std::filesystem::path> {
        if (!model || !model->show() || !model->package()) return std::nullopt;
        for (const MediaItem& item : model->show()->library)
            if (item.id == mediaID) return model->package()->mediaURL(item.fileName);
        return std::nullopt;
    }};
    // Real windows wherever a display server can show them; off screen the
    // outputs only keep the scene.
    std::unique_ptr<ScreenOutputManagers> screenOutputs;
    std::unique_ptr<HeadlessOutputManagers> headlessOutputs;
    OutputManagers& outputs = chooseOutputs();
    QtSlidePages slidePages{scheduler};
    FreedesktopServices desktop;
    StandardShowFolders folders;
    ThreadShowWriter writer{scheduler};
    ProcessControl application{{"--headless"}};
    Preferences preferences{Preferences::standardFile()};
    BackdropLoopService backdrops{scheduler};
    // The music apps, driven off the main loop one call at a time.
    MprisRemote mpris{preferences.value(preferenceKeys::musicPlayer)};
    StreamQueue streamQueue;
    ThreadStreamTasks streamTasks;
    EngineStreams streams{streamQueue.serial(mpris.remote()), streamTasks};
    QtWebRequests web;
    std::unique_ptr<SpotifyMetadataResolver> spotifyNames;
    LibreOfficeExporter presentationExporter;
    DeckImporter decks{&presentationExporter};
    MediaInspection inspection{scheduler};
    std::unique_ptr<AppModel> model;
    std::shared_ptr<AppModelAgentHost> agentHost;
    std::unique_ptr<AgentControl> agent;
    std::unique_ptr<QuitSignals> quitSignals;

    std::string lastStatus;
    std::optional<Uuid> lastLogged;
    QTimer logTimer;
    int burstCount = 0;
    bool quitting = false;

    OutputManagers& chooseOutputs() {
        if (QtOutputDisplays::canOpenWindows()) {
            screenOutputs = std::make_unique<ScreenOutputManagers>(scheduler, [this] { return coverIsActive(); });
            screenOutputs->prepareManager = [this](ScreenOutputManager& manager) {
                manager.setFeedFactories(ndiFeedFactories([this] { return scheduler.now(); }));
            };
            return *screenOutputs;
        }
        headlessOutputs = std::make_unique<HeadlessOutputManagers>(scheduler);
        return *headlessOutputs;
    }
    // Safe Slide or Panic: identification and test patterns wait.
    bool coverIsActive() const {
        const LiveEngine* engine = model ? model->engine() : nullptr;
        if (engine == nullptr) return false;
        const EngineState& state = engine->state();
        return state.holdingOn || !std::holds_alternative<PanicIdle>(state.panic);
    }
    std::vector<DisplayInfo> displays() const {
        return screenOutputs ? screenOutputs->displays() : std::vector<DisplayInfo>{};
    }

    AppPorts ports() {
        AppPorts made{scheduler, players, images, cards, slides, &devices, outputs, slidePages, desktop,
                        folders, writer, application, preferences,
                        [this](BuiltInBackdrop backdrop) { return backdrops.readyURL(backdrop); },
                        [this](BuiltInBackdrop backdrop,
                               std::function<void(std::optional<std::filesystem::path>)> done) {
                            backdrops.prepare(backdrop, std::move(done));
                        },
                        [this] { return std::make_unique<RtMidiInput>(scheduler); }};
        made.streams = &streams;
        made.importTools = MediaImportTools{&inspection, &decks};
        made.musicApps = [this] {
            // What the apps were last seen as, and a fresh look for next time.
            streamTasks.launch([this](const StreamCancel&) {
                streams.remote.isAppRunning(StreamApp::spotify);
                streams.remote.isAppRunning(StreamApp::music);
            }, {});
            return mpris.presence();
        };
        made.musicPlayers = [this] { return mpris.lastOtherPlayers(); };
        return made;
    }
    void nameSpotifyCues() {
        if (!spotifyNames || !model || !model->show()) return;
        spotifyNames->resolve(spotifyMetadata::requests(*model->show()));
    }

    // New lines of the show log since the last call, oldest first.
    void printLog() {
        LiveEngine* engine = model ? model->engine() : nullptr;
        if (engine == nullptr) return;
        const auto& history = engine->history();
        auto from = history.begin();
        if (lastLogged) {
            for (auto entry = history.begin(); entry != history.end(); ++entry)
                if (entry->id == *lastLogged) from = std::next(entry);
        }
        for (auto entry = from; entry != history.end(); ++entry) {
            say("Log: " + std::string(toString(entry->kind)) + ": " + entry->text);
            lastLogged = entry->id;
        }
    }
    void printStatus() {
        if (!model || model->status() == lastStatus) return;
        lastStatus = model->status();
        if (!lastStatus.empty()) say("Status: " + lastStatus);
    }

    void editAgain() {
        if (quitting || !model || !model->show()) return;
        ++burstCount;
        if (model->edit(edit::SetTitle{"Burst " + std::to_string(burstCount), model->show()->subtitle}))
            say("Edited " + std::to_string(burstCount));
        const bool burstEnds = burstCount % editsPerBurst == 0;
        scheduler.after(burstEnds ? pauseAfterBurstSeconds : editBurstSeconds, [this] { editAgain(); });
    }

    void quit(int signal) {
        if (quitting) return;
        quitting = true;
        say(std::string("Quitting on ") + (signal == SIGINT ? "SIGINT" : "SIGTERM"));
        QCoreApplication::quit();
    }
};

HeadlessApplication::HeadlessApplication(HeadlessOptions options)
    : options_(std::move(options)), parts_(std::make_unique<Parts>()) {
    Parts& parts = *parts_;
    parts.players.setNetworkInputs([&parts](const SceneID& id, const NDISource& source) {
        return std::make_shared<NDIInputSurface>(parts.scheduler, id, source);
    });
    parts.model = std::make_unique<AppModel>(parts.ports(), AppOptions{static_cast<bool>(options_.snapshot)});
    parts.spotifyNames = std::make_unique<SpotifyMetadataResolver>(
        parts.web, [&parts] { return parts.model && parts.model->show() ? &*parts.model->show() : nullptr; },
        [&parts](const ShowEdit& change) { return parts.model->edit(change); },
        [&parts](const std::string& sentence) {
            if (LiveEngine* engine = parts.model->engine()) engine->warn(sentence);
        });
    parts.model->onChange = [&parts] {
        parts.printStatus();
        parts.nameSpotifyCues();
    };
    if (options_.agentGrants) {
        parts.model->setAgentMayRun(options_.agentGrants->run);
        parts.model->setAgentMayEdit(options_.agentGrants->edit);
    }
    parts.agentHost = std::make_shared<AppModelAgentHost>(*parts.model, &parts.devices,
                                                          [&parts] { return parts.displays(); });
    parts.agentHost->setNDISources(std::make_shared<NDIDiscovery>());
    parts.agent = std::make_unique<AgentControl>(*parts.model, parts.scheduler, parts.agentHost);
    parts.devices.setOnChange([&parts] {
        if (LiveEngine* engine = parts.model->engine()) engine->audioDevicesChanged();
    });
    parts.backdrops.onFailure = [&parts](BuiltInBackdrop, const std::string& sentence) {
        if (LiveEngine* engine = parts.model->engine()) engine->warn(sentence);
    };
    parts.quitSignals = std::make_unique<QuitSignals>([&parts](int signal) { parts.quit(signal); });
    QObject::connect(&parts.logTimer, &QTimer::timeout, [&parts] { parts.printLog(); });
}

HeadlessApplication::~HeadlessApplication() = default;

int HeadlessApplication::run() {
    Parts& parts = *parts_;
    AppModel& model = *parts.model;
    if (options_.snapshot) {
        const int code = options_.snapshot(model, parts.scheduler);
        model.finishQuit();
        return code;
    }
    const std::shared_ptr<void> console =
        options_.console ? options_.console(model, parts.scheduler, parts.preferences) : nullptr;
    if (options_.show) {
        try {
            model.openShow(*options_.show);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "velarion: couldn't open %s: %s\n", options_.show->c_str(), error.what());
            return 1;
        }
    }
    parts.agent->start();
    if (const auto path = parts.agent->socketPath()) {
        say("Agent socket: " + *path);
        say(std::string("Agent may run the show: ") + (model.agentMayRun() ? "yes" : "no") +
            "; build and edit shows: " + (model.agentMayEdit() ? "yes" : "no"));
    }
    else say("Agent control is off: " + model.agentError().value_or("the socket couldn't open"));
    model.startMIDI();
    // Last of all, as at every start: a show a crash left open comes back.
    model.recoverAfterUnexpectedQuit();
    if (model.show()) say("Open: " + model.package()->url().string());
    else say("No show is open.");
    parts.printStatus();
    parts.printLog();
    parts.logTimer.start(logPollMilliseconds);
    if (options_.editBurst) parts.scheduler.post([&parts] { parts.editAgain(); });

    const int code = QCoreApplication::exec();
    parts.logTimer.stop();
    parts.agent->stop();
    model.finishQuit();
    parts.printLog();
    say("Quit");
    return code;
}

} // namespace velarion
