// Step-2 solvers: one free quantity per shape, found by bracketing.
//
// Every shape is a fixed list of constant-jerk sections starting from the
// record's state (p0, v0, a0 >= 0) and ending after exactly T = remTime at
// (tgtPos, tgtVel) with zero acceleration. Once the free quantity x is chosen
// (a cruise velocity, the peak of the first pulse or a held acceleration), the
// velocity condition fixes the remaining level or duration in closed form and
// the time condition fixes the filling section, so only the end position is
// left over: the residual returns it minus tgtPos and abkSolve finds its zero
// inside a bracket built from the limits and the hints the step-2 tree left.
//
// A residual walks its sections forward, recording the state at the end of
// each. The last section is always a full-jerk ramp to zero acceleration that
// ends at tgtVel at time T; its position is closed from that known end. With
// writeSections set, the recorded points are stored after the existing curve
// (times relative to its last point, values times inv) and counted.
//
// Guarded roots: a triangular pulse's peak is sqrt(velocity change * J); a
// radicand that is not positive gives the tiny guard (with the pulse's sign)
// and a half square of 5e-101, so that a probe outside the feasible range
// still yields a finite residual. Nothing validates the written durations: a
// root whose derived hold came out negative is written as it is.
#include "step2/step2_solvers.h"

#include <algorithm>
#include <cstdio>

#include "numeric/axis_curve.h"
#include "numeric/numerics.h"
#include "output/text_output.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// Half the square of the guarded peak, (1e-50)^2 / 2, and the square itself.
constexpr double kRootGuardHalfSquare = 5e-101;
constexpr double kRootGuardSquare = 1e-100;

constexpr int kMaxShapePoints = 7;

// The point at the end of every section walked so far, kept only when the
// shape is to be written (a trial of the root finder needs just the end
// position).
struct ShapePoints {
    int n;
    double time[kMaxShapePoints];
    double acc[kMaxShapePoints];
    double vel[kMaxShapePoints];
    double pos[kMaxShapePoints];
};

// The state along a shape, time t from the shape's start; `points` is null
// unless the shape is being written. The memory keeps the last cube taken
// (from rest, a Tri-first shape's rise and fall last equally long).
struct ShapeWalk {
    double t, a, v, p;
    ShapePoints* points;
    CubeMemo memo;
};

// A walk from the record's state, recording its points into `points` when
// the record asks for its sections to be written.
ShapeWalk startWalk(const AxisPlan& rec, ShapePoints& points) {
    points.n = 0;
    return {0.0, rec.curAcc, rec.curVel, rec.curPos, rec.writeSections == 1 ? &points : nullptr, CubeMemo{}};
}

void markPoint(ShapeWalk& w) {
    ShapePoints* pts = w.points;
    if (pts == nullptr) return;
    pts->time[pts->n] = w.t;
    pts->acc[pts->n] = w.a;
    pts->vel[pts->n] = w.v;
    pts->pos[pts->n] = w.p;
    ++pts->n;
}

// A section of duration d at jerk j. Its end acceleration aEnd (= a + j d) is
// passed exactly, so that levels such as A or zero are stored exactly. share
// is jerkShare(j, d), worked out by the caller when it serves more than once.
[[gnu::always_inline]] inline void section(ShapeWalk& w, double d, double j, double share, double aEnd) {
    w.p += w.v * d + w.a * d * d / 2.0 + share;
    w.v += w.a * d + j * d * d / 2.0;
    w.a = aEnd;
    w.t += d;
    markPoint(w);
}

[[gnu::always_inline]] inline void section(ShapeWalk& w, double d, double j, double aEnd) {
    section(w, d, j, jerkShare(j, d, w.memo), aEnd);
}

// The closing ramp: duration d at jerk j down to zero acceleration, ending at
// time T with velocity vt. Integrated backwards from that end, it covers
// vt d + j d^3 / 6 (share = jerkShare(j, d)).
[[gnu::always_inline]] inline void finalRampShared(ShapeWalk& w, double d, double share, double T, double vt) {
    w.p += vt * d + share;
    w.v = vt;
    w.a = 0.0;
    w.t = T;
    markPoint(w);
}

void finalRamp(ShapeWalk& w, double d, double j, double T, double vt) {
    finalRampShared(w, d, jerkShare(j, d, w.memo), T, vt);
}

// Peak of a triangular pulse that changes the velocity by dv in its own
// direction: sqrt(dv J), with the guard when dv J is not positive.
struct TriPeak {
    double peak;        // magnitude; the pulse's direction is applied by the caller
    double halfSquare;  // peak^2 / 2
};

