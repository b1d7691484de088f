// The root-finding step-1 solvers (ids 10..21), checked physically: each test
// state is made by building the intended shape from chosen section jerks and
// durations and integrating it, so the target lies inside the shape's region
// and the solver must find that very shape again.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "solvers/abk.h"
#include "state/numerics.h"
#include "step1/step1_solvers.h"
#include "support/test_support.h"

namespace vekta {
namespace {

using test::CurveTolerance;
using test::StdoutCapture;

struct Motion {
    double p, v, a;
};

struct Section {
    double jerk, dur;
};

Motion advance(Motion m, double j, double t) {
    return {m.p + m.v * t + m.a * t * t / 2.0 + j * t * t * t / 6.0, m.v + m.a * t + j * t * t / 2.0,
            m.a + j * t};
}

// Limits and the starting state of one case; vt is 0 unless a case says otherwise.
struct Start {
    double p, v, a, V, A, J, vt;
};

// The intended shape of each solver, from the state and its free parameter.
std::vector<Section> shapePTNt(const Start& s, double w) {
    const double A = s.A, J = s.J;
    const double v1 = s.v + (A * A - s.a * s.a) / (2.0 * J);
    const double an = std::sqrt(J * (w - s.vt));
    return {{J, (A - s.a) / J}, {0.0, (w - v1) / A - A / (2.0 * J)}, {-J, A / J}, {-J, an / J}, {J, an / J}};
}

std::vector<Section> shapePTNT(const Start& s, double x) {
    const double A = s.A, J = s.J;
    const double v1 = s.v + (A * A - s.a * s.a) / (2.0 * J);
    return {{J, (A - s.a) / J}, {0.0, (x - v1) / A - A / (2.0 * J)}, {-J, A / J},
            {-J, A / J},        {0.0, (x - s.vt) / A - A / J},      {J, A / J}};
}

std::vector<Section> shapePtNT(const Start& s, double x) {
    const double A = s.A, J = s.J;
    const double w = s.v + (2.0 * x * x - s.a * s.a) / (2.0 * J);
    return {{J, (x - s.a) / J}, {-J, x / J}, {-J, A / J}, {0.0, (w - s.vt) / A - A / J}, {J, A / J}};
}

std::vector<Section> shapePtNt(const Start& s, double x) {
    const double J = s.J;
    const double w = s.v + (2.0 * x * x - s.a * s.a) / (2.0 * J);
    const double an = std::sqrt(J * (w - s.vt));
    return {{J, (x - s.a) / J}, {-J, x / J}, {-J, an / J}, {J, an / J}};
}

// a <= 0: ramp up to the acceleration peak x, down to -q, back to 0.
std::vector<Section> shapePLNt(const Start& s, double x) {
    const double J = s.J;
    const double d = (s.v - s.vt) * J - s.a * s.a / 2.0;
    const double q = std::sqrt(x * x + d);
    return {{J, (x - s.a) / J}, {-J, (x + q) / J}, {J, q / J}};
}

std::vector<Section> shapePLNT(const Start& s, double x) {
    const double A = s.A, J = s.J;
    const double v2 = s.v + (2.0 * x * x - s.a * s.a - A * A) / (2.0 * J);
    const double vh = s.vt + A * A / (2.0 * J);
    return {{J, (x - s.a) / J}, {-J, (x + A) / J}, {0.0, (v2 - vh) / A}, {J, A / J}};
}

enum class Kind { PTNt, PTNT, PtNT, PtNt, PLNt, PLNT };

std::vector<Section> shapeOf(Kind k, const Start& s, double param) {
    switch (k) {
        case Kind::PTNt: return shapePTNt(s, param);
        case Kind::PTNT: return shapePTNT(s, param);
        case Kind::PtNT: return shapePtNT(s, param);
        case Kind::PtNt: return shapePtNt(s, param);
        case Kind::PLNt: return shapePLNt(s, param);
        case Kind::PLNT: return shapePLNT(s, param);
    }
    return {};
}

// The end of the intended shape from `s`: the target it is solved for.
struct Target {
    Motion end;
    double duration;
};

Target targetOf(Kind k, const Start& s, double param) {
    Target t{{s.p, s.v, s.a}, 0.0};
    for (const Section& sec : shapeOf(k, s, param)) {
        EXPECT_GE(sec.dur, 0.0) << "the case lies outside its shape's region";
        t.end = advance(t.end, sec.jerk, sec.dur);
        t.duration += sec.dur;
    }
    EXPECT_NEAR(t.end.v, s.vt, 1e-12);
    EXPECT_NEAR(t.end.a, 0.0, 1e-12);
    return t;
}

// Ids 10..17 get the flag; 18..21 find the direction from the acceleration.
bool solve(Kind k, AxisPlan& rec, bool variant) {
    switch (k) {
        case Kind::PTNt: return solveStep1PTNt(rec, variant);
        case Kind::PTNT: return solveStep1PTNT(rec, variant);
        case Kind::PtNT: return solveStep1PtNT(rec, variant);
        case Kind::PtNt: return solveStep1PtNt(rec, variant);
        case Kind::PLNt: return solveStep1PLNt(rec);
        case Kind::PLNT: return solveStep1PLNT(rec);
    }
    return false;
}

// A record at `s` (sign -1: the mirrored state), with `target`. With a prefix,
// two earlier points lead up to the state at T0 = 0.05 s through two sections
// of constant acceleration, so the solver must append after them.
AxisPlan recordAt(const Start& s, double target, double sign, bool prefix) {
    AxisPlan rec = test::makeAxis(sign * s.p, sign * s.v, sign * s.a, sign * target, s.V, s.A, s.J);
    rec.tgtVel = sign * s.vt;
    if (prefix) {
        const Motion m{sign * s.p, sign * s.v, sign * s.a};
        const Motion m1 = advance(m, 0.0, -0.03);
        const Motion m0 = advance(m1, 0.0, -0.02);
        const Motion pts[3] = {m0, m1, m};
        const double times[3] = {0.0, 0.02, 0.05};
        for (int i = 0; i < 3; ++i) storePoint(rec, i, times[i], pts[i].a, pts[i].v, pts[i].p, 1.0);
        rec.pointCount = 3;
    }
    return rec;
}

struct RootCase {
    const char* name;
    Kind kind;
    Start start;
    double param;  // the shape's free parameter the target is made from
    struct Accuracy {
        double continuity;  // section-to-point mismatch, relative to the motion's size
        double shape;       // section ends and end time against the intended shape
    } acc;
};

// The scaled residuals hold the end to about 1e-11 of the motion's size; the
// PLNT residual is the plain end-position error, which ABK holds only to 1e-5
// (the end time then moves by up to about 1e-5 / (dP/dx) with the root).
constexpr RootCase::Accuracy kTight{1e-10, 1e-9};
constexpr RootCase::Accuracy kPlainResidual{1e-5, 1e-4};

const RootCase kCases[] = {
    // PTNt: the positive pulse reaches A, the negative triangle stays below it.
    {"PTNt backing up", Kind::PTNt, {0.2, -0.5, 1.0, 3.0, 2.0, 10.0, 0.0}, 0.25, kTight},
    {"PTNt accelerating", Kind::PTNt, {-3.0, 0.0, 1.5, 3.0, 2.0, 10.0, 0.0}, 0.35, kTight},
    {"PTNt near V", Kind::PTNt, {0.0, -0.2, 1.0, 0.3, 2.0, 10.0, 0.0}, 0.28, kTight},
    {"PTNt far from origin", Kind::PTNt, {1000.0, -0.5, 1.0, 3.0, 2.0, 10.0, 0.0}, 0.3, kTight},
    // PTNT: both pulses reach A.
    {"PTNT from rest", Kind::PTNT, {0.0, 0.0, 0.0, 3.0, 2.0, 10.0, 0.0}, 1.5, kTight},
    {"PTNT moving", Kind::PTNT, {5.0, 0.3, 1.0, 2.0, 2.0, 10.0, 0.0}, 1.2, kTight},
    {"PTNT backing up", Kind::PTNT, {0.0, -1.0, 0.5, 2.0, 2.0, 10.0, 0.0}, 0.9, kTight},
    {"PTNT to a moving target", Kind::PTNT, {0.0, 0.2, 0.4, 2.0, 2.0, 10.0, 0.3}, 1.1, kTight},
    // PtNT: triangle up, the negative pulse holds -A.
    {"PtNT fast", Kind::PtNT, {0.0, 1.0, 0.5, 3.0, 2.0, 10.0, 0.0}, 1.2, kTight},
    {"PtNT under V", Kind::PtNT, {2.0, 1.0, 0.5, 1.2, 2.0, 10.0, 0.0}, 1.3, kTight},
    {"PtNT slow", Kind::PtNT, {0.0, 0.2, 0.5, 3.0, 2.0, 10.0, 0.0}, 1.8, kTight},
    {"PtNT at zero acc", Kind::PtNT, {-7.0, 1.0, 0.0, 3.0, 2.0, 10.0, 0.0}, 0.9, kTight},
    // PtNt: two triangles, from each branch of the bracket.
    {"PtNt a > 0", Kind::PtNt, {0.0, 0.1, 0.8, 3.0, 2.0, 10.0, 0.0}, 1.2, kTight},
    {"PtNt a > 0 slower than vt", Kind::PtNt, {0.0, -0.3, 0.8, 3.0, 2.0, 10.0, 0.0}, 1.9, kTight},
    {"PtNt a < 0 fast", Kind::PtNt, {1.0, 0.3, -0.5, 3.0, 2.0, 10.0, 0.0}, 0.6, kTight},
    {"PtNt a < 0 backing up", Kind::PtNt, {1.0, -0.2, -0.3, 3.0, 2.0, 10.0, 0.0}, 1.7, kTight},
    {"PtNt from rest", Kind::PtNt, {0.0, 0.0, 0.0, 3.0, 2.0, 10.0, 0.0}, 0.7, kTight},
    // PLNt: a < 0, the closing triangle stays below A.
    {"PLNt", Kind::PLNt, {0.0, 0.4125, -1.5, 3.0, 2.0, 10.0, 0.0}, -0.4, kTight},
    {"PLNt near its lower end", Kind::PLNt, {3.0, 0.4125, -1.5, 3.0, 2.0, 10.0, 0.0}, -0.95, kTight},
    {"PLNt near zero peak", Kind::PLNt, {0.0, 0.4125, -1.5, 3.0, 2.0, 10.0, 0.0}, -0.05, kTight},
    {"PLNt mild deceleration", Kind::PLNt, {-1.0, 0.4, -1.0, 3.0, 2.0, 10.0, 0.0}, -0.3, kTight},
    // PLNT: a < 0, the closing pulse holds -A.
    {"PLNT", Kind::PLNT, {0.0, 1.0, -1.0, 3.0, 2.0, 10.0, 0.0}, -0.5, kPlainResidual},
    {"PLNT deep", Kind::PLNT, {-2.0, 1.5, -1.8, 3.0, 2.0, 10.0, 0.0}, -1.6, kPlainResidual},
};

// Sections written by each shape (one point per section).
int sectionCount(Kind k) {
    switch (k) {
        case Kind::PTNt: return 5;
        case Kind::PTNT: return 6;
        case Kind::PtNT: return 5;
        case Kind::PtNt: return 4;
        case Kind::PLNt: return 3;
        case Kind::PLNT: return 4;
    }
    return 0;
}

TEST(Step1RootSolvers, FindTheIntendedShapeAndEndOnTarget) {
    for (const RootCase& c : kCases) {
        for (bool prefix : {false, true}) {
            SCOPED_TRACE(std::string(c.name) + (prefix ? " after earlier points" : ""));
            const Start& s = c.start;
            const std::vector<Section> shape = shapeOf(c.kind, s, c.param);
            const Target target = targetOf(c.kind, s, c.param);

            AxisPlan rec = recordAt(s, target.end.p, 1.0, prefix);
            const int first = rec.pointCount;
            const double t0 = rec.secTime[first - 1];
            ASSERT_TRUE(solve(c.kind, rec, false));
            const int k = sectionCount(c.kind);
            EXPECT_EQ(rec.pointCount, first + k - 1) << "the last point is not counted";
            EXPECT_FALSE(rec.coefDirty);
            rec.pointCount += 1;  // the planner counts the last point

            test::expectPhysicalCurve(rec, true, CurveTolerance{c.acc.continuity, 1e-9});
            test::expectEndsAt(rec, t0 + target.duration, target.end.p, s.vt, c.acc.shape);
            // Every section end is where the intended shape puts it.
            Motion e{s.p, s.v, s.a};
            double t = t0;
            for (int i = 0; i < k; ++i) {
                e = advance(e, shape[i].jerk, shape[i].dur);
                t += shape[i].dur;
                EXPECT_NEAR(rec.secTime[first + i], t, c.acc.shape) << "point " << first + i;
                EXPECT_NEAR(rec.secAcc[first + i], e.a, c.acc.shape) << "point " << first + i;
                EXPECT_NEAR(rec.secVel[first + i], e.v, c.acc.shape) << "point " << first + i;
            }
        }
    }
}

// Targets made from the whole range of each free parameter, its ends
// included (where a hold or a ramp shrinks to nothing and the root sits on
// the bracket's end), near the origin and far from it: every one is found.
TEST(Step1RootSolvers, SweepTheWholeParameterRange) {
    struct Range {
        Kind kind;
        Start start;
        double lo, hi;  // the parameter's range for this state
        RootCase::Accuracy acc;
    };
    const Range ranges[] = {
        {Kind::PTNt, {0.0, -0.5, 1.0, 3.0, 2.0, 10.0, 0.0}, 0.0, 0.4, kTight},
        {Kind::PTNT, {0.0, 0.0, 0.0, 3.0, 2.0, 10.0, 0.0}, 0.4, 3.0, kTight},
        {Kind::PtNT, {0.0, 1.0, 0.5, 3.0, 2.0, 10.0, 0.0}, 0.5, 2.0, kTight},
        {Kind::PtNt, {0.0, 0.1, 0.8, 3.0, 2.0, 10.0, 0.0}, 0.8, std::sqrt(3.32), kTight},
        {Kind::PtNt, {0.0, 0.3, -0.5, 3.0, 2.0, 10.0, 0.0}, 0.0, std::sqrt(1.125), kTight},
        {Kind::PLNt, {0.0, 0.4125, -1.5, 3.0, 2.0, 10.0, 0.0}, -1.0, 0.0, kTight},
        {Kind::PLNT, {0.0, 1.0, -1.0, 3.0, 2.0, 10.0, 0.0}, -1.0, 0.0, kPlainResidual},
    };
    constexpr int kSteps = 8;
    for (const Range& r : ranges) {
        for (double origin : {0.0, 2500.0}) {
            for (int i = 0; i <= kSteps; ++i) {
                const double param = r.lo + (r.hi - r.lo) * i / kSteps;
                Start s = r.start;
                s.p = origin;
                SCOPED_TRACE(std::to_string(static_cast<int>(r.kind)) + " param " + std::to_string(param) +
                             " origin " + std::to_string(origin));
                const Target target = targetOf(r.kind, s, param);
                AxisPlan rec = recordAt(s, target.end.p, 1.0, false);
                ASSERT_TRUE(solve(r.kind, rec, false));
                rec.pointCount += 1;
                // Times may only step back by rounding where a section has no length.
                const CurveReport rep = checkCurve(rec);
                for (int k = 1; k < rec.pointCount; ++k) {
                    EXPECT_GE(rec.secTime[k] - rec.secTime[k - 1], -1e-12) << "point " << k;
                }
                // The plain PLNT residual bounds the end error absolutely.
                const double scale = r.kind == Kind::PLNT ? 1.0 : std::fmax(1.0, std::fabs(origin));
                EXPECT_LE(rep.maxPosMismatch, r.acc.continuity * scale);
                EXPECT_LE(rep.maxVelMismatch, r.acc.continuity * scale);
                EXPECT_LE(rep.peakAcc, s.A * (1.0 + 1e-9));
                EXPECT_LE(rep.peakVel, s.V * (1.0 + 1e-9));
                test::expectEndsAt(rec, target.duration, target.end.p, s.vt, r.acc.shape);
            }
        }
    }
}

// The odd id (or, for PLNt/PLNT, the state with a > 0) is the exact mirror
// image of the even one: same times, every value negated.
TEST(Step1RootSolvers, MirroredStateGivesTheExactMirrorCurve) {
    for (const RootCase& c : kCases) {
        for (bool prefix : {false, true}) {
            SCOPED_TRACE(std::string(c.name) + (prefix ? " after earlier points" : ""));
            const Start& s = c.start;
            const double pt = targetOf(c.kind, s, c.param).end.p;
            AxisPlan even = recordAt(s, pt, 1.0, prefix);
            AxisPlan odd = recordAt(s, pt, -1.0, prefix);
            ASSERT_TRUE(solve(c.kind, even, false));
            ASSERT_TRUE(solve(c.kind, odd, true));
            ASSERT_EQ(even.pointCount, odd.pointCount);
            even.pointCount += 1;
            odd.pointCount += 1;
            test::expectPhysicalCurve(odd, true, CurveTolerance{c.acc.continuity, 1e-9});
            const int last = odd.pointCount - 1;
            for (int i = 0; i <= last; ++i) {
                EXPECT_EQ(odd.secTime[i], even.secTime[i]) << "point " << i;
                EXPECT_EQ(odd.secAcc[i], -even.secAcc[i]) << "point " << i;
                EXPECT_EQ(odd.secVel[i], -even.secVel[i]) << "point " << i;
                EXPECT_EQ(odd.secPos[i], -even.secPos[i]) << "point " << i;
            }
            test::expectEndsAt(odd, even.secTime[last], -pt, -s.vt, 0.0);
            // Ids 10..17 store the final zero negated; PLNt/PLNT store a plain +0.
            const bool plain = c.kind == Kind::PLNt || c.kind == Kind::PLNT;
            EXPECT_EQ(std::signbit(odd.secAcc[last]), !plain);
        }
    }
}

// Rest-to-rest moves too short to cruise are time-optimal: their duration is
// that of the classic double-S move.
TEST(Step1RootMinimality, RestToRestMatchesDoubleS) {
    const double V = 3.0, A = 2.0, J = 10.0;
    struct Move {
        Kind kind;
        double distance;
        double origin;
    };
    // PTNT needs A^2/J < peak velocity < V, i.e. 2 A^3/J^2 < distance < 5.1;
    // PtNt needs distance <= 2 A^3/J^2 = 0.16.
    const Move moves[] = {
        {Kind::PTNT, 0.2, 0.0},   {Kind::PTNT, 1.0, 0.0},  {Kind::PTNT, 2.5, -40.0},
        {Kind::PTNT, 5.0, 800.0}, {Kind::PtNt, 1e-6, 0.0}, {Kind::PtNt, 1e-3, 3.0},
        {Kind::PtNt, 0.05, 0.0},  {Kind::PtNt, 0.15, -250.0},
    };
    for (const Move& mv : moves) {
        for (bool variant : {false, true}) {
            SCOPED_TRACE(std::to_string(mv.distance) + (variant ? " backwards" : ""));
            const double sign = variant ? -1.0 : 1.0;
            AxisPlan rec = test::makeAxis(mv.origin, 0.0, 0.0, mv.origin + sign * mv.distance, V, A, J);
            ASSERT_TRUE(solve(mv.kind, rec, variant));
            rec.pointCount += 1;
            test::expectPhysicalCurve(rec, true, CurveTolerance{kTight.continuity, 1e-9});
            const double T = test::doubleSDuration(mv.distance, V, A, J);
            test::expectEndsAt(rec, T, mv.origin + sign * mv.distance, 0.0, 1e-9);
            EXPECT_NEAR(rec.secTime[rec.pointCount - 1], T, 1e-9 * T);
        }
    }
}

// A move of zero length still succeeds: all sections collapse to nothing.
TEST(Step1RootMinimality, ZeroLengthMoveTakesNoTime) {
    AxisPlan rec = test::makeAxis(4.0, 0.0, 0.0, 4.0, 3.0, 2.0, 10.0);
    ASSERT_TRUE(solveStep1PtNt(rec, false));
    rec.pointCount += 1;
    test::expectPhysicalCurve(rec);
    test::expectEndsAt(rec, 0.0, 4.0, 0.0, 1e-12);
}

// The residual coefficients are computed once per planning: while coefDirty is
// clear the cached ones stand, so a changed target is not seen until the flag
// is set again (the planner sets it at the start of every axis).
TEST(Step1RootSolvers, CachedCoefficientsLastUntilMarkedDirty) {
    AxisPlan first = test::makeAxis(0.0, 0.0, 0.0, 1.0, 3.0, 2.0, 10.0);
    ASSERT_TRUE(solveStep1PTNT(first, false));
    ASSERT_FALSE(first.coefDirty);

    AxisPlan stale = first;
    stale.pointCount = 1;
    stale.tgtPos = 2.0;
    ASSERT_TRUE(solveStep1PTNT(stale, false));
    EXPECT_EQ(stale.secTime[stale.pointCount], first.secTime[first.pointCount]);

    stale.pointCount = 1;
    stale.coefDirty = true;
    ASSERT_TRUE(solveStep1PTNT(stale, false));
    EXPECT_NEAR(stale.secTime[stale.pointCount], test::doubleSDuration(2.0, 3.0, 2.0, 10.0), 1e-9);
}

struct FailCase {
    const char* name;
    Kind kind;
    bool variant;
    Start start;
    double target;
    const char* message;
};

// Each guard once, ABK's own failures, and nothing counted on any failure.
TEST(Step1RootFailures, PrintTheirMessageAndCountNothing) {
    const FailCase cases[] = {
        // PtNT: even the smallest usable peak exceeds A.
        {"PtNT amin", Kind::PtNT, false, {0.0, -0.5, 0.0, 3.0, 2.0, 10.0, 0.0}, 1.0,
         "S1 PtNT error: (amin=3.000000e+00) >= (Am=2.000000e+00)"},
        // The same through the variant: the guard sees the mirrored state.
        {"PtNT amin mirrored", Kind::PtNT, true, {0.0, 0.5, 0.0, 3.0, 2.0, 10.0, 0.0}, -1.0,
         "S1 PtNT error: (amin=3.000000e+00) >= (Am=2.000000e+00)"},
        // PLNt: the state would have to gain velocity, not lose it.
        {"PLNt d < 0", Kind::PLNt, false, {0.0, 0.0, -1.0, 3.0, 2.0, 10.0, 0.0}, -1.0,
         "S1 PLNt error: -5.000000e-01 >= 0"},
        // PtNt: the bracket is empty (the positive triangle would pass A).
        {"PtNt empty bracket", Kind::PtNt, false, {0.0, -0.4, -0.3, 3.0, 2.0, 10.0, 0.0}, 0.0,
         "abk:error input 2.011219 2.000000\n"},
        // Targets outside each shape's reach: no sign change, ABK fails silently.
        {"PTNt out of reach", Kind::PTNt, false, {0.0, -0.5, 1.0, 3.0, 2.0, 10.0, 0.0}, 50.0, ""},
        {"PTNT out of reach", Kind::PTNT, true, {0.0, 0.0, 0.0, 3.0, 2.0, 10.0, 0.0}, -50.0, ""},
        {"PtNT out of reach", Kind::PtNT, false, {0.0, 1.0, 0.5, 3.0, 2.0, 10.0, 0.0}, 50.0, ""},
        {"PtNt out of reach", Kind::PtNt, false, {0.0, 0.0, 0.0, 3.0, 2.0, 10.0, 0.0}, 50.0, ""},
        {"PLNt out of reach", Kind::PLNt, false, {0.0, 0.4125, -1.5, 3.0, 2.0, 10.0, 0.0}, 50.0, ""},
        {"PLNT out of reach", Kind::PLNT, false, {0.0, 1.0, -1.0, 3.0, 2.0, 10.0, 0.0}, 50.0, ""},
    };
    for (const FailCase& c : cases) {
        for (bool prefix : {false, true}) {
            SCOPED_TRACE(std::string(c.name) + (prefix ? " after earlier points" : ""));
            AxisPlan rec = recordAt(c.start, c.target, 1.0, prefix);
            const int before = rec.pointCount;
            StdoutCapture out;
            EXPECT_FALSE(solve(c.kind, rec, c.variant));
            EXPECT_EQ(out.text(), c.message);
            EXPECT_EQ(rec.pointCount, before);
        }
    }
}

}  // namespace
}  // namespace vekta
