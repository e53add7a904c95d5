// Which kernel operations each caller reaches, in what order: the default kernel's composites
// (their steps nested in parentheses), the value classes and geometry. A caller that computes past
// the kernel, or a composite that calls the default code directly, leaves a different trace.
#include "support/TestSupport.h"

#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/geometry/Primitives.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Quaternion.h"

#include <string>

using namespace kdrtest;

namespace {

std::string times(int n, std::string const & op) {
    std::string s;
    for (int i = 0; i < n; ++i)
        s += (i == 0 ? "" : " ") + op;
    return s;
}

using KernelCalls = RecordingKernelTest;

TEST_F(KernelCalls, EachCallerReachesItsOperations) {
    EnhancedMathFunctions const & k = kernel();
    float m[16], n[16], r[16], u[16], p[16], q[4], e[3], ax[3], angle, s[3], t[3], zero[16] = {};
    float const id[4] = {1, 0, 0, 0}, v[3] = {0, 0, 1}, euler[3] = {0.1f, 0.2f, 0.3f};
    k.setIdentity(n);
    Matrix4f g;
    MatAff4f a;
    MatRot4f rot;
    MatRot4f const o;
    Mat4fBase const & aBase = a;
    MatAff4fBase const & rAff = rot;
    Quaternion qa, qb;
    Vector3f const X(1, 0, 0), Y(0, 1, 0), Z(0, 0, 1), P(1, 2, 3);
    Vector3f w;
    bool ok = false;
    KDRLine const lx(Vector3f(), X, true), ly(Y, X, true);
    Plane plane, xPlane;
    xPlane.m_normal = X;
    BoundingBox box;
    box.m_min = Vector3f(-1, -1, -2), box.m_max = Vector3f(3, 2, -1);
    BoundingBox out;
    BoundingBox2D flat;
    Matrix4f const proj(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0);
    std::string const axisRotation = "axisToQuaternionU quaternionToMatrix";
    std::string const project8 = times(8, "multMatrixVec3f");
    struct Row {
        char const * call;
        std::function<void()> run;
        std::string trace;
    } const rows[] = {
        // The default kernel's composites.
        {"axisToMatrix", [&] { k.axisToMatrix(m, v, 1.0f); },
         "axisToMatrix(axisToQuaternion quaternionToMatrix)"},
        {"matrixToAxis", [&] { k.matrixToAxis(ax, &angle, n); },
         "matrixToAxis(RotMatrixToQuaternion quaternionToAxis)"},
        {"setRotate axis", [&] { k.setRotate(m, v, 1.0f); }, "setRotate(" + axisRotation + ")"},
        {"setRotate euler", [&] { k.setRotate(m, euler); }, "setRotate(eulerToMatrix)"},
        {"setProjection", [&] { k.setProjection(m, v, 1.0f, v); },
         "setProjection(multAffineColRow)"},
        {"multLeftByRotate", [&] { k.multLeftByRotate(m, n, v, 1.0f); },
         "multLeftByRotate(" + axisRotation + " multAffineMatrices)"},
        {"multRightByRotate", [&] { k.multRightByRotate(m, n, v, 1.0f); },
         "multRightByRotate(" + axisRotation + " multAffineMatrices)"},
        {"inverse3, inverseAffine", [&] { k.inverse3(m, n), k.inverseAffine(m, n); },
         "inverse3(inverseMatrix) inverseAffine(inverseMatrix)"},
        {"inverseRotate(AndTr)", [&] { k.inverseRotate(m, n), k.inverseRotateAndTr(m, n); },
         "inverseRotate(transposeAffine) inverseRotateAndTr(transposeAffine)"},
        {"inverseQuaternion(U)", [&] { k.inverseQuaternion(q, id), k.inverseQuaternionU(q, id); },
         "inverseQuaternion(conjugateQuaternion) inverseQuaternionU(conjugateQuaternion)"},
        {"inverseQuaternion of 0", [&] { k.inverseQuaternion(q, zero); }, "inverseQuaternion"},
        {"applyQuatOn", [&] { k.applyQuatOn(ax, id, v); }, "applyQuatOn(cross)"},
        {"quaternionToEuler", [&] { k.quaternionToEuler(e, id); },
         "quaternionToEuler(quaternionToMatrix matrixToEuler)"},
        {"LERP, SLERP",
         [&] { k.quaternionLERP(q, id, id, 0.5f), k.quaternionSLERP(q, id, id, 0.5f); },
         "quaternionLERP(dotQuaternions) quaternionSLERP(dotQuaternions)"},
        {"factor", [&] { k.factor(r, s, u, t, p, n); },
         "copyMat4fTo setIdentity det3 transpose multMatrices jacobi3 setIdentity transpose "
         "multMatrices multMatrices multMatrices"},
        {"factor, singular", [&] { k.factor(r, s, u, t, p, zero); },
         "copyMat4fTo setIdentity det3"},
        {"leaves", [&] { k.setScale(m, v), k.setTranslate(m, v), k.inverseScale(m, n); },
         "setScale setTranslate inverseScale"},
        // Value-class constructors: the identity, zero and copies.
        {"Mat4fBase, Matrix4f copies",
         [&] {
             [[maybe_unused]] Mat4fBase b, c(b);
             [[maybe_unused]] Matrix4f d(g), f(7);
         },
         ""},
        {"Matrix4f(), (1), (0)", [] { Matrix4f x, y(1), z(0); }, "setIdentity setIdentity setZero"},
        {"Matrix4f(base), (float *)", [&] { Matrix4f x(aBase), y(m); }, "copyMat4fTo copyMat4fTo"},
        {"MatAff4f",
         [&] {
             MatAff4fBase x, y(a);
             MatAff4f z(rAff);
         },
         "setIdentity copyMat4fTo copyMat4fTo"},
        {"MatRot4f", [&] { MatRot4f x(rot); }, "copyMat4fTo"},
        {"MatRot4f(axis)", [&] { MatRot4f x(Z, 1.0f, P); },
         "setIdentity " + axisRotation + " copyVec3fTo"},
        {"MatRot4f(euler)", [&] { MatRot4f x(0.1f, 0.2f, 0.3f, P); },
         "setIdentity eulerToMatrix copyVec3fTo"},
        // In place: a copy first, then the operation of the static type.
        {"Matrix4f in place", [&] { g.transpose(), g.inverse(ok), g.multLeftBy(o), g *= o; },
         "copyMat4fTo transpose copyMat4fTo inverseMatrix copyMat4fTo multMatrices copyMat4fTo "
         "multMatrices"},
        {"MatAff4f in place", [&] { a.inverse(ok), a.transpose3(), a.multRightBy(o); },
         "copyMat4fTo inverseAffine(inverseMatrix) copyMat4fTo transposeAffine copyMat4fTo "
         "multAffineMatrices"},
        {"MatAff4f rotate", [&] { a.multLeftByRotate(Z, 1.0f), a.multRightByRotate(Z, 1.0f); },
         "copyMat4fTo multLeftByRotate(" + axisRotation + " multAffineMatrices) copyMat4fTo " +
             "multRightByRotate(" + axisRotation + " multAffineMatrices)"},
        {"MatRot4f in place", [&] { rot.inverse(), rot.multLeftBy(o), rot *= o; },
         "copyMat4fTo inverseRotateAndTr(transposeAffine) copyMat4fTo multAffineMatrices "
         "copyMat4fTo multAffineMatrices"},
        // The static type picks the operation; free operators start from a new identity.
        {"vector products", [&] { aBase.multRightVec3f(w, P), a.multRightVec3f(w, P), a *= 2.0f; },
         "multMatrixVec3f multAffineMatrixVec3f multLeftByScale"},
        {"operator* on vectors", [&] { w = aBase * P, w = rAff * P; },
         "multMatrixVec3f multAffineMatrixVec3f"},
        {"Matrix4f operators", [&] { g = aBase * aBase, g = g + a, g = g - a, g = 2.0f * aBase; },
         "setIdentity multMatrices setIdentity addMatrices setIdentity subMatrices setIdentity "
         "multMatrixScalar"},
        {"MatAff4f operators", [&] { static_cast<void>(a * rot), rot = rot * rot; },
         "setIdentity multAffineMatrices setIdentity multAffineMatrices"},
        // From-to rotation: parallel, opposite (findOrthogonalVector's cross first), general.
        {"setValue(X, 2X)", [&] { rot.setValue(X, 2.0f * X, P); }, "cross setTranslate"},
        {"setValue(X, -X)", [&] { rot.setValue(X, -X, P); },
         "cross cross " + axisRotation + " copyVec3fTo"},
        {"setValue(X, Y)", [&] { rot.setValue(X, Y, P); },
         "cross " + axisRotation + " copyVec3fTo"},
        // Quaternions and vectors.
        {"Quaternion in place", [&] { qa.multLeftBy(qb), qa *= qb, qa /= qb; },
         "multQuaternions multQuaternions divQuaternionsU"},
        {"Quaternion constructors",
         [&] { [[maybe_unused]] Quaternion x(rot), y(Y, 1.0f), z(0.1f, 0.2f, 0.3f), c(qa); },
         "RotMatrixToQuaternion axisToQuaternionU eulerToQuaternion"},
        {"Quaternion from-to, to matrix", [&] { qa.setValue(Y, X), qa.getValue(rot); },
         "cross axisToQuaternionU quaternionToMatrix copyVec3fTo"},
        {"Vector3f", [&] { w = X ^ Y, w = X.cross(Y), X.findOrthogonalVector(w); },
         "cross cross cross"},
        {"Vector3f without the kernel",
         [&] { static_cast<void>(X.angleD(Y) + double{(X + Y - 2.0f * X / 3.0f).normalize()}); },
         ""},
        // Geometry: the products written out at double width leave no trace.
        {"findUVAxis, interPlanePlane",
         [&] {
             KDRLine l1, l2;
             plane.findUVAxis(l1, l2);
             interPlanePlane(l1, plane, xPlane);
         },
         "cross cross cross"},
        {"interLineLine, interLineTriangle",
         [&] {
             interLineLine(w, angle, angle, lx, KDRLine(Vector3f(2, -3, 0), Y, true));
             interLineTriangle(w, angle, angle, ok, lx, Vector3f(), Y, Z);
         },
         ""},
        {"pointOnLine, distanceLineLine parallel, areCoplanar",
         [&] { pointOnLine(X, lx, 0.0f), distanceLineLine(lx, ly), areCoplanar(lx, ly, 0.0f); },
         times(6, "cross")},
        {"cameraProjBBox, both forms",
         [&] {
             BoundingBoxAlgo::cameraProjBBox(out, box, proj, 1.0f);
             BoundingBoxAlgo::cameraProjBBox(flat, box, proj, 1.0f);
         },
         project8 + " " + project8},
        {"transformBBox, QuadDistance2",
         [&] {
             BoundingBoxAlgo::transformBBox(out, box, MatAff4f());
             BoundingBoxAlgo::QuadDistance2(X, Y, Z, P, MatAff4f(), P);
         },
         "setIdentity " + times(8, "multAffineMatrixVec3f") + " setIdentity " +
             times(4, "multAffineMatrixVec3f")},
    };
    for (Row const & row : rows)
        EXPECT_EQ(trace(row.run), row.trace) << row.call;
}

// Replaces itself by kernel 'B' during its first copy: a member that kept the kernel pointer
// for its second call would reach the deleted object.
struct SelfReplacingKernel : RecordingKernel {
    SelfReplacingKernel() : RecordingKernel('A') {}
    void copyMat4fTo(float * const dst, float const * const src) const override {
        RecordingKernel::copyMat4fTo(dst, src);
        (new RecordingKernel('B'))->setDefault(); // deletes this object: touch nothing after
    }
};

// RotMatrixToQuaternion answering 5: the composite's own result is still 0.
struct NonZeroKernel : RecordingKernel {
    int RotMatrixToQuaternion(float * const d, float const * const m) const override {
        return RecordingKernel::RotMatrixToQuaternion(d, m) + 5;
    }
};

TEST_F(KernelCalls, EveryCallAsksForTheCurrentKernelAgain) {
    Matrix4f m(2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 8, 0, 0, 0, 0, 1);
    (new SelfReplacingKernel())->setDefault();
    bool ok = false;
    EXPECT_EQ(trace([&] { m.inverse(ok); }), "copyMat4fTo inverseMatrix");
    EXPECT_TRUE(RecordingKernel::calls()[0].kernel == 'A' &&
                RecordingKernel::calls()[1].kernel == 'B');
    float axis[3], angle, id[16];
    NonZeroKernel k;
    k.setIdentity(id);
    EXPECT_EQ(k.matrixToAxis(axis, &angle, id), 0);
}

} // namespace
