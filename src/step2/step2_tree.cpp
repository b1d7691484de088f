// The step-2 decision tree.
//
// Every axis but the slowest must arrive at its target exactly at the common
// end time, i.e. in the remaining time T rather than as early as it can. The
// tree picks the shape that does so by three kinds of test:
//   - velocity tests: is the target velocity above the one a given pulse
//     reaches (which way, and how far, the velocity has to move);
//   - time tests: does a limiting shape already need T or more;
//   - end-position tests: build a candidate shape that fills T exactly,
//     integrate it section by section (constant jerk per section) and compare
//     where it ends with the target position.
// Shapes are written as lists of (duration, jerk) sections from the present
// state; `run` integrates such a list exactly, so each node reads like the
// shape it stands for. Square roots are guarded (a tiny positive value instead
// of the root of a non-positive radicand) so that a node never produces a NaN
// and every later division stays finite; where a node uses twice, four times
// or the square of a root, the guard is scaled the same way.
//
// Nodes 1..8 (the normalisation prologue, shared with the step-1 tree and
// held by the tree engine, all but node 5) are only reachable from node 1;
// the step-2 walk enters at node 9.
#include "step2/step2_tree.h"

#include <cstdint>
#include <cstdio>
#include <cmath>
#include <initializer_list>

#include "numeric/axis_curve.h"
#include "numeric/numerics.h"
#include "output/text_output.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// Guards of the scaled roots: 2s, 4s, s^2 and 2s^2 of a non-positive radicand.
constexpr double kTwiceRootGuard = 2e-50;
constexpr double kFourRootGuard = 4e-50;
constexpr double kSquareRootGuard = 1e-100;
constexpr double kTwiceSquareGuard = 2e-100;

// Below this a level difference or a hold span is treated as zero and the
// division by it is skipped (nodes 49, 50).
constexpr double kDegenerateSpan = 1e-5;

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

Kin kinOf(const AxisPlan& rec) {
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

Motion startOf(const Kin& k) { return Motion{k.p0, k.v0, k.a0}; }

// End position of a shape that starts from the present state.
[[gnu::always_inline]] inline double endPos(const Kin& k, std::initializer_list<Section> sections) {
    return run(startOf(k), sections).p;
}

// 2s and 4s of a guarded root.
double twiceRoot(double x) { return x > 0.0 ? 2.0 * std::sqrt(x) : kTwiceRootGuard; }
double fourRoot(double x) { return x > 0.0 ? 4.0 * std::sqrt(x) : kFourRootGuard; }

void setProfile(AxisPlan& rec, Step2Id id) { rec.step2Profile = id; }

// ---------------------------------------------------------------- shared shapes

// Peak of the positive pulse of a PosTrap + PosTri pair that fills T with no
// cruise between them (nodes 30, 31, 40).
double trapTriPeak(const Kin& k) {
    const double x = k.A * k.A - ((k.J * k.T + k.a0 - k.A) * k.A - k.a0 * k.a0 / 2.0 -
                                  (k.vT - k.v0) * k.J);
    return k.A - guardedRoot(x);
}

// Radicand of the negative NegTrap + NegTri pair filling T (nodes 56, 59, 68).
double negTrapTriRadicand(const Kin& k) {
    return k.A * k.A - ((k.J * k.T - k.A) * k.A - (k.v0 - k.vT) * k.J);
}

// Full positive pulse up to vS, cruise at vS, then a positive Tri pulse up to
// vT (nodes 23, 26, 34).
double posTrapCruisePosTriEnd(const Kin& k) {
    const double s = guardedRoot((k.vT - k.vS) * k.J);
    const double rest = k.T - (k.t1 + k.tA + 2.0 * s / k.J);
    return endPos(k, {{k.t1, k.J}, {k.tA, -k.J}, {rest, 0.0}, {s / k.J, k.J}, {s / k.J, -k.J}});
}

// Lower the acceleration to a hold level al, hold it for T - tZ, then ramp
// al to zero (nodes 42, 96).
struct HoldDown {
    double al, P;
};
HoldDown holdDownShape(const Kin& k) {
    const double hold = k.T - k.tZ;
    const double al = (k.vT - k.v0 - k.a0 * k.a0 / (2.0 * k.J)) / hold;
    const double P = endPos(k, {{(k.a0 - al) / k.J, -k.J}, {hold, 0.0}, {al / k.J, -k.J}});
    return HoldDown{al, P};
}

// Raise the acceleration to the hold level ap that makes ramp, hold and ramp
// to zero fill T exactly (nodes 43, 95).
struct HoldUp {
    double ap, P;
};
HoldUp holdUpShape(const Kin& k) {
    const double b = k.J * k.T + k.a0;
    const double x = b * b - 4.0 * ((k.vT - k.v0) * k.J + k.a0 * k.a0 / 2.0);
    const double ap = (b - guardedRoot(x)) / 2.0;
    const double P = endPos(k, {{(ap - k.a0) / k.J, k.J},
                                {k.T - (2.0 * ap - k.a0) / k.J, 0.0},
                                {ap / k.J, -k.J}});
    return HoldUp{ap, P};
}

// Hold a0, then a positive Tri pulse ending at vT exactly at T (nodes 48, 97).
double holdThenTriEnd(const Kin& k) {
    const double s =
        guardedRoot(k.a0 * k.a0 - ((k.a0 * k.T - k.vT + k.v0) * k.J + k.a0 * k.a0 / 2.0));
    const double ap = k.a0 + s;
    return endPos(k, {{k.T - (2.0 * ap - k.a0) / k.J, 0.0},
                      {(ap - k.a0) / k.J, k.J},
                      {ap / k.J, -k.J}});
}

// A negative hold at level r (< 0) entered and left at full jerk, filling T
// (nodes 64, 72).
struct NegHold {
    double r, P;
};
NegHold negHoldShape(const Kin& k) {
    const double JT = k.J * k.T;
    const double r = (guardedRoot(JT * JT - 4.0 * (k.v0 - k.vT) * k.J) - JT) / 2.0;
    const double P = endPos(k, {{-r / k.J, -k.J}, {k.T + 2.0 * r / k.J, 0.0}, {-r / k.J, k.J}});
    return NegHold{r, P};
}

// Level al of the held section of the NegTrap + hold shapes (nodes 73, 74).
double negTrapHoldLevel(const Kin& k) {
    return (k.vT - k.v0 + k.A * k.A / k.J) / (k.T - 2.0 * k.A / k.J);
}

// ------------------------------------------------------------------- nodes

bool alwaysTrue(PlannerState&, AxisPlan&) { return true; }

// The velocity reached when the acceleration is raised from a0 to A stays
// above -V.
bool node5(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return (k.A * k.A - k.a0 * k.a0) / (2.0 * k.J) + k.v0 > -rec.maxVel;
}

// The target velocity is at or above the one left after ramping a0 to zero.
bool node9(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.vT >= k.vZ;
}

// The target velocity needs at least a full positive pulse.
bool node10(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.vT >= k.vS;
}

// Trap pulse straight up to vT, then cruise at vT: does it stop short?
bool node11(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double th = (k.vT - k.vA - k.A * k.A / (2.0 * k.J)) / k.A;
    const double rest = k.T - (k.t1 + th + k.tA);
    return k.pT >= endPos(k, {{k.t1, k.J}, {th, 0.0}, {k.tA, -k.J}, {rest, 0.0}});
}

// Tri pulse straight up to vT, then cruise at vT.
bool node12(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.vT - k.v0) * k.J + k.a0 * k.a0 / 2.0);
    const double rest = k.T - ((s - k.a0) / k.J + s / k.J);
    if (k.pT >= endPos(k, {{(s - k.a0) / k.J, k.J}, {s / k.J, -k.J}, {rest, 0.0}})) return true;
    st.hldLinHi = s;
    return false;
}

