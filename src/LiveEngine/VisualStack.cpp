#include "LiveEngine/VisualStack.h"

#include "LiveModel/LiveCheck.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velarion {
namespace {

// Pointer constness follows the stack's, so one lookup serves both the
// const queries and the operations that change what they find.
template <class Stack>
auto runEntryIn(Stack& stack, const Uuid& runID, LayerKind kind)
    -> decltype(&stack.entries.begin()->second) {
    if (auto active = stack.entries.find(kind);
        active != stack.entries.end() && active->second.runID == runID)
        return &active->second;
    for (auto& item : stack.retained) {
        if (item.second.first == kind && item.second.second.runID == runID)
            return &item.second.second;
    }
    return nullptr;
}

// What a show or an update for `runID` on `kind` acts on: the run's own
// entry, else the active one when it belongs to the same run (or, with no
// run, to none).
template <class Stack>
auto matchingIn(Stack& stack, const std::optional<Uuid>& runID, LayerKind kind)
    -> decltype(&stack.entries.begin()->second) {
    if (runID) {
        if (auto* found = runEntryIn(stack, *runID, kind))
            return found;
    }
    if (auto active = stack.entries.find(kind);
        active != stack.entries.end() && active->second.runID == runID)
        return &active->second;
    return nullptr;
}

// Layer ids are gathered before clearing: each clear may promote a retained
// entry, which changes the maps being walked.
template <class Wanted> std::vector<Uuid> layersWhere(const VisualStack& stack, Wanted wanted) {
    std::vector<Uuid> layers;
    for (const auto& [kind, entry] : stack.entries) {
        if (wanted(kind, entry))
            layers.push_back(entry.layerID);
    }
    for (const auto& item : stack.retained) {
        if (wanted(item.second.first, item.second.second))
            layers.push_back(item.first);
    }
    return layers;
}

template <class Change> void forEachRunEntry(VisualStack& stack, const Uuid& runID, Change change) {
    for (auto& item : stack.entries) {
        if (item.second.runID == runID)
            change(item.second);
    }
    for (auto& item : stack.retained) {
        if (item.second.second.runID == runID)
            change(item.second.second);
    }
}

double limited(double value, double low, double high) {
    return std::isnan(value) ? low : std::clamp(value, low, high);
}

constexpr double maxDissolveSeconds = 10;

} // namespace

Uuid VisualStack::show(SceneContent content, LayerKind kind, std::optional<Uuid> runID,
                       double fadeSeconds, SceneScaling scaling,
                       std::optional<CueGeometry> geometry) {
    return place(std::move(content), kind, runID, fadeSeconds, scaling, geometry, false);
}

Uuid VisualStack::showOver(SceneContent content, LayerKind kind, const Uuid& runID, double fadeSeconds,
                           SceneScaling scaling, std::optional<CueGeometry> geometry) {
    return place(std::move(content), kind, runID, fadeSeconds, scaling, geometry, true);
}

Uuid VisualStack::place(SceneContent content, LayerKind kind, std::optional<Uuid> runID,
                        double fadeSeconds, SceneScaling scaling, std::optional<CueGeometry> geometry,
                        bool keepingReplaced) {
    DestinationKeys exclusions;
    if (const Entry* replaced = matchingIn(*this, runID, kind); replaced && keepingReplaced) {
        // Kept whole underneath; the new picture inherits where it may not go.
        exclusions = replaced->excludedDestinations;
    } else if (replaced) {
        // The same run showing again: the new picture takes the old one's
        // place and its exclusions, and the old one simply stops.
        const Uuid replacedID = replaced->layerID;
        if (auto removed = removeActive(replacedID))
            exclusions = std::move(removed->second.excludedDestinations);
        order.erase(replacedID);
    }
    if (auto active = entries.find(kind); active != entries.end()) {
        const Uuid activeID = active->second.layerID;
        retained.insert_or_assign(activeID, KindEntry{kind, std::move(active->second)});
        entries.erase(active);
    }
    const Uuid layerID = Uuid::random();
    if (VELARION_CHECK(nextOrder < std::numeric_limits<std::uint64_t>::max(),
                       "visual stack ran out of order numbers"))
        ++nextOrder;
    order[layerID] = nextOrder;
    entries.insert_or_assign(kind,
                             Entry{layerID, runID, std::move(content), scaling, fadeSeconds,
                                   geometry.value_or(CueGeometry::full()), std::move(exclusions)});
    return layerID;
}

