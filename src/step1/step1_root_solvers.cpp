// Step-1 solvers without a closed form (ids 10..21): the minimum-time shapes
// that do not cruise, and those that begin by ramping the present acceleration.
//
// Each shape has one free parameter left once the velocity condition (end at
// vt with zero acceleration) is built in: the peak velocity between the two
// pulses (PTNt, PTNT), the peak acceleration of the positive triangle (PtNT,
// PtNt) or the acceleration at the end of the first, linear section (PLNt,
// PLNT). The ABK root finder searches it in a bracket where every pulse keeps
// within the acceleration limit; the residual is the shape's end position
// minus the target, written in closed form in the parameter. Everything that
// depends only on the record is computed once per planning and kept in
// coefCache (recomputed while coefDirty is set, which the residual clears).
//
// Scaling. ABK accepts |r| < 1e-5 as a root, an absolute bound, and the last
// point is written as exactly (vt, pt), so the residual's unit decides how
// well the last section meets it. The residuals of PTNt, PTNT, PtNT, PtNt and
// PLNt give the end error in millionths of a length scale of the motion,
//     L = |pt - p| + (v^2 + vt^2)/A + A a^2/J^2 + 1e-3 (|p| + |pt|),
// (at least 1e-12 A^3/J^2, so that a move of zero length still has one).
// L bounds the terms summed near the root, so their rounding (a few 1e-16 L,
// about 1e-9 in residual units) stays far below the tolerance, and an
// accepted root ends within 1e-11 L of the target. The coordinate term keeps
// that tolerance above the rounding of the positions themselves: a root that
// sits on a bracket end (a hold or ramp of zero length) must still be seen as
// one, not fall a rounding error outside the bracket. ABK also declares
// convergence once its bracket is 1e-5 wide in the unknown; for unknowns of
// that order (peaks near 1e-3 units) that test, not the residual, limits the
// accuracy. The PLNT residual is the plain end-position error (a quartic
// with fixed coefficients), so by default its end meets the target only to
// ABK's 1e-5, and the axis that sets the common end time stops short of its
// target and ends early. For exact curves it is scaled as the others are, so
// that its root too is good to 1e-11 of that scale (findRoot below).
//
// Variants: ids 10..17 solve the even shape on the negated state and store
// every value negated (times as they are). PLNt and PLNT look at the sign of
// the present acceleration instead and mirror when it is positive; their
// final zero acceleration is stored as a plain +0.
#include <cmath>
#include <cstdio>

#include "numeric/abk.h"
#include "numeric/axis_curve.h"
#include "numeric/numerics.h"
#include "output/text_output.h"
#include "step1/step1_solvers.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// Residual gain: millionths of the motion's length scale per unit of error.
constexpr double kResidualGain = 1e6;
// Share of the coordinates' size in the length scale: positions are only
// resolved to a few 1e-16 of their magnitude, so the tolerance never asks for
// less than 1e-14 of it (a root on a bracket end must survive that rounding).
constexpr double kCoordinateWeight = 1e-3;
// Smallest length scale, relative to A^3/J^2 (a zero-length move has none).
constexpr double kMinMotionScale = 1e-12;

// The root search of every shape here. For an exact curve (recovery mode, the
// library's own calls) a root the search accepted on the width of its
// bracket alone, with a residual above its tolerance, is refined until the
// scaled residual is within kExactResidual: an end within 1e-10 of the
// motion's length scale (refineRoot in numeric/abk.h). A root that met the
// tolerance is already well inside that and costs nothing more.
constexpr double kExactResidual = 1e-4;

template <typename Residual>
bool findRoot(AxisPlan& rec, const Residual& residual, double* x, double lo, double hi) {
    return rec.exact ? abkSolveExact(rec, residual, x, lo, hi, kExactResidual) : abkSolveWith(rec, residual, x, lo, hi);
}

// Gain of the scaled residuals for the record's present (solver-frame) state.
double residualGain(const AxisPlan& rec) {
    const double v = rec.curVel, vt = rec.tgtVel, a = rec.curAcc;
    const double A = rec.maxAcc, J = rec.maxJerk;
    const double floor = kMinMotionScale * cube(A) / (J * J);
    double len = kCoordinateWeight * (std::fabs(rec.tgtPos) + std::fabs(rec.curPos)) +
                 std::fabs(rec.tgtPos - rec.curPos) + (v * v + vt * vt) / A + A * a * a / (J * J);
    if (!(len > floor)) len = floor;
    return kResidualGain / len;
}

