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

std::string renderSvg(Picture const & pic) {
    Mapping const map(pic.viewport, pic.width, pic.height);
    std::vector<BoxResult> const & results = *pic.results;
    double const totalW = map.width() + 2.0 * margin;
    double const totalH = map.height() + 2.0 * margin + legendH;

    std::string s;
    s += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    s += "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + num(totalW) + "\" height=\"" +
         num(totalH) + "\" viewBox=\"0 0 " + num(totalW) + " " + num(totalH) +
         "\" font-family=\"sans-serif\" font-size=\"14\">\n";
    s += "<title>kdrcore-cull: screen extents of the boxes</title>\n";
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
    s += "</g>\n</svg>\n";
    return s;
}
