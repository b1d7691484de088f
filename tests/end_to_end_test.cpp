// A controller's view: one update, then one sampling call per axis per period
// until every axis has finished.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "solvers/abk.h"
#include "state/planner_state.h"
#include "support/test_support.h"
#include "vekta/vekta.h"

namespace vekta {
namespace {

struct Sample {
    double p, v, a;
};

// The time-optimal rest-to-rest move that reaches both limits, evaluated
// section by section: +J, hold A, -J, cruise at V, -J, hold -A, +J.
Sample doubleS(double t, double start, double dist, double V, double A, double J) {
    const double tj = A / J, ta = V / A - A / J, tv = dist / V - (V / A + A / J);
    const double durations[7] = {tj, ta, tj, tv, tj, ta, tj};
    const double jerks[7] = {J, 0.0, -J, 0.0, -J, 0.0, J};
    double p = start, v = 0.0, a = 0.0;
    for (int s = 0; s < 7 && t > 0.0; ++s) {
        const double d = std::min(t, durations[s]);
        const double j = jerks[s];
        p += v * d + a * d * d / 2.0 + j * d * d * d / 6.0;
        v += a * d + j * d * d / 2.0;
        a += j * d;
        t -= d;
    }
    return {p, v, a};
}

TEST(EndToEnd, LongSixAxisMoveFromRestFinishesTogetherOnTarget) {
    const double pos[6] = {0.1, -0.2, 0.0, 1.0, 0.5, -1.0};
    const double tgt[6] = {1.1, -1.7, 4.0, -0.5, 0.9, 1.0};
    const double maxVel[6] = {1.0, 1.2, 1.5, 0.9, 2.0, 1.1};
    const double maxAcc[6] = {3.0, 4.0, 5.0, 2.5, 6.0, 3.5};
    const double zero[6] = {};
    const double ratio = 12.0;
    PlannerState& st = defaultState();
    st = PlannerState{};
    {
        test::StdoutCapture quiet;
        ASSERT_TRUE(vektaPostionModeParaUpd(6, tgt, maxVel, maxAcc, ratio, pos, zero, zero, 0.0));
    }
    // Axis 2 has the longest way at its limits.
    ASSERT_EQ(st.slowestAxis, 2);
    const double J = maxAcc[2] * ratio;
    const double T = (tgt[2] - pos[2]) / maxVel[2] + maxVel[2] / maxAcc[2] + maxAcc[2] / J;
    EXPECT_NEAR(getLeftMoveTime(), T, 1e-12);
    for (int i = 0; i < 6; ++i) {
        const AxisPlan& r = st.records[i];
        // A synchronised axis is solved to the root finder's tolerance and its
        // last point then pinned on the target: its last section may miss the
        // target by up to that tolerance. The slowest axis is exact.
        test::CurveTolerance tol;
        if (i != 2) tol.rel = ABK_TOL;  // relative to a scale of at least 1
        test::expectPhysicalCurve(r, true, tol);
        test::expectEndsAt(r, T, tgt[i], 0.0, 1e-9);
    }

    int finishedAt[6] = {0, 0, 0, 0, 0, 0};
    test::StdoutCapture quiet;
    for (int period = 1; period < 10000; ++period) {
        bool all = true;
        for (int i = 0; i < 6; ++i) {
            if (finishedAt[i] != 0) continue;
            double p, v, a;
            int count = 0;
            const int done = vektaPositionModePerFreedom(i, 1, &p, &v, &a, count);
            ASSERT_EQ(count, 1);
            if (i == 2 && !done) {
                const Sample want = doubleS(period * CYCLE_TIME, pos[2], tgt[2] - pos[2], maxVel[2], maxAcc[2], J);
                ASSERT_NEAR(p, want.p, 1e-9) << "period " << period;
                ASSERT_NEAR(v, want.v, 1e-9) << "period " << period;
                ASSERT_NEAR(a, want.a, 1e-9) << "period " << period;
            }
            if (done) {
                finishedAt[i] = period;
                EXPECT_EQ(p, tgt[i]) << "axis " << i;
                EXPECT_EQ(v, 0.0);
                EXPECT_EQ(a, 0.0);
            }
            all = all && done;
        }
        if (all) break;
    }
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(finishedAt[i], finishedAt[0]) << "axis " << i;
    }
    EXPECT_EQ(finishedAt[0], static_cast<int>(std::ceil(T / CYCLE_TIME)));
}

}  // namespace
}  // namespace vekta
