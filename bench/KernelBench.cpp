// bench/KernelBench.cpp - kernel operations through getCurrent(), beside glm and Eigen
//
// Each KDRCore benchmark asks EnhancedMathFunctions::getCurrent() for every operation, as the
// library's own value classes do. The peers hold their own types, filled with the same values,
// and are compiled with the host's flags (nothing beyond what CMake's build type gives).
#include "BenchSupport.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Quaternion.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#if KDRCORE_BENCH_HAVE_GLM
#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/quaternion.hpp>
#include <glm/gtc/type_ptr.hpp>
#endif
#if KDRCORE_BENCH_HAVE_EIGEN
#include <Eigen/Dense>
#include <Eigen/Geometry>
#include <Eigen/SVD>
#endif

namespace kdrbench {
namespace {

// Items per iteration: large enough to leave L1, small enough for L2, as a frame's worth of
// transforms would be.
constexpr int N = 1024;

struct Mat16 {
    float m[16];
};
struct Vec3 {
    float v[3];
};
struct Quat {
    float q[4]; // w, x, y, z
};

EnhancedMathFunctions * kernel() {
    return EnhancedMathFunctions::getCurrent();
}

std::vector<Mat16> generalMatrices(int n) {
    std::vector<Mat16> out(static_cast<std::size_t>(n));
    for (Mat16 & m : out)
        for (float & e : m.m)
            e = uniform(-2.0f, 2.0f);
    return out;
}

Quat unitQuaternion() {
    Quat q;
    double norm2 = 0.0;
    for (float & e : q.q) {
        e = uniform(-1.0f, 1.0f);
        norm2 += static_cast<double>(e) * static_cast<double>(e);
    }
    double const k = 1.0 / std::sqrt(norm2);
    for (float & e : q.q)
        e = static_cast<float>(static_cast<double>(e) * k);
    return q;
}

// Rotation (from a random unit quaternion), scale in [0.5, 2] per axis, translation.
Mat16 affineMatrix() {
    Mat16 m;
    Quat const q = unitQuaternion();
    kernel()->quaternionToMatrix(m.m, q.q);
    for (int c = 0; c < 3; ++c) {
        float const s = uniform(0.5f, 2.0f);
        for (int r = 0; r < 3; ++r)
            m.m[4 * c + r] *= s;
    }
    for (int r = 0; r < 3; ++r)
        m.m[12 + r] = uniform(-10.0f, 10.0f);
    return m;
}

std::vector<Mat16> affineMatrices(int n) {
    std::vector<Mat16> out(static_cast<std::size_t>(n));
    for (Mat16 & m : out)
        m = affineMatrix();
    return out;
}

// A perspective camera at (0, 2, 10) looking at the origin, OpenGL conventions (column vectors,
// depth -1 to 1 in front of the viewer).
Mat16 cameraMatrix() {
    double const fovY = 1.0, aspect = 16.0 / 9.0, nearZ = 0.1, farZ = 100.0;
    double const f = 1.0 / std::tan(fovY / 2.0);
    double p[16] = {};
    p[0] = f / aspect;
    p[5] = f;
    p[10] = (farZ + nearZ) / (nearZ - farZ);
    p[11] = -1.0;
    p[14] = 2.0 * farZ * nearZ / (nearZ - farZ);
    // View: eye (0, 2, 10), target origin, up y.
    double const eye[3] = {0.0, 2.0, 10.0};
    double fwd[3] = {-eye[0], -eye[1], -eye[2]};
    double const fl = std::sqrt(fwd[0] * fwd[0] + fwd[1] * fwd[1] + fwd[2] * fwd[2]);
    for (double & e : fwd)
        e /= fl;
    double side[3] = {fwd[1] * 0.0 - fwd[2] * 1.0, fwd[2] * 0.0 - fwd[0] * 0.0,
                      fwd[0] * 1.0 - fwd[1] * 0.0};
    double const sl = std::sqrt(side[0] * side[0] + side[1] * side[1] + side[2] * side[2]);
    for (double & e : side)
        e /= sl;
    double const up[3] = {side[1] * fwd[2] - side[2] * fwd[1], side[2] * fwd[0] - side[0] * fwd[2],
                          side[0] * fwd[1] - side[1] * fwd[0]};
    double v[16] = {};
    for (int i = 0; i < 3; ++i) {
        v[4 * i + 0] = side[i];
        v[4 * i + 1] = up[i];
        v[4 * i + 2] = -fwd[i];
    }
    v[12] = -(side[0] * eye[0] + side[1] * eye[1] + side[2] * eye[2]);
    v[13] = -(up[0] * eye[0] + up[1] * eye[1] + up[2] * eye[2]);
    v[14] = fwd[0] * eye[0] + fwd[1] * eye[1] + fwd[2] * eye[2];
    v[15] = 1.0;
    Mat16 out;
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r) {
            double s = 0.0;
            for (int k = 0; k < 4; ++k)
                s += p[4 * k + r] * v[4 * c + k];
            out.m[4 * c + r] = static_cast<float>(s);
        }
    return out;
}

std::vector<Vec3> points(int n, float lo, float hi) {
    std::vector<Vec3> out(static_cast<std::size_t>(n));
    for (Vec3 & p : out)
        for (float & e : p.v)
            e = uniform(lo, hi);
    return out;
}

// Symmetric positive definite blocks L'L, as the polar factorisation builds them.
std::vector<Mat16> symmetricMatrices(int n) {
    std::vector<Mat16> out(static_cast<std::size_t>(n));
    for (Mat16 & h : out) {
        Mat16 const l = affineMatrix();
        Mat16 lt;
        kernel()->transpose(lt.m, l.m);
        kernel()->multMatrices(h.m, lt.m, l.m);
    }
    return out;
}

#if KDRCORE_BENCH_HAVE_GLM
glm::mat4 toGlm(Mat16 const & m) {
    return glm::make_mat4(m.m);
}
std::vector<glm::mat4> toGlm(std::vector<Mat16> const & ms) {
    std::vector<glm::mat4> out;
    for (Mat16 const & m : ms)
        out.push_back(toGlm(m));
    return out;
}
glm::quat toGlm(Quat const & q) {
    return glm::quat(q.q[0], q.q[1], q.q[2], q.q[3]);
}
#endif

#if KDRCORE_BENCH_HAVE_EIGEN
using EMat4 = Eigen::Matrix4f;
template <class T> using EVector = std::vector<T, Eigen::aligned_allocator<T>>;
EVector<EMat4> toEigen(std::vector<Mat16> const & ms) {
    EVector<EMat4> out;
    for (Mat16 const & m : ms)
        out.push_back(Eigen::Map<EMat4 const>(m.m)); // column-major, as the kernel's layout
    return out;
}
EVector<Eigen::Affine3f> toEigenAffine(std::vector<Mat16> const & ms) {
    EVector<Eigen::Affine3f> out;
    for (Mat16 const & m : ms)
        out.emplace_back(Eigen::Map<EMat4 const>(m.m));
    return out;
}
Eigen::Quaternionf toEigen(Quat const & q) {
    return Eigen::Quaternionf(q.q[0], q.q[1], q.q[2], q.q[3]);
}
#endif

void registerMatrixProducts() {
    std::vector<Mat16> const a = generalMatrices(N), b = generalMatrices(N);
    add("multMatrices", KDRCORE, N, [a, b, out = std::vector<Mat16>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            kernel()->multMatrices(out[i].m, a[i].m, b[i].m);
    });
#if KDRCORE_BENCH_HAVE_GLM
    add("multMatrices", "glm", N,
        [ga = toGlm(a), gb = toGlm(b), out = std::vector<glm::mat4>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i] = ga[i] * gb[i];
        });
#endif
#if KDRCORE_BENCH_HAVE_EIGEN
    add("multMatrices", "Eigen", N,
        [ea = toEigen(a), eb = toEigen(b), out = EVector<EMat4>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i].noalias() = ea[i] * eb[i];
        });
