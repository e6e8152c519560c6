#pragma once
// AppModelAgentHost: the application model as the agent service sees it,
// thin forwarding to AppModel's agent operations.
//
// Contract: as AgentHost. Main thread. The model and the output list must
// outlive the host. Slide pictures are drawn by the model, so an agent's
// change to a deck supersedes the console's unfinished one and the other
// way round. The displays are those `displays` lists (the output side's),
// none without it.

#include "Live/AppModel.h"
#include "LiveAgent/AgentHost.h"

namespace velarion {

class AppModelAgentHost final : public AgentHost {
public:
    AppModelAgentHost(AppModel& model, const AudioDevices* devices,
                      std::function<std::vector<DisplayInfo>()> displays = {})
        : model_(model), devices_(devices), displays_(std::move(displays)) {}

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
    std::vector<DisplayInfo> agentDisplays() override { return displays_ ? displays_() : std::vector<DisplayInfo>{}; }
    void agentNote(const std::string& text) override { model_.agentNote(text); }
    void agentQuit(bool restart) override { model_.agentQuit(restart); }
    void agentDrawSlides(const MediaItem& item, SlidesDrawn done) override;
    std::shared_ptr<NDISourceFinder> agentNDISources() override { return ndiSources_; }
    // What discovers NDI sources on this computer; none answers an empty list.
    void setNDISources(std::shared_ptr<NDISourceFinder> finder) { ndiSources_ = std::move(finder); }
    void agentImportMedia(const std::vector<std::filesystem::path>& files, MediaImported done) override {
        model_.agentImportMedia(files, std::move(done));
    }

private:
    std::shared_ptr<NDISourceFinder> ndiSources_;
    AppModel& model_;
    const AudioDevices* devices_;
    std::function<std::vector<DisplayInfo>()> displays_;
};

} // namespace velarion