// Displacement over a section of duration t from velocity v0, acceleration a0,
// at jerk j.
double rampGain(double v0, double a0, double j, double t) {
    return v0 * t + a0 * t * t / 2.0 + j * cube(t) / 6.0;
}

// Displacement of a positive triangle from (v, a): a -> x at +J, x -> 0 at -J,
// less the part x^3/J^2 + 2 vz x/J that depends on x (vz = v - a^2/(2J)).
double triangleFromStateConst(double v, double a, double J) {
    return -v * a / J + cube(a) / (3.0 * J * J);
}

// ---------------------------------------------------------------- PTNt --
// Unknown w, the peak velocity. Trapezoid (v, a) -> A -> hold -> 0 reaching w,
// then the negative triangle 0 -> -sqrt(J (w - vt)) -> 0 ending at vt:
//   P(w) - pt = K + w^2/(2A) + w A/(2J) + (w + vt) s/J,  s = root(J (w - vt)),
//   K = (p - pt) + gain(a -> A) - v1^2/(2A) - A^3/(24 J^2).
// coefCache: 0 K, 1 1/(2A), 2 A/(2J), 3 vt, 4 J, 5 gain.
[[gnu::always_inline]] inline double residualPTNt(AxisPlan& rec, const double* wp) {
    double* c = rec.coefCache;
    if (rec.coefDirty) {
        const double v = rec.curVel, a = rec.curAcc, A = rec.maxAcc, J = rec.maxJerk;
        const double t1 = (A - a) / J;
        const double v1 = v + (A + a) * t1 / 2.0;
        c[0] = (rec.curPos - rec.tgtPos) + rampGain(v, a, J, t1) - v1 * v1 / (2.0 * A) -
               cube(A) / (24.0 * J * J);
        c[1] = 1.0 / (2.0 * A);
        c[2] = A / (2.0 * J);
        c[3] = rec.tgtVel;
        c[4] = J;
        c[5] = residualGain(rec);
        rec.coefDirty = false;
    }
    const double w = *wp;
    const double s = guardedRoot(c[4] * (w - c[3]));
    return c[5] * (c[0] + w * w * c[1] + w * c[2] + (w + c[3]) * s / c[4]);
}

// ---------------------------------------------------------------- PTNT --
// Unknown x, the peak velocity; both pulses reach A:
//   P(x) - pt = x^2/A + x A/J + K,
//   K = (p - pt) + gain(a -> A) - (v1^2 + v5^2)/(2A) + A^3/(12 J^2) + vt A/J,
// with v1 = v + (A^2 - a^2)/(2J) and v5 = vt + A^2/(2J).
// coefCache: 0 K, 1 1/A, 2 A/J, 3 gain.
[[gnu::always_inline]] inline double residualPTNT(AxisPlan& rec, const double* xp) {
    double* c = rec.coefCache;
    if (rec.coefDirty) {
        const double v = rec.curVel, vt = rec.tgtVel, a = rec.curAcc;
        const double A = rec.maxAcc, J = rec.maxJerk;
        const double t1 = (A - a) / J;
        const double v1 = v + (A + a) * t1 / 2.0;
        const double v5 = vt + A * A / (2.0 * J);
        c[0] = (rec.curPos - rec.tgtPos) + rampGain(v, a, J, t1) - (v1 * v1 + v5 * v5) / (2.0 * A) +
               cube(A) / (12.0 * J * J) + vt * A / J;
        c[1] = 1.0 / A;
        c[2] = A / J;
        c[3] = residualGain(rec);
        rec.coefDirty = false;
    }
    const double x = *xp;
    return c[3] * (x * x * c[1] + x * c[2] + c[0]);
}

