// The planning pass over stand-in trees and solvers: its bookkeeping, the
// choice of the slowest axis, the frame handling of step 2 and every failure
// line. The real trees and solvers are exercised end to end elsewhere.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "planner/planning_pass.h"
#include "support/test_support.h"

namespace vekta {
namespace {

// What the stand-ins do, set per test.
int g_step1Id = 2;
double g_step1Time[6];
int g_step2Id = 0;
bool g_step2Ok = true;
int g_step2SeenInv = 0;

// Step-1 stand-in tree: node 1 takes the snapshot and classifies.
bool fakeStep1Node(PlannerState&, AxisPlan& r) {
    takeSnapshot(r);
    r.step1Profile = g_step1Id;
    return true;
}
// Step-2 stand-in tree: node 9 classifies.
bool fakeStep2Node(PlannerState&, AxisPlan& r) {
    r.step2Profile = g_step2Id;
    return true;
}
bool filler(PlannerState&, AxisPlan&) { return true; }

// Step-1 stand-in solver: one straight point at the axis's own end time,
// written but not counted (the pass counts it).
bool fakeStep1Solver(AxisPlan& r) {
    if (r.step1Profile < 2 || r.step1Profile > 21) return false;
    const int axis = static_cast<int>(r.maxVel) - 1;  // tests put the axis number there
    storePoint(r, r.pointCount, g_step1Time[axis], 0.0, 0.0, r.tgtPos, 1.0);
    return true;
}
// Step-2 stand-in solver: one point at the common end, counted.
bool fakeStep2Solver(PlannerState&, AxisPlan& r) {
    g_step2SeenInv = r.inv;
    if (!g_step2Ok) {
        std::puts("stand-in failed");
        return false;
    }
    storePoint(r, r.pointCount, r.secTime[r.pointCount - 1] + r.remTime, 0.0, 0.0,
               r.tgtPos + 0.5 /* off target: the pass pins it */, static_cast<double>(r.inv));
    r.pointCount += 1;
    return true;
}

NodeFn g_nodes[10] = {filler, fakeStep1Node, filler, filler, filler,
                      filler, filler,        filler, filler, fakeStep2Node};
std::int32_t g_succ[20] = {};
const DecisionTree kFakeTree{g_nodes, g_succ, 10};
const Step2Solver kFakeStep2[14] = {fakeStep2Solver, fakeStep2Solver, fakeStep2Solver, fakeStep2Solver,
                                    fakeStep2Solver, fakeStep2Solver, fakeStep2Solver, fakeStep2Solver,
                                    fakeStep2Solver, fakeStep2Solver, fakeStep2Solver, fakeStep2Solver,
                                    fakeStep2Solver, fakeStep2Solver};
const PlannerTables kFake{&kFakeTree, &kFakeTree, fakeStep1Solver, kFakeStep2, velModeSolvers};

std::unique_ptr<PlannerState> sixAxes(int count = 6) {
    auto st = test::freshState();
    st->axisCount = static_cast<std::int8_t>(count);
    for (int i = 0; i < count; ++i) {
        st->records[i] = test::makeAxis(0.0, 0.0, 0.0, 1.0 + i, 1.0 + i, 2.0, 20.0);
        g_step1Time[i] = 1.0;
    }
    g_step1Id = 2;
    g_step2Id = 0;
    g_step2Ok = true;
    return st;
}

struct PassRun {
    bool ok;
    std::string printed;
};

PassRun plan(PlannerState& st, bool positionMode = true) {
    test::StdoutCapture cap;
    const bool ok = planAxesWith(st, positionMode, kFake);
    return {ok, cap.text()};
}

TEST(PlanningPass, SlowestAxisSetsTheEndTimeAndTiesGoLow) {
    auto st = sixAxes();
    g_step1Time[2] = 3.0;
    g_step1Time[4] = 3.0;
    g_step1Time[5] = 2.0;
    const PassRun run = plan(*st);
    EXPECT_TRUE(run.ok);
    EXPECT_EQ(run.printed, "");
    EXPECT_EQ(st->slowestAxis, 2);
    for (int i = 0; i < 6; ++i) {
        const AxisPlan& r = st->records[i];
        EXPECT_EQ(r.secTime[r.pointCount - 1], 3.0) << "axis " << i;
        EXPECT_EQ(r.secPos[r.pointCount - 1], r.tgtPos) << "axis " << i;  // pinned
        EXPECT_TRUE(r.step1Ok);
    }
    // The slowest axis keeps its own step-1 curve: nothing counted for it.
    EXPECT_EQ(st->records[2].pointCount, 2);
    EXPECT_EQ(st->records[4].pointCount, 2);
    int uses = 0;
    for (int k = 0; k < kStep2ProfileCount; ++k) uses += st->profileUseCount[k];
    EXPECT_EQ(uses, 5);
}

TEST(PlanningPass, SingleAxisPlansHaveNoStep2) {
    auto st = sixAxes(1);
    g_step2Ok = false;  // would fail if it were called
    const PassRun run = plan(*st);
    EXPECT_TRUE(run.ok);
    EXPECT_EQ(run.printed, "");
}

TEST(PlanningPass, OddStep2IdsAreSolvedMirroredAndNamedOdd) {
    auto st = sixAxes();
    st->traceOn = true;
    g_step1Time[0] = 2.0;
    g_step2Id = 5;
    const PassRun run = plan(*st);
    EXPECT_TRUE(run.ok);
    EXPECT_EQ(g_step2SeenInv, -1);
    EXPECT_EQ(st->records[1].step2Profile, 4);
    EXPECT_EQ(st->records[1].inv, 1);  // mirrored back
    EXPECT_EQ(st->profileUseCount[5], 5);
    EXPECT_NE(run.printed.find("step1:ts 2.000000 idx 0\n--------------------\n"), std::string::npos);
}

TEST(PlanningPass, FailuresPrintTheirLinesAndStopThePass) {
    {
        auto st = sixAxes();
        g_step1Id = 0;
        const PassRun run = plan(*st);
        EXPECT_FALSE(run.ok);
        EXPECT_EQ(run.printed, "step1 error:0\n");
        EXPECT_FALSE(st->records[0].step1Ok);
        EXPECT_EQ(st->records[1].pointCount, 1);  // never reached
    }
    {
        auto st = sixAxes();
        g_step1Id = 1;
        EXPECT_EQ(plan(*st).printed, "step1 error:0\n");
    }
    {
        auto st = sixAxes();
        g_step1Time[3] = 4.0;
        g_step2Id = 28;
        const PassRun run = plan(*st);
        EXPECT_FALSE(run.ok);
        EXPECT_EQ(run.printed, "step2 error: mStep2 0 profile 28\nstep2 error:ts 4.000000 idx 0\n");
    }
    {
        auto st = sixAxes();
        g_step1Time[0] = 1.5;
        g_step2Ok = false;
        const PassRun run = plan(*st);
        EXPECT_FALSE(run.ok);
        EXPECT_EQ(run.printed, "stand-in failed\nstep2 error:ts 1.500000 idx 1\n");
        EXPECT_EQ(st->records[1].secPos[st->records[1].pointCount - 1], st->records[1].tgtPos);
    }
}

}  // namespace
}  // namespace vekta