// A Trap pulse to vT + A^2/J and a full negative Tri pulse already need T.
bool node13(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double A2 = k.A * k.A;
    if (k.t1 + (k.vT + A2 / k.J - k.vA - A2 / (2.0 * k.J)) / k.A + 3.0 * k.A / k.J >= k.T) {
        setProfile(rec, PosTrapZeroNegTri);
        return true;
    }
    return false;
}

// Velocity test with a0^2 added where node 10 subtracts it (kept as it is).
bool node14(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.vT >= k.v0 + (k.a0 * k.a0 + 2.0 * k.A * k.A) / (2.0 * k.J);
}

// Trap up to vT + A^2/J, cruise, full negative Tri pulse down to vT.
bool node15(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double A2 = k.A * k.A;
    const double hold = (A2 / k.J + k.vT - k.vA - A2 / (2.0 * k.J)) / k.A;
    const double rest = k.T - (k.t1 + hold + 3.0 * k.tA);
    const bool reaches = k.pT >= endPos(k, {{k.t1, k.J},
                                            {hold, 0.0},
                                            {k.tA, -k.J},
                                            {rest, 0.0},
                                            {k.tA, -k.J},
                                            {k.tA, k.J}});
    setProfile(rec, reaches ? PosTrapZeroNegTrap : PosTrapZeroNegTri);
    return reaches;
}

// A full positive pulse and the negative Tri pulse back to vT already need T.
bool node16(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    if ((2.0 * k.A - k.a0 + twiceRoot((k.vS - k.vT) * k.J)) / k.J >= k.T) {
        setProfile(rec, PosTriZeroNegTri);
        return true;
    }
    return false;
}

// Full positive pulse to vS, cruise at vS, negative Tri pulse down to vT.
bool node17(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.vS - k.vT) * k.J);
    const double rest = k.T - (k.t1 + k.tA + 2.0 * s / k.J);
    if (k.pT >= endPos(k, {{k.t1, k.J},
                           {k.tA, -k.J},
                           {rest, 0.0},
                           {s / k.J, -k.J},
                           {s / k.J, k.J}})) {
        return true;
    }
    setProfile(rec, PosTriZeroNegTri);
    return false;
}

// Ramp a0 to zero, then a Trap pulse from vZ up to vT: does it need T?
bool node18(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.tZ + (k.vT - k.vZ) / k.A + k.tA >= k.T;
}

// Ramp a0 to zero, then a Tri pulse from vZ up to vT; its peak is kept.
bool node19(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double x = (k.vT - k.vZ) * k.J;
    const double s = guardedRoot(x);
    st.triPeakAcc = s;
    return k.tZ + twiceRoot(x) / k.J >= k.T;
}

// Ramp a0 to zero, cruise at vZ, Trap pulse up to vT. If the target lies
// behind that, the ramp to zero is committed.
bool node20(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = (k.vT - k.vZ) / k.A - k.tA;
    const double rest = k.T - (k.tZ + k.tA + hold + k.tA);
    if (k.pT >= endPos(k, {{k.tZ, -k.J},
                           {rest, 0.0},
                           {k.tA, k.J},
                           {hold, 0.0},
                           {k.tA, -k.J}})) {
        return true;
    }
    appendAccToZero(rec);
    return false;
}

// Ramp a0 to zero, cruise at vZ, Tri pulse up to vT; commits the ramp when
// the target lies behind.
bool node21(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.vT - k.vZ) * k.J);
    const double rest = k.T - (k.tZ + 2.0 * s / k.J);
    if (k.pT >= endPos(k, {{k.tZ, -k.J}, {rest, 0.0}, {s / k.J, k.J}, {s / k.J, -k.J}})) {
        return true;
    }
    appendAccToZero(rec);
    return false;
}

bool node37(PlannerState& st, AxisPlan& rec);

// The present acceleration already reaches the Tri peak of node 19:
// PosTriZeroPosTri. Otherwise node 37's test, inverted: two equal Tri pulses
// that fit in less than T also end here (node 37 has set the id); when they
// need T or more the walk goes on to the root search.
bool node24(PlannerState& st, AxisPlan& rec) {
    if (rec.curAcc >= st.triPeakAcc) {
        setProfile(rec, PosTriZeroPosTri);
        return true;
    }
    return !node37(st, rec);
}

bool node89(PlannerState& st, AxisPlan& rec);

