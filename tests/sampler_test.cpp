// The sampler, driven through the exported functions on a hand-filled curve
// in the process-wide state, period by period to the end and beyond.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "state/planner_state.h"
#include "support/test_support.h"
#include "vekta/vekta.h"

namespace vekta {
namespace {

// Axis 0's curve: jerk +100 for 4 periods (0 -> 2), a zero-length section,
// constant acceleration 2 until 0.0325 (between two periods), then jerk -200
// down to zero at 0.0425.
constexpr double kT1 = 4 * CYCLE_TIME;  // exactly on a period
constexpr double kT3 = 0.0325;
constexpr double kT4 = 0.0425;

double p1() { return 100.0 * std::pow(kT1, 3.0) / 6.0; }
double p3() { return p1() + 0.02 * (kT3 - kT1) + (kT3 - kT1) * (kT3 - kT1); }

struct Sample {
    double p, v, a;
};

// The motion in closed form, section by section.
Sample exact(double t) {
    if (t <= kT1) return {100.0 * t * t * t / 6.0, 50.0 * t * t, 100.0 * t};
    if (t <= kT3) {
        const double u = t - kT1;
        return {p1() + 0.02 * u + u * u, 0.02 + 2.0 * u, 2.0};
    }
    const double u = t - kT3;
    return {p3() + 0.045 * u + u * u - 200.0 * u * u * u / 6.0, 0.045 + 2.0 * u - 100.0 * u * u,
            2.0 - 200.0 * u};
}

void setPoint(AxisPlan& r, int i, double t) {
    const Sample s = exact(t);
    r.secTime[i] = t;
    r.secPos[i] = s.p;
    r.secVel[i] = s.v;
    r.secAcc[i] = s.a;
}

// A fresh process-wide state holding a six-axis plan whose axis 0 is the curve above.
PlannerState& freshDefaultPlan(int axisCount = 6) {
    PlannerState& st = defaultState();
    st = PlannerState{};
    st.axisCount = static_cast<std::int8_t>(axisCount);
    st.newPlan = true;
    for (AxisPlan& r : st.records) {
        r.pointCount = 1;
        r.secCursor = 1;
        r.inv = 1;
    }
    AxisPlan& r = st.records[0];
    setPoint(r, 0, 0.0);
    setPoint(r, 1, kT1);
    setPoint(r, 2, kT1);  // zero-length section
    setPoint(r, 3, kT3);
    setPoint(r, 4, kT4);
    r.secAcc[4] = 0.0;
    r.pointCount = 5;
    r.tgtPos = r.secPos[4];
    r.tgtVel = 0.0;
    return st;
}

struct Call {
    int finished;
    int count;
    double pos[4], vel[4], acc[4];
    std::string printed;
};

Call sample(int axis, int n) {
    Call c{};
    test::StdoutCapture cap;
    c.finished = vektaPositionModePerFreedom(axis, n, c.pos, c.vel, c.acc, c.count);
    c.printed = cap.text();
    return c;
}

void expectOnCurve(const Call& c, int k, double t) {
    const Sample s = exact(t);
    EXPECT_NEAR(c.pos[k], s.p, 1e-15) << "t " << t;
    EXPECT_NEAR(c.vel[k], s.v, 1e-14) << "t " << t;
    EXPECT_NEAR(c.acc[k], s.a, 1e-12) << "t " << t;
}

std::string ldata(double tgt, double pos0, double nextTime, double endTime) {
    char buf[200];
    std::snprintf(buf, sizeof buf, "ldata:%f %f time %f %f \n", tgt, pos0, nextTime, endTime);
    return buf;
}

TEST(Sampler, WalksAHandFilledCurveToTheEndAndBeyond) {
    PlannerState& st = freshDefaultPlan();
    AxisPlan& r = st.records[0];
    EXPECT_NEAR(getLeftMoveTime(), kT4, 1e-15);

    // Four periods up to exactly the end of the first section: the scan stops
    // there (strictly greater), so the cursor stays on point 1.
    for (int k = 1; k <= 4; ++k) {
        Call c = sample(0, 1);
        EXPECT_EQ(c.finished, 0);
        EXPECT_EQ(c.count, 1);
        EXPECT_EQ(c.printed, "");
        expectOnCurve(c, 0, k * CYCLE_TIME);
    }
    EXPECT_FALSE(st.newPlan);
    EXPECT_EQ(r.secCursor, 1);
    EXPECT_EQ(r.sampleCount, 4);

    // The next period skips the zero-length section.
    Call c5 = sample(0, 1);
    expectOnCurve(c5, 0, 5 * CYCLE_TIME);
    EXPECT_EQ(r.secCursor, 3);
    Call c6 = sample(0, 1);
    expectOnCurve(c6, 0, 6 * CYCLE_TIME);
    Call c7 = sample(0, 1);
    expectOnCurve(c7, 0, 7 * CYCLE_TIME);
    EXPECT_EQ(r.secCursor, 4);
    EXPECT_NEAR(getLeftMoveTime(), kT4 - 7 * CYCLE_TIME, 1e-15);

    // One period left, three asked: one curve sample and the end sample.
    Call end = sample(0, 3);
    EXPECT_EQ(end.finished, 1);
    EXPECT_EQ(end.count, 2);
    expectOnCurve(end, 0, 8 * CYCLE_TIME);
    EXPECT_EQ(end.pos[1], r.secPos[4]);
    EXPECT_EQ(end.vel[1], 0.0);
    EXPECT_EQ(end.acc[1], 0.0);
    EXPECT_EQ(r.sampleCount, 9);
    EXPECT_EQ(r.secCursor, 5);
    EXPECT_EQ(end.printed, ldata(r.tgtPos, end.pos[0], 10 * CYCLE_TIME, kT4));
    EXPECT_EQ(getLeftMoveTime(), 0.0);

    // After the end: one end sample per call, finished, and the counter runs on.
    r.tgtVel = 0.75;  // the end sample carries the stored target velocity
    for (int k = 10; k <= 11; ++k) {
        Call after = sample(0, 2);
        EXPECT_EQ(after.finished, 1);
        EXPECT_EQ(after.count, 1);
        EXPECT_EQ(after.pos[0], r.secPos[4]);
        EXPECT_EQ(after.vel[0], 0.75);
        EXPECT_EQ(after.acc[0], 0.0);
        EXPECT_EQ(r.sampleCount, k);
        EXPECT_EQ(after.printed, ldata(r.tgtPos, r.secPos[4], (k + 1) * CYCLE_TIME, kT4));
    }
    EXPECT_EQ(getLeftMoveTime(), 0.0);

    // Asking for nothing after the end still reports finished, prints nothing.
    Call none = sample(0, 0);
    EXPECT_EQ(none.finished, 1);
    EXPECT_EQ(none.count, 0);
    EXPECT_EQ(none.printed, "");
}

TEST(Sampler, BothModesSampleTheSameWay) {
    freshDefaultPlan();
    double p[2], v[2], a[2];
    int n = 0;
    testing::internal::CaptureStdout();
    vektaVelocityModePerFreedom(0, 2, p, v, a, n);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(n, 2);
    EXPECT_NEAR(p[1], exact(2 * CYCLE_TIME).p, 1e-15);
    EXPECT_EQ(defaultState().records[0].sampleCount, 2);
}

TEST(Sampler, RefusesFailedPlansAndAxesOutsideThePlan) {
    PlannerState& st = freshDefaultPlan(6);
    Call beyond = sample(6, 1);
    EXPECT_EQ(beyond.finished, 0);
    EXPECT_EQ(beyond.count, 0);
    EXPECT_FALSE(st.newPlan);  // the first call still validated the plan

    st.planFailed = true;
    Call failed = sample(0, 1);
    EXPECT_EQ(failed.finished, 0);
    EXPECT_EQ(failed.count, 0);
    EXPECT_EQ(st.records[0].sampleCount, 0);
}

TEST(Sampler, ReportsSectionTimesThatGoBackOncePerUpdate) {
    PlannerState& st = freshDefaultPlan();
    AxisPlan& r1 = st.records[1];
    r1.pointCount = 4;
    r1.secTime[1] = 0.01;
    r1.secTime[2] = 0.01 - 2e-5;    // back by more than the tolerance
    r1.secTime[3] = 0.01 - 2.5e-5;  // back by less, after the previous point

    Call first = sample(1, 1);
    EXPECT_EQ(first.printed, "wrong secTime:id 1 i 2 Ti-1 0.010000 Ti 0.009980\n");
    Call second = sample(1, 1);
    EXPECT_EQ(second.printed.find("wrong secTime"), std::string::npos);

    // A new update re-validates.
    st.newPlan = true;
    Call third = sample(6, 1);  // even a refused call validates
    EXPECT_EQ(third.printed, "wrong secTime:id 1 i 2 Ti-1 0.010000 Ti 0.009980\n");
}

TEST(Sampler, WarnsWhenAxisZeroDoesNotStopInItsLastPeriod) {
    freshDefaultPlan();
    for (int k = 1; k <= 8; ++k) EXPECT_EQ(sample(0, 1).printed, "");
    EXPECT_LT(getLeftMoveTime(), CYCLE_TIME);
    // The controller skipped a period: still not finished on the next call.
    Call late = sample(0, 0);
    EXPECT_EQ(late.finished, 0);
    EXPECT_EQ(late.printed, "no-stop\n");
    // Finishing clears the warning.
    Call done = sample(0, 1);
    EXPECT_EQ(done.finished, 1);
    EXPECT_EQ(done.printed.find("no-stop"), std::string::npos);
    EXPECT_FALSE(defaultState().noStopPending);
}

TEST(Sampler, SingleAxisOvershootDumpsTheAccelerationCurve) {
    PlannerState& st = freshDefaultPlan(1);
    AxisPlan& r = st.records[0];
    // Mirror the curve: a single-axis motion towards negative positions.
    for (int i = 0; i < r.pointCount; ++i) {
        r.secPos[i] = -r.secPos[i];
        r.secVel[i] = -r.secVel[i];
        r.secAcc[i] = -r.secAcc[i];
    }
    r.tgtPos = r.secPos[4];

    std::string curve = "acc curve:(a, t)=";
    char buf[256];
    for (int i = 0; i < r.pointCount; ++i) {
        std::snprintf(buf, sizeof buf, "(%f,%f)", r.secAcc[i], r.secTime[i]);
        curve += buf;
    }
    curve += "\n";

    Call c = sample(0, 1);
    std::snprintf(buf, sizeof buf, "s1 overshoot:p %f > %f pt %f v %f a %f ret %d inv %d armIdx %d\n",
                  0.0, c.pos[0], r.tgtPos, c.vel[0], c.acc[0], 0, 1, 0);
    EXPECT_EQ(c.printed, std::string(buf) + curve);
    EXPECT_EQ(st.lastFirstPos, c.pos[0]);

    // With nothing sampled the check still reads the caller's pos[0].
    Call empty{};
    empty.pos[0] = -5.0;
    empty.vel[0] = 1.0;
    empty.acc[0] = 2.0;
    {
        test::StdoutCapture cap;
        vektaPositionModePerFreedom(0, 0, empty.pos, empty.vel, empty.acc, empty.count);
        empty.printed = cap.text();
    }
    std::snprintf(buf, sizeof buf, "s1 overshoot:p %f > %f pt %f v %f a %f ret %d inv %d armIdx %d\n",
                  c.pos[0], -5.0, r.tgtPos, 1.0, 2.0, 0, 1, 0);
    EXPECT_EQ(empty.printed, std::string(buf) + curve);
    EXPECT_EQ(st.lastFirstPos, -5.0);

    // A positive motion moving away from zero prints nothing.
    freshDefaultPlan(1);
    EXPECT_EQ(sample(0, 1).printed, "");
    EXPECT_EQ(sample(0, 1).printed, "");
}

TEST(Sampler, TraceSwitchAndDebugInfo) {
    PlannerState& st = freshDefaultPlan();
    setTestLevel(true);
    EXPECT_TRUE(st.traceOn);
    setTestLevel(false);
    EXPECT_FALSE(st.traceOn);
    test::StdoutCapture cap;
    vektaDebugInfo();
    EXPECT_EQ(cap.text(), "");
}

}  // namespace
}  // namespace vekta
