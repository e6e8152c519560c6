#pragma once
// AppModel: the one long-lived object the console hangs on. It owns the open
// Show, its ShowPackage, the undo history, one LiveEngine per loaded show
// with that show's OutputManager, and turns every surface's wish into a
// ShowEdit or an EngineCommand. Failures go to the one-line `status`; a
// refused edit also beeps.
//
// Contract.
// - Main thread only. Time and delays come from the Scheduler; background
//   work (the autosave's encode and write) returns through Scheduler::post
//   and finds the model through a weak token, so nothing runs after the
//   model is gone.
// - The ports and the preferences are given at construction and must
//   outlive the model. The model owns each OutputManager it makes and
//   destroys it after that show's engine.
// - Autosave: 0.8 s after the last change a snapshot goes to the ShowWriter;
//   the main loop only copies the Show (its lists are shared) and queues.
//   Explicit saves (`save`, `saveAs`, `prepareToQuit`, the save of the old
//   show on `openShow`) wait for queued writes, then write synchronously.
// - `onChange` runs after any change an observer may show, on the main
//   thread; setting the status to the text it already has notifies nobody.
// - Destruction hands a pending autosave to the writer, shuts the engine
//   down and ends the keep-awake activity; the session key stays, as after
//   a crash, unless `prepareToQuit` ran.

#include "Live/MIDIControlCenter.h"
#include "Live/Preferences.h"
#include "Live/ShowSession.h"
#include "Live/ports/ApplicationControl.h"
#include "Live/ports/DesktopServices.h"
#include "Live/ports/OutputManagers.h"
#include "Live/ports/ShowFolders.h"
#include "Live/ports/ShowWriter.h"
#include "Live/ports/SlidePages.h"
#include "LiveAgentKit/AgentTools.h"
#include "LiveEngine/LiveEngine.h"
#include "LiveEngine/TestTone.h"
#include "LiveEngine/MediaImportQueue.h"
#include "LiveEngine/ProviderPreviewSession.h"
#include "LiveEngine/MediaPreviewPlayer.h"
#include "LiveModel/CueInsertionPoint.h"
#include "LiveEngine/ReadyCheck.h"
#include "LiveModel/EditHistory.h"
#include "LiveModel/ShowPackageLock.h"
#include "LiveModel/ShowTemplate.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <utility>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace velarion {

struct AppPorts {
    Scheduler& scheduler;
    // What every engine shares for the life of the process.
    MediaPlayers& players;
    ImageLoader& images;
    TextCards& cards;
    SlidePictures& slides;
    AudioDevices* devices = nullptr;
    // One new OutputManager for each loaded show.
    OutputManagers& outputs;
    SlidePages& slidePages;
    DesktopServices& desktop;
    ShowFolders& folders;
    ShowWriter& writer;
    ApplicationControl& application;
    Preferences& preferences;
    // Built-in backdrop loops, handed to each new engine; optional.
    LiveEngine::BackdropReady backdropReady = {};
    LiveEngine::PrepareBackdrop prepareBackdrop = {};
    // The computer's MIDI input; without one MIDI control listens to nothing.
    MIDIControlCenter::MakeInput makeMIDIInput = {};
    // The music apps, handed to each new engine; without them stream cues
    // are simulated. `musicApps` tells the Ready check what is known of the
    // apps now, without blocking; `onProviderWillStart` is given to each
    // engine (the audition gives way with it).
    EngineStreams* streams = nullptr;
    std::function<std::pair<ReadyMusicApp, ReadyMusicApp>()> musicApps = {};
    // The players other than Spotify last seen running (their bus names),
    // without blocking; the look that `musicApps` starts refreshes them.
    std::function<std::vector<std::string>()> musicPlayers = {};
    std::function<void(StreamApp)> onProviderWillStart = {};
    // Durations and decks for imports; without them files still import.
    MediaImportTools importTools = {};
};

struct AppOptions {
    // Started with "--snapshot" or "--make-icon": no session key, no
    // keep-awake, no shows folder made.
    bool isSnapshotRun = false;
};

