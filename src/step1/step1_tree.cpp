// The step-1 decision tree: which minimum-time shape fits an axis state.
//
// The fastest jerk-limited motion to a target at rest is a positive and a
// negative acceleration pulse (each a triangle below A or a trapezoid holding
// A), possibly with a cruise at V between them, or - when the present
// acceleration already carries the axis past the target - a linear release
// of that acceleration followed by a closing pulse. The tree decides among
// them by velocity tests (which pulse a velocity change needs) and position
// tests: it builds the end position X of a short chain of limiting pulses
// from the present state and compares it with the target. A target beyond
// the chain's end needs a bigger shape, one before it a smaller one.
//
// Nodes 1-8 prepare the state first: a non-negative acceleration (mirroring,
// inv = -1), an acceleration not above A, and a velocity not beyond -V after
// the over-speed pulse of node 5. The tree engine holds that prologue for
// both trees; node 5 alone is this tree's own. Node 9 takes the snapshot from
// which the step-1 solver and a later synchronised re-plan both start. Some
// position nodes release the acceleration (appendAccToZero) on their false
// branch, so that the nodes after them look at a state with zero
// acceleration.
#include "step1/step1_tree.h"

#include <cstdio>

#include "numeric/axis_curve.h"
#include "numeric/vel_shapes.h"
#include "numeric/numerics.h"
#include "output/text_output.h"
#include "step1/step1_solvers.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// The odd id: the same shape starting with a negative pulse.
constexpr int mirrored(Step1Shape shape) { return shape + 1; }

// The dead nodes 51 and 53 test the rising triangle with a jerk this much larger.
constexpr double kDeadNodeJerkScale = 1.1;

// ---------------------------------------------------------------------------
// Motion pieces. A chain starts at the present state and each piece starts
// where the previous one ended; X is the position of the chain's end. The
// sections are integrated exactly; a trapezoid's hold enters through its
// length and its start velocity even where that length is negative.
// ---------------------------------------------------------------------------

// The end of a chain so far, with the axis's limits.
struct Reach {
    double p, v, a;
    double A, J;
    CubeMemo memo;
};

// The present working state of rec.
Reach reachFrom(const AxisPlan& rec) {
    return {rec.curPos, rec.curVel, rec.curAcc, rec.maxAcc, rec.maxJerk, CubeMemo{}};
}

// One section of constant jerk and duration d, ending at acceleration aEnd.
[[gnu::always_inline]] inline void section(Reach& r, double jerk, double d, double aEnd) {
    r.p = r.p + r.v * d + r.a * d * d / 2.0 + jerkShare(jerk, d, r.memo);
    r.v = r.v + r.a * d + jerk * d * d / 2.0;
    r.a = aEnd;
}

// Z: release the acceleration to 0 at -J (the velocity becomes vz).
[[gnu::always_inline]] inline void Z(Reach& r) { section(r, -r.J, r.a / r.J, 0.0); }

// PosTri(u -> w): from the present acceleration b up to the peak
// root(b^2/2 + J (w - u)) and back to 0.
[[gnu::always_inline]] inline void posTri(Reach& r, double w) {
    const double b = r.a;
    const double ap = guardedRoot(b * b / 2.0 + r.J * (w - r.v));
    section(r, r.J, (ap - b) / r.J, ap);
    section(r, -r.J, ap / r.J, 0.0);
}

// PosTri peak A: up to exactly A and back to 0, no hold.
[[gnu::always_inline]] inline void posTriPeakA(Reach& r) {
    section(r, r.J, (r.A - r.a) / r.J, r.A);
    section(r, -r.J, r.A / r.J, 0.0);
}

// PosTrap(u -> w): up to A, hold A as long as the velocity change needs, back to 0.
[[gnu::always_inline]] inline void posTrap(Reach& r, double w) {
    const double b = r.a;
    const double A = r.A, J = r.J;
    const double hold = (w - r.v - (2.0 * A * A - b * b) / (2.0 * J)) / A;
    section(r, J, (A - b) / J, A);
    section(r, 0.0, hold, A);
    // Its end acceleration is never read: a trapezoid ends every chain, or a
    // falling pulse follows, which starts from zero itself.
    section(r, -J, A / J, 0.0);
}

