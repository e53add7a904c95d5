// examples/cull/main.cpp - kdrcore-cull: which boxes touch the screen, seen through a camera
//
// What a host does every frame: project boxes through one camera matrix and ask the library
// which of them touch a screen rectangle (BoundingBoxAlgo::BBox3DIntersectBBox2D), and where on
// the screen they land (BoundingBoxAlgo::cameraProjBBox). Run with --help for the options.
#include "BoxFile.h"
#include "CountingKernel.h"
#include "Scene.h"
#include "SvgWriter.h"

#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Matrix.h"

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

char const * const usage = R"(Usage: kdrcore-cull [options]

Culls boxes against the screen with KDRCore and draws what it found. A camera at (0, 2, 0)
looks along -z at (0, 2, -10), y up, with a 60 degree vertical field of view, near 0.5 and
far 500, onto an 800 x 600 pixel screen; its matrix is built with the library's matrix
classes and maps the screen to [-1, 1] x [-1, 1]. For each box the program asks
BoundingBoxAlgo::BBox3DIntersectBBox2D whether it touches the viewport (the whole screen) and
whether it touches the pick rectangle (the middle 160 x 120 pixels, [-0.2, 0.2] x [-0.2, 0.2]),
and BoundingBoxAlgo::cameraProjBBox for its extent on the screen. It prints how many boxes are
  visible    touching the viewport,
  culled     in front of the viewer but off the screen,
  behind     wholly behind the viewer,
  picked     touching the pick rectangle (these are visible too),
  straddle   with corners both in front of and behind the viewer (counted above too),
how many box tests run per second, and writes an SVG picture of two panels: the screen, and
the scene seen from above with the camera, its field of view and the viewer plane.

Options:
  --boxes FILE     Read the boxes from FILE instead of the built-in scene. One box per line,
                   six numbers: minX minY minZ maxX maxY maxZ. '#' starts a comment; blank
                   lines are skipped.
  --count N        Number of boxes in the built-in scene, 1 to 1000000 (default 400).
  --svg PATH       Where to write the picture (default cull.svg).
  --kernel NAME    'default', or 'counting': install a kernel derived from
                   EnhancedMathFunctions that counts its matrix and vector operations, and
                   report which of them building the camera and the tests of one box (the
                   first box on the screen, else box 1) called, and how often.
  --help           Show this text.

Exit status: 0 done, 1 the picture could not be written, 2 a bad option or box file (nothing
is written then).
)";

struct Options {
    std::string boxesPath; // empty: the built-in scene
    std::string svgPath = "cull.svg";
    int count = 400;
    bool countGiven = false;
    bool counting = false;
    bool help = false;
};

// Fills `opt`; on a bad command line returns false with a one-line message in `error`.
bool parseArgs(Options & opt, std::string & error, int argc, char ** argv) {
    for (int i = 1; i < argc; ++i) {
        std::string const arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            opt.help = true;
            continue;
        }
        if (arg != "--boxes" && arg != "--count" && arg != "--svg" && arg != "--kernel") {
            error = (arg.rfind("-", 0) == 0 ? "unknown option '" : "unexpected argument '") + arg +
                    "' (see --help)";
            return false;
        }
        if (i + 1 >= argc) {
            error = arg + " needs a value (see --help)";
            return false;
        }
        std::string const value = argv[++i];
        if (arg == "--boxes") {
            opt.boxesPath = value;
        } else if (arg == "--svg") {
            opt.svgPath = value;
        } else if (arg == "--count") {
            char * end = nullptr;
            errno = 0;
            long const n = std::strtol(value.c_str(), &end, 10);
            if (value.empty() || *end != '\0' || errno == ERANGE || n < 1 || n > 1000000) {
                error = "--count: '" + value + "' is not a whole number from 1 to 1000000";
                return false;
            }
            opt.count = static_cast<int>(n);
            opt.countGiven = true;
        } else if (value == "counting" || value == "default") {
            opt.counting = value == "counting";
        } else {
            error = "--kernel: unknown kernel '" + value + "' (default or counting)";
            return false;
        }
    }
    if (opt.countGiven && !opt.boxesPath.empty()) {
        error = "--count sets the size of the built-in scene and cannot go with --boxes";
        return false;
    }
    return true;
}