// Full positive pulse, cruise at vS, positive Tri pulse up to vT. When it
// does not reach the target, node 89 decides; a failure of both is reported
// ("D26-89", without a line feed, like the other unterminated guard lines).
bool node26(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    if (k.pT >= posTrapCruisePosTriEnd(k)) {
        setProfile(rec, PosTrapZeroPosTri);
        return true;
    }
    if (!node89(st, rec)) {
        printTo(&st.output, "D26-89");
        return true;
    }
    return false;
}

// The target velocity needs more than two full positive pulses.
bool node27(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.vT >= k.v0 + (4.0 * k.A * k.A - k.a0 * k.a0) / (2.0 * k.J);
}

// Two Trap pulses (the second holding A up to vT) already need T.
bool node28(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return (4.0 * k.A - k.a0) / k.J + (k.vT - k.vS) / k.A - k.tA >= k.T;
}

// A full positive pulse and a positive Tri pulse up to vT already need T.
bool node29(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return (2.0 * k.A - k.a0 + twiceRoot((k.vT - k.vS) * k.J)) / k.J >= k.T;
}

// Trap pulse, then a positive Tri pulse of peak q, together filling T.
bool node30(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double q = trapTriPeak(k);
    const double hold = (k.vT - q * q / k.J - k.vA) / k.A - k.A / (2.0 * k.J);
    if (k.pT >= endPos(k, {{k.t1, k.J},
                           {hold, 0.0},
                           {k.tA, -k.J},
                           {q / k.J, k.J},
                           {q / k.J, -k.J}})) {
        setProfile(rec, PosTrapZeroPosTri);
        st.trapTriSeedSet = 1;
        st.trapTriSeed = q;
        return true;
    }
    return false;
}

// Positive Tri pulse of peak q, then a Trap pulse up to vT, filling T.
bool node31(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double q = trapTriPeak(k);
    const double v1 = k.v0 + (2.0 * q * q - k.a0 * k.a0) / (2.0 * k.J);
    const double hold = (k.vT - v1 - k.A * k.A / (2.0 * k.J)) / k.A - k.A / (2.0 * k.J);
    if (k.pT >= endPos(k, {{(q - k.a0) / k.J, k.J},
                           {q / k.J, -k.J},
                           {k.tA, k.J},
                           {hold, 0.0},
                           {k.tA, -k.J}})) {
        return true;
    }
    setProfile(rec, PosTriZeroPosTrap);
    st.triTrapSeedSet = 1;
    st.triTrapSeed = q;
    return false;
}

// Full positive pulse to vS, cruise at vS, Trap pulse up to vT.
bool node32(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = (k.vT - k.vS - k.A * k.A / (2.0 * k.J)) / k.A - k.A / (2.0 * k.J);
    const double rest = k.T - (k.t1 + k.tA + k.tA + hold + k.tA);
    if (k.pT >= endPos(k, {{k.t1, k.J},
                           {k.tA, -k.J},
                           {rest, 0.0},
                           {k.tA, k.J},
                           {hold, 0.0},
                           {k.tA, -k.J}})) {
        return true;
    }
    setProfile(rec, PosTriZeroPosTrap);
    return false;
}

// Trap pulse to vT - A^2/J, cruise, full positive Tri pulse up to vT.
bool node33(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = (k.vT - k.A * k.A / k.J - k.vA) / k.A - k.A / (2.0 * k.J);
    const double rest = k.T - (k.t1 + hold + 3.0 * k.tA);
    const bool reaches = k.pT >= endPos(k, {{k.t1, k.J},
                                            {hold, 0.0},
                                            {k.tA, -k.J},
                                            {rest, 0.0},
                                            {k.tA, k.J},
                                            {k.tA, -k.J}});
    setProfile(rec, reaches ? PosTrapZeroPosTri : PosTrapZeroPosTrap);
    return reaches;
}

// As node 26 without the fall-back: PosTrapZeroPosTri when it reaches.
bool node34(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    if (k.pT >= posTrapCruisePosTriEnd(k)) {
        setProfile(rec, PosTrapZeroPosTri);
        return true;
    }
    return false;
}

// Positive Tri pulse to vT - A^2/J, cruise, full positive Tri pulse up to vT.
bool node36(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s =
        guardedRoot((k.vT - k.A * k.A / k.J - k.v0) * k.J + k.a0 * k.a0 / 2.0);
    const double rest = k.T - ((2.0 * s - k.a0) / k.J + 2.0 * k.tA);
    if (k.pT >= endPos(k, {{(s - k.a0) / k.J, k.J},
                           {s / k.J, -k.J},
                           {rest, 0.0},
                           {k.tA, k.J},
                           {k.tA, -k.J}})) {
        return true;
    }
    setProfile(rec, PosTriZeroPosTrap);
    return false;
}

// Two equal Tri pulses sharing the velocity change already need T.
bool node37(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double x = ((k.vT - k.v0) * k.J + k.a0 * k.a0 / 2.0) / 2.0;
    if ((fourRoot(x) - k.a0) / k.J >= k.T) return true;
    setProfile(rec, PosTriZeroPosTri);
    return false;
}

// Two positive Tri pulses filling T: the peaks are the two roots of a
// quadratic. Each root is tried as the first peak; the one that puts the end
// position on the right side becomes the solver's seed.
bool node38(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double c = (k.J * k.T + k.a0) / 2.0;
    const double x = c * c - 2.0 * (c * c - k.a0 * k.a0 / 2.0 - (k.vT - k.v0) * k.J);
    const double s = guardedRoot(x);
    const double r1 = (c - s) / 2.0;
    const double r2 = (c + s) / 2.0;
    double P = 0.0;
    for (int attempt = 0; attempt < 2; ++attempt) {
        const double r = attempt == 0 ? r1 : r2;
        const double other = attempt == 0 ? r2 : r1;
        const double v1 = k.v0 + (2.0 * r * r - k.a0 * k.a0) / (2.0 * k.J);
        P = endPos(k, {{(r - k.a0) / k.J, k.J}, {r / k.J, -k.J}}) + (v1 + k.vT) * other / k.J;
        std::uint8_t mode = 0;
        if (k.pT >= P && r >= other) mode = kSeedRaisesLow;
        else if (k.pT < P && other >= r) mode = kSeedCapsHigh;
        if (mode != 0) {
            st.triTriSeedMode = mode;
            st.triTriSeed = r;
            setProfile(rec, PosTriZeroPosTri);
            return false;
        }
    }
    if (k.pT >= P) return true;
    setProfile(rec, PosTriZeroPosTri);
    return false;
}