// Save As while an import writes into the package being copied.
struct SaveAsError : std::runtime_error {
    SaveAsError()
        : std::runtime_error("Import in progress — wait for it to finish, then choose Save As again.") {}
};

// An open slide editor of a deck of made slides.
struct SlideEditor {
    std::optional<Uuid> selection; // the slide it shows
    std::string title;             // "Slides — " and the item's name
    friend bool operator==(const SlideEditor&, const SlideEditor&) = default;
};

// The open rename field: which cue or section, and what committing does.
struct Rename {
    Uuid id;
    std::function<void(const std::string&)> apply;
};

// What an alert says.
struct AppAlert {
    std::string title;
    std::string text;
    std::vector<std::string> buttons;
    friend bool operator==(const AppAlert&, const AppAlert&) = default;
};

struct CollectedShow {
    std::filesystem::path copy;
    AppAlert alert; // "Done", and revealing `copy` in the file manager
};

struct UnsavedShow {
    std::filesystem::path location;
    std::string title;
    friend bool operator==(const UnsavedShow&, const UnsavedShow&) = default;
};

// Pictures and peaks the console keeps by stored name, emptied with each
// load.
struct PictureCaches {
    std::map<std::string, StillImage> thumbnails;
    std::map<std::string, StillImage> slideImages;
    std::map<std::string, std::vector<float>> waveforms;
};

enum class SaveOutcome { saved, failed, needsLocation };

class AppModel {
public:
    static constexpr double autosaveDelaySeconds = 0.8;
    static constexpr int historyLimit = 100;
    static constexpr std::size_t recentsLimit = 8;
    static inline const std::string awakeReason = "A Velarion show is open";
    static inline const std::string recoveredWarning =
        "Velarion quit unexpectedly and reopened this show. Nothing is playing — check the "
        "screens, then GO from Next.";

    AppModel(AppPorts ports, AppOptions options = {});
    ~AppModel();
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    std::function<void()> onChange;

    // ---- The open show ----
    const std::optional<Show>& show() const { return show_; }
    const std::optional<ShowPackage>& package() const { return package_; }
    LiveEngine* engine() const { return engine_.get(); }
    OutputManager* outputManager() const { return outputManager_.get(); }
    const EditHistory& history() const { return history_; }
    bool isDirty() const { return isDirty_; }
    // Calendar seconds of the last successful write; none for a scratch
    // show until its first autosave.
    const std::optional<double>& lastSavedWallSeconds() const { return lastSaved_; }

    // A new show from the template in a scratch package, loaded. False, with
    // the status set, when the package couldn't be made.
    bool newShow(ShowTemplate showTemplate, const std::string& title);
    // Opens a package; the open show stays when this throws (ShowPackageError,
    // ShowPackageInUse while another process has it open, or a file-system
    // error). Opening the open package does nothing.
    void openShow(const std::filesystem::path& at);
    // A scratch show answers `needsLocation`: the console asks for a place
    // and calls `saveAsFromPanel`.
    SaveOutcome save();
    // Throws SaveAsError while importing, else what the copy throws.
    void saveAs(const std::filesystem::path& to);
    // The save panel's choice: a failure goes to the status line.
    bool saveAsFromPanel(const std::filesystem::path& to);
    void close();
    // The one path by which a document becomes the open one.
    void load(const Show& show, const ShowPackage& package);
    // Tidies, redraws legacy decks and names machine-named media, saving
    // the result; a failure leaves the show as it came.
    Show organize(const Show& show, const ShowPackage& in);

