#pragma once
// A fresh folder under the system's temporary folder, removed with everything
// in it when the object goes. For tests only.

#include <filesystem>
#include <string_view>

namespace velarion::testing {

class TempFolder {
public:
    explicit TempFolder(std::string_view prefix = "velarion-test");
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::filesystem::path& child) const { return path_ / child; }

private:
    std::filesystem::path path_;
};

} // namespace velarion::testing
