// The minimum-time shapes that reach the velocity limit: a positive pulse up to
// V, a cruise at V, a negative pulse down to tgtVel (ids 2..9).
//
// Each pulse is a triangle (its peak stays below A) or a trapezoid (it reaches
// A and holds it). Every section has constant jerk, so the whole shape follows
// in closed form: the pulses are built first as if there were no cruise, which
// fixes X, the position where that shape would end; the cruise then makes up
// the rest of the distance, tc = (tgtPos - X) / V, and shifts every later point
// by tc in time and by tgtPos - X in position. The cruise time is not checked
// for sign: the tree only picks these ids when the target lies beyond X.
//
// The odd id solves the mirrored state and stores every value negated, so it is
// the exact mirror image of the even id (times are not negated). A solver
// writes one point at the end of each section, the last one exactly (vt, pt)
// at rest, from index pointCount on, and counts all of them but the last.
#include <cmath>
#include <cstdio>

#include "numeric/numerics.h"
#include "numeric/axis_curve.h"
#include "output/text_output.h"
#include "step1/step1_solvers.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// The largest shape has three sections per pulse; with the cruise end that
// makes seven points, of which six belong to the pulses.
constexpr int kMaxPulsePoints = 6;

// The two pulses without the cruise: the points at the end of each section,
// times relative to the last point already on the curve, positions absolute.
struct PulsePair {
    double t[kMaxPulsePoints];
    double acc[kMaxPulsePoints];
    double vel[kMaxPulsePoints];
    double pos[kMaxPulsePoints];
    int count;      // points of both pulses, the last one is the end at rest
    int riseCount;  // points of the positive pulse; the cruise follows its last
    double endPos;  // X: where the shape ends without a cruise
};

void addPoint(PulsePair& s, double t, double a, double v, double p) {
    s.t[s.count] = t;
    s.acc[s.count] = a;
    s.vel[s.count] = v;
    s.pos[s.count] = p;
    ++s.count;
}

// The state the solvers start from, in the (possibly mirrored) solving frame.
struct Start {
    double p, pt, v, vt, a, V, A, J;
    double sign;  // applied to every stored value: -1 for the mirror variant
};

Start beginSolve(AxisPlan& rec, bool variant) {
    if (variant) negateState(rec);
    return Start{rec.curPos, rec.tgtPos, rec.curVel, rec.tgtVel, rec.curAcc,
                 rec.maxVel, rec.maxAcc, rec.maxJerk, variant ? -1.0 : 1.0};
}

// Positive trapezoid from (v, a) to (V, 0): a -> A at jerk J, hold A, A -> 0 at
// jerk -J. The hold is what is left of the velocity change after the two ramps;
// its sign is not checked (the tree keeps it non-negative).
void riseTrapezoid(PulsePair& s, const Start& st) {
    const double p = st.p, v = st.v, a = st.a, V = st.V, A = st.A, J = st.J;
    const double t1 = (A - a) / J;
    const double v1 = v + (A + a) * t1 / 2.0;
    const double p1 = p + v * t1 + a * t1 * t1 / 2.0 + J * cube(t1) / 6.0;
    const double h = (V - v1 - A * A / (2.0 * J)) / A;
    const double e2 = t1 + h;
    const double v2 = v1 + A * h;
    const double p2 = p1 + v1 * h + A * h * h / 2.0;
    const double tA = A / J;
    const double e3 = e2 + tA;
    const double p3 = p2 + v2 * tA + A * tA * tA / 2.0 - J * cube(tA) / 6.0;
    addPoint(s, t1, A, v1, p1);
    addPoint(s, e2, A, v2, p2);
    addPoint(s, e3, 0.0, V, p3);  // the ramps and the hold add up to V exactly
    s.riseCount = s.count;
}

// The positive triangle from (v, a) whose peak ap is chosen so that it ends at
// V. Writes its two points (ending at the integrated velocity) and returns ap.
double riseTriangle(PulsePair& s, const Start& st) {
    const double p = st.p, v = st.v, a = st.a, V = st.V, J = st.J;
    const double ap = guardedRoot((V - v) * J + a * a / 2.0);
    double t1 = (ap - a) / J;
    if (t1 < 0.0) t1 = 0.0;  // already above the peak: only the ramp down
    const double t2 = ap / J;
    const double v1 = v + (a + ap) * t1 / 2.0;
    const double v2 = v1 + ap * t2 / 2.0;
    const double p1 = p + v * t1 + a * t1 * t1 / 2.0 + J * cube(t1) / 6.0;
    const double p2 = p1 + v1 * t2 + ap * t2 * t2 / 2.0 - J * cube(t2) / 6.0;
    addPoint(s, t1, ap, v1, p1);
    addPoint(s, t1 + t2, 0.0, v2, p2);
    s.riseCount = s.count;
    return ap;
}

