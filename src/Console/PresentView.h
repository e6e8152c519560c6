#pragma once
// PresentView: the slides page. The live deck or song (or, with none live,
// the deck of the selected slides cue) as a grid of slide pictures under
// its section headings, each heading with the letter key that jumps to it;
// the slide on air is framed in red and the deck's background tile, when
// it has one, is marked while it shows alone. Clicking a slide shows it,
// clicking the background shows the background, clicking a heading jumps
// there; a deck that isn't running starts at the clicked slide. A slide cut
// into parts for screens with fewer lyric lines says how many.
//
// Contract: main thread; the AppModel and the LibraryPictures outlive the
// view. `refresh` reads the model and the engine's state and changes only
// what differs; page pictures load on the pictures' worker into
// AppModel::caches().slideImages.

#include "Identity/Uuid.h"

#include <QWidget>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

class QLabel;
class QScrollArea;

namespace velarion {
class AppModel;
struct MediaItem;
} // namespace velarion

namespace velarion::console {

class LibraryPictures;

class PresentView final : public QWidget {
public:
    static constexpr int tileWidth = 224;
    static constexpr int tileHeight = 126;
    static constexpr const char* helpLine = "Space GO · Esc Panic · ← → slides · . safe slide · V C B jump to song sections";

    PresentView(AppModel& model, LibraryPictures& pictures, QWidget* parent = nullptr);
    void refresh();

    // What is laid out: a section's heading, the background tile or a
    // slide's tile.
    struct Cell {
        enum class Kind { heading, background, slide } kind = Kind::slide;
        int slide = -1;        // first slide of a heading's section, or the tile's
        QString text;          // heading words or the tile's caption
        QString key;           // a heading's jump letter
        int parts = 1;         // lyric parts of a slide
        std::string page;      // the page picture's stored name
        QRect rect;
    };
    const std::vector<Cell>& cells() const { return cells_; }
    // The deck's cue shown, and its slide on air (none when not live).
    const std::optional<Uuid>& deckCue() const { return deckCue_; }
    std::optional<int> onAir() const { return onAir_; }
    bool backgroundOnAir() const { return backgroundOnAir_; }
    // The tile of a slide, for tests and the scroll that follows the live one.
    QRect slideRect(int slide) const;
    QLabel& title() { return *title_; }
    QWidget& grid();

private:
    class Grid;
    void rebuild(const MediaItem* item);
    void requestPages(const MediaItem& item);
    void clicked(const Cell& cell);

    AppModel& model_;
    LibraryPictures& pictures_;
    QLabel* title_ = nullptr;
    QLabel* status_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    Grid* grid_ = nullptr;
    std::vector<Cell> cells_;
    std::optional<Uuid> deckCue_;
    const void* deckShown_ = nullptr;
    std::optional<int> onAir_;
    bool backgroundOnAir_ = false;
    bool isLive_ = false;
    std::set<std::string> requested_;
    std::optional<Uuid> picturesShow_;
    std::uint64_t picturesGeneration_ = 0;
};

} // namespace velarion::console
