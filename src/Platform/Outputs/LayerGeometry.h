#pragma once
// LayerGeometry: the maths both drawing back ends share, so that the OpenGL
// windows and the CPU compositor put every pixel in the same place.
//
// A draw operation's layer is described in layer-local coordinates: the
// origin at the centre of its rectangle, x right, y up, in root pixels. Its
// transform maps such a point q to centre + transform(q). What is drawn of
// the layer is one quad in those coordinates (the whole rectangle for a
// colour, the picture's placed rectangle cut to the layer for a picture),
// with the picture's texture coordinates at its edges.
//
// Plain functions over values; any thread.

#include "ShowStage/SceneFrame.h"

#include <array>
#include <optional>

namespace velarion {

struct LayerQuad {
    // Edges in layer-local coordinates (left < right, bottom < top).
    double left = 0;
    double bottom = 0;
    double right = 0;
    double top = 0;
    // Texture coordinates at the edges, 0 to 1; v = 0 is the picture's top row.
    double uLeft = 0;
    double uRight = 1;
    double vTop = 0;
    double vBottom = 1;
};

// The quad of a colour layer: its whole rectangle. None when it is empty.
std::optional<LayerQuad> colorQuad(const ScenePixelRect& rect);

// The quad of a picture of the given size placed by `gravity`: fit keeps the
// aspect inside the rectangle (bars stay transparent), fill keeps it and
// covers the rectangle with the overhang cut off, stretch covers it. None
// when nothing would show.
std::optional<LayerQuad> pictureQuad(const ScenePixelRect& rect, SceneGravity gravity,
                                      int pictureWidth, int pictureHeight);

// The projective part of a layer transform that acts on the plane (rows and
// columns x, y, w of the 4x4), and its inverse.
using PlaneMatrix = std::array<double, 9>; // row-major
PlaneMatrix planeOf(const SceneMatrix4& transform);
// None when the transform collapses the layer to a line.
std::optional<PlaneMatrix> inverted(const PlaneMatrix& matrix);

} // namespace velarion
