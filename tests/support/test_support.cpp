#include "support/test_support.h"

#include <algorithm>
#include <cmath>

#include "double_s.h"

namespace vekta::test {

AxisPlan makeAxis(double pos, double vel, double acc, double tgtPos, double maxVel,
                  double maxAcc, double maxJerk) {
    AxisPlan r{};
    r.curPos = r.secPos[0] = pos;
    r.curVel = r.secVel[0] = vel;
    r.curAcc = r.secAcc[0] = acc;
    r.tgtPos = tgtPos;
    r.maxVel = maxVel;
    r.maxAcc = maxAcc;
    r.maxJerk = maxJerk;
    r.inv = 1;
    r.pointCount = 1;
    r.coefDirty = true;
    return r;
}

AxisPlan widened(AxisPlan rec, double v0, double a0) {
    rec.maxAcc = std::max(rec.maxAcc, std::fabs(a0));
    rec.maxVel = std::max({rec.maxVel, std::fabs(v0), std::fabs(v0 + a0 * std::fabs(a0) / (2.0 * rec.maxJerk))});
    return rec;
}

CurveReport expectPhysicalCurve(const AxisPlan& rec, bool checkVel, CurveTolerance tol) {
    const CurveReport r = checkCurve(rec);
    EXPECT_TRUE(r.pointCountValid) << "pointCount " << rec.pointCount;
    if (!r.pointCountValid) return r;
    // The size of the motion, which turns relative tolerances into absolute ones.
    double scale = 1.0;
    for (int i = 0; i < rec.pointCount; ++i) {
        scale = std::max({scale, std::fabs(rec.secPos[i]), std::fabs(rec.secVel[i]), std::fabs(rec.secAcc[i])});
    }
    const double slack = 1.0 + tol.limitRel;
    EXPECT_TRUE(r.finite);
    EXPECT_TRUE(r.timesNonDecreasing);
    EXPECT_LE(r.maxVelMismatch, tol.rel * scale) << "velocity jump at point " << r.worstSection;
    EXPECT_LE(r.maxPosMismatch, tol.rel * scale) << "position jump at point " << r.worstSection;
    EXPECT_LE(r.peakAcc, rec.maxAcc * slack);
    EXPECT_LE(r.peakJerk, rec.maxJerk * slack);
    if (checkVel) {
        EXPECT_LE(r.peakVel, rec.maxVel * slack);
    }
    return r;
}

void expectEndsAt(const AxisPlan& rec, double time, double pos, double vel, double tol) {
    ASSERT_GE(rec.pointCount, 1);
    const int last = rec.pointCount - 1;
    EXPECT_NEAR(rec.secTime[last], time, tol);
    EXPECT_NEAR(rec.secPos[last], pos, tol);
    EXPECT_NEAR(rec.secVel[last], vel, tol);
    EXPECT_EQ(rec.secAcc[last], 0.0);
}

double doubleSDuration(double distance, double V, double A, double J) {
    return sweep::doubleSDuration(distance, V, A, J);
}

}  // namespace vekta::test
