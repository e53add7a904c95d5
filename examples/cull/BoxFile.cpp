// examples/cull/BoxFile.cpp - reading boxes from a text file
#include "BoxFile.h"

#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

// Splits one line, its comment removed, into blank-separated words.
std::vector<std::string> words(std::string const & line) {
    std::string const text = line.substr(0, line.find('#'));
    std::vector<std::string> out;
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && isBlank(text[i]))
            ++i;
        std::size_t const start = i;
        while (i < text.size() && !isBlank(text[i]))
            ++i;
        if (i > start)
            out.push_back(text.substr(start, i - start));
    }
    return out;
}

// The float that `word` spells, or an explanation in `why`. The whole word must be the number.
bool toFloat(float & out, std::string & why, std::string const & word) {
    char * end = nullptr;
    errno = 0;
    double const value = std::strtod(word.c_str(), &end);
    if (end == word.c_str() || *end != '\0') {
        why = "'" + word + "' is not a number";
        return false;
    }
    if (!std::isfinite(value) || errno == ERANGE ||
        std::fabs(value) > static_cast<double>(FLT_MAX)) {
        why = "'" + word + "' is not a finite number in the range of a float";
        return false;
    }
    out = static_cast<float>(value);
    return true;
}

} // namespace

bool parseBoxText(std::vector<BoundingBox> & boxes, std::string & error, std::string const & text,
                  std::string const & name) {
    static char const * const axisName[3] = {"x", "y", "z"};
    std::vector<BoundingBox> found;
    std::istringstream in(text);
    std::string line;
    for (int lineNo = 1; std::getline(in, line); ++lineNo) {
        std::vector<std::string> const w = words(line);
        if (w.empty())
            continue;
        std::string const where = name + ":" + std::to_string(lineNo) + ": ";
        if (w.size() != 6) {
            error = where + "expected 6 numbers (minX minY minZ maxX maxY maxZ), found " +
                    std::to_string(w.size());
            return false;
        }
        float v[6];
        for (int i = 0; i < 6; ++i) {
            std::string why;
            if (!toFloat(v[i], why, w[static_cast<std::size_t>(i)])) {
                error = where + why;
                return false;
            }
        }
        for (int a = 0; a < 3; ++a) {
            if (v[a] > v[a + 3]) {
                error = where + "min " + axisName[a] + " " + w[static_cast<std::size_t>(a)] +
                        " is greater than max " + axisName[a] + " " +
                        w[static_cast<std::size_t>(a + 3)];
                return false;
            }
        }
        BoundingBox box;
        box.m_min = Vector3f(v[0], v[1], v[2]);
        box.m_max = Vector3f(v[3], v[4], v[5]);
        found.push_back(box);
    }
    if (found.empty()) {
        error = name + ": no boxes (one box per line: minX minY minZ maxX maxY maxZ)";
        return false;
    }
    boxes.insert(boxes.end(), found.begin(), found.end());
    return true;
}

bool readBoxFile(std::vector<BoundingBox> & boxes, std::string & error, std::string const & path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = path + ": cannot read: " + std::strerror(errno);
        return false;
    }
    std::ostringstream text;
    text << file.rdbuf();
    if (file.bad()) {
        error = path + ": read error";
        return false;
    }
    return parseBoxText(boxes, error, text.str(), path);
}