// The falling pulses start from zero acceleration: the tree chains them only
// where the acceleration has already been released.

// NegTri(u -> w): 0 -> -root(J (u - w)) -> 0.
[[gnu::always_inline]] inline void negTri(Reach& r, double w) {
    const double an = guardedRoot(r.J * (r.v - w));
    r.a = 0.0;
    section(r, -r.J, an / r.J, -an);
    section(r, r.J, an / r.J, 0.0);
}

// NegTri peak -A: 0 -> -A -> 0, the velocity falls by A^2/J.
[[gnu::always_inline]] inline void negTriPeakA(Reach& r) {
    r.a = 0.0;
    section(r, -r.J, r.A / r.J, -r.A);
    section(r, r.J, r.A / r.J, 0.0);
}

// NegTrap(u -> w): 0 -> -A, hold -A as long as needed, -A -> 0.
[[gnu::always_inline]] inline void negTrap(Reach& r, double w) {
    const double A = r.A, J = r.J;
    const double hold = (r.v - w - A * A / J) / A;
    r.a = 0.0;
    section(r, -J, A / J, -A);
    section(r, 0.0, hold, -A);
    section(r, J, A / J, 0.0);
}

// ---------------------------------------------------------------------------
// Nodes. p, pt, v, vt, a, V, A, J are the working-frame state and limits.
// ---------------------------------------------------------------------------

bool node0(PlannerState&, AxisPlan&) { return true; }

// Whether node 5's triangle pulse would peak below the present acceleration:
// when releasing a alone already lifts the velocity past -V
// (v + a^2/(2J) > -V), the peak ap = root(a^2/2 + (-V - v) J) that
// velTriPulse computes lies below a, and the pulse's first ramp, a -> ap at
// +J, would last a negative time.
bool pulseRunsBackwards(const AxisPlan& r) {
    const double V = r.maxVel, A = r.maxAcc, J = r.maxJerk;
    const double v = r.curVel, a = r.curAcc;
    // With a <= A (node 2 has clipped it) the peak test below fails wherever
    // this one does, even on its boundary, so neither the exact factor of a^2
    // here nor > against >= shows in any plan.
    const bool triangle = (A * A - a * a / 2.0) / J + v > -V;
    return triangle && guardedRoot(a * a / 2.0 + (-V - v) * J) < a;
}

// Node 5: the over-speed pulse. In recovery mode, where that pulse would run
// backwards in time, the axis only releases its acceleration: the release
// ends inside the limit (and not above +V, which node 3 has seen to), with
// zero acceleration, from where the tree plans as from any such state.
bool node5(PlannerState& st, AxisPlan& r) {
    if (st.recovery && pulseRunsBackwards(r)) {
        appendAccToZero(r);
        return true;
    }
    return overspeedPulse(st, r);
}

// Velocity after a full pulse a -> A -> 0: v + (2A^2 - a^2)/(2J).
double fullPulseVel(const AxisPlan& r) {
    return r.curVel + (2.0 * r.maxAcc * r.maxAcc - r.curAcc * r.curAcc) / (2.0 * r.maxJerk);
}

// Velocity once the acceleration is released: v + a^2/(2J).
double releasedVel(const AxisPlan& r) { return r.curVel + r.curAcc * r.curAcc / (2.0 * r.maxJerk); }

// A^2/J: the velocity change of a triangle pulse that just reaches A.
double peakAPulseVel(const AxisPlan& r) { return r.maxAcc * r.maxAcc / r.maxJerk; }

// Node 9, "Variant B": snapshot of the prepared state; vt >= v + a^2/(2J).
bool node9(PlannerState&, AxisPlan& r) {
    takeSnapshot(r);
    // Cannot happen after node 1's mirror; a diagnostic only.
    if (r.curAcc < 0.0) printTo(r.sink, "Variant B error\n");
    return r.tgtVel >= releasedVel(r);
}

