#include "check/curve_check.h"

#include <cmath>

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

double maxAbs(double m, double x) { return std::fabs(x) > m ? std::fabs(x) : m; }

}  // namespace

SectionReport integrateSection(const AxisPlan& rec, int i) {
    SectionReport s{};
    const double t0 = rec.secTime[i - 1];
    const double a0 = rec.secAcc[i - 1], v0 = rec.secVel[i - 1], p0 = rec.secPos[i - 1];
    s.dt = rec.secTime[i] - t0;
    s.velEnd = v0;
    s.posEnd = p0;
    s.peakVel = std::fabs(v0);
    s.peakVelTime = t0;
    if (s.dt != 0.0) {
        const double dt = s.dt;
        const double j = (rec.secAcc[i] - a0) / dt;
        s.jerk = j;
        s.velEnd = v0 + a0 * dt + j * dt * dt / 2.0;
        s.posEnd = p0 + v0 * dt + a0 * dt * dt / 2.0 + j * dt * dt * dt / 6.0;
        if (std::fabs(s.velEnd) > s.peakVel) {
            s.peakVel = std::fabs(s.velEnd);
            s.peakVelTime = rec.secTime[i];
        }
        // Acceleration is linear in a section; velocity peaks where it crosses zero.
        if (j != 0.0) {
            const double tStar = -a0 / j;
            const double vStar = v0 + a0 * tStar / 2.0;
            if (tStar > 0.0 && tStar < dt && std::fabs(vStar) > s.peakVel) {
                s.peakVel = std::fabs(vStar);
                s.peakVelTime = t0 + tStar;
            }
        }
    }
    return s;
}

CurveReport checkCurve(const AxisPlan& rec) {
    CurveReport r{};
    r.pointCountValid = rec.pointCount >= 1 && rec.pointCount <= kMaxPoints;
    r.finite = true;
    r.timesNonDecreasing = true;
    r.worstSection = -1;  // read only by the messages of a failed check
    if (!r.pointCountValid) return r;

    const int n = rec.pointCount;
    r.sections = n - 1;
    for (int i = 0; i < n; ++i) {
        if (!std::isfinite(rec.secTime[i]) || !std::isfinite(rec.secAcc[i]) ||
            !std::isfinite(rec.secVel[i]) || !std::isfinite(rec.secPos[i])) {
            r.finite = false;
        }
    }
    // The first section's peaks include these; a curve of one point has only them.
    r.peakVel = std::fabs(rec.secVel[0]);
    r.peakAcc = std::fabs(rec.secAcc[0]);

    double worst = -1.0;
    for (int i = 1; i < n; ++i) {
        const SectionReport sec = integrateSection(rec, i);
        if (sec.dt < 0.0) r.timesNonDecreasing = false;
        if (sec.dt == 0.0) {
            r.maxAccJump = maxAbs(r.maxAccJump, rec.secAcc[i] - rec.secAcc[i - 1]);
        } else {
            r.peakJerk = maxAbs(r.peakJerk, sec.jerk);
        }
        r.peakVel = maxAbs(r.peakVel, sec.peakVel);
        r.peakVel = maxAbs(r.peakVel, rec.secVel[i]);
        r.peakAcc = maxAbs(r.peakAcc, rec.secAcc[i]);

        const double dv = std::fabs(sec.velEnd - rec.secVel[i]);
        const double dp = std::fabs(sec.posEnd - rec.secPos[i]);
        r.maxVelMismatch = dv > r.maxVelMismatch ? dv : r.maxVelMismatch;
        r.maxPosMismatch = dp > r.maxPosMismatch ? dp : r.maxPosMismatch;
        if (dv + dp > worst) {
            worst = dv + dp;
            r.worstSection = i;
        }
    }
    r.endTime = rec.secTime[n - 1];
    r.endAcc = rec.secAcc[n - 1];
    r.endVel = rec.secVel[n - 1];
    r.endPos = rec.secPos[n - 1];
    return r;
}

}  // namespace VEKTA_COPY
}  // namespace vekta
