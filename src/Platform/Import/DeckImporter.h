#pragma once
// DeckImporter: a PDF, PowerPoint or Keynote file becomes a deck: page
// pictures 1920 pixels wide inside the package ("Decks/<name> <6 chars>/
// page-001.png"), the source copied beside them, and speaker notes where
// the file has them (PowerPoint's, read from the file itself). PDF pages are
// drawn with poppler; presentations go to a static PDF first through the
// exporter, and without one they fail with its "not installed" sentence.
//
// Contract: as DeckImporting. Called on an import's worker thread; holds no
// state between calls, so several threads may import at once. A failure or
// a cancel removes the deck's folder and its copy of the source. The
// exporter, when given, must outlive the importer.

#include "LiveEngine/ports/MediaImportTools.h"
#include "LiveEngine/ports/PresentationAutomationExporting.h"

#include <optional>
#include <string>
#include <vector>

namespace velarion {

class DeckImporter final : public DeckImporting {
public:
    static constexpr int pageWidthPixels = 1920;
    static constexpr const char* unreadablePDF = "The presentation couldn't be read as pages.";
    static constexpr const char* noPages = "The presentation has no slides.";

    explicit DeckImporter(PresentationAutomationExporting* exporter) : exporter_(exporter) {}

    MediaItem importDeck(const std::filesystem::path& source, const ShowPackage& package,
                         const std::atomic<bool>& cancelled) override;

    // The PDF of a source: its bytes for a PDF, else the exporter's.
    std::string exportPDF(const std::filesystem::path& source, std::optional<PresentationKind> kind) const;
    // Draws every page into the folder; the stored names of those that gave
    // a picture. Throws with `unreadablePDF` or `noPages`.
    static std::vector<std::string> render(const std::string& pdfData, const std::string& folder,
                                           const ShowPackage& package, const std::atomic<bool>& cancelled);
    // One page of a PDF as PNG bytes, 1920 pixels wide on white; none for a
    // page without size. Pages count from 0.
    static std::optional<std::string> pngData(const std::string& pdfData, int page);
    // PowerPoint's notes, one per shown slide; none when the file can't be read.
    static std::optional<std::vector<std::string>> powerPointNotes(const std::filesystem::path& file);

private:
    PresentationAutomationExporting* exporter_;
};

} // namespace velarion