// Node 10 (also 30, 37, 49 as V): vt >= v + (2A^2 - a^2)/(2J).
bool node10(PlannerState&, AxisPlan& r) { return r.tgtVel >= fullPulseVel(r); }

// pt >= X[PosTrap(v -> vt)]
bool node11(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    posTrap(x, r.tgtVel);
    return r.tgtPos >= x.p;
}

// Node 12 (also 40): vt >= V - A^2/J.
bool node12(PlannerState&, AxisPlan& r) { return r.tgtVel >= r.maxVel - peakAPulseVel(r); }

// pt >= X[PosTrap(v -> V), NegTri(V -> vt)]: 2, else 10.
bool node13(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    posTrap(x, r.maxVel);
    negTri(x, r.tgtVel);
    const bool beyond = r.tgtPos >= x.p;
    r.step1Profile = beyond ? kStep1PTZNt : kStep1PTNt;
    return beyond;
}

// pt >= X[PosTrap(v -> vt + A^2/J), NegTri peak -A]; 10 when false.
bool node14(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    posTrap(x, r.tgtVel + peakAPulseVel(r));
    negTriPeakA(x);
    if (r.tgtPos >= x.p) return true;
    r.step1Profile = kStep1PTNt;
    return false;
}

// pt >= X[PosTrap(v -> V), NegTrap(V -> vt)]: 6, else 12.
bool node15(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    posTrap(x, r.maxVel);
    negTrap(x, r.tgtVel);
    const bool beyond = r.tgtPos >= x.p;
    r.step1Profile = beyond ? kStep1PTZNT : kStep1PTNT;
    return beyond;
}

// vt >= v + (A^2 + a^2/2)/J
bool node16(PlannerState&, AxisPlan& r) {
    const double A = r.maxAcc, a = r.curAcc;
    return r.tgtVel >= r.curVel + (A * A + a * a / 2.0) / r.maxJerk;
}

// pt >= X[Z, PosTrap(vz -> vt)]: 20; when false release the acceleration.
bool node17(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    Z(x);
    posTrap(x, r.tgtVel);
    if (r.tgtPos >= x.p) {
        r.step1Profile = kStep1PLNT;
        return true;
    }
    appendAccToZero(r);
    return false;
}

// Node 18 (also 43): v - A^2/J >= -V.
bool node18(PlannerState&, AxisPlan& r) { return r.curVel - peakAPulseVel(r) >= -r.maxVel; }

// X[NegTri peak -A (v -> v - A^2/J), PosTrap(v - A^2/J -> vt)] >= pt; 15 when false.
bool node19(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    negTriPeakA(x);
    posTrap(x, r.tgtVel);
    if (x.p >= r.tgtPos) return true;
    r.step1Profile = mirrored(kStep1PtNT);
    return false;
}

// X[NegTrap(v -> -V), PosTrap(-V -> vt)] >= pt: 7, else 13.
bool node20(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    negTrap(x, -r.maxVel);
    posTrap(x, r.tgtVel);
    const bool beyond = x.p >= r.tgtPos;
    r.step1Profile = beyond ? mirrored(kStep1PTZNT) : mirrored(kStep1PTNT);
    return beyond;
}

// pt >= X[PosTri peak A (v -> v1), NegTri(v1 -> vt)]; 16 when false.
bool node21(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    posTriPeakA(x);
    negTri(x, r.tgtVel);
    if (r.tgtPos >= x.p) return true;
    r.step1Profile = kStep1PtNt;
    return false;
}

// pt >= X[Z, PosTri(vz -> vt)]; when false release the acceleration.
bool node22(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    Z(x);
    posTri(x, r.tgtVel);
    if (r.tgtPos >= x.p) return true;
    appendAccToZero(r);
    return false;
}

