#include "Platform/Pictures/BackdropLoopService.h"

#include "LiveEngine/LiveEngine.h"

#include <cmath>

namespace velarion {

namespace {

BackdropLoops::MakeResult makeLoop(BuiltInBackdrop backdrop, const std::filesystem::path& folder,
                                   const BackdropLoopSize& size,
                                   const BackdropLoops::MakeOptions& options) {
    return BackdropLoops::make(backdrop, folder, size.width, size.height, size.seconds, size.fps,
                               options);
}

} // namespace

BackdropLoopService::BackdropLoopService(Scheduler& scheduler, std::filesystem::path folder,
                                         BackdropLoopSize size, Render render)
    : scheduler_(scheduler), folder_(std::move(folder)), size_(size),
      render_(render ? std::move(render) : Render(makeLoop)),
      worker_([this](std::stop_token stop) { work(std::move(stop)); }) {}

BackdropLoopService::~BackdropLoopService() {
    worker_.request_stop();
    queueChanged_.notify_all();
}

std::optional<std::filesystem::path> BackdropLoopService::readyURL(BuiltInBackdrop backdrop) const {
    if (!BackdropLoops::isReady(backdrop, folder_)) return std::nullopt;
    return BackdropLoops::url(backdrop, folder_);
}

void BackdropLoopService::prepare(BuiltInBackdrop backdrop, Answer done) {
    // A finished loop needn't wait behind another loop's render.
    if (auto ready = readyURL(backdrop)) {
        std::weak_ptr<int> life = life_;
        scheduler_.post([life, done = std::move(done), file = *ready] {
            if (!life.expired() && done) done(file);
        });
        return;
    }
    std::vector<Answer>& answers = waiting_[backdrop];
    answers.push_back(std::move(done));
    if (answers.size() > 1) return; // already on its way
    {
        std::lock_guard guard(queueLock_);
        queue_.push_back(backdrop);
    }
    queueChanged_.notify_one();
}

void BackdropLoopService::connect(LiveEngine& engine) {
    std::weak_ptr<int> life = life_;
    engine.backdropReadyURL = [this, life](BuiltInBackdrop backdrop) -> std::optional<std::filesystem::path> {
        if (life.expired()) return std::nullopt;
        return readyURL(backdrop);
    };
    engine.prepareBackdropLoop = [this, life](BuiltInBackdrop backdrop, Answer done) {
        if (!life.expired()) prepare(backdrop, std::move(done));
    };
}

void BackdropLoopService::work(std::stop_token stop) {
    std::weak_ptr<int> life = life_;
    for (;;) {
        BuiltInBackdrop backdrop{};
        {
            std::unique_lock lock(queueLock_);
            if (!queueChanged_.wait(lock, stop, [this] { return !queue_.empty(); })) return;
            backdrop = queue_.front();
            queue_.pop_front();
        }
        int lastPercent = -1;
        BackdropLoops::MakeOptions options;
        options.stop = stop;
        options.progress = [&](double fraction) {
            const int percent = static_cast<int>(std::floor(fraction * 100));
            if (percent == lastPercent) return;
            lastPercent = percent;
            scheduler_.post([this, life, backdrop, fraction] {
                if (!life.expired() && onProgress) onProgress(backdrop, fraction);
            });
        };
        BackdropLoops::MakeResult result = render_(backdrop, folder_, size_, options);
        scheduler_.post([this, life, backdrop, result = std::move(result)] {
            if (!life.expired()) deliver(backdrop, result);
        });
    }
}

void BackdropLoopService::deliver(BuiltInBackdrop backdrop, const BackdropLoops::MakeResult& result) {
    auto entry = waiting_.find(backdrop);
    if (entry == waiting_.end()) return;
    std::vector<Answer> answers = std::move(entry->second);
    waiting_.erase(entry);
    std::optional<std::filesystem::path> file;
    if (const auto* made = std::get_if<std::filesystem::path>(&result)) file = *made;
    else if (const auto* failure = std::get_if<BackdropLoops::Failed>(&result); failure && onFailure)
        onFailure(backdrop, failure->message);
    for (Answer& answer : answers)
        if (answer) answer(file);
}

} // namespace velarion
