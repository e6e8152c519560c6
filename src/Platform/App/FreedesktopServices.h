#pragma once
// FreedesktopServices: the desktop's small services over the session bus.
// - keep-awake: org.freedesktop.ScreenSaver (ScreenSaverInhibitor);
// - reveal: org.freedesktop.FileManager1 ShowItems, without waiting;
// - beep: the terminal bell on standard error when that is a terminal (a
//   headless run is driven from one); the console will use its own.
//
// Contract: as DesktopServices. Main thread. Each service missing on this
// desktop makes its call do nothing.

#include "Live/ports/DesktopServices.h"

namespace velarion {

class FreedesktopServices final : public DesktopServices {
public:
    std::unique_ptr<AwakeActivity> beginAwakeActivity(const std::string& reason) override;
    void beep() override;
    void reveal(const std::filesystem::path& item) override;
};

} // namespace velarion
