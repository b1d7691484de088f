// Bad inputs through the exported functions: none of them may crash, hang,
// write outside the caller's arrays or hand out a plan the plan check would
// pass when it should not; and what each one prints and returns is pinned.
//
// Each update row starts from the state at load: a plausible motion with one
// input spoiled (NaN, infinities, zero or negative limits and jerk ratios,
// 1e-9 and 1e9 limits, distances and positions), in every mode and for 1 and
// 6 axes. Every planned axis is then sampled through guarded arrays, to its
// end when the check passes the plan (it must finish within its planned
// periods, at rest) and for a bounded number of calls otherwise. The
// transcripts are pinned by bad_input.digest.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "api/default_state.h"
#include "engine/decision_tree.h"
#include "records/planner_state.h"
#include "step1/step1_tree.h"
#include "step2/step2_tree.h"
#include "support/transcript.h"
#include "vekta/vekta.h"

namespace vekta::test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kBlindCalls = 300;  // sampling calls for a plan that promises no end

enum Kind { Position, Velocity, Conveyor };

struct Update {
    Kind kind = Position;
    int n = 6;
    double tgt[6] = {1.0, -0.5, 0.25, 2.0, -1.5, 0.75};
    double maxVel[6] = {1.0, 1.5, 2.0, 1.0, 1.2, 0.8};
    double maxAcc[6] = {4.0, 3.0, 5.0, 2.0, 6.0, 4.0};
    double ratio = 10.0;
    double pos[6] = {0.1, 0.0, -0.2, 0.0, 0.3, 0.0};
    double vel[6] = {0.2, -0.3, 0.0, 0.1, 0.0, -0.2};
    double acc[6] = {0.5, 0.0, -1.0, 0.0, 0.0, 0.4};
    double conveyorVel = 0.2, conveyorLimit = 100.0, spare = 0.01;
};

bool call(const Update& u) {
    if (u.kind == Conveyor) {
        return vektaPostionModeParaUpdConveyor(u.n, u.conveyorVel, u.conveyorLimit, u.tgt, u.maxVel, u.maxAcc, u.ratio,
                                               u.spare);
    }
    return u.kind == Position
               ? vektaPostionModeParaUpd(u.n, u.tgt, u.maxVel, u.maxAcc, u.ratio, u.pos, u.vel, u.acc, 0.0)
               : vektaVelocityModeParaUpd(u.n, u.maxVel, u.maxAcc, u.ratio, u.pos, u.vel, u.acc, 0.0);
}

// What a row spoils: one input of one axis (axis 0 of one, axis 3 of six), or
// the same for every axis.
enum Field { Tgt, Pos, Vel, Acc, MaxVel, MaxAcc, Ratio, ConveyorVel, ConveyorLimit, Spare, AllLimits, Distance,
             Offset, FarState, kFields };
const char* const kFieldName[] = {"target", "position", "velocity", "acceleration", "maxVel", "maxAcc", "jerk ratio",
                                  "conveyor velocity", "conveyor limit", "spare", "all limits", "distance from rest",
                                  "positions offset by", "state beyond the limits by"};

bool applies(Field f, Kind k) {
    if (f == ConveyorVel || f == ConveyorLimit || f == Spare) return k == Conveyor;
    if (f == Pos || f == Vel || f == Acc || f == FarState) return k != Conveyor;
    return !(f == Tgt && k == Velocity);
}

void spoil(Update& u, Field f, double x) {
    const int i = u.n == 1 ? 0 : 3;
    double* const single[] = {u.tgt, u.pos, u.vel, u.acc, u.maxVel, u.maxAcc};
    if (f <= MaxAcc) single[f][i] = x;
    if (f == Ratio) u.ratio = x;
    if (f == ConveyorVel) u.conveyorVel = x;
    if (f == ConveyorLimit) u.conveyorLimit = x;
    if (f == Spare) u.spare = x;
    for (int a = 0; a < 6; ++a) {
        if (f == AllLimits) u.maxVel[a] = u.maxAcc[a] = u.ratio = x;
        if (f == Distance) u.pos[a] = u.vel[a] = u.acc[a] = 0.0, u.tgt[a] = x;
        if (f == Offset) u.pos[a] += x, u.tgt[a] += x;
    }
    if (f == FarState) u.vel[i] = x, u.acc[i] = -x;
}

