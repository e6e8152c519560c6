// The operator's screen tools: identification, test patterns, test windows,
// the program preview and its mirrors. The output manager does the work; a
// refusal becomes the status line.

#include "Live/AppModel.h"

#include "LiveModel/ScreenPreset.h"

#include <algorithm>

namespace velarion {

namespace {

bool isTestWindow(const LogicalScreen& screen) {
    const auto* display = std::get_if<destination::Display>(&screen.destination);
    return display && display->id == OutputSetup::testWindowID;
}

} // namespace

void AppModel::identifyScreen(const std::string& screenID) {
    if (!outputManager_) return;
    if (const auto refusal = outputManager_->identify(screenID)) refuse(*refusal);
}

void AppModel::setTestPattern(const std::string& screenID, std::optional<OutputTestPattern> pattern) {
    if (!outputManager_) return;
    if (const auto refusal = outputManager_->setTestPattern(screenID, pattern)) refuse(*refusal);
}

void AppModel::setTestWindowVisible(const std::string& screenID, bool visible) {
    if (!outputManager_) return;
    outputManager_->setTestWindowVisible(screenID, visible);
    changed();
}

bool AppModel::testWindowIsVisible(const std::string& screenID) const {
    return outputManager_ && outputManager_->testWindowIsVisible(screenID);
}

void AppModel::showProgramPreview() {
    if (outputManager_) outputManager_->showProgramPreview();
}

void AppModel::selectProgramOutput(const std::optional<std::string>& destination) {
    perform(command::SelectProgramOutput{destination});
}

bool AppModel::offersTestWindow() const {
    if (!show_ || !outputManager_) return false;
    for (const LogicalScreen& screen : show_->outputs.effectiveScreens())
        if (isTestWindow(screen) && outputManager_->testWindowIsVisible(screen.id)) return false;
    return true;
}

void AppModel::openAudienceTestWindow() {
    if (!show_ || !outputManager_) return;
    for (const LogicalScreen& screen : show_->outputs.effectiveScreens()) {
        if (isTestWindow(screen) && screen.role == ScreenRole::audience) {
            setTestWindowVisible(screen.id, true);
            return;
        }
    }
    // No test window in the setup yet: add it, as the old form's switch does.
    OutputSetup setup = show_->outputs;
    if (setup.usesLogicalScreens) {
        LogicalScreen screen;
        screen.id = std::string(OutputSetup::testWindowID);
        screen.name = "Audience test window";
        screen.role = ScreenRole::audience;
        screen.destination = destination::Display{std::string(OutputSetup::testWindowID)};
        screen.layers = screenPreset::layers(ScreenPreset::everything);
        setup.screens.push_back(std::move(screen));
    } else {
        setup.audienceWindowForTesting = true;
    }
    if (edit(edit::SetOutputs{setup})) setTestWindowVisible(std::string(OutputSetup::testWindowID), true);
}

void AppModel::addMirror(const std::weak_ptr<SceneSink>& sink) {
    mirrors_.push_back(sink);
    if (outputManager_) outputManager_->addMirror(sink);
}

void AppModel::removeMirror(const std::shared_ptr<SceneSink>& sink) {
    std::erase_if(mirrors_, [&](const std::weak_ptr<SceneSink>& mirror) {
        const auto live = mirror.lock();
        return !live || live == sink;
    });
    if (outputManager_) outputManager_->removeMirror(sink);
}

std::vector<DisplayInfo> AppModel::availableDisplays() const {
    return outputManager_ ? outputManager_->availableDisplays() : std::vector<DisplayInfo>{};
}

} // namespace velarion