BoundingBox2D rectangle(float x0, float y0, float x1, float y1) {
    BoundingBox2D r;
    r.m_min = Vector2f(x0, y0);
    r.m_max = Vector2f(x1, y1);
    return r;
}

// The per-frame work for one box: two screen tests and the screen extent.
BoxResult cull(BoundingBox const & box, Matrix4f const & proj, float depthLimit,
               BoundingBox2D const & viewport, BoundingBox2D const & pick) {
    BoxResult r;
    r.box = box;
    bool spare = false, insidePick = false;
    r.onScreen =
        BoundingBoxAlgo::BBox3DIntersectBBox2D(box, viewport, proj, depthLimit, spare, r.wholly);
    r.picked =
        BoundingBoxAlgo::BBox3DIntersectBBox2D(box, pick, proj, depthLimit, spare, insidePick);
    r.code = BoundingBoxAlgo::cameraProjBBox(r.extent, box, proj, depthLimit);
    r.cornersBehind = cornersBehind(box, proj);
    return r;
}

// The camera as the top view draws it. The demo's camera is level.
TopView topView(Camera const & c) {
    TopView t;
    t.eyeX = static_cast<double>(c.eye.x());
    t.eyeY = static_cast<double>(c.eye.y());
    t.eyeZ = static_cast<double>(c.eye.z());
    double const dx = static_cast<double>(c.target.x()) - t.eyeX;
    double const dz = static_cast<double>(c.target.z()) - t.eyeZ;
    double const length = std::sqrt(dx * dx + dz * dz);
    t.dirX = dx / length;
    t.dirZ = dz / length;
    t.tanPerScreenX = static_cast<double>(c.width) / static_cast<double>(c.height) *
                      std::tan(static_cast<double>(c.fovY) / 2.0);
    t.zNear = static_cast<double>(c.zNear);
    return t;
}

bool writeFile(std::string & error, std::string const & path, std::string const & text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) {
        error = "cannot write " + path + ": " + std::strerror(errno);
        return false;
    }
    out << text;
    out.close();
    if (!out) {
        error = "cannot write " + path + ": write failed";
        return false;
    }
    return true;
}

void printBox(char const * label, BoundingBox const & b) {
    std::printf("%s(%g, %g, %g) - (%g, %g, %g)\n", label, static_cast<double>(b.m_min.x()),
                static_cast<double>(b.m_min.y()), static_cast<double>(b.m_min.z()),
                static_cast<double>(b.m_max.x()), static_cast<double>(b.m_max.y()),
                static_cast<double>(b.m_max.z()));
}

// The counting report: which kernel operations each call of the road of one box reached.
void reportKernelCalls(KernelCounts & counts, std::size_t index, BoundingBox const & box,
                       Matrix4f const & proj, float depthLimit, BoundingBox2D const & viewport,
                       BoundingBox2D const & pick) {
    std::printf("counting kernel, calls made for box %zu ", index + 1);
    printBox("", box);
    bool spare = false, inside = false;
    counts.clear();
    bool const onScreen =
        BoundingBoxAlgo::BBox3DIntersectBBox2D(box, viewport, proj, depthLimit, spare, inside);
    std::printf("  viewport test   %s -> %s%s\n", counts.describe().c_str(),
                onScreen ? "touches the viewport" : "off the viewport",
                inside ? ", wholly inside" : "");
    counts.clear();
    bool const picked =
        BoundingBoxAlgo::BBox3DIntersectBBox2D(box, pick, proj, depthLimit, spare, inside);
    std::printf("  pick test       %s -> %s\n", counts.describe().c_str(),
                picked ? "touches the pick rectangle" : "misses the pick rectangle");
    counts.clear();
    BoundingBox2D extent;
    int const code = BoundingBoxAlgo::cameraProjBBox(extent, box, proj, depthLimit);
    std::printf("  screen extent   %s -> code %d\n", counts.describe().c_str(), code);
}

} // namespace