// The negative triangle from (vFrom, 0) down to (vt, 0) with peak an (< 0),
// starting at relative time te and position pFrom. A fall that ends within
// kSnapTime of the motion's start is snapped onto it.
void fallTriangle(PulsePair& s, double te, double pFrom, double vFrom, double an,
                  double J) {
    const double tn = an / J;
    double ts = te - tn;
    if (std::fabs(te - tn) < kSnapTime) ts = 0.0;
    double tf = ts - tn;
    if (std::fabs(tf) < kSnapTime) tf = 0.0;
    const double b3 = ts - te;
    const double b3Cubed = cube(b3);  // both halves last b3
    const double v3 = vFrom + an * b3 / 2.0;
    const double p3 = pFrom + vFrom * b3 - J * b3Cubed / 6.0;
    addPoint(s, ts, an, v3, p3);
    s.endPos = p3 + v3 * b3 + an * b3 * b3 / 2.0 + J * b3Cubed / 6.0;
    addPoint(s, tf, 0.0, 0.0, 0.0);  // the end at rest, written as (vt, pt)
}

// The negative trapezoid from (V, 0) down to (vt, 0): 0 -> -A at jerk -J, hold
// -A, -A -> 0 at jerk J, starting at relative time te and position pFrom.
void fallTrapezoid(PulsePair& s, double te, double pFrom, const Start& st) {
    const double V = st.V, vt = st.vt, A = st.A, J = st.J;
    const double tA = A / J;
    const double tACubed = cube(tA);  // both ramps last tA
    const double hn = (V - vt - A * A / J) / A;
    const double e4 = te + tA;
    const double v4 = V - A * tA / 2.0;
    const double p4 = pFrom + V * tA - J * tACubed / 6.0;
    const double e5 = e4 + hn;
    const double v5 = v4 - A * hn;
    const double p5 = p4 + v4 * hn - A * hn * hn / 2.0;
    addPoint(s, e4, -A, v4, p4);
    addPoint(s, e5, -A, v5, p5);
    s.endPos = p5 + v5 * tA - A * tA * tA / 2.0 + J * tACubed / 6.0;
    addPoint(s, e5 + tA, 0.0, 0.0, 0.0);  // the end at rest, written as (vt, pt)
}

// Write the positive pulse, the cruise end, the negative pulse and the end at
// rest (vt, pt) from index pointCount on; count all of them but the last.
void writeWithCruise(AxisPlan& rec, const PulsePair& s, const Start& st) {
    const double shift = st.pt - s.endPos;
    const double tc = shift / st.V;
    const int c = rec.pointCount;
    const double t0 = rec.secTime[c - 1];
    int k = c;
    for (int i = 0; i < s.riseCount; ++i, ++k) {
        storePoint(rec, k, t0 + s.t[i], s.acc[i], s.vel[i], s.pos[i], st.sign);
    }
    const int r = s.riseCount - 1;  // the cruise keeps the end state of the rise
    storePoint(rec, k++, t0 + s.t[r] + tc, s.acc[r], s.vel[r], s.pos[r] + shift, st.sign);
    const int last = s.count - 1;
    for (int i = s.riseCount; i < last; ++i, ++k) {
        storePoint(rec, k, t0 + s.t[i] + tc, s.acc[i], s.vel[i], s.pos[i] + shift, st.sign);
    }
    storePoint(rec, k, t0 + s.t[last] + tc, 0.0, st.vt, st.pt, st.sign);
    rec.pointCount = k;
}

}  // namespace

bool solveStep1PTZNt(AxisPlan& rec, bool variant) {
    const Start st = beginSolve(rec, variant);
    PulsePair s{};
    riseTrapezoid(s, st);
    // The triangle down from V: peak -root((V - vt) J), velocity (V + vt)/2 there.
    const double an = -guardedRoot((st.V - st.vt) * st.J);
    const int r = s.riseCount - 1;
    fallTriangle(s, s.t[r], s.pos[r], st.V, an, st.J);
    writeWithCruise(rec, s, st);
    return true;
}

bool solveStep1PtZNt(AxisPlan& rec, bool variant) {
    const Start st = beginSolve(rec, variant);
    PulsePair s{};
    const double ap = riseTriangle(s, st);
    const int r = s.riseCount - 1;
    const double v2 = s.vel[r];
    const double an = -guardedRoot(st.J * (v2 - st.vt));
    const double limit = st.A * kPeakSlack;
    if (ap > limit || -limit > an) {
        printTo(rec.sink, "S1 PtZNt error: a1(-a2)=%e(%e) > Am=%e\n", ap, -an, st.A);
        return false;
    }
    fallTriangle(s, s.t[r], s.pos[r], v2, an, st.J);
    writeWithCruise(rec, s, st);
    return true;
}

bool solveStep1PTZNT(AxisPlan& rec, bool variant) {
    const Start st = beginSolve(rec, variant);
    PulsePair s{};
    riseTrapezoid(s, st);
    const int r = s.riseCount - 1;
    fallTrapezoid(s, s.t[r], s.pos[r], st);
    writeWithCruise(rec, s, st);
    return true;
}

bool solveStep1PtZNT(AxisPlan& rec, bool variant) {
    const Start st = beginSolve(rec, variant);
    PulsePair s{};
    const double ap = riseTriangle(s, st);
    if (ap > st.A * kPeakSlack) {
        printTo(rec.sink, "PtZNT error: a1(=%e)>Am(=%e)", ap, st.A);
        return false;
    }
    const int r = s.riseCount - 1;
    s.vel[r] = st.V;  // the triangle's peak was chosen to end at V: cruise exactly there
    fallTrapezoid(s, s.t[r], s.pos[r], st);
    writeWithCruise(rec, s, st);
    return true;
}

}  // namespace VEKTA_COPY
}  // namespace vekta