    // ---- Editing ----
    bool edit(const ShowEdit& edit);
    // Several edits as one undo step: all go in, or none with the refusal's
    // words.
    bool editTogether(const std::vector<ShowEdit>& edits);
    void undo();
    void redo();
    bool isLocked() const { return history_.isLocked; }
    void setLocked(bool locked);
    // A new cue for a library item, named after it.
    static Cue makeCue(const MediaItem& item);
    // Inserts behind the selection and selects it: "Added " and its name.
    bool add(const Cue& cue);
    // Songs and made slides. Their pages are drawn off the main loop; the
    // change goes in as one edit once every page is written, and until then
    // the deck keeps its old pages. True when drawing began; a failure to
    // draw later goes to the status line. A newer change to the same deck
    // supersedes one still drawing.
    bool addSong(const Song& song);
    // Moves the cue's whole moment one step, over the neighbouring moment,
    // and keeps the selection: "Moved " and its name, " up" or " down".
    // False, saying nothing, when there is nowhere to go or in Show Mode.
    bool canMoveRundownCue(const Uuid& cueID, CueMoveDirection direction) const;
    bool moveRundownCue(const Uuid& cueID, CueMoveDirection direction);
    // Flips the cue between starting with the cue above and on GO; only
    // when the cue above exists and both are enabled.
    bool canToggleStartTogether(const Uuid& cueID) const;
    bool toggleStartTogether(const Uuid& cueID);
    bool updateSong(const Uuid& itemID, const Song& song);
    bool updateSlides(const Uuid& itemID, const std::function<void(std::vector<MadeSlide>&)>& change);
    // Draws the item's pages in the background, then runs `drawn` on the
    // main loop with the redrawn item, or with the failure's sentence. When a
    // newer draw of the same item, closing the show or opening another comes
    // first, `abandoned` runs instead, with the reason in words.
    void drawPages(MediaItem item, std::function<void(DrawnPages)> drawn,
                   std::function<void(const std::string&)> abandoned = {});
    // Whether slide pages are being drawn; the status says so meanwhile.
    bool isDrawingPages() const { return !pageDraws_.empty(); }
    static inline const std::string drawingPagesStatus = "Drawing the slides' pictures…";

    // ---- Playback ----
    void perform(const EngineCommand& command);
    // A text field's uncommitted change, run and cleared first in `perform`.
    // Each owner (a panel, an editor window) holds one at most: its newest.
    // The change must itself check that its owner is still there.
    void setPendingEdit(const void* owner, std::function<void()> pendingEdit);

    // ---- Files ----
    // The name the collect panel suggests: title, " (for another computer)"
    // and the extension.
    std::string collectSuggestedName() const;
    // A copy of the open show with its media at `to`; none, with the status
    // set, when it failed or there is nothing to copy.
    std::optional<CollectedShow> collectForAnotherMac(const std::filesystem::path& to);
    // The open panel's message for finding an item's file: Find “name”.
    static std::string findMissingPrompt(const MediaItem& item);
    bool findMissing(const Uuid& itemID, const std::filesystem::path& chosenFile);
    void reveal(const std::filesystem::path& item) { ports_.desktop.reveal(item); }
    // Scratch packages other than the open one, newest first.
    std::vector<UnsavedShow> unsavedShows() const;
    const std::vector<std::filesystem::path>& recents() const { return recents_; }

    // ---- Start and quit ----
    // At start only: reopens a show left open by a crash, with nothing
    // playing, and says so.
    void recoverAfterUnexpectedQuit();
    // The question to ask before quitting while cues run; none to quit at
    // once.
    std::optional<AppAlert> quitQuestion() const;
    // The last save and the session key removed; the engine keeps running.
    void prepareToQuit();
    // `prepareToQuit`, then the engine shut down: the application's last
    // call before the process ends.
    void finishQuit();

