#pragma once
// AgentHost: what the application offers the agent service. The service
// reads the open show and the engine's published state through it, and asks
// it for every change, so that an agent's edit or command takes the same
// path as the operator's: the edit history, Show Mode, autosave, the live
// engine.
//
// Contract.
// - Main thread only, like the application model behind it.
// - Ownership: the application owns its host; AgentService holds it through
//   a std::weak_ptr and answers "Velarion isn't ready." once it is gone.
// - Reads return values (a Show copy is cheap: its lists are shared). They
//   may change after any of the agent... operations.
// - The operations marked "throws" refuse with AgentFailure, whose message
//   is the sentence the agent reads. Nothing else is thrown.
//
// Implementations: AppModel in the application; FakeAgentHost in tests.

#include "LiveAgent/DisplayInfo.h"
#include "LiveEngine/ports/NDISourceFinder.h"
#include "LiveEngine/ReadyItem.h"
#include "LiveAgentKit/AgentTools.h"
#include "LiveEngine/EngineCommand.h"
#include "LiveEngine/EngineState.h"
#include "LiveEngine/MediaImporter.h"
#include "LiveEngine/ports/AudioDevices.h"
#include "LiveModel/MediaItem.h"
#include "LiveModel/Show.h"
#include "LiveModel/ShowEdit.h"
#include "LiveModel/ShowPackage.h"
#include "LiveModel/ShowTemplate.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velarion {

class AgentHost {
public:
    virtual ~AgentHost() = default;

    // The open show and its package; absent when no show is open.
    virtual std::optional<Show> show() const = 0;
    virtual std::optional<ShowPackage> package() const = 0;
    // Show Mode.
    virtual bool isLocked() const = 0;
    // The engine's published state; absent when no engine runs.
    virtual std::optional<EngineState> engineState() const = 0;
    // Always `observe`; `run` and `edit` as the operator's two switches say.
    virtual std::set<AgentTier> allowedTiers() const = 0;
    // The computer's sound outputs, for the devices a cue or bus may name.
    virtual std::vector<AudioDevice> audioOutputs() const = 0;

    // Applies the edit through the normal edit path. None means it went in;
    // otherwise the application's status words, or "That change was
    // refused." when it has none.
    virtual std::optional<std::string> agentEdit(const ShowEdit& edit) = 0;
    // Sends the command to the engine, as the operator's console does.
    virtual void agentPerform(const EngineCommand& command) = 0;
    // Turns Show Mode on.
    virtual void agentLock() = 0;

    // Throws. Saves an open show first, makes the new show from the template
    // and title and opens it; with `saveTo`, saves it there as well.
    virtual void agentNewShow(const std::string& title, ShowTemplate showTemplate,
                              const std::optional<std::filesystem::path>& saveTo) = 0;
    // Throws. Opens the show package at the path.
    virtual void agentOpenShow(const std::filesystem::path& at) = 0;
    // Throws. With a path: save as; without: save, refusing a scratch show
    // with "This show hasn't been saved to a file yet. Give a path, such as
    // ~/Documents/Velarion Shows/Name.velarion."
    virtual void agentSaveShow(const std::optional<std::filesystem::path>& to) = 0;
    // False when there is nothing to step to, or Show Mode is on.
    virtual bool agentUndo() = 0;
    virtual bool agentRedo() = 0;

    virtual std::vector<ReadyItem> agentReadyItems() = 0;
    virtual std::vector<DisplayInfo> agentDisplays() = 0;
    // Appends the text to the engine's history, when an engine exists.
    virtual void agentNote(const std::string& text) = 0;
    // Quits without the quit question, through the normal path that saves;
    // with `restart`, the application opens again with the same show.
    virtual void agentQuit(bool restart) = 0;

    // Draws the page pictures of the item's made slides into the open
    // package, off the main loop, as the console's song editor does, and
    // then runs `done` once on the main loop: with the item and its deck's
    // pages, or with no item and one sentence saying why (the drawing
    // failed, a newer change to the same deck came first, or the show
    // closed). A double may run `done` before returning. Drawing is the
    // platform's, so it lives behind the host.
    using SlidesDrawn = std::function<void(std::optional<MediaItem> item, const std::string& failure)>;
    virtual void agentDrawSlides(const MediaItem& item, SlidesDrawn done) = 0;

    // What finds NDI sources on the local network, or none on a host that
    // can't look. list_ndi_sources waits on it off the main loop.
    virtual std::shared_ptr<NDISourceFinder> agentNDISources() { return nullptr; }
    // Copies the files into the open package off the main loop, by the
    // application's import path (decks become page pictures), then runs
    // `done` once on the main loop: with the result, whose items are not in
    // the show yet, or with none and one sentence (no show, another import
    // running, the show closed meanwhile). A double may run `done` before
    // returning.
    using MediaImported = std::function<void(std::optional<ImportResult> result, const std::string& failure)>;
    virtual void agentImportMedia(const std::vector<std::filesystem::path>& files, MediaImported done) = 0;
};

} // namespace velarion
