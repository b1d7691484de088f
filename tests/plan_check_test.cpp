// The plan check: one hand-made curve per kind of violation, with the exact
// code and message, and the promises made to callers (a good plan passes, the
// check changes nothing and prints nothing, the message buffer is respected).
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string>

#include "check/plan_check.h"
#include "support/test_support.h"
#include "vekta/vekta.h"

namespace vekta {
namespace {

struct Sec {
    double dur, jerk;
};

// A curve made by integrating constant-jerk sections from (p, v, a) at t = 0;
// the target is where it ends.
AxisPlan integrated(double p, double v, double a, std::initializer_list<Sec> sections, double V, double A,
                    double J) {
    AxisPlan r = test::makeAxis(p, v, a, 0.0, V, A, J);
    double t = 0.0;
    int k = 1;
    for (const Sec& s : sections) {
        const double d = s.dur, j = s.jerk;
        p += v * d + a * d * d / 2.0 + j * d * d * d / 6.0;
        v += a * d + j * d * d / 2.0;
        a += j * d;
        t += d;
        r.secTime[k] = t;
        r.secAcc[k] = a;
        r.secVel[k] = v;
        r.secPos[k] = p;
        ++k;
    }
    r.pointCount = k;
    r.tgtPos = p;
    return r;
}

// Rest to rest in 0.8 s: +J for 0.2 s, -J for 0.4 s, +J for 0.2 s (J = 10).
// The acceleration peaks at +2 (t = 0.2) and -2 (t = 0.6); the velocity
// peaks at 0.4 inside the second section, at t = 0.4.
AxisPlan restToRest(double V = 1.0, double A = 4.0, double J = 10.0) {
    return integrated(0.0, 0.0, 0.0, {{0.2, 10.0}, {0.4, -10.0}, {0.2, 10.0}}, V, A, J);
}

// A planned state around the given record(s), as an accepted update leaves it.
std::unique_ptr<PlannerState> planned(const AxisPlan& r, int axes = 1, PlanMode mode = kPositionPlan) {
    auto st = test::freshState();
    st->axisCount = static_cast<std::int8_t>(axes);
    st->planMode = mode;
    for (int i = 0; i < axes; ++i) st->records[i] = r;
    return st;
}

struct Verdict {
    int code;
    std::string message;
};

Verdict check(const PlannerState& st) {
    char buf[256];
    std::memset(buf, 'x', sizeof buf);
    const int code = checkPlan(st, buf, sizeof buf);
    return {code, buf};
}

TEST(PlanCheck, AGoodPlanPasses) {
    const Verdict v = check(*planned(restToRest()));
    EXPECT_EQ(v.code, VEKTA_CHECK_OK);
    EXPECT_EQ(v.message, "ok");
    EXPECT_EQ(check(*planned(restToRest(), 6)).code, VEKTA_CHECK_OK);
    // Velocity mode has no position condition.
    AxisPlan stop = restToRest();
    stop.tgtPos = 123.0;
    EXPECT_EQ(check(*planned(stop, 1, kVelocityPlan)).code, VEKTA_CHECK_OK);
    // As many points as a curve holds: the move four times over.
    const Sec rr[] = {{0.2, 10.0}, {0.4, -10.0}, {0.2, 10.0}};
    const AxisPlan full = integrated(0, 0, 0, {rr[0], rr[1], rr[2], rr[0], rr[1], rr[2], rr[0], rr[1], rr[2], rr[0],
                                               rr[1], rr[2]}, 1.0, 4.0, 10.0);
    EXPECT_EQ(check(*planned(full)).code, VEKTA_CHECK_OK);
    // One point, missing its end state by exactly the tolerances: 2e-5 in
    // position, 1e-6 of V in velocity and of A in acceleration.
    const AxisPlan one = test::makeAxis(0.0, 1e-6, 4e-6, 2e-5, 1.0, 4.0, 10.0);
    EXPECT_EQ(check(*planned(one)).code, VEKTA_CHECK_OK);
}

// One violation per row: the record is changed by `spoil`, the state by `spoilState`.
struct Row {
    const char* what;
    void (*spoil)(AxisPlan& r);
    int code;
    const char* message;
};

const Row kRows[] = {
    {"too many points", [](AxisPlan& r) { r.pointCount = 14; }, VEKTA_CHECK_POINT_COUNT,
     "axis 0: 14 curve points, outside 1 .. 13"},
    {"no point", [](AxisPlan& r) { r.pointCount = 0; }, VEKTA_CHECK_POINT_COUNT,
     "axis 0: 0 curve points, outside 1 .. 13"},
    {"NaN velocity", [](AxisPlan& r) { r.secVel[2] = std::nan(""); }, VEKTA_CHECK_NOT_FINITE,
     "axis 0: velocity nan at point 2 is not finite"},
    {"infinite time", [](AxisPlan& r) { r.secTime[3] = INFINITY; }, VEKTA_CHECK_NOT_FINITE,
     "axis 0: time inf at point 3 is not finite"},
    {"zero jerk limit", [](AxisPlan& r) { r.maxJerk = 0.0; }, VEKTA_CHECK_BAD_LIMIT,
     "axis 0: jerk limit 0 is not a positive finite number"},
    {"negative velocity limit", [](AxisPlan& r) { r.maxVel = -1.0; }, VEKTA_CHECK_BAD_LIMIT,
     "axis 0: velocity limit -1 is not a positive finite number"},
    {"NaN acceleration limit", [](AxisPlan& r) { r.maxAcc = std::nan(""); }, VEKTA_CHECK_BAD_LIMIT,
     "axis 0: acceleration limit nan is not a positive finite number"},
    {"late start", [](AxisPlan& r) { r.secTime[0] = 0.1; }, VEKTA_CHECK_TIME_BACK,
     "axis 0: the curve starts at t = 0.1 s, not at 0"},
    {"time goes back", [](AxisPlan& r) { r.secTime[2] = 0.1; }, VEKTA_CHECK_TIME_BACK,
     "axis 0: time goes back from 0.2 s to 0.1 s at point 2"},
    {"position jump", [](AxisPlan& r) { r.secPos[2] += 1e-3; }, VEKTA_CHECK_DISCONTINUOUS,
     "axis 0: position 0.147666667 at t = 0.6 s, its section arrives at 0.146666667 (tolerance 2.00002e-05)"},
    {"velocity jump", [](AxisPlan& r) { r.secVel[1] += 1e-3; }, VEKTA_CHECK_DISCONTINUOUS,
     "axis 0: velocity 0.201 at t = 0.2 s, its section arrives at 0.2 (tolerance 1e-06)"},
    {"jerk above the limit", [](AxisPlan& r) { r.maxJerk = 9.0; }, VEKTA_CHECK_JERK_LIMIT,
     "axis 0: jerk 10 beyond the limit 9 at t = 0 s"},
    {"acceleration above the limit", [](AxisPlan& r) { r.maxAcc = 1.5; }, VEKTA_CHECK_ACC_LIMIT,
     "axis 0: acceleration 2 beyond the limit 1.5 at t = 0.2 s"},
    {"velocity above the limit inside a section", [](AxisPlan& r) { r.maxVel = 0.3; }, VEKTA_CHECK_VEL_LIMIT,
     "axis 0: velocity 0.4 beyond the limit 0.3 at t = 0.4 s"},
    {"target missed", [](AxisPlan& r) { r.tgtPos += 1e-3; }, VEKTA_CHECK_END_STATE,
     "axis 0: ends at position 0.16 instead of 0.161 at t = 0.8 s"},
    {"not at rest", [](AxisPlan& r) { r.pointCount = 3; }, VEKTA_CHECK_END_STATE,
     "axis 0: ends with acceleration -2 instead of 0 at t = 0.6 s"},
};

TEST(PlanCheck, ReportsEachKindOfViolationWithItsCodeAndMessage) {
    for (const Row& row : kRows) {
        AxisPlan r = restToRest();
        row.spoil(r);
        const Verdict v = check(*planned(r));
        EXPECT_EQ(v.code, row.code) << row.what;
        EXPECT_EQ(v.message, row.message) << row.what;
    }
}

TEST(PlanCheck, ReportsMissingPlansRefusedCatchUpsAndUnequalEndTimes) {
    auto st = test::freshState();
    Verdict v = check(*st);
    EXPECT_EQ(v.code, VEKTA_CHECK_NO_PLAN);
    EXPECT_EQ(v.message, "no plan: no update has planned yet");

    st = planned(restToRest());
    st->planFailed = true;
    v = check(*st);
    EXPECT_EQ(v.code, VEKTA_CHECK_NO_PLAN);
    EXPECT_EQ(v.message, "no plan: the last update failed");

    st = planned(restToRest(), 1, kConveyorRefusedPlan);
    v = check(*st);
    EXPECT_EQ(v.code, VEKTA_CHECK_CONVEYOR_REFUSED);
    EXPECT_EQ(v.message, "conveyor: the catch-up ends beyond the conveyor limit; the plan must not be sampled");

    // Axis 4 is the same move stretched to 1.6 s (half the jerk).
    st = planned(restToRest(), 6);
    st->records[4] = integrated(0.0, 0.0, 0.0, {{0.4, 2.5}, {0.8, -2.5}, {0.4, 2.5}}, 1.0, 4.0, 10.0);
    v = check(*st);
    EXPECT_EQ(v.code, VEKTA_CHECK_END_TIME);
    EXPECT_EQ(v.message, "axis 4: ends at t = 1.6 s, axis 0 at t = 0.8 s");

    // The first violation in axis order is the one reported.
    st = planned(restToRest(), 6);
    st->records[3].maxAcc = 1.0;
    st->records[5].maxAcc = 1.5;
    v = check(*st);
    EXPECT_EQ(v.code, VEKTA_CHECK_ACC_LIMIT);
    EXPECT_EQ(v.message, "axis 3: acceleration 2 beyond the limit 1 at t = 0.2 s");
}

TEST(PlanCheck, ToleratesTheRootFindersMissOnPositionAndNoMore) {
    // A synchronised axis may miss its pinned end by the root finder's 1e-5.
    AxisPlan r = restToRest();
    r.secPos[3] += 1.5e-5;
    r.tgtPos = r.secPos[3];
    EXPECT_EQ(check(*planned(r)).code, VEKTA_CHECK_OK);
    r.secPos[3] += 1e-5;
    r.tgtPos = r.secPos[3];
    EXPECT_EQ(check(*planned(r)).code, VEKTA_CHECK_DISCONTINUOUS);
    // An acceleration step across a zero-length section is a jerk violation.
    AxisPlan step = integrated(0.0, 0.0, 0.0, {{0.2, 10.0}, {0.0, 0.0}, {0.4, -10.0}, {0.2, 10.0}}, 1.0, 4.0, 10.0);
    EXPECT_EQ(check(*planned(step)).code, VEKTA_CHECK_OK);
    step.secAcc[2] = 1.0;
    const Verdict v = check(*planned(step));
    EXPECT_EQ(v.code, VEKTA_CHECK_JERK_LIMIT);
    EXPECT_EQ(v.message, "axis 0: acceleration steps from 2 to 1 at t = 0.2 s (jerk limit 10)");
    // However large J: a section of no length has no time to change the
    // acceleration in (found by the fuzzer with J = 1e300, where the last
    // section's length was lost to the rounding of t = 1).
    step.maxJerk = 1e300;
    EXPECT_EQ(check(*planned(step)).code, VEKTA_CHECK_JERK_LIMIT);
    // Nor the velocity, however large A (found by the fuzzer with A = 1e300:
    // the rounding of t = 1 had swallowed a section, and its velocity change
    // was allowed as a rounding of the time).
    step.secAcc[2] = 2.0;
    step.secVel[2] += 0.5;
    step.maxAcc = 1e300;
    const Verdict w = check(*planned(step));
    EXPECT_EQ(w.code, VEKTA_CHECK_DISCONTINUOUS);
    EXPECT_EQ(w.message, "axis 0: velocity 0.7 at t = 0.2 s, its section arrives at 0.2 (tolerance 1e-06)");
}

TEST(PlanCheck, AnIntegrationThatOverflowsIsAViolation) {
    // Finite points whose section integrates to inf - inf = NaN.
    const double big = 1e308;
    AxisPlan r = test::makeAxis(0.0, -big, big, 0.0, big, big, big);
    r.secTime[1] = 10.0;
    r.secAcc[1] = big;
    r.secVel[1] = 0.0;
    r.secPos[1] = 0.0;
    r.pointCount = 2;
    const Verdict v = check(*planned(r, 1, kVelocityPlan));
    EXPECT_EQ(v.code, VEKTA_CHECK_DISCONTINUOUS);
    EXPECT_EQ(v.message.rfind("axis 0: position 0 at t = 10 s, its section arrives at ", 0), 0u) << v.message;
    EXPECT_NE(v.message.find("nan"), std::string::npos) << v.message;
}

TEST(PlanCheck, HoldsAStartBeyondALimitFromWhereItCanBeKept) {
    const double A = 2.0, J = 10.0;
    // Starts at a = 3 with A = 2: the first section ramps it down to A at -J,
    // from where |a| <= A must hold; climbing again breaks it.
    AxisPlan climbs = integrated(0.0, 0.0, 3.0, {{0.1, -J}, {0.05, J}}, 5.0, A, J);
    const Verdict v = check(*planned(climbs, 1, kVelocityPlan));
    EXPECT_EQ(v.code, VEKTA_CHECK_ACC_LIMIT);
    EXPECT_EQ(v.message, "axis 0: acceleration 2.5 beyond the limit 2 at t = 0.15 s");

    // Starts at v = 1.5 with V = 1 and stops: ramp to -A, hold, ramp to 0.
    // |v| <= V is held from the end of the hold (v = 0.2, and 0 once the
    // acceleration is released), so the stop passes.
    AxisPlan stop = integrated(0.0, 1.5, 0.0, {{0.2, -J}, {0.55, 0.0}, {0.2, J}}, 1.0, A, J);
    ASSERT_NEAR(stop.secVel[3], 0.0, 1e-12);
    stop.secVel[3] = 0.0;
    EXPECT_EQ(check(*planned(stop, 1, kVelocityPlan)).code, VEKTA_CHECK_OK);

    // A start within V is held from the start.
    AxisPlan overshoot = integrated(0.0, 0.5, 0.0, {{0.2, J}, {0.2, -J}}, 0.8, A, J);
    const Verdict o = check(*planned(overshoot, 1, kVelocityPlan));
    EXPECT_EQ(o.code, VEKTA_CHECK_VEL_LIMIT);
    EXPECT_EQ(o.message, "axis 0: velocity 0.9 beyond the limit 0.8 at t = 0.4 s");
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
    EXPECT_EQ(check(*planned(r, 1, kConveyorPlan)).code, VEKTA_CHECK_OK);
    r.secVel[3] = 0.0;  // stops instead of moving with the conveyor
    const Verdict v = check(*planned(r, 1, kConveyorPlan));
    EXPECT_EQ(v.code, VEKTA_CHECK_DISCONTINUOUS);
    r.secVel[3] = cv;
    r.tgtPos += 0.01;
    const Verdict e = check(*planned(r, 1, kConveyorPlan));
    EXPECT_EQ(e.code, VEKTA_CHECK_END_STATE);
    EXPECT_EQ(e.message, "axis 0: ends at position 0.72 instead of 0.73 at t = 0.8 s");
}

TEST(PlanCheck, CutsAndTerminatesTheMessageAndWritesNothingElse) {
    AxisPlan r = restToRest();
    r.maxAcc = 1.5;
    const auto st = planned(r);
    char buf[32];
    std::memset(buf, 'x', sizeof buf);
    EXPECT_EQ(checkPlan(*st, buf, 10), VEKTA_CHECK_ACC_LIMIT);
    EXPECT_STREQ(buf, "axis 0: a");
    for (int i = 10; i < 32; ++i) EXPECT_EQ(buf[i], 'x');
    std::memset(buf, 'x', sizeof buf);
    EXPECT_EQ(checkPlan(*st, buf, 1), VEKTA_CHECK_ACC_LIMIT);
    EXPECT_EQ(buf[0], '\0');
    EXPECT_EQ(buf[1], 'x');
    EXPECT_EQ(checkPlan(*st, buf, 0), VEKTA_CHECK_ACC_LIMIT);
    EXPECT_EQ(buf[1], 'x');
    EXPECT_EQ(checkPlan(*st, nullptr, 100), VEKTA_CHECK_ACC_LIMIT);
    EXPECT_EQ(checkPlan(*st, buf, -5), VEKTA_CHECK_ACC_LIMIT);
}

}  // namespace
}  // namespace vekta
