// The four velocity changes: each written curve is integrated section by
// section and must end at the target velocity with zero acceleration at the
// time the shape promises.
#include <gtest/gtest.h>

#include <cmath>

#include "solvers/vel_shapes.h"
#include "support/test_support.h"

namespace vekta {
namespace {

// A record whose curve already holds two points, the second at t = 0.3 being
// the present state, so every shape must append after it.
AxisPlan movingAxis(double v0, double a0, double vt, double A, double J) {
    AxisPlan r = test::makeAxis(0.0, v0, a0, 0.0, 100.0, A, J);
    r.curPos = 0.2;
    r.secTime[1] = 0.3;
    r.secAcc[1] = a0;
    r.secVel[1] = v0;
    r.secPos[1] = 0.2;
    // Point 0 -> 1: a constant-acceleration section that arrives at the present state.
    r.secAcc[0] = a0;
    r.secVel[0] = v0 - a0 * 0.3;
    r.secPos[0] = 0.2 - (v0 - a0 * 0.3) * 0.3 - a0 * 0.09 / 2.0;
    r.pointCount = 2;
    r.tgtVel = vt;
    return r;
}

// Runs a shape the way its caller does: call, then count the last point.
void runShape(VelShapeFn shape, AxisPlan& r, int expectedCounted) {
    const int before = r.pointCount;
    EXPECT_TRUE(shape(r));
    EXPECT_EQ(r.pointCount, before + expectedCounted);
    r.pointCount += 1;
}

TEST(VelShapes, TrapezoidReachesTheLimitAndEndsOnTarget) {
    const double v0 = 0.1, a0 = 0.5, vt = 2.0, A = 2.0, J = 10.0;
    AxisPlan r = movingAxis(v0, a0, vt, A, J);
    runShape(velTrapPulse, r, 2);
    ASSERT_EQ(r.pointCount, 5);
    test::expectPhysicalCurve(r);
    // Velocity gained: ramp a0 -> A, hold A, ramp A -> 0.
    const double t1 = (A - a0) / J;
    const double hold = (vt - v0 - (a0 + A) * t1 / 2.0 - A * A / (2.0 * J)) / A;
    test::expectEndsAt(r, 0.3 + t1 + hold + A / J, r.secPos[4], vt);
    EXPECT_EQ(r.secAcc[2], A);
    EXPECT_EQ(r.secAcc[3], A);
}

TEST(VelShapes, TriangleStaysBelowTheLimit) {
    const double v0 = 1.0, a0 = 0.3, vt = 1.2, A = 2.0, J = 10.0;
    AxisPlan r = movingAxis(v0, a0, vt, A, J);
    runShape(velTriPulse, r, 1);
    ASSERT_EQ(r.pointCount, 4);
    const CurveReport rep = test::expectPhysicalCurve(r);
    EXPECT_LT(rep.peakAcc, A);
    const double peak = std::sqrt(a0 * a0 / 2.0 + (vt - v0) * J);
    test::expectEndsAt(r, 0.3 + (peak - a0) / J + peak / J, r.secPos[3], vt);
}

TEST(VelShapes, MirroredFrameStoresNegatedValuesAndAPlainZero) {
    AxisPlan r = movingAxis(0.1, 0.5, 2.0, 2.0, 10.0);
    r.inv = -1;
    EXPECT_TRUE(velTrapPulse(r));
    EXPECT_EQ(r.secAcc[2], -2.0);
    EXPECT_EQ(r.secVel[4], -2.0);
    EXPECT_EQ(r.secAcc[4], 0.0);
    EXPECT_FALSE(std::signbit(r.secAcc[4]));

    AxisPlan t = movingAxis(1.0, 0.3, 1.2, 2.0, 10.0);
    t.inv = -1;
    EXPECT_TRUE(velTriPulse(t));
    EXPECT_EQ(t.secVel[3], -1.2);
    EXPECT_FALSE(std::signbit(t.secAcc[3]));

    // The given-duration shapes multiply their final zero by the frame sign.
    AxisPlan h = movingAxis(0.0, 0.0, 1.0, 2.0, 10.0);
    h.inv = -1;
    h.remTime = 2.0;
    EXPECT_TRUE(velHoldUp(h));
    EXPECT_EQ(h.secVel[4], -1.0);
    EXPECT_TRUE(std::signbit(h.secAcc[4]));
}

TEST(VelShapes, HoldShapesEndExactlyAtTheGivenTime) {
    struct Case {
        VelShapeFn shape;
        double v0, a0, vt, T;
    };
    const Case cases[] = {
        {velHoldUp, 0.0, 0.0, 1.0, 2.0},    // from rest
        {velHoldUp, -0.5, 0.4, 1.5, 1.5},   // moving, accelerating
        {velHoldDown, 1.0, 1.5, 1.9, 1.0},  // must shed acceleration to a lower level
        {velHoldDown, 0.2, 0.8, 0.3, 2.0},  // hold level close to zero
    };
    for (const Case& c : cases) {
        AxisPlan r = movingAxis(c.v0, c.a0, c.vt, 2.0, 10.0);
        r.remTime = c.T;
        runShape(c.shape, r, 2);
        ASSERT_EQ(r.pointCount, 5);
        test::expectPhysicalCurve(r);
        test::expectEndsAt(r, 0.3 + c.T, r.secPos[4], c.vt);
        EXPECT_EQ(r.secAcc[2], r.secAcc[3]);  // the hold
        EXPECT_GE(r.secTime[3], r.secTime[2]);
    }
}

TEST(VelShapes, HoldUpWithoutRealRootTakesHalfTheRange) {
    // Too much velocity to gain in the time: the discriminant is negative.
    AxisPlan r = movingAxis(0.0, 0.2, 50.0, 2.0, 10.0);
    r.remTime = 0.5;
    EXPECT_TRUE(velHoldUp(r));
    EXPECT_NEAR(r.secAcc[2], (10.0 * 0.5 + 0.2) / 2.0, 1e-12);
}

TEST(VelShapes, HoldDownDividesByZeroWhenTheRampsFillTheTime) {
    const double a0 = 1.0, J = 10.0;
    AxisPlan r = movingAxis(0.0, a0, 1.0, 2.0, J);
    r.remTime = a0 / J;
    EXPECT_TRUE(velHoldDown(r));  // no check: the level is not finite
    EXPECT_FALSE(std::isfinite(r.secAcc[2]));
    EXPECT_EQ(r.pointCount, 4);
}

TEST(VelShapes, HoldDownAtTargetVelocityHoldsZero) {
    AxisPlan r = movingAxis(0.7, 0.0, 0.7, 2.0, 10.0);
    r.remTime = 1.0;
    runShape(velHoldDown, r, 2);
    EXPECT_EQ(r.secAcc[2], 0.0);
    EXPECT_EQ(r.secTime[2], r.secTime[1]);  // zero-length first ramp
    EXPECT_EQ(r.secTime[4], r.secTime[3]);  // zero-length last ramp
    EXPECT_EQ(r.secVel[2], 0.7);
    EXPECT_EQ(r.secVel[3], 0.7);
    EXPECT_EQ(r.secVel[4], 0.7);
    test::expectPhysicalCurve(r);
}

TEST(VelShapes, TableOrder) {
    EXPECT_EQ(velModeSolvers[0], &velTrapPulse);
    EXPECT_EQ(velModeSolvers[1], &velTriPulse);
    EXPECT_EQ(velModeSolvers[2], &velHoldUp);
    EXPECT_EQ(velModeSolvers[3], &velHoldDown);
}

}  // namespace
}  // namespace vekta
