#include "LiveEngine/ScreenOutputManager.h"

#include <algorithm>
#include <cmath>

namespace velarion {

namespace {

OutputHealth::Role roleOf(const LogicalScreen& screen) {
    if (std::holds_alternative<destination::Ndi>(screen.destination)) return OutputHealth::Role::feed;
    return screen.role == ScreenRole::stage ? OutputHealth::Role::confidence : OutputHealth::Role::audience;
}

std::optional<std::string> destinationOf(const LogicalScreen& screen) {
    if (const auto* display = std::get_if<destination::Display>(&screen.destination)) return display->id;
    if (const auto* feed = std::get_if<destination::Ndi>(&screen.destination)) return feed->feedID.text();
    return std::nullopt;
}

bool isTestWindow(const std::string& displayID) { return displayID == OutputSetup::testWindowID; }

} // namespace

ScreenOutputManager::ScreenOutputManager(Scheduler& scheduler, OutputDisplays& displays, ScreenPictures& pictures,
                                         std::function<bool()> coverIsActive)
    : scheduler_(scheduler), displays_(displays), pictures_(pictures), coverIsActive_(std::move(coverIsActive)) {
    std::weak_ptr<int> life = life_;
    displays_.setOnChange([this, life] {
        if (!life.expired() && !closed_) rebuild();
    });
}

ScreenOutputManager::~ScreenOutputManager() { closeAll(); }

void ScreenOutputManager::configure(const OutputSetup& setup) {
    if (closed_) return;
    setup_ = setup;
    screens_ = setup_.effectiveScreens();
    rebuildFeeds();
    rebuild();
    if (!healthTimer_.refersToTask()) healthTick();
}

void ScreenOutputManager::rebuild() {
    const std::vector<DisplayInfo> displays = displays_.displays();
    std::map<std::string, std::optional<std::string>> wanted; // screen id -> display id
    std::set<std::string> takenDisplays;
    for (const LogicalScreen& screen : screens_) {
        const auto* display = std::get_if<destination::Display>(&screen.destination);
        if (!display) continue;
        if (isTestWindow(display->id)) {
            if (requestedTestWindowIDs_.contains(screen.id) ||
                (!setup_.usesLogicalScreens && setup_.audienceWindowForTesting &&
                 !dismissedTestWindowIDs_.contains(screen.id)))
                wanted.emplace(screen.id, std::nullopt);
            continue;
        }
        if (!takenDisplays.insert(display->id).second) continue;
        const bool connected = std::any_of(displays.begin(), displays.end(),
                                           [&](const DisplayInfo& info) { return info.id == display->id; });
        if (connected) wanted.emplace(screen.id, display->id);
    }
    // A window stays while its screen keeps the same display, so a running
    // picture doesn't blink.
    for (auto window = windows_.begin(); window != windows_.end();) {
        const auto want = wanted.find(window->first);
        if (want != wanted.end() && want->second == windowDisplayIDs_[window->first] &&
            !window->second->isClosed()) {
            ++window;
            continue;
        }
        windowDisplayIDs_.erase(window->first);
        window = windows_.erase(window);
    }
    for (const auto& [screenID, displayID] : wanted) {
        if (windows_.contains(screenID)) continue;
        const LogicalScreen* screen = screenNamed(screenID);
        std::optional<DisplayInfo> on;
        for (const DisplayInfo& info : displays)
            if (displayID && info.id == *displayID) on = info;
        windows_.emplace(screenID, displays_.open(on, screen->name));
        windowDisplayIDs_[screenID] = displayID;
        if (screen->role == ScreenRole::stage) renderStageIfNeeded();
        drawScreen(*screen);
    }
    updateHealth(feedHealth());
}

std::vector<OutputHealth> ScreenOutputManager::feedHealth() const {
    std::vector<OutputHealth> rows;
    std::set<std::string> takenDisplays;
    for (const LogicalScreen& screen : screens_) {
        OutputHealth row;
        row.role = roleOf(screen);
        row.name = screen.name;
        row.destinationID = destinationOf(screen);
        if (std::holds_alternative<destination::Placeholder>(screen.destination)) {
            row.isPlaceholder = true;
            row.detail = placeholderDetail;
        } else if (const auto* feed = std::get_if<destination::Ndi>(&screen.destination)) {
            feedRow(row, feed->feedID);
        } else {
            const auto& display = std::get<destination::Display>(screen.destination);
            const bool repeated = !isTestWindow(display.id) && !takenDisplays.insert(display.id).second;
            const auto window = windows_.find(screen.id);
            if (repeated) row.detail = assignedTwiceDetail;
            else if (window != windows_.end()) {
                // A window that fell back to a slower way of drawing still
                // shows the picture, and says why it fell back.
                row.isConnected = true;
                row.detail = window->second->failure();
            }
            else if (isTestWindow(display.id)) row.detail = testWindowClosedDetail;
            else row.detail = disconnectedDetail;
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

void ScreenOutputManager::updateHealth(std::vector<OutputHealth> health) {
    if (health == health_) return;
    health_ = std::move(health);
    std::weak_ptr<int> life = life_;
    scheduler_.post([this, life] {
        if (!life.expired() && !closed_ && onHealthChange_) onHealthChange_(health_);
    });
}

void ScreenOutputManager::healthTick() {
    if (closed_) return;
    // Ordinary windows the operator closed: the test window's row turns
    // red, and the preview opens anew when asked again.
    bool testWindowClosed = false;
    for (const auto& [screenID, window] : windows_) {
        if (!windowDisplayIDs_[screenID] && window->isClosed()) {
            requestedTestWindowIDs_.erase(screenID);
            dismissedTestWindowIDs_.insert(screenID);
            testWindowClosed = true;
        }
    }
    if (programPreviewWindow_ && programPreviewWindow_->isClosed()) programPreviewWindow_.reset();
    if (testWindowClosed) rebuild();
    updateHealth(feedHealth());
    std::weak_ptr<int> life = life_;
    healthTimer_ = scheduler_.after(healthSeconds, [this, life] {
        if (!life.expired()) healthTick();
    });
}

void ScreenOutputManager::clearDiagnostics() {
    feedErrors_.clear();
    // Safe Slide, Panic and a full clear end screen tests and identification.
    for (auto& [id, task] : identificationTasks_) task.cancel();
    identificationTasks_.clear();
    const bool shownDiagnostics = !overrides_.empty() || !patternScenes_.empty();
    overrides_.clear();
    testPatterns_.clear();
    patternScenes_.clear();
    if (shownDiagnostics && !closed_) drawAll();
    updateHealth(feedHealth());
}

void ScreenOutputManager::closeAll() {
    if (closed_) return;
    closed_ = true;
    closeFeeds();
    windows_.clear();
    windowDisplayIDs_.clear();
    programPreviewWindow_.reset();
    healthTimer_.cancel();
    stageRetry_.cancel();
    for (auto& [id, task] : identificationTasks_) task.cancel();
    identificationTasks_.clear();
    displays_.setOnChange({});
}

void ScreenOutputManager::apply(const OutputScene& scene, const LayerKinds& kinds, const VideoSurfaces& surfaces,
                                const LayerRoutes& routes, const LyricPartPictures& lyricParts,
                                const std::optional<SceneID>& lyricLayerID) {
    if (closed_) return;
    lastScene_ = scene;
    lastKinds_ = kinds;
    lastSurfaces_ = surfaces;
    lastRoutes_ = routes;
    lastLyricParts_ = lyricParts;
    lastLyricLayerID_ = lyricLayerID;
    drawAll();
    applyFeeds();
    updateSoundTaps();
}

OutputScene ScreenOutputManager::routedScene(const OutputScene& scene, const LayerRoutes& routes,
                                             const std::string& destination) {
    OutputScene routed = scene;
    std::erase_if(routed.layers, [&](const SceneLayer& layer) {
        const auto route = routes.find(layer.id);
        return route != routes.end() && !route->second.contains(destination);
    });
    return routed;
}

OutputScene ScreenOutputManager::sceneShowing(const OutputScene& scene, const LayerKinds& kinds,
                                              const std::vector<LayerKind>& showing) {
    OutputScene shown = scene;
    std::erase_if(shown.layers, [&](const SceneLayer& layer) {
        const auto kind = kinds.find(layer.id);
        return kind != kinds.end() && std::find(showing.begin(), showing.end(), kind->second) == showing.end();
    });
    return shown;
}

std::optional<OutputScene> ScreenOutputManager::pictureOf(const std::string& screenID) const {
    const LogicalScreen* screen = screenNamed(screenID);
    if (!screen) return std::nullopt;
    if (const auto found = overrides_.find(screenID); found != overrides_.end()) return found->second;
    if (const auto found = patternScenes_.find(screenID); found != patternScenes_.end()) return found->second;
    if (screen->role == ScreenRole::stage) return stageScene_.value_or(OutputScene{});
    OutputScene scene = sceneShowing(routedScene(lastScene_, lastRoutes_, screenID), lastKinds_,
                                     setup_.resolvedLook(*screen).layers);
    if (lastLyricLayerID_) {
        const auto limits = setup_.lyricLineLimits();
        const auto limit = limits.find(screenID);
        const auto part = limit != limits.end() ? lastLyricParts_.find(limit->second) : lastLyricParts_.end();
        if (part != lastLyricParts_.end()) {
            for (SceneLayer& layer : scene.layers)
                if (layer.id == *lastLyricLayerID_) layer.content = SceneStillContent{part->second};
        }
    }
    return scene;
}

SceneSurfaces ScreenOutputManager::sceneSurfaces() const {
    SceneSurfaces surfaces;
    for (const auto& [id, surface] : lastSurfaces_) surfaces.emplace(id, surface);
    return surfaces;
}

void ScreenOutputManager::drawWindow(const LogicalScreen& screen, const SceneSurfaces& surfaces, double now) {
    const auto window = windows_.find(screen.id);
    if (window != windows_.end()) window->second->show(*pictureOf(screen.id), surfaces, now);
}

void ScreenOutputManager::drawProgram(const SceneSurfaces& surfaces, double now) {
    std::erase_if(mirrors_, [](const std::weak_ptr<SceneSink>& sink) { return sink.expired(); });
    if (mirrors_.empty() && !programPreviewWindow_) return;
    const OutputScene program = programScene();
    if (programPreviewWindow_) programPreviewWindow_->show(program, surfaces, now);
    for (const auto& mirror : mirrors_)
        if (const auto sink = mirror.lock()) sink->sceneChanged(program, surfaces, now);
}

// One screen's picture changed: its window, and the program picture when
// that screen is the program output.
void ScreenOutputManager::drawScreen(const LogicalScreen& screen) {
    const SceneSurfaces surfaces = sceneSurfaces();
    const double now = scheduler_.now();
    drawWindow(screen, surfaces, now);
    if (programOutputID() == screen.id) drawProgram(surfaces, now);
}

void ScreenOutputManager::drawAll() {
    const SceneSurfaces surfaces = sceneSurfaces();
    const double now = scheduler_.now();
    for (const LogicalScreen& screen : screens_) drawWindow(screen, surfaces, now);
    drawProgram(surfaces, now);
}

void ScreenOutputManager::updateStage(const ConfidenceState& confidence, const std::optional<TimerState>& timer,
                                      const std::optional<std::string>& nextCueName, double wallSeconds) {
    if (closed_) return;
    stageSnapshot_ = StageSnapshot{confidence, timer, nextCueName, static_cast<long long>(std::floor(wallSeconds))};
    renderStageIfNeeded();
}

void ScreenOutputManager::renderStageIfNeeded() {
    const bool anyStage = std::any_of(screens_.begin(), screens_.end(), [&](const LogicalScreen& screen) {
        return screen.role == ScreenRole::stage && windows_.contains(screen.id);
    });
    if (!anyStage || !stageSnapshot_ || stageSnapshot_ == renderedStageSnapshot_) return;
    // At most one drawing a second: a change within the second that was
    // already drawn waits for the next one.
    if (stageRenderedSecond_ && *stageRenderedSecond_ >= stageSnapshot_->second) {
        if (stageRetry_.refersToTask() && !stageRetry_.isCancelled()) return;
        const double wait = static_cast<double>(*stageRenderedSecond_ + 1) - scheduler_.wallNow();
        std::weak_ptr<int> life = life_;
        stageRetry_ = scheduler_.after(std::max(wait, 0.05), [this, life] {
            if (life.expired() || closed_) return;
            stageRetry_ = {};
            if (stageSnapshot_) stageSnapshot_->second = static_cast<long long>(std::floor(scheduler_.wallNow()));
            renderStageIfNeeded();
        });
        return;
    }
    const StageSnapshot& snapshot = *stageSnapshot_;
    const auto picture = pictures_.stage(StagePictureInputs{snapshot.confidence, snapshot.timer,
                                                            snapshot.nextCueName, static_cast<double>(snapshot.second)});
    renderedStageSnapshot_ = snapshot;
    stageRenderedSecond_ = snapshot.second;
    ++stageRenders_;
    if (!picture) return; // keep the last picture rather than go black
    OutputScene scene;
    SceneLayer layer;
    layer.id = stageLayerID_;
    layer.content = SceneStillContent{*picture};
    scene.layers.push_back(layer);
    stageScene_ = scene;
    for (const LogicalScreen& screen : screens_)
        if (screen.role == ScreenRole::stage) drawScreen(screen);
}

OutputScene ScreenOutputManager::pictureScene(const StillImage& still) const {
    OutputScene scene;
    SceneLayer layer;
    layer.id = Uuid::random();
    layer.content = SceneStillContent{still};
    scene.layers.push_back(layer);
    return scene;
}

std::optional<std::string> ScreenOutputManager::identify(const std::string& screenID) {
    if (coverIsActive_ && coverIsActive_()) return identifyRefusal;
    const LogicalScreen* screen = screenNamed(screenID);
    if (!screen || closed_) return std::nullopt;
    const auto picture = pictures_.identify(screen->name, screen->role);
    if (!picture) return std::nullopt;
    overrides_[screenID] = pictureScene(*picture);
    if (auto previous = identificationTasks_.find(screenID); previous != identificationTasks_.end())
        previous->second.cancel();
    std::weak_ptr<int> life = life_;
    identificationTasks_[screenID] = scheduler_.after(identifySeconds, [this, life, screenID] {
        if (life.expired() || closed_) return;
        overrides_.erase(screenID);
        identificationTasks_.erase(screenID);
        if (const LogicalScreen* shown = screenNamed(screenID)) drawScreen(*shown);
    });
    drawScreen(*screen);
    return std::nullopt;
}

std::optional<std::string> ScreenOutputManager::setTestPattern(const std::string& screenID,
                                                               std::optional<OutputTestPattern> pattern) {
    if (coverIsActive_ && coverIsActive_()) return patternRefusal;
    const LogicalScreen* screen = screenNamed(screenID);
    if (!screen || closed_) return std::nullopt;
    testPatterns_.erase(screenID);
    patternScenes_.erase(screenID);
    if (pattern) {
        if (const auto picture = pictures_.pattern(*pattern)) {
            testPatterns_[screenID] = *pattern;
            patternScenes_[screenID] = pictureScene(*picture);
        }
    }
    drawScreen(*screen);
    return std::nullopt;
}

void ScreenOutputManager::setTestWindowVisible(const std::string& screenID, bool visible) {
    if (visible) {
        requestedTestWindowIDs_.insert(screenID);
        dismissedTestWindowIDs_.erase(screenID);
    } else {
        requestedTestWindowIDs_.erase(screenID);
        dismissedTestWindowIDs_.insert(screenID);
    }
    if (!closed_) rebuild();
}

bool ScreenOutputManager::testWindowIsVisible(const std::string& screenID) const {
    return windows_.contains(screenID) && !windowDisplayIDs_.at(screenID);
}

void ScreenOutputManager::showProgramPreview() {
    if (closed_) return;
    if (programPreviewWindow_ && programPreviewWindow_->isClosed()) programPreviewWindow_.reset();
    if (!programPreviewWindow_) programPreviewWindow_ = displays_.open(std::nullopt, programPreviewTitle);
    programPreviewWindow_->show(programScene(), sceneSurfaces(), scheduler_.now());
}

void ScreenOutputManager::addMirror(const std::weak_ptr<SceneSink>& sink) {
    mirrors_.push_back(sink);
    if (const auto live = sink.lock()) live->sceneChanged(programScene(), sceneSurfaces(), scheduler_.now());
}

void ScreenOutputManager::removeMirror(const std::shared_ptr<SceneSink>& sink) {
    std::erase_if(mirrors_, [&](const std::weak_ptr<SceneSink>& mirror) {
        const auto live = mirror.lock();
        return !live || live == sink;
    });
}

std::optional<std::string> ScreenOutputManager::programOutputID() const {
    const std::vector<std::string> visual = setup_.visualDestinations();
    if (programOutputSelection_) {
        if (std::find(visual.begin(), visual.end(), *programOutputSelection_) != visual.end())
            return programOutputSelection_;
        return std::nullopt;
    }
    if (visual.empty()) return std::nullopt;
    return visual.front();
}

std::string ScreenOutputManager::programOutputName() const {
    const auto id = programOutputID();
    if (!id) return programOutputSelection_ ? missingSourceName : noOutputName;
    const LogicalScreen* screen = screenNamed(*id);
    return screen ? screen->name : missingSourceName;
}

void ScreenOutputManager::selectProgramOutput(const std::optional<std::string>& destination) {
    programOutputSelection_ = destination;
    drawAll();
}

OutputScene ScreenOutputManager::programScene() const {
    const auto id = programOutputID();
    if (!id) return lastScene_;
    return pictureOf(*id).value_or(lastScene_);
}

std::set<SceneID> ScreenOutputManager::programLayerIDs() const {
    std::set<SceneID> ids;
    for (const SceneLayer& layer : programScene().layers) ids.insert(layer.id);
    return ids;
}

std::vector<std::string> ScreenOutputManager::openWindowIDs() const {
    std::vector<std::string> ids;
    for (const auto& [id, window] : windows_) ids.push_back(id);
    return ids;
}

const LogicalScreen* ScreenOutputManager::screenNamed(const std::string& screenID) const {
    for (const LogicalScreen& screen : screens_)
        if (screen.id == screenID) return &screen;
    return nullptr;
}

} // namespace velarion