[[gnu::always_inline]] inline TriPeak triPeak(double radicand) {
    if (radicand > 0.0) {
        const double q = std::sqrt(radicand);
        return {q, q * q / 2.0};
    }
    return {kRootGuard, kRootGuardHalfSquare};
}

// A triangular pulse from zero acceleration to dir * peak and back to zero,
// ending the shape at (T, vt).
[[gnu::always_inline]] inline void triTail(ShapeWalk& w, double dir, const TriPeak& tp, double J, double T, double vt) {
    const double d = tp.peak / J;
    const double d3 = cube(d);  // both halves last d
    w.p += w.v * d + w.a * d * d / 2.0 + dir * J * d3 / 6.0;
    w.v += dir * tp.halfSquare / J;
    w.a = dir * tp.peak;
    w.t += d;
    markPoint(w);
    finalRampShared(w, d, -dir * J * d3 / 6.0, T, vt);
}

// Write the walked points after the existing curve when asked to, and return
// the end-position error. Every value is stored times inv, a zero
// acceleration too (a mirrored one is stored as -0, like any other value).
[[gnu::noinline]] void writeShape(AxisPlan& rec, const ShapePoints& pts) {
    const int k = rec.pointCount;
    const double t0 = rec.secTime[k - 1];
    const double s = static_cast<double>(rec.inv);
    for (int i = 0; i < pts.n; ++i) {
        storePoint(rec, k + i, t0 + pts.time[i], pts.acc[i], pts.vel[i], pts.pos[i], s);
    }
    rec.writeSections = 0;
    rec.pointCount = k + pts.n;
}

double finishShape(AxisPlan& rec, const ShapeWalk& w) {
    if (w.points != nullptr) writeShape(rec, *w.points);
    return w.p - rec.tgtPos;
}

// ---------------------------------------------------------------------------
// The Zero family: a first pulse up, a cruise at zero acceleration, a second
// pulse (Pos: up, Neg: down) arriving at vt.
//
// Trap-first (x = the cruise velocity): a0 -> A at +J, hold A for
// (x - vA - A^2/(2J)) / A so that the ramp A -> 0 at -J arrives exactly at x.
// Tri-first (x = the first peak): a0 -> x at +J, x -> 0 at -J; the cruise
// velocity is v0 + (2x^2 - a0^2)/(2J).
// The second pulse changes the velocity by dv = dir (vt - cruise): a Tri
// pulse peaks at sqrt(dv J) and lasts 2 peak / J; a Trap pulse holds dir A
// for dv / A - A / J and lasts 2A/J plus that hold. The cruise fills what is
// left of T.

enum class Pulse { Tri, Trap };

// What a Zero-family shape does not owe to the trial value, worked out once
// per solve by the very operations the residual would repeat for every trial:
// the cube of a full ramp between 0 and +-A, and (Trap first) the state at
// the end of the ramp a0 -> A.
struct ZeroShape {
    double fallShare;    // jerkShare(-J, A / J): a Trap-first pulse's A -> 0
    double pulseShares[2];  // jerkShare(dir J, A / J), jerkShare(-dir J, A / J): a Trap second pulse
    double riseT, riseA, riseV, riseP;
};

ZeroShape zeroShapeOf(const AxisPlan& rec, Pulse first, double dir) {
    const double a0 = rec.curAcc, A = rec.maxAcc, J = rec.maxJerk;
    const double rampCube = cube(A / J);
    ZeroShape s{-J * rampCube / 6.0,
                {dir * J * rampCube / 6.0, -dir * J * rampCube / 6.0},
                0.0,
                0.0,
                0.0,
                0.0};
    if (first == Pulse::Trap) {
        ShapeWalk w{0.0, rec.curAcc, rec.curVel, rec.curPos, nullptr, CubeMemo{}};  // nothing recorded
        section(w, (A - a0) / J, J, A);
        s.riseT = w.t;
        s.riseA = w.a;
        s.riseV = w.v;
        s.riseP = w.p;
    }
    return s;
}

