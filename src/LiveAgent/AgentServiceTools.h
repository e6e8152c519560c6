#pragma once
// Internal to AgentService: one function per tool, split over AgentTools*.cpp
// by area, and the helpers they share (argument readers, references, the
// JSON summaries, edits through the host). A tool throws AgentFailure to
// refuse; its sentence is what the agent reads.
//
// Thread: main thread, like the service.

#include "LiveAgent/AgentHost.h"
#include "LiveAgentKit/AgentFailure.h"
#include "LiveAgentKit/JSONValue.h"
#include "LiveEngine/ports/Scheduler.h"

#include <filesystem>
#include <functional>
#include <map>
#include <unordered_map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velarion::agentService {

struct AgentCall;

// A tool's answer that waits for slide pictures: the item to draw, and
// what to do on the main loop once it is drawn.
struct AfterDrawing {
    MediaItem item;
    // Put before the drawing's failure sentence.
    std::string failureWords;
    std::function<JSONValue(AgentCall& call, const MediaItem& drawn)> finish;
};

// One tool call: the host, alive for the call, and the open show.
struct AgentCall {
    AgentHost& host;
    Scheduler& scheduler;
    std::weak_ptr<AgentHost> weakHost;
    // Set by a tool whose answer is finished later: by `afterDrawing` once
    // the pictures are drawn, or by `offMainLoop`, which reads only what it
    // captured and runs on a worker thread. The tool then returns null.
    std::optional<AfterDrawing> afterDrawing;
    std::function<JSONValue()> offMainLoop;
    // Set by a tool that waits for the host: `afterHost` is given `finish`,
    // which it calls once, on the main loop, with what builds the answer.
    using Finish = std::function<void(std::function<JSONValue(AgentCall& call)> build)>;
    std::function<void(Finish finish)> afterHost;

    // The open show as it stands now; refuses when none is open.
    Show show() const;
    void note(const std::string& text) const { host.agentNote(text); }
};

using Tool = JSONValue (*)(AgentCall& call, const JSONValue& arguments);

// The tool function of that name, or null.
Tool tool(std::string_view name);

inline constexpr const char* noShowOpen = "No show is open. Use new_show or open_show.";

// --- Argument readers -------------------------------------------------------

// The value's text, trimmed; refuses "Give <name>." when absent or empty.
std::string text(const JSONValue* value, std::string_view name);
// A ClearTarget by its word; refuses "<name> isn't one of the allowed values."
ClearTarget choice(const JSONValue* value, std::string_view name);
// "HH:MM" as minutes after midnight; absent or empty text gives none.
std::optional<int> clock(const JSONValue* value);
// A path the agent typed: a leading tilde is the home folder; a show path
// gets ".velarion" when it lacks it.
std::filesystem::path url(const std::string& text, bool isShow);
// A boolean that JSONValue can read, or `fallback` when the key is absent.
bool flag(const JSONValue* value, bool fallback);
// "HH:MM" of a minute of the day.
std::string clockText(int minuteOfDay);

// --- Edits and notes --------------------------------------------------------

// Applies the edit through the host, refusing with the host's words, and
// notes "Agent: " and what changed.
void apply(AgentCall& call, const ShowEdit& edit);
// What `apply` notes after "Agent: ".
std::string editWords(const ShowEdit& edit);

// --- References -------------------------------------------------------------

const Cue& findCue(const JSONValue* value, const Show& show);
const Section& findSection(const JSONValue* value, const Show& show);
const CueGroup& findCueGroup(const JSONValue* value, const Show& show);
// A library item; `kindWord` names what was asked for ("video", "deck"), and
// `expected`, when given, is the kind the item must have.
const MediaItem& findMedia(const JSONValue* value, const Show& show, std::string_view kindWord,
                           std::optional<MediaKind> expected);
// The word for an item's kind in sentences: "video", "image", "sound file",
// "deck".
std::string_view kindWord(MediaKind kind);

// --- Summaries --------------------------------------------------------------

// Cue numbers, groups and library items of a show, indexed once for a whole
// summary (the show's own lookups scan the lists, thousands of times over).
class ShowLookup {
public:
    explicit ShowLookup(const Show& show);
    int number(const Uuid& cueID) const;
    std::optional<Uuid> groupID(const Uuid& cueID) const;
    const MediaItem* media(const Uuid& id) const;
    const Show& show() const { return show_; }

private:
    const Show& show_;
    std::unordered_map<Uuid, int> numbers_;
    std::unordered_map<Uuid, Uuid> groups_;
    std::unordered_map<Uuid, const MediaItem*> media_;
};

// What get_show reads from the host, taken on the main loop; the summary
// is then built from it on any thread.
struct ShowSnapshot {
    Show show;
    std::optional<ShowPackage> package;
    bool locked = false;
    std::vector<AudioDevice> outputs;
};
ShowSnapshot showSnapshot(const AgentCall& call);
JSONValue showSummary(const ShowSnapshot& snapshot);
JSONValue showSummary(const AgentCall& call);
JSONValue stateSummary(const AgentCall& call);
JSONValue screensSummary(const OutputSetup& setup);
JSONValue cueObject(const ShowLookup& lookup, const Cue& cue);
JSONValue cueObject(const Show& show, const Uuid& cueID);
JSONValue sectionObject(const ShowLookup& lookup, const Section& section);
JSONValue groupObject(const CueGroup& group);
JSONValue mediaObject(const MediaItem& item);
JSONValue songObject(const MediaItem& item);
// "slides", "video" … "spotify" for both Spotify kinds, "lower_third".
std::string_view cueType(const CueKind& kind);
// A preset's word when the layers are one, else the list of layer words.
JSONValue layersValue(const std::vector<LayerKind>& layers);

