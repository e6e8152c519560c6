#pragma once
// DesktopServices: the desktop's small services the application model asks
// for: keeping the computer and its screens awake while a show is open, the
// system beep for a refused edit, and showing a file in the file manager.
//
// Contract.
// - Main thread only. None of it may block the main loop: a service that
//   answers slowly is asked asynchronously by the adapter.
// - Each service is optional on the desktop; where one is missing the call
//   does nothing (a null activity, a silent beep), and never throws.
// - `beginAwakeActivity` keeps the machine and the displays awake until the
//   returned activity is destroyed; `reason` is what the desktop shows for
//   it. Null when the desktop can't be asked. The activity may outlive the
//   services object only if the adapter says so; AppModel ends it first.
//
// Implementations: freedesktop D-Bus services; RecordingDesktopServices in
// tests.

#include <filesystem>
#include <memory>
#include <string>

namespace velarion {

// Ends its keep-awake request when destroyed.
class AwakeActivity {
public:
    virtual ~AwakeActivity() = default;
};

class DesktopServices {
public:
    virtual ~DesktopServices() = default;

    virtual std::unique_ptr<AwakeActivity> beginAwakeActivity(const std::string& reason) = 0;
    virtual void beep() = 0;
    // Opens the file manager on the folder holding `item`, with it selected.
    virtual void reveal(const std::filesystem::path& item) = 0;
};

} // namespace velarion