// ---------------------------------------------------------------- PtNT --
// Unknown x, the peak of the positive triangle, which ends at w = vz + x^2/J;
// then the negative trapezoid from w to vt covers (w + vt)/2 ((w - vt)/A + A/J).
// As a polynomial:
//   P(x) - pt = x^4/(2 A J^2) + x^3/J^2 + x^2 (vz/(A J) + A/(2 J^2)) + 2 vz x/J + C,
//   C = (p - pt) - v a/J + a^3/(3 J^2) + (vz^2 - vt^2)/(2A) + (vz + vt) A/(2J).
// coefCache: 0..4 the coefficients of x^4 .. x^0, 5 gain.
[[gnu::always_inline]] inline double residualPtNT(AxisPlan& rec, const double* xp) {
    double* c = rec.coefCache;
    if (rec.coefDirty) {
        const double v = rec.curVel, vt = rec.tgtVel, a = rec.curAcc;
        const double A = rec.maxAcc, J = rec.maxJerk;
        const double vz = v - a * a / (2.0 * J);
        c[0] = 1.0 / (2.0 * A * J * J);
        c[1] = 1.0 / (J * J);
        c[2] = vz / (A * J) + A / (2.0 * J * J);
        c[3] = 2.0 * vz / J;
        c[4] = (rec.curPos - rec.tgtPos) + triangleFromStateConst(v, a, J) +
               (vz * vz - vt * vt) / (2.0 * A) + (vz + vt) * A / (2.0 * J);
        c[5] = residualGain(rec);
        rec.coefDirty = false;
    }
    const double x = *xp;
    return c[5] * ((((c[0] * x + c[1]) * x + c[2]) * x + c[3]) * x + c[4]);
}

// ---------------------------------------------------------------- PtNt --
// Unknown x, the peak of the positive triangle (ends at w = vz + x^2/J); the
// negative triangle with peak s = root(J (w - vt)) covers (w + vt) s/J:
//   P(x) - pt = C + x^3/J^2 + 2 vz x/J + (w + vt) s/J,
//   C = (p - pt) - v a/J + a^3/(3 J^2).
// coefCache: 0 C, 1 1/J^2, 2 2 vz/J, 3 vz, 4 vt, 5 J, 6 gain.
[[gnu::always_inline]] inline double residualPtNt(AxisPlan& rec, const double* xp) {
    double* c = rec.coefCache;
    if (rec.coefDirty) {
        const double v = rec.curVel, a = rec.curAcc, J = rec.maxJerk;
        const double vz = v - a * a / (2.0 * J);
        c[0] = (rec.curPos - rec.tgtPos) + triangleFromStateConst(v, a, J);
        c[1] = 1.0 / (J * J);
        c[2] = 2.0 * vz / J;
        c[3] = vz;
        c[4] = rec.tgtVel;
        c[5] = J;
        c[6] = residualGain(rec);
        rec.coefDirty = false;
    }
    const double x = *xp;
    const double w = c[3] + x * x / c[5];
    const double s = guardedRoot(c[5] * (w - c[4]));
    return c[6] * (c[0] + cube(x) * c[1] + c[2] * x + (w + c[4]) * s / c[5]);
}

// ---------------------------------------------------------------- PLNt --
// State with a <= 0 that must still lose d/J of velocity after zeroing its
// acceleration, d = (v - vt) J - a^2/2 >= 0. Unknown x, between a and 0:
// the acceleration at the end of the first section (its local peak, still
// negative): a -> x at +J, x -> -q at -J, -q -> 0 at +J ending at vt, where
// the velocity condition gives q = sqrt(x^2 + d). x = 0 zeroes the
// acceleration before a plain negative triangle; lowering x brakes earlier
// and deeper, until q reaches A at x = -sqrt(A^2 - d).
//   P(x) - pt = C + x^3/J^2 + 2 vz x/J + q (2 vz/J + 2 x^2/J^2) - q^3/J^2,
//   C = (p - pt) - v a/J + a^3/(3 J^2).
// coefCache: 0 C, 1 1/J^2, 2 2 vz/J, 3 d, 4 gain.
[[gnu::always_inline]] inline double residualPLNt(AxisPlan& rec, const double* xp) {
    double* c = rec.coefCache;
    if (rec.coefDirty) {
        const double v = rec.curVel, a = rec.curAcc, J = rec.maxJerk;
        const double vz = v - a * a / (2.0 * J);
        c[0] = (rec.curPos - rec.tgtPos) + triangleFromStateConst(v, a, J);
        c[1] = 1.0 / (J * J);
        c[2] = 2.0 * vz / J;
        c[3] = (v - rec.tgtVel) * J - a * a / 2.0;
        c[4] = residualGain(rec);
        rec.coefDirty = false;
    }
    const double x = *xp;
    const double q = guardedRoot(x * x + c[3]);
    return c[4] * (c[0] + cube(x) * c[1] + c[2] * x + q * (c[2] + 2.0 * x * x * c[1]) -
                   cube(q) * c[1]);
}

