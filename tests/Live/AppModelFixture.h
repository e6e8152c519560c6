#pragma once
// An application model on doubles, with real packages: a fake home in a
// temporary folder holds the shows, the scratch area and the preferences;
// the engine is a real LiveEngine in virtual time; autosaves wait for the
// test to let the writer write.

#include "AppDoubles.h"
#include "FakePictures.h"
#include "FakePlayers.h"
#include "ManualShowWriter.h"
#include "ShowBuilder.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include "Live/AppModel.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace velarion::testing {

class AppModelFixture : public ::testing::Test {
protected:
    ~AppModelFixture() override { model.reset(); }

    std::filesystem::path preferencesFile() const { return home / ".config" / "Velarion" / "preferences.json"; }

    // Reads the preferences file as it stands and builds the model.
    AppModel& start(AppOptions options = {}) {
        preferences = std::make_unique<Preferences>(preferencesFile());
        AppPorts ports{scheduler, players, images, cards, slides, nullptr, outputs, slidePages,
                       desktop, folders, writer, application, *preferences};
        ports.musicPlayers = musicPlayers;
        model = std::make_unique<AppModel>(ports, options);
        model->onChange = [this] { ++changeCount; };
        return *model;
    }

    // A show with one section of graphic cues, saved as a package in the
    // shows folder.
    static Show showWithCues(const std::string& title, std::initializer_list<std::string> cueNames) {
        Section section = makeSection("Main");
        for (const std::string& name : cueNames) section.cues.push_back(makeCue(name, GraphicCue{name, "", std::nullopt}));
        return makeShow(title, {section});
    }
    std::filesystem::path savePackage(const Show& show, const std::string& fileName) {
        const auto location = folders.showsFolder() / (fileName + ".velarion");
        ShowPackage::create(location, show);
        return location;
    }
    const Cue& cueNamed(const std::string& name) const {
        for (const Cue* cue : model->show()->allCues())
            if (cue->name == name) return *cue;
        throw std::runtime_error("no cue " + name);
    }
    bool engineLogged(const std::string& text) const {
        for (const HistoryEntry& entry : model->engine()->history())
            if (entry.text == text) return true;
        return false;
    }
    // Lets the autosave timer run out, the writer write, and the result
    // reach the main loop.
    void autosaveNow() {
        scheduler.advance(AppModel::autosaveDelaySeconds);
        writer.finishWrites();
        scheduler.runDue();
    }

    TempFolder temp{"velarion-app"};
    std::filesystem::path home = temp.path();
    VirtualScheduler scheduler;
    FakeMediaPlayers players{scheduler};
    FakeImageLoader images;
    FakeTextCards cards;
    FakeSlidePictures slides;
    RecordingOutputManagers outputs;
    FakeSlidePages slidePages;
    RecordingDesktopServices desktop;
    TempShowFolders folders{home};
    ManualShowWriter writer{scheduler};
    RecordingApplicationControl application;
    std::unique_ptr<Preferences> preferences;
    std::function<std::vector<std::string>()> musicPlayers; // the music players seen running; optional
    std::unique_ptr<AppModel> model;
    int changeCount = 0;
};

} // namespace velarion::testing