// The sections of a Zero-family shape for the trial value x, walked on from
// the record's state in w. The pulse kinds and the second pulse's direction
// are template arguments, so that a trial of the root finder is one straight
// run of arithmetic (dir = -1 multiplies as an exact negation).
template <Pulse First, int Dir, Pulse Second>
[[gnu::always_inline]] inline void walkZeroShape(const AxisPlan& rec, const ZeroShape& s, double x, ShapeWalk& w) {
    constexpr double dir = Dir;
    const double a0 = rec.curAcc, vt = rec.tgtVel;
    const double A = rec.maxAcc, J = rec.maxJerk, T = rec.remTime;

    double cruiseVel;
    if (First == Pulse::Trap) {
        w.t = s.riseT;
        w.a = s.riseA;
        w.v = s.riseV;
        w.p = s.riseP;
        markPoint(w);
        const double hold = (x - w.v - A * A / (2.0 * J)) / A;
        section(w, hold, 0.0, A);
        section(w, A / J, -J, s.fallShare, 0.0);
        cruiseVel = x;
    } else {
        section(w, (x - a0) / J, J, x);
        section(w, x / J, -J, 0.0);
        cruiseVel = w.v;
    }

    const double dv = dir * (vt - cruiseVel);
    if (Second == Pulse::Tri) {
        const TriPeak tp = triPeak(dv * J);
        section(w, T - w.t - 2.0 * tp.peak / J, 0.0, 0.0);
        triTail(w, dir, tp, J, T, vt);
    } else {
        const double hold = dv / A - A / J;
        section(w, T - w.t - (2.0 * A / J + hold), 0.0, 0.0);
        section(w, A / J, dir * J, s.pulseShares[0], dir * A);
        section(w, hold, 0.0, dir * A);
        finalRampShared(w, A / J, s.pulseShares[1], T, vt);
    }
}

// The residual behind a function pointer: writes the shape when the record
// asks for it.
template <Pulse First, int Dir, Pulse Second>
double zeroShapeResidual(AxisPlan& rec, double x) {
    const ZeroShape s = zeroShapeOf(rec, First, Dir);
    ShapePoints points;
    ShapeWalk w = startWalk(rec, points);
    walkZeroShape<First, Dir, Second>(rec, s, x, w);
    return finishShape(rec, w);
}

// An exact curve's end is good once it misses the target by the rounding of
// the positions it is made of.
double endRounding(const AxisPlan& rec) {
    return roundingOf(std::fabs(rec.tgtPos) > std::fabs(rec.curPos) ? rec.tgtPos : rec.curPos);
}

// The common tail of every solver: find the root, write the shape for it.
template <typename Residual>
bool solveAndWrite(AxisPlan& rec, const Residual& residual, double lo, double hi,
                   const char* errorLine) {
    double x = 0.0;
    const bool found = rec.exact ? abkSolveExact(rec, residual, &x, lo, hi, endRounding(rec))
                                 : abkSolveWith(rec, residual, &x, lo, hi);
    if (!found) {
        printTo(rec.sink, "%s\n", errorLine);
        return false;
    }
    rec.writeSections = 1;
    residual(x);
    return true;
}

bool solveAndWrite(AxisPlan& rec, Step2Residual residual, double lo, double hi, const char* errorLine) {
    return solveAndWrite(rec, [&rec, residual](double x) { return residual(rec, &x); }, lo, hi, errorLine);
}

// A Zero-family solve: the trials walk the shape without recording a point;
// the root's shape is walked once more and written.
template <Pulse First, int Dir, Pulse Second>
bool solveZeroShape(AxisPlan& rec, double lo, double hi, const char* errorLine) {
    const ZeroShape s = zeroShapeOf(rec, First, Dir);
    const auto trial = [&rec, &s](double x) __attribute__((always_inline)) {
        ShapeWalk w{0.0, rec.curAcc, rec.curVel, rec.curPos, nullptr, CubeMemo{}};
        walkZeroShape<First, Dir, Second>(rec, s, x, w);
        return w.p - rec.tgtPos;
    };
    double x = 0.0;
    const bool found = rec.exact ? abkSolveExact(rec, trial, &x, lo, hi, endRounding(rec))
                                 : abkSolveWith(rec, trial, &x, lo, hi);
    if (!found) {
        printTo(rec.sink, "%s\n", errorLine);
        return false;
    }
    ShapePoints points;
    points.n = 0;
    ShapeWalk w{0.0, rec.curAcc, rec.curVel, rec.curPos, &points, CubeMemo{}};
    walkZeroShape<First, Dir, Second>(rec, s, x, w);
    writeShape(rec, points);
    return true;
}

}  // namespace

// ---------------------------------------------------------------------------
// Residuals of the Zero family (6, 5, 7, 6, 6, 5, 6, 7 points).

