#pragma once
// Doubles of the output side's platform: displays that tests plug in and
// out, windows that remember every scene they were shown, and pictures that
// are counted. Main thread, like the ports.

#include "LiveEngine/ports/OutputDisplays.h"
#include "LiveEngine/ports/ScreenPictures.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace velarion::testing {

struct FakeWindowRecord {
    std::optional<std::string> displayID; // none: the test window
    std::string title;
    std::vector<OutputScene> shown;
    bool isOpen = true;
    std::optional<std::string> failure; // what the window says went wrong
    bool closedByOperator = false;
};

class FakeOutputDisplays final : public OutputDisplays {
public:
    std::vector<DisplayInfo> displays() const override { return connected; }
    void setOnChange(std::function<void()> callback) override { onChange_ = std::move(callback); }
    std::unique_ptr<OutputWindow> open(const std::optional<DisplayInfo>& display, const std::string& title) override;

    void plug(const std::string& id);
    void unplug(const std::string& id);
    // The window last opened for a display ("" for the test window), if open.
    const FakeWindowRecord* window(const std::string& displayID) const;
    int openCount() const;

    std::vector<DisplayInfo> connected;
    std::vector<std::shared_ptr<FakeWindowRecord>> windows; // every one ever opened

private:
    std::function<void()> onChange_;
};

class FakeScreenPictures final : public ScreenPictures {
public:
    std::optional<StillImage> stage(const StagePictureInputs& inputs) override;
    std::optional<StillImage> identify(const std::string& name, ScreenRole role) override;
    std::optional<StillImage> pattern(OutputTestPattern pattern) override;

    std::vector<StagePictureInputs> stages;
};

} // namespace velarion::testing
