#pragma once
// BackdropLoopService: the engine's two built-in backdrop callbacks
// (`backdropReadyURL`, `prepareBackdropLoop`) on top of BackdropLoops, with
// the rendering on a worker thread.
//
// Contract.
// - Main thread: construction, destruction, `readyURL`, `prepare`, `connect`;
//   every answer, `onProgress` and `onFailure` are delivered on the main loop
//   through `Scheduler::post`, never inside the call that asked.
// - `prepare` answers once with the loop's file, or none when it couldn't be
//   made. A loop that is already rendering is not rendered again: requests
//   for it while it renders all get the one result. Different loops render one
//   after another on one worker, since the encoder already uses every core.
// - A failed loop is not remembered: the next request tries again.
// - Lifetime: the scheduler must outlive the service. Destruction cancels the
//   render under way (its partial file is removed), drops the queued ones and
//   their pending answers, and waits for the worker to end. The callbacks
//   given to an engine by `connect` do nothing once the service is gone.

#include "LiveEngine/ports/Scheduler.h"
#include "Platform/Pictures/BackdropLoops.h"

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace velarion {

class LiveEngine;

// The loops the application asks for.
struct BackdropLoopSize {
    int width = 1280;
    int height = 720;
    double seconds = 10;
    int fps = 30;
};

class BackdropLoopService {
public:
    // What renders one loop; BackdropLoops::make unless a test gives another.
    using Render = std::function<BackdropLoops::MakeResult(
        BuiltInBackdrop, const std::filesystem::path& folder, const BackdropLoopSize&,
        const BackdropLoops::MakeOptions&)>;
    using Answer = std::function<void(std::optional<std::filesystem::path>)>;

    explicit BackdropLoopService(Scheduler& scheduler,
                                 std::filesystem::path folder = BackdropLoops::folder(),
                                 BackdropLoopSize size = {}, Render render = {});
    ~BackdropLoopService();
    BackdropLoopService(const BackdropLoopService&) = delete;
    BackdropLoopService& operator=(const BackdropLoopService&) = delete;

    std::optional<std::filesystem::path> readyURL(BuiltInBackdrop backdrop) const;
    void prepare(BuiltInBackdrop backdrop, Answer done);

    // Sets the engine's `backdropReadyURL` and `prepareBackdropLoop`.
    void connect(LiveEngine& engine);

    // Fraction done of the loop rendering now, in steps of about 1%.
    std::function<void(BuiltInBackdrop, double fraction)> onProgress;
    // The sentence of a loop that couldn't be made, for the log.
    std::function<void(BuiltInBackdrop, const std::string& sentence)> onFailure;

private:
    void work(std::stop_token stop);
    void deliver(BuiltInBackdrop backdrop, const BackdropLoops::MakeResult& result);

    Scheduler& scheduler_;
    const std::filesystem::path folder_;
    const BackdropLoopSize size_;
    const Render render_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
    std::map<BuiltInBackdrop, std::vector<Answer>> waiting_; // main thread
    std::mutex queueLock_;
    std::condition_variable_any queueChanged_;
    std::deque<BuiltInBackdrop> queue_; // under queueLock_
    std::jthread worker_;               // last: stopped and joined first
};

} // namespace velarion
