// The physical checker must see the faults it exists to catch.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "state/curve_check.h"
#include "support/test_support.h"

namespace vekta {
namespace {

// Rest -> jerk +J for t -> jerk -J for t: acceleration up and back to zero.
AxisPlan pulse(double J, double t) {
    AxisPlan r = test::makeAxis(0.0, 0.0, 0.0, 0.0, 10.0, 10.0, J);
    const double a = J * t;
    r.secTime[1] = t;
    r.secAcc[1] = a;
    r.secVel[1] = J * t * t / 2.0;
    r.secPos[1] = J * t * t * t / 6.0;
    r.secTime[2] = 2 * t;
    r.secAcc[2] = 0.0;
    r.secVel[2] = J * t * t;
    r.secPos[2] = J * t * t * t;
    r.pointCount = 3;
    return r;
}

TEST(CurveCheck, AcceptsAnExactPulse) {
    const CurveReport r = checkCurve(pulse(10.0, 0.2));
    EXPECT_TRUE(r.pointCountValid);
    EXPECT_TRUE(r.finite);
    EXPECT_TRUE(r.timesNonDecreasing);
    EXPECT_EQ(r.sections, 2);
    EXPECT_LT(r.maxVelMismatch, 1e-15);
    EXPECT_LT(r.maxPosMismatch, 1e-15);
    EXPECT_NEAR(r.peakAcc, 2.0, 1e-15);
    EXPECT_NEAR(r.peakJerk, 10.0, 1e-12);
    EXPECT_NEAR(r.endVel, 0.4, 1e-15);
}

TEST(CurveCheck, FindsJumpsBackwardTimesAndBadValues) {
    AxisPlan jump = pulse(10.0, 0.2);
    jump.secPos[2] += 1e-3;
    CurveReport r = checkCurve(jump);
    EXPECT_NEAR(r.maxPosMismatch, 1e-3, 1e-12);
    EXPECT_EQ(r.worstSection, 2);

    AxisPlan back = pulse(10.0, 0.2);
    back.secTime[2] = 0.1;
    EXPECT_FALSE(checkCurve(back).timesNonDecreasing);

    AxisPlan nan = pulse(10.0, 0.2);
    nan.secVel[1] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(checkCurve(nan).finite);

    AxisPlan step = pulse(10.0, 0.2);
    step.secTime[2] = step.secTime[1];
    step.secVel[2] = step.secVel[1];
    step.secPos[2] = step.secPos[1];
    r = checkCurve(step);  // zero-length section with an acceleration step
    EXPECT_NEAR(r.maxAccJump, 2.0, 1e-15);
    EXPECT_LT(r.maxPosMismatch, 1e-15);

    AxisPlan tooMany = pulse(10.0, 0.2);
    tooMany.pointCount = kMaxPoints + 1;
    EXPECT_FALSE(checkCurve(tooMany).pointCountValid);
}

TEST(CurveCheck, SeesAVelocityPeakInsideASection) {
    // Moving at 1 and braking: a -1 -> +1 at jerk 20; velocity is lowest in
    // the middle of the section, where no point is stored.
    AxisPlan r = test::makeAxis(0.0, -1.0, -1.0, 0.0, 10.0, 10.0, 20.0);
    const double t = 0.1;
    r.secTime[1] = t;
    r.secAcc[1] = 1.0;
    r.secVel[1] = -1.0 - t + 10.0 * t * t;
    r.secPos[1] = -t - t * t / 2.0 + 20.0 * t * t * t / 6.0;
    r.pointCount = 2;
    const CurveReport rep = checkCurve(r);
    EXPECT_LT(rep.maxPosMismatch, 1e-15);
    EXPECT_NEAR(rep.peakVel, 1.0 + 0.5 * 0.05, 1e-15);  // |v| at t = 0.05
}

}  // namespace
}  // namespace vekta
