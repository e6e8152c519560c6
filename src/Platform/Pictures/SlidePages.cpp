// The page files of made slides in a package: their names, drawing the
// missing ones, and removing those no deck uses.

#include "Platform/Pictures/SlideMaker.h"

#include "LiveModel/ShowJson.h"
#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/PictureFile.h"

#include <QCryptographicHash>

#include <algorithm>
#include <set>
#include <system_error>

namespace velarion::SlideMaker {

namespace {

// Raise to redraw every page after a change of drawing.
constexpr std::string_view pageVersion = "slide-v2";

QByteArrayView bytes(std::string_view text) {
    return QByteArrayView(text.data(), static_cast<qsizetype>(text.size()));
}

std::filesystem::path resolved(const std::filesystem::path& path) {
    std::error_code error;
    auto canonical = std::filesystem::weakly_canonical(path, error);
    return error ? path.lexically_normal() : canonical;
}

bool isPNG(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".png";
}

} // namespace

std::string pageName(const Uuid& deckID, const MadeSlide& slide) {
    const std::string deck = deckID.text();
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(bytes(pageVersion));
    hash.addData(bytes(deck));
    hash.addData(bytes(encodeMadeSlide(slide)));
    return "Slides/" + deck + "/" + hash.result().toHex().toStdString() + ".png";
}

std::optional<QImage> libraryPicture(const Uuid& mediaID, const ShowPackage& package,
                                     const SharedList<MediaItem>& library) {
    const auto item = std::find_if(library.begin(), library.end(),
                                   [&](const MediaItem& media) { return media.id == mediaID; });
    if (item == library.end() || item->kind != MediaKind::image) return std::nullopt;
    return readPicture(package.mediaURL(item->fileName)).picture;
}

MediaItem withPages(const MediaItem& item) {
    if (!item.deck || !item.deck->made) return item;
    MediaItem updated = item;
    DeckInfo& deck = *updated.deck;
    const std::vector<MadeSlide>& slides = *deck.made;
    std::vector<std::string> pages, notes;
    std::vector<DeckGroup> groups;
    for (std::size_t index = 0; index < slides.size(); ++index) {
        const MadeSlide& slide = slides[index];
        pages.push_back(pageName(item.id, slide));
        notes.push_back(slide.notes);
        for (std::string& section : slide.effectiveSectionNames())
            groups.push_back({std::move(section), static_cast<int>(index)});
    }
    deck.pages = std::move(pages);
    deck.notes = std::move(notes);
    deck.groups = std::move(groups);
    return updated;
}

std::vector<std::size_t> missingPages(const MediaItem& named, const ShowPackage& package) {
    std::vector<std::size_t> missing;
    if (!named.deck || !named.deck->made) return missing;
    std::set<std::string_view> seen;
    const auto& pages = named.deck->pages;
    for (std::size_t index = 0; index < pages.size(); ++index) {
        // Two equal slides share one page: draw it once.
        if (!seen.insert(pages[index]).second) continue;
        std::error_code error;
        if (!std::filesystem::exists(package.mediaURL(pages[index]), error)) missing.push_back(index);
    }
    return missing;
}

void drawPage(const MediaItem& named, std::size_t index, const ShowPackage& package,
              const SharedList<MediaItem>& library) {
    const MadeSlide& slide = (*named.deck->made)[index];
    std::optional<QImage> background;
    if (slide.imageID) background = libraryPicture(*slide.imageID, package, library);
    const QByteArray png = encodePNG(render(slide, background));
    if (png.isEmpty()) throw SlidePageError();
    package.writeMedia(std::string_view(png.constData(), static_cast<std::size_t>(png.size())),
                       named.deck->pages[index]);
}

MediaItem update(const MediaItem& item, const ShowPackage& package,
                 const SharedList<MediaItem>& library) {
    MediaItem named = withPages(item);
    for (const std::size_t index : missingPages(named, package)) drawPage(named, index, package, library);
    return named;
}

void prunePages(const ShowPackage& package, const SharedList<MediaItem>& library) {
    std::set<std::filesystem::path> wanted;
    for (const MediaItem& item : library) {
        if (!item.deck) continue;
        for (const std::string& page : item.deck->pages) wanted.insert(resolved(package.mediaURL(page)));
    }
    const std::filesystem::path root = package.mediaURL("Slides");
    std::error_code error;
    if (!std::filesystem::is_directory(root, error)) return;

    std::vector<std::filesystem::path> files, folders;
    for (auto it = std::filesystem::recursive_directory_iterator(root, error);
         !error && it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
        std::error_code kindError;
        if (it->is_directory(kindError)) {
            folders.push_back(it->path());
        } else if (isPNG(it->path())) {
            files.push_back(it->path());
        }
    }
    for (const auto& file : files) {
        if (!wanted.contains(resolved(file))) std::filesystem::remove(file, error);
    }
    // Deepest first, so a folder emptied of folders goes too.
    std::sort(folders.begin(), folders.end(), [](const auto& a, const auto& b) {
        return a.string().size() > b.string().size();
    });
    for (const auto& folder : folders) {
        if (std::filesystem::is_empty(folder, error) && !error) std::filesystem::remove(folder, error);
    }
}

} // namespace velarion::SlideMaker