// a0 -> A, hold A, A -> 0 (at x), cruise, 0 -> -q, -q -> 0.
double residualPosTrapZeroNegTri(AxisPlan& rec, const double* x) {
    return zeroShapeResidual<Pulse::Trap, -1, Pulse::Tri>(rec, *x);
}

// a0 -> x, x -> 0, cruise, 0 -> -q, -q -> 0.
double residualPosTriZeroNegTri(AxisPlan& rec, const double* x) {
    return zeroShapeResidual<Pulse::Tri, -1, Pulse::Tri>(rec, *x);
}

// a0 -> A, hold A, A -> 0 (at x), cruise, 0 -> -A, hold -A, -A -> 0.
double residualPosTrapZeroNegTrap(AxisPlan& rec, const double* x) {
    return zeroShapeResidual<Pulse::Trap, -1, Pulse::Trap>(rec, *x);
}

// a0 -> x, x -> 0, cruise, 0 -> -A, hold -A, -A -> 0.
double residualPosTriZeroNegTrap(AxisPlan& rec, const double* x) {
    return zeroShapeResidual<Pulse::Tri, -1, Pulse::Trap>(rec, *x);
}

// a0 -> A, hold A, A -> 0 (at x), cruise, 0 -> q, q -> 0.
double residualPosTrapZeroPosTri(AxisPlan& rec, const double* x) {
    return zeroShapeResidual<Pulse::Trap, 1, Pulse::Tri>(rec, *x);
}

// a0 -> x, x -> 0, cruise, 0 -> q, q -> 0.
double residualPosTriZeroPosTri(AxisPlan& rec, const double* x) {
    return zeroShapeResidual<Pulse::Tri, 1, Pulse::Tri>(rec, *x);
}

// a0 -> x, x -> 0, cruise, 0 -> A, hold A, A -> 0.
double residualPosTriZeroPosTrap(AxisPlan& rec, const double* x) {
    return zeroShapeResidual<Pulse::Tri, 1, Pulse::Trap>(rec, *x);
}

// a0 -> A, hold A, A -> 0 (at x), cruise, 0 -> A, hold A, A -> 0.
double residualPosTrapZeroPosTrap(AxisPlan& rec, const double* x) {
    return zeroShapeResidual<Pulse::Trap, 1, Pulse::Trap>(rec, *x);
}

// ---------------------------------------------------------------------------
// Residuals of the Lin/Hld family.

// PosTrapHldNegLin, 5 points, x = the held acceleration (0 <= x <= A):
// a0 -> A at +J, hold A for hA, A -> x at -J, hold x for hx, x -> 0 at -J.
// The three ramps last (2A - a0)/J whatever x is, so hA + hx = L = T - that;
// after a0 -> A (velocity v1) the ramps add A^2/(2J), so the velocity
// condition A hA + x hx = vt - v1 - A^2/(2J) gives
// hA = (vt - v1 - A^2/(2J) - x L) / (A - x), and zero unless A - x > 0.
double residualPosTrapHldNegLin(AxisPlan& rec, const double* xp) {
    const double x = *xp;
    const double a0 = rec.curAcc, vt = rec.tgtVel;
    const double A = rec.maxAcc, J = rec.maxJerk, T = rec.remTime;

    ShapePoints points;
    ShapeWalk w = startWalk(rec, points);
    section(w, (A - a0) / J, J, A);
    const double L = T - (2.0 * A - a0) / J;
    const double holdA = A - x > 0.0 ? (vt - w.v - A * A / (2.0 * J) - x * L) / (A - x) : 0.0;
    section(w, holdA, 0.0, A);
    section(w, (A - x) / J, -J, x);
    section(w, L - holdA, 0.0, x);
    finalRamp(w, x / J, -J, T, vt);
    return finishShape(rec, w);
}

// PosTriHldNegLin, 4 points, x = the peak of the first pulse (y <= x):
// a0 -> x at +J, x -> y at -J, hold y, y -> 0 at -J. The ramps last
// (2x - a0)/J, so the hold lasts T - (2x - a0)/J; after a0 -> x (velocity
// v1) the ramps add x^2/(2J), so y = (vt - v1 - x^2/(2J)) / hold. Only the
// Trap shapes guard their division; this one is taken as it is.
double residualPosTriHldNegLin(AxisPlan& rec, const double* xp) {
    const double x = *xp;
    const double a0 = rec.curAcc, vt = rec.tgtVel;
    const double J = rec.maxJerk, T = rec.remTime;

    ShapePoints points;
    ShapeWalk w = startWalk(rec, points);
    section(w, (x - a0) / J, J, x);
    const double hold = T - (2.0 * x - a0) / J;
    const double y = (vt - w.v - x * x / (2.0 * J)) / hold;
    section(w, (x - y) / J, -J, y);
    section(w, hold, 0.0, y);
    finalRamp(w, y / J, -J, T, vt);
    return finishShape(rec, w);
}

