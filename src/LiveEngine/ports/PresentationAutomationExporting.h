#pragma once
// PresentationAutomationExporting: gets a static PDF of a Keynote or
// PowerPoint file out of a presentation application, so that the deck plays
// without it. Hidden slides are left out of the PDF.
//
// Contract.
// - `exportPDF` blocks its caller (an import's worker thread, never the
//   main loop) for as long as the application takes, bounded by
//   `timeoutSeconds`; each call is independent and leaves no temporary
//   files behind. It returns the PDF's bytes, or throws std::runtime_error
//   whose `what()` is the operator's sentence.
// - `applicationAvailable` is cheap and may be called from any thread.
//
// Implementations: LibreOffice in headless mode on Linux.

#include <filesystem>
#include <string>

namespace velarion {

enum class PresentationKind { keynote = 1, powerPoint = 2 };

class PresentationAutomationExporting {
public:
    static constexpr double timeoutSeconds = 120;
    virtual ~PresentationAutomationExporting() = default;
    virtual bool applicationAvailable(PresentationKind kind) const = 0;
    // The application's name for sentences.
    virtual std::string applicationName(PresentationKind kind) const = 0;
    virtual std::string exportPDF(const std::filesystem::path& from, PresentationKind sourceKind) = 0;

    // "<name> is not installed. Install it to import this presentation, …"
    static std::string notInstalled(const std::string& name) {
        return name + " is not installed. Install it to import this presentation, or export the deck "
                      "as a PDF from its presentation app and import that PDF.";
    }
};

} // namespace velarion
