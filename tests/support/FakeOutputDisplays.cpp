#include "FakeOutputDisplays.h"

#include <algorithm>

namespace velarion::testing {

namespace {

class FakeWindow final : public OutputWindow {
public:
    explicit FakeWindow(std::shared_ptr<FakeWindowRecord> record) : record_(std::move(record)) {}
    ~FakeWindow() override { record_->isOpen = false; }
    void show(const OutputScene& scene, const SceneSurfaces&, double) override { record_->shown.push_back(scene); }
    std::optional<std::string> failure() const override { return record_->failure; }
    bool isClosed() const override { return record_->closedByOperator; }

private:
    std::shared_ptr<FakeWindowRecord> record_;
};

StillImage tinyStill() { return *StillImage::fromBGRA(1, 1, {0, 0, 0, 255}); }

} // namespace

std::unique_ptr<OutputWindow> FakeOutputDisplays::open(const std::optional<DisplayInfo>& display,
                                                       const std::string& title) {
    auto record = std::make_shared<FakeWindowRecord>();
    if (display) record->displayID = display->id;
    record->title = title;
    windows.push_back(record);
    return std::make_unique<FakeWindow>(record);
}

void FakeOutputDisplays::plug(const std::string& id) {
    connected.push_back(DisplayInfo{id, id, 1920, 1080, connected.empty()});
    if (onChange_) onChange_();
}

void FakeOutputDisplays::unplug(const std::string& id) {
    std::erase_if(connected, [&](const DisplayInfo& display) { return display.id == id; });
    if (onChange_) onChange_();
}

const FakeWindowRecord* FakeOutputDisplays::window(const std::string& displayID) const {
    for (auto record = windows.rbegin(); record != windows.rend(); ++record)
        if ((*record)->isOpen && (*record)->displayID.value_or("") == displayID) return record->get();
    return nullptr;
}

int FakeOutputDisplays::openCount() const {
    return static_cast<int>(std::count_if(windows.begin(), windows.end(), [](const auto& w) { return w->isOpen; }));
}

std::optional<StillImage> FakeScreenPictures::stage(const StagePictureInputs& inputs) {
    stages.push_back(inputs);
    return tinyStill();
}

std::optional<StillImage> FakeScreenPictures::identify(const std::string&, ScreenRole) { return tinyStill(); }

std::optional<StillImage> FakeScreenPictures::pattern(OutputTestPattern) { return tinyStill(); }

} // namespace velarion::testing
