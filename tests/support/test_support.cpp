#include "support/test_support.h"

#include <algorithm>
#include <cmath>

#include "double_s.h"

namespace vekta::test {

std::unique_ptr<PlannerState> freshState() { return std::make_unique<PlannerState>(); }

AxisPlan makeAxis(double pos, double vel, double acc, double tgtPos, double maxVel,
                  double maxAcc, double maxJerk) {
    AxisPlan r{};
    r.curPos = pos;
    r.curVel = vel;
    r.curAcc = acc;
    r.tgtPos = tgtPos;
    r.maxVel = maxVel;
    r.maxAcc = maxAcc;
    r.maxJerk = maxJerk;
    r.inv = 1;
    r.pointCount = 1;
    r.secTime[0] = 0.0;
    r.secAcc[0] = acc;
    r.secVel[0] = vel;
    r.secPos[0] = pos;
    r.coefDirty = true;
    return r;
}

namespace {

// The size of the motion, used to turn relative tolerances into absolute ones.
double motionScale(const AxisPlan& rec) {
    double s = 1.0;
    for (int i = 0; i < rec.pointCount && i < kMaxPoints; ++i) {
        s = std::max({s, std::fabs(rec.secPos[i]), std::fabs(rec.secVel[i]),
                      std::fabs(rec.secAcc[i])});
    }
    return s;
}

}  // namespace

CurveReport expectPhysicalCurve(const AxisPlan& rec, bool checkVel, CurveTolerance tol) {
    const CurveReport r = checkCurve(rec);
    EXPECT_TRUE(r.pointCountValid) << "pointCount " << rec.pointCount;
    if (!r.pointCountValid) return r;
    const double scale = motionScale(rec);
    EXPECT_TRUE(r.finite);
    EXPECT_TRUE(r.timesNonDecreasing);
    EXPECT_LE(r.maxVelMismatch, tol.rel * scale) << "velocity jump at point " << r.worstSection;
    EXPECT_LE(r.maxPosMismatch, tol.rel * scale) << "position jump at point " << r.worstSection;
    EXPECT_LE(r.peakAcc, rec.maxAcc * (1.0 + tol.limitRel));
    EXPECT_LE(r.peakJerk, rec.maxJerk * (1.0 + tol.limitRel));
    if (checkVel) {
        EXPECT_LE(r.peakVel, rec.maxVel * (1.0 + tol.limitRel));
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
