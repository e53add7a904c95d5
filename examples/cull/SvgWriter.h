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
    int cornersBehind = 0; ///< corners behind the viewer plane, from the geometry (cornersBehind)
};

/// The verdict the picture and the summary use: "picked", "visible", "culled" or "behind".
/// Picked boxes are visible too; "behind" means code 2, no screen extent.
char const * verdict(BoxResult const & r);

/// The camera as the top view draws it: seen from above, in world x (right) and z (down the
/// page). The camera is level, as the demo's is: its view direction has no y component.
struct TopView {
    double eyeX = 0.0, eyeY = 0.0, eyeZ = 0.0; ///< where the viewer stands
    double dirX = 0.0, dirZ = -1.0;            ///< unit view direction in x-z
    double tanPerScreenX = 1.0; ///< tangent of the angle right of the view direction per unit of
                                ///< screen x (the viewport's edge at 1 is half the field of view)
    double zNear = 0.5;         ///< distance of the near plane, for the legend
};

/// What the picture shows.
struct Picture {
    BoundingBox2D viewport; ///< the screen in the matrix's screen space, y up
    BoundingBox2D pick;     ///< the pick rectangle, in the same space
    int width = 800;        ///< pixels the viewport is drawn with
    int height = 600;
    std::vector<BoxResult> const * results = nullptr;
    std::string caption; ///< a line of text under the screen panel
    TopView top;
};

/// The picture as an SVG document of two panels side by side, each with a title and a legend.
/// The screen panel (group "screen-panel"): the viewport, the pick rectangle and one `rect` of
/// class "box" per box that has a screen extent (code 1 or 3), coloured by its verdict, dashed
/// when the box straddles the viewer; extents reaching far off the screen are clipped to a margin
/// around it. The top view (group "top-panel"): the camera, the edges of its field of view and
/// of the pick rectangle, the viewer plane, and one `rect` of class "footprint" per box, its x-z
/// extent, in the same colours, dashed when its corners lie on both sides of the viewer plane.
std::string renderSvg(Picture const & picture);

#endif // KDRCORE_EXAMPLES_CULL_SVGWRITER_H