#endif

    std::vector<Mat16> const fa = affineMatrices(N), fb = affineMatrices(N);
    add("multAffineMatrices", KDRCORE, N, [fa, fb, out = std::vector<Mat16>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            kernel()->multAffineMatrices(out[i].m, fa[i].m, fb[i].m);
    });
#if KDRCORE_BENCH_HAVE_GLM
    add("multAffineMatrices", "glm", N,
        [ga = toGlm(fa), gb = toGlm(fb), out = std::vector<glm::mat4>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i] = ga[i] * gb[i];
        });
#endif
#if KDRCORE_BENCH_HAVE_EIGEN
    add("multAffineMatrices", "Eigen", N,
        [ea = toEigenAffine(fa), eb = toEigenAffine(fb),
         out = EVector<Eigen::Affine3f>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i] = ea[i] * eb[i];
        });
#endif
}

void registerVectorProducts() {
    // One camera matrix applied to a cloud of points, as a host projects a mesh.
    Mat16 const cam = cameraMatrix();
    std::vector<Vec3> const pts = points(N, -5.0f, 5.0f);
    add("multMatrixVec3f", KDRCORE, N, [cam, pts, out = std::vector<Vec3>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            kernel()->multMatrixVec3f(out[i].v, cam.m, pts[i].v);
    });
#if KDRCORE_BENCH_HAVE_GLM
    {
        std::vector<glm::vec3> gp;
        for (Vec3 const & p : pts)
            gp.push_back(glm::make_vec3(p.v));
        add("multMatrixVec3f", "glm", N,
            [m = toGlm(cam), gp, out = std::vector<glm::vec3>(N)]() mutable {
                for (int i = 0; i < N; ++i) {
                    glm::vec4 const q = m * glm::vec4(gp[i], 1.0f);
                    out[i] = glm::vec3(q) / q.w;
                }
            });
    }
#endif
#if KDRCORE_BENCH_HAVE_EIGEN
    {
        EVector<Eigen::Vector3f> ep;
        for (Vec3 const & p : pts)
            ep.emplace_back(p.v[0], p.v[1], p.v[2]);
        add("multMatrixVec3f", "Eigen", N,
            [m = EMat4(Eigen::Map<EMat4 const>(cam.m)), ep,
             out = EVector<Eigen::Vector3f>(N)]() mutable {
                for (int i = 0; i < N; ++i)
                    out[i] = (m * ep[i].homogeneous()).hnormalized();
            });
    }
#endif

    Mat16 const aff = affineMatrix();
    add("multAffineMatrixVec3f", KDRCORE, N, [aff, pts, out = std::vector<Vec3>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            kernel()->multAffineMatrixVec3f(out[i].v, aff.m, pts[i].v);
    });
#if KDRCORE_BENCH_HAVE_GLM
    {
        std::vector<glm::vec3> gp;
        for (Vec3 const & p : pts)
            gp.push_back(glm::make_vec3(p.v));
        add("multAffineMatrixVec3f", "glm", N,
            [m = toGlm(aff), gp, out = std::vector<glm::vec3>(N)]() mutable {
                for (int i = 0; i < N; ++i)
                    out[i] = glm::vec3(m * glm::vec4(gp[i], 1.0f));
            });
    }
#endif
#if KDRCORE_BENCH_HAVE_EIGEN
    {
        EVector<Eigen::Vector3f> ep;
        for (Vec3 const & p : pts)
            ep.emplace_back(p.v[0], p.v[1], p.v[2]);
        add("multAffineMatrixVec3f", "Eigen", N,
            [m = Eigen::Affine3f(Eigen::Map<EMat4 const>(aff.m)), ep,
             out = EVector<Eigen::Vector3f>(N)]() mutable {
                for (int i = 0; i < N; ++i)
                    out[i] = m * ep[i];
            });
    }
#endif
}

