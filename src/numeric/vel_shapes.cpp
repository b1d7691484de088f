// Velocity changes of constant-jerk sections, in closed form.
//
// Every shape ends with a full-jerk ramp of the acceleration down to zero that
// arrives exactly at tgtVel, so its end position is integrated backwards from
// that velocity: a ramp of duration d ending at (vt, 0) at jerk -J covers
// vt*d - J*d^3/6. Each shape writes its points from index pointCount on and
// counts all but the last one; the caller counts the last.
#include "numeric/vel_shapes.h"

#include "numeric/axis_curve.h"
#include "numeric/numerics.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// Position after a ramp of duration t from (p, v, a) at jerk j.
double rampPos(double p, double v, double a, double j, double t) {
    return p + v * t + a * t * t / 2.0 + jerkShare(j, t);
}

// Position at the end of a final ramp of duration d at jerk -J that ends at
// velocity vt with zero acceleration, starting from position p.
double finalRampPos(double p, double vt, double J, double d) { return p + vt * d - J * cube(d) / 6.0; }

// The common tail of the two given-duration shapes: ramp to level c, hold,
// ramp to zero ending at T.
void writeHoldShape(AxisPlan& rec, double t1, double th, double c, double v1, double p1,
                    double v2, double p2, double p3) {
    const int k = rec.pointCount;
    const double t0 = rec.secTime[k - 1];
    const double s = static_cast<double>(rec.inv);
    storePoint(rec, k, t0 + t1, c, v1, p1, s);
    storePoint(rec, k + 1, t0 + th, c, v2, p2, s);
    storePoint(rec, k + 2, t0 + rec.remTime, 0.0, rec.tgtVel, p3, s);
    rec.pointCount = k + 2;
}

}  // namespace

bool velTrapPulse(AxisPlan& rec) {
    const double p0 = rec.curPos, v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double A = rec.maxAcc, J = rec.maxJerk;

    const double t1 = (A - a0) / J;
    const double v1 = v0 + (a0 + A) * t1 / 2.0;
    const double p1 = rampPos(p0, v0, a0, J, t1);
    const double h = (vt - v1) / A - A / (2.0 * J);
    const double th = t1 + h;
    const double tE = th + A / J;
    const double v2 = v1 + A * h;
    const double p2 = p1 + v1 * h + A * h * h / 2.0;
    const double p3 = finalRampPos(p2, vt, J, tE - th);

    const int k = rec.pointCount;
    const double t0 = rec.secTime[k - 1];
    const double s = static_cast<double>(rec.inv);
    storePoint(rec, k, t0 + t1, A, v1, p1, s);
    storePoint(rec, k + 1, t0 + th, A, v2, p2, s);
    storePoint(rec, k + 2, t0 + tE, 0.0, vt, p3, s);
    storeZeroAcc(rec, k + 2);  // a plain +0 whatever the frame
    rec.pointCount = k + 2;
    return true;
}

bool velTriPulse(AxisPlan& rec) {
    const double p0 = rec.curPos, v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double J = rec.maxJerk;

    const double ap = guardedRoot(a0 * a0 / 2.0 + (vt - v0) * J);
    const double t1 = (ap - a0) / J;
    const double t2 = ap / J;
    const double v1 = v0 + (a0 + ap) * t1 / 2.0;
    const double p1 = rampPos(p0, v0, a0, J, t1);
    const double p2 = p1 + v1 * t2 + ap * t2 * t2 / 2.0 - J * cube(t2) / 6.0;

    const int k = rec.pointCount;
    const double t0 = rec.secTime[k - 1];
    const double s = static_cast<double>(rec.inv);
    storePoint(rec, k, t0 + t1, ap, v1, p1, s);
    storePoint(rec, k + 1, t0 + t1 + t2, 0.0, vt, p2, s);
    storeZeroAcc(rec, k + 1);  // a plain +0 whatever the frame
    rec.pointCount = k + 1;
    return true;
}

bool velHoldUp(AxisPlan& rec) {
    const double p0 = rec.curPos, v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double J = rec.maxJerk, T = rec.remTime;

    // The hold level ap is the smaller root of ap^2 - b ap + (a0^2/2 + (vt - v0) J) = 0.
    const double b = J * T + a0;
    const double D = b * b - 4.0 * ((vt - v0) * J + a0 * a0 / 2.0);
    const double root = D > 0.0 ? std::sqrt(D) : kRootGuard;
    const double ap = (b - root) / 2.0;

    const double t1 = (ap - a0) / J;
    const double th = T - ap / J;
    const double h = th - t1;
    const double v1 = v0 + (a0 + ap) * t1 / 2.0;
    const double p1 = rampPos(p0, v0, a0, J, t1);
    const double v2 = v1 + ap * h;
    const double p2 = p1 + v1 * h + ap * h * h / 2.0;
    const double p3 = finalRampPos(p2, vt, J, T - th);
    writeHoldShape(rec, t1, th, ap, v1, p1, v2, p2, p3);
    return true;
}

bool velHoldDown(AxisPlan& rec) {
    const double p0 = rec.curPos, v0 = rec.curVel, a0 = rec.curAcc, vt = rec.tgtVel;
    const double J = rec.maxJerk, T = rec.remTime;

    // The two ramps together last a0/J whatever the level, so the hold lasts
    // T - a0/J and the level follows from the velocity condition alone.
    const double ah = (vt - v0 - a0 * a0 / (2.0 * J)) / (T - a0 / J);
    const double t1 = (a0 - ah) / J;
    const double th = T - ah / J;
    const double h = th - t1;
    const double v1 = v0 + (a0 * a0 - ah * ah) / (2.0 * J);
    const double p1 = rampPos(p0, v0, a0, -J, t1);
    const double v2 = v1 + ah * h;
    const double p2 = p1 + v1 * h + ah * h * h / 2.0;
    const double p3 = finalRampPos(p2, vt, J, T - th);
    writeHoldShape(rec, t1, th, ah, v1, p1, v2, p2, p3);
    return true;
}

const VelShapeFn velModeSolvers[4] = {
    velTrapPulse,  // 0: minimum time, reaches the acceleration limit
    velTriPulse,   // 1: minimum time, peak below the limit
    velHoldUp,     // 2: given duration, level above the start acceleration
    velHoldDown,   // 3: given duration, level below it
};

}  // namespace VEKTA_COPY
}  // namespace vekta
