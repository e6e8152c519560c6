#pragma once
// SlideEditorCanvas: one made slide drawn at its 16:9 aspect, its text boxes
// outlined, the chosen one with handles. A box is moved by dragging its body
// and sized by its handles; the canvas shows the box as it goes and hands
// the finished box, clamped to the slide, to `onBoxChanged` once, on
// release, so that a drag is one change.
//
// Contract: main thread. The canvas keeps copies of what it is given and
// calls back synchronously from mouse events; a callback may call
// `setSlide` again. `paintSlide` is also what the slide list's thumbnails
// are drawn with.

#include "LiveModel/DeckInfo.h"

#include <QImage>
#include <QWidget>

#include <functional>
#include <optional>

namespace velarion::console {

class SlideEditorCanvas final : public QWidget {
public:
    static constexpr double handlePixels = 8;

    explicit SlideEditorCanvas(QWidget* parent = nullptr);

    // None shows an empty frame. `background` is the slide's picture, when
    // it has one and it is loaded.
    void setSlide(const std::optional<MadeSlide>& slide, const QImage& background = {});
    const std::optional<MadeSlide>& slide() const { return slide_; }
    const std::optional<Uuid>& selectedBox() const { return selected_; }
    // Also tells `onBoxSelected` when the choice changes.
    void selectBox(const std::optional<Uuid>& boxID);

    // Where the slide stands in the widget, and where a box stands on it.
    QRectF pageRect() const;
    QRectF boxRect(const TextBox& box) const;

    std::function<void(const TextBox&)> onBoxChanged;
    std::function<void(const std::optional<Uuid>&)> onBoxSelected;

    // The slide as the audience sees it, scaled into `page`.
    static void paintSlide(QPainter& painter, const QRectF& page, const MadeSlide& slide,
                           const QImage& background);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // What a press took hold of: the body, or an edge or corner.
    enum Edge { none = 0, left = 1, right = 2, top = 4, bottom = 8, body = 16 };
    struct Grip {
        TextBox box;
        int edges = none;
    };
    std::optional<Grip> gripAt(const QPointF& at) const;
    std::vector<TextBox> shownBoxes() const;
    TextBox dragged(const QPointF& to) const;

    std::optional<MadeSlide> slide_;
    QImage background_;
    std::optional<Uuid> selected_;
    std::optional<Grip> grip_;
    QPointF pressedAt_;
    std::optional<TextBox> moving_;
};

} // namespace velarion::console