// Trial: whether the release-then-triangle (18) or release-then-trapezoid
// (20) solver finds a motion, each run on a scratch copy of the record so
// that the real curve stays untouched.
bool node23(PlannerState&, AxisPlan& r) {
    AxisPlan scratch = r;
    bool ok = solveStep1PLNt(scratch);
    r.coefDirty = true;
    if (ok) {
        r.step1Profile = kStep1PLNt;
        return true;
    }
    scratch = r;
    ok = solveStep1PLNT(scratch);
    r.coefDirty = true;
    if (ok) r.step1Profile = kStep1PLNT;
    return ok;
}

// v - A^2/J > -V (strict)
bool node24(PlannerState&, AxisPlan& r) { return r.curVel - peakAPulseVel(r) > -r.maxVel; }

// Node 25 (also 28, 44): X[NegTri(v -> vt - A^2/J), PosTri peak A (-> vt)] >= pt;
// 17 when false.
bool node25(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    negTri(x, r.tgtVel - peakAPulseVel(r));
    posTriPeakA(x);
    if (x.p >= r.tgtPos) return true;
    r.step1Profile = mirrored(kStep1PtNt);
    return false;
}

// Node 44: the test of node 25 (17 when false), here after node 35 released
// the acceleration and node 43. The chain's first pulse takes the velocity
// from v down to vt - A^2/J; where that is more than A^2/J no triangle below
// A does it, the shape must start with a negative trapezoid and the id-17
// solver finds nothing. On recovery's second attempt, which only follows a
// failed solve, the walk goes on to node 45 as if the test held: nodes 45,
// 46, 47 and 20 choose among the shapes that start with that trapezoid.
bool node44(PlannerState& st, AxisPlan& r) { return node25(st, r) || st.step1Retry; }

// Node 26 (also 45): A^2/J - V >= vt.
bool node26(PlannerState&, AxisPlan& r) { return peakAPulseVel(r) - r.maxVel >= r.tgtVel; }

// X[NegTri(v -> -V), PosTri(-V -> vt)] >= pt: 5, else 17.
bool node27(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    negTri(x, -r.maxVel);
    posTri(x, r.tgtVel);
    const bool beyond = x.p >= r.tgtPos;
    r.step1Profile = beyond ? mirrored(kStep1PtZNt) : mirrored(kStep1PtNt);
    return beyond;
}

// pt >= X[PosTri(v -> vt)]
bool node29(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    posTri(x, r.tgtVel);
    return r.tgtPos >= x.p;
}

// Node 30 (also 37, 49): V >= v + (2A^2 - a^2)/(2J).
bool node30(PlannerState&, AxisPlan& r) { return r.maxVel >= fullPulseVel(r); }

// X[NegTri(v -> -V), PosTrap(-V -> vt)] >= pt: 9, else 15.
bool node31(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    negTri(x, -r.maxVel);
    posTrap(x, r.tgtVel);
    const bool beyond = x.p >= r.tgtPos;
    r.step1Profile = beyond ? mirrored(kStep1PtZNT) : mirrored(kStep1PtNT);
    return beyond;
}

// pt >= X[PosTri(v -> V), NegTri(V -> vt)]: 4, else 16.
bool node32(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    posTri(x, r.maxVel);
    negTri(x, r.tgtVel);
    const bool beyond = r.tgtPos >= x.p;
    r.step1Profile = beyond ? kStep1PtZNt : kStep1PtNt;
    return beyond;
}

// pt >= X[Z, PosTri(vz -> vt)]: 18; when false release the acceleration.
bool node33(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    Z(x);
    posTri(x, r.tgtVel);
    if (r.tgtPos >= x.p) {
        r.step1Profile = kStep1PLNt;
        return true;
    }
    appendAccToZero(r);
    return false;
}

// vt >= v + (a^2/2 - A^2)/J
bool node34(PlannerState&, AxisPlan& r) {
    const double A = r.maxAcc, a = r.curAcc;
    return r.tgtVel >= r.curVel + (a * a / 2.0 - A * A) / r.maxJerk;
}

