#pragma once
// A display connected to this computer, as the output side lists it. The id
// is the screen's connector name, which set_screens and the show store.
//
// Thread: a plain value; any thread.

#include <string>

namespace velarion {

struct DisplayInfo {
    std::string id;
    std::string name;
    int pixelWidth = 0;
    int pixelHeight = 0;
    bool isMain = false;
    friend bool operator==(const DisplayInfo&, const DisplayInfo&) = default;
};

} // namespace velarion
