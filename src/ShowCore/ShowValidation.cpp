#include "ShowCore/ShowValidation.h"

#include "ShowCore/ShowDocument.h"
#include "ShowCore/ValidationSteps.h"

#include <system_error>

namespace velarion::showcore {

namespace {

std::string sentence(ShowValidationErrorKind kind, const std::string& subject, const Uuid& id) {
    switch (kind) {
    case ShowValidationErrorKind::duplicateIdentity:
        return "The " + subject + " identity " + id.text() + " is used more than once.";
    case ShowValidationErrorKind::parentMismatch:
        return "The " + subject + " " + id.text() + " doesn't name the record that holds it.";
    case ShowValidationErrorKind::unresolvedReference:
        return "The " + subject + " of " + id.text() + " doesn't resolve.";
    case ShowValidationErrorKind::invalidManagedAsset:
        return "The managed asset " + id.text() + " isn't a file in the package's Assets/Managed/ folder.";
    case ShowValidationErrorKind::invalidOrder:
        return "The " + subject + " " + id.text() + " has a malformed order rank or shares one with a sibling.";
    case ShowValidationErrorKind::invalidValue:
        return subject;
    }
    return subject;
}

} // namespace

ShowValidationError::ShowValidationError(ShowValidationErrorKind kind_, std::string subject_, Uuid id_)
    : std::runtime_error(sentence(kind_, subject_, id_)), kind(kind_), subject(std::move(subject_)), id(id_) {}

ManagedAssetProbe packageFolderProbe(std::filesystem::path packageFolder) {
    return [folder = std::move(packageFolder)](const std::string& relativePath) {
        std::error_code error;
        return std::filesystem::is_regular_file(folder / relativePath, error);
    };
}

std::vector<ShowValidationError> validationFindings(const ShowDocument& document,
                                                    const ManagedAssetProbe& managedAssetExists) {
    std::vector<ShowValidationError> list;
    validation::Findings findings{list};
    validation::checkIdentities(document, findings);
    validation::checkParents(document, findings);
    validation::checkOrderRanks(document, findings);
    validation::checkReferences(document, findings);
    validation::checkManagedAssets(document, managedAssetExists, findings);
    validation::checkValues(document, findings);
    return list;
}

void ShowDocument::validateForPersistence(const ManagedAssetProbe& managedAssetExists) const {
    auto findings = validationFindings(*this, managedAssetExists);
    if (!findings.empty()) throw findings.front();
}

} // namespace velarion::showcore