void registerInverse() {
    std::vector<Mat16> const a = generalMatrices(N);
    add("inverseMatrix", KDRCORE, N, [a, out = std::vector<Mat16>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            benchmark::DoNotOptimize(kernel()->inverseMatrix(out[i].m, a[i].m));
    });
#if KDRCORE_BENCH_HAVE_GLM
    add("inverseMatrix", "glm", N, [ga = toGlm(a), out = std::vector<glm::mat4>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            out[i] = glm::inverse(ga[i]);
    });
#endif
#if KDRCORE_BENCH_HAVE_EIGEN
    add("inverseMatrix", "Eigen", N, [ea = toEigen(a), out = EVector<EMat4>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            out[i] = ea[i].inverse();
    });
#endif
}

void registerQuaternions() {
    std::vector<Quat> qa(N), qb(N);
    std::vector<float> ts(N);
    for (int i = 0; i < N; ++i) {
        qa[i] = unitQuaternion();
        qb[i] = unitQuaternion();
        ts[i] = uniform(0.0f, 1.0f);
    }

    add("quaternionToMatrix", KDRCORE, N, [qa, out = std::vector<Mat16>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            kernel()->quaternionToMatrix(out[i].m, qa[i].q);
    });
    add("multQuaternions", KDRCORE, N, [qa, qb, out = std::vector<Quat>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            kernel()->multQuaternions(out[i].q, qa[i].q, qb[i].q);
    });
    add("quaternionSLERP", KDRCORE, N, [qa, qb, ts, out = std::vector<Quat>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            kernel()->quaternionSLERP(out[i].q, qa[i].q, qb[i].q, ts[i]);
    });
#if KDRCORE_BENCH_HAVE_GLM
    {
        std::vector<glm::quat> ga, gb;
        for (int i = 0; i < N; ++i) {
            ga.push_back(toGlm(qa[i]));
            gb.push_back(toGlm(qb[i]));
        }
        add("quaternionToMatrix", "glm", N, [ga, out = std::vector<glm::mat4>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i] = glm::mat4_cast(ga[i]);
        });
        add("multQuaternions", "glm", N, [ga, gb, out = std::vector<glm::quat>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i] = ga[i] * gb[i];
        });
        add("quaternionSLERP", "glm", N, [ga, gb, ts, out = std::vector<glm::quat>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i] = glm::slerp(ga[i], gb[i], ts[i]);
        });
    }
