// The step-2 nodes of a falling velocity: the walk comes here when the
// target velocity lies below the one left once the present acceleration is
// ramped to zero (node 9 false). Nodes 51-74 pick among the shapes that lower
// the velocity (two negative pulses with a cruise between, a hold at a
// negative level); from node 75 on, among those whose two pulses have
// opposite signs. Node 75 may hand the walk on to node 16, among the rising
// nodes.
#include <cmath>
#include <cstdint>

#include "numeric/axis_curve.h"
#include "numeric/numerics.h"
#include "step2/step2_nodes.h"
#include "step2/step2_shapes.h"

namespace vekta {
inline namespace VEKTA_COPY {
namespace step2 {

namespace {

// ---------------------------------------------------------------- shared shapes

// Radicand of the negative NegTrap + NegTri pair filling T (nodes 56, 59, 68).
double negTrapTriRadicand(const Kin& k) {
    return k.A * k.A - ((k.J * k.T - k.A) * k.A - (k.v0 - k.vT) * k.J);
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

}  // namespace

// ------------------------------------------------------------------- nodes

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
        st.hints.trapTriSeedSet = 1;
        st.hints.trapTriSeed = q;
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
    st.hints.hldLinHi = s;
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
    st.hints.triTrapSeedSet = 1;
    st.hints.triTrapSeed = q;
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
            st.hints.triTriSeedMode = mode;
            st.hints.triTriSeed = -r;
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
        st.hints.hldLinLo = -h.r;
        return true;
    }
    setProfile(rec, NegLinHldNegTri);
    st.hints.linHldHi = -h.r;
    st.hints.linHldLo = 0.0;
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
        st.hints.hldLinHi = -al;
        return true;
    }
    setProfile(rec, NegTriHldPosLin);
    st.hints.hldLinHi = k.A;
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
        st.hints.linHldLo = -al;
        return true;
    }
    setProfile(rec, NegLinHldNegTrap);
    st.hints.linHldLo = 0.0;  // as node 72, the only way here, left it already
    st.hints.linHldHi = -al;
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

}  // namespace step2
}  // namespace VEKTA_COPY
}  // namespace vekta