// ---------------------------------------------------------------- PLNT --
// As PLNt, but the closing pulse reaches -A and holds it: a -> x at +J,
// x -> -A at -J, hold -A, -A -> 0 at +J. The end-position error is a quartic
// in x with ten cached coefficients (coefCache 0..9, c0 unused by r).
double residualPLNT(AxisPlan& rec, const double* xp) {
    double* c = rec.coefCache;
    const double A = rec.maxAcc;
    if (rec.coefDirty) {
        const double p = rec.curPos, pt = rec.tgtPos, v = rec.curVel, vt = rec.tgtVel;
        const double a = rec.curAcc, J = rec.maxJerk;
        c[0] = J * J;
        c[1] = 1.0 / c[0];
        c[2] = J * v;
        c[3] = a * a;
        c[4] = 4.0 * a * a;
        c[5] = 4.0 * J * J;
        c[6] = 6.0 * A;
        c[7] = 12.0 * J * J;
        c[8] = 4.0 * std::pow(a, 3.0) - 12.0 * a * c[2] + c[7] * p - 3.0 * A * c[3] +
               J * vt * c[6] - c[7] * pt + c[6] * c[2];
        c[9] = c[5] * v * v + std::pow(a, 4.0) - c[5] * vt * vt - c[4] * c[2];
        c[10] = rec.exact ? residualGain(rec) : 1.0;  // read only for an exact curve
        rec.coefDirty = false;
    }
    const double x = *xp;
    const double error = (4.0 * std::pow(x, 4.0) + x * x * (8.0 * c[2] - c[4]) + c[9]) * c[1] / (8.0 * A) +
                         ((24.0 * c[2] - 12.0 * c[3]) * x + c[8] + c[6] * x * x + 12.0 * std::pow(x, 3.0)) *
                             c[1] / 12.0;
    return rec.exact ? c[10] * error : error;
}

// Writes the final point (vt, pt) at rest; `zeroSign` is the sign the zero
// acceleration is stored with.
void storeLast(AxisPlan& rec, int k, double t, double sign, double zeroSign) {
    storePoint(rec, k, t, 0.0, rec.tgtVel, rec.tgtPos, sign);
    storeZeroAcc(rec, k, zeroSign);
}

}  // namespace

bool solveStep1PTNt(AxisPlan& rec, bool variant) {
    if (variant) negateState(rec);
    const double sign = variant ? -1.0 : 1.0;
    const double p = rec.curPos, v = rec.curVel, vt = rec.tgtVel, a = rec.curAcc;
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk;

    // From the peak velocity where the positive pulse just reaches A up to the
    // one where the negative triangle would reach it (or the velocity limit).
    const double lo = std::fmax(v + (2.0 * A * A - a * a) / (2.0 * J), vt);
    const double hi = std::fmin(V, vt + A * A / J);
    double w = 0.0;
    if (!findRoot(rec, [&rec](double t) { return residualPTNt(rec, &t); }, &w, lo, hi)) return false;

    const double t1 = (A - a) / J;
    const double v1 = v + (A + a) * t1 / 2.0;
    const double p1 = p + rampGain(v, a, J, t1);
    // The hold at A; a root on the bracket's lower end leaves it at zero up
    // to rounding, which must not make the curve step back in time.
    const double h = std::fmax(0.0, (w - v1) / A - A / (2.0 * J));
    const double e2 = t1 + h;
    const double v2 = v1 + A * h;
    const double p2 = p1 + v1 * h + A * h * h / 2.0;
    const double tA = A / J;
    const double e3 = e2 + tA;
    const double p3 = p2 + rampGain(v2, A, -J, tA);
    const double an = guardedRoot(J * (w - vt));
    const double tn = an / J;
    const double e4 = e3 + tn;
    const double v4 = w - an * tn / 2.0;
    const double p4 = p3 + rampGain(w, 0.0, -J, tn);

    const int k = rec.pointCount;
    const double t0 = rec.secTime[k - 1];
    storePoint(rec, k, t0 + t1, A, v1, p1, sign);
    storePoint(rec, k + 1, t0 + e2, A, v2, p2, sign);
    storePoint(rec, k + 2, t0 + e3, 0.0, w, p3, sign);
    storePoint(rec, k + 3, t0 + e4, -an, v4, p4, sign);
    storeLast(rec, k + 4, t0 + e4 + tn, sign, sign);
    rec.pointCount = k + 4;
    return true;
}