// NegLinHldPosTrap, 5 points, x = the held acceleration (x <= a0):
// a0 -> x at -J, hold x for h, x -> A at +J, hold A for hA, A -> 0 at -J.
// The ramps last (2A + a0 - 2x)/J, so h + hA = L = T - that; after a0 -> x
// (velocity v1) the ramps add (2A^2 - x^2)/(2J), so the velocity condition
// x h + A hA = vt - v1 - (2A^2 - x^2)/(2J) gives
// h = (vt - v1 - (2A^2 - x^2)/(2J) - A L) / (x - A), and zero when x >= A.
double residualNegLinHldPosTrap(AxisPlan& rec, const double* xp) {
    const double x = *xp;
    const double a0 = rec.curAcc, vt = rec.tgtVel;
    const double A = rec.maxAcc, J = rec.maxJerk, T = rec.remTime;

    ShapePoints points;
    ShapeWalk w = startWalk(rec, points);
    section(w, (a0 - x) / J, -J, x);
    const double L = T - (2.0 * A + a0 - 2.0 * x) / J;
    const double hold =
        x >= A ? 0.0 : (vt - w.v - (2.0 * A * A - x * x) / (2.0 * J) - A * L) / (x - A);
    section(w, hold, 0.0, x);
    section(w, (A - x) / J, J, A);
    section(w, L - hold, 0.0, A);
    finalRamp(w, A / J, -J, T, vt);
    return finishShape(rec, w);
}

// NegLinHldPosTri, 4 points, x = the held acceleration (x <= a0):
// a0 -> x at -J, hold x, x -> q at +J, q -> 0 at -J. With u = T J - a0, the
// hold lasts T - (a0 + 2q - 2x)/J and the velocity condition becomes
// (q - x)^2 = (vt - v0) J - a0^2/2 - x u: the peak is x plus that root.
double residualNegLinHldPosTri(AxisPlan& rec, const double* xp) {
    const double x = *xp;
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double J = rec.maxJerk, T = rec.remTime;

    ShapePoints points;
    ShapeWalk w = startWalk(rec, points);
    section(w, (a0 - x) / J, -J, x);
    const double u = T * J - a0;
    const double q = x + guardedRoot((vt - v0) * J - a0 * a0 / 2.0 - x * u);
    const double hold = T - (a0 + 2.0 * q - 2.0 * x) / J;
    section(w, hold, 0.0, x);
    section(w, (q - x) / J, J, q);
    finalRamp(w, q / J, -J, T, vt);
    return finishShape(rec, w);
}

// PosLinHldPosTri, 4 points, x = the held acceleration (a0 <= x <= q):
// a0 -> x at +J, hold x, x -> q at +J, q -> 0 at -J. The hold lasts
// T - (2q - a0)/J and the velocity condition becomes
// (q - x)^2 = x^2 - x (T J + a0) + a0^2/2 + (vt - v0) J.
double residualPosLinHldPosTri(AxisPlan& rec, const double* xp) {
    const double x = *xp;
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double J = rec.maxJerk, T = rec.remTime;

    ShapePoints points;
    ShapeWalk w = startWalk(rec, points);
    section(w, (x - a0) / J, J, x);
    const double q = x + guardedRoot(x * x - x * (T * J + a0) + a0 * a0 / 2.0 + (vt - v0) * J);
    const double hold = T - (2.0 * q - a0) / J;
    section(w, hold, 0.0, x);
    section(w, (q - x) / J, J, q);
    finalRamp(w, q / J, -J, T, vt);
    return finishShape(rec, w);
}

