// Managed assets against the package folder, and the value rules of
// single records.

#include "ShowCore/ValidationSteps.h"

namespace velarion::showcore::validation {

namespace {

// One plain name: nothing that could lead out of Assets/Managed/.
bool isPlainFileName(const std::string& name) {
    if (name.empty() || name == "." || name == "..") return false;
    for (const char c : name) {
        if (c == '/' || c == '\\' || c == '\0') return false;
    }
    return true;
}

} // namespace

void checkManagedAssets(const ShowDocument& document, const ManagedAssetProbe& probe, Findings& findings) {
    for (const ShowAsset& asset : document.assets) {
        const auto* managed = std::get_if<locator::Managed>(&asset.locator);
        const bool policyIsManaged = asset.storagePolicy == AssetStoragePolicy::managed;
        bool sound = managed != nullptr && policyIsManaged;
        if (sound) {
            sound = isPlainFileName(managed->filename) && managed->contentHash == asset.contentHash &&
                    (!probe || probe("Assets/Managed/" + managed->filename));
        } else if (managed == nullptr && !policyIsManaged) {
            continue; // a linked asset, linked where it lies
        }
        if (!sound) findings.add(ShowValidationErrorKind::invalidManagedAsset, "asset", asset.id);
    }
}

void checkValues(const ShowDocument& document, Findings& findings) {
    constexpr auto invalid = ShowValidationErrorKind::invalidValue;
    forEachAction(document, [&](const ShowAction& action) {
        if (auto* audio = std::get_if<ProviderAudioPayload>(&action.payload)) {
            if (!audio->playbackWindow.isValid()) {
                findings.add(invalid, ProviderPlaybackWindow::invalidMessage, action.id);
            }
        }
    });
    for (const auto& link : document.providerFallbackLinks) {
        if (!link.isValid()) findings.add(invalid, ProviderFallbackLink::invalidMessage, link.id);
    }
    if (!document.settings.isSafe()) findings.add(invalid, ShowSettings::unsafeMessage, document.id);
    if (!document.settings.backupRetention.isValid()) {
        findings.add(invalid, BackupRetentionPolicy::invalidMessage, document.id);
    }
}

} // namespace velarion::showcore::validation