bool solveStep1PTNT(AxisPlan& rec, bool variant) {
    if (variant) negateState(rec);
    const double sign = variant ? -1.0 : 1.0;
    const double p = rec.curPos, v = rec.curVel, vt = rec.tgtVel, a = rec.curAcc;
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk;

    // Both pulses must reach A: the peak velocity is at least the larger of
    // the two velocities at which each trapezoid's hold shrinks to zero.
    const double hi = V;
    const double lo = v - a * a / (2.0 * J) <= vt ? vt + A * A / J
                                                  : v + (2.0 * A * A - a * a) / (2.0 * J);
    double x = 0.0;
    if (!findRoot(rec, [&rec](double t) { return residualPTNT(rec, &t); }, &x, lo, hi)) return false;

    const double t1 = (A - a) / J;
    const double v1 = v + (A + a) * t1 / 2.0;
    const double e2 = t1 + (x - v1) / A - A / (2.0 * J);
    const double v2 = v1 + A * (e2 - t1);
    const double e3 = e2 + A / J;
    const double e4 = e3 + A / J;
    const double vA = x - A * A / (2.0 * J);
    const double e5 = (e2 + e4 - t1) - (a * a / (2.0 * J) + vt - v) / A;
    const double v5 = vA - A * (e5 - e4);
    const double p1 = p + v * t1 + a * t1 * t1 / 2.0 + J * cube(t1) / 6.0;
    const double p2 = p1 + (v2 * v2 - v1 * v1) / (2.0 * A);
    const double p3 = p2 + v2 * (e3 - e2) + A * (e3 - e2) * (e3 - e2) / 2.0 - J * cube(e3 - e2) / 6.0;
    const double p4 = p3 + x * (e4 - e3) - J * cube(e4 - e3) / 6.0;
    const double p5 = p4 - (v5 * v5 - vA * vA) / (2.0 * A);

    const int k = rec.pointCount;
    const double t0 = rec.secTime[k - 1];
    storePoint(rec, k, t0 + t1, A, v1, p1, sign);
    storePoint(rec, k + 1, t0 + e2, A, v2, p2, sign);
    storePoint(rec, k + 2, t0 + e3, 0.0, x, p3, sign);
    storePoint(rec, k + 3, t0 + e4, -A, vA, p4, sign);
    storePoint(rec, k + 4, t0 + e5, -A, v5, p5, sign);
    storeLast(rec, k + 5, t0 + e5 + A / J, sign, sign);
    rec.pointCount = k + 5;
    return true;
}

bool solveStep1PtNT(AxisPlan& rec, bool variant) {
    if (variant) negateState(rec);
    const double sign = variant ? -1.0 : 1.0;
    const double p = rec.curPos, v = rec.curVel, vt = rec.tgtVel, a = rec.curAcc;
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk;

    // The smallest peak for which the negative pulse still reaches A.
    const double s = A * A + a * a / 2.0 + J * (vt - v);
    double lo;
    if (s >= 0.0) {
        lo = guardedRoot(s);
    } else {
        lo = a > 0.0 ? a : 0.0;
    }
    if (lo > A * kPeakSlack) {
        printTo(rec.sink, "S1 PtNT error: (amin=%e) >= (Am=%e)", lo, A);
        return false;
    }
    // A triangle peaking at A would pass the velocity limit: cap the peak there.
    double hi = A;
    if (V < v + (2.0 * A * A - a * a) / (2.0 * J)) hi = guardedRoot(J * (V - v) + a * a / 2.0);
    double x = 0.0;
    if (!findRoot(rec, [&rec](double t) { return residualPtNT(rec, &t); }, &x, lo, hi)) return false;

    const double t1 = (x - a) / J;
    const double v1 = v + (x + a) * t1 / 2.0;
    const double p1 = p + rampGain(v, a, J, t1);
    const double t2 = x / J;
    const double w = v1 + x * t2 / 2.0;
    const double p2 = p1 + rampGain(v1, x, -J, t2);
    const double tA = A / J;
    const double e3 = t1 + t2 + tA;
    const double v3 = w - A * tA / 2.0;
    const double p3 = p2 + rampGain(w, 0.0, -J, tA);
    const double hn = std::fmax(0.0, (w - vt) / A - A / J);  // zero at lo, up to rounding
    const double e4 = e3 + hn;
    const double v4 = v3 - A * hn;
    const double p4 = p3 + v3 * hn - A * hn * hn / 2.0;

    const int k = rec.pointCount;
    const double t0 = rec.secTime[k - 1];
    storePoint(rec, k, t0 + t1, x, v1, p1, sign);
    storePoint(rec, k + 1, t0 + t1 + t2, 0.0, w, p2, sign);
    storePoint(rec, k + 2, t0 + e3, -A, v3, p3, sign);
    storePoint(rec, k + 3, t0 + e4, -A, v4, p4, sign);
    storeLast(rec, k + 4, t0 + e4 + tA, sign, sign);
    rec.pointCount = k + 4;
    return true;
}

