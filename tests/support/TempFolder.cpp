#include "TempFolder.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>

namespace velarion::testing {

TempFolder::TempFolder(std::string_view prefix) {
    std::string pattern =
        (std::filesystem::temp_directory_path() / (std::string(prefix) + "-XXXXXX")).string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace velarion::testing