// PosLinHldPosTrap, 5 points, x = the held acceleration (a0 <= x <= A):
// a0 -> x at +J, hold x for h, x -> A at +J, hold A, A -> 0 at -J. The ramps
// last (2A - a0)/J whatever x is, so the last ramp starts at T - A/J.
double residualPosLinHldPosTrap(AxisPlan& rec, const double* xp) {
    const double x = *xp;
    const double p0 = rec.curPos, v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double A = rec.maxAcc, J = rec.maxJerk, T = rec.remTime;

    const double t1 = (x - a0) / J;
    const double v1 = v0 + (a0 + x) * t1 / 2.0;
    const double p1 = p0 + v0 * t1 + a0 * t1 * t1 / 2.0 + J * cube(t1) / 6.0;

    const double h =
        x >= A ? 0.0 : ((x * x / 2.0 + A * A - a0 * A) / J + (vt - v1) - T * A) / (x - A);

    const double t2 = t1 + h;
    const double t3 = t2 + (A - x) / J;
    const double t4 = T - A / J;

    const double v2 = v1 + x * h;
    const double p2 = p1 + v1 * h + x * h * h / 2.0;
    const double d3 = t3 - t2;
    const double v3 = v2 + (A * A - x * x) / (2.0 * J);
    const double p3 = p2 + v2 * d3 + x * d3 * d3 / 2.0 + J * cube(d3) / 6.0;
    const double d4 = t4 - t3;
    const double v4 = v3 + A * d4;
    const double p4 = p3 + v3 * d4 + A * d4 * d4 / 2.0;
    const double pEnd = p4 + vt * (T - t4) - J * cube(T - t4) / 6.0;

    ShapePoints points;
    ShapeWalk w = startWalk(rec, points);
    const double times[5] = {t1, t2, t3, t4, T};
    const double accs[5] = {x, x, A, A, 0.0};
    const double vels[5] = {v1, v2, v3, v4, vt};
    const double poss[5] = {p1, p2, p3, p4, pEnd};
    for (int i = 0; i < 5; ++i) {
        w.t = times[i];
        w.a = accs[i];
        w.v = vels[i];
        w.p = poss[i];
        markPoint(w);
    }
    return finishShape(rec, w);
}

// ---------------------------------------------------------------------------
// Solvers: bracket, guard, root, write.

bool solveStep2PosTrapZeroNegTri(PlannerState&, AxisPlan& rec) {
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk, T = rec.remTime;
    // The cruise lies above the top of the full first pulse and above vt; the
    // second pulse's peak stays within A, and the cruise within the time.
    const double s = guardedRoot(a0 * A - a0 * a0 / 2.0 + (v0 - vt) * J + A * J * T);
    const double lo = std::max(vt, v0 + (2.0 * A * A - a0 * a0) / (2.0 * J));
    const double hi = std::min({V, vt + A * A / J, vt + (s - A) * (s - A) / J});
    return solveZeroShape<Pulse::Trap, -1, Pulse::Tri>(rec, lo, hi, "step2_PTZNt error!");
}

bool solveStep2PosTriZeroNegTri(PlannerState&, AxisPlan& rec) {
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk, T = rec.remTime;
    const double TJ = T * J;

    // The peak's upper end: the limit, or where the cruise shrinks to zero.
    double h = std::min(A, (3.0 * a0 * a0 + TJ * TJ - 4.0 * J * v0 + 4.0 * J * vt +
                            2.0 * a0 * J * T) /
                               (4.0 * a0 + 4.0 * J * T));
    double hSquare = h * h;
    double lo = a0;
    if (vt < v0 - a0 * a0 / (2.0 * J)) {
        const double g = std::max(-A, (4.0 * J * vt + a0 * a0 - TJ * TJ - 4.0 * J * v0 -
                                       2.0 * a0 * J * T) /
                                          (4.0 * a0 + 4.0 * J * T));
        const double R = g * g + a0 * a0 / 2.0 + (vt - v0) * J;
        h = guardedRoot(R);
        hSquare = R > 0.0 ? h * h : kRootGuardSquare;
        lo = a0;
    } else if (vt >= v0 + a0 * a0 / (2.0 * J)) {
        // Below this peak the cruise would already be under vt.
        lo = guardedRoot(a0 * a0 / 2.0 + (vt - v0) * J);
    } else {
        lo = a0;
    }
    // Velocity cap: the cruise must not exceed V.
    const double W = (V - v0) * J + a0 * a0 / 2.0;
    if (W < hSquare) h = guardedRoot(W);
    // Time cap: the two pulses must fit into T.
    const double m = (TJ + a0) / 2.0;
    const double c = (m + (J * (vt - v0) + a0 * a0 / 2.0) / m) / 2.0;
    const double hi = std::min(h, c);
    return solveZeroShape<Pulse::Tri, -1, Pulse::Tri>(rec, lo, hi, "step2_PtZNt error!");
}

