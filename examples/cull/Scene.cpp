// examples/cull/Scene.cpp - the demo's camera and its built-in field of boxes
#include "Scene.h"

#include <cmath>
#include <cstdint>

Camera demoCamera() {
    Camera c;
    c.eye = Vector3f(0.0f, 2.0f, 0.0f);
    c.target = Vector3f(0.0f, 2.0f, -10.0f);
    c.up = Vector3f(0.0f, 1.0f, 0.0f);
    c.fovY = static_cast<float>(60.0 * 3.14159265358979323846 / 180.0);
    c.zNear = 0.5f;
    c.zFar = 500.0f;
    c.width = 800;
    c.height = 600;
    return c;
}

Matrix4f cameraMatrix(Camera const & c) {
    // The eye's frame: right, up and back (the eye looks down its -z axis). The cross products go
    // through the current kernel.
    Vector3f forward(c.eye, c.target); // target - eye
    forward.normalize();
    Vector3f right;
    Vector3f::cross(right, forward, c.up);
    right.normalize();
    Vector3f up;
    Vector3f::cross(up, right, forward);
    MatRot4f view; // world to eye: rows right, up, back, translation -(axis . eye)
    view.setFromAxis2XYZ(right, up, -forward, c.eye);

    // Perspective onto the cube [-1, 1]^3, element (row r, column c) at m[4*c + r]. Column 3 of
    // row 3 is 0 and row 3 of column 2 is -1, so w = -z of the eye: positive in front of the eye,
    // negative behind it.
    double const n = static_cast<double>(c.zNear);
    double const f = static_cast<double>(c.zFar);
    double const aspect = static_cast<double>(c.width) / static_cast<double>(c.height);
    double const focal = 1.0 / std::tan(static_cast<double>(c.fovY) / 2.0);
    Matrix4f perspective(0); // all zero, by the kernel
    float * m = perspective.getValue();
    m[0] = static_cast<float>(focal / aspect);         // row 0, column 0
    m[5] = static_cast<float>(focal);                  // row 1, column 1
    m[10] = static_cast<float>((f + n) / (n - f));     // row 2, column 2
    m[11] = -1.0f;                                     // row 3, column 2
    m[14] = static_cast<float>(2.0 * f * n / (n - f)); // row 2, column 3

    // The right-hand factor acts first: view, then perspective.
    return perspective * view;
}

float behindDepth(Camera const & c) {
    // An eye-space depth d in front (d < 0) gives the normalised depth (f + n) / (f - n) +
    // 2 f n / ((f - n) d), below (f + n) / (f - n); behind the eye (d > 0) it lies above that.
    double const n = static_cast<double>(c.zNear);
    double const f = static_cast<double>(c.zFar);
    return static_cast<float>((f + n) / (f - n));
}

int cornersBehind(BoundingBox const & box, Matrix4f const & proj) {
    float const * m = proj.getValue();
    Vector3f const & lo = box.m_min;
    Vector3f const & hi = box.m_max;
    int behind = 0;
    for (int corner = 0; corner < 8; ++corner) {
        double const x = static_cast<double>((corner & 1) ? hi.x() : lo.x());
        double const y = static_cast<double>((corner & 2) ? hi.y() : lo.y());
        double const z = static_cast<double>((corner & 4) ? hi.z() : lo.z());
        double const w = static_cast<double>(m[3]) * x + static_cast<double>(m[7]) * y +
                         static_cast<double>(m[11]) * z + static_cast<double>(m[15]);
        behind += w < 0.0;
    }
    return behind;
}

namespace {

// A small generator with the same sequence on every platform (the distributions of <random>
// are not specified to the bit).
class Random {
public:
    explicit Random(std::uint32_t seed) : m_state(seed) {}
    float uniform(float lo, float hi) {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        double const u = static_cast<double>(m_state >> 8) / 16777216.0; // [0, 1)
        return static_cast<float>(static_cast<double>(lo) +
                                  (static_cast<double>(hi) - static_cast<double>(lo)) * u);
    }

private:
    std::uint32_t m_state;
};

BoundingBox boxAround(float x, float y, float z, float sx, float sy, float sz) {
    BoundingBox b;
    b.m_min = Vector3f(x, y, z);
    b.m_max = Vector3f(static_cast<float>(static_cast<double>(x) + static_cast<double>(sx)),
                       static_cast<float>(static_cast<double>(y) + static_cast<double>(sy)),
                       static_cast<float>(static_cast<double>(z) + static_cast<double>(sz)));
    return b;
}

} // namespace

std::vector<BoundingBox> builtInScene(int count) {
    Random rnd(20240611u);
    std::vector<BoundingBox> boxes;
    boxes.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        // One draw per statement: the order in which function arguments are evaluated is not
        // specified, and the scene must be the same with every compiler.
        if (i % 16 == 5) {
            // A long box, running along z from behind the viewer to in front of it.
            float const length = rnd.uniform(4.0f, 16.0f);
            float const back = rnd.uniform(1.0f, 6.0f);
            float const x = rnd.uniform(-14.0f, 12.0f);
            float const height = rnd.uniform(0.5f, 4.0f);
            float const z =
                static_cast<float>(static_cast<double>(back) - static_cast<double>(length));
            boxes.push_back(boxAround(x, 0.0f, z, 1.5f, height, length));
        } else {
            // Ground and floating boxes from 90 in front to 50 behind the viewer.
            float const lift = i % 7 == 0 ? rnd.uniform(3.0f, 15.0f) : 0.0f;
            float const x = rnd.uniform(-60.0f, 60.0f);
            float const z = rnd.uniform(-90.0f, 50.0f);
            float const sx = rnd.uniform(0.6f, 4.0f);
            float const sy = rnd.uniform(0.5f, 8.0f);
            float const sz = rnd.uniform(0.6f, 4.0f);
            boxes.push_back(boxAround(x, lift, z, sx, sy, sz));
        }
    }
    return boxes;
}