    // ---- Import bookkeeping ----
    bool isImporting() const { return isImporting_; }
    const std::optional<Uuid>& importRequestID() const { return importRequestID_; }
    // Starts an import of `fileCount` files: "Importing 3 files". None
    // without a show, while another import runs, or in Show Mode.
    std::optional<Uuid> beginImport(int fileCount);
    // Ends the import if it is still the running one.
    void endImport(const Uuid& requestID);
    // Copies the files in off the main loop, then adds an item for each and,
    // with `addCues`, a cue: at the end of the selection's place, or all at
    // `at` as one undo step (AppModelImport.cpp).
    void importFiles(const std::vector<std::filesystem::path>& files, bool addCues,
                     const std::optional<CueInsertionPoint>& at = std::nullopt);
    // Stops the running import; what was copied whole still comes in.
    void cancelImport();
    const std::optional<ImportProgress>& importProgress() const { return importProgress_; }
    // "Some files couldn't be imported", until dismissed.
    const std::optional<AppAlert>& importAlert() const { return importAlert_; }
    void dismissImportAlert();
    // The agent's import: the copy only, its result on the main loop, or
    // none with the reason. The caller adds the items.
    using MediaImported = std::function<void(std::optional<ImportResult> result, const std::string& failure)>;
    void agentImportMedia(const std::vector<std::filesystem::path>& files, MediaImported done);

    // ---- Preview of a library item on the Headphones output ----
    // Apart from the show: nothing reaches the engine or the house sound.
    // Without a Headphones output chosen nothing plays and the status says
    // so (AppModelPreview.cpp).
    static constexpr const char* noHeadphones =
        "Choose a Headphones output in Settings \u2192 Sound to preview privately.";
    bool previewMedia(const Uuid& itemID);
    void stopPreview();
    const std::optional<Uuid>& previewedMediaID() const { return previewedMediaID_; }
    // None until the first preview.
    const MediaPreviewPlayer* previewPlayer() const { return preview_.get(); }
    // About ten times a second while previewing: follows the position and
    // notices the end or a broken stream.
    void tickPreview();

    // ---- MIDI control ----
    MIDIControlCenter& midi() { return *midi_; }
    // At launch: listens when MIDI control is enabled.
    void startMIDI();

    // ---- Status ----
    const std::string& status() const { return status_; }
    void setStatus(const std::string& text);

    // ---- Selection, editors and console state ----
    const std::optional<Uuid>& selectedCueID() const { return selectedCueID_; }
    void selectCue(const std::optional<Uuid>& cueID);
    const std::optional<Uuid>& selectedMediaID() const { return selectedMediaID_; }
    void selectMedia(const std::optional<Uuid>& mediaID);
    // Open slide editors by deck item id.
    const std::map<Uuid, SlideEditor>& slideEditors() const { return slideEditors_; }
    // Only a deck of made slides can be edited; false otherwise.
    bool openSlideEditor(const Uuid& itemID);
    void closeSlideEditor(const Uuid& itemID);
    void selectSlide(const Uuid& itemID, const std::optional<Uuid>& slideID);
    const std::optional<MadeSlide>& copiedSlide() const { return copiedSlide_; }
    void setCopiedSlide(std::optional<MadeSlide> slide) { copiedSlide_ = std::move(slide); }
    const std::optional<Rename>& rename() const { return rename_; }
    void setRename(std::optional<Rename> rename);
    // Whether the operator's view follows what is live; back on at each
    // load and close.
    bool operatorViewFollowsLive() const { return operatorViewFollowsLive_; }
    void setOperatorViewFollowsLive(bool follows) { operatorViewFollowsLive_ = follows; }
    PictureCaches& caches() { return caches_; }

    // ---- Screens: the operator's tests and the program preview ----
    static constexpr const char* openTestWindowOffer = "Open audience test window";
    // Each refusal (Safe Slide or Panic) goes to the status line.
    void identifyScreen(const std::string& screenID);
    void setTestPattern(const std::string& screenID, std::optional<OutputTestPattern> pattern);
    void setTestWindowVisible(const std::string& screenID, bool visible);
    bool testWindowIsVisible(const std::string& screenID) const;
    void showProgramPreview();
    // The destination the program preview follows; none follows the first.
    void selectProgramOutput(const std::optional<std::string>& destination);
    // The preview offers `openTestWindowOffer` while no audience test window
    // is open; taking it adds the test window to the setup when it has none.
    bool offersTestWindow() const;
    void openAudienceTestWindow();
    // Mirrors of the program picture; kept across shows, held weakly.
    void addMirror(const std::weak_ptr<SceneSink>& sink);
    void removeMirror(const std::shared_ptr<SceneSink>& sink);
    std::vector<DisplayInfo> availableDisplays() const;

