#include "Platform/Import/DeckImporter.h"

#include "Identity/Uuid.h"
#include "LiveEngine/MediaImporter.h"
#include "LiveEngine/PowerPointNotes.h"
#include "LiveModel/FileAccess.h"
#include "Platform/Pictures/Canvas.h"

#include <poppler-qt6.h>
#include <unzip.h>

#include <QPainter>

#include <cmath>
#include <cstdio>
#include <memory>

namespace velarion {

namespace fs = std::filesystem;

namespace {

std::string lowerExtension(const fs::path& file) {
    std::string extension = file.extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

std::optional<PresentationKind> presentationKind(const fs::path& file) {
    const std::string extension = lowerExtension(file);
    if (extension == "key") return PresentationKind::keynote;
    if (extension == "ppt" || extension == "pptx") return PresentationKind::powerPoint;
    return std::nullopt;
}

std::unique_ptr<Poppler::Document> openPDF(const std::string& data) {
    std::unique_ptr<Poppler::Document> document =
        Poppler::Document::loadFromData(QByteArray(data.data(), static_cast<qsizetype>(data.size())));
    if (!document || document->isLocked()) return nullptr;
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    document->setPaperColor(Qt::white);
    return document;
}

std::optional<std::string> pagePNG(const Poppler::Document& document, int index) {
    const std::unique_ptr<Poppler::Page> page = document.page(index);
    if (!page) return std::nullopt;
    const QSizeF points = page->pageSizeF();
    if (!(points.width() > 0) || !(points.height() > 0)) return std::nullopt;
    const double scale = DeckImporter::pageWidthPixels / points.width();
    const int height = std::max(1, static_cast<int>(std::lround(points.height() * scale)));
    QImage drawn = page->renderToImage(72.0 * scale, 72.0 * scale, 0, 0, DeckImporter::pageWidthPixels, height);
    if (drawn.isNull()) return std::nullopt;
    // Transparent areas read as white, as on paper.
    QImage picture(drawn.size(), QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter(&picture).drawImage(0, 0, drawn);
    const QByteArray png = encodePNG(picture);
    if (png.isEmpty()) return std::nullopt;
    return std::string(png.constData(), static_cast<std::size_t>(png.size()));
}

// One zip file open for reading, closed once.
struct ZipCloser {
    void operator()(void* zip) const { unzClose(zip); }
};
using ZipFile = std::unique_ptr<void, ZipCloser>;

std::optional<std::string> readZipPart(unzFile zip, const std::string& name) {
    constexpr std::size_t limit = 64 << 20; // no part of a notes reading needs more
    if (unzLocateFile(zip, name.c_str(), 1) != UNZ_OK) return std::nullopt;
    unz_file_info info{};
    if (unzGetCurrentFileInfo(zip, &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK) return std::nullopt;
    if (info.uncompressed_size > limit || unzOpenCurrentFile(zip) != UNZ_OK) return std::nullopt;
    std::string text;
    char buffer[65536];
    int read = 0;
    while ((read = unzReadCurrentFile(zip, buffer, sizeof buffer)) > 0 && text.size() <= limit) {
        text.append(buffer, static_cast<std::size_t>(read));
    }
    const bool whole = unzCloseCurrentFile(zip) == UNZ_OK && read == 0;
    return whole ? std::optional<std::string>(std::move(text)) : std::nullopt;
}

// Takes the stored files back out of the package when the deck fails.
class Rollback {
public:
    Rollback(const ShowPackage& package) : package_(package) {}
    ~Rollback() {
        if (kept_) return;
        std::error_code ignored;
        for (const std::string& name : names_) fs::remove_all(package_.mediaURL(name), ignored);
    }
    void add(std::string name) { names_.push_back(std::move(name)); }
    void keep() { kept_ = true; }

private:
    const ShowPackage& package_;
    std::vector<std::string> names_;
    bool kept_ = false;
};

} // namespace

std::optional<std::vector<std::string>> DeckImporter::powerPointNotes(const fs::path& file) {
    const ZipFile zip(unzOpen64(file.c_str()));
    if (!zip) return std::nullopt;
    return powerPointNotes::notes([&](const std::string& name) { return readZipPart(zip.get(), name); });
}

std::string DeckImporter::exportPDF(const fs::path& source, std::optional<PresentationKind> kind) const {
    if (!kind) {
        auto content = fileAccess::readRegularFile(source, std::size_t{2} << 30);
        if (auto* bytes = std::get_if<std::string>(&content)) return std::move(*bytes);
        throw std::runtime_error(unreadablePDF);
    }
    if (!exporter_) throw std::runtime_error(PresentationAutomationExporting::notInstalled("LibreOffice"));
    if (!exporter_->applicationAvailable(*kind)) {
        throw std::runtime_error(PresentationAutomationExporting::notInstalled(exporter_->applicationName(*kind)));
    }
    return exporter_->exportPDF(source, *kind);
}

std::optional<std::string> DeckImporter::pngData(const std::string& pdfData, int page) {
    const std::unique_ptr<Poppler::Document> document = openPDF(pdfData);
    if (!document) return std::nullopt;
    return pagePNG(*document, page);
}

std::vector<std::string> DeckImporter::render(const std::string& pdfData, const std::string& folder,
                                              const ShowPackage& package, const std::atomic<bool>& cancelled) {
    const std::unique_ptr<Poppler::Document> document = openPDF(pdfData);
    if (!document) throw std::runtime_error(unreadablePDF);
    const int count = document->numPages();
    if (count <= 0) throw std::runtime_error(noPages);
    std::vector<std::string> pages;
    for (int index = 0; index < count; ++index) {
        if (cancelled.load()) throw ImportCancelled();
        const std::optional<std::string> png = pagePNG(*document, index);
        if (!png) continue;
        char number[16];
        std::snprintf(number, sizeof number, "%03d", index + 1);
        const std::string name = folder + "/page-" + number + ".png";
        package.writeMedia(*png, name);
        pages.push_back(name);
    }
    return pages;
}

MediaItem DeckImporter::importDeck(const fs::path& source, const ShowPackage& package,
                                   const std::atomic<bool>& cancelled) {
    const std::optional<PresentationKind> kind = presentationKind(source);
    const std::string pdf = exportPDF(source, kind);

    const std::string baseName = source.stem().string();
    const std::string folder = "Decks/" + baseName + " " + Uuid::random().text().substr(0, 6);
    Rollback rollback(package);
    rollback.add(folder);
    MediaItem item;
    item.fileName = mediaImporter::copyIn(source, package, "Decks", cancelled);
    rollback.add(item.fileName);

    DeckInfo deck;
    deck.pages = render(pdf, folder, package, cancelled);
    if (kind == PresentationKind::powerPoint) deck.notes = powerPointNotes(source).value_or(std::vector<std::string>{});
    deck.notes.resize(deck.pages.size());
    deck.source = kind == PresentationKind::keynote     ? "Keynote"
                  : kind == PresentationKind::powerPoint ? "PowerPoint"
                                                         : "PDF";
    item.id = Uuid::random();
    item.kind = MediaKind::deck;
    item.name = baseName;
    item.deck = std::move(deck);
    rollback.keep();
    return item;
}

} // namespace velarion
