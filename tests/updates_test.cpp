// The parameter updates and the conveyor update through the exported
// functions: their order of effects, their printed lines, and what they leave
// in the records.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "api/sampler.h"
#include "state/planner_state.h"
#include "support/test_support.h"
#include "vekta/vekta.h"

namespace vekta {
namespace {

const double kTgt[6] = {1.0, -0.5, 0.25, 2.0, -1.5, 0.75};
const double kVel[6] = {1.0, 1.5, 2.0, 1.0, 1.2, 0.8};
const double kAcc[6] = {4.0, 3.0, 5.0, 2.0, 6.0, 4.0};
const double kZero[6] = {};
constexpr double kRatio = 10.0;

struct UpdateRun {
    bool ok;
    std::string printed;
};

UpdateRun positionUpdate(int n, const double* tgt = kTgt, const double* pos = kZero,
                         const double* vel = kZero, double spare = 0.0) {
    test::StdoutCapture cap;
    const bool ok = vektaPostionModeParaUpd(n, tgt, kVel, kAcc, kRatio, pos, vel, kZero, spare);
    return {ok, cap.text()};
}

std::string posUpdLine(const AxisPlan& r) {
    char buf[512];
    std::snprintf(buf, sizeof buf, "posUpd: 1st pt %f p %f v %f a %f inv %d peroid %f\n", r.tgtPos,
                  r.curPos, r.curVel, r.curAcc, r.inv, 0.005);
    std::string s = buf;
    for (int i = 0; i < r.pointCount; ++i) {
        std::snprintf(buf, sizeof buf, "(%f %f)", r.secAcc[i], r.secTime[i]);
        s += buf;
    }
    return s + "\n";
}

TEST(Updates, RejectAxisCountsOtherThanOneAndSix) {
    PlannerState& st = defaultState();
    st = PlannerState{};
    ASSERT_TRUE(positionUpdate(6).ok);
    for (int n : {0, 2, 3, 4, 5, 7, -1}) {
        st.newPlan = false;
        const UpdateRun run = positionUpdate(n);
        EXPECT_FALSE(run.ok);
        EXPECT_EQ(run.printed, "vekta: incorrect freedom number-" + std::to_string(n) + "!\n");
        EXPECT_TRUE(st.planFailed);
        EXPECT_TRUE(st.newPlan);
        EXPECT_EQ(st.axisCount, 6);  // unchanged
        double p, v, a;
        int count = -1;
        EXPECT_EQ(vektaPositionModePerFreedom(0, 1, &p, &v, &a, count), 0);
        EXPECT_EQ(count, 0);
    }
    test::StdoutCapture cap;
    EXPECT_FALSE(vektaVelocityModeParaUpd(3, kVel, kAcc, kRatio, kZero, kZero, kZero, 0.0));
    EXPECT_EQ(cap.text(), "vekta: incorrect freedom number-3!\n");
}

TEST(Updates, PositionUpdateCopiesPlansAndPrintsAxisZero) {
    PlannerState& st = defaultState();
    st = PlannerState{};
    const UpdateRun run = positionUpdate(6);
    ASSERT_TRUE(run.ok);
    EXPECT_FALSE(st.planFailed);
    EXPECT_TRUE(st.newPlan);
    EXPECT_EQ(st.axisCount, 6);
    for (int i = 0; i < 6; ++i) {
        const AxisPlan& r = st.records[i];
        EXPECT_EQ(r.maxJerk, kAcc[i] * kRatio);
        EXPECT_EQ(r.tgtPos, kTgt[i]);
        EXPECT_EQ(r.sampleCount, 0);
        EXPECT_EQ(r.secCursor, 1);
    }
    EXPECT_EQ(run.printed, posUpdLine(st.records[0]));

    // The spare argument never matters.
    const UpdateRun again = positionUpdate(6, kTgt, kZero, kZero, 123.0);
    EXPECT_EQ(again.printed, run.printed);
}

TEST(Updates, SingleAxisUsesOnlyTheFirstEntries) {
    PlannerState& st = defaultState();
    st = PlannerState{};
    const UpdateRun run = positionUpdate(1);
    ASSERT_TRUE(run.ok);
    EXPECT_EQ(st.axisCount, 1);
    EXPECT_EQ(st.records[1].pointCount, 0);  // untouched
    EXPECT_EQ(st.records[1].maxVel, 0.0);
}

TEST(Updates, VelocityUpdateKeepsTargetsAndStopsTogether) {
    PlannerState& st = defaultState();
    st = PlannerState{};
    ASSERT_TRUE(positionUpdate(6).ok);
    const double vel[6] = {0.5, -0.7, 1.0, 0.0, 0.3, -0.2};
    test::StdoutCapture cap;
    ASSERT_TRUE(vektaVelocityModeParaUpd(6, kVel, kAcc, kRatio, kZero, vel, kZero, 0.0));
    const std::string printed = cap.text();
    // The update copies no targets; the pass leaves each record in its working
    // frame, so the target reads back as the old one times the frame sign.
    for (int i = 0; i < 6; ++i) EXPECT_EQ(st.records[i].tgtPos * st.records[i].inv, kTgt[i]) << i;
    const AxisPlan& r0 = st.records[0];
    char buf[256];
    std::snprintf(buf, sizeof buf, "velUpd: pt %f p %f v %f a %f inv %d \n", r0.tgtPos, r0.curPos,
                  r0.curVel, r0.curAcc, r0.inv);
    EXPECT_EQ(printed.rfind("Vel Time: max ", 0), 0u);
    EXPECT_NE(printed.find(buf), std::string::npos);
    // All axes stop at the same time, at rest.
    for (int i = 0; i < 6; ++i) {
        const AxisPlan& r = st.records[i];
        test::expectPhysicalCurve(r);
        EXPECT_NEAR(r.secTime[r.pointCount - 1], r0.secTime[r0.pointCount - 1], 1e-9) << i;
        EXPECT_NEAR(r.secVel[r.pointCount - 1], 0.0, 1e-9) << i;
    }
}

TEST(Conveyor, RefusesSilentlyBelowTheMinimumSpare) {
    PlannerState& st = defaultState();
    st = PlannerState{};
    ASSERT_TRUE(positionUpdate(6).ok);
    PlannerState before = st;
    test::StdoutCapture cap;
    EXPECT_FALSE(vektaPostionModeParaUpdConveyor(6, 0.3, 10.0, kTgt, kVel, kAcc, kRatio, 0.001));
    EXPECT_EQ(cap.text(), "");
    EXPECT_EQ(std::memcmp(&before, &st, sizeof st), 0);
}

TEST(Conveyor, ZeroSpeedIsAPositionUpdateFromRest) {
    PlannerState& st = defaultState();
    st = PlannerState{};
    ASSERT_TRUE(positionUpdate(6).ok);
    const PlannerState plain = st;
    test::StdoutCapture cap;
    ASSERT_TRUE(vektaPostionModeParaUpdConveyor(6, 0.0, 10.0, kTgt, kVel, kAcc, kRatio, 0.002));
    for (int i = 0; i < 6; ++i) {
        const AxisPlan &a = plain.records[i], &b = st.records[i];
        ASSERT_EQ(a.pointCount, b.pointCount);
        for (int k = 0; k < a.pointCount; ++k) {
            EXPECT_EQ(a.secTime[k], b.secTime[k]);
            EXPECT_EQ(a.secPos[k], b.secPos[k]);
        }
    }
}

TEST(Conveyor, ShiftsAxisZeroIntoTheFixedFrameAndChecksTheLimit) {
    PlannerState& st = defaultState();
    st = PlannerState{};
    const double cv = 0.3;
    std::string printed;
    {
        test::StdoutCapture cap;
        ASSERT_TRUE(vektaPostionModeParaUpdConveyor(6, cv, 100.0, kTgt, kVel, kAcc, kRatio, 0.01));
        printed = cap.text();
    }
    EXPECT_EQ(printed.rfind("posUpd: 1st pt ", 0), 0u);
    const AxisPlan& r0 = st.records[0];
    const double T = r0.secTime[r0.pointCount - 1];
    EXPECT_EQ(r0.tgtVel, cv);
    EXPECT_NEAR(r0.secVel[r0.pointCount - 1], cv, 1e-12);
    EXPECT_NEAR(r0.secPos[r0.pointCount - 1], kTgt[0] + cv * T, 1e-12);
    EXPECT_NEAR(r0.secVel[0], 0.0, 1e-15);  // starts at rest in the fixed frame
    // Other axes: from rest at 0, not shifted.
    for (int i = 1; i < 6; ++i) {
        const AxisPlan& r = st.records[i];
        EXPECT_EQ(r.secPos[0], 0.0);
        EXPECT_EQ(r.secPos[r.pointCount - 1], kTgt[i]);
        EXPECT_EQ(r.tgtVel, 0.0);
    }
    // Sampling ends with the conveyor's speed.
    double p, v, a;
    int count = 0;
    int finished = 0;
    for (int k = 0; k < 100000 && !finished; ++k) {
        finished = samplePlan(st, 0, 1, &p, &v, &a, count);
    }
    EXPECT_EQ(finished, 1);
    EXPECT_NEAR(v, cv, 1e-12);

    // The limit is inclusive: a target that ends exactly on it fails.
    const double limit = kTgt[0] + T * cv;
    char want[200];
    std::snprintf(want, sizeof want, "vekta: failed to catch up with conveyor-%f+%f>%f\n", kTgt[0], T * cv, limit);
    test::StdoutCapture cap;
    EXPECT_FALSE(vektaPostionModeParaUpdConveyor(6, cv, limit, kTgt, kVel, kAcc, kRatio, 0.01));
    const std::string text = cap.text();
    EXPECT_NE(text.find(want), std::string::npos);
    EXPECT_FALSE(st.planFailed);  // the plan stays; the caller must not sample it
}

}  // namespace
}  // namespace vekta