    // ---- The audition of a song cue in its music app (AppModelAudition.cpp) ----
    struct AuditionState {
        std::optional<Uuid> cueID; // the cue under test
        bool isStarting = false;
        std::optional<StreamStatus> status;
        std::string note; // stays after the test ends, until the next one
        friend bool operator==(const AuditionState&, const AuditionState&) = default;
    };
    static constexpr const char* noMusicApps = "The music apps can't be reached from this computer.";
    // Plays the Spotify or Music song cue in its app without firing it;
    // false, with the note set, when it can't be tested.
    bool audition(const Uuid& cueID);
    void stopAudition();
    AuditionState auditionState() const;

    // ---- Sound: the outputs to choose from and the test tone ----
    // The computer's sound outputs now; empty without a sound server.
    std::vector<AudioDevice> soundOutputs() const;
    // The test tone on the bus's chosen device (the system output when none
    // is chosen); false, with the status set, when that device is gone.
    bool playTestTone(AudioBus bus);
    static inline const std::string toneDeviceMissing = "The chosen sound output isn't connected.";

    // The operator's preferences, as given at construction.
    Preferences& preferences() { return ports_.preferences; }

    // ---- The agent's grants and connection ----
    bool agentMayRun() const { return agentMayRun_; }
    void setAgentMayRun(bool may);
    bool agentMayEdit() const { return agentMayEdit_; }
    void setAgentMayEdit(bool may);
    bool skipsQuitQuestion() const { return skipsQuitQuestion_; }
    int agentConnections() const { return agentConnections_; }
    void setAgentConnections(int count);
    const std::optional<std::string>& agentError() const { return agentError_; }
    void setAgentError(std::optional<std::string> error);
    bool controlsMusicApps() const { return controlsMusicApps_; }

    // ---- What the agent service asks for ----
    const EngineState* engineState() const { return engine_ ? &engine_->state() : nullptr; }
    std::set<AgentTier> allowedTiers() const;
    // None when the edit went in, else why not.
    std::optional<std::string> agentEdit(const ShowEdit& edit);
    void agentPerform(const EngineCommand& command) { perform(command); }
    void agentLock(bool locked) { setLocked(locked); }
    // These three throw AgentFailure with the operator's words.
    void agentNewShow(const std::string& title, ShowTemplate showTemplate,
                      const std::optional<std::filesystem::path>& saveTo);
    void agentOpenShow(const std::filesystem::path& at);
    void agentSaveShow(const std::optional<std::filesystem::path>& to);
    bool agentUndo();
    bool agentRedo();
    void agentNote(const std::string& text);
    void agentQuit(bool restart);

    // ---- The Ready check ----
    static constexpr const char* ndiMissing = "NDI isn't part of this version of Velarion yet.";
    // What the check is given beyond the show: the outputs' health and the
    // house level from the engine; music apps, MIDI, the NDI runtime and the
    // main display as far as this version knows them.
    ReadyCheckInputs readyInputs() const;
    // The music players that a Music cue could drive, as last seen.
    std::vector<std::string> runningMusicPlayers() const {
        return ports_.musicPlayers ? ports_.musicPlayers() : std::vector<std::string>{};
    }
    // The check on the open show; empty when none is open.
    std::vector<ReadyItem> readyItems() const;

private:
    void changed();
    void refuse(const std::string& text);
    void commit(Show show, const std::set<Uuid>& touched);
    void updateSlideEditors(const Show& old);
    void scheduleSave();
    void autosave();
    void autosaveFinished(std::uint64_t generation, const std::optional<std::string>& error);
    // Hands a pending autosave to the writer now, as a show leaves.
    void flushPendingSave();
    // Waits for queued autosaves, then writes the open show; throws.
    void saveNow();
    void markSaved();
    void shutdownEngine();
    void remember(const std::filesystem::path& location);
    // Says so in the status line when a preference didn't reach the disk.
    void preferencesWritten(bool written);
    void redrawAndUpdate(MediaItem item, const std::string& failurePrefix);
    // Drops every unfinished draw, telling each caller why.
    void abandonPageDraws(const std::string& reason);
    // The item as a draw under way will leave it, else as the show has it.
    const MediaItem* latestItem(const Uuid& itemID) const;
    std::weak_ptr<int> token() const { return life_; }
    std::unique_ptr<MIDIControlCenter> makeMIDIControl();
    // Live playback is about to take the app: the audition gives way.
    void providerWillStart(StreamApp app);

