#pragma once
// VisualStack: the live engine's record of what the audience sees. Cues put
// pictures on it, clear them or keep them off some screens; it builds the
// scene that describes all of it and never talks to a screen itself.
//
// Contract.
// - Each LayerKind has at most one active entry. A newer entry on a kind
//   displaces the active one into `retained`, where it stays visible
//   underneath until cleared, and comes back as active when the entry above
//   it goes. Showing again for the same run on the same kind replaces that
//   run's entry in place: a new layer id (so the renderer dissolves), the
//   same exclusions, and no fade-out of the old one.
// - A cleared entry waits in `leaving` for exactly one more scene, carrying
//   its fade-out as its dissolve; `settle` drops it once that scene is out.
// - Unknown runs and layer ids are ignored: the stack has no failure of its
//   own.
// - Ownership: the engine owns the stack; the fields are public to read and
//   are changed only through the operations, which keep them consistent.
// - Thread: main thread only. Lifetime: a plain value.

#include "Identity/Uuid.h"
#include "LiveModel/Cue.h"
#include "LiveModel/LayerKind.h"
#include "ShowStage/OutputScene.h"
#include "ShowStage/SceneContent.h"
#include "ShowStage/SceneScaling.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace velarion {

using DestinationKeys = std::set<std::string>;

class VisualStack {
public:
    struct Entry {
        Uuid layerID;              // the scene layer's id; never changes
        std::optional<Uuid> runID; // none: a picture the engine owns itself
        SceneContent content;
        SceneScaling scaling = SceneScaling::fit;
        // The fade-in while it is new; the fade-out once it is leaving.
        double dissolveSeconds = 0;
        CueGeometry geometry = CueGeometry::full();
        DestinationKeys excludedDestinations; // where it must not appear

        friend bool operator==(const Entry&, const Entry&) = default;
    };
    using KindEntry = std::pair<LayerKind, Entry>;

    // The destination of every scene the stack builds.
    static constexpr Uuid audienceID{{0x5B, 0x6C, 0x7D, 0x8E, 0x00, 0x00, 0x40, 0x00, 0x80, 0x00,
                                      0x00, 0x00, 0x00, 0x00, 0xA0, 0xD1}};

    std::map<LayerKind, Entry> entries;  // the active entry of each kind
    std::map<Uuid, KindEntry> retained;  // displaced, still visible underneath
    std::map<Uuid, KindEntry> leaving;   // cleared, in one more scene
    std::map<Uuid, std::uint64_t> order; // layer id to its place, newer higher; absent is 0
    std::uint64_t nextOrder = 0;         // the last number handed out

    // Puts a new picture on `kind` and gives its layer id. Absent geometry is
    // the full frame.
    Uuid show(SceneContent content, LayerKind kind, std::optional<Uuid> runID, double fadeSeconds,
              SceneScaling scaling, std::optional<CueGeometry> geometry);
    // The run's next picture over its present one on `kind`, which stays
    // underneath, whole, until cleared: a dissolve between two pictures of one
    // run, as at the seam of a crossfading loop.
    Uuid showOver(SceneContent content, LayerKind kind, const Uuid& runID, double fadeSeconds,
                  SceneScaling scaling, std::optional<CueGeometry> geometry);
    // Changes only the content of the matching entry, keeping its layer id so
    // that the change is a cut. Nothing matching: nothing happens.
    void update(SceneContent content, LayerKind kind, std::optional<Uuid> runID);

    // Each cleared entry fades out over `fadeSeconds` in the next scene.
    void clear(const Uuid& runID, double fadeSeconds);
    void clear(LayerKind kind, double fadeSeconds);
    void clearLayer(const Uuid& layerID, double fadeSeconds);
    void clearAll(double fadeSeconds);

    // Keeps the entry off these destinations as well; a leaving one too.
    void exclude(const DestinationKeys& destinations, const Uuid& layerID);
    void resetExclusions(const Uuid& runID);
    // Absent geometry is the full frame. Applies to every entry of the run.
    void setGeometry(std::optional<CueGeometry> geometry, const Uuid& runID);

    // The kind of the run's first entry, active ones first in kind order;
    // none when the run has nothing on the stack but leaving entries.
    std::optional<LayerKind> layer(const Uuid& runID) const;
    // The run's entry on `kind`, active first; null when it has none. Valid
    // until the stack next changes.
    const Entry* entry(const Uuid& runID, LayerKind kind) const;
    std::optional<Uuid> runID(LayerKind kind) const;
    std::optional<Uuid> layerID(LayerKind kind) const;

    // Active entries, then retained ones; in no particular stacking order.
    std::vector<KindEntry> allEntries() const;
    // Over active, retained and leaving entries alike.
    std::map<Uuid, Uuid> layerRuns() const; // only entries that have a run
    std::map<Uuid, LayerKind> layerKinds() const;
    std::map<Uuid, DestinationKeys> layerExclusions() const; // only non-empty sets

    // The audience scene: kinds bottom to top, within a kind older below.
    OutputScene scene() const;
    // Forgets the leaving entries once their last scene is out; true when
    // there were any.
    bool settle();

private:
    // Active, retained and leaving entries alike.
    template <class Visit> void forEachEntry(Visit visit) const {
        for (const auto& item : entries) visit(item.second);
        for (const auto& item : retained) visit(item.second.second);
        for (const auto& item : leaving) visit(item.second.second);
    }
    std::optional<KindEntry> removeActive(const Uuid& layerID);
    Uuid place(SceneContent content, LayerKind kind, std::optional<Uuid> runID, double fadeSeconds,
               SceneScaling scaling, std::optional<CueGeometry> geometry, bool keepingReplaced);
    void moveToLeaving(const Uuid& layerID, double fadeSeconds);
    std::uint64_t orderOf(const Uuid& layerID) const;
};

} // namespace velarion
