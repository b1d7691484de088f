// The root finder: its accepted roots, every failure path with its message and
// fallback value, and the evaluation budget.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "solvers/abk.h"
#include "support/test_support.h"

namespace vekta {
namespace {

// Residuals record every trial point so the order of calls can be checked.
std::vector<double> g_trials;

double linear(AxisPlan&, const double* x) {
    g_trials.push_back(*x);
    return *x - 0.3;
}
double cubic(AxisPlan&, const double* x) {
    g_trials.push_back(*x);
    return std::pow(*x, 3.0) - 2.0 * *x - 5.0;  // root near 2.0945515
}
double alwaysPositive(AxisPlan&, const double* x) {
    g_trials.push_back(*x);
    return *x + 1.0;
}
double flatSmall(AxisPlan&, const double* x) {
    g_trials.push_back(*x);
    return 1e-6;
}
// A jump from -0.3 to +0.3 at 0.5: the bracket narrows onto the jump, and the
// value kept at the end is positive and too large.
double jumpAtHalf(AxisPlan&, const double* x) {
    g_trials.push_back(*x);
    return *x < 0.5 ? -0.3 : 0.3;
}
// A jump at zero: the kept (weighted) value is negative, which the signed
// acceptance test lets through however large it is.
double jumpAtZero(AxisPlan&, const double* x) {
    g_trials.push_back(*x);
    return *x <= 0.0 ? -1.0 : 1.0;
}
// A jump where doubles are 1e14 apart: the bracket can never get narrower
// than the tolerance, so only the iteration budget ends the search.
double farJump(AxisPlan&, const double* x) {
    g_trials.push_back(*x);
    return *x < 1e30 ? -1.0 : 1.0;
}
// Writes a marker when asked to write sections, which the root finder must never ask.
double writesWhenAsked(AxisPlan& rec, const double* x) {
    if (rec.writeSections == 1) rec.pointCount = 99;
    return *x - 0.25;
}

struct AbkRun {
    bool ok;
    double out;
    std::string printed;
};

AbkRun run(Step2Residual r, double lo, double hi, double initialOut = -7.0) {
    g_trials.clear();
    AxisPlan rec{};
    rec.writeSections = 1;
    double out = initialOut;
    test::StdoutCapture cap;
    const bool ok = abkSolve(rec, r, &out, lo, hi);
    EXPECT_EQ(rec.writeSections, 0);
    return {ok, out, cap.text()};
}

TEST(Abk, FindsRootsOfSmoothResiduals) {
    AbkRun lin = run(linear, 0.0, 1.0);
    EXPECT_TRUE(lin.ok);
    EXPECT_NEAR(lin.out, 0.3, 1e-5);
    EXPECT_EQ(lin.printed, "");

    AbkRun cub = run(cubic, 2.0, 3.0);
    EXPECT_TRUE(cub.ok);
    EXPECT_LT(std::fabs(std::pow(cub.out, 3.0) - 2.0 * cub.out - 5.0), 1e-5);
    EXPECT_LE(g_trials.size(), 205u);
}

TEST(Abk, StartsWithShiftedProbesThenOneExactEnd) {
    // |r(hi - d)| > |r(lo + d)|: the third call is at the exact lower end.
    run(linear, 0.0, 1.0);
    ASSERT_GE(g_trials.size(), 3u);
    EXPECT_EQ(g_trials[0], 0.0 + 1e-8);
    EXPECT_EQ(g_trials[1], 1.0 - 1e-8);
    EXPECT_EQ(g_trials[2], 0.0);

    // Otherwise the third call is at the exact upper end.
    run(linear, 0.0, 0.5);
    ASSERT_GE(g_trials.size(), 3u);
    EXPECT_EQ(g_trials[2], 0.5);
}

TEST(Abk, AcceptsAnEndThatAlreadyMeetsTheTolerance) {
    // Both probes equal: the value probed at lo + d stands for lo itself.
    AbkRun r = run(flatSmall, 1.0, 2.0);
    EXPECT_TRUE(r.ok);
    EXPECT_EQ(r.out, 1.0);
    EXPECT_EQ(g_trials.size(), 3u);

    // A root exactly at the lower end.
    AbkRun atLo = run(linear, 0.3, 2.0);
    EXPECT_TRUE(atLo.ok);
    EXPECT_EQ(atLo.out, 0.3);
}

TEST(Abk, EmptyBracketProbesJustOutsideIt) {
    AbkRun r = run(linear, 0.3, 0.3);
    EXPECT_TRUE(r.ok);
    EXPECT_EQ(r.out, 0.3);
    ASSERT_GE(g_trials.size(), 2u);
    EXPECT_EQ(g_trials[0], 0.3 - 1e-8);
    EXPECT_EQ(g_trials[1], 0.3 + 1e-8);
}

TEST(Abk, FailurePathsPrintTheirLineAndLeaveTheirFallback) {
    // lo > hi: message, output untouched, nothing evaluated.
    AbkRun input = run(linear, 2.0, 1.0, 42.0);
    EXPECT_FALSE(input.ok);
    EXPECT_EQ(input.out, 42.0);
    EXPECT_EQ(input.printed, "abk:error input 2.000000 1.000000\n");
    EXPECT_TRUE(g_trials.empty());

    // Same sign at both ends: midpoint, silently.
    AbkRun same = run(alwaysPositive, 0.0, 1.0);
    EXPECT_FALSE(same.ok);
    EXPECT_EQ(same.out, 0.5);
    EXPECT_EQ(same.printed, "");
    EXPECT_EQ(g_trials.size(), 3u);

    // Converged onto a jump whose kept value is positive: no line feed after it.
    AbkRun jump = run(jumpAtHalf, 0.0, 1.0);
    EXPECT_FALSE(jump.ok);
    EXPECT_NEAR(jump.out, 0.5, 1e-5);
    EXPECT_EQ(jump.printed, "ABK fail with error: 0.009375");

    // Out of iterations: exactly 3 + 2 x 101 evaluations, and the midpoint of
    // the bracket passed in, not of the last one.
    AbkRun timeout = run(farJump, 0.0, 3e30);
    EXPECT_FALSE(timeout.ok);
    EXPECT_EQ(timeout.out, 1.5e30);
    EXPECT_EQ(g_trials.size(), 3u + 2u * ABK_MAX_ITER);
    EXPECT_EQ(timeout.printed.rfind("abk timeout ", 0), 0u);
    EXPECT_EQ(timeout.printed.back(), '\n');
}

TEST(Abk, SignedAcceptanceLetsANegativeKeptResidualThrough) {
    AbkRun r = run(jumpAtZero, -1.0, 1.0);
    EXPECT_TRUE(r.ok);
    EXPECT_LE(std::fabs(r.out), 1e-5);
    EXPECT_EQ(r.printed, "");
    // Not a root in any physical sense: the residual there is -1.
    AxisPlan rec{};
    EXPECT_EQ(jumpAtZero(rec, &r.out), -1.0);
}

TEST(Abk, NeverAsksTheResidualToWrite) {
    AxisPlan rec{};
    rec.pointCount = 1;
    rec.writeSections = 1;
    double out = 0.0;
    EXPECT_TRUE(abkSolve(rec, writesWhenAsked, &out, 0.0, 1.0));
    EXPECT_EQ(rec.pointCount, 1);
    EXPECT_NEAR(out, 0.25, 1e-5);
}

}  // namespace
}  // namespace vekta
