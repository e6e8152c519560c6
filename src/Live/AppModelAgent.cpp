// What the agent service and the import flow ask of the model, and the
// operator's grants to the agent.

#include "Live/AppModel.h"

#include "Live/OperatorText.h"
#include "LiveAgentKit/AgentFailure.h"

namespace velarion {

namespace fs = std::filesystem;

// ---- Import bookkeeping ----

std::optional<Uuid> AppModel::beginImport(int fileCount) {
    if (!show_ || !package_ || isImporting_ || isLocked()) return std::nullopt;
    importRequestID_ = Uuid::random();
    isImporting_ = true;
    setStatus("Importing " + std::to_string(fileCount) + " file" + (fileCount == 1 ? "" : "s"));
    changed();
    return importRequestID_;
}

void AppModel::endImport(const Uuid& requestID) {
    if (importRequestID_ != requestID) return;
    importRequestID_.reset();
    isImporting_ = false;
    changed();
}

// ---- Grants and the connection ----

void AppModel::setAgentMayRun(bool may) {
    if (agentMayRun_ == may) return;
    agentMayRun_ = may;
    preferencesWritten(ports_.preferences.set(preferenceKeys::agentRun, may));
    changed();
}

void AppModel::setAgentMayEdit(bool may) {
    if (agentMayEdit_ == may) return;
    agentMayEdit_ = may;
    preferencesWritten(ports_.preferences.set(preferenceKeys::agentEdit, may));
    changed();
}

void AppModel::setAgentConnections(int count) {
    if (agentConnections_ == count) return;
    agentConnections_ = count;
    changed();
}

void AppModel::setAgentError(std::optional<std::string> error) {
    if (agentError_ == error) return;
    agentError_ = std::move(error);
    changed();
}

std::set<AgentTier> AppModel::allowedTiers() const {
    std::set<AgentTier> tiers{AgentTier::observe};
    if (agentMayRun_) tiers.insert(AgentTier::run);
    if (agentMayEdit_) tiers.insert(AgentTier::edit);
    return tiers;
}

// ---- Agent operations ----

std::optional<std::string> AppModel::agentEdit(const ShowEdit& edit) {
    if (this->edit(edit)) return std::nullopt;
    return status_.empty() ? "That change was refused." : status_;
}

void AppModel::agentNewShow(const std::string& title, ShowTemplate showTemplate,
                            const std::optional<fs::path>& saveTo) {
    if (show_ && package_) {
        try {
            saveNow();
        } catch (const std::exception&) {
        }
    }
    newShow(showTemplate, title);
    if (!show_ || show_->title != title)
        throw AgentFailure(status_.empty() ? "Couldn't create the show." : status_);
    if (saveTo) agentSaveShow(saveTo);
}

void AppModel::agentOpenShow(const fs::path& at) {
    try {
        openShow(at);
    } catch (const std::exception& error) {
        throw AgentFailure(errorText(error));
    }
}

void AppModel::agentSaveShow(const std::optional<fs::path>& to) {
    if (!show_ || !package_) throw AgentFailure("No show is open. Open or create a show first.");
    if (to) {
        try {
            saveAs(*to);
        } catch (const std::exception& error) {
            throw AgentFailure(errorText(error));
        }
        return;
    }
    if (package_->isScratch()) {
        throw AgentFailure("This show hasn't been saved to a file yet. Give a path, such as "
                           "~/Documents/Velarion Shows/Name.velarion.");
    }
    if (save() != SaveOutcome::saved) throw AgentFailure(status_);
}

bool AppModel::agentUndo() {
    if (!show_ || !history_.canUndo()) return false;
    undo();
    return true;
}

bool AppModel::agentRedo() {
    if (!show_ || !history_.canRedo()) return false;
    redo();
    return true;
}

void AppModel::agentNote(const std::string& text) {
    if (engine_) engine_->note(text);
}

void AppModel::agentQuit(bool restart) {
    skipsQuitQuestion_ = true;
    if (restart) {
        try {
            ports_.application.relaunchAfterExit(package_ ? std::optional<fs::path>(package_->url())
                                                          : std::nullopt);
        } catch (const std::exception&) {
            // The quit goes on without the restart.
        }
    }
    ports_.application.terminate();
}

} // namespace velarion
