// The application's import path: files copied in on the import queue's
// thread, then added to the show on the main loop as library items and,
// when asked, cues.

#include "Live/AppModel.h"

namespace velarion {

namespace {

std::string fileCount(std::size_t count) {
    return std::to_string(count) + " file" + (count == 1 ? "" : "s");
}

} // namespace

MediaImportQueue& AppModel::importQueue() {
    if (!importQueue_) importQueue_ = std::make_unique<MediaImportQueue>(ports_.scheduler, ports_.importTools);
    return *importQueue_;
}

void AppModel::importFiles(const std::vector<std::filesystem::path>& files, bool addCues,
                           const std::optional<CueInsertionPoint>& at) {
    if (files.empty()) return;
    const std::optional<Uuid> requestID = beginImport(static_cast<int>(files.size()));
    if (!requestID) return;
    importProgress_ = ImportProgress{0, static_cast<int>(files.size()), 0, 0, {}};
    const Uuid showID = show_->id;
    const std::weak_ptr<int> alive = token();
    startImportTask(files, *requestID, [this, alive, id = *requestID, showID, addCues, at](ImportResult result) {
        if (alive.expired()) return;
        finishImport(id, showID, std::move(result), addCues, at);
    });
}

void AppModel::finishImport(const Uuid& requestID, const Uuid& showID, ImportResult result, bool addCues,
                            const std::optional<CueInsertionPoint>& at) {
    // Another show, or a newer import: files already copied stay as unused
    // media in the package they went to.
    if (!show_ || show_->id != showID || importRequestID_ != requestID) {
        // Opening or closing a show ended the import's bookkeeping; its
        // last progress goes too unless a newer import reports its own.
        if (!isImporting_ && importProgress_) {
            importProgress_.reset();
            changed();
        }
        return;
    }
    importProgress_.reset();
    importTask_ = {};
    struct End {
        AppModel& model;
        Uuid id;
        ~End() { model.endImport(id); }
    } end{*this, requestID};

    if (isLocked()) {
        setStatus("Import paused by Show Mode — return to Edit and import again");
        return;
    }
    std::vector<Cue> collected;
    for (const MediaItem& item : result.items) {
        if (!edit(edit::AddMedia{item}) || !addCues) continue;
        const Cue cue = makeCue(item);
        if (at)
            collected.push_back(cue);
        else
            add(cue);
    }
    if (!collected.empty()) {
        try {
            Show next = history_.apply(edit::InsertCues{collected, at->sectionID, at->before}, *show_);
            commit(std::move(next), {});
            selectedCueID_ = collected.back().id;
        } catch (const ShowEditError& refused) {
            if (refused.is<editError::CueNotFound>() || refused.is<editError::SectionNotFound>()) {
                setStatus("Imported to Library; the original cue drop position is no longer available");
            } else {
                refuse(refused.errorDescription());
            }
            return;
        }
    }
    if (result.failures.empty()) {
        setStatus(result.cancelled ? "Import stopped after " + fileCount(result.items.size())
                                   : "Imported " + fileCount(result.items.size()));
        return;
    }
    setStatus(std::to_string(result.failures.size()) + " file(s) couldn't be imported");
    std::string lines;
    for (const ImportFailure& failure : result.failures) {
        if (!lines.empty()) lines += "\n";
        lines += failure.fileName + ": " + failure.reason;
    }
    importAlert_ = AppAlert{"Some files couldn't be imported", lines, {"OK"}};
    changed();
}

void AppModel::cancelImport() {
    importTask_.cancel();
}

void AppModel::dismissImportAlert() {
    if (!importAlert_) return;
    importAlert_.reset();
    changed();
}

void AppModel::agentImportMedia(const std::vector<std::filesystem::path>& files, MediaImported done) {
    if (!show_ || !package_) return done(std::nullopt, "No show is open. Use new_show or open_show.");
    if (isImporting_) return done(std::nullopt, "Another import is running. Try again when it has finished.");
    const std::optional<Uuid> requestID = beginImport(static_cast<int>(files.size()));
    if (!requestID) return done(std::nullopt, errorDescription(editError::Locked{}));
    const Uuid showID = show_->id;
    const std::weak_ptr<int> alive = token();
    startImportTask(files, *requestID, [this, alive, id = *requestID, showID, done = std::move(done)](ImportResult result) {
        if (alive.expired()) return done(std::nullopt, "Velarion isn't ready.");
        const bool current = show_ && show_->id == showID && importRequestID_ == id;
        importProgress_.reset();
        endImport(id);
        if (!current) return done(std::nullopt, "The show was closed before the import finished.");
        done(std::move(result), {});
    });
}

// Copies on the import worker; progress of the current request reaches the
// status while the model lives.
void AppModel::startImportTask(const std::vector<std::filesystem::path>& files, const Uuid& requestID,
                               std::function<void(ImportResult)> finished) {
    const std::weak_ptr<int> alive = token();
    importTask_ = importQueue().start(
        files, *package_,
        {[this, alive, requestID](const ImportProgress& progress) {
             if (alive.expired() || importRequestID_ != requestID) return;
             importProgress_ = progress;
             changed();
         },
         std::move(finished)});
}

} // namespace velarion
