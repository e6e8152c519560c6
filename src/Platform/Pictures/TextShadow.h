#pragma once
// TextShadow: draws a piece of content over a soft shadow of itself, as a
// graphics context's shadow would: the content's coverage, blurred, tinted
// and offset, goes down first.
//
// Contract.
// - `content` draws onto a transparent layer covering `area` of the
//   painter's device, in the device's coordinates; it is called once,
//   synchronously. Whatever it draws outside `area` is lost, so the area
//   should hold the content with some room.
// - The blur is a Gaussian of standard deviation half the blur, made of
//   three box passes, and costs only around what the content covers.
// - Threads: whichever thread owns the painter.

#include <QColor>
#include <QPainter>
#include <QPointF>
#include <QRect>

#include <functional>

namespace velarion {

struct Shadow {
    QPointF offsetPixels;  // down and right are positive
    double blurPixels = 0; // as a graphics context's shadow blur
    QColor color;
};

void drawWithShadow(QPainter& painter, const Shadow& shadow, const QRect& area,
                    const std::function<void(QPainter&)>& content);

} // namespace velarion
