#include "Platform/App/HeadlessOutputs.h"

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

} // namespace

HeadlessOutputs::HeadlessOutputs(Scheduler& scheduler) : scheduler_(scheduler) {}

HeadlessOutputs::~HeadlessOutputs() = default;

void HeadlessOutputs::apply(const OutputScene& scene, const LayerKinds&, const VideoSurfaces&, const LayerRoutes&,
                            const LyricPartPictures&, const std::optional<SceneID>&) {
    if (closed_) return;
    scene_ = scene;
    ++scenesApplied_;
    std::erase_if(mirrors_, [](const std::weak_ptr<SceneSink>& sink) { return sink.expired(); });
    for (const auto& mirror : mirrors_)
        if (const auto sink = mirror.lock()) sink->sceneChanged(scene_, {}, scheduler_.now());
}

void HeadlessOutputs::addMirror(const std::weak_ptr<SceneSink>& sink) {
    mirrors_.push_back(sink);
    if (const auto live = sink.lock()) live->sceneChanged(scene_, {}, scheduler_.now());
}

void HeadlessOutputs::removeMirror(const std::shared_ptr<SceneSink>& sink) {
    std::erase_if(mirrors_, [&](const std::weak_ptr<SceneSink>& mirror) {
        const auto live = mirror.lock();
        return !live || live == sink;
    });
}

void HeadlessOutputs::configure(const OutputSetup& setup) {
    std::vector<OutputHealth> health;
    for (const LogicalScreen& screen : setup.effectiveScreens()) {
        OutputHealth item;
        item.role = roleOf(screen);
        item.name = screen.name;
        item.isConnected = false;
        item.destinationID = destinationOf(screen);
        item.isPlaceholder = std::holds_alternative<destination::Placeholder>(screen.destination);
        item.detail = headlessDetail;
        health.push_back(std::move(item));
    }
    if (health == health_) return;
    health_ = std::move(health);
    std::weak_ptr<int> life = life_;
    scheduler_.post([this, life] {
        if (!life.expired() && onHealth_ && !closed_) onHealth_(health_);
    });
}

void HeadlessOutputs::closeAll() {
    closed_ = true;
    scene_ = OutputScene{};
    mirrors_.clear();
}

} // namespace velarion
