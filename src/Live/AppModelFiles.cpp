// The model's files outside the open document: copies for another
// computer, finding a missing file, the scratch shows, recents, crash
// reopening and quitting.

#include "Live/AppModel.h"

#include "Live/OperatorText.h"

#include <algorithm>
#include <chrono>
#include <system_error>

namespace velarion {

namespace fs = std::filesystem;

std::string AppModel::collectSuggestedName() const {
    const std::string title = show_ ? show_->title : "Untitled show";
    return title + " (for another computer)." + std::string(ShowPackage::fileExtension);
}

std::optional<CollectedShow> AppModel::collectForAnotherMac(const fs::path& to) {
    if (!show_ || !package_ || isImporting_) return std::nullopt;
    std::optional<ShowPackage> copy;
    try {
        ports_.writer.waitUntilIdle();
        copy = package_->saveCopy(standardized(to), *show_);
    } catch (const std::exception& error) {
        setStatus("Couldn't make the copy: " + errorText(error));
        return std::nullopt;
    }

    const UsedFiles used = copy->usedFiles(*show_);
    const std::vector<MediaItem> missing = copy->missingMedia(*show_);
    AppAlert alert;
    alert.title = missing.empty() ? "Ready for another computer" : "Copied, with files missing";
    alert.text = std::to_string(used.count) + " files, " + fileByteCountText(used.bytes) +
                 ", saved as " + copy->url().filename().string() + ".";
    if (!missing.empty()) {
        alert.text += "\n\nMissing: ";
        for (std::size_t i = 0; i < missing.size(); ++i)
            alert.text += (i == 0 ? "" : ", ") + missing[i].name;
        alert.text += ". Use Find it in the Ready check to put them back.";
    }
    alert.buttons = {"Done", "Show in file manager"};
    return CollectedShow{copy->url(), std::move(alert)};
}

std::string AppModel::findMissingPrompt(const MediaItem& item) {
    return "Find \u201C" + item.name + "\u201D";
}

bool AppModel::findMissing(const Uuid& itemID, const fs::path& chosenFile) {
    if (!show_ || !package_) return false;
    const MediaItem* found = show_->media(itemID);
    if (!found || found->deck) return false;
    if (isLocked()) {
        // Refused before the file is copied in.
        refuse(errorDescription(editError::Locked{}));
        return false;
    }
    MediaItem item = *found;
    try {
        item.fileName = package_->importFile(chosenFile, ShowPackage::folder(item.kind));
    } catch (const std::exception& error) {
        setStatus("Couldn't use that file: " + errorText(error));
        return false;
    }
    const std::string name = item.name;
    if (!edit(edit::UpdateMedia{std::move(item)})) return false;
    setStatus("Found " + name);
    return true;
}

std::vector<UnsavedShow> AppModel::unsavedShows() const {
    struct Candidate {
        fs::path location;
        fs::file_time_type modified;
    };
    std::vector<Candidate> candidates;
    std::error_code error;
    const fs::path folder = ports_.folders.unsavedFolder();
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() != "." + std::string(ShowPackage::fileExtension)) continue;
        std::error_code timeError;
        fs::file_time_type modified = fs::last_write_time(entry->path(), timeError);
        if (timeError) modified = fs::file_time_type::min(); // the distant past
        candidates.push_back({entry->path(), modified});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.modified > b.modified; });

    const std::optional<fs::path> open =
        package_ ? std::optional<fs::path>(standardized(package_->url())) : std::nullopt;
    std::vector<UnsavedShow> shows;
    for (const Candidate& candidate : candidates) {
        if (open && standardized(candidate.location) == *open) continue;
        try {
            shows.push_back({candidate.location, ShowPackage(candidate.location).open().title});
        } catch (const std::exception&) {
            // Not a show any more: left out.
        }
    }
    return shows;
}

void AppModel::remember(const fs::path& location) {
    const fs::path path = standardized(location);
    std::erase_if(recents_, [&](const fs::path& entry) { return standardized(entry) == path; });
    recents_.insert(recents_.begin(), path);
    if (recents_.size() > recentsLimit) recents_.resize(recentsLimit);
    std::vector<std::string> stored;
    for (const fs::path& entry : recents_) stored.push_back(entry.string());
    preferencesWritten(ports_.preferences.set(preferenceKeys::recents, stored));
    changed();
}

void AppModel::preferencesWritten(bool written) {
    // The setting holds for this run either way; the operator learns that it
    // won't outlive it.
    if (!written) setStatus("Couldn't save the settings: " + ports_.preferences.lastWriteError());
}

// ---- Start and quit ----

void AppModel::recoverAfterUnexpectedQuit() {
    // A show the system opened at launch wins; its load overwrites the key.
    if (show_) return;
    const auto location = session_.takeShowToRecover();
    if (!location) return;
    try {
        openShow(*location);
    } catch (const std::exception& error) {
        setStatus("Couldn't reopen the last show: " + errorText(error));
        return;
    }
    if (engine_) engine_->warn(recoveredWarning);
    setStatus(recoveredWarning);
}

std::optional<AppAlert> AppModel::quitQuestion() const {
    if (!engine_ || skipsQuitQuestion_) return std::nullopt;
    const std::size_t running = engine_->state().running.size();
    if (running == 0) return std::nullopt;
    AppAlert alert;
    alert.title = "Quit while the show is running?";
    alert.text = std::to_string(running) + (running == 1 ? " cue is" : " cues are") +
                 " playing. The audience screens will go dark and all sound will stop.";
    alert.buttons = {"Keep Running", "Quit"};
    return alert;
}

void AppModel::prepareToQuit() {
    if (show_ && package_) {
        try {
            saveNow();
        } catch (const std::exception&) {
            // The last autosave stands.
        }
    }
    session_.closed();
    awakeActivity_.reset();
}

void AppModel::finishQuit() {
    prepareToQuit();
    shutdownEngine();
    changed();
}

} // namespace velarion