// The velocity reached by holding a0 and ramping it to zero at the end of T
// still reaches vT (also node 94).
bool node41(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.v0 + k.a0 * (k.T - k.tZ) + k.a0 * k.a0 / (2.0 * k.J) >= k.vT;
}

// Lower the acceleration to the hold level al that reaches vT at T.
bool node42(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const HoldDown h = holdDownShape(k);
    if (k.pT >= h.P) {
        setProfile(rec, PosTriHldNegLin);
        st.hldLinLo = k.a0;
        return true;
    }
    setProfile(rec, NegLinHldPosTri);
    st.negLinAcc = h.al;
    return false;
}

// Raise the acceleration to the hold level ap that reaches vT at T; only the
// bound is left here, the id follows.
bool node43(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const HoldUp h = holdUpShape(k);
    if (k.pT >= h.P) {
        st.hldLinLo = h.ap;
        return true;
    }
    st.linHldHi = h.ap;
    return false;
}

// Ramp up to A, lower to the hold level al, hold, ramp to zero at vT.
bool node44(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = k.T - (2.0 * k.A - k.a0) / k.J;
    const double al = (k.vT - k.v0 - (2.0 * k.A * k.A - k.a0 * k.a0) / (2.0 * k.J)) / hold;
    if (k.pT >= endPos(k, {{k.t1, k.J},
                           {(k.A - al) / k.J, -k.J},
                           {hold, 0.0},
                           {al / k.J, -k.J}})) {
        setProfile(rec, PosTrapHldNegLin);
        st.hldLinHi = al;
        return true;
    }
    setProfile(rec, PosTriHldNegLin);
    st.hldLinHi = k.A;
    return false;
}

// NegLin + hold + PosTrap filling T: the hold level is the larger root of a
// quadratic. Without a real root a closed-form stand-in is reported and kept.
// The id-22 branch writes its peak to negLinAccSpare, which nothing reads:
// the id-22 solver then starts from whatever negLinAcc last held.
bool node46(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double w = k.J * k.T;
    const double d = (k.vT - k.v0) * k.J;
    const double b = 2.0 * k.A + k.a0 - w;
    const double c = k.a0 * k.a0 / 2.0 + k.A * k.A - d;
    const double x = b * b - 4.0 * c;
    if (x < 0.0) {
        printTo(&st.output, "D46-complex %f\n", x);
        const double half = (w - k.a0) / 2.0;
        const double ap = ((d - k.a0 * k.a0 / 2.0) / half - half) / 2.0;
        setProfile(rec, NegLinHldPosTri);
        st.negLinAccSpare = ap;
        return true;
    }
    const double ap = (b + guardedRoot(x)) / 2.0;
    const double P = endPos(k, {{(k.a0 - ap) / k.J, -k.J},
                                {k.T - (2.0 * k.A + k.a0 - 2.0 * ap) / k.J, 0.0},
                                {(k.A - ap) / k.J, k.J},
                                {k.tA, -k.J}});
    if (k.pT < P) {
        setProfile(rec, NegLinHldPosTrap);
        st.negLinAcc = ap;
        return false;
    }
    setProfile(rec, NegLinHldPosTri);
    st.negLinAccSpare = ap;
    return true;
}

// Holding a0, then a full positive pulse at the end of T, reaches vT.
bool node47(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.v0 + k.a0 * (k.T - (2.0 * k.A - k.a0) / k.J) +
               (2.0 * k.A * k.A - k.a0 * k.a0) / (2.0 * k.J) >=
           k.vT;
}

// Hold a0, then a Tri pulse up to vT at the end of T.
bool node48(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    if (k.pT >= holdThenTriEnd(k)) {
        setProfile(rec, PosLinHldPosTri);
        st.linHldLo = k.a0;
        return true;
    }
    return false;
}

// Hold a0 for h, then a Trap pulse up to vT, filling T.
bool node49(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    double h = 0.0;
    if (std::fabs(k.A - k.a0) > kDegenerateSpan) {
        h = (k.A * k.T + k.v0 - k.vT + (k.A * k.a0 - k.a0 * k.a0 / 2.0 - k.A * k.A) / k.J) /
            (k.A - k.a0);
    }
    if (k.pT >= endPos(k, {{h, 0.0},
                           {k.t1, k.J},
                           {k.T - h - (2.0 * k.A - k.a0) / k.J, 0.0},
                           {k.tA, -k.J}})) {
        return true;
    }
    setProfile(rec, NegLinHldPosTrap);
    st.negLinAcc = k.a0;
    return false;
}

// Raise to a hold level al, hold, then a Trap pulse up to vT at T.
bool node50(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double L = k.T - (2.0 * k.A - k.a0) / k.J;
    double al = k.a0;
    if (L > kDegenerateSpan) {
        al = (k.vT - k.v0 - (k.A * k.A - k.a0 * k.a0 / 2.0) / k.J) / L;
    }
    if (k.pT >= endPos(k, {{(al - k.a0) / k.J, k.J},
                           {L, 0.0},
                           {(k.A - al) / k.J, k.J},
                           {k.tA, -k.J}})) {
        setProfile(rec, PosLinHldPosTri);
        st.linHldLo = al;
        return true;
    }
    setProfile(rec, PosLinHldPosTrap);
    st.linHldHi = al;
    st.linHldLo = k.a0;
    return false;
}

// From here the velocity has to come down. vT is at or above the velocity of
// ramping a0 down to -A and back.
bool node51(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.vT >= k.v0 + (k.a0 * k.a0 / 2.0 - k.A * k.A) / k.J;
}

// Negative Trap pulse straight down to vT, then cruise: if it still passes
// the target, commit the ramp of a0 to zero.
bool node52(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = ((k.a0 * k.a0 / 2.0 - k.A * k.A) / k.J + k.v0 - k.vT) / k.A;
    const double rest = k.T - ((k.tZ + k.tA) + hold + k.tA);
    if (endPos(k, {{k.tZ + k.tA, -k.J}, {hold, 0.0}, {k.tA, k.J}, {rest, 0.0}}) >= k.pT) {
        appendAccToZero(rec);
        return true;
    }
    return false;
}