// Runs one update from the state at load and samples every planned axis.
std::vector<std::string> runRow(const std::string& what, const Update& u, Output& out, std::string& problems) {
    defaultState() = PlannerState{};
    Recorder rec(out);
    rec.units.push_back(what + "\n");
    const bool ok = call(u);
    rec.update("update", ok);
    const int code = vektaCheckPlan(nullptr, 0);
    if (code == VEKTA_CHECK_OK && !ok) problems += what + ": a refused update passes the check\n";
    const PlannerState& st = defaultState();
    for (int axis = 0; axis < (st.axisCount == 1 || st.axisCount == 6 ? st.axisCount : 0); ++axis) {
        const AxisPlan& r = st.records[axis];
        const double end = r.pointCount > 0 ? r.secTime[r.pointCount - 1] : 0.0;
        const bool mustFinish = code == VEKTA_CHECK_OK && end < kBlindCalls * kCyclePeriod;
        const int budget = mustFinish ? static_cast<int>(std::ceil(end / kCyclePeriod)) + 1 : kBlindCalls;
        double p = 0.0, v = 0.0, a = 0.0;
        int done = 0;
        for (int calls = 0; calls < budget && done == 0; ++calls) {
            done = rec.sample(axis, 1, u.kind == Velocity, p, v, a);
            if (st.planFailed && done != 0) problems += what + ": a failed plan finished\n";
        }
        if (mustFinish && (done != 1 || std::fabs(a) > 1e-5 || std::fabs(v - r.tgtVel) > 1e-5)) {
            problems += what + ": axis " + std::to_string(axis) + " did not finish at rest in time\n";
        }
    }
    rec.flushAll();
    problems += rec.problems;
    return rec.units;
}

TEST(BadInput, EverySpoiledInputIsPlannedOrRefusedSafelyAndAsPinned) {
    const double values[] = {kNaN, kInf, -kInf, 0.0, -1.0, -10.0, 1e-9, 1e9};
    std::vector<std::vector<std::string>> transcripts;
    std::string problems;
    {
        Output out;
        for (const Kind kind : {Position, Velocity, Conveyor}) {
            for (const int n : {1, 6}) {
                for (int f = 0; f < kFields; ++f) {
                    if (!applies(static_cast<Field>(f), kind)) continue;
                    for (const double x : values) {
                        Update u{kind, n};
                        spoil(u, static_cast<Field>(f), x);
                        const std::string what = "mode " + std::to_string(kind) + " n " + std::to_string(n) + " " +
                                                 kFieldName[f] + " " + bits(x);
                        transcripts.push_back(runRow(what, u, out, problems));
                    }
                }
            }
        }
    }
    EXPECT_EQ(problems, "");
    expectMatchesDigest(transcripts, VEKTA_BAD_INPUT_DIGEST);
}

TEST(BadInput, CountersStopBeforeTheyOverflow) {
    // Sampling a finished axis for some 124 days, and re-planning every
    // period for weeks: neither the period counter nor the statistics wrap.
    defaultState() = PlannerState{};
    Output quiet;
    Update u;
    ASSERT_TRUE(call(u));
    PlannerState& st = defaultState();
    st.records[0].sampleCount = INT_MAX - 3;
    int finished = 0, samples = 0;
    for (int i = 0; i < 6; ++i) {
        double p[2], v[2], a[2];
        int count;
        finished += vektaPositionModePerFreedom(0, 2, p, v, a, count);
        samples += count;
    }
    EXPECT_EQ(finished, 6);
    EXPECT_EQ(samples, 6) << "one end sample per call";
    EXPECT_EQ(st.records[0].sampleCount, INT_MAX - 1);
    EXPECT_EQ(getLeftMoveTime(), 0.0);
    for (int& c : st.nodeVisitCount) c = INT_MAX;
    for (int& c : st.profileUseCount) c = INT_MAX;
    EXPECT_TRUE(call(u));
    EXPECT_EQ(st.nodeVisitCount[9 - 1], INT_MAX);
    for (const int c : st.profileUseCount) EXPECT_EQ(c, INT_MAX);
}

// True when no successor path from `node` comes back to a node on it, and
// every row on the way has a test to call.
bool acyclicFrom(const DecisionTree& t, int node, std::vector<int>& state) {
    if (node == 0) return true;
    if (node < 0 || node >= t.rowCount || state[node] == 1) return false;
    if (state[node] == 2) return true;
    const TreeRow& row = treeRow(t, node);
    if (row.node == nullptr) return false;
    state[node] = 1;
    const bool ok = acyclicFrom(t, row.ifTrue, state) && acyclicFrom(t, row.ifFalse, state);
    state[node] = 2;
    return ok;
}

TEST(BadInput, TreeWalksVisitEveryNodeAtMostOnce) {
    // A NaN makes every comparison false and may steer a walk anywhere its
    // rows allow; with no cycle the walk ends within rowCount
    // calls. With the root finder's 101 iterations and the sampler's
    // nSamples + 13 steps, every call is bounded.
    for (const DecisionTree* t : {&Step1Tree, &Step2Tree}) {
        std::vector<int> state(static_cast<std::size_t>(t->rowCount), 0);
        for (int start = 1; start < t->rowCount; ++start) EXPECT_TRUE(acyclicFrom(*t, start, state)) << start;
    }
}

}  // namespace
}  // namespace vekta::test