#endif
#if KDRCORE_BENCH_HAVE_EIGEN
    {
        EVector<Eigen::Quaternionf> ea, eb;
        for (int i = 0; i < N; ++i) {
            ea.push_back(toEigen(qa[i]));
            eb.push_back(toEigen(qb[i]));
        }
        add("quaternionToMatrix", "Eigen", N, [ea, out = EVector<EMat4>(N)]() mutable {
            for (int i = 0; i < N; ++i) {
                out[i].setIdentity();
                out[i].topLeftCorner<3, 3>() = ea[i].toRotationMatrix();
            }
        });
        add("multQuaternions", "Eigen", N,
            [ea, eb, out = EVector<Eigen::Quaternionf>(N)]() mutable {
                for (int i = 0; i < N; ++i)
                    out[i] = ea[i] * eb[i];
            });
        add("quaternionSLERP", "Eigen", N,
            [ea, eb, ts, out = EVector<Eigen::Quaternionf>(N)]() mutable {
                for (int i = 0; i < N; ++i)
                    out[i] = ea[i].slerp(ts[i], eb[i]);
            });
    }
#endif
}

void registerDecompositions() {
    std::vector<Mat16> const sym = symmetricMatrices(N);
    struct Eigenpairs {
        float values[3];
        float vectors[3][3];
        int rotations;
    };
    add("jacobi3", KDRCORE, N, [sym, out = std::vector<Eigenpairs>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            kernel()->jacobi3(out[i].values, out[i].vectors, out[i].rotations, sym[i].m);
    });
#if KDRCORE_BENCH_HAVE_EIGEN
    {
        EVector<Eigen::Matrix3f> es;
        for (Mat16 const & h : sym)
            es.push_back(Eigen::Map<EMat4 const>(h.m).topLeftCorner<3, 3>());
        struct EigenPairs {
            Eigen::Vector3f values;
            Eigen::Matrix3f vectors;
        };
        add("jacobi3", "Eigen", N, [es, out = EVector<EigenPairs>(N)]() mutable {
            Eigen::SelfAdjointEigenSolver<Eigen::Matrix3f> solver;
            for (int i = 0; i < N; ++i) {
                solver.compute(es[i]);
                out[i].values = solver.eigenvalues();
                out[i].vectors = solver.eigenvectors();
            }
        });
    }
#endif

    std::vector<Mat16> const aff = affineMatrices(N);
    struct Factors {
        float r[16], s[3], u[16], t[3], p[16];
        bool ok;
    };
    add("factor", KDRCORE, N, [aff, out = std::vector<Factors>(N)]() mutable {
        for (int i = 0; i < N; ++i) {
            Factors & f = out[i];
            f.ok = kernel()->factor(f.r, f.s, f.u, f.t, f.p, aff[i].m);
        }
    });
#if KDRCORE_BENCH_HAVE_EIGEN
    {
        // The polar decomposition L = U' (V S V') from the SVD L = W S V': rotation U' = W V',
        // stretch frame V, a mirror carried by the stretch.
        struct EigenFactors {
            Eigen::Matrix3f frame, rotation;
            Eigen::Vector3f stretch, translation;
        };
        add("factor", "Eigen", N, [ea = toEigen(aff), out = EVector<EigenFactors>(N)]() mutable {
            for (int i = 0; i < N; ++i) {
                Eigen::Matrix3f const l = ea[i].topLeftCorner<3, 3>();
                Eigen::JacobiSVD<Eigen::Matrix3f> svd(l, Eigen::ComputeFullU | Eigen::ComputeFullV);
                EigenFactors & f = out[i];
                f.stretch = svd.singularValues();
                f.rotation = svd.matrixU() * svd.matrixV().transpose();
                if (f.rotation.determinant() < 0.0f) {
                    f.rotation = -f.rotation;
                    f.stretch = -f.stretch;
                }
                f.frame = svd.matrixV().transpose();
                f.translation = ea[i].topRightCorner<3, 1>();
            }
        });
    }
#endif
}

