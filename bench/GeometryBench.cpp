// bench/GeometryBench.cpp - screen tests and camera projection of boxes, beside the same
// algorithm written by hand with glm
//
// A field of boxes around a perspective camera: some in front, some straddling the viewer, some
// behind. The rectangles are a wide screen region (selection) and a narrow one (picking).
#include "BenchSupport.h"

#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/types/Matrix.h"

#include <cmath>
#include <vector>

#if KDRCORE_BENCH_HAVE_GLM
#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>
#endif

namespace kdrbench {
namespace {

constexpr int BOXES = 4096;
// Depth in normalised device coordinates: beyond 1 a point is behind the viewer.
constexpr float DEPTH_LIMIT = 1.0f;

struct Box {
    float lo[3], hi[3];
};

std::vector<Box> boxes() {
    std::vector<Box> out(BOXES);
    for (Box & b : out) {
        for (int i = 0; i < 3; ++i) {
            float const c = uniform(-20.0f, 20.0f);
            float const h = uniform(0.1f, 2.0f);
            b.lo[i] = c - h;
            b.hi[i] = c + h;
        }
    }
    return out;
}

// Perspective (fovy 1 rad, 16:9, near 0.1, far 100) times a view from (0, 2, 10) to the origin.
Matrix4f camera() {
    double const f = 1.0 / std::tan(0.5);
    double const aspect = 16.0 / 9.0, n = 0.1, fa = 100.0;
    // The view is a rotation about x by atan(2/10) and a translation: built through the kernel.
    MatAff4f view;
    float const angle = static_cast<float>(std::atan2(2.0, 10.0));
    float const t[3] = {0.0f, -2.0f, -10.0f};
    view.setTranslate(Vector3f(t[0], t[1], t[2]));
    view.multLeftByRotate(Vector3f(1.0f, 0.0f, 0.0f), angle);
    Matrix4f proj(static_cast<float>(f / aspect), 0, 0, 0, 0, static_cast<float>(f), 0, 0, 0, 0,
                  static_cast<float>((fa + n) / (n - fa)), -1.0f, 0, 0,
                  static_cast<float>(2.0 * fa * n / (n - fa)), 0);
    return proj * view;
}

BoundingBox toKdr(Box const & b) {
    BoundingBox box;
    box.m_min = Vector3f(b.lo[0], b.lo[1], b.lo[2]);
    box.m_max = Vector3f(b.hi[0], b.hi[1], b.hi[2]);
    return box;
}

BoundingBox2D rectangle(float x0, float y0, float x1, float y1) {
    BoundingBox2D r;
    r.m_min = Vector2f(x0, y0);
    r.m_max = Vector2f(x1, y1);
    return r;
}

#if KDRCORE_BENCH_HAVE_GLM
struct GlmBox {
    glm::vec3 lo, hi;
};
struct GlmRect {
    glm::vec2 lo, hi;
    bool valid;
};

// The screen tests of BoundingBoxAlgo as a host would write them with glm: project, divide,
// fold the corners behind the viewer, test against the rectangle.
struct GlmScreen {
    glm::vec2 frontLo{0.0f}, frontHi{0.0f}, behindLo{0.0f}, behindHi{0.0f};
    bool front = false, behind = false;

