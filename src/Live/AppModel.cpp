// The show's lifecycle: loading and organizing, opening, saving, autosave
// and closing.

#include "Live/AppModel.h"

#include "Live/OperatorText.h"

#include <system_error>

namespace velarion {

namespace fs = std::filesystem;

AppModel::AppModel(AppPorts ports, AppOptions options)
    : ports_(ports), options_(options), session_(ports.preferences) {
    const Preferences& preferences = ports_.preferences;
    agentMayRun_ = preferences.value(preferenceKeys::agentRun);
    agentMayEdit_ = preferences.value(preferenceKeys::agentEdit);

    const auto stored = preferences.value(preferenceKeys::recents);
    for (const std::string& path : stored) {
        std::error_code error;
        if (fs::exists(path, error)) recents_.emplace_back(path);
    }
    if (recents_.size() != stored.size()) {
        std::vector<std::string> kept;
        for (const fs::path& path : recents_) kept.push_back(path.string());
        ports_.preferences.set(preferenceKeys::recents, kept);
    }

    if (!options_.isSnapshotRun) {
        std::error_code ignored;
        fs::create_directories(ports_.folders.showsFolder(), ignored);
    }

    if (ports_.devices) {
        ports_.devices->setOnChange([this, alive = token()] {
            if (!alive.expired() && engine_) engine_->audioDevicesChanged();
        });
    }
}

AppModel::~AppModel() {
    for (auto& [itemID, draw] : pageDraws_) draw.handle.cancel();
    flushPendingSave();
    if (ports_.devices) ports_.devices->setOnChange({});
    shutdownEngine();
    awakeActivity_.reset();
}

void AppModel::changed() {
    if (onChange) onChange();
}

void AppModel::setStatus(const std::string& text) {
    if (text == status_) return;
    status_ = text;
    changed();
}

void AppModel::refuse(const std::string& text) {
    setStatus(text);
    ports_.desktop.beep();
}

void AppModel::shutdownEngine() {
    if (engine_) engine_->shutdown();
    engine_.reset();
    outputManager_.reset();
}

// ---- Loading ----

void AppModel::load(const Show& show, const ShowPackage& package) {
    // An autosave of the show leaving still goes to its own package.
    flushPendingSave();
    packageLock_.reset();
    abandonPageDraws("Another show was opened before the slides' pictures were drawn.");
    operatorViewFollowsLive_ = true;
    importRequestID_.reset();
    isImporting_ = false;

    shutdownEngine();

    slideEditors_.clear();
    copiedSlide_.reset();
    rename_.reset();

    Show organized = organize(show, package);
    ports_.slidePages.prunePages(package, organized.library);

    show_ = std::move(organized);
    package_ = package;
    history_ = EditHistory(historyLimit);
    isDirty_ = false;
    ++editGeneration_;
    if (package.isScratch())
        lastSaved_.reset();
    else
        lastSaved_ = ports_.scheduler.wallNow();

    const auto cues = show_->allCues();
    selectedCueID_ = cues.empty() ? std::nullopt : std::optional<Uuid>(cues.front()->id);
    selectedMediaID_.reset();

    caches_ = {};
    if (audition_ && audition_->cueID()) audition_->stop();

    outputManager_ = ports_.outputs.make();
    std::erase_if(mirrors_, [](const std::weak_ptr<SceneSink>& sink) { return sink.expired(); });
    for (const auto& mirror : mirrors_) outputManager_->addMirror(mirror);
    engine_ = std::make_unique<LiveEngine>(
        *show_, package,
        EnginePorts{ports_.scheduler, *outputManager_, ports_.players, ports_.images, ports_.cards,
                    ports_.slides, ports_.devices, ports_.streams},
        controlsMusicApps_);
    engine_->backdropReadyURL = ports_.backdropReady;
    engine_->prepareBackdropLoop = ports_.prepareBackdrop;
    engine_->onProviderWillStart = [this](StreamApp app) { providerWillStart(app); };

    if (!options_.isSnapshotRun) {
        session_.opened(package.url());
        if (!awakeActivity_) awakeActivity_ = ports_.desktop.beginAwakeActivity(awakeReason);
    }
    changed();
}

Show AppModel::organize(const Show& show, const ShowPackage& in) {
    Show result = show;
    std::vector<std::string> oldFiles;
    try {
        TidyResult tidied = in.tidy(show);
        result = std::move(tidied.show);
        oldFiles = std::move(tidied.oldFiles);
    } catch (const std::exception&) {
        // Used as it came, silently: its media is looked for at playing time.
    }

    for (std::size_t i = 0; i < result.library.size(); ++i) {
        const MediaItem& item = result.library[i];
        if (!item.deck) continue;
        const DeckInfo& deck = *item.deck;
        const bool unrendered = deck.made && !deck.made->empty() && deck.pages.empty();
        if (!deck.hasLegacyNativePages() && !unrendered) continue;
        try {
            MediaItem redrawn = ports_.slidePages.update(item, in, result.library);
            result.library.edit(i) = std::move(redrawn);
        } catch (const std::exception&) {
            // That item stays as it was; the others still go ahead.
        }
    }

    result.nameMachineNamedMedia();

    if (result == show) return show;
    try {
        in.save(result);
    } catch (const std::exception& error) {
        setStatus("Couldn't organize the show's files: " + errorText(error));
        return show;
    }
    // Only now that the new document is on disk.
    in.removeOldFiles(oldFiles);
    return result;
}

// ---- Opening, saving, closing ----

bool AppModel::newShow(ShowTemplate showTemplate, const std::string& title) {
    const Show show = showTemplate::make(showTemplate, title);
    const fs::path location =
        ports_.folders.unsavedFolder() / (show.id.text() + "." + std::string(ShowPackage::fileExtension));
    std::optional<ShowPackage> package;
    std::optional<ShowPackageLock> lock;
    try {
        package = ShowPackage::create(location, show);
        lock = ShowPackageLock::acquire(location);
    } catch (const std::exception& error) {
        // The open show, if any, stays open.
        setStatus("Couldn't create the show: " + errorText(error));
        return false;
    }
    load(show, *package);
    packageLock_ = std::move(lock);
    return true;
}

void AppModel::openShow(const fs::path& at) {
    const fs::path location = standardized(at);
    if (package_ && standardized(package_->url()) == location) return;

    const ShowPackage package(location);
    const Show show = package.open();
    // Refused before anything changes here when another process has it.
    ShowPackageLock lock = ShowPackageLock::acquire(location);

    if (show_ && package_ && isDirty_) {
        // The show leaving is written to its own package, without a word. A
        // clean show is on disk as it stands.
        try {
            saveNow();
        } catch (const std::exception&) {
        }
    }
    load(show, package);
    packageLock_ = std::move(lock);
    remember(location);
    setStatus("Opened " + displayName(location));
}

void AppModel::saveNow() {
    saveTask_.cancel();
    ports_.writer.waitUntilIdle();
    package_->save(*show_);
    markSaved();
}

void AppModel::markSaved() {
    isDirty_ = false;
    lastSaved_ = ports_.scheduler.wallNow();
    changed();
}

SaveOutcome AppModel::save() {
    if (!show_ || !package_) return SaveOutcome::failed;
    if (package_->isScratch()) return SaveOutcome::needsLocation;
    try {
        saveNow();
    } catch (const std::exception& error) {
        setStatus("Couldn't save: " + errorText(error));
        return SaveOutcome::failed;
    }
    return SaveOutcome::saved;
}

void AppModel::saveAs(const fs::path& to) {
    if (isImporting_) throw SaveAsError();
    if (!show_ || !package_) return;

    const fs::path location = standardized(to);
    const ShowPackage old = *package_;
    const bool wasScratch = old.isScratch();
    saveTask_.cancel();
    ports_.writer.waitUntilIdle();
    ShowPackage copy = old.saveCopy(location, *show_);

    if (wasScratch && standardized(old.url()) != location) {
        std::error_code ignored;
        fs::remove_all(old.url(), ignored);
    }

    if (standardized(old.url()) != location) {
        try {
            packageLock_ = ShowPackageLock::acquire(location);
        } catch (const ShowPackageInUse&) {
            // Opened elsewhere in the instant since the copy: go on unlocked.
            packageLock_.reset();
        }
    }
    package_ = copy;
    if (engine_) engine_->replacePackage(copy);
    if (!options_.isSnapshotRun) session_.opened(location);
    markSaved();
    remember(location);

    // Only the template's own title gives way to the file's name.
    if (show_->title == "Untitled show" && !isLocked())
        edit(edit::SetTitle{displayName(location), show_->subtitle});

    setStatus("Saved as " + displayName(location));
}

bool AppModel::saveAsFromPanel(const fs::path& to) {
    try {
        saveAs(to);
        return true;
    } catch (const SaveAsError& error) {
        setStatus(error.what());
    } catch (const std::exception& error) {
        setStatus("Couldn't save: " + errorText(error));
    }
    return false;
}

void AppModel::close() {
    flushPendingSave();
    abandonPageDraws("The show was closed before the slides' pictures were drawn.");
    if (!options_.isSnapshotRun) session_.closed();
    awakeActivity_.reset();

    operatorViewFollowsLive_ = true;
    importRequestID_.reset();
    isImporting_ = false;

    shutdownEngine();
    show_.reset();
    package_.reset();
    packageLock_.reset();
    status_.clear();
    isDirty_ = false;
    lastSaved_.reset();
    ++editGeneration_;

    history_ = EditHistory(historyLimit);
    selectedCueID_.reset();
    selectedMediaID_.reset();
    caches_ = {};
    if (audition_ && audition_->cueID()) audition_->stop();

    rename_.reset();
    slideEditors_.clear();
    copiedSlide_.reset();
    changed();
}

// ---- Autosave ----

void AppModel::scheduleSave() {
    saveTask_.cancel();
    saveTask_ = ports_.scheduler.after(autosaveDelaySeconds, [this, alive = token()] {
        if (!alive.expired()) autosave();
    });
}

void AppModel::autosave() {
    saveTask_ = {};
    if (!show_ || !package_) return;
    ports_.writer.write(*package_, *show_,
                        [this, alive = token(), generation = editGeneration_](
                            const std::optional<std::string>& error) {
                            if (!alive.expired()) autosaveFinished(generation, error);
                        });
}

void AppModel::autosaveFinished(std::uint64_t generation, const std::optional<std::string>& error) {
    constexpr std::string_view failed = "Autosave failed: ";
    if (error) {
        setStatus(std::string(failed) + *error);
        return;
    }
    // A failure said earlier no longer holds once a write got through.
    if (status_.starts_with(failed)) setStatus("");
    if (generation != editGeneration_ || !show_) return;
    markSaved();
}

void AppModel::flushPendingSave() {
    if (!saveTask_.refersToTask() || saveTask_.isCancelled()) return;
    saveTask_.cancel();
    autosave();
}

} // namespace velarion
