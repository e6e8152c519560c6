// The service's entry: the checks every call passes, in order, and the table
// of tools.

#include "LiveAgent/AgentService.h"

#include "LiveAgent/AgentServiceTools.h"
#include "LiveAgentKit/AgentArguments.h"
#include "LiveModel/ShowEditError.h"

#include <algorithm>
#include <array>
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
    NamedTool{"list_ndi_sources", notBuiltYet},
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
    NamedTool{"import_media", notBuiltYet},
    NamedTool{"add_ndi_source", notBuiltYet},
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

AgentService::AgentService(std::weak_ptr<AgentHost> host, Scheduler& scheduler)
    : host_(std::move(host)), scheduler_(scheduler) {}

AgentResponse AgentService::handle(const AgentRequest& request) {
    try {
        return AgentResponse::success(request.id, run(request.tool, request.arguments));
    } catch (const AgentFailure& failure) {
        return AgentResponse::failure(request.id, failure.message);
    } catch (const InvalidArguments& invalid) {
        return AgentResponse::failure(request.id, invalid.message);
    } catch (const ShowEditError& refused) {
        return AgentResponse::failure(request.id, refused.errorDescription());
    } catch (const std::exception& error) {
        // Whatever else a host or the file system raises still answers the
        // agent in words, never as a dropped connection.
        return AgentResponse::failure(request.id, error.what());
    }
}

JSONValue AgentService::run(std::string_view name, const JSONValue& arguments) {
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
    return function(call, arguments);
}

} // namespace velarion