// Ramp a0 to zero, cruise at vZ, negative Trap pulse down to vT.
bool node53(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = ((k.a0 * k.a0 / 2.0 - k.A * k.A) / k.J + k.v0 - k.vT) / k.A;
    const double rest = k.T - (k.tZ + k.tA + hold + k.tA);
    if (endPos(k, {{k.tZ, -k.J}, {rest, 0.0}, {k.tA, -k.J}, {hold, 0.0}, {k.tA, k.J}}) >= k.pT) {
        appendAccToZero(rec);
        return true;
    }
    return false;
}

// The velocity drop needs more than two full negative pulses.
bool node54(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.v0 - 2.0 * k.A * k.A / k.J >= k.vT;
}

// Two negative Trap pulses already need T.
bool node55(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return 4.0 * k.A / k.J + (k.v0 - k.vT - 2.0 * k.A * k.A / k.J) / k.A >= k.T;
}

// Negative Trap pulse, then a negative Tri pulse of peak q, filling T.
bool node56(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double q = k.A - guardedRoot(negTrapTriRadicand(k));
    if (endPos(k, {{k.tA, -k.J},
                   {k.T - 2.0 * (q + k.A) / k.J, 0.0},
                   {k.tA, k.J},
                   {q / k.J, -k.J},
                   {q / k.J, k.J}}) >= k.pT) {
        setProfile(rec, NegTrapZeroNegTri);
        st.trapTriSeedSet = 1;
        st.trapTriSeed = q;
        return true;
    }
    return false;
}

// Negative Tri pulse from a0 straight down to vT, then cruise; commits the
// ramp of a0 to zero when it passes the target.
bool node57(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.v0 - k.vT) * k.J + k.a0 * k.a0 / 2.0);
    const double rest = k.T - (k.a0 + 2.0 * s) / k.J;
    if (endPos(k, {{(k.a0 + s) / k.J, -k.J}, {s / k.J, k.J}, {rest, 0.0}}) >= k.pT) {
        appendAccToZero(rec);
        return true;
    }
    st.hldLinHi = s;
    return false;
}

// Ramp a0 to zero, cruise at vZ, negative Tri pulse down to vT.
bool node58(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.v0 - k.vT) * k.J + k.a0 * k.a0 / 2.0);
    const double rest = k.T - (k.tZ + 2.0 * s / k.J);
    if (endPos(k, {{k.tZ, -k.J}, {rest, 0.0}, {s / k.J, -k.J}, {s / k.J, k.J}}) >= k.pT) {
        appendAccToZero(rec);
        return true;
    }
    return false;
}

// Negative Tri pulse of peak q, then a negative Trap pulse, filling T.
bool node59(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double q = k.A - guardedRoot(negTrapTriRadicand(k));
    if (endPos(k, {{q / k.J, -k.J},
                   {q / k.J, k.J},
                   {k.tA, -k.J},
                   {k.T - 2.0 * (q + k.A) / k.J, 0.0},
                   {k.tA, k.J}}) >= k.pT) {
        return true;
    }
    setProfile(rec, NegTriZeroNegTrap);
    st.triTrapSeedSet = 1;
    st.triTrapSeed = q;
    return false;
}

// Full negative Tri pulse, cruise, negative Trap pulse down to vT.
bool node60(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = (k.v0 - k.vT - 2.0 * k.A * k.A / k.J) / k.A;
    const double rest = k.T - (4.0 * k.tA + hold);
    if (endPos(k, {{k.tA, -k.J},
                   {k.tA, k.J},
                   {rest, 0.0},
                   {k.tA, -k.J},
                   {hold, 0.0},
                   {k.tA, k.J}}) >= k.pT) {
        return true;
    }
    setProfile(rec, NegTriZeroNegTrap);
    return false;
}

// Negative Trap pulse, cruise, full negative Tri pulse down to vT.
bool node61(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = (k.v0 - k.vT - 2.0 * k.A * k.A / k.J) / k.A;
    const double rest = k.T - (4.0 * k.tA + hold);
    const bool passes = endPos(k, {{k.tA, -k.J},
                                   {hold, 0.0},
                                   {k.tA, k.J},
                                   {rest, 0.0},
                                   {k.tA, -k.J},
                                   {k.tA, k.J}}) >= k.pT;
    setProfile(rec, passes ? NegTrapZeroNegTri : NegTrapZeroNegTrap);
    return passes;
}

// Two equal negative Tri pulses sharing the velocity drop already need T
// (also node 70).
bool node62(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    if (fourRoot((k.v0 - k.vT) * k.J / 2.0) / k.J >= k.T) return true;
    setProfile(rec, NegTriZeroNegTri);
    return false;
}

// Two negative Tri pulses filling T, from zero acceleration (also node 71):
// each root of the quadratic is tried as the first peak. When neither puts
// the end on the right side, no Tri-Tri shape fits (id 28) and the walk goes
// on to the hold shapes.
bool node63(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double c = k.J * k.T / 2.0;
    const double x = c * c - 2.0 * ((k.vT - k.v0) * k.J + c * c);
    const double s = guardedRoot(x);
    const double r1 = (s - c) / 2.0;
    const double r2 = -(s + c) / 2.0;
    for (int attempt = 0; attempt < 2; ++attempt) {
        const double r = attempt == 0 ? r1 : r2;
        const double other = attempt == 0 ? r2 : r1;
        const double v1 = k.v0 - r * r / k.J;
        const double P = k.p0 - (v1 + k.v0) * r / k.J - (v1 + k.vT) * other / k.J;
        std::uint8_t mode = 0;
        if (P >= k.pT && other > r) mode = kSeedRaisesLow;
        else if (P < k.pT && r >= other) mode = kSeedCapsHigh;
        if (mode != 0) {
            st.triTriSeedMode = mode;
            st.triTriSeed = -r;
            setProfile(rec, NegTriZeroNegTri);
            return false;
        }
    }
    setProfile(rec, NoStep2Profile);
    return true;
}

