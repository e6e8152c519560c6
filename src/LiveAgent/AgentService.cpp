// The service's entry: the checks every call passes, in order, and the table
// of tools.

#include "LiveAgent/AgentService.h"

#include "LiveAgent/AgentServiceTools.h"
#include "LiveAgentKit/AgentArguments.h"
#include "LiveModel/ShowEditError.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <exception>
#include <string>
#include <utility>

namespace velarion {

namespace agentService {

namespace {

struct NamedTool {
    std::string_view name;
    Tool function;
};

// Every tool of the catalogue, by name.
constexpr std::array tools{
    NamedTool{"get_show", getShow},
    NamedTool{"get_state", getState},
    NamedTool{"ready_check", readyCheck},
    NamedTool{"list_displays", listDisplays},
    NamedTool{"list_ndi_sources", listNDISources},
    NamedTool{"go", go},
    NamedTool{"fire_cue", fireCue},
    NamedTool{"set_next", setNext},
    NamedTool{"panic", panic},
    NamedTool{"pause_all", pauseAll},
    NamedTool{"resume_all", resumeAll},
    NamedTool{"talk_over", talkOver},
    NamedTool{"clear", clear},
    NamedTool{"safe_slide", safeSlide},
    NamedTool{"slide", slide},
    NamedTool{"send_message", sendMessage},
    NamedTool{"adjust_timer", adjustTimer},
    NamedTool{"quit_app", quitApp},
    NamedTool{"restart_app", restartApp},
    NamedTool{"launch_app", launchApp},
    NamedTool{"lock_show", lockShow},
    NamedTool{"new_show", newShow},
    NamedTool{"open_show", openShow},
    NamedTool{"save_show", saveShow},
    NamedTool{"set_title", setTitle},
    NamedTool{"import_media", importMedia},
    NamedTool{"add_ndi_source", addNDISource},
    NamedTool{"set_network_feeds", setNetworkFeeds},
    NamedTool{"add_section", addSection},
    NamedTool{"update_section", updateSection},
    NamedTool{"delete_section", deleteSection},
    NamedTool{"add_cue", addCue},
    NamedTool{"update_cue", updateCue},
    NamedTool{"delete_cue", deleteCue},
    NamedTool{"move_cue", moveCue},
    NamedTool{"create_cue_group", createCueGroup},
    NamedTool{"update_cue_group", updateCueGroup},
    NamedTool{"remove_cue_group", removeCueGroup},
    NamedTool{"add_song", addSong},
    NamedTool{"update_song", updateSong},
    NamedTool{"set_screens", setScreens},
    NamedTool{"set_safe_slide", setSafeSlide},
    NamedTool{"undo", undo},
    NamedTool{"redo", redo},
};

// Tools that work with no show open.
bool worksWithoutShow(std::string_view name) {
    return name == "new_show" || name == "open_show" || name == "list_displays" ||
           name == "list_ndi_sources";
}

} // namespace

Tool tool(std::string_view name) {
    for (const NamedTool& entry : tools) {
        if (entry.name == name) return entry.function;
    }
    return nullptr;
}

Show AgentCall::show() const {
    std::optional<Show> open = host.show();
    if (!open) throw AgentFailure(noShowOpen);
    return std::move(*open);
}

JSONValue notBuiltYet(AgentCall&, const JSONValue&) {
    throw AgentFailure("Media import and NDI sources aren't available to agents in this version of "
                       "Velarion yet. Add media in Velarion itself, then refer to it by name.");
}

} // namespace agentService

// One thread that builds answers from snapshots, in the order asked.
class AgentService::Worker {
public:
    Worker() : thread_([this] { loop(); }) {}
    ~Worker() {
        {
            std::lock_guard guard(lock_);
            stopping_ = true;
            queue_.clear();
        }
        wake_.notify_all();
        thread_.join();
    }
    void post(std::function<void()> work) {
        {
            std::lock_guard guard(lock_);
            queue_.push_back(std::move(work));
        }
        wake_.notify_all();
    }

private:
    void loop() {
        std::unique_lock guard(lock_);
        while (true) {
            wake_.wait(guard, [this] { return stopping_ || !queue_.empty(); });
            if (stopping_) return;
            std::function<void()> work = std::move(queue_.front());
            queue_.pop_front();
            guard.unlock();
            work();
            work = nullptr;
            guard.lock();
        }
    }

