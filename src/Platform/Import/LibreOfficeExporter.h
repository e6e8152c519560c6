#pragma once
// LibreOfficeExporter: PowerPoint and Keynote files to a static PDF with
// LibreOffice in headless mode, which leaves hidden slides out.
//
// Contract: as PresentationAutomationExporting. Each run gets a private
// temporary folder ("vela-presentation-export-…") holding a copy of the
// source, LibreOffice's own profile (so a running LibreOffice of the
// operator's is never touched) and the output; the folder goes when the run
// ends. A run past the time bound is ended with its whole process group.
// Any thread; runs don't share state.

#include "LiveEngine/ports/PresentationAutomationExporting.h"

#include <optional>

namespace velarion {

class LibreOfficeExporter final : public PresentationAutomationExporting {
public:
    // `program` overrides the search for "soffice" on the PATH; a path that
    // isn't an executable file means LibreOffice is missing.
    explicit LibreOfficeExporter(std::optional<std::filesystem::path> program = std::nullopt,
                                 double timeoutSeconds = PresentationAutomationExporting::timeoutSeconds);

    bool applicationAvailable(PresentationKind kind) const override;
    std::string applicationName(PresentationKind) const override { return "LibreOffice"; }
    std::string exportPDF(const std::filesystem::path& from, PresentationKind sourceKind) override;

private:
    std::optional<std::filesystem::path> program_;
    double timeoutSeconds_;
};

} // namespace velarion