int main(int argc, char ** argv) {
    Options opt;
    std::string error;
    if (!parseArgs(opt, error, argc, argv)) {
        std::fprintf(stderr, "kdrcore-cull: %s\n", error.c_str());
        return 2;
    }
    if (opt.help) {
        std::fputs(usage, stdout);
        return 0;
    }

    std::vector<BoundingBox> boxes;
    if (opt.boxesPath.empty()) {
        boxes = builtInScene(opt.count);
    } else if (!readBoxFile(boxes, error, opt.boxesPath)) {
        std::fprintf(stderr, "kdrcore-cull: %s\n", error.c_str());
        return 2;
    }

    // Replacing the kernel: created with new, handed to the library by setDefault(), which owns
    // it from then on. Everything below, the matrix classes included, runs on it.
    static KernelCounts counts;
    if (opt.counting)
        (new CountingKernel(counts))->setDefault();

    Camera const camera = demoCamera();
    Matrix4f const proj = cameraMatrix(camera);
    float const depthLimit = behindDepth(camera);
    std::string const setupCalls = counts.describe();
    // Screen rectangles in the matrix's screen space: the whole screen, and its middle fifth
    // (160 x 120 of the 800 x 600 pixels).
    BoundingBox2D const viewport = rectangle(-1.0f, -1.0f, 1.0f, 1.0f);
    BoundingBox2D const pick = rectangle(-0.2f, -0.2f, 0.2f, 0.2f);

    std::vector<BoxResult> results;
    results.reserve(boxes.size());
    for (BoundingBox const & box : boxes)
        results.push_back(cull(box, proj, depthLimit, viewport, pick));

    int visible = 0, wholly = 0, culled = 0, behind = 0, picked = 0, straddle = 0;
    for (BoxResult const & r : results) {
        behind += r.code == 2;
        straddle += r.code == 3;
        visible += r.onScreen;
        wholly += r.wholly;
        culled += !r.onScreen && r.code != 2;
        picked += r.picked;
    }

    // Speed of the viewport test alone, repeated over all boxes for at least a tenth of a second.
    using Clock = std::chrono::steady_clock;
    long tests = 0;
    int hits = 0;
    Clock::time_point const start = Clock::now();
    double seconds = 0.0;
    do {
        for (BoundingBox const & box : boxes) {
            bool spare = false, inside = false;
            hits += BoundingBoxAlgo::BBox3DIntersectBBox2D(box, viewport, proj, depthLimit, spare,
                                                           inside);
        }
        tests += static_cast<long>(boxes.size());
        seconds = std::chrono::duration<double>(Clock::now() - start).count();
    } while (seconds < 0.1);

    char const * source = opt.boxesPath.empty() ? "built-in scene" : opt.boxesPath.c_str();
    std::printf("kdrcore-cull: %zu boxes (%s), camera at (0, 2, 0) looking along -z\n",
                boxes.size(), source);
    std::printf("  visible  %6d  touch the %d x %d viewport (%d of them wholly inside)\n", visible,
                camera.width, camera.height, wholly);
    std::printf("  culled   %6d  in front of the viewer, off the screen\n", culled);
    std::printf("  behind   %6d  wholly behind the viewer\n", behind);
    std::printf("  picked   %6d  touch the pick rectangle, pixels (320, 240) - (480, 360)\n",
                picked);
    std::printf("  straddle %6d  have corners in front of and behind the viewer\n", straddle);
    std::printf("  speed    %6.2f  million viewport tests per second (%ld tests, %d hits)\n",
                static_cast<double>(tests) / seconds / 1e6, tests, hits);

    if (opt.counting) {
        std::printf("counting kernel, calls made to build the camera matrix: %s\n",
                    setupCalls.c_str());
        // The first box on the screen shows the most; without one, the first box.
        std::size_t shown = 0;
        while (shown + 1 < results.size() && !results[shown].onScreen)
            ++shown;
        reportKernelCalls(counts, shown, boxes[shown], proj, depthLimit, viewport, pick);
    }

    Picture pic;
    pic.viewport = viewport;
    pic.pick = pick;
    pic.width = camera.width;
    pic.height = camera.height;
    pic.results = &results;
    pic.top = topView(camera);
    pic.caption = "Screen extents of " + std::to_string(boxes.size()) + " boxes (" + source +
                  "), coloured by BBox3DIntersectBBox2D";
    if (!writeFile(error, opt.svgPath, renderSvg(pic))) {
        std::fprintf(stderr, "kdrcore-cull: %s\n", error.c_str());
        return 1;
    }
    std::printf("  picture  %s\n", opt.svgPath.c_str());
    return 0;
}