bool solveStep1PtNt(AxisPlan& rec, bool variant) {
    if (variant) negateState(rec);
    const double sign = variant ? -1.0 : 1.0;
    const double p = rec.curPos, v = rec.curVel, vt = rec.tgtVel, a = rec.curAcc;
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk;

    // The peak x of the positive triangle ends that pulse at vz + x^2/J (vz:
    // the velocity once a is ramped to zero). It is bounded below by reaching
    // vt at all and above by A, the velocity limit and the negative triangle's
    // own peak A.
    double lo, hi;
    if (a > 0.0) {
        lo = v + a * a / (2.0 * J) <= vt ? guardedRoot(J * (vt - v) + a * a / 2.0) : a;
        hi = std::fmin(A, std::fmin(guardedRoot(J * (V - v) + a * a / 2.0),
                                    guardedRoot(A * A + J * (vt - v) + a * a / 2.0)));
    } else {
        const double vz = v - a * a / (2.0 * J);
        if (vt < vz) {
            lo = 0.0;
            hi = std::fmin(A, std::fmin(guardedRoot(J * (V - vz)), guardedRoot(A * A + J * (vt - vz))));
        } else {
            lo = guardedRoot(J * (vt - vz));
            hi = std::fmin(A, guardedRoot(J * (V - vz)));
        }
    }
    double x = 0.0;
    if (!findRoot(rec, [&rec](double t) { return residualPtNt(rec, &t); }, &x, lo, hi)) return false;

    const double t1 = (x - a) / J;
    const double v1 = v + (x + a) * t1 / 2.0;
    const double p1 = p + rampGain(v, a, J, t1);
    const double t2 = x / J;
    const double w = v1 + x * t2 / 2.0;
    const double p2 = p1 + rampGain(v1, x, -J, t2);
    const double an = guardedRoot(J * (w - vt));
    const double tn = an / J;
    const double v3 = w - an * tn / 2.0;
    const double p3 = p2 + rampGain(w, 0.0, -J, tn);

    const int k = rec.pointCount;
    const double t0 = rec.secTime[k - 1];
    storePoint(rec, k, t0 + t1, x, v1, p1, sign);
    storePoint(rec, k + 1, t0 + t1 + t2, 0.0, w, p2, sign);
    storePoint(rec, k + 2, t0 + t1 + t2 + tn, -an, v3, p3, sign);
    storeLast(rec, k + 3, t0 + t1 + t2 + 2.0 * tn, sign, sign);
    rec.pointCount = k + 3;
    return true;
}