// A negative hold level r entered and left at full jerk, filling T
// (also node 72).
bool node64(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const NegHold h = negHoldShape(k);
    if (h.P >= k.pT) {
        setProfile(rec, NegTriHldPosLin);
        st.hldLinLo = -h.r;
        return true;
    }
    setProfile(rec, NegLinHldNegTri);
    st.linHldHi = -h.r;
    st.linHldLo = 0.0;
    return false;
}

// A full negative Tri pulse and the negative Tri pulse of the rest of the
// drop already need T (also node 65).
bool node67(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.v0 - k.vT) * k.J - k.A * k.A);
    return 2.0 * (k.A + s) / k.J >= k.T;
}

// Full negative Tri pulse, cruise, negative Tri pulse down to vT.
bool node66(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.v0 - k.vT) * k.J - k.A * k.A);
    const double rest = k.T - 2.0 * (k.A + s) / k.J;
    if (endPos(k, {{k.tA, -k.J},
                   {k.tA, k.J},
                   {rest, 0.0},
                   {s / k.J, -k.J},
                   {s / k.J, k.J}}) >= k.pT) {
        setProfile(rec, NegTrapZeroNegTri);
        return true;
    }
    return false;
}

// Negative Trap pulse, then a negative Tri pulse of peak q = s - A, filling T.
bool node68(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot(negTrapTriRadicand(k));
    const double q = s - k.A;
    if (endPos(k, {{k.tA, -k.J},
                   {k.T - 2.0 * s / k.J, 0.0},
                   {k.tA, k.J},
                   {q / k.J, -k.J},
                   {q / k.J, k.J}}) >= k.pT) {
        setProfile(rec, NegTrapZeroNegTri);
        return true;
    }
    return false;
}

// Negative Tri pulse, cruise, full negative Tri pulse down to vT.
bool node69(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double x = (k.v0 - k.vT) * k.J - k.A * k.A;
    const double s = guardedRoot(x);
    const double s2 = x > 0.0 ? s * s : kSquareRootGuard;
    Motion m = run(startOf(k), {{s / k.J, -k.J}, {s / k.J, k.J}});
    m.v = k.v0 - s2 / k.J;  // the velocity the first pulse ends at
    const double rest = k.T - 2.0 * (s + k.A) / k.J;
    m = run(m, {{rest, 0.0}, {k.tA, -k.J}, {k.tA, k.J}});
    if (m.p >= k.pT) return true;
    setProfile(rec, NegTriZeroNegTrap);
    return false;
}

// Negative Trap pulse, then a Lin ramp up to the hold level al, hold, ramp to
// zero; overwrites the id that node 72 set, keeps its hints.
bool node73(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double al = negTrapHoldLevel(k);
    if (endPos(k, {{k.tA, -k.J},
                   {(k.A + al) / k.J, k.J},
                   {k.T - 2.0 * k.A / k.J, 0.0},
                   {-al / k.J, k.J}}) >= k.pT) {
        setProfile(rec, NegTrapHldPosLin);
        st.hldLinHi = -al;
        return true;
    }
    setProfile(rec, NegTriHldPosLin);
    st.hldLinHi = k.A;
    return false;
}

// Ramp to the hold level al, hold, then the rest of a negative Trap pulse.
bool node74(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double al = negTrapHoldLevel(k);
    if (endPos(k, {{-al / k.J, -k.J},
                   {k.T - 2.0 * k.A / k.J, 0.0},
                   {(k.A + al) / k.J, -k.J},
                   {k.tA, k.J}}) >= k.pT) {
        setProfile(rec, NegLinHldNegTri);
        st.linHldLo = -al;
        return true;
    }
    setProfile(rec, NegLinHldNegTrap);
    st.linHldLo = 0.0;
    st.linHldHi = -al;
    return false;
}

// vT is at or above the velocity left after the acceleration swings from a0
// down to -a0 and back to zero.
bool node75(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    return k.vT >= k.v0 - k.a0 * k.a0 / (2.0 * k.J);
}

// A full negative Tri pulse and a positive Tri pulse back up to vT already
// need T.
bool node76(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.vT - k.v0) * k.J + k.A * k.A);
    if (2.0 * (k.A + s) / k.J >= k.T) {
        setProfile(rec, NegTriZeroPosTri);
        return true;
    }
    return false;
}

// Full negative Tri pulse, cruise, positive Tri pulse up to vT.
bool node77(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.vT - k.v0) * k.J + k.A * k.A);
    const double rest = k.T - 2.0 * (k.A + s) / k.J;
    if (endPos(k, {{k.tA, -k.J},
                   {k.tA, k.J},
                   {rest, 0.0},
                   {s / k.J, k.J},
                   {s / k.J, -k.J}}) >= k.pT) {
        return true;
    }
    setProfile(rec, NegTriZeroPosTri);
    return false;
}

// A positive Tri pulse and a full negative Tri pulse down to vT already
// need T.
bool node78(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double x = (k.vT - k.v0) * k.J + k.A * k.A + k.a0 * k.a0 / 2.0;
    if ((2.0 * k.A + twiceRoot(x) - k.a0) / k.J >= k.T) {
        setProfile(rec, PosTriZeroNegTri);
        return true;
    }
    return false;
}

// Positive Tri pulse, cruise, full negative Tri pulse down to vT.
bool node79(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double x = (k.vT - k.v0) * k.J + k.A * k.A + k.a0 * k.a0 / 2.0;
    const double s = guardedRoot(x);
    const double twoS2 = x > 0.0 ? 2.0 * s * s : kTwiceSquareGuard;
    Motion m = run(startOf(k), {{(s - k.a0) / k.J, k.J}, {s / k.J, -k.J}});
    m.v = k.v0 + (twoS2 - k.a0 * k.a0) / (2.0 * k.J);  // top of the pulse
    const double rest = k.T - ((2.0 * s - k.a0) / k.J + 2.0 * k.tA);
    m = run(m, {{rest, 0.0}, {k.tA, -k.J}, {k.tA, k.J}});
    if (k.pT >= m.p) return true;
    setProfile(rec, PosTriZeroNegTri);
    return false;
}

// A negative Trap pulse down to vT and a full positive Tri pulse already
// need T.
bool node80(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    if ((k.v0 - k.vT) / k.A + 4.0 * k.A / k.J >= k.T) {
        setProfile(rec, NegTrapZeroPosTri);
        return true;
    }
    return false;
}

