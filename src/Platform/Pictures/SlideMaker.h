#pragma once
// SlideMaker: made slides as pictures. Draws a MadeSlide on a 1920 by 1080
// page, names the page by what it shows, and keeps a deck's page files in
// the package in step with its slides.
//
// Contract.
// - `pageName` depends only on the deck's id and the slide's content, so a
//   redraw of an unchanged slide finds its file and draws nothing. Raising
//   its version text redraws every page after a change of drawing.
// - `update` writes missing pages with ShowPackage::writeMedia (atomic) and
//   throws the first write's error; the item passed in is never changed, so
//   a failure leaves the caller's deck as it was. `prunePages` is silent.
// - `render` gives a premultiplied canvas (transparent for a clear slide).
// - Threads: any thread, several at once (Qt 6 draws text on a QImage on
//   any thread once the GUI application exists). Stateless: nothing is
//   kept between calls.

#include "LiveModel/MediaItem.h"
#include "LiveModel/SharedList.h"
#include "LiveModel/ShowPackage.h"

#include <QColor>
#include <QFont>
#include <QImage>
#include <QPainter>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace velarion {

// A page that could not be encoded as PNG.
struct SlidePageError : std::runtime_error {
    SlidePageError() : std::runtime_error("The slide picture couldn't be saved.") {}
};

namespace SlideMaker {

inline constexpr int pageWidthPixels = 1920;
inline constexpr int pageHeightPixels = 1080;

// "Slides/<deck id>/<hex SHA-256 of the version, the deck id and the
// slide's JSON with sorted keys>.png".
std::string pageName(const Uuid& deckID, const MadeSlide& slide);

// Draws the pages of a deck of made slides that have no file yet, over the
// library picture of each slide's `imageID` when it can be read. Returns the
// item with `pages`, `notes` and `groups` rebuilt from its slides; an item
// without made slides comes back unchanged.
MediaItem update(const MediaItem& item, const ShowPackage& package,
                 const SharedList<MediaItem>& library);

// The item with its deck's pages named and its notes and groups rebuilt
// from its made slides, without drawing; an item without made slides comes
// back unchanged.
MediaItem withPages(const MediaItem& item);
// The indexes of the pages of `withPages`'s item that have no file yet,
// each name once.
std::vector<std::size_t> missingPages(const MediaItem& named, const ShowPackage& package);
// Draws and writes the page at `index` of `withPages`'s item; throws the
// write's error, or SlidePageError.
void drawPage(const MediaItem& named, std::size_t index, const ShowPackage& package,
              const SharedList<MediaItem>& library);

// Deletes PNG files under Media/Slides that no deck of the library names,
// then the folders left empty.
void prunePages(const ShowPackage& package, const SharedList<MediaItem>& library);

// The page of one slide, over `background` when there is one.
QImage render(const MadeSlide& slide, const std::optional<QImage>& background);

// Whether text without a colour of its own is white on this slide.
bool usesLightText(const MadeSlide& slide);

// The font of a text box: the house face with no name, the mapped design
// for "New York", "SF Rounded" and "SF Mono", else the named family, or the
// house face when the family isn't installed.
QFont font(const std::optional<std::string>& name, double size, bool bold);

// Draws one box's text in its colour, or in `ink` when it has none or
// `overrideColor` is set.
void drawBox(QPainter& painter, const TextBox& box, const QColor& ink, bool overrideColor = false);

// The picture of a library image by id, decoded; none when it isn't an
// image of the library or can't be read.
std::optional<QImage> libraryPicture(const Uuid& mediaID, const ShowPackage& package,
                                     const SharedList<MediaItem>& library);

} // namespace SlideMaker

} // namespace velarion
