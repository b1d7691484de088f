// The plan check: one hand-made curve per kind of violation, with the exact
// code and message, and a good plan passes. How the message is cut to the
// caller's buffer is held by the fuzz target on every input.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>

#include "check/plan_check.h"
#include "support/test_support.h"
#include "vekta/vekta.h"

namespace vekta {
namespace {

struct Sec {
    double dur, jerk;
};

// A curve made by integrating constant-jerk sections (`times` times over)
// from (p, v, a) at t = 0; the target is where it ends.
AxisPlan integrated(double p, double v, double a, std::initializer_list<Sec> sections, double V, double A, double J,
                    int times = 1) {
    AxisPlan r = test::makeAxis(p, v, a, 0.0, V, A, J);
    double t = 0.0;
    for (int i = 0; i < times; ++i) {
        for (const Sec& s : sections) {
            const double d = s.dur, j = s.jerk;
            p += v * d + a * d * d / 2.0 + j * d * d * d / 6.0;
            v += a * d + j * d * d / 2.0;
            a += j * d;
            const int k = r.pointCount++;
            r.secTime[k] = t += d;
            r.secAcc[k] = a;
            r.secVel[k] = v;
            r.secPos[k] = p;
        }
    }
    r.tgtPos = p;
    return r;
}

// Rest to rest in 0.8 s: +J for 0.2 s, -J for 0.4 s, +J for 0.2 s (J = 10).
// The acceleration peaks at +2 (t = 0.2) and -2 (t = 0.6); the velocity
// peaks at 0.4 inside the second section, at t = 0.4.
AxisPlan restToRest(int times = 1) {
    return integrated(0.0, 0.0, 0.0, {{0.2, 10.0}, {0.4, -10.0}, {0.2, 10.0}}, 1.0, 4.0, 10.0, times);
}

// A planned state around the given record(s), as an accepted update leaves it.
std::unique_ptr<PlannerState> planned(const AxisPlan& r, int axes = 1, PlanMode mode = kPositionPlan) {
    auto st = test::freshState();
    st->axisCount = static_cast<std::int8_t>(axes);
    st->planMode = mode;
    for (int i = 0; i < axes; ++i) st->records[i] = r;
    return st;
}

// The code and the message.
using Verdict = std::pair<int, std::string>;
const Verdict kOk{VEKTA_CHECK_OK, "ok"};

Verdict check(const PlannerState& st) {
    char buf[256];
    std::memset(buf, 'x', sizeof buf);
    const int code = checkPlan(st, buf, sizeof buf);
    return {code, buf};
}

Verdict check(const AxisPlan& r, int axes = 1, PlanMode mode = kPositionPlan) { return check(*planned(r, axes, mode)); }

TEST(PlanCheck, AGoodPlanPasses) {
    EXPECT_EQ(check(restToRest()), kOk);
    EXPECT_EQ(check(restToRest(), 6), kOk);
    // Velocity mode has no position condition.
    AxisPlan stop = restToRest();
    stop.tgtPos = 123.0;
    EXPECT_EQ(check(stop, 1, kVelocityPlan), kOk);
    // As many points as a curve holds: the move four times over.
    EXPECT_EQ(check(restToRest(4)), kOk);
    // One point, missing its end state by exactly the tolerances: 2e-5 in
    // position, 1e-6 of V in velocity and of A in acceleration.
    EXPECT_EQ(check(test::makeAxis(0.0, 1e-6, 4e-6, 2e-5, 1.0, 4.0, 10.0)), kOk);
}

// One violation per row: the record is changed by `spoil`, and the message
// names axis 0.
struct Row {
    void (*spoil)(AxisPlan& r);
    int code;
    const char* message;
};

const Row kRows[] = {
    {[](AxisPlan& r) { r.pointCount = 14; }, VEKTA_CHECK_POINT_COUNT, "14 curve points, outside 1 .. 13"},
    {[](AxisPlan& r) { r.pointCount = 0; }, VEKTA_CHECK_POINT_COUNT, "0 curve points, outside 1 .. 13"},
    {[](AxisPlan& r) { r.secVel[2] = std::nan(""); }, VEKTA_CHECK_NOT_FINITE, "velocity nan at point 2 is not finite"},
    {[](AxisPlan& r) { r.secTime[3] = INFINITY; }, VEKTA_CHECK_NOT_FINITE, "time inf at point 3 is not finite"},
    {[](AxisPlan& r) { r.maxJerk = 0.0; }, VEKTA_CHECK_BAD_LIMIT, "jerk limit 0 is not a positive finite number"},
    {[](AxisPlan& r) { r.maxVel = -1.0; }, VEKTA_CHECK_BAD_LIMIT, "velocity limit -1 is not a positive finite number"},
    {[](AxisPlan& r) { r.maxAcc = std::nan(""); }, VEKTA_CHECK_BAD_LIMIT,
     "acceleration limit nan is not a positive finite number"},
    {[](AxisPlan& r) { r.secTime[0] = 0.1; }, VEKTA_CHECK_TIME_BACK, "the curve starts at t = 0.1 s, not at 0"},
    {[](AxisPlan& r) { r.secTime[2] = 0.1; }, VEKTA_CHECK_TIME_BACK, "time goes back from 0.2 s to 0.1 s at point 2"},
    {[](AxisPlan& r) { r.secPos[2] += 1e-3; }, VEKTA_CHECK_DISCONTINUOUS,
     "position 0.147666667 at t = 0.6 s, its section arrives at 0.146666667 (tolerance 2.00002e-05)"},
    {[](AxisPlan& r) { r.secVel[1] += 1e-3; }, VEKTA_CHECK_DISCONTINUOUS,
     "velocity 0.201 at t = 0.2 s, its section arrives at 0.2 (tolerance 1e-06)"},
    {[](AxisPlan& r) { r.maxJerk = 9.0; }, VEKTA_CHECK_JERK_LIMIT, "jerk 10 beyond the limit 9 at t = 0 s"},
    {[](AxisPlan& r) { r.maxAcc = 1.5; }, VEKTA_CHECK_ACC_LIMIT, "acceleration 2 beyond the limit 1.5 at t = 0.2 s"},
    // Inside a section: no stored point reaches 0.4.
    {[](AxisPlan& r) { r.maxVel = 0.3; }, VEKTA_CHECK_VEL_LIMIT, "velocity 0.4 beyond the limit 0.3 at t = 0.4 s"},
    {[](AxisPlan& r) { r.tgtPos += 1e-3; }, VEKTA_CHECK_END_STATE,
     "ends at position 0.16 instead of 0.161 at t = 0.8 s"},
    {[](AxisPlan& r) { r.pointCount = 3; }, VEKTA_CHECK_END_STATE,
     "ends with acceleration -2 instead of 0 at t = 0.6 s"},
};

TEST(PlanCheck, ReportsEachKindOfViolationWithItsCodeAndMessage) {
    for (const Row& row : kRows) {
        AxisPlan r = restToRest();
        row.spoil(r);
        EXPECT_EQ(check(r), Verdict(row.code, std::string("axis 0: ") + row.message));
    }
}

TEST(PlanCheck, ReportsMissingPlansRefusedCatchUpsAndUnequalEndTimes) {
    EXPECT_EQ(check(*test::freshState()), Verdict(VEKTA_CHECK_NO_PLAN, "no plan: no update has planned yet"));
    auto st = planned(restToRest());
    st->planFailed = true;
    EXPECT_EQ(check(*st), Verdict(VEKTA_CHECK_NO_PLAN, "no plan: the last update failed"));
    EXPECT_EQ(check(restToRest(), 1, kConveyorRefusedPlan),
              Verdict(VEKTA_CHECK_CONVEYOR_REFUSED,
                      "conveyor: the catch-up ends beyond the conveyor limit; the plan must not be sampled"));

    // Axis 4 is the same move stretched to 1.6 s (half the jerk).
    st = planned(restToRest(), 6);
    st->records[4] = integrated(0.0, 0.0, 0.0, {{0.4, 2.5}, {0.8, -2.5}, {0.4, 2.5}}, 1.0, 4.0, 10.0);
    EXPECT_EQ(check(*st), Verdict(VEKTA_CHECK_END_TIME, "axis 4: ends at t = 1.6 s, axis 0 at t = 0.8 s"));
    // Or 2e-9 of the end time later, twice what the rounding of the time allows.
    st->records[4] = restToRest();
    st->records[4].secTime[3] += 1.6e-9;
    EXPECT_EQ(check(*st), Verdict(VEKTA_CHECK_END_TIME, "axis 4: ends at t = 0.800000002 s, axis 0 at t = 0.8 s"));

    // The first violation in axis order is the one reported.
    st = planned(restToRest(), 6);
    st->records[3].maxAcc = 1.0;
    st->records[5].maxAcc = 1.5;
    EXPECT_EQ(check(*st), Verdict(VEKTA_CHECK_ACC_LIMIT, "axis 3: acceleration 2 beyond the limit 1 at t = 0.2 s"));
}

TEST(PlanCheck, ToleratesTheRootFindersMissOnPositionAndNoMore) {
    // A synchronised axis may miss its pinned end by the root finder's 1e-5.
    AxisPlan r = restToRest();
    r.tgtPos = r.secPos[3] += 1.5e-5;
    EXPECT_EQ(check(r), kOk);
    r.tgtPos = r.secPos[3] += 1e-5;
    EXPECT_EQ(check(r).first, VEKTA_CHECK_DISCONTINUOUS);
    // An exact curve (recovery mode, the library's own calls) is held to 1e-9
    // of its scale, here V T = 0.8 and V = 1: a miss of 1e-9 fails it, in
    // velocity too.
    AxisPlan exact = restToRest();
    exact.exact = true;
    EXPECT_EQ(check(exact), kOk);
    AxisPlan fast = exact;
    fast.secVel[2] += 1e-8;
    EXPECT_EQ(check(fast), Verdict(VEKTA_CHECK_DISCONTINUOUS, "axis 0: velocity 0.20000001 at t = 0.6 s, its section "
                                                              "arrives at 0.2 (tolerance 1e-09)"));
    exact.tgtPos = exact.secPos[3] += 1e-9;
    EXPECT_EQ(check(exact), Verdict(VEKTA_CHECK_DISCONTINUOUS, "axis 0: position 0.160000001 at t = 0.8 s, its section "
                                                               "arrives at 0.16 (tolerance 8e-10)"));
    // An acceleration step across a zero-length section is a jerk violation.
    AxisPlan step = integrated(0.0, 0.0, 0.0, {{0.2, 10.0}, {0.0, 0.0}, {0.4, -10.0}, {0.2, 10.0}}, 1.0, 4.0, 10.0);
    EXPECT_EQ(check(step), kOk);
    step.secAcc[2] = 1.0;
    EXPECT_EQ(check(step),
              Verdict(VEKTA_CHECK_JERK_LIMIT, "axis 0: acceleration steps from 2 to 1 at t = 0.2 s (jerk limit 10)"));
    EXPECT_EQ(checkCurve(step).maxAccJump, 1.0);  // the tests' physical check sees it too
    // However large J: a section of no length has no time to change the
    // acceleration in (found by the fuzzer with J = 1e300, where the last
    // section's length was lost to the rounding of t = 1).
    step.maxJerk = 1e300;
    EXPECT_EQ(check(step).first, VEKTA_CHECK_JERK_LIMIT);
    // Nor the velocity, however large A (found by the fuzzer with A = 1e300:
    // the rounding of t = 1 had swallowed a section, and its velocity change
    // was allowed as a rounding of the time).
    step.secAcc[2] = 2.0;
    step.secVel[2] += 0.5;
    step.maxAcc = 1e300;
    EXPECT_EQ(check(step), Verdict(VEKTA_CHECK_DISCONTINUOUS,
                                   "axis 0: velocity 0.7 at t = 0.2 s, its section arrives at 0.2 (tolerance 1e-06)"));
}

TEST(PlanCheck, AnIntegrationThatOverflowsIsAViolation) {
    // Finite points whose section integrates to inf - inf = NaN.
    const double big = 1e308;
    AxisPlan r = test::makeAxis(0.0, -big, big, 0.0, big, big, big);
    r.secTime[1] = 10.0;
    r.secAcc[1] = big;
    r.pointCount = 2;
    const Verdict v = check(r, 1, kVelocityPlan);
    EXPECT_EQ(v.first, VEKTA_CHECK_DISCONTINUOUS);
    EXPECT_EQ(v.second.rfind("axis 0: position 0 at t = 10 s, its section arrives at ", 0), 0u) << v.second;
    EXPECT_NE(v.second.find("nan"), std::string::npos) << v.second;
}

TEST(PlanCheck, HoldsAStartBeyondALimitFromWhereItCanBeKept) {
    const double A = 2.0, J = 10.0;
    // Starts at a = 3 with A = 2: the first section ramps it down to A at -J,
    // from where |a| <= A must hold; climbing again breaks it.
    EXPECT_EQ(check(integrated(0.0, 0.0, 3.0, {{0.1, -J}, {0.05, J}}, 5.0, A, J), 1, kVelocityPlan),
              Verdict(VEKTA_CHECK_ACC_LIMIT, "axis 0: acceleration 2.5 beyond the limit 2 at t = 0.15 s"));

    // Starts at v = 1.5 with V = 1 and stops: ramp to -A, hold, ramp to 0.
    // |v| <= V is held from the end of the hold (v = 0.2, and 0 once the
    // acceleration is released), so the stop passes.
    AxisPlan stop = integrated(0.0, 1.5, 0.0, {{0.2, -J}, {0.55, 0.0}, {0.2, J}}, 1.0, A, J);
    ASSERT_NEAR(stop.secVel[3], 0.0, 1e-12);
    stop.secVel[3] = 0.0;
    EXPECT_EQ(check(stop, 1, kVelocityPlan), kOk);

    // A start within V is held from the start.
    EXPECT_EQ(check(integrated(0.0, 0.5, 0.0, {{0.2, J}, {0.2, -J}}, 0.8, A, J), 1, kVelocityPlan),
              Verdict(VEKTA_CHECK_VEL_LIMIT, "axis 0: velocity 0.9 beyond the limit 0.8 at t = 0.4 s"));
}

TEST(PlanCheck, ChecksAConveyorPlanInTheConveyorsFrame) {
    // The catch-up as planned (relative), shifted back into the fixed frame.
    const double cv = 0.7;
    AxisPlan r = restToRest();
    for (int i = 0; i < r.pointCount; ++i) {
        r.secPos[i] += r.secTime[i] * cv;
        r.secVel[i] += cv;
    }
    r.tgtVel = cv;
    // In the fixed frame the velocity reaches 1.1 > V = 1; relative, 0.4.
    EXPECT_EQ(check(r, 1, kConveyorPlan), kOk);
    r.secVel[3] = 0.0;  // stops instead of moving with the conveyor
    EXPECT_EQ(check(r, 1, kConveyorPlan).first, VEKTA_CHECK_DISCONTINUOUS);
    r.secVel[3] = cv;
    r.tgtPos += 0.01;
    EXPECT_EQ(check(r, 1, kConveyorPlan),
              Verdict(VEKTA_CHECK_END_STATE, "axis 0: ends at position 0.72 instead of 0.73 at t = 0.8 s"));
    // An exact catch-up whose fixed frame reaches 2^51 (the arm at rest on a
    // conveyor of 2^51 m/s for 1 s): taking the conveyor off may round away
    // 8 units in the last place of it, 4.0, and no more.
    AxisPlan far = test::makeAxis(0.0, 0x1p51, 0.0, 0.0, 1.0, 4.0, 10.0);
    far.exact = true;
    far.pointCount = 2;
    far.secTime[1] = 1.0;
    far.secAcc[1] = 0.0;
    far.tgtVel = far.secVel[1] = 0x1p51;
    for (const double miss : {4.0, 4.5}) {
        far.tgtPos = miss;
        far.secPos[1] = 0x1p51 + miss;
        EXPECT_EQ(check(far, 1, kConveyorPlan).first, miss == 4.0 ? VEKTA_CHECK_OK : VEKTA_CHECK_DISCONTINUOUS);
    }
    // And in velocity: 4.0 of 2^51 m/s, and no more.
    far.tgtPos = 0.0;
    far.secPos[1] = 0x1p51;
    for (const double miss : {4.0, 4.5}) {
        far.secVel[1] = 0x1p51 + miss;
        EXPECT_EQ(check(far, 1, kConveyorPlan).first, miss == 4.0 ? VEKTA_CHECK_OK : VEKTA_CHECK_DISCONTINUOUS);
    }
}

}  // namespace
}  // namespace vekta
