#pragma once
// The one check of a whole show graph. `validationFindings` returns every
// fault, grouped by rule in this order: identities, parents, order ranks,
// references, managed assets, values; within a rule, in the order the
// records appear in the document. So the same graph always gives the same
// list, and its first entry is the fault `ShowDocument::validateForPersistence`
// throws.
//
// Thread: pure functions; any thread. The probe, when given, is called on
// the caller's thread, once per managed asset.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace velarion::showcore {

struct ShowDocument;

enum class ShowValidationErrorKind {
    duplicateIdentity,   // subject: the kind of record ("action")
    parentMismatch,      // subject: the kind of child ("cue")
    unresolvedReference, // subject: the words of the reference ("local audio asset")
    invalidManagedAsset, // subject: "asset"
    invalidOrder,        // subject: the kind of record whose rank is malformed or repeated
    invalidValue,        // subject: the rule's own sentence
};
SHOWCORE_CASE_NAMES(ShowValidationErrorKind, "duplicateIdentity", "parentMismatch", "unresolvedReference",
                    "invalidManagedAsset", "invalidOrder", "invalidValue");

// Names the kind of fault, what it concerns and the identity at fault, so a
// caller can point at the record; `what()` is the operator's sentence.
class ShowValidationError : public std::runtime_error {
public:
    ShowValidationError(ShowValidationErrorKind kind, std::string subject, Uuid id);

    ShowValidationErrorKind kind;
    std::string subject;
    Uuid id;

    friend bool operator==(const ShowValidationError& a, const ShowValidationError& b) {
        return a.kind == b.kind && a.subject == b.subject && a.id == b.id;
    }
};

// Whether a file exists at a path relative to the package folder
// ("Assets/Managed/intro.wav"). Without a probe only the names are checked.
using ManagedAssetProbe = std::function<bool(const std::string& relativePath)>;

// A probe that looks for regular files under `packageFolder`.
ManagedAssetProbe packageFolderProbe(std::filesystem::path packageFolder);

std::vector<ShowValidationError> validationFindings(const ShowDocument& document,
                                                    const ManagedAssetProbe& managedAssetExists = {});

} // namespace velarion::showcore
