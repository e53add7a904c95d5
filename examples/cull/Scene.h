// examples/cull/Scene.h - the demo's camera and its built-in field of boxes
#ifndef KDRCORE_EXAMPLES_CULL_SCENE_H
#define KDRCORE_EXAMPLES_CULL_SCENE_H

#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Vector.h"

#include <vector>

/// A pinhole camera and the pixel viewport it draws into.
struct Camera {
    Vector3f eye;    ///< where the viewer stands
    Vector3f target; ///< a point it looks at
    Vector3f up;     ///< roughly up; need not be orthogonal to the view direction
    float fovY;      ///< vertical field of view, radians
    float zNear;     ///< distance of the near plane, > 0
    float zFar;      ///< distance of the far plane, > zNear
    int width;       ///< screen width in pixels; the aspect ratio is width / height
    int height;      ///< screen height in pixels
};

/// The camera of the demo: at (0, 2, 0) looking along -z at (0, 2, -10), y up, 60 degrees
/// vertical field of view, near 0.5, far 500, an 800 x 600 pixel screen.
Camera demoCamera();

/// World to screen in one matrix: the view transform (world to eye) and an OpenGL-style
/// perspective (eye to normalised coordinates). After the division by w the screen is the square
/// [-1, 1] x [-1, 1], x to the right and y up, with its centre at the origin; z runs from -1 at
/// the near plane to 1 at the far plane.
///
/// The screen tests need that centre at the origin: a point behind the viewer comes out of the
/// division mirrored through the origin, and they negate its x and y to bring it back. A pixel
/// viewport offset baked into the matrix would move the mirror away from the screen's centre, so
/// the mapping to pixels is left to the drawing.
Matrix4f cameraMatrix(Camera const & camera);

/// The depth limit that goes with cameraMatrix: a projected point deeper than this lies behind
/// the viewer. Points in front, however far, project below it; points behind the eye have a
/// negative w, which the division turns into a depth above it.
float behindDepth(Camera const & camera);

/// How many of the eight corners of `box` lie behind the viewer plane of `proj`: the plane where
/// the matrix's w (its row 3) is zero, through the eye and parallel to the screen. It is where
/// the screen tests split with behindDepth: a corner with w > 0 projects below that depth, one
/// with w < 0 above it. A box with 1 to 7 corners behind straddles the viewer.
int cornersBehind(BoundingBox const & box, Matrix4f const & proj);

/// `count` boxes scattered around the demo camera, the same for every run: most stand on the
/// ground in front of or behind the viewer, some float, and every sixteenth is a long box that
/// runs past the viewer, so that it has corners on both sides.
std::vector<BoundingBox> builtInScene(int count);

#endif // KDRCORE_EXAMPLES_CULL_SCENE_H
