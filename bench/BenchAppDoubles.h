#pragma once
// The application model's ports on the test doubles, in a temporary home,
// with the real background writer: what a benchmark of the model (or of a
// view over it) stands on. The model itself is the benchmark's to make.

#include "AppDoubles.h"
#include "FakePictures.h"
#include "FakePlayers.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include "Live/AppModel.h"
#include "Live/ThreadShowWriter.h"

namespace velarion::bench {

struct BenchAppDoubles {
    explicit BenchAppDoubles(const char* homeName) : home(homeName) {}

    AppPorts ports() {
        return AppPorts{scheduler, players, images, cards, slides, nullptr, outputs, slidePages, desktop,
                        folders, writer, application, preferences};
    }

    testing::TempFolder home;
    testing::VirtualScheduler scheduler;
    testing::FakeMediaPlayers players{scheduler};
    testing::FakeImageLoader images;
    testing::FakeTextCards cards;
    testing::FakeSlidePictures slides;
    testing::RecordingOutputManagers outputs;
    testing::FakeSlidePages slidePages;
    testing::RecordingDesktopServices desktop;
    testing::TempShowFolders folders{home.path()};
    ThreadShowWriter writer{scheduler};
    testing::RecordingApplicationControl application;
    Preferences preferences{home / "preferences.json"};
};

} // namespace velarion::bench