    static void grow(glm::vec2 & lo, glm::vec2 & hi, bool & valid, glm::vec2 p) {
        if (!valid) {
            lo = hi = p;
            valid = true;
        } else {
            lo = glm::min(lo, p);
            hi = glm::max(hi, p);
        }
    }
    // The merged rectangle; false when every corner was behind.
    bool merged(glm::vec2 & lo, glm::vec2 & hi) const {
        if (!front)
            return false;
        lo = frontLo;
        hi = frontHi;
        if (behind) {
            lo = glm::min(lo, behindLo);
            hi = glm::max(hi, behindHi);
        }
        return true;
    }
};

inline glm::vec3 project(glm::mat4 const & m, glm::vec3 const & p) {
    glm::vec4 const q = m * glm::vec4(p, 1.0f);
    return glm::vec3(q) / q.w;
}

inline glm::vec3 corner(GlmBox const & b, int i) {
    return glm::vec3((i & 4) ? b.hi.x : b.lo.x, (i & 2) ? b.hi.y : b.lo.y,
                     (i & 1) ? b.hi.z : b.lo.z);
}

bool glmBoxIntersectRect(GlmBox const & box, GlmRect const & rect, glm::mat4 const & m,
                         float depthLimit, bool & boxInside) {
    boxInside = false;
    bool const wideRect = rect.hi.x - rect.lo.x > 0.05f;
    GlmScreen s;
    bool allInside = false;
    for (int i = 0; i < 8; ++i) {
        glm::vec3 q = project(m, corner(box, i));
        if (depthLimit < q.z) {
            GlmScreen::grow(s.behindLo, s.behindHi, s.behind, -glm::vec2(q));
            continue;
        }
        bool const inside =
            rect.lo.x <= q.x && q.x <= rect.hi.x && rect.lo.y <= q.y && q.y <= rect.hi.y;
        if (wideRect) {
            if (i == 0)
                allInside = inside;
            else if (inside != allInside)
                return true;
        } else if (inside) {
            return true;
        }
        GlmScreen::grow(s.frontLo, s.frontHi, s.front, glm::vec2(q));
    }
    if (wideRect && allInside) {
        boxInside = true;
        return true;
    }
    glm::vec2 lo, hi;
    if (!s.merged(lo, hi) || !rect.valid)
        return false;
    return !(hi.x < rect.lo.x || rect.hi.x < lo.x || hi.y < rect.lo.y || rect.hi.y < lo.y);
}

int glmProjectBox(GlmRect & out, GlmBox const & box, glm::mat4 const & m, float depthLimit) {
    GlmScreen s;
    for (int i = 0; i < 8; ++i) {
        glm::vec3 const q = project(m, corner(box, i));
        if (depthLimit < q.z)
            GlmScreen::grow(s.behindLo, s.behindHi, s.behind, -glm::vec2(q));
        else
            GlmScreen::grow(s.frontLo, s.frontHi, s.front, glm::vec2(q));
    }
    out.valid = s.merged(out.lo, out.hi);
    return (s.front ? 1 : 0) + (s.behind ? 2 : 0);
}
#endif

void registerScreenTests() {
    std::vector<Box> const field = boxes();
    std::vector<BoundingBox> kboxes;
    for (Box const & b : field)
        kboxes.push_back(toKdr(b));
    Matrix4f const proj = camera();

    struct Rect {
        char const * name;
        float x0, y0, x1, y1;
    };
    Rect const rects[] = {{"BBox3DIntersectBBox2D", -0.4f, -0.3f, 0.5f, 0.35f},
                          {"BBox3DIntersectBBox2D narrow", 0.10f, 0.05f, 0.14f, 0.09f}};
    for (Rect const & r : rects) {
        BoundingBox2D const rect = rectangle(r.x0, r.y0, r.x1, r.y1);
        add(r.name, KDRCORE, BOXES,
            [kboxes, rect, proj, hits = std::vector<char>(BOXES)]() mutable {
                for (int i = 0; i < BOXES; ++i) {
                    bool spare, inside;
                    hits[i] =
                        static_cast<char>(BoundingBoxAlgo::BBox3DIntersectBBox2D(
                                              kboxes[i], rect, proj, DEPTH_LIMIT, spare, inside) +
                                          2 * inside);
                }
            });
#if KDRCORE_BENCH_HAVE_GLM
        std::vector<GlmBox> gboxes;
        for (Box const & b : field)
            gboxes.push_back(
                {glm::vec3(b.lo[0], b.lo[1], b.lo[2]), glm::vec3(b.hi[0], b.hi[1], b.hi[2])});
        GlmRect const grect{glm::vec2(r.x0, r.y0), glm::vec2(r.x1, r.y1), true};
        glm::mat4 gproj;
        for (int c = 0; c < 4; ++c)
            for (int k = 0; k < 4; ++k)
                gproj[c][k] = proj.getValue()[4 * c + k];
        add(r.name, "glm", BOXES,
            [gboxes, grect, gproj, hits = std::vector<char>(BOXES)]() mutable {
                for (int i = 0; i < BOXES; ++i) {
                    bool inside;
                    hits[i] = static_cast<char>(
                        glmBoxIntersectRect(gboxes[i], grect, gproj, DEPTH_LIMIT, inside) +
                        2 * inside);
                }
            });
#endif
    }

    add("cameraProjBBox (2D)", KDRCORE, BOXES,
        [kboxes, proj, out = std::vector<BoundingBox2D>(BOXES),
         codes = std::vector<char>(BOXES)]() mutable {
            for (int i = 0; i < BOXES; ++i)
                codes[i] = static_cast<char>(
                    BoundingBoxAlgo::cameraProjBBox(out[i], kboxes[i], proj, DEPTH_LIMIT));
        });
#if KDRCORE_BENCH_HAVE_GLM
    {
        std::vector<GlmBox> gboxes;
        for (Box const & b : field)
            gboxes.push_back(
                {glm::vec3(b.lo[0], b.lo[1], b.lo[2]), glm::vec3(b.hi[0], b.hi[1], b.hi[2])});
        glm::mat4 gproj;
        for (int c = 0; c < 4; ++c)
            for (int k = 0; k < 4; ++k)
                gproj[c][k] = proj.getValue()[4 * c + k];
        add("cameraProjBBox (2D)", "glm", BOXES,
            [gboxes, gproj, out = std::vector<GlmRect>(BOXES),
             codes = std::vector<char>(BOXES)]() mutable {
                for (int i = 0; i < BOXES; ++i)
                    codes[i] =
                        static_cast<char>(glmProjectBox(out[i], gboxes[i], gproj, DEPTH_LIMIT));
            });
    }
#endif
}

} // namespace

void registerGeometryBenchmarks() {
    registerScreenTests();
}

} // namespace kdrbench
