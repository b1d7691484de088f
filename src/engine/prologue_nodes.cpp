// The normalisation prologue of both decision trees (nodes 1-4 and 6-8).
//
// Before a tree classifies an axis, the axis is brought into a canonical
// working frame: the acceleration is made non-negative by mirroring (node 1),
// an acceleration above the limit is ramped back to it (node 2), and a start
// whose velocity, once the acceleration is released, would exceed the limit
// is released and mirrored so that the excess shows as v < -V (node 3, node 4).
// Nodes 6-8 then lift such an axis back to the velocity -V with a positive
// acceleration left over, in one, two or three constant-jerk sections.
//
// Every section appended here is integrated exactly from the working state;
// its end becomes the new working state and a new curve point (stored in the
// caller's frame, i.e. times inv), planTime grows and remTime shrinks by its
// duration.
#include "engine/prologue_nodes.h"

#include "numeric/axis_curve.h"
#include "numeric/numerics.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// Guards of w = 2 root(V J) and of its square, for a non-positive V J.
constexpr double kDoubledRootGuard = 2e-50;
constexpr double kDoubledRootGuardSquared = 4e-100;

// Append one section of constant jerk and duration d from the working state,
// ending at acceleration aEnd (jerk * d in exact arithmetic); store its end.
void appendSection(AxisPlan& rec, double jerk, double d, double aEnd) {
    const double a = rec.curAcc;
    const double v = rec.curVel;
    rec.curPos = rec.curPos + v * d + a * d * d / 2.0 + jerkShare(jerk, d);
    rec.curVel = v + a * d + jerk * d * d / 2.0;
    rec.curAcc = aEnd;
    rec.planTime += d;
    rec.remTime -= d;
    appendPoint(rec);
}

// Append a hold at the present acceleration for d.
void appendHold(AxisPlan& rec, double d) { appendSection(rec, 0.0, d, rec.curAcc); }

// The acceleration w = 2 root(V J) with which the recovery shapes leave the
// velocity -V, and its square.
struct RecoveryAcc {
    double w;
    double w2;
};

RecoveryAcc recoveryAcc(const AxisPlan& rec) {
    const double vj = rec.maxVel * rec.maxJerk;
    if (vj > 0.0) {
        const double w = 2.0 * std::sqrt(vj);
        return {w, w * w};
    }
    return {kDoubledRootGuard, kDoubledRootGuardSquared};
}

// Velocity recovery: raise the acceleration from a0 to s at jerk J, then lower
// it to w at jerk -J, with s chosen so that the velocity ends at exactly -V.
// The second ramp has a non-negative length only when a0^2 >= 2J(3V + v0),
// which is why node 6 uses it only then.
void recoverVelocity(AxisPlan& rec) {
    const double V = rec.maxVel, J = rec.maxJerk;
    const double a0 = rec.curAcc, v0 = rec.curVel;
    const RecoveryAcc r = recoveryAcc(rec);
    const double s = guardedRoot((r.w2 + a0 * a0 - 2.0 * (V + v0) * J) / 2.0);
    appendSection(rec, J, (s - a0) / J, s);
    appendSection(rec, -J, (s - r.w) / J, r.w);
}

}  // namespace

// Node 1: a non-negative acceleration stays; otherwise mirror the axis.
bool prologueNode1(PlannerState&, AxisPlan& rec) {
    if (rec.curAcc >= 0.0) return true;
    negateState(rec);
    rec.inv = -1;
    return false;
}

// Node 2: an acceleration above the limit is ramped down to it at -J.
bool prologueNode2(PlannerState&, AxisPlan& rec) {
    const double A = rec.maxAcc, J = rec.maxJerk;
    if (A >= rec.curAcc) return true;
    appendSection(rec, -J, (rec.curAcc - A) / J, A);
    return false;
}

// Node 3: when releasing the acceleration would carry the velocity past V,
// release it now and mirror, so that the over-speed reads v < -V.
bool prologueNode3(PlannerState&, AxisPlan& rec) {
    const double a = rec.curAcc;
    if (rec.maxVel >= rec.curVel + a * a / (2.0 * rec.maxJerk)) return true;
    appendAccToZero(rec);
    mirrorAxis(rec);
    return false;
}

// Node 4: the velocity is within the limit on the negative side.
bool prologueNode4(PlannerState&, AxisPlan& rec) { return rec.curVel >= -rec.maxVel; }

// Node 6: one ramp at jerk J from a0 up to s ends at exactly -V. It is taken
// while 2J(3V + v0) >= a0^2; beyond that the two-ramp recovery is used.
bool prologueNode6(PlannerState&, AxisPlan& rec) {
    const double V = rec.maxVel, J = rec.maxJerk;
    const double a0 = rec.curAcc, v0 = rec.curVel;
    if (2.0 * J * (3.0 * V + v0) >= a0 * a0) {
        const double s = guardedRoot(a0 * a0 - 2.0 * J * (v0 + V));
        appendSection(rec, J, (s - a0) / J, s);
        return true;
    }
    recoverVelocity(rec);
    return false;
}

// Node 7: with A^2 > 4VJ nothing is appended; otherwise raise the acceleration
// to A and hold it until the velocity is -V.
bool prologueNode7(PlannerState&, AxisPlan& rec) {
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk;
    const double a0 = rec.curAcc, v0 = rec.curVel;
    if (A * A > 4.0 * V * J) return true;
    const double t1 = (A - a0) / J;
    const double vA = v0 + (A * A - a0 * a0) / (2.0 * J);
    appendSection(rec, J, t1, A);
    appendHold(rec, (-V - vA) / A);
    return false;
}

// Node 8: when a full pulse to A would overshoot V, the two-ramp recovery;
// otherwise ramp to A, hold, and ramp from A to w, arriving at -V with
// acceleration w. When A < w that last ramp has a negative duration.
bool prologueNode8(PlannerState&, AxisPlan& rec) {
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk;
    const double a0 = rec.curAcc, v0 = rec.curVel;
    if (v0 + (2.0 * A * A - a0 * a0) / (2.0 * J) > V) {
        recoverVelocity(rec);
        return true;
    }
    const RecoveryAcc r = recoveryAcc(rec);
    const double t1 = (A - a0) / J;
    const double vA = v0 + (A * A - a0 * a0) / (2.0 * J);
    appendSection(rec, J, t1, A);
    appendHold(rec, (-V - vA - (A * A - r.w2) / (2.0 * J)) / A);
    appendSection(rec, -J, (A - r.w) / J, r.w);
    return false;
}

// Nodes 1-3 mirror, clip and release in turn; a velocity beyond -V (node 3
// or 4 false) goes to the tree's node 5, whose answer picks the recovery (6,
// or 7 and 8) that ends at the snapshot, node 9. The step-1 position walk
// leaves node 5 for node 9 directly.
const TreeRow kPrologueRows[kPrologueRowCount] = {
    kNoRow,                 // 0
    {prologueNode1, 2, 2},  // 1
    {prologueNode2, 3, 3},  // 2
    {prologueNode3, 4, 5},  // 3
    {prologueNode4, 9, 5},  // 4
    kNoRow,                 // 5 each tree's own
    {prologueNode6, 9, 9},  // 6
    {prologueNode7, 8, 9},  // 7
    {prologueNode8, 9, 9},  // 8
};

}  // namespace VEKTA_COPY
}  // namespace vekta