void VisualStack::update(SceneContent content, LayerKind kind, std::optional<Uuid> runID) {
    if (Entry* found = matchingIn(*this, runID, kind))
        found->content = std::move(content);
}

void VisualStack::clear(const Uuid& runID, double fadeSeconds) {
    const auto layers =
        layersWhere(*this, [&](LayerKind, const Entry& entry) { return entry.runID == runID; });
    for (const Uuid& layer : layers)
        moveToLeaving(layer, fadeSeconds);
}

void VisualStack::clear(LayerKind kind, double fadeSeconds) {
    const auto layers =
        layersWhere(*this, [&](LayerKind entryKind, const Entry&) { return entryKind == kind; });
    for (const Uuid& layer : layers)
        moveToLeaving(layer, fadeSeconds);
}

void VisualStack::clearLayer(const Uuid& layerID, double fadeSeconds) {
    // A copy: callers often pass the id of the very entry that is removed.
    const Uuid layer = layerID;
    moveToLeaving(layer, fadeSeconds);
}

void VisualStack::clearAll(double fadeSeconds) {
    const auto layers = layersWhere(*this, [](LayerKind, const Entry&) { return true; });
    for (const Uuid& layer : layers)
        moveToLeaving(layer, fadeSeconds);
}

void VisualStack::exclude(const DestinationKeys& destinations, const Uuid& layerID) {
    if (destinations.empty())
        return;
    const auto widen = [&](Entry& entry) {
        entry.excludedDestinations.insert(destinations.begin(), destinations.end());
    };
    for (auto& item : entries) {
        if (item.second.layerID == layerID)
            widen(item.second);
    }
    if (auto found = retained.find(layerID); found != retained.end())
        widen(found->second.second);
    // A fading picture must not flash up on a screen it was just taken off.
    if (auto found = leaving.find(layerID); found != leaving.end())
        widen(found->second.second);
}

void VisualStack::resetExclusions(const Uuid& runID) {
    forEachRunEntry(*this, runID, [](Entry& entry) { entry.excludedDestinations.clear(); });
}

void VisualStack::setGeometry(std::optional<CueGeometry> geometry, const Uuid& runID) {
    const CueGeometry placed = geometry.value_or(CueGeometry::full());
    forEachRunEntry(*this, runID, [&](Entry& entry) { entry.geometry = placed; });
}

std::optional<LayerKind> VisualStack::layer(const Uuid& runID) const {
    for (const auto& [kind, entry] : entries) {
        if (entry.runID == runID)
            return kind;
    }
    for (const auto& item : retained) {
        if (item.second.second.runID == runID)
            return item.second.first;
    }
    return std::nullopt;
}

const VisualStack::Entry* VisualStack::entry(const Uuid& runID, LayerKind kind) const {
    return runEntryIn(*this, runID, kind);
}

std::optional<Uuid> VisualStack::runID(LayerKind kind) const {
    auto active = entries.find(kind);
    return active == entries.end() ? std::nullopt : active->second.runID;
}

std::optional<Uuid> VisualStack::layerID(LayerKind kind) const {
    auto active = entries.find(kind);
    if (active == entries.end())
        return std::nullopt;
    return active->second.layerID;
}

std::vector<VisualStack::KindEntry> VisualStack::allEntries() const {
    std::vector<KindEntry> all;
    all.reserve(entries.size() + retained.size());
    for (const auto& item : entries)
        all.push_back(item);
    for (const auto& item : retained)
        all.push_back(item.second);
    return all;
}

std::map<Uuid, Uuid> VisualStack::layerRuns() const {
    std::map<Uuid, Uuid> runs;
    forEachEntry([&](const Entry& entry) {
        if (entry.runID)
            runs.emplace(entry.layerID, *entry.runID);
    });
    return runs;
}

std::map<Uuid, LayerKind> VisualStack::layerKinds() const {
    std::map<Uuid, LayerKind> kinds;
    for (const auto& [kind, entry] : entries)
        kinds.emplace(entry.layerID, kind);
    for (const auto& item : retained)
        kinds.emplace(item.first, item.second.first);
    for (const auto& item : leaving)
        kinds.emplace(item.first, item.second.first);
    return kinds;
}

