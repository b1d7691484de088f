// Curve operations on one record: the stored frame, the order of the zeroing
// section's integration, and its bookkeeping.
#include <gtest/gtest.h>

#include <cmath>

#include "state/planner_state.h"
#include "support/test_support.h"

namespace vekta {
namespace {

TEST(PlannerState, AppendPointStoresTheCallersFrame) {
    AxisPlan rec = test::makeAxis(1.5, 2.0, -3.0, 0.0, 10.0, 10.0, 100.0);
    rec.planTime = 0.25;
    rec.inv = -1;
    appendPoint(rec);
    EXPECT_EQ(rec.pointCount, 2);
    EXPECT_EQ(rec.secTime[1], 0.25);
    EXPECT_EQ(rec.secPos[1], -1.5);
    EXPECT_EQ(rec.secVel[1], -2.0);
    EXPECT_EQ(rec.secAcc[1], 3.0);
    // The working state itself stays in the mirrored frame.
    EXPECT_EQ(rec.curVel, 2.0);
}

TEST(PlannerState, AppendAccToZeroIntegratesTheRampExactly) {
    AxisPlan rec = test::makeAxis(0.5, 1.0, 4.0, 0.0, 10.0, 10.0, 50.0);
    rec.remTime = 1.0;
    const int count = appendAccToZero(rec);
    const double dt = 4.0 / 50.0;
    EXPECT_EQ(count, 2);
    EXPECT_EQ(rec.pointCount, 2);
    EXPECT_EQ(rec.planTime, dt);
    EXPECT_EQ(rec.remTime, 1.0 - dt);
    EXPECT_EQ(rec.curAcc, 0.0);
    EXPECT_EQ(rec.curVel, 1.0 + 0.5 * 4.0 * dt);
    EXPECT_EQ(rec.curPos, 0.5 + 1.0 * dt + 0.5 * 4.0 * dt * dt - 50.0 * std::pow(dt, 3.0) / 6.0);
    test::expectPhysicalCurve(rec);
    EXPECT_EQ(rec.secVel[1], rec.curVel);
    EXPECT_EQ(rec.secPos[1], rec.curPos);
}

TEST(PlannerState, AppendAccToZeroFromRestAppendsAZeroLengthSection) {
    AxisPlan rec = test::makeAxis(2.0, -1.0, 0.0, 0.0, 10.0, 10.0, 50.0);
    rec.inv = -1;
    rec.planTime = 0.4;
    rec.secTime[0] = 0.4;
    appendAccToZero(rec);
    EXPECT_EQ(rec.pointCount, 2);
    EXPECT_EQ(rec.secTime[1], rec.secTime[0]);
    EXPECT_EQ(rec.secVel[1], 1.0);
    EXPECT_EQ(rec.secPos[1], -2.0);
    // Zero times a negative frame sign is a negative zero.
    EXPECT_EQ(rec.secAcc[1], 0.0);
    EXPECT_TRUE(std::signbit(rec.secAcc[1]));
}

TEST(PlannerState, MirrorNegatesTheFiveStateFieldsAndTheFrame) {
    AxisPlan rec = test::makeAxis(1.0, 2.0, 3.0, 4.0, 10.0, 10.0, 50.0);
    rec.tgtVel = 5.0;
    mirrorAxis(rec);
    EXPECT_EQ(rec.curPos, -1.0);
    EXPECT_EQ(rec.curVel, -2.0);
    EXPECT_EQ(rec.curAcc, -3.0);
    EXPECT_EQ(rec.tgtPos, -4.0);
    EXPECT_EQ(rec.tgtVel, -5.0);
    EXPECT_EQ(rec.inv, -1);
    EXPECT_EQ(rec.maxVel, 10.0);
    negateState(rec);
    EXPECT_EQ(rec.curPos, 1.0);
    EXPECT_EQ(rec.inv, -1);
}

}  // namespace
}  // namespace vekta
