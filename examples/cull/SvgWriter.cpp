// examples/cull/SvgWriter.cpp - the demo's picture of the screen
#include "SvgWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

char const * verdict(BoxResult const & r) {
    if (r.code == 2)
        return "behind";
    if (r.picked)
        return "picked";
    return r.onScreen ? "visible" : "culled";
}

namespace {

double const margin = 120.0;  // pixels of the off-screen band drawn around the viewport
double const legendH = 150.0; // height of the legend under it

struct Style {
    char const * name;
    char const * stroke;
    char const * fill;
    char const * meaning;
};
Style const styles[] = {
    {"picked", "#d9480f", "#ff922b", "touches the pick rectangle"},
    {"visible", "#1c7ed6", "#74c0fc", "touches the viewport, misses the pick rectangle"},
    {"culled", "#868e96", "#ced4da", "in front of the viewer, off the screen"},
};

std::string num(double v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.1f", v);
    return buf;
}

std::string escape(std::string const & s) {
    std::string out;
    for (char c : s) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

// Screen space (y up, possibly far off the screen or infinite) to picture coordinates (pixels,
// y down), kept within the off-screen band.
class Mapping {
public:
    Mapping(BoundingBox2D const & viewport, int width, int height)
        : m_x0(static_cast<double>(viewport.m_min.x())),
          m_y1(static_cast<double>(viewport.m_max.y())), m_w(width), m_h(height),
          m_sx(m_w / (static_cast<double>(viewport.m_max.x()) - m_x0)),
          m_sy(m_h / (m_y1 - static_cast<double>(viewport.m_min.y()))) {}
    double x(float sx) const {
        return margin + clampTo((static_cast<double>(sx) - m_x0) * m_sx, m_w);
    }
    double y(float sy) const {
        return margin + clampTo((m_y1 - static_cast<double>(sy)) * m_sy, m_h);
    }
    double width() const { return m_w; }
    double height() const { return m_h; }

private:
    static double clampTo(double v, double size) {
        if (std::isnan(v))
            return 0.0;
        return std::min(std::max(v, -margin), size + margin);
    }
    double m_x0, m_y1, m_w, m_h, m_sx, m_sy;
};

std::string rectElement(Mapping const & map, BoundingBox2D const & r, std::string const & attrs) {
    double const x0 = map.x(r.m_min.x()), x1 = map.x(r.m_max.x());
    double const y0 = map.y(r.m_max.y()), y1 = map.y(r.m_min.y());
    return "<rect x=\"" + num(x0) + "\" y=\"" + num(y0) + "\" width=\"" + num(x1 - x0) +
           "\" height=\"" + num(y1 - y0) + "\" " + attrs;
}

std::string describeBox(std::size_t index, BoxResult const & r) {
    char buf[200];
    std::snprintf(buf, sizeof buf, "box %zu: (%g, %g, %g) - (%g, %g, %g), %s%s", index + 1,
                  static_cast<double>(r.box.m_min.x()), static_cast<double>(r.box.m_min.y()),
                  static_cast<double>(r.box.m_min.z()), static_cast<double>(r.box.m_max.x()),
                  static_cast<double>(r.box.m_max.y()), static_cast<double>(r.box.m_max.z()),
                  verdict(r), r.code == 3 ? ", straddles the viewer" : "");
    return buf;
}

} // namespace

// The screen panel, `panelW` x `panelH` pixels from the origin: where each box lands.
std::string screenPanel(Picture const & pic, double & panelW, double & panelH) {
    Mapping const map(pic.viewport, pic.width, pic.height);
    std::vector<BoxResult> const & results = *pic.results;
    double const totalW = map.width() + 2.0 * margin;
    double const totalH = map.height() + 2.0 * margin + legendH;
    panelW = totalW;
    panelH = totalH;

    std::string s;
    s += "<defs><clipPath id=\"band\"><rect x=\"0\" y=\"0\" width=\"" + num(totalW) +
         "\" height=\"" + num(map.height() + 2.0 * margin) + "\"/></clipPath></defs>\n";
    s += "<rect x=\"0\" y=\"0\" width=\"" + num(totalW) + "\" height=\"" + num(totalH) +
         "\" fill=\"#f1f3f5\"/>\n";
    s += "<rect id=\"viewport-fill\" x=\"" + num(margin) + "\" y=\"" + num(margin) + "\" width=\"" +
         num(map.width()) + "\" height=\"" + num(map.height()) + "\" fill=\"#ffffff\"/>\n";

    // Culled boxes first, picked ones last, so the interesting ones stay on top.
    s += "<g id=\"boxes\" clip-path=\"url(#band)\" stroke-width=\"1.2\" fill-opacity=\"0.25\">\n";
    int counts[3] = {0, 0, 0};
    for (int layer = 2; layer >= 0; --layer) {
        Style const & st = styles[layer];
        for (std::size_t i = 0; i < results.size(); ++i) {
            BoxResult const & r = results[i];
            if (std::string(verdict(r)) != st.name)
                continue;
            ++counts[layer];
            std::string attrs = "class=\"box " + std::string(st.name) + "\" stroke=\"" + st.stroke +
                                "\" fill=\"" + st.fill + "\"";
            if (r.code == 3) // often far larger than the screen: an outline only
                attrs += " stroke-dasharray=\"6 4\" fill-opacity=\"0\"";
            s += rectElement(map, r.extent, attrs) + "><title>" + escape(describeBox(i, r)) +
                 "</title></rect>\n";
        }
    }
    s += "</g>\n";

    s += rectElement(map, pic.viewport,
                     "id=\"viewport\" fill=\"none\" stroke=\"#000000\" stroke-width=\"2\"/>\n");
    s += rectElement(map, pic.pick,
                     "id=\"pick\" fill=\"none\" stroke=\"#c92a2a\" stroke-width=\"3\" "
                     "stroke-dasharray=\"10 5\"/>\n");

    // Legend.
    int behind = 0, straddle = 0;
    for (BoxResult const & r : results) {
        behind += r.code == 2;
        straddle += r.code == 3;
    }
    double const top = map.height() + 2.0 * margin;
    s += "<g id=\"legend\">\n";
    s += "<text x=\"20\" y=\"" + num(top + 24.0) + "\" font-weight=\"bold\">" +
         escape(pic.caption) + "</text>\n";
    double y = top + 48.0;
    for (int i = 0; i < 3; ++i, y += 22.0) {
        s += "<rect x=\"20\" y=\"" + num(y - 12.0) + "\" width=\"28\" height=\"14\" stroke=\"" +
             styles[i].stroke + "\" fill=\"" + styles[i].fill + "\" fill-opacity=\"0.5\"/>\n";
        s += "<text x=\"58\" y=\"" + num(y) + "\">" + styles[i].name + " (" +
             std::to_string(counts[i]) + "): " + styles[i].meaning + "</text>\n";
    }
    double const col2 = totalW / 2.0 + 20.0;
    y = top + 48.0;
    s += "<rect x=\"" + num(col2) + "\" y=\"" + num(y - 12.0) +
         "\" width=\"28\" height=\"14\" fill=\"none\" stroke=\"#495057\" "
         "stroke-dasharray=\"6 4\"/>\n";
    s += "<text x=\"" + num(col2 + 38.0) + "\" y=\"" + num(y) + "\">straddles the viewer (" +
         std::to_string(straddle) + ")</text>\n";
    y += 22.0;
    s += "<text x=\"" + num(col2 + 38.0) + "\" y=\"" + num(y) + "\">behind (" +
         std::to_string(behind) + "): no screen extent, not drawn</text>\n";
    y += 22.0;
    s += "<rect x=\"" + num(col2) + "\" y=\"" + num(y - 12.0) +
         "\" width=\"28\" height=\"14\" fill=\"none\" stroke=\"#000000\" stroke-width=\"2\"/>\n";
    s += "<text x=\"" + num(col2 + 38.0) + "\" y=\"" + num(y) + "\">viewport " +
         std::to_string(std::lround(map.width())) + " x " +
         std::to_string(std::lround(map.height())) + "; the grey band is off the screen</text>\n";
    y += 22.0;
    s += "<rect x=\"" + num(col2) + "\" y=\"" + num(y - 12.0) +
         "\" width=\"28\" height=\"14\" fill=\"none\" stroke=\"#c92a2a\" stroke-width=\"3\" "
         "stroke-dasharray=\"10 5\"/>\n";
    s += "<text x=\"" + num(col2 + 38.0) + "\" y=\"" + num(y) + "\">pick rectangle</text>\n";
    s += "</g>\n";
    return s;
}

namespace {

double const plotPad = 30.0;   // around the top view's plots, inside the panel
double const mainSize = 900.0; // the whole scene, pixels square
double const zoomSize = 400.0; // the neighbourhood of the camera, pixels square
double const columnW = 440.0;  // the right column: the zoom and the legend
double const topPanelH = mainSize + 2.0 * plotPad;

Style const behindStyle = {"behind", "#7048e8", "#b197fc", "wholly behind the viewer plane"};
char const * const planeColour = "#7048e8";
char const * const halo = "stroke=\"#ffffff\" stroke-width=\"4\" paint-order=\"stroke\"";

Style const & styleOf(std::string const & v) {
    return v == "picked"    ? styles[0]
           : v == "visible" ? styles[1]
           : v == "culled"  ? styles[2]
                            : behindStyle;
}

bool straddles(BoxResult const & r) {
    return r.cornersBehind > 0 && r.cornersBehind < 8;
}

std::string text(double x, double y, std::string const & body, std::string const & attrs = "") {
    return "<text x=\"" + num(x) + "\" y=\"" + num(y) + "\"" + (attrs.empty() ? "" : " ") + attrs +
           ">" + body + "</text>\n";
}

// One square plot of the top view: world x-z around (cx, cz), `span` units across, drawn at
// (left, top) with `size` pixels a side; x to the right, z down the page.
struct Plot {
    double left, top, size;
    double cx, cz, span;
    char const * id; // of the group, its clip path and the class of its box shapes
    double scale() const { return size / span; }
    double x(double wx) const { return left + size / 2.0 + (wx - cx) * scale(); }
    double y(double wz) const { return top + size / 2.0 + (wz - cz) * scale(); }
    std::string point(double wx, double wz) const { return num(x(wx)) + "," + num(y(wz)); }
};

// A length of 1, 2 or 5 times a power of ten, near a fifth of `span`.
double scaleBarLength(double span) {
    double const p = std::pow(10.0, std::floor(std::log10(span / 5.0)));
    double const m = span / 5.0 / p;
    return p * (m >= 5.0 ? 5.0 : m >= 2.0 ? 2.0 : 1.0);
}

// The camera's surroundings, the boxes and the camera in one plot. Box shapes are `rect`s of
// class "<plot id> <verdict>", with "straddle" added when their corners lie on both sides of the
// viewer plane.
std::string drawPlot(Picture const & pic, Plot const & p) {
    std::vector<BoxResult> const & results = *pic.results;
    TopView const & top = pic.top;
    double const rightX = -top.dirZ, rightZ = top.dirX; // right of the view direction
    double const far = 4.0 * p.span;                    // beyond the plot in every direction
    double const ex = top.eyeX, ez = top.eyeZ;
    // The point `far` ahead along the edge at screen x `sx`.
    auto edge = [&](float sx) {
        double const t = static_cast<double>(sx) * top.tanPerScreenX;
        return p.point(ex + far * (top.dirX + t * rightX), ez + far * (top.dirZ + t * rightZ));
    };
    std::string const frame = "x=\"" + num(p.left) + "\" y=\"" + num(p.top) + "\" width=\"" +
                              num(p.size) + "\" height=\"" + num(p.size) + "\"";
    std::string const id = p.id;

    std::string s = "<g id=\"" + id + "\">\n";
    s += "<defs><clipPath id=\"" + id + "-clip\"><rect " + frame + "/></clipPath></defs>\n";
    s += "<g clip-path=\"url(#" + id + "-clip)\">\n";
    s += "<rect " + frame + " fill=\"#ffffff\"/>\n";
    // Behind the viewer plane: the half-plane the camera's back faces.
    s += "<polygon class=\"behind-region\" fill=\"#f3f0ff\" points=\"" +
         p.point(ex + far * rightX, ez + far * rightZ) + " " +
         p.point(ex - far * rightX, ez - far * rightZ) + " " +
         p.point(ex - far * (rightX + top.dirX), ez - far * (rightZ + top.dirZ)) + " " +
         p.point(ex + far * (rightX - top.dirX), ez + far * (rightZ - top.dirZ)) + "\"/>\n";
    // The field of view: the wedge between the viewport's left and right edges.
    s += "<polygon class=\"field-of-view\" fill=\"#e7f5ff\" stroke=\"#000000\" "
         "stroke-width=\"1.5\" points=\"" +
         p.point(ex, ez) + " " + edge(pic.viewport.m_min.x()) + " " + edge(pic.viewport.m_max.x()) +
         "\"/>\n";

    // Boxes: behind and culled first, picked last.
    s += "<g stroke-width=\"1.2\" fill-opacity=\"0.45\">\n";
    for (char const * name : {"behind", "culled", "visible", "picked"}) {
        Style const & st = styleOf(name);
        for (std::size_t i = 0; i < results.size(); ++i) {
            BoxResult const & r = results[i];
            if (std::string(verdict(r)) != name)
                continue;
            double const x0 = p.x(static_cast<double>(r.box.m_min.x()));
            double const x1 = p.x(static_cast<double>(r.box.m_max.x()));
            double const y0 = p.y(static_cast<double>(r.box.m_min.z()));
            double const y1 = p.y(static_cast<double>(r.box.m_max.z()));
            s += "<rect class=\"" + id + " " + name + (straddles(r) ? " straddle" : "") +
                 "\" x=\"" + num(x0) + "\" y=\"" + num(y0) + "\" width=\"" + num(x1 - x0) +
                 "\" height=\"" + num(y1 - y0) + "\" stroke=\"" + st.stroke + "\" fill=\"" +
                 st.fill + "\"" +
                 (straddles(r) ? " stroke-width=\"2.5\" stroke-dasharray=\"5 3\"" : "") +
                 "><title>" + escape(describeBox(i, r)) + "; " + std::to_string(r.cornersBehind) +
                 " of 8 corners behind the viewer plane</title></rect>\n";
        }
    }
    s += "</g>\n";

    // The pick rectangle's edges, the viewer plane and its two sides.
    s += "<polyline class=\"pick-edges\" fill=\"none\" stroke=\"#c92a2a\" stroke-width=\"2\" "
         "stroke-dasharray=\"10 5\" points=\"" +
         edge(pic.pick.m_min.x()) + " " + p.point(ex, ez) + " " + edge(pic.pick.m_max.x()) +
         "\"/>\n";
    s += "<line class=\"viewer-plane\" stroke=\"" + std::string(planeColour) +
         "\" stroke-width=\"2.5\" x1=\"" + num(p.x(ex - far * rightX)) + "\" y1=\"" +
         num(p.y(ez - far * rightZ)) + "\" x2=\"" + num(p.x(ex + far * rightX)) + "\" y2=\"" +
         num(p.y(ez + far * rightZ)) + "\"/>\n";
    double const cx = p.x(ex), cy = p.y(ez);
    if (p.size == mainSize) {
        std::string const planeText = "fill=\"" + std::string(planeColour) + "\" " + halo;
        s += text(p.left + 8.0, cy - 8.0, "in front of the viewer plane", planeText);
        s += text(p.left + 8.0, cy + 20.0, "behind the viewer plane", planeText);
    }
    s += "</g>\n";

    // The camera: where it stands and where it looks.
    double const ax = cx + 36.0 * top.dirX, ay = cy + 36.0 * top.dirZ; // arrow tip
    s += "<g class=\"camera\">\n<line x1=\"" + num(cx) + "\" y1=\"" + num(cy) + "\" x2=\"" +
         num(ax) + "\" y2=\"" + num(ay) + "\" stroke=\"#000000\" stroke-width=\"3\"/>\n";
    s += "<polygon fill=\"#000000\" points=\"" + num(ax + 10.0 * top.dirX) + "," +
         num(ay + 10.0 * top.dirZ) + " " + num(ax + 6.0 * rightX) + "," + num(ay + 6.0 * rightZ) +
         " " + num(ax - 6.0 * rightX) + "," + num(ay - 6.0 * rightZ) + "\"/>\n";
    s += "<circle cx=\"" + num(cx) + "\" cy=\"" + num(cy) +
         "\" r=\"6\" fill=\"#ffffff\" stroke=\"#000000\" stroke-width=\"3\"/>\n";
    char label[96];
    std::snprintf(label, sizeof label, "camera (%g, %g, %g)", top.eyeX, top.eyeY, top.eyeZ);
    s += text(cx + 12.0, cy + 22.0, label, "font-weight=\"bold\" " + std::string(halo));
    s += "</g>\n";

    // Scale bar, bottom right, and the frame.
    double const bar = scaleBarLength(p.span);
    double const barPx = bar * p.scale();
    double const bx = p.left + p.size - 16.0 - barPx, by = p.top + p.size - 16.0;
    char barLabel[64];
    std::snprintf(barLabel, sizeof barLabel, "%g units", bar);
    s += "<line x1=\"" + num(bx) + "\" y1=\"" + num(by) + "\" x2=\"" + num(bx + barPx) +
         "\" y2=\"" + num(by) + "\" stroke=\"#000000\" stroke-width=\"3\"/>\n";
    s += text(bx, by - 8.0, barLabel, halo);
    s += "<rect " + frame + " fill=\"none\" stroke=\"#868e96\"/>\n</g>\n";
    return s;
}

// The top view, `panelW` x `panelH` pixels from the origin: the whole scene on the left, the
// neighbourhood of the camera enlarged on the right, the legend under it.
std::string topPanel(Picture const & pic, double & panelW, double & panelH) {
    std::vector<BoxResult> const & results = *pic.results;
    TopView const & top = pic.top;
    panelW = mainSize + 2.0 * plotPad + columnW;
    panelH = topPanelH;

    // The whole scene: every box and the camera, with a little room around them.
    double x0 = top.eyeX, x1 = top.eyeX, z0 = top.eyeZ, z1 = top.eyeZ;
    int counts[4] = {0, 0, 0, 0}; // picked, visible, culled, behind
    int straddle = 0;
    for (BoxResult const & r : results) {
        double const bx0 = static_cast<double>(r.box.m_min.x());
        double const bx1 = static_cast<double>(r.box.m_max.x());
        double const bz0 = static_cast<double>(r.box.m_min.z());
        double const bz1 = static_cast<double>(r.box.m_max.z());
        x0 = std::min(x0, bx0);
        x1 = std::max(x1, bx1);
        z0 = std::min(z0, bz0);
        z1 = std::max(z1, bz1);
        std::string const v = verdict(r);
        ++counts[v == "picked" ? 0 : v == "visible" ? 1 : v == "culled" ? 2 : 3];
        straddle += straddles(r);
    }
    double const span = std::max(std::max(x1 - x0, z1 - z0) * 1.06, 1.0);
    Plot const whole = {plotPad,         plotPad, mainSize,   (x0 + x1) / 2.0,
                        (z0 + z1) / 2.0, span,    "footprint"};
    // The enlargement: a fifth of the scene across, around the camera.
    double const zoomLeft = mainSize + 2.0 * plotPad;
    Plot const near = {zoomLeft, plotPad, zoomSize, top.eyeX, top.eyeZ, span / 5.0, "zoomed"};

    std::string s = "<rect x=\"0\" y=\"0\" width=\"" + num(panelW) + "\" height=\"" + num(panelH) +
                    "\" fill=\"#f1f3f5\"/>\n";
    s += drawPlot(pic, whole);
    s += drawPlot(pic, near);
    s += "<rect id=\"zoom-frame\" clip-path=\"url(#footprint-clip)\" x=\"" +
         num(whole.x(near.cx - near.span / 2.0)) + "\" y=\"" +
         num(whole.y(near.cz - near.span / 2.0)) + "\" width=\"" + num(near.span * whole.scale()) +
         "\" height=\"" + num(near.span * whole.scale()) +
         "\" fill=\"none\" stroke=\"#495057\" stroke-width=\"1.5\" stroke-dasharray=\"2 3\"/>\n";
    char zoomTitle[96];
    std::snprintf(zoomTitle, sizeof zoomTitle, "Around the camera, enlarged %.1f times",
                  whole.span / near.span * zoomSize / mainSize);
    s += text(zoomLeft, plotPad - 10.0, zoomTitle, "font-weight=\"bold\"");

    // Legend: the boxes by verdict, as on the screen, and the lines.
    s += "<g id=\"top-legend\">\n";
    double y = plotPad + zoomSize + 36.0;
    s += text(zoomLeft, y, "The boxes seen from above, coloured as on the screen",
              "font-weight=\"bold\"");
    y += 26.0;
    Style const * const legendStyles[] = {&styles[0], &styles[1], &styles[2], &behindStyle};
    char const * const meanings[] = {"touch the pick rectangle", "touch the viewport, not picked",
                                     "in front of the viewer, off the screen",
                                     "wholly behind the viewer plane"};
    auto swatch = [&](Style const & st, std::string const & extra) {
        s += "<rect x=\"" + num(zoomLeft) + "\" y=\"" + num(y - 12.0) +
             "\" width=\"28\" height=\"14\" stroke=\"" + st.stroke + "\" fill=\"" + st.fill +
             "\" fill-opacity=\"0.5\"" + extra + "/>\n";
    };
    auto count = [&](char const * name, int n, std::string const & meaning) {
        s +=
            text(zoomLeft + 38.0, y, std::string(name) + " (" + std::to_string(n) + "): " + meaning,
                 "class=\"count\" data-class=\"" + std::string(name) + "\" data-count=\"" +
                     std::to_string(n) + "\"");
        y += 22.0;
    };
    for (int i = 0; i < 4; ++i) {
        swatch(*legendStyles[i], "");
        count(legendStyles[i]->name, counts[i], meanings[i]);
    }
    Style const dashed = {"straddle", "#495057", "none", ""};
    swatch(dashed, " stroke-width=\"2.5\" stroke-dasharray=\"5 3\"");
    count("straddle", straddle, "corners on both sides of the plane");
    auto lineKey = [&](std::string const & attrs, std::string const & body) {
        s += "<line x1=\"" + num(zoomLeft) + "\" y1=\"" + num(y - 5.0) + "\" x2=\"" +
             num(zoomLeft + 28.0) + "\" y2=\"" + num(y - 5.0) + "\" " + attrs + "/>\n";
        s += text(zoomLeft + 38.0, y, body);
        y += 22.0;
    };
    y += 6.0;
    lineKey("stroke=\"#000000\" stroke-width=\"1.5\"", "field of view: the viewport's edges");
    lineKey("stroke=\"#c92a2a\" stroke-width=\"2\" stroke-dasharray=\"10 5\"",
            "the pick rectangle's edges");
    lineKey("stroke=\"" + std::string(planeColour) + "\" stroke-width=\"2.5\"",
            "viewer plane, the depth limit of the tests:");
    char nearText[96];
    std::snprintf(nearText, sizeof nearText, "(the near plane lies %g ahead of it)", top.zNear);
    s += text(zoomLeft + 38.0, y - 4.0, "corners beyond it are behind the viewer");
    s += text(zoomLeft + 38.0, y + 14.0, nearText);
    y += 46.0;
    s += text(zoomLeft, y, "Culled boxes inside the field of view lie above or",
              "font-style=\"italic\"");
    s += text(zoomLeft, y + 18.0, "below the screen: the view from above drops height.",
              "font-style=\"italic\"");
    s += text(zoomLeft, y + 40.0, "Hover a box for its corners and its results.",
              "font-style=\"italic\"");
    s += "</g>\n";
    return s;
}

} // namespace

std::string renderSvg(Picture const & pic) {
    double const header = 44.0;
    double screenW = 0.0, screenH = 0.0, topW = 0.0, topH = 0.0;
    std::string const screen = screenPanel(pic, screenW, screenH);
    std::string const topView = topPanel(pic, topW, topH);
    double const totalW = screenW + topW;
    double const totalH = header + std::max(screenH, topH);

    std::string s;
    s += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    s += "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + num(totalW) + "\" height=\"" +
         num(totalH) + "\" viewBox=\"0 0 " + num(totalW) + " " + num(totalH) +
         "\" font-family=\"sans-serif\" font-size=\"14\">\n";
    s += "<title>kdrcore-cull: the boxes on the screen and seen from above</title>\n";
    s += "<rect x=\"0\" y=\"0\" width=\"" + num(totalW) + "\" height=\"" + num(totalH) +
         "\" fill=\"#f1f3f5\"/>\n";
    s += text(20.0, 30.0, "Screen: where each box lands on the viewport",
              "class=\"panel-title\" font-size=\"20\" font-weight=\"bold\"");
    s += text(screenW + 20.0, 30.0, "Top view (x-z, from above): where each box stands",
              "class=\"panel-title\" font-size=\"20\" font-weight=\"bold\"");
    s += "<g id=\"screen-panel\" transform=\"translate(0 " + num(header) + ")\">\n" + screen +
         "</g>\n";
    s += "<g id=\"top-panel\" transform=\"translate(" + num(screenW) + " " + num(header) +
         ")\">\n" + topView + "</g>\n";
    s += "<line x1=\"" + num(screenW) + "\" y1=\"0\" x2=\"" + num(screenW) + "\" y2=\"" +
         num(totalH) + "\" stroke=\"#adb5bd\" stroke-width=\"2\"/>\n";
    s += "</svg>\n";
    return s;
}