    AppPorts ports_;
    AppOptions options_;
    ShowSession session_;

    std::optional<Show> show_;
    std::optional<ShowPackage> package_;
    // Held while `package_` is the open one, so no other process opens it.
    std::optional<ShowPackageLock> packageLock_;
    // The engine holds a reference to its manager: declared after it, so
    // destroyed first.
    std::unique_ptr<OutputManager> outputManager_;
    std::vector<std::weak_ptr<SceneSink>> mirrors_;
    std::unique_ptr<LiveEngine> engine_;
    EditHistory history_{historyLimit};
    bool isDirty_ = false;
    std::optional<double> lastSaved_;
    // Counts committed changes; a write's result applies only when no
    // newer change came meanwhile.
    std::uint64_t editGeneration_ = 0;
    TaskHandle saveTask_;
    std::string status_;
    bool isImporting_ = false;
    std::optional<Uuid> importRequestID_;
    std::optional<ImportProgress> importProgress_;
    std::optional<AppAlert> importAlert_;
    TaskHandle importTask_;
    void finishImport(const Uuid& requestID, const Uuid& showID, ImportResult result, bool addCues,
                      const std::optional<CueInsertionPoint>& at);
    MediaImportQueue& importQueue();
    void startImportTask(const std::vector<std::filesystem::path>& files, const Uuid& requestID,
                         std::function<void(ImportResult)> finished);
    // Made at the first import; its thread stops before the model goes.
    std::unique_ptr<MediaImportQueue> importQueue_;
    std::unique_ptr<MediaPreviewPlayer> preview_;
    std::optional<Uuid> previewedMediaID_;
    bool previewStarts_ = false; // plays once the file has opened
    bool agentMayRun_ = false;
    bool agentMayEdit_ = false;
    bool skipsQuitQuestion_ = false;
    int agentConnections_ = 0;
    std::optional<std::string> agentError_;
    bool controlsMusicApps_ = true;
    std::vector<std::filesystem::path> recents_;
    std::optional<MadeSlide> copiedSlide_;
    std::vector<std::pair<const void*, std::function<void()>>> pendingEdits_;
    std::unique_ptr<AwakeActivity> awakeActivity_;
    // Made at the first tone.
    std::unique_ptr<TestTone> testTone_;
    std::optional<Uuid> selectedCueID_;
    std::optional<Uuid> selectedMediaID_;
    std::map<Uuid, SlideEditor> slideEditors_;
    std::optional<Rename> rename_;
    bool operatorViewFollowsLive_ = true;
    PictureCaches caches_;
    struct PageDraw {
        std::uint64_t number = 0;
        TaskHandle handle;
        std::function<void(const std::string&)> abandoned;
        // What the deck becomes once drawn: the base of a newer change, so
        // that two quick changes both count.
        MediaItem item;
    };
    // Unfinished draws by deck item id; each newer one replaces the older.
    std::map<Uuid, PageDraw> pageDraws_;
    std::uint64_t pageDrawCount_ = 0;
    // Made at the first audition; its work holds it weakly.
    std::unique_ptr<ProviderPreviewSession> audition_;
    std::string auditionNote_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
    // Last, so that its input stops before anything its hooks reach goes.
    std::unique_ptr<MIDIControlCenter> midi_ = makeMIDIControl();
};

} // namespace velarion
