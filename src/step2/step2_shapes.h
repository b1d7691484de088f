// The shapes the step-2 tree's nodes are written in.
//
// A node builds a candidate shape as a list of (duration, jerk) sections
// from the present state; `run` integrates such a list exactly, so each node
// reads like the shape it stands for. Square roots are guarded (a tiny
// positive value instead of the root of a non-positive radicand) so that a
// node never produces a NaN and every later division stays finite; where a
// node uses twice, four times or the square of a root, the guard is scaled
// the same way.
#ifndef VEKTA_STEP2_STEP2_SHAPES_H
#define VEKTA_STEP2_STEP2_SHAPES_H

#include <cmath>
#include <cstdint>
#include <initializer_list>

#include "numeric/numerics.h"
#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {
namespace step2 {

// Guards of the scaled roots: 2s, 4s, s^2 and 2s^2 of a non-positive radicand.
constexpr double kTwiceRootGuard = 2e-50;
constexpr double kFourRootGuard = 4e-50;
constexpr double kSquareRootGuard = 1e-100;
constexpr double kTwiceSquareGuard = 2e-100;

// Step-2 profile ids; the odd id is the mirror image of the even one below it.
enum Step2Id : int {
    PosTrapZeroNegTri = 0,
    NegTrapZeroPosTri = 1,
    PosTriZeroNegTri = 2,
    NegTriZeroPosTri = 3,
    PosTrapZeroNegTrap = 4,
    NegTrapZeroPosTrap = 5,
    PosTriZeroNegTrap = 6,
    NegTriZeroPosTrap = 7,
    PosTrapZeroPosTri = 8,
    NegTrapZeroNegTri = 9,
    PosTriZeroPosTri = 10,
    NegTriZeroNegTri = 11,
    PosTriZeroPosTrap = 12,
    NegTriZeroNegTrap = 13,
    PosTrapZeroPosTrap = 14,
    NegTrapZeroNegTrap = 15,
    PosTrapHldNegLin = 16,
    NegTrapHldPosLin = 17,
    PosTriHldNegLin = 18,
    NegTriHldPosLin = 19,
    NegLinHldPosTrap = 20,
    NegLinHldPosTri = 22,
    PosLinHldPosTri = 24,
    NegLinHldNegTri = 25,
    PosLinHldPosTrap = 26,
    NegLinHldNegTrap = 27,
    NoStep2Profile = 28,
};

// Which root branch the PosTriZeroPosTri solver is told to respect.
constexpr std::uint8_t kSeedRaisesLow = 1;
constexpr std::uint8_t kSeedCapsHigh = 2;

// The axis as the nodes see it, with the shorthands most shapes are built on.
struct Kin {
    double p0, pT, v0, vT, a0, A, J, T;
    double tA;  // ramp between 0 and A
    double t1;  // ramp from a0 up to A
    double tZ;  // ramp from a0 down to 0
    double vZ;  // velocity once a0 has been ramped to 0
    double vA;  // velocity when a0 has been ramped up to A
    double vS;  // velocity after a0 -> A -> 0: the top of a full positive pulse
};

inline Kin kinOf(const AxisPlan& rec) {
    Kin k;
    k.p0 = rec.curPos;
    k.pT = rec.tgtPos;
    k.v0 = rec.curVel;
    k.vT = rec.tgtVel;
    k.a0 = rec.curAcc;
    k.A = rec.maxAcc;
    k.J = rec.maxJerk;
    k.T = rec.remTime;
    k.tA = k.A / k.J;
    k.t1 = (k.A - k.a0) / k.J;
    k.tZ = k.a0 / k.J;
    k.vZ = k.v0 + k.a0 * k.a0 / (2.0 * k.J);
    k.vA = k.v0 + (k.A * k.A - k.a0 * k.a0) / (2.0 * k.J);
    k.vS = k.v0 + (2.0 * k.A * k.A - k.a0 * k.a0) / (2.0 * k.J);
    return k;
}

// A point of a shape under integration, and one section of constant jerk.
struct Motion {
    double p, v, a;
};
struct Section {
    double dur;
    double jerk;
};

// Integrate the sections in order, exactly.
[[gnu::always_inline]] inline Motion run(Motion m, std::initializer_list<Section> sections) {
    CubeMemo memo;
    for (const Section& s : sections) {
        const double d = s.dur, j = s.jerk;
        m.p += m.v * d + m.a * d * d / 2.0 + jerkShare(j, d, memo);
        m.v += m.a * d + j * d * d / 2.0;
        m.a += j * d;
    }
    return m;
}

inline Motion startOf(const Kin& k) { return Motion{k.p0, k.v0, k.a0}; }

// End position of a shape that starts from the present state.
[[gnu::always_inline]] inline double endPos(const Kin& k, std::initializer_list<Section> sections) {
    return run(startOf(k), sections).p;
}

// 2s and 4s of a guarded root.
inline double twiceRoot(double x) { return x > 0.0 ? 2.0 * std::sqrt(x) : kTwiceRootGuard; }
inline double fourRoot(double x) { return x > 0.0 ? 4.0 * std::sqrt(x) : kFourRootGuard; }

inline void setProfile(AxisPlan& rec, Step2Id id) { rec.step2Profile = id; }

}  // namespace step2
}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