// The floor under every operation a host reaches through the kernel: getCurrent() and a virtual
// call to an override that returns at once.
class EmptyKernel : public EnhancedMathFunctions {
public:
    void multMatrixVec3f(float * const, float const * const, float const * const) const override {}
};

void registerEmptyCall() {
    char const * const op = "empty kernel call";
    operationOrder().push_back(op);
    Mat16 const cam = cameraMatrix();
    std::vector<Vec3> const pts = points(N, -5.0f, 5.0f);
    benchmark::RegisterBenchmark(
        (std::string(op) + "|" + KDRCORE).c_str(),
        [cam, pts, out = std::vector<Vec3>(N)](benchmark::State & state) mutable {
            (new EmptyKernel)->setDefault();
            for (auto _ : state) {
                for (int i = 0; i < N; ++i)
                    kernel()->multMatrixVec3f(out[i].v, cam.m, pts[i].v);
                benchmark::ClobberMemory();
            }
            (new EnhancedMathFunctions)->setDefault();
            state.SetItemsProcessed(state.iterations() * N);
        });
}

// The value classes, each operator one kernel call through getCurrent().
void registerValueClasses() {
    std::vector<Mat16> const a = generalMatrices(N), b = generalMatrices(N);
    Mat16 const cam = cameraMatrix(), aff = affineMatrix();
    std::vector<Vec3> const pts = points(N, -5.0f, 5.0f);
    std::vector<Matrix4f> ma, mb;
    std::vector<Vector3f> vp;
    std::vector<Quaternion> qa, qb;
    for (int i = 0; i < N; ++i) {
        ma.emplace_back(a[i].m);
        mb.emplace_back(b[i].m);
        vp.emplace_back(pts[i].v);
        qa.emplace_back(Vector3f(uniform(-1, 1), uniform(-1, 1), 1), uniform(0, 3));
        qb.emplace_back(Vector3f(1, uniform(-1, 1), uniform(-1, 1)), uniform(0, 3));
    }
    MatAff4f maff;
    std::copy(aff.m, aff.m + 16, maff.getValue());
    add("Matrix4f * Matrix4f", KDRCORE, N, [ma, mb, out = std::vector<Matrix4f>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            out[i] = ma[i] * mb[i];
    });
    add("Quaternion * Quaternion", KDRCORE, N,
        [qa, qb, out = std::vector<Quaternion>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i] = qa[i] * qb[i];
        });
    add("Matrix4f * Vector3f", KDRCORE, N,
        [m = Matrix4f(cam.m), vp, out = std::vector<Vector3f>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i] = m * vp[i];
        });
    add("MatAff4f * Vector3f", KDRCORE, N, [maff, vp, out = std::vector<Vector3f>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            out[i] = maff * vp[i];
    });
#if KDRCORE_BENCH_HAVE_GLM
    std::vector<glm::vec3> gp;
    std::vector<glm::quat> ga, gb;
    for (int i = 0; i < N; ++i) {
        gp.push_back(glm::make_vec3(pts[i].v));
        float const *p = qa[i].getValue(), *q = qb[i].getValue();
        ga.emplace_back(p[0], p[1], p[2], p[3]); // w, x, y, z
        gb.emplace_back(q[0], q[1], q[2], q[3]);
    }
    add("Matrix4f * Matrix4f", "glm", N,
        [ga4 = toGlm(a), gb4 = toGlm(b), out = std::vector<glm::mat4>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i] = ga4[i] * gb4[i];
        });
    add("Quaternion * Quaternion", "glm", N, [ga, gb, out = std::vector<glm::quat>(N)]() mutable {
        for (int i = 0; i < N; ++i)
            out[i] = ga[i] * gb[i];
    });
    add("Matrix4f * Vector3f", "glm", N,
        [m = toGlm(cam), gp, out = std::vector<glm::vec3>(N)]() mutable {
            for (int i = 0; i < N; ++i) {
                glm::vec4 const q = m * glm::vec4(gp[i], 1.0f);
                out[i] = glm::vec3(q) / q.w;
            }
        });
    add("MatAff4f * Vector3f", "glm", N,
        [m = toGlm(aff), gp, out = std::vector<glm::vec3>(N)]() mutable {
            for (int i = 0; i < N; ++i)
                out[i] = glm::vec3(m * glm::vec4(gp[i], 1.0f));
        });
#endif
}

} // namespace

void registerKernelBenchmarks() {
    registerEmptyCall();
    registerMatrixProducts();
    registerVectorProducts();
    registerInverse();
    registerQuaternions();
    registerDecompositions();
    registerValueClasses();
}

} // namespace kdrbench
