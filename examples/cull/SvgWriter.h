// examples/cull/SvgWriter.h - the demo's picture of the screen
#ifndef KDRCORE_EXAMPLES_CULL_SVGWRITER_H
#define KDRCORE_EXAMPLES_CULL_SVGWRITER_H

#include "kdrcore/geometry/BoundingBox.h"

#include <string>
#include <vector>

/// What the library said about one box.
struct BoxResult {
    BoundingBox box;       ///< the box in the world
    int code = 0;          ///< cameraProjBBox: 1 all corners in front, 2 all behind, 3 both
    BoundingBox2D extent;  ///< cameraProjBBox: screen extent, uninitialised when code is 2
    bool onScreen = false; ///< BBox3DIntersectBBox2D against the viewport
    bool wholly = false;   ///< its boxInsideRect: every corner in front lies in the viewport
    bool picked = false;   ///< BBox3DIntersectBBox2D against the pick rectangle
};

/// The verdict the picture and the summary use: "picked", "visible", "culled" or "behind".
/// Picked boxes are visible too; "behind" means code 2, no screen extent.
char const * verdict(BoxResult const & r);

/// What the picture shows.
struct Picture {
    BoundingBox2D viewport; ///< the screen in the matrix's screen space, y up
    BoundingBox2D pick;     ///< the pick rectangle, in the same space
    int width = 800;        ///< pixels the viewport is drawn with
    int height = 600;
    std::vector<BoxResult> const * results = nullptr;
    std::string caption; ///< a line of text under the picture
};

/// The picture as an SVG document: the viewport, the pick rectangle and one `rect` element of
/// class "box" per box that has a screen extent (code 1 or 3), coloured by its verdict, dashed
/// when the box straddles the viewer, with a legend. Extents reaching far off the screen are
/// clipped to a margin around it.
std::string renderSvg(Picture const & picture);

#endif // KDRCORE_EXAMPLES_CULL_SVGWRITER_H