    std::mutex lock_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> queue_;
    bool stopping_ = false;
    std::thread thread_; // last: it starts once the rest is ready
};

struct AgentService::Deferred {
    std::optional<agentService::AfterDrawing> afterDrawing;
    std::function<JSONValue()> offMainLoop;
    std::function<void(agentService::AgentCall::Finish)> afterHost;
};

namespace {

// The response for what `result` gives or throws.
template <class Result> AgentResponse respond(std::int64_t id, Result&& result) {
    try {
        return AgentResponse::success(id, result());
    } catch (const AgentFailure& failure) {
        return AgentResponse::failure(id, failure.message);
    } catch (const InvalidArguments& invalid) {
        return AgentResponse::failure(id, invalid.message);
    } catch (const ShowEditError& refused) {
        return AgentResponse::failure(id, refused.errorDescription());
    } catch (const std::exception& error) {
        // Whatever else a host or the file system raises still answers the
        // agent in words, never as a dropped connection.
        return AgentResponse::failure(id, error.what());
    }
}

constexpr const char* notReady = "Velarion isn't ready.";

} // namespace

AgentService::AgentService(std::weak_ptr<AgentHost> host, Scheduler& scheduler)
    : host_(std::move(host)), scheduler_(scheduler), worker_(std::make_unique<Worker>()) {}

AgentService::~AgentService() = default;

void AgentService::handle(const AgentRequest& request, Reply reply) { start(request, std::move(reply), false); }

AgentResponse AgentService::handle(const AgentRequest& request) {
    auto answer = std::make_shared<std::optional<AgentResponse>>();
    start(request, [answer](AgentResponse response) { *answer = std::move(response); }, true);
    if (*answer) return std::move(**answer);
    return AgentResponse::failure(request.id, "That answer isn't ready yet: its slides are still being drawn.");
}

void AgentService::start(const AgentRequest& request, Reply reply, bool inlineWork) {
    const std::int64_t id = request.id;
    Deferred deferred;
    AgentResponse now = respond(id, [&] { return run(request.tool, request.arguments, deferred); });
    if (deferred.offMainLoop && now.ok) {
        auto work = [id, build = std::move(deferred.offMainLoop), reply = std::move(reply)] {
            reply(respond(id, build));
        };
        if (inlineWork)
            work();
        else
            worker_->post(std::move(work));
        return;
    }
    if (deferred.afterHost && now.ok) {
        deferred.afterHost([scheduler = &scheduler_, weakHost = host_, id, reply = std::move(reply)](
                               std::function<JSONValue(agentService::AgentCall&)> build) {
            reply(respond(id, [&]() -> JSONValue {
                const std::shared_ptr<AgentHost> alive = weakHost.lock();
                if (!alive) throw AgentFailure(notReady);
                agentService::AgentCall call{*alive, *scheduler, weakHost};
                return build(call);
            }));
        });
        return;
    }
    if (!deferred.afterDrawing || !now.ok) {
        reply(std::move(now));
        return;
    }
    const std::shared_ptr<AgentHost> host = host_.lock();
    if (!host) return reply(AgentResponse::failure(id, notReady));
    auto after = std::make_shared<agentService::AfterDrawing>(std::move(*deferred.afterDrawing));
    host->agentDrawSlides(after->item, [scheduler = &scheduler_, weakHost = host_, id, after, reply = std::move(reply)](
                                           std::optional<MediaItem> drawn, const std::string& failure) {
        reply(respond(id, [&]() -> JSONValue {
            const std::shared_ptr<AgentHost> alive = weakHost.lock();
            if (!alive) throw AgentFailure(notReady);
            if (!drawn) throw AgentFailure(after->failureWords + failure);
            agentService::AgentCall call{*alive, *scheduler, weakHost};
            return after->finish(call, *drawn);
        }));
    });
}

JSONValue AgentService::run(std::string_view name, const JSONValue& arguments, Deferred& deferred) {
    const std::shared_ptr<AgentHost> host = host_.lock();
    if (!host) throw AgentFailure("Velarion isn't ready.");
    const AgentTool* described = agentTools::tool(name);
    const agentService::Tool function = agentService::tool(name);
    if (!described || !function) throw AgentFailure("There's no tool called " + std::string(name) + ".");
    agentArguments::validate(arguments, *described);

    const std::set<AgentTier> allowed = host->allowedTiers();
    if (described->tier == AgentTier::run && !allowed.contains(AgentTier::run)) {
        throw AgentFailure("Running the show isn't allowed. The operator can turn on \"Run the "
                           "show\" in Settings → Agent control.");
    }
    if (described->tier == AgentTier::edit && !allowed.contains(AgentTier::edit)) {
        throw AgentFailure("Building and editing isn't allowed. The operator can turn on \"Build "
                           "and edit shows\" in Settings → Agent control.");
    }
    if (!agentService::worksWithoutShow(name) && !host->show()) {
        throw AgentFailure(agentService::noShowOpen);
    }
    agentService::AgentCall call{*host, scheduler_, host_};
    JSONValue result = function(call, arguments);
    deferred.afterDrawing = std::move(call.afterDrawing);
    deferred.offMainLoop = std::move(call.offMainLoop);
    deferred.afterHost = std::move(call.afterHost);
    return result;
}

} // namespace velarion
