#include "Live/ports/ShowFolders.h"

#include "LiveModel/ShowPackage.h"

namespace velarion {

std::filesystem::path StandardShowFolders::showsFolder() const {
    return ShowPackage::showsFolder();
}

std::filesystem::path StandardShowFolders::unsavedFolder() const {
    return ShowPackage::scratchFolder();
}

} // namespace velarion