std::map<Uuid, DestinationKeys> VisualStack::layerExclusions() const {
    std::map<Uuid, DestinationKeys> exclusions;
    forEachEntry([&](const Entry& entry) {
        if (!entry.excludedDestinations.empty())
            exclusions.emplace(entry.layerID, entry.excludedDestinations);
    });
    return exclusions;
}

OutputScene VisualStack::scene() const {
    struct Placed {
        LayerKind kind;
        std::uint64_t number;
        const Entry* entry;
    };
    std::vector<Placed> placed;
    placed.reserve(entries.size() + retained.size() + leaving.size());
    for (const auto& [kind, entry] : entries)
        placed.push_back({kind, orderOf(entry.layerID), &entry});
    for (const auto& item : retained)
        placed.push_back({item.second.first, orderOf(item.first), &item.second.second});
    for (const auto& item : leaving)
        placed.push_back({item.second.first, orderOf(item.first), &item.second.second});
    // Kinds stack in declared order; within a kind the newer picture is above.
    std::stable_sort(placed.begin(), placed.end(), [](const Placed& a, const Placed& b) {
        if (a.kind != b.kind)
            return a.kind < b.kind;
        return a.number < b.number;
    });

    OutputScene scene;
    scene.destinationID = audienceID;
    scene.background = SceneColor::black();
    scene.layers.reserve(placed.size());
    for (const Placed& item : placed) {
        const Entry& entry = *item.entry;
        const CueGeometry& geometry = entry.geometry;
        SceneLayer layer;
        layer.id = entry.layerID;
        layer.content = entry.content;
        layer.scaling = entry.scaling;
        layer.frame =
            SceneRect{geometry.x + 0.5 - geometry.scale * 0.5,
                      geometry.y + 0.5 - geometry.scale * 0.5, geometry.scale, geometry.scale};
        layer.opacity = limited(geometry.opacity, 0, 1);
        layer.dissolveSeconds = limited(entry.dissolveSeconds, 0, maxDissolveSeconds);
        // Cue rotation turns the other way from the renderer's; keep the flip.
        layer.rotationDegrees = -geometry.rotation;
        scene.layers.push_back(std::move(layer));
    }
    return scene;
}

bool VisualStack::settle() {
    if (leaving.empty())
        return false;
    for (const auto& item : leaving)
        order.erase(item.first);
    leaving.clear();
    return true;
}

std::optional<VisualStack::KindEntry> VisualStack::removeActive(const Uuid& layerIDRef) {
    const Uuid layerID = layerIDRef; // the caller's may live in the entry removed
    auto active = std::find_if(entries.begin(), entries.end(),
                               [&](const auto& item) { return item.second.layerID == layerID; });
    if (active == entries.end()) {
        auto node = retained.extract(layerID);
        if (node.empty())
            return std::nullopt;
        return std::move(node.mapped());
    }
    const LayerKind kind = active->first;
    KindEntry removed{kind, std::move(active->second)};
    entries.erase(active);

    // The newest picture underneath comes back; on a tie the first one met.
    auto promoted = retained.end();
    std::uint64_t promotedNumber = 0;
    for (auto it = retained.begin(); it != retained.end(); ++it) {
        if (it->second.first != kind)
            continue;
        const std::uint64_t number = orderOf(it->first);
        if (promoted == retained.end() || number > promotedNumber) {
            promoted = it;
            promotedNumber = number;
        }
    }
    if (promoted != retained.end()) {
        entries.insert_or_assign(kind, std::move(promoted->second.second));
        retained.erase(promoted);
    }
    return removed;
}

void VisualStack::moveToLeaving(const Uuid& layerID, double fadeSeconds) {
    const Uuid layer = layerID;
    auto removed = removeActive(layer);
    if (!removed)
        return;
    removed->second.dissolveSeconds = fadeSeconds;
    leaving.insert_or_assign(layer, std::move(*removed));
}

std::uint64_t VisualStack::orderOf(const Uuid& layerID) const {
    auto found = order.find(layerID);
    return found == order.end() ? 0 : found->second;
}

} // namespace velarion