// Negative Trap pulse to vT - A^2/J, cruise, full positive Tri pulse up to vT.
bool node81(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = (k.v0 - k.vT) / k.A;
    const double rest = k.T - (4.0 * k.tA + hold);
    const bool passes = endPos(k, {{k.tA, -k.J},
                                   {hold, 0.0},
                                   {k.tA, k.J},
                                   {rest, 0.0},
                                   {k.tA, k.J},
                                   {k.tA, -k.J}}) >= k.pT;
    setProfile(rec, passes ? NegTrapZeroPosTrap : NegTrapZeroPosTri);
    return passes;
}

// A full positive pulse and a negative Trap pulse down to vT already need T.
bool node82(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    if ((k.v0 - k.vT - k.a0 * k.a0 / (2.0 * k.J)) / k.A + (4.0 * k.A - k.a0) / k.J >= k.T) {
        setProfile(rec, PosTriZeroNegTrap);
        return true;
    }
    return false;
}

// Full positive pulse to vS, cruise, negative Trap pulse down to vT.
bool node83(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = (k.v0 - k.vT - k.a0 * k.a0 / (2.0 * k.J)) / k.A;
    const double rest = k.T - (k.t1 + k.tA + k.tA + hold + k.tA);
    const bool reaches = k.pT >= endPos(k, {{k.t1, k.J},
                                            {k.tA, -k.J},
                                            {rest, 0.0},
                                            {k.tA, -k.J},
                                            {hold, 0.0},
                                            {k.tA, k.J}});
    setProfile(rec, reaches ? PosTrapZeroNegTrap : PosTriZeroNegTrap);
    return reaches;
}

// A negative Tri pulse and a full positive Tri pulse up to vT already need T.
bool node84(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.v0 - k.vT) * k.J + k.A * k.A);
    if (2.0 * (k.A + s) / k.J >= k.T) {
        setProfile(rec, NegTriZeroPosTri);
        return true;
    }
    return false;
}

// Negative Tri pulse, cruise, full positive Tri pulse up to vT.
bool node85(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double x = (k.v0 - k.vT) * k.J + k.A * k.A;
    const double s = guardedRoot(x);
    const double s2 = x > 0.0 ? s * s : kSquareRootGuard;
    Motion m = run(startOf(k), {{s / k.J, -k.J}, {s / k.J, k.J}});
    m.v = k.v0 - s2 / k.J;  // the bottom of the negative pulse
    const double rest = k.T - 2.0 * (s + k.A) / k.J;
    m = run(m, {{rest, 0.0}, {k.tA, k.J}, {k.tA, -k.J}});
    if (m.p >= k.pT) return true;
    setProfile(rec, NegTriZeroPosTri);
    return false;
}

// A full negative Tri pulse and a Trap pulse up to vT already need T.
bool node86(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    if ((k.vT - k.v0) / k.A + 4.0 * k.A / k.J >= k.T) {
        setProfile(rec, NegTriZeroPosTrap);
        return true;
    }
    return false;
}

// Full negative Tri pulse, cruise, Trap pulse up to vT.
bool node87(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double hold = (k.vT - k.v0) / k.A;
    const double rest = k.T - (4.0 * k.tA + hold);
    const bool passes = endPos(k, {{k.tA, -k.J},
                                   {k.tA, k.J},
                                   {rest, 0.0},
                                   {k.tA, k.J},
                                   {hold, 0.0},
                                   {k.tA, -k.J}}) >= k.pT;
    setProfile(rec, passes ? NegTrapZeroPosTrap : NegTriZeroPosTrap);
    return passes;
}

// The Tri pulse from a0 up to vT already needs T; its peak is kept.
bool node88(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double x = (k.vT - k.v0) * k.J - k.a0 * k.a0 / 2.0;
    st.triPeakAcc = guardedRoot(x);
    return (k.a0 + twiceRoot(x)) / k.J >= k.T;
}

// Two positive Tri pulses filling T, the first peaking at the larger root:
// does it pass the target (strictly)? If not, the larger root is the lower
// bound of the PosTriZeroPosTri solver.
bool node89(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double c = (k.J * k.T + k.a0) / 2.0;
    const double x = c * c - 2.0 * (c * c - k.a0 * k.a0 / 2.0 - (k.vT - k.v0) * k.J);
    const double s = guardedRoot(x);
    const double ap = (c + s) / 2.0;
    const double v1 = k.v0 + (2.0 * ap * ap - k.a0 * k.a0) / (2.0 * k.J);
    const double rise = endPos(k, {{(ap - k.a0) / k.J, k.J}});
    const double P = rise - k.J * cube(ap / k.J) / 6.0 + (ap / k.J) * v1 +
                     (c - s) * (k.vT + v1) / (2.0 * k.J);
    if (P > k.pT) return true;
    setProfile(rec, PosTriZeroPosTri);
    st.triTriSeedMode = kSeedRaisesLow;
    st.triTriSeed = ap;
    return false;
}

// Ramp a0 to zero, cruise at vZ, Tri pulse up to vT; commits the ramp when
// the target lies behind.
bool node90(PlannerState&, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const double s = guardedRoot((k.vT - k.v0) * k.J - k.a0 * k.a0 / 2.0);
    const double rest = k.T - (k.tZ + 2.0 * s / k.J);
    if (k.pT >= endPos(k, {{k.tZ, -k.J}, {rest, 0.0}, {s / k.J, k.J}, {s / k.J, -k.J}})) {
        return true;
    }
    appendAccToZero(rec);
    return false;
}

// The present acceleration already reaches the Tri peak of node 88.
bool node91(PlannerState& st, AxisPlan& rec) {
    if (rec.curAcc >= st.triPeakAcc) {
        setProfile(rec, PosTriZeroPosTri);
        return true;
    }
    return false;
}

// As node 43, deciding the id as well.
bool node95(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const HoldUp h = holdUpShape(k);
    if (k.pT >= h.P) {
        setProfile(rec, PosTriHldNegLin);
        st.hldLinLo = h.ap;
        return true;
    }
    st.linHldHi = h.ap;
    return false;
}

