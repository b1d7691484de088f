// The root finder: its accepted roots, the order of its first calls, every
// failure path with its message and fallback value, and the evaluation budget.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "numeric/abk.h"
#include "support/test_support.h"

namespace vekta::test {
namespace {

// The residual of the row being run; every trial point is recorded so that
// the order of calls can be checked.
double (*g_f)(double);
std::vector<double> g_trials;

double recorded(AxisPlan& rec, const double* x) {
    g_trials.push_back(*x);
    if (rec.writeSections == 1) rec.pointCount = 99;  // the finder must never ask for the sections
    return g_f(*x);
}
double linear(double x) { return x - 0.3; }
double cubic(double x) { return std::pow(x, 3.0) - 2.0 * x - 5.0; }  // root near 2.0945515
double positive(double x) { return x + 1.0; }
double flatSmall(double) { return 1e-6; }
double jumpAtHalf(double x) { return x < 0.5 ? -0.3 : 0.3; }  // kept value positive and too large
double jumpAtZero(double x) { return x <= 0.0 ? -1.0 : 1.0; }  // kept value negative: signed acceptance
double farJump(double x) { return x < 1e30 ? -1.0 : 1.0; }     // doubles 1e14 apart: only the budget ends it

constexpr double kNo = std::numeric_limits<double>::quiet_NaN();

struct Row {
    const char* what;
    double (*f)(double);
    double lo, hi;
    bool ok;
    double out, tol;           // expected output and how close
    const char* printed = "";  // exactly
    int trials = -1;           // evaluations, or -1
    double first[3] = {kNo, kNo, kNo};  // the first three trial points (NaN: not checked)
};

const Row kRows[] = {
    {"a smooth root; probes just inside, then the exact lower end", linear, 0.0, 1.0, true, 0.3, 1e-5, "", -1,
     {1e-8, 1.0 - 1e-8, 0.0}},
    {"the exact upper end third when its probe is smaller", linear, 0.0, 0.5, true, 0.3, 1e-5, "", -1,
     {1e-8, 0.5 - 1e-8, 0.5}},
    {"a cubic", cubic, 2.0, 3.0, true, 2.0945515, 1e-5},
    {"an end that already meets the tolerance", flatSmall, 1.0, 2.0, true, 1.0, 0.0, "", 3},
    {"a root exactly at the lower end", linear, 0.3, 2.0, true, 0.3, 0.0},
    {"an empty bracket probes just outside it", linear, 0.3, 0.3, true, 0.3, 0.0, "", -1,
     {0.3 - 1e-8, 0.3 + 1e-8, kNo}},
    {"lo > hi: a message, nothing evaluated", linear, 2.0, 1.0, false, 42.0, 0.0, "abk:error input 2.000000 1.000000\n",
     0},
    {"one sign at both ends: the midpoint, silently", positive, 0.0, 1.0, false, 0.5, 0.0, "", 3},
    {"converged onto a jump: no line feed", jumpAtHalf, 0.0, 1.0, false, 0.5, 1e-5, "ABK fail with error: 0.009375"},
    {"a negative kept residual is accepted", jumpAtZero, -1.0, 1.0, true, 0.0, 1e-5},
    {"out of iterations: the midpoint of the bracket passed in; the doubles at the jump printed", farJump, 0.0, 3e30,
     false, 1.5e30, 0.0, "abk timeout 1000000000000000019884624838656.000000 999999999999999879147136483328.000000\n",
     3 + 2 * kAbkMaxIterations},
};

TEST(Abk, EveryPathOfTheRootFinder) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.what);
        g_f = row.f;
        g_trials.clear();
        AxisPlan rec{};
        rec.pointCount = 1;
        rec.writeSections = 1;
        double out = 42.0;
        Output cap;
        const bool ok = abkSolve(rec, recorded, &out, row.lo, row.hi);
        EXPECT_EQ(cap.text(), row.printed);
        EXPECT_EQ(ok, row.ok);
        EXPECT_NEAR(out, row.out, row.tol);
        EXPECT_EQ(rec.writeSections, 0);
        EXPECT_EQ(rec.pointCount, 1);
        if (row.trials >= 0) {
            EXPECT_EQ(static_cast<int>(g_trials.size()), row.trials);
        }
        for (int k = 0; k < 3; ++k) {
            if (!std::isnan(row.first[k])) {
                EXPECT_EQ(g_trials.at(k), row.first[k]) << k;
            }
        }
    }
}

}  // namespace
}  // namespace vekta::test