bool solveStep2PosTrapZeroNegTrap(PlannerState&, AxisPlan& rec) {
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk, T = rec.remTime;
    // Both plateaus non-negative; the cruise at most as long as the time allows.
    const double lo = std::max({-V, vt + A * A / J, v0 + (A * A - a0 * a0 / 2.0) / J});
    const double hi = std::min(
        V, (vt + v0 + T * A) / 2.0 - (a0 * a0 / 4.0 - a0 * A / 2.0 + A * A) / J);
    return solveZeroShape<Pulse::Trap, -1, Pulse::Trap>(rec, lo, hi, "step2_PTZNT error!");
}

bool solveStep2PosTriZeroNegTrap(PlannerState&, AxisPlan& rec) {
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk, T = rec.remTime;
    // The cruise high enough for a full second pulse, below V and the top of a
    // full first pulse, and the pulses within T.
    const double lo = std::max(a0, guardedRoot(a0 * a0 / 2.0 + (vt - v0) * J + A * A));
    const double vTop = std::min(V, v0 + (A * A - a0 * a0 / 2.0) / J);
    const double hi =
        std::min(guardedRoot((vTop - v0) * J + a0 * a0 / 2.0),
                 guardedRoot((J * T + a0) * A + (vt - v0) * J + a0 * a0 / 2.0) - A);
    return solveZeroShape<Pulse::Tri, -1, Pulse::Trap>(rec, lo, hi, "step2_PtZNT error!");
}

bool solveStep2PosTrapZeroPosTri(PlannerState& st, AxisPlan& rec) {
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk;
    double lo = std::max({-V, vt - A * A / J, v0 + (A * A - a0 * a0 / 2.0) / J});
    if (st.hints.trapTriSeedSet) {
        // The tree's no-cruise peak bounds the second pulse's peak.
        st.hints.trapTriSeedSet = 0;
        lo = std::max(lo, vt - st.hints.trapTriSeed * st.hints.trapTriSeed / J);
    }
    const double hi = std::min(V, vt);
    return solveZeroShape<Pulse::Trap, 1, Pulse::Tri>(rec, lo, hi, "step2_PTZPt error!");
}

bool solveStep2PosTriZeroPosTri(PlannerState& st, AxisPlan& rec) {
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double A = rec.maxAcc, J = rec.maxJerk;
    double lo = std::max(a0, guardedRoot(a0 * a0 / 2.0 - A * A + (vt - v0) * J));
    double hi = std::min(A, guardedRoot((vt - v0) * J + a0 * a0 / 2.0));
    // The tree's choice between the two branches of solutions: the larger
    // first peak (mode 1) or the smaller one.
    if (st.hints.triTriSeedMode == 1) {
        lo = std::max(lo, st.hints.triTriSeed);
    } else if (st.hints.triTriSeedMode != 0) {
        hi = std::min(hi, st.hints.triTriSeed);
    }
    st.hints.triTriSeedMode = 0;
    return solveZeroShape<Pulse::Tri, 1, Pulse::Tri>(rec, lo, hi, "step2_PtZPt error!");
}

bool solveStep2PosTriZeroPosTrap(PlannerState& st, AxisPlan& rec) {
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double A = rec.maxAcc, J = rec.maxJerk;
    const double s = guardedRoot((vt - v0) * J + a0 * a0 / 2.0 - A * A);
    const double lo = a0;
    double hi = std::min(A, s);
    if (st.hints.triTrapSeedSet) {
        st.hints.triTrapSeedSet = 0;
        hi = std::min(hi, st.hints.triTrapSeed);
    }
    return solveZeroShape<Pulse::Tri, 1, Pulse::Trap>(rec, lo, hi, "step2_PtZPT error!");
}

bool solveStep2PosTrapZeroPosTrap(PlannerState&, AxisPlan& rec) {
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk, T = rec.remTime;
    // Two full pulses take a fixed time whatever the cruise velocity; when it
    // exceeds T no cruise of non-negative length is left.
    if (a0 * a0 - 2.0 * a0 * A + 4.0 * A * A - 2.0 * J * A * T - 2.0 * J * v0 + 2.0 * J * vt >
        0.0) {
        printTo(rec.sink, "step2_PTZPT t45 < 0");
        return false;
    }
    const double lo = std::max(-V, v0 + (2.0 * A * A - a0 * a0) / (2.0 * J));
    const double hi = std::min(V, vt - A * A / J);
    return solveZeroShape<Pulse::Trap, 1, Pulse::Trap>(rec, lo, hi, "step2_PTZPT error!");
}

