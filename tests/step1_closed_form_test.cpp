// The cruising minimum-time shapes (ids 2..9), checked physically: every
// written section is integrated with its implied jerk, the end must be the
// target at rest at the time an independent construction predicts, and the odd
// id must be the exact mirror image of the even one.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "state/numerics.h"
#include "step1/step1_solvers.h"
#include "support/test_support.h"

namespace vekta {
namespace {

using test::doubleSDuration;
using test::expectEndsAt;
using test::expectPhysicalCurve;
using test::makeAxis;
using test::StdoutCapture;

// ---------------------------------------------------------------------------
// An independent prediction of the shapes' durations and distances.
//
// A pulse that starts and ends at zero acceleration is symmetric in time, so
// its velocity is point-symmetric about the middle and the distance it covers
// is the mean of its end velocities times its duration. A pulse that starts at
// acceleration a is the tail of such a symmetric pulse whose virtual start lay
// a/J earlier (later when a < 0), at velocity v - a^2/(2J).

struct PulseRun {
    double time;
    double dist;
    bool trapezoid;  // reaches the acceleration limit
};

PulseRun symmetricPulse(double dv, double A, double J) {
    const bool trap = dv >= A * A / J;
    return PulseRun{trap ? dv / A + A / J : 2.0 * std::sqrt(dv / J), 0.0, trap};
}

// From (v, a) up to (V, 0).
PulseRun risePulse(double v, double a, double V, double A, double J) {
    const double v0 = v - a * a / (2.0 * J);
    PulseRun r = symmetricPulse(V - v0, A, J);
    const double lead = a / J;  // time from the virtual start to the real one
    r.dist = (v0 + V) / 2.0 * r.time - (v0 * lead + J * lead * lead * lead / 6.0);
    r.time -= lead;
    return r;
}

// From (V, 0) down to (vt, 0).
PulseRun fallPulse(double V, double vt, double A, double J) {
    PulseRun r = symmetricPulse(V - vt, A, J);
    r.dist = (V + vt) / 2.0 * r.time;
    return r;
}

// ---------------------------------------------------------------------------
// Records.

// Give the record two earlier sections (jerk -J/4, then constant acceleration)
// that end exactly in its present state, so that the solver appends after
// existing points with a non-zero start time.
void addHistory(AxisPlan& rec) {
    const double d1 = 0.004, j1 = -rec.maxJerk / 4.0, d2 = 0.006, j2 = 0.0;
    auto back = [](double& p, double& v, double& a, double d, double j) {
        const double a0 = a - j * d;
        const double v0 = v - a0 * d - j * d * d / 2.0;
        p = p - v0 * d - a0 * d * d / 2.0 - j * d * d * d / 6.0;
        v = v0;
        a = a0;
    };
    double p = rec.curPos, v = rec.curVel, a = rec.curAcc;
    rec.secTime[2] = d1 + d2;
    rec.secPos[2] = p;
    rec.secVel[2] = v;
    rec.secAcc[2] = a;
    back(p, v, a, d2, j2);
    rec.secTime[1] = d1;
    rec.secPos[1] = p;
    rec.secVel[1] = v;
    rec.secAcc[1] = a;
    back(p, v, a, d1, j1);
    rec.secTime[0] = 0.0;
    rec.secPos[0] = p;
    rec.secVel[0] = v;
    rec.secAcc[0] = a;
    rec.pointCount = 3;
    rec.planTime = d1 + d2;
}

// The same record with every sign of state and curve exchanged.
AxisPlan mirrored(const AxisPlan& rec) {
    AxisPlan m = rec;
    negateState(m);
    for (int i = 0; i < m.pointCount; ++i) {
        m.secAcc[i] = -m.secAcc[i];
        m.secVel[i] = -m.secVel[i];
        m.secPos[i] = -m.secPos[i];
    }
    return m;
}

struct Limits {
    double V, A, J;
};

struct MotionCase {
    const char* name;
    double p, v, a, pt, vt;
    Limits lim;
};

AxisPlan recordFor(const MotionCase& m) {
    AxisPlan rec = makeAxis(m.p, m.v, m.a, m.pt, m.lim.V, m.lim.A, m.lim.J);
    rec.tgtVel = m.vt;
    return rec;
}

struct SolverRow {
    const char* name;
    Step1SolverFn solve;
    bool riseTrap, fallTrap;
    int points;  // points written, the last one included
};

const SolverRow kPTZNt{"PTZNt", solveStep1PTZNt, true, false, 6};
const SolverRow kPtZNt{"PtZNt", solveStep1PtZNt, false, false, 5};
const SolverRow kPTZNT{"PTZNT", solveStep1PTZNT, true, true, 7};
const SolverRow kPtZNT{"PtZNT", solveStep1PtZNT, false, true, 6};

int riseCount(const SolverRow& row) { return row.riseTrap ? 3 : 2; }

// ---------------------------------------------------------------------------
// Every solver inside its own region: at rest, moving with positive or negative
// acceleration, with zero and non-zero target velocity, from a fresh curve and
// after earlier points; the even id on the state, the odd id on its mirror.

struct ShapeCase {
    const SolverRow* row;
    MotionCase m;
};

const Limits kWide{2.0, 4.0, 40.0};     // V > A^2/J = 0.4
const Limits kNarrow{0.3, 4.0, 40.0};   // V < A^2/J
const Limits kSlow{1.0, 1.5, 3.0};      // long ramps, A^2/J = 0.75

const ShapeCase kShapeCases[] = {
    {&kPTZNt, {"rest to moving target", 0.0, 0.0, 0.0, 5.0, 1.8, kWide}},
    {&kPTZNt, {"accelerating", 1.0, 0.5, 2.5, 4.0, 1.7, kWide}},
    {&kPTZNt, {"decelerating", -2.0, -0.5, -3.0, 3.0, 1.9, kWide}},
    {&kPTZNt, {"backwards to rest", 0.5, -0.25, 2.0, 3.0, 0.0, kNarrow}},
    {&kPTZNt, {"slow limits", 0.0, -0.5, 0.5, 6.0, 0.5, kSlow}},
    {&kPtZNt, {"near the limit", 0.0, 1.7, 0.0, 3.0, 1.7, kWide}},
    {&kPtZNt, {"accelerating", 2.0, 1.8, 2.0, 5.0, 1.65, kWide}},
    {&kPtZNt, {"decelerating", 0.0, 1.8, -1.0, 2.5, 1.9, kWide}},
    {&kPtZNt, {"rest to rest", 0.0, 0.0, 0.0, 2.0, 0.0, kNarrow}},
    {&kPtZNt, {"slow limits", 0.0, 0.6, 0.8, 4.0, 0.4, kSlow}},
    {&kPtZNt, {"rise ending one ulp below V", 0.0, 1.844, 0.0, 3.0, 1.7, kWide}},
    {&kPTZNT, {"rest to rest", 0.0, 0.0, 0.0, 6.0, 0.0, kWide}},
    {&kPTZNT, {"accelerating to reverse", -1.0, 0.5, 3.0, 6.0, -1.0, kWide}},
    {&kPTZNT, {"decelerating", 0.0, -1.0, -2.0, 7.0, 0.5, kWide}},
    {&kPTZNT, {"slow limits", 0.0, 0.1, 1.2, 8.0, -0.5, kSlow}},
    {&kPtZNT, {"near the limit", 0.0, 1.7, 0.0, 4.0, 0.0, kWide}},
    {&kPtZNT, {"accelerating to reverse", 0.0, 1.8, 2.0, 4.0, -0.5, kWide}},
    {&kPtZNT, {"decelerating", 3.0, 1.8, -1.0, 6.0, 1.0, kWide}},
    {&kPtZNT, {"slow limits", 0.0, 0.8, 0.2, 5.0, -0.2, kSlow}},
    {&kPtZNT, {"rise ending one ulp below V", 0.0, 1.844, 0.0, 4.0, 0.0, kWide}},
};

void checkShape(const SolverRow& row, const MotionCase& m, bool withHistory) {
    SCOPED_TRACE(std::string(row.name) + ": " + m.name + (withHistory ? ", after history" : ""));
    const double V = m.lim.V, A = m.lim.A, J = m.lim.J;

    // The case must lie in the solver's region: the pulses have its kinds and
    // the target lies beyond the shape without cruise.
    const PulseRun rise = risePulse(m.v, m.a, V, A, J);
    const PulseRun fall = fallPulse(V, m.vt, A, J);
    ASSERT_EQ(rise.trapezoid, row.riseTrap);
    ASSERT_EQ(fall.trapezoid, row.fallTrap);
    const double cruise = (m.pt - m.p - rise.dist - fall.dist) / V;
    ASSERT_GE(cruise, 0.0);

    AxisPlan even = recordFor(m);
    if (withHistory) addHistory(even);
    AxisPlan odd = mirrored(even);
    const int c = even.pointCount;
    const double t0 = even.secTime[c - 1];

    ASSERT_TRUE(row.solve(even, false));
    ASSERT_TRUE(row.solve(odd, true));
    EXPECT_EQ(even.pointCount, c + row.points - 1);
    EXPECT_EQ(odd.pointCount, c + row.points - 1);
    ++even.pointCount;  // the planner counts the last point
    ++odd.pointCount;

    expectPhysicalCurve(even);
    expectPhysicalCurve(odd);
    const double tEnd = t0 + rise.time + cruise + fall.time;
    expectEndsAt(even, tEnd, m.pt, m.vt);
    expectEndsAt(odd, tEnd, -m.pt, -m.vt);

    // The cruise: two points at zero acceleration and velocity V, as long as predicted.
    const int cs = c + riseCount(row) - 1;
    EXPECT_EQ(even.secAcc[cs], 0.0);
    EXPECT_EQ(even.secAcc[cs + 1], 0.0);
    EXPECT_NEAR(even.secTime[cs + 1] - even.secTime[cs], cruise, 1e-9);
    if (row.solve == solveStep1PtZNt) {
        // This one keeps the integrated end velocity of its rising triangle.
        EXPECT_NEAR(even.secVel[cs], V, 1e-12 * V);
        EXPECT_EQ(even.secVel[cs + 1], even.secVel[cs]);
    } else {
        EXPECT_EQ(even.secVel[cs], V);
        EXPECT_EQ(even.secVel[cs + 1], V);
    }

    // A trapezoid holds exactly A, a triangle stays below it.
    const double peakUp = even.secAcc[c];
    if (row.riseTrap) {
        EXPECT_EQ(peakUp, A);
        EXPECT_EQ(even.secAcc[c + 1], A);
    } else {
        EXPECT_LE(peakUp, A);
    }
    const double peakDown = even.secAcc[cs + 2];
    if (row.fallTrap) {
        EXPECT_EQ(peakDown, -A);
        EXPECT_EQ(even.secAcc[cs + 3], -A);
    } else {
        EXPECT_GE(peakDown, -A);
    }

    // The odd id is the exact mirror image of the even one.
    for (int i = 0; i < even.pointCount; ++i) {
        EXPECT_EQ(odd.secTime[i], even.secTime[i]) << "point " << i;
        EXPECT_EQ(odd.secAcc[i], -even.secAcc[i]) << "point " << i;
        EXPECT_EQ(odd.secVel[i], -even.secVel[i]) << "point " << i;
        EXPECT_EQ(odd.secPos[i], -even.secPos[i]) << "point " << i;
    }
}

TEST(Step1ClosedFormShapes, EveryShapeMeetsTargetAtPredictedTimeAndMirrors) {
    for (const ShapeCase& sc : kShapeCases) {
        checkShape(*sc.row, sc.m, false);
        checkShape(*sc.row, sc.m, true);
    }
}

// ---------------------------------------------------------------------------
// Minimality: a rest-to-rest move long enough to cruise takes exactly as long
// as the classic double-S, whether the acceleration limit is reached or not.

TEST(Step1ClosedFormMinimality, RestToRestMatchesDoubleS) {
    struct Move {
        double d, V, A, J;
    };
    const Move moves[] = {
        {10.0, 2.0, 4.0, 40.0},   // reaches A: PTZNT
        {3.5, 1.0, 2.0, 10.0},    // reaches A
        {0.75, 0.25, 5.0, 500.0}, // reaches A, short ramps
        {5.0, 0.3, 4.0, 40.0},    // V < A^2/J: PtZNt
        {1.0, 0.1, 1.0, 2.0},     // triangles only
        {2.0, 0.4, 4.0, 40.0},    // V = A^2/J: both shapes coincide
    };
    for (const Move& mv : moves) {
        SCOPED_TRACE("d=" + std::to_string(mv.d) + " V=" + std::to_string(mv.V));
        const bool trap = mv.V >= mv.A * mv.A / mv.J;
        const Step1SolverFn solve = trap ? solveStep1PTZNT : solveStep1PtZNt;
        const double expected = doubleSDuration(mv.d, mv.V, mv.A, mv.J);
        for (double dir : {1.0, -1.0}) {
            AxisPlan rec = makeAxis(0.5, 0.0, 0.0, 0.5 + dir * mv.d, mv.V, mv.A, mv.J);
            ASSERT_TRUE(solve(rec, dir < 0.0));
            ++rec.pointCount;
            expectPhysicalCurve(rec);
            expectEndsAt(rec, expected, 0.5 + dir * mv.d, 0.0);
        }
        if (mv.V == mv.A * mv.A / mv.J) {
            // At the border the trapezoid's hold is empty and it is the triangle.
            AxisPlan tri = makeAxis(0.0, 0.0, 0.0, mv.d, mv.V, mv.A, mv.J);
            ASSERT_TRUE(solveStep1PtZNt(tri, false));
            EXPECT_NEAR(tri.secTime[tri.pointCount], expected, 1e-9);
        }
    }
}

// ---------------------------------------------------------------------------
// Failures: the exact message, nothing written, nothing counted.

constexpr double kUntouched = 12345.0;

void fillUnused(AxisPlan& rec) {
    for (int i = rec.pointCount; i < kMaxPoints; ++i) {
        rec.secTime[i] = rec.secAcc[i] = rec.secVel[i] = rec.secPos[i] = kUntouched;
    }
}

void expectUnused(const AxisPlan& rec, int count) {
    EXPECT_EQ(rec.pointCount, count);
    for (int i = count; i < kMaxPoints; ++i) {
        EXPECT_EQ(rec.secTime[i], kUntouched) << "point " << i;
        EXPECT_EQ(rec.secAcc[i], kUntouched) << "point " << i;
        EXPECT_EQ(rec.secVel[i], kUntouched) << "point " << i;
        EXPECT_EQ(rec.secPos[i], kUntouched) << "point " << i;
    }
}

TEST(Step1ClosedFormFailures, PeakAboveLimitPrintsAndWritesNothing) {
    struct Failure {
        const char* name;
        Step1SolverFn solve;
        MotionCase m;
        const char* text;
    };
    const Failure failures[] = {
        // Rising peak sqrt(8 * 2) = 4 > A = 1, falling peak 4 too.
        {"PtZNt rising peak", solveStep1PtZNt, {"", 0.0, 0.0, 0.0, 100.0, 0.0, {8.0, 1.0, 2.0}},
         "S1 PtZNt error: a1(-a2)=4.000000e+00(4.000000e+00) > Am=1.000000e+00\n"},
        // Rising peak 1 < A = 1.5, falling peak sqrt(2 * (0.5 + 8)) > A.
        {"PtZNt falling peak", solveStep1PtZNt, {"", 0.0, 0.0, 0.0, 100.0, -8.0, {0.5, 1.5, 2.0}},
         "S1 PtZNt error: a1(-a2)=1.000000e+00(4.123106e+00) > Am=1.500000e+00\n"},
        {"PtZNT rising peak", solveStep1PtZNT, {"", 0.0, 0.0, 0.0, 100.0, 0.0, {8.0, 1.0, 2.0}},
         "PtZNT error: a1(=4.000000e+00)>Am(=1.000000e+00)"},
    };
    for (const Failure& f : failures) {
        for (bool variant : {false, true}) {
            SCOPED_TRACE(std::string(f.name) + (variant ? " (mirror)" : ""));
            AxisPlan rec = recordFor(f.m);
            addHistory(rec);
            if (variant) rec = mirrored(rec);
            fillUnused(rec);
            StdoutCapture out;
            EXPECT_FALSE(f.solve(rec, variant));
            EXPECT_EQ(out.text(), f.text);
            expectUnused(rec, 3);
        }
    }
}

TEST(Step1ClosedFormFailures, PeakSlackIsRelativeOneInTenBillion) {
    // Rest start, V = 1.5, J = 6: the rising peak is exactly 3.
    const double peak = 3.0;
    for (Step1SolverFn solve : {solveStep1PtZNt, solveStep1PtZNT}) {
        AxisPlan inside = makeAxis(0.0, 0.0, 0.0, 50.0, 1.5, peak / (1.0 + 5e-11), 6.0);
        inside.tgtVel = solve == solveStep1PtZNT ? -1.5 : 0.0;
        StdoutCapture quietInside;
        EXPECT_TRUE(solve(inside, false));
        EXPECT_EQ(quietInside.text(), "");

        AxisPlan outside = makeAxis(0.0, 0.0, 0.0, 50.0, 1.5, peak / (1.0 + 2e-10), 6.0);
        outside.tgtVel = inside.tgtVel;
        fillUnused(outside);
        StdoutCapture loud;
        EXPECT_FALSE(solve(outside, false));
        EXPECT_NE(loud.text(), "");
        expectUnused(outside, 1);
    }
}

// ---------------------------------------------------------------------------
// Edges.

// Limits and states where every quantity is a short binary fraction, so that
// a target placed at the end of the shape without cruise is met exactly.
TEST(Step1ClosedFormEdges, TargetAtShapeEndGivesZeroCruise) {
    const ShapeCase exact[] = {
        {&kPTZNt, {"", 0.0, 0.0, 0.0, 0.0, 2.625, {3.0, 3.0, 6.0}}},
        {&kPtZNt, {"", 0.0, 0.0, 0.0, 0.0, 0.0, {1.5, 4.0, 6.0}}},
        {&kPTZNT, {"", 0.0, 0.0, 0.0, 0.0, 0.0, {3.0, 3.0, 6.0}}},
        {&kPtZNT, {"", 0.0, 1.125, 0.0, 0.0, -0.75, {1.5, 3.0, 6.0}}},
    };
    for (ShapeCase sc : exact) {
        SCOPED_TRACE(sc.row->name);
        const MotionCase& m = sc.m;
        const PulseRun rise = risePulse(m.v, m.a, m.lim.V, m.lim.A, m.lim.J);
        const PulseRun fall = fallPulse(m.lim.V, m.vt, m.lim.A, m.lim.J);
        sc.m.pt = m.p + rise.dist + fall.dist;
        for (bool variant : {false, true}) {
            AxisPlan rec = recordFor(sc.m);
            if (variant) rec = mirrored(rec);
            ASSERT_TRUE(sc.row->solve(rec, variant));
            const int cs = 1 + riseCount(*sc.row) - 1;
            EXPECT_EQ(rec.secTime[cs + 1], rec.secTime[cs]);
            EXPECT_EQ(rec.secPos[cs + 1], rec.secPos[cs]);
            ++rec.pointCount;
            expectPhysicalCurve(rec);
            const double s = variant ? -1.0 : 1.0;
            expectEndsAt(rec, rise.time + fall.time, s * sc.m.pt, s * m.vt);
        }
        checkShape(*sc.row, sc.m, true);
    }
}

TEST(Step1ClosedFormEdges, PtZNtWithoutRoomToFallUsesTinyNegativePeak) {
    // Rest start, V = 1.5, J = 6: the rise ends at exactly 1.5, so a target
    // velocity of 1.5 leaves J (v2 - vt) = 0 and one above it leaves it negative.
    for (double vt : {1.5, 1.75}) {
        for (bool variant : {false, true}) {
            SCOPED_TRACE("vt=" + std::to_string(vt) + (variant ? " (mirror)" : ""));
            const double s = variant ? -1.0 : 1.0;
            AxisPlan rec = makeAxis(0.0, 0.0, 0.0, 4.0, 1.5, 4.0, 6.0);
            rec.tgtVel = vt;
            if (variant) rec = mirrored(rec);
            StdoutCapture quiet;
            ASSERT_TRUE(solveStep1PtZNt(rec, variant));
            EXPECT_EQ(quiet.text(), "");
            ASSERT_EQ(rec.pointCount, 5);
            EXPECT_EQ(rec.secAcc[4], s * -kRootGuard);
            // Both ramps of the fall take no time.
            EXPECT_EQ(rec.secTime[4], rec.secTime[3]);
            EXPECT_EQ(rec.secTime[5], rec.secTime[4]);
            EXPECT_EQ(rec.secVel[5], s * vt);
            EXPECT_EQ(rec.secPos[5], s * 4.0);
            if (vt == 1.5) {
                ++rec.pointCount;
                expectPhysicalCurve(rec);
            }
        }
    }
}

TEST(Step1ClosedFormEdges, PtZNtSnapsFallTimesNearTheStart) {
    // Barely below V and to a target velocity barely below it: each triangle
    // lasts about 2e-7, so the fall's times, within 1e-6 of the start, are
    // snapped onto it and land before the end of the cruise.
    const double V = 1.0, v = V - 1e-14, dv = V - v;
    AxisPlan rec = makeAxis(0.0, v, 0.0, 2.0, V, 1.0, 1.0);
    rec.tgtVel = v;
    addHistory(rec);
    ASSERT_TRUE(solveStep1PtZNt(rec, false));
    ASSERT_EQ(rec.pointCount, 7);
    const double te = rec.secTime[4] - rec.secTime[2];  // the rise, about 2e-7
    EXPECT_NEAR(te, 2.0 * std::sqrt(dv), 1e-12);
    EXPECT_EQ(rec.secTime[7], rec.secTime[6]);
    EXPECT_NEAR(rec.secTime[5] - rec.secTime[6], te, 1e-12);
    EXPECT_EQ(rec.secPos[7], 2.0);
}

TEST(Step1ClosedFormEdges, PtZNtAbovePeakDropsTheFirstRamp) {
    // v + a^2/(2J) <= V, but a is above the peak that would end at V: the ramp
    // up gets no time and the curve jumps from a to the peak at the start.
    // The tree never sends such a state here; the solver takes it as it is.
    const double v = 1.95, a = 3.0, J = 40.0;
    AxisPlan rec = makeAxis(0.0, v, a, 3.0, 2.0, 4.0, J);
    rec.tgtVel = 1.9;
    ASSERT_TRUE(solveStep1PtZNt(rec, false));
    const double ap = std::sqrt((2.0 - v) * J + a * a / 2.0);
    EXPECT_EQ(rec.secTime[1], 0.0);
    EXPECT_EQ(rec.secAcc[1], ap);
    EXPECT_EQ(rec.secVel[1], v);
    ++rec.pointCount;
    EXPECT_NEAR(checkCurve(rec).maxAccJump, a - ap, 1e-12);
}

}  // namespace
}  // namespace vekta
