#pragma once
// Doubles of the application model's ports for tests: output managers that
// record, slide pages that name pages without drawing, desktop services and
// an application that remember what was asked, and show folders inside a
// temporary folder. Test thread only, like the ports.

#include "RecordingOutputManager.h"

#include "Live/ports/ApplicationControl.h"
#include "Live/ports/DesktopServices.h"
#include "Live/ports/OutputManagers.h"
#include "Live/ports/ShowFolders.h"
#include "Live/ports/SlidePages.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace velarion::testing {

// Makes RecordingOutputManagers and keeps a pointer to the newest, which
// lives as long as the model keeps it.
class RecordingOutputManagers final : public OutputManagers {
public:
    std::unique_ptr<OutputManager> make() override {
        auto made = std::make_unique<RecordingOutputManager>();
        made->displays = displays;
        latest = made.get();
        ++madeCount;
        return made;
    }

    RecordingOutputManager* latest = nullptr;
    int madeCount = 0;
    // The displays each new manager lists as connected.
    std::vector<DisplayInfo> displays;
};

// Names each made slide's page "Slides/<deck id>/<slide index>.png" without
// drawing or writing anything; fails with `failure` when set. `draw`
// finishes at once, unless `holdsDraws`: then `finishDraws` does, in order.
class FakeSlidePages final : public SlidePages {
public:
    TaskHandle draw(MediaItem item, ShowPackage package, SharedList<MediaItem> library, Done done) override;
    void finishDraws();
    MediaItem update(const MediaItem& item, const ShowPackage& package,
                     const SharedList<MediaItem>& library) override;
    void prunePages(const ShowPackage& package, const SharedList<MediaItem>& library) override;

    std::optional<std::string> failure;
    bool holdsDraws = false;
    std::vector<std::function<void()>> heldDraws;
    int pruneCount = 0;
};

class RecordingDesktopServices final : public DesktopServices {
public:
    std::unique_ptr<AwakeActivity> beginAwakeActivity(const std::string& reason) override;
    void beep() override { ++beepCount; }
    void reveal(const std::filesystem::path&) override {}

    // Activities begun and not yet ended.
    int awakeCount() const { return *awake_; }

    int beepCount = 0;
    std::vector<std::string> awakeReasons;

private:
    std::shared_ptr<int> awake_ = std::make_shared<int>(0);
};

class RecordingApplicationControl final : public ApplicationControl {
public:
    void terminate() override { ++terminateCount; }
    void relaunchAfterExit(const std::optional<std::filesystem::path>& package) override {
        if (failsRelaunch) throw std::runtime_error("no shell");
        relaunches.push_back(package);
    }

    bool failsRelaunch = false;
    int terminateCount = 0;
    std::vector<std::optional<std::filesystem::path>> relaunches;
};

// The documents and data folders of a user whose home is `root`.
class TempShowFolders final : public ShowFolders {
public:
    explicit TempShowFolders(std::filesystem::path root) : root_(std::move(root)) {}
    std::filesystem::path showsFolder() const override { return root_ / "Documents" / "Velarion Shows"; }
    std::filesystem::path unsavedFolder() const override {
        return root_ / ".local" / "share" / "Velarion" / "Unsaved";
    }

private:
    std::filesystem::path root_;
};

} // namespace velarion::testing
