// The step-2 nodes of a rising velocity: the walk comes here when the target
// velocity is at or above the one left once the present acceleration is
// ramped to zero (node 9 true). Nodes 10-50 pick among the shapes that raise
// the velocity: two pulses with a cruise between (the second one negative
// where the target position calls for an overshoot), or a ramp to a held
// acceleration; nodes 84-97 take the branches that nodes 12, 20 and 21 hand
// on.
#include <cmath>
#include <cstdint>

#include "numeric/axis_curve.h"
#include "numeric/numerics.h"
#include "output/text_output.h"
#include "step2/step2_nodes.h"
#include "step2/step2_shapes.h"

namespace vekta {
inline namespace VEKTA_COPY {
namespace step2 {

namespace {

// Below this a level difference or a hold span is treated as zero and the
// division by it is skipped (nodes 49, 50).
constexpr double kDegenerateSpan = 1e-5;

// ---------------------------------------------------------------- shared shapes

// Peak of the positive pulse of a PosTrap + PosTri pair that fills T with no
// cruise between them (nodes 30, 31, 40).
double trapTriPeak(const Kin& k) {
    const double x = k.A * k.A - ((k.J * k.T + k.a0 - k.A) * k.A - k.a0 * k.a0 / 2.0 -
                                  (k.vT - k.v0) * k.J);
    return k.A - guardedRoot(x);
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

}  // namespace

// ------------------------------------------------------------------- nodes

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
    st.hints.hldLinHi = s;
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
    st.hints.triPeakAcc = s;
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

// The present acceleration already reaches the Tri peak of node 19:
// PosTriZeroPosTri. Otherwise node 37's test, inverted: two equal Tri pulses
// that fit in less than T also end here (node 37 has set the id); when they
// need T or more the walk goes on to the root search.
bool node24(PlannerState& st, AxisPlan& rec) {
    if (rec.curAcc >= st.hints.triPeakAcc) {
        setProfile(rec, PosTriZeroPosTri);
        return true;
    }
    return !node37(st, rec);
}

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
        st.hints.trapTriSeedSet = 1;
        st.hints.trapTriSeed = q;
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
    st.hints.triTrapSeedSet = 1;
    st.hints.triTrapSeed = q;
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
            st.hints.triTriSeedMode = mode;
            st.hints.triTriSeed = r;
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
        st.hints.hldLinLo = k.a0;
        return true;
    }
    setProfile(rec, NegLinHldPosTri);
    st.hints.negLinAcc = h.al;
    return false;
}

// Raise the acceleration to the hold level ap that reaches vT at T; only the
// bound is left here, the id follows.
bool node43(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    const HoldUp h = holdUpShape(k);
    if (k.pT >= h.P) {
        st.hints.hldLinLo = h.ap;
        return true;
    }
    st.hints.linHldHi = h.ap;
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
        st.hints.hldLinHi = al;
        return true;
    }
    setProfile(rec, PosTriHldNegLin);
    st.hints.hldLinHi = k.A;
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
        st.hints.negLinAccSpare = ap;
        return true;
    }
    const double ap = (b + guardedRoot(x)) / 2.0;
    const double P = endPos(k, {{(k.a0 - ap) / k.J, -k.J},
                                {k.T - (2.0 * k.A + k.a0 - 2.0 * ap) / k.J, 0.0},
                                {(k.A - ap) / k.J, k.J},
                                {k.tA, -k.J}});
    if (k.pT < P) {
        setProfile(rec, NegLinHldPosTrap);
        st.hints.negLinAcc = ap;
        return false;
    }
    setProfile(rec, NegLinHldPosTri);
    st.hints.negLinAccSpare = ap;
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
        st.hints.linHldLo = k.a0;
        return true;
    }
    return false;
}

// Hold a0 for h, then a Trap pulse up to vT, filling T.
bool node49(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    // With a0 at A the hold and the Trap pulse's own hold are one hold at A
    // (the ramp between them is empty), so any h gives the same end.
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
    st.hints.negLinAcc = k.a0;
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
        st.hints.linHldLo = al;
        return true;
    }
    setProfile(rec, PosLinHldPosTrap);
    st.hints.linHldHi = al;
    st.hints.linHldLo = k.a0;
    return false;
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
    st.hints.triPeakAcc = guardedRoot(x);
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
    st.hints.triTriSeedMode = kSeedRaisesLow;
    st.hints.triTriSeed = ap;
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
    if (rec.curAcc >= st.hints.triPeakAcc) {
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
        st.hints.hldLinLo = h.ap;
        return true;
    }
    st.hints.linHldHi = h.ap;
    return false;
}

// As node 48, with the NegLin shape on the other side.
bool node97(PlannerState& st, AxisPlan& rec) {
    const Kin k = kinOf(rec);
    if (k.pT >= holdThenTriEnd(k)) {
        setProfile(rec, PosLinHldPosTri);
        st.hints.linHldLo = k.a0;
        return true;
    }
    setProfile(rec, NegLinHldPosTri);
    st.hints.negLinAcc = k.a0;
    return false;
}

}  // namespace step2
}  // namespace VEKTA_COPY
}  // namespace vekta