namespace {

// How solvePLNt brackets the peak.
enum class PLNtBracket { Table, Whole };

// The PLNt solve. The peak x of a valid shape lies in
//     [max(a, -sqrt(A^2 - d)), 0]:
// x >= a because the first section ramps a up to x at +J and cannot last a
// negative time; x >= -sqrt(A^2 - d) because the closing triangle peaks at
// q = sqrt(x^2 + d), which must not pass A; and x <= 0, the acceleration
// being still negative where the first section ends. The table bracket takes
// the second bound when it is the larger one, but puts the lower end at
// -1e-50 (the guard) otherwise, where the first bound binds: then every peak
// below zero is left out. That is the case of every state node 33 sends here
// (its triangle from a stays below A, so a > -sqrt(A^2 - d)), and their peak
// lies between a and 0: node 29 found the target short of the triangle that
// starts from a (x = a), node 33 beyond the release-then-triangle chain
// (x = 0), so the residual changes sign inside. Whole searches the whole
// range.
bool solvePLNt(AxisPlan& rec, PLNtBracket bracket) {
    const bool mirrored = rec.curAcc > 0.0;
    if (mirrored) negateState(rec);
    const double sign = mirrored ? -1.0 : 1.0;
    const double p = rec.curPos, v = rec.curVel, vt = rec.tgtVel, a = rec.curAcc;
    const double A = rec.maxAcc, J = rec.maxJerk;

    // Velocity still to lose once the acceleration is back at zero, times J.
    const double d = (v - vt) * J - a * a / 2.0;
    if (!(d >= 0.0)) {
        printTo(rec.sink, "S1 PLNt error: %e >= 0", d);
        return false;
    }
    // Lowering x deepens the closing triangle (q^2 = x^2 + d); it reaches A at
    // x = -sqrt(A^2 - d).
    const double lo = bracket == PLNtBracket::Whole ? std::fmax(a, -guardedRoot(A * A - d))
                      : A * A < (v - vt) * J + a * a / 2.0
                          ? -guardedRoot(A * A + a * a / 2.0 - (v - vt) * J)
                          : -kRootGuard;
    double x = 0.0;
    if (!findRoot(rec, [&rec](double t) { return residualPLNt(rec, &t); }, &x, lo, 0.0)) return false;

    const double t1 = (x - a) / J;
    const double v1 = v + (x + a) * t1 / 2.0;
    const double p1 = p + rampGain(v, a, J, t1);
    const double q = guardedRoot(x * x + d);
    const double t2 = (x + q) / J;
    const double v2 = v1 + (x - q) * t2 / 2.0;
    const double p2 = p1 + rampGain(v1, x, -J, t2);
    const double t3 = q / J;

    const int k = rec.pointCount;
    const double t0 = rec.secTime[k - 1];
    storePoint(rec, k, t0 + t1, x, v1, p1, sign);
    storePoint(rec, k + 1, t0 + t1 + t2, -q, v2, p2, sign);
    storeLast(rec, k + 2, t0 + t1 + t2 + t3, sign, 1.0);
    rec.pointCount = k + 2;
    return true;
}

}  // namespace

bool solveStep1PLNt(AxisPlan& rec) { return solvePLNt(rec, PLNtBracket::Table); }

bool solveStep1PLNtWhole(AxisPlan& rec) { return solvePLNt(rec, PLNtBracket::Whole); }

bool solveStep1PLNT(AxisPlan& rec) {
    const bool mirrored = rec.curAcc > 0.0;
    if (mirrored) negateState(rec);
    const double sign = mirrored ? -1.0 : 1.0;
    const double p = rec.curPos, v = rec.curVel, vt = rec.tgtVel, a = rec.curAcc;
    const double A = rec.maxAcc, J = rec.maxJerk;

    const double hi = 0.0;
    double lo;
    if (2.0 * J * v + (a * a - 2.0 * A * A) - 2.0 * J * vt <= 0.0) {
        lo = -guardedRoot(A * A + a * a / 2.0 - (v - vt) * J);
    } else {
        lo = a;
    }
    double x = 0.0;
    if (!findRoot(rec, [&rec](double t) { return residualPLNT(rec, &t); }, &x, lo, hi)) return false;

    const double t1 = (x - a) / J;
    const double t2 = (x + A) / J;
    const double e2 = t1 + t2;
    const double v1 = v + (x + a) * t1 / 2.0;
    const double v2 = v1 + (x - A) * t2 / 2.0;
    const double vh = vt + A * A / (2.0 * J);
    const double eh = e2 - (vh - v2) / A;
    const double h = eh - e2;
    const double p1 = p + v * t1 + a * t1 * t1 / 2.0 + J * cube(t1) / 6.0;
    const double p2 = p1 + v1 * t2 + x * t2 * t2 / 2.0 - J * cube(t2) / 6.0;
    const double p3 = p2 + v2 * h - A * h * h / 2.0;

    const int k = rec.pointCount;
    const double t0 = rec.secTime[k - 1];
    storePoint(rec, k, t0 + t1, x, v1, p1, sign);
    storePoint(rec, k + 1, t0 + e2, -A, v2, p2, sign);
    storePoint(rec, k + 2, t0 + eh, -A, vh, p3, sign);
    storeLast(rec, k + 3, t0 + eh + A / J, sign, 1.0);
    rec.pointCount = k + 3;
    return true;
}

}  // namespace VEKTA_COPY
}  // namespace vekta