// --- Cue building -----------------------------------------------------------

void validateCueArguments(const JSONValue& arguments, std::string_view type);
CueKind makeKind(const JSONValue& arguments, std::string_view type, const Show& show,
                 const std::optional<CueKind>& base);
std::string defaultName(std::string_view type, const CueKind& kind, const JSONValue& arguments,
                        const Show& show);
void applyCommon(const JSONValue& arguments, Cue& cue, const Show& show);
// "spotify:<kind>:<id>" from a Spotify link or URI; none for anything else.
std::optional<std::string> spotifyURI(std::string_view text);

// --- Outputs ----------------------------------------------------------------

std::vector<LayerKind> outputLayers(const JSONValue& value);
Uuid outputUUID(const JSONValue& value, std::string_view word);
std::string displayID(const std::string& text, const std::vector<DisplayInfo>& displays);
ScreenDestination screenDestination(const JSONValue& value,
                                    const std::vector<DisplayInfo>& displays);
void applyScreenLook(const JSONValue& arguments, LogicalScreen& screen,
                     const std::vector<OutputLook>& looks);
void applyLegacyScreens(const JSONValue& arguments, OutputSetup& setup,
                        const std::vector<DisplayInfo>& displays);
// Keeps the older fields in step with the logical screens, for readers of
// the older form.
void syncLegacyScreenConnections(OutputSetup& setup);
void validateOutputConfiguration(const OutputSetup& setup);

// --- Tools ------------------------------------------------------------------

// Reading.
JSONValue getShow(AgentCall& call, const JSONValue& arguments);
JSONValue getState(AgentCall& call, const JSONValue& arguments);
JSONValue readyCheck(AgentCall& call, const JSONValue& arguments);
JSONValue listDisplays(AgentCall& call, const JSONValue& arguments);
JSONValue listNDISources(AgentCall& call, const JSONValue& arguments);
JSONValue addNDISource(AgentCall& call, const JSONValue& arguments);
JSONValue launchApp(AgentCall& call, const JSONValue& arguments);
// Running.
JSONValue go(AgentCall& call, const JSONValue& arguments);
JSONValue fireCue(AgentCall& call, const JSONValue& arguments);
JSONValue setNext(AgentCall& call, const JSONValue& arguments);
JSONValue panic(AgentCall& call, const JSONValue& arguments);
JSONValue pauseAll(AgentCall& call, const JSONValue& arguments);
JSONValue resumeAll(AgentCall& call, const JSONValue& arguments);
JSONValue talkOver(AgentCall& call, const JSONValue& arguments);
JSONValue clear(AgentCall& call, const JSONValue& arguments);
JSONValue safeSlide(AgentCall& call, const JSONValue& arguments);
JSONValue slide(AgentCall& call, const JSONValue& arguments);
JSONValue sendMessage(AgentCall& call, const JSONValue& arguments);
JSONValue adjustTimer(AgentCall& call, const JSONValue& arguments);
JSONValue quitApp(AgentCall& call, const JSONValue& arguments);
JSONValue restartApp(AgentCall& call, const JSONValue& arguments);
JSONValue lockShow(AgentCall& call, const JSONValue& arguments);
// The whole show.
JSONValue newShow(AgentCall& call, const JSONValue& arguments);
JSONValue openShow(AgentCall& call, const JSONValue& arguments);
JSONValue saveShow(AgentCall& call, const JSONValue& arguments);
JSONValue setTitle(AgentCall& call, const JSONValue& arguments);
JSONValue setSafeSlide(AgentCall& call, const JSONValue& arguments);
JSONValue undo(AgentCall& call, const JSONValue& arguments);
JSONValue redo(AgentCall& call, const JSONValue& arguments);
// Sections.
JSONValue addSection(AgentCall& call, const JSONValue& arguments);
JSONValue updateSection(AgentCall& call, const JSONValue& arguments);
JSONValue deleteSection(AgentCall& call, const JSONValue& arguments);
// Cues and cue groups.
JSONValue addCue(AgentCall& call, const JSONValue& arguments);
JSONValue updateCue(AgentCall& call, const JSONValue& arguments);
JSONValue deleteCue(AgentCall& call, const JSONValue& arguments);
JSONValue moveCue(AgentCall& call, const JSONValue& arguments);
JSONValue createCueGroup(AgentCall& call, const JSONValue& arguments);
JSONValue updateCueGroup(AgentCall& call, const JSONValue& arguments);
JSONValue removeCueGroup(AgentCall& call, const JSONValue& arguments);
// Songs.
JSONValue addSong(AgentCall& call, const JSONValue& arguments);
JSONValue updateSong(AgentCall& call, const JSONValue& arguments);
// Screens and feeds.
JSONValue setScreens(AgentCall& call, const JSONValue& arguments);
JSONValue setNetworkFeeds(AgentCall& call, const JSONValue& arguments);
// Media.
JSONValue importMedia(AgentCall& call, const JSONValue& arguments);
// Tools whose feature isn't in this build yet.
JSONValue notBuiltYet(AgentCall& call, const JSONValue& arguments);

} // namespace velarion::agentService