// As node 48, with the NegLin shape on the other side.
bool node97(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    if (k.pT >= holdThenTriEnd(k)) {
        setProfile(rec, PosLinHldPosTri);
        st.linHldLo = k.a0;
        return true;
    }
    setProfile(rec, NegLinHldPosTri);
    st.negLinAcc = k.a0;
    return false;
}

}  // namespace

// Node n at row n: its test, then the node after a true and after a false
// result (0 stops the walk). A node that repeats another one shares its test.
static const TreeRow kStep2Rows[kStep2NodeCount] = {
    {alwaysTrue, 0, 0},       // 0
    kNoRow,                   // 1 prologue, the tree engine's row
    kNoRow,                   // 2 prologue, the tree engine's row
    kNoRow,                   // 3 prologue, the tree engine's row
    kNoRow,                   // 4 prologue, the tree engine's row
    {node5, 6, 7},            // 5
    kNoRow,                   // 6 prologue, the tree engine's row
    kNoRow,                   // 7 prologue, the tree engine's row
    kNoRow,                   // 8 prologue, the tree engine's row
    {node9, 10, 51},          // 9
    {node10, 11, 12},         // 10
    {node11, 13, 14},         // 11
    {node12, 16, 88},         // 12
    {node13, 0, 15},          // 13
    {node14, 18, 19},         // 14
    {node15, 0, 0},           // 15
    {node16, 0, 17},          // 16
    {node17, 13, 0},          // 17
    {node18, 40, 20},         // 18
    {node19, 25, 21},         // 19
    {node20, 27, 86},         // 20
    {node21, 23, 84},         // 21
    {alwaysTrue, 0, 0},       // 22
    {node34, 0, 24},          // 23
    {node24, 0, 38},          // 24
    {node29, 40, 26},         // 25
    {node26, 0, 41},          // 26
    {node27, 28, 29},         // 27
    {node28, 30, 32},         // 28
    {node29, 40, 34},         // 29
    {node30, 0, 31},          // 30
    {node31, 41, 0},          // 31
    {node32, 33, 0},          // 32
    {node33, 0, 0},           // 33
    {node34, 0, 36},          // 34
    {alwaysTrue, 0, 0},       // 35
    {node36, 37, 0},          // 36
    {node37, 38, 0},          // 37
    {node38, 41, 0},          // 38
    {alwaysTrue, 0, 0},       // 39
    {node30, 0, 41},          // 40
    {node41, 42, 43},         // 41
    {node42, 44, 46},         // 42
    {node43, 44, 47},         // 43
    {node44, 0, 0},           // 44
    {alwaysTrue, 0, 0},       // 45
    {node46, 0, 0},           // 46
    {node47, 48, 49},         // 47
    {node48, 0, 46},          // 48
    {node49, 50, 0},          // 49
    {node50, 0, 0},           // 50
    {node51, 57, 52},         // 51
    {node52, 80, 53},         // 52
    {node53, 54, 82},         // 53
    {node54, 55, 65},         // 54
    {node55, 56, 60},         // 55
    {node56, 0, 59},          // 56
    {node57, 76, 58},         // 57
    {node58, 62, 75},         // 58
    {node59, 72, 0},          // 59
    {node60, 61, 0},          // 60
    {node61, 0, 0},           // 61
    {node62, 63, 0},          // 62
    {node63, 64, 0},          // 63
    {node64, 0, 0},           // 64
    {node67, 67, 66},         // 65
    {node66, 0, 67},          // 66
    {node67, 68, 69},         // 67
    {node68, 0, 72},          // 68
    {node69, 70, 0},          // 69
    {node62, 71, 0},          // 70
    {node63, 72, 0},          // 71
    {node64, 73, 74},         // 72
    {node73, 0, 0},           // 73
    {node74, 0, 0},           // 74
    {node75, 16, 78},         // 75
    {node76, 0, 77},          // 76
    {node77, 80, 0},          // 77
    {node78, 0, 79},          // 78
    {node79, 82, 0},          // 79
    {node80, 0, 81},          // 80
    {node81, 0, 0},           // 81
    {node82, 0, 83},          // 82
    {node83, 0, 0},           // 83
    {node84, 0, 85},          // 84
    {node85, 86, 0},          // 85
    {node86, 0, 87},          // 86
    {node87, 0, 0},           // 87
    {node88, 89, 90},         // 88
    {node89, 94, 0},          // 89
    {node90, 91, 84},         // 90
    {node91, 0, 92},          // 91
    {node37, 93, 0},          // 92
    {node38, 94, 0},          // 93
    {node41, 96, 95},         // 94
    {node95, 0, 97},          // 95
    {node42, 0, 0},           // 96
    {node97, 0, 0},           // 97
};

const DecisionTree Step2Tree = {kStep2Rows, kStep2NodeCount};

const char* const step2ProfileNames[kStep2ProfileCount] = {
    "Step2_PosTrapZeroNegTri",  "Step2_NegTrapZeroPosTri",  "Step2_PosTriZeroNegTri",
    "Step2_NegTriZeroPosTri",   "Step2_PosTrapZeroNegTrap", "Step2_NegTrapZeroPosTrap",
    "Step2_PosTriZeroNegTrap",  "Step2_NegTriZeroPosTrap",  "Step2_PosTrapZeroPosTri",
    "Step2_NegTrapZeroNegTri",  "Step2_PosTriZeroPosTri",   "Step2_NegTriZeroNegTri",
    "Step2_PosTriZeroPosTrap",  "Step2_NegTriZeroNegTrap",  "Step2_PosTrapZeroPosTrap",
    "Step2_NegTrapZeroNegTrap", "Step2_PosTrapHldNegLin",   "Step2_NegTrapHldPosLin",
    "Step2_PosTriHldNegLin",    "Step2_NegTriHldPosLin",    "Step2_NegLinHldPosTrap",
    "Step2_PosLinHldNegTrap",   "Step2_NegLinHldPosTri",    "Step2_PosLinHldNegTri",
    "Step2_PosLinHldPosTri",    "Step2_NegLinHldNegTri",    "Step2_PosLinHldPosTrap",
    "Step2_NegLinHldNegTrap",
};

}  // namespace VEKTA_COPY
}  // namespace vekta