bool solveStep2PosTrapHldNegLin(PlannerState& st, AxisPlan& rec) {
    const double lo = 0.0;
    const double hi = std::min(rec.maxAcc, st.hints.hldLinHi);
    return solveAndWrite(rec, residualPosTrapHldNegLin, lo, hi, "step2_PTHNL error!");
}

bool solveStep2PosTriHldNegLin(PlannerState& st, AxisPlan& rec) {
    const double lo = std::max(rec.curAcc, st.hints.hldLinLo);
    const double hi = std::min(rec.maxAcc, st.hints.hldLinHi);
    return solveAndWrite(rec, residualPosTriHldNegLin, lo, hi, "step2_PtHNL error!");
}

bool solveStep2NegLinHldPosTrap(PlannerState& st, AxisPlan& rec) {
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double A = rec.maxAcc, J = rec.maxJerk, T = rec.remTime;
    // The hold at x is non-negative exactly when (A - x)^2 <= D.
    const double D = a0 * a0 / 2.0 - a0 * A - J * (vt - v0 - T * A);
    if (D < 0.0) {
        printTo(rec.sink, "NLHPT t23=%f < 0 always\n", D);
        return false;
    }
    const double lo = std::max(0.0, A - guardedRoot(D));
    const double hi = std::min(a0, st.hints.negLinAcc);
    return solveAndWrite(rec, residualNegLinHldPosTrap, lo, hi, "step2_NLHPT error!");
}

bool solveStep2NegLinHldPosTri(PlannerState& st, AxisPlan& rec) {
    const double v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double J = rec.maxJerk, T = rec.remTime;
    // Not even the ramp down from a0 fits into T.
    const double u = T * J - a0;
    if (u < 0.0) {
        printTo(rec.sink, "NLHPt t23 error");
        return false;
    }
    // The hold is non-negative while the rise above x is at most u / 2.
    const double lo = std::max(0.0, ((vt - v0) * J - a0 * a0 / 2.0) / u - u / 4.0);
    const double hi = std::min(a0, st.hints.negLinAcc);
    return solveAndWrite(rec, residualNegLinHldPosTri, lo, hi, "step2_NLHPt error!");
}

bool solveStep2PosLinHldPosTri(PlannerState& st, AxisPlan& rec) {
    const double lo = std::max(rec.curAcc, st.hints.linHldLo);
    const double hi = std::min(rec.maxAcc, st.hints.linHldHi);
    return solveAndWrite(rec, residualPosLinHldPosTri, lo, hi, "step2_PLHPt error!");
}

bool solveStep2PosLinHldPosTrap(PlannerState& st, AxisPlan& rec) {
    const double lo = std::max(rec.curAcc, st.hints.linHldLo);
    const double hi = std::min(rec.maxAcc, st.hints.linHldHi);
    return solveAndWrite(rec, residualPosLinHldPosTrap, lo, hi, "step2_PLHPT error!");
}

const Step2Solver step2Solvers[kStep2SolverCount] = {
    solveStep2PosTrapZeroNegTri,   solveStep2PosTriZeroNegTri,  solveStep2PosTrapZeroNegTrap,
    solveStep2PosTriZeroNegTrap,   solveStep2PosTrapZeroPosTri, solveStep2PosTriZeroPosTri,
    solveStep2PosTriZeroPosTrap,   solveStep2PosTrapZeroPosTrap, solveStep2PosTrapHldNegLin,
    solveStep2PosTriHldNegLin,     solveStep2NegLinHldPosTrap,  solveStep2NegLinHldPosTri,
    solveStep2PosLinHldPosTri,     solveStep2PosLinHldPosTrap,
};

const Step2Residual step2Residuals[kStep2SolverCount] = {
    residualPosTrapZeroNegTri,   residualPosTriZeroNegTri,  residualPosTrapZeroNegTrap,
    residualPosTriZeroNegTrap,   residualPosTrapZeroPosTri, residualPosTriZeroPosTri,
    residualPosTriZeroPosTrap,   residualPosTrapZeroPosTrap, residualPosTrapHldNegLin,
    residualPosTriHldNegLin,     residualNegLinHldPosTrap,  residualNegLinHldPosTri,
    residualPosLinHldPosTri,     residualPosLinHldPosTrap,
};

}  // namespace VEKTA_COPY
}  // namespace vekta
