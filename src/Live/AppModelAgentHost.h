#pragma once
// AppModelAgentHost: the application model as the agent service sees it,
// thin forwarding to AppModel's agent operations.
//
// Contract: as AgentHost. Main thread. The model, the slide pages and the
// output list must outlive the host. Without a console there are no
// displays to list.

#include "Live/AppModel.h"
#include "LiveAgent/AgentHost.h"

namespace velarion {

class AppModelAgentHost final : public AgentHost {
public:
    AppModelAgentHost(AppModel& model, SlidePages& slidePages, const AudioDevices* devices)
        : model_(model), slidePages_(slidePages), devices_(devices) {}

    std::optional<Show> show() const override { return model_.show(); }
    std::optional<ShowPackage> package() const override { return model_.package(); }
    bool isLocked() const override { return model_.isLocked(); }
    std::optional<EngineState> engineState() const override;
    std::set<AgentTier> allowedTiers() const override { return model_.allowedTiers(); }
    std::vector<AudioDevice> audioOutputs() const override;

    std::optional<std::string> agentEdit(const ShowEdit& edit) override { return model_.agentEdit(edit); }
    void agentPerform(const EngineCommand& command) override { model_.agentPerform(command); }
    void agentLock() override { model_.agentLock(true); }
    void agentNewShow(const std::string& title, ShowTemplate showTemplate,
                      const std::optional<std::filesystem::path>& saveTo) override {
        model_.agentNewShow(title, showTemplate, saveTo);
    }
    void agentOpenShow(const std::filesystem::path& at) override { model_.agentOpenShow(at); }
    void agentSaveShow(const std::optional<std::filesystem::path>& to) override { model_.agentSaveShow(to); }
    bool agentUndo() override { return model_.agentUndo(); }
    bool agentRedo() override { return model_.agentRedo(); }
    std::vector<ReadyItem> agentReadyItems() override { return model_.readyItems(); }
    std::vector<DisplayInfo> agentDisplays() override { return {}; }
    void agentNote(const std::string& text) override { model_.agentNote(text); }
    void agentQuit(bool restart) override { model_.agentQuit(restart); }
    MediaItem agentDrawSlides(const MediaItem& item) override;

private:
    AppModel& model_;
    SlidePages& slidePages_;
    const AudioDevices* devices_;
};

} // namespace velarion
