#pragma once
// TextBlock: a run of text laid out in a box, as the pictures set it:
// paragraphs split at line feeds, word wrap, an alignment, optional extra
// space between lines, and the last line that fits ending in an ellipsis
// when more text follows.
//
// Contract.
// - Measured against the paint device given (a 72-dpi canvas), so points
//   are pixels. The device must outlive the block.
// - Threads: whichever thread owns the device; fonts need the GUI
//   application (see PictureFonts.h).

#include <QColor>
#include <QFont>
#include <QPaintDevice>
#include <QPainter>
#include <QRectF>
#include <QString>
#include <QTextLayout>

#include <memory>
#include <vector>

namespace velarion {

struct TextStyle {
    QFont font;
    QColor color = Qt::white;
    Qt::Alignment alignment = Qt::AlignLeft; // horizontal only
    double lineSpacingPoints = 0;             // extra space between lines
};

class TextBlock {
public:
    TextBlock(const QString& text, TextStyle style, double widthPixels, QPaintDevice* device);

    // The height of every line with its spacing, however tall.
    double heightPixels() const { return height_; }
    // The widest line.
    double naturalWidthPixels() const { return naturalWidth_; }

    // Draws from the top of `rect` the lines that fit in its height (at
    // least the first); when lines are left over, the last one drawn ends in
    // "…".
    void draw(QPainter& painter, const QRectF& rect) const;

private:
    struct Line {
        int paragraph = 0;
        int lineInParagraph = 0;
        double top = 0;
        double height = 0;
    };

    QString remainderFrom(const Line& line) const;

    QStringList paragraphs_;
    TextStyle style_;
    double width_;
    QPaintDevice* device_;
    std::vector<std::unique_ptr<QTextLayout>> layouts_;
    std::vector<Line> lines_;
    double height_ = 0;
    double naturalWidth_ = 0;
};

enum class VerticalPlacement {
    top,     // from the top of the box
    centered // the text's height, at most the box's, centred on the box
};

// One line in a box, vertically centred, ending in "…" when too long.
void drawLine(QPainter& painter, const QString& text, const QFont& font, const QColor& color,
              Qt::Alignment alignment, const QRectF& box);

// Lays out and draws in one go.
void drawText(QPainter& painter, const QString& text, const TextStyle& style, const QRectF& box,
              VerticalPlacement placement = VerticalPlacement::centered);

} // namespace velarion