// pt >= X[Z, NegTri(vz -> vt)]; when false release the acceleration.
bool node35(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    Z(x);
    negTri(x, r.tgtVel);
    if (r.tgtPos >= x.p) return true;
    appendAccToZero(r);
    return false;
}

// vt >= v - a^2/(2J)
bool node36(PlannerState&, AxisPlan& r) {
    return r.tgtVel >= r.curVel - r.curAcc * r.curAcc / (2.0 * r.maxJerk);
}

// Node 38 (also 41): pt >= X[PosTri(v -> vt + A^2/J), NegTri peak -A]; 16 when false.
bool node38(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    posTri(x, r.tgtVel + peakAPulseVel(r));
    negTriPeakA(x);
    if (r.tgtPos >= x.p) return true;
    r.step1Profile = kStep1PtNt;
    return false;
}

// pt >= X[PosTri peak A (v -> v1), NegTrap(v1 -> vt)]; 14 when false.
bool node39(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    posTriPeakA(x);
    negTrap(x, r.tgtVel);
    if (r.tgtPos >= x.p) return true;
    r.step1Profile = kStep1PtNT;
    return false;
}

// pt >= X[PosTri(v -> V), NegTrap(V -> vt)]: 8, else 14.
bool node42(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    posTri(x, r.maxVel);
    negTrap(x, r.tgtVel);
    const bool beyond = r.tgtPos >= x.p;
    r.step1Profile = beyond ? kStep1PtZNT : kStep1PtNT;
    return beyond;
}

// X[NegTrap(v -> -V), PosTri(-V -> vt)] >= pt: 3, else 11.
bool node46(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    negTrap(x, -r.maxVel);
    posTri(x, r.tgtVel);
    const bool beyond = x.p >= r.tgtPos;
    r.step1Profile = beyond ? mirrored(kStep1PTZNt) : mirrored(kStep1PTNt);
    return beyond;
}

// X[NegTrap(v -> vt - A^2/J), PosTri peak A (-> vt)] >= pt, the hold being
// (v - vt)/A; 11 when false.
bool node47(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    negTrap(x, r.tgtVel - peakAPulseVel(r));
    posTriPeakA(x);
    if (x.p >= r.tgtPos) return true;
    r.step1Profile = mirrored(kStep1PTNt);
    return false;
}

// pt >= X[Z, NegTrap(vz -> vt)]; when false release the acceleration.
bool node48(PlannerState&, AxisPlan& r) {
    Reach x = reachFrom(r);
    Z(x);
    negTrap(x, r.tgtVel);
    if (r.tgtPos >= x.p) return true;
    appendAccToZero(r);
    return false;
}

// Nodes 50-53 are not reachable from node 1; they are kept as they were.

// v <= 0 and vt <= 0
bool node50(PlannerState&, AxisPlan& r) { return r.curVel <= 0.0 && r.tgtVel <= 0.0; }

// X' = X[PosTri(v -> vt)] with the jerk 1.1 J, and that triangle's peak.
double stiffTriangleEnd(const AxisPlan& r) {
    Reach x = reachFrom(r);
    x.J = kDeadNodeJerkScale * r.maxJerk;
    posTri(x, r.tgtVel);
    return x.p;
}

double stiffTrianglePeak(const AxisPlan& r) {
    const double a = r.curAcc;
    return guardedRoot(((r.tgtVel - r.curVel) * 2.0 * kDeadNodeJerkScale * r.maxJerk + a * a) / 2.0);
}

// pt >= X' or A >= ap'; otherwise 1 and false.
bool node51(PlannerState&, AxisPlan& r) {
    if (r.tgtPos >= stiffTriangleEnd(r) || r.maxAcc >= stiffTrianglePeak(r)) return true;
    r.step1Profile = kStep1Unreachable;
    return false;
}

// v < 0 or vt < 0
bool node52(PlannerState&, AxisPlan& r) { return r.curVel < 0.0 || r.tgtVel < 0.0; }

