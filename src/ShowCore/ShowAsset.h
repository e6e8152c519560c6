#pragma once
// Media the show uses: files kept in the package ("managed", under the
// package's Assets/Managed/ folder) or linked where they lie, and the files
// made from them. Plain values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/ShowURL.h"

#include <map>
#include <string>
#include <variant>

namespace velarion::showcore {

enum class AssetMediaKind { audio, video, image, document, presentationOriginal, font, other };
SHOWCORE_CASE_NAMES(AssetMediaKind, "audio", "video", "image", "document", "presentationOriginal", "font", "other");

enum class AssetStoragePolicy { managed, linked };
SHOWCORE_CASE_NAMES(AssetStoragePolicy, "managed", "linked");

namespace locator {
struct Managed {
    std::string contentHash;
    std::string filename; // one name inside the package's Assets/Managed/ folder
    bool operator==(const Managed&) const = default;
};
struct Linked {
    ShowURL fileURL;
    std::string fingerprint;
    bool operator==(const Linked&) const = default;
};
} // namespace locator

using AssetLocator = std::variant<locator::Managed, locator::Linked>;

struct ShowAsset {
    Uuid id;
    std::string contentHash;
    AssetMediaKind mediaKind = AssetMediaKind::other;
    AssetStoragePolicy storagePolicy = AssetStoragePolicy::managed;
    AssetLocator locator = locator::Managed{};
    std::map<std::string, std::string> metadata;
    bool operator==(const ShowAsset&) const = default;
};

enum class DerivedAssetKind { thumbnail, presentationPage };
SHOWCORE_CASE_NAMES(DerivedAssetKind, "thumbnail", "presentationPage");

struct DerivedAsset {
    Uuid id;
    Uuid sourceAssetID;
    DerivedAssetKind kind = DerivedAssetKind::thumbnail;
    std::string contentHash;
    std::string generatorVersion;
    std::string filename;
    bool operator==(const DerivedAsset&) const = default;
};

} // namespace velarion::showcore