// pt >= X' and A > ap': 1 and true; otherwise false.
bool node53(PlannerState&, AxisPlan& r) {
    if (r.tgtPos >= stiffTriangleEnd(r) && r.maxAcc > stiffTrianglePeak(r)) {
        r.step1Profile = kStep1Unreachable;
        return true;
    }
    return false;
}

// Node n at row n: its test, then the node after a true and after a false
// result (0 stops the walk). A node that repeats another one shares its test.
const TreeRow kStep1Rows[kStep1TreeNodeCount] = {
    {node0, 0, 0},            // 0  filler
    kNoRow,                   // 1 prologue, the tree engine's row
    kNoRow,                   // 2 prologue, the tree engine's row
    kNoRow,                   // 3 prologue, the tree engine's row
    kNoRow,                   // 4 prologue, the tree engine's row
    {node5, 6, 7},            // 5
    kNoRow,                   // 6 prologue, the tree engine's row
    kNoRow,                   // 7 prologue, the tree engine's row
    kNoRow,                   // 8 prologue, the tree engine's row
    {node9, 10, 34},          // 9
    {node10, 11, 29},         // 10
    {node11, 12, 16},         // 11
    {node12, 13, 14},         // 12
    {node13, 0, 0},           // 13
    {node14, 15, 0},          // 14
    {node15, 0, 0},           // 15
    {node16, 17, 22},         // 16
    {node17, 0, 18},          // 17
    {node18, 19, 31},         // 18
    {node19, 20, 0},          // 19
    {node20, 0, 0},           // 20
    {node21, 12, 0},          // 21
    {node22, 23, 24},         // 22
    {node23, 0, 0},           // 23
    {node24, 25, 26},         // 24
    {node25, 19, 0},          // 25
    {node26, 27, 28},         // 26
    {node27, 0, 0},           // 27
    {node25, 31, 0},          // 28 the test of node 25
    {node29, 30, 33},         // 29
    {node30, 21, 32},         // 30
    {node31, 0, 0},           // 31
    {node32, 0, 0},           // 32
    {node33, 0, 24},          // 33
    {node34, 35, 48},         // 34
    {node35, 36, 43},         // 35
    {node36, 30, 37},         // 36
    {node30, 38, 40},         // 37 the test of node 30
    {node38, 39, 0},          // 38
    {node39, 15, 0},          // 39
    {node12, 32, 41},         // 40 the test of node 12
    {node38, 42, 0},          // 41 the test of node 38
    {node42, 0, 0},           // 42
    {node18, 44, 27},         // 43 the test of node 18
    {node44, 45, 0},          // 44 the test of node 25
    {node26, 46, 47},         // 45 the test of node 26
    {node46, 0, 0},           // 46
    {node47, 20, 0},          // 47
    {node48, 49, 45},         // 48
    {node30, 39, 42},         // 49 the test of node 30
    {node50, 51, 30},         // 50
    {node51, 30, 0},          // 51
    {node52, 33, 53},         // 52
    {node53, 0, 33},          // 53
};

}  // namespace

// The pulse to -V is the minimum-time velocity change: a triangle when its
// peak stays below A, else a trapezoid. The shapes count all their points but
// the last; this node counts that one and continues from it.
bool overspeedPulse(PlannerState&, AxisPlan& rec) {
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk;
    const double a = rec.curAcc;
    rec.tgtVel = -V;
    if ((A * A - a * a / 2.0) / J + rec.curVel > rec.tgtVel) {
        velTriPulse(rec);
    } else {
        velTrapPulse(rec);
    }
    const int last = rec.pointCount;
    rec.pointCount += 1;
    rec.planTime = rec.secTime[last];
    rec.tgtVel = 0.0;
    rec.curAcc = 0.0;
    rec.curVel = -V;
    rec.curPos = rec.inv * rec.secPos[last];
    return true;
}

const DecisionTree Step1Tree = {kStep1Rows, kStep1TreeNodeCount};

}  // namespace VEKTA_COPY
}  // namespace vekta
