// The step-1 tree and the prologue nodes it shares with the step-2 tree.
//
// States are built from the motions they call for (a long rest-to-rest move,
// a short one, a braking start, an over-speed start ...), walked through the
// real node and successor tables, and checked for the leaf id, the exact nodes
// visited, and the physics of every section the walk appended.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "planner/decision_tree.h"
#include "state/numerics.h"
#include "step1/step1_solvers.h"
#include "step1/step1_tree.h"
#include "step2/prologue_nodes.h"
#include "support/test_support.h"

namespace vekta {
namespace {

using test::makeAxis;

// --- A counting copy of Step1Tree: the same node functions and successors,
// each node recording its number before it runs. ---

std::vector<int> gVisits;

template <int N>
bool countedNode(PlannerState& st, AxisPlan& rec) {
    gVisits.push_back(N);
    return Step1Tree.nodes[N](st, rec);
}

template <std::size_t... I>
constexpr std::array<NodeFn, sizeof...(I)> countedNodes(std::index_sequence<I...>) {
    return {countedNode<static_cast<int>(I)>...};
}

const std::array<NodeFn, kStep1TreeNodeCount> kCountedNodes =
    countedNodes(std::make_index_sequence<kStep1TreeNodeCount>{});
const DecisionTree kCountingTree{kCountedNodes.data(), Step1Tree.successors, kStep1TreeNodeCount};

std::vector<int> walkPosition(PlannerState& st, AxisPlan& rec) {
    gVisits.clear();
    walkStep1Position(st, kCountingTree, rec);
    return gVisits;
}

std::vector<int> walkVelocity(PlannerState& st, AxisPlan& rec) {
    gVisits.clear();
    walkStep1Velocity(st, kCountingTree, rec);
    return gVisits;
}

// The id the planner hands to the solver: a shape found in the mirrored frame
// is the partner shape in the caller's frame.
int partner(int id) { return id >= 2 ? (id ^ 1) : id; }
int callerFrameId(const AxisPlan& rec) { return rec.inv == -1 ? partner(rec.step1Profile) : rec.step1Profile; }

// The working state is the last stored point, seen through the frame sign.
void expectStateIsLastPoint(const AxisPlan& rec) {
    const int k = rec.pointCount - 1;
    const double s = rec.inv;
    EXPECT_EQ(rec.secTime[k], rec.planTime);
    EXPECT_EQ(rec.secPos[k], rec.curPos * s);
    EXPECT_EQ(rec.secVel[k], rec.curVel * s);
    EXPECT_EQ(rec.secAcc[k], rec.curAcc * s);
}

// The largest |v| a prologue may pass through: the start velocity, or the
// velocity once the start acceleration has been released, or the limit.
double prologueVelBound(double V, double v0, double a0, double J) {
    return std::max({V, std::fabs(v0), std::fabs(v0 + a0 * std::fabs(a0) / (2.0 * J))});
}

// The curve checked physically, with the acceleration bound widened to a
// start acceleration above A and the velocity bound to `velBound`.
void expectSections(const AxisPlan& rec, double a0, double velBound) {
    AxisPlan wide = rec;
    wide.maxAcc = std::max(rec.maxAcc, std::fabs(a0));
    wide.maxVel = velBound;
    const CurveReport r = test::expectPhysicalCurve(wide, true);
    EXPECT_LE(r.maxAccJump, 1e-12) << "acceleration step in a zero-length section";
}

// --- Classification ---

struct LeafCase {
    const char* what;
    double V, A, J;
    double p, v, a, pt;
    int id;
    std::vector<int> path;
};

constexpr double kFastV = 2.0;  // with A = J = 1: A^2/J < V, trapezoids and cruise
constexpr double kSlowV = 0.8;  // A^2/J > V: a rest start reaches V with a triangle

const std::vector<LeafCase>& leafCases() {
    static const std::vector<LeafCase> cases = {
        {"long rest-to-rest move: trapezoids and a cruise", kFastV, 1, 1, 0, 0, 0, 10, 6,
         {1, 2, 3, 4, 9, 10, 29, 30, 21, 12, 14, 15}},
        {"the same move from another start position", kFastV, 1, 1, 1, 0, 0, 11, 6,
         {1, 2, 3, 4, 9, 10, 29, 30, 21, 12, 14, 15}},
        {"long rest-to-rest move backwards", kFastV, 1, 1, 0, 0, 0, -10, 7,
         {1, 2, 3, 4, 9, 10, 29, 33, 24, 25, 19, 20}},
        {"rest-to-rest reaching A but not V", kFastV, 1, 1, 0, 0, 0, 2, 12,
         {1, 2, 3, 4, 9, 10, 29, 30, 21, 12, 14, 15}},
        {"rest-to-rest reaching A but not V, backwards", kFastV, 1, 1, 0, 0, 0, -2, 13,
         {1, 2, 3, 4, 9, 10, 29, 33, 24, 25, 19, 20}},
        {"short rest-to-rest, peaks below A", kFastV, 1, 1, 0, 0, 0, 0.1, 16,
         {1, 2, 3, 4, 9, 10, 29, 30, 21}},
        {"short rest-to-rest backwards", kFastV, 1, 1, 0, 0, 0, -0.1, 17,
         {1, 2, 3, 4, 9, 10, 29, 33, 24, 25}},
        {"low V: triangles up to V and a cruise", kSlowV, 1, 1, 0, 0, 0, 2, 4,
         {1, 2, 3, 4, 9, 10, 29, 30, 32}},
        {"low V, backwards", kSlowV, 1, 1, 0, 0, 0, -2, 5, {1, 2, 3, 4, 9, 10, 29, 33, 24, 26, 27}},
        {"low V, short", kSlowV, 1, 1, 0, 0, 0, 0.1, 16, {1, 2, 3, 4, 9, 10, 29, 30, 32}},
        {"braking a backward motion, target far ahead", kSlowV, 1, 1, 0, -0.5, 1, 2, 2,
         {1, 2, 3, 4, 9, 10, 11, 12, 13}},
        {"braking a backward motion, target near", kSlowV, 1, 1, 0, -0.5, 1, 0.1, 10,
         {1, 2, 3, 4, 9, 10, 11, 12, 13}},
        {"braking a backward motion, high V, target near", kFastV, 1, 1, 0, -0.5, 1, 0.1, 10,
         {1, 2, 3, 4, 9, 10, 11, 12, 14}},
        {"accelerating forward, target far behind", kSlowV, 1, 1, 0, 0, 1, -2, 3,
         {1, 2, 3, 4, 9, 34, 35, 43, 44, 45, 46}},
        {"moving forward, target just behind", kFastV, 1, 1, 0, 1, 0.5, 0.1, 11,
         {1, 2, 3, 4, 9, 34, 48, 45, 47}},
        {"moving forward below V, target far ahead", kFastV, 1, 1, 0, 1.5, 0, 10, 8,
         {1, 2, 3, 4, 9, 34, 48, 49, 42}},
        {"moving forward below V, target nearer", kFastV, 1, 1, 0, 1.5, 0, 2, 14,
         {1, 2, 3, 4, 9, 34, 48, 49, 42}},
        {"moving forward and accelerating, target ahead", kFastV, 1, 1, 0, 1, 0.5, 2, 14,
         {1, 2, 3, 4, 9, 34, 48, 49, 39}},
        {"moving backward fast, target far behind", kFastV, 1, 1, 0, -1.5, 0, -10, 9,
         {1, 2, 3, 4, 9, 10, 11, 16, 17, 18, 31}},
        {"moving backward, target behind", kFastV, 1, 1, 0, -1, 0, -2, 15,
         {1, 2, 3, 4, 9, 10, 11, 16, 17, 18, 19}},
        {"braking, target past the release-then-brake stop", kFastV, 1, 1, 0, -0.5, 0.5, -0.3, 18,
         {1, 2, 3, 4, 9, 10, 29, 33}},
        {"braking hard, target short of the release-then-brake stop", kFastV, 1, 1, 0, -1.5, 0.5,
         -2, 20, {1, 2, 3, 4, 9, 10, 11, 16, 17}},
        {"negative start acceleration: mirrored first", kFastV, 1, 1, 0, 0, -0.5, -10, 6,
         {1, 2, 3, 4, 9, 34, 35, 36, 30, 21, 12, 14, 15}},
        {"start acceleration above A: clipped first", kFastV, 1, 1, 0, 0, 1.5, 10, 6,
         {1, 2, 3, 4, 9, 34, 48, 49, 39, 15}},
        {"over-speed once released: release, mirror, pulse", 1, 1, 1, 0, 1, 0.5, 5, 9,
         {1, 2, 3, 5, 9, 10, 11, 16, 17, 18, 31}},
        {"moving faster than V backwards: pulse", 1, 1, 1, 0, -1.5, 0, 0.1, 2,
         {1, 2, 3, 4, 5, 9, 10, 11, 12, 13}},
    };
    return cases;
}

AxisPlan leafAxis(const LeafCase& c) { return makeAxis(c.p, c.v, c.a, c.pt, c.V, c.A, c.J); }

TEST(Step1TreeClassification, EveryLeafFromItsShape) {
    std::vector<bool> produced(kStep1IdCount, false);
    for (const LeafCase& c : leafCases()) {
        SCOPED_TRACE(c.what);
        auto st = test::freshState();
        AxisPlan rec = leafAxis(c);
        EXPECT_EQ(walkPosition(*st, rec), c.path);
        EXPECT_EQ(rec.step1Profile, c.id);
        produced[rec.step1Profile] = true;

        // The snapshot holds the prepared state as node 9 saw it; sections that
        // later nodes appended (a release) come after it.
        EXPECT_GE(rec.snapPointCount, 1);
        EXPECT_LE(rec.snapPointCount, rec.pointCount);
        EXPECT_EQ(rec.snapInv, rec.inv);
        EXPECT_EQ(rec.snapTgtPos, rec.tgtPos);
        EXPECT_EQ(rec.snapTgtVel, 0.0);
        EXPECT_GE(rec.snapAcc, 0.0);
        EXPECT_LE(rec.snapAcc, rec.maxAcc);
        EXPECT_GE(rec.snapVel, -rec.maxVel);
        EXPECT_EQ(rec.tgtVel, 0.0);

        // Whatever the walk appended is a physical curve ending at the working state.
        expectSections(rec, c.a, prologueVelBound(c.V, c.v, c.a, c.J));
        expectStateIsLastPoint(rec);
    }
    // The tree's leaves assign 2..18 and 20; 19 and 21 only arise from the
    // planner's frame flip.
    for (int id = 2; id <= 20; ++id) {
        EXPECT_EQ(produced[id], id != 19) << "id " << id;
    }
}

// A state and its mirror image reach the same working state after node 1, so
// they walk the same nodes, append the same sections (stored with opposite
// signs) and end on partner ids in the caller's frame.
TEST(Step1TreeSymmetry, MirrorImageWalksTheSameNodes) {
    int checked = 0;
    for (const LeafCase& c : leafCases()) {
        if (c.a == 0.0) continue;  // with a = 0 neither state is mirrored by node 1
        SCOPED_TRACE(c.what);
        auto st = test::freshState();
        AxisPlan rec = leafAxis(c);
        AxisPlan mir = makeAxis(-c.p, -c.v, -c.a, -c.pt, c.V, c.A, c.J);
        EXPECT_EQ(walkPosition(*st, rec), walkPosition(*st, mir));
        EXPECT_EQ(rec.step1Profile, mir.step1Profile);
        EXPECT_EQ(rec.inv, -mir.inv);
        EXPECT_EQ(callerFrameId(rec), partner(callerFrameId(mir)));
        ASSERT_EQ(rec.pointCount, mir.pointCount);
        for (int k = 0; k < rec.pointCount; ++k) {
            EXPECT_EQ(rec.secTime[k], mir.secTime[k]) << "point " << k;
            EXPECT_EQ(rec.secPos[k], -mir.secPos[k]) << "point " << k;
            EXPECT_EQ(rec.secVel[k], -mir.secVel[k]) << "point " << k;
            EXPECT_EQ(rec.secAcc[k], -mir.secAcc[k]) << "point " << k;
        }
        ++checked;
    }
    EXPECT_GE(checked, 10);
}

// Exact boundaries: node 4 and nodes 18/43 compare with >=, node 24 strictly.
TEST(Step1TreeClassification, ComparisonsAtTheirBoundaries) {
    auto st = test::freshState();
    // V = 2, A^2/J = 1: v = -1 puts v - A^2/J exactly on -V.
    AxisPlan rec = makeAxis(0, -1, 0, 1, 2, 1, 1);
    EXPECT_TRUE(Step1Tree.nodes[18](*st, rec));
    EXPECT_TRUE(Step1Tree.nodes[43](*st, rec));
    EXPECT_FALSE(Step1Tree.nodes[24](*st, rec));
    rec.curVel = -2;
    EXPECT_TRUE(Step1Tree.nodes[4](*st, rec));
    rec.curVel = std::nextafter(-2.0, -3.0);
    EXPECT_FALSE(Step1Tree.nodes[4](*st, rec));
    // Node 9: vt = v + a^2/(2J) exactly goes the "true" way.
    AxisPlan nine = makeAxis(0, -0.125, 0.5, 1, 2, 1, 1);
    EXPECT_TRUE(Step1Tree.nodes[9](*st, nine));
    nine.curVel = std::nextafter(-0.125, 0.0);
    EXPECT_FALSE(Step1Tree.nodes[9](*st, nine));
}

// The successor table as data: every node but the dead 50..53 can be reached
// from node 1, no successor leads into 50..53, and nothing leaves the table.
TEST(Step1TreeClassification, SuccessorTableReachesNodes1To49) {
    std::vector<bool> reached(kStep1TreeNodeCount, false);
    std::vector<int> todo = {1};
    while (!todo.empty()) {
        const int n = todo.back();
        todo.pop_back();
        if (reached[n]) continue;
        reached[n] = true;
        for (int k = 0; k < 2; ++k) {
            const int next = Step1Tree.successors[2 * n + k];
            ASSERT_GE(next, 0);
            ASSERT_LT(next, kStep1TreeNodeCount);
            if (next != 0) todo.push_back(next);
        }
    }
    for (int n = 1; n < kStep1TreeNodeCount; ++n) EXPECT_EQ(reached[n], n < 50) << "node " << n;
    EXPECT_EQ(Step1Tree.nodeCount, 54);
}

// --- Sections appended by the prologue and by node 5 ---

struct SectionCase {
    const char* what;
    double V, A, J, v, a;
    std::vector<std::pair<NodeFn, bool>> calls;  // node and its expected result
    int appended;
    double endVel, endAcc;  // working frame
    int endInv;
};

constexpr double kRemTime = 10.0;

TEST(PrologueSections, EachAppendedSectionIsPhysical) {
    const std::vector<SectionCase> cases = {
        {"clip an acceleration above A", 2, 1, 1, 0.3, 1.5, {{prologueNode2, false}}, 1,
         0.3 + 1.5 * 0.5 - 0.125, 1, 1},
        {"mirror, then clip (points stored in the caller's frame)", 2, 1, 1, -0.3, -1.5,
         {{prologueNode1, false}, {prologueNode2, false}}, 1, 0.3 + 1.5 * 0.5 - 0.125, 1, -1},
        {"acceleration within limits is left alone", 2, 1, 1, 0.3, 0.5,
         {{prologueNode1, true}, {prologueNode2, true}, {prologueNode3, true}, {prologueNode4, true}},
         0, 0.3, 0.5, 1},
        {"release an over-speed and mirror it", 2, 1, 1, 1.8, 1, {{prologueNode3, false}}, 1, -2.3, 0,
         -1},
        {"release, mirror, triangle pulse back to -V", 2, 1, 1, 1.8, 1,
         {{prologueNode3, false}, {overspeedPulse, true}}, 3, -2, 0, -1},
        {"far beyond -V: trapezoid pulse", 2, 1, 1, -4, 0,
         {{prologueNode4, false}, {overspeedPulse, true}}, 3, -2, 0, 1},
        {"beyond -V with an acceleration: triangle pulse", 2, 1, 1, -2.5, 0.5,
         {{prologueNode4, false}, {overspeedPulse, true}}, 2, -2, 0, 1},
        {"node 6: one ramp up to -V", 1, 2, 1, -1.5, 0.5, {{prologueNode6, true}}, 1, -1,
         std::sqrt(1.25), 1},
        {"node 6: the two-ramp recovery", 1, 3, 1, -4, 1, {{prologueNode6, false}}, 2, -1, 2, 1},
        {"node 7: A^2 > 4VJ appends nothing", 1, 3, 1, -3, 0, {{prologueNode7, true}}, 0, -3, 0, 1},
        {"node 7: ramp to A and hold it to -V", 1, 1, 1, -3, 0, {{prologueNode7, false}}, 2, -1, 1, 1},
        {"node 8: a full pulse overshoots V, recovery", 1, 3, 1, -4, 0, {{prologueNode8, true}}, 2, -1,
         2, 1},
        {"node 8: ramp, hold, ramp to w (= A here)", 1, 2, 1, -5, 0, {{prologueNode8, false}}, 3, -1, 2,
         1},
    };
    for (const SectionCase& c : cases) {
        SCOPED_TRACE(c.what);
        auto st = test::freshState();
        AxisPlan rec = makeAxis(0, c.v, c.a, 5, c.V, c.A, c.J);
        rec.remTime = kRemTime;
        double timeOutsidePulse = 0.0;
        for (const auto& [node, result] : c.calls) {
            const double before = rec.planTime;
            EXPECT_EQ(node(*st, rec), result);
            if (node != overspeedPulse) timeOutsidePulse += rec.planTime - before;
        }
        EXPECT_EQ(rec.pointCount, 1 + c.appended);
        EXPECT_NEAR(rec.curVel, c.endVel, 1e-12);
        EXPECT_NEAR(rec.curAcc, c.endAcc, 1e-12);
        EXPECT_EQ(rec.inv, c.endInv);
        EXPECT_EQ(rec.tgtVel, 0.0);
        // Every appended section shortens remTime by its duration; the
        // over-speed pulse is a step-1 shape and leaves remTime alone.
        EXPECT_NEAR(rec.remTime, kRemTime - timeOutsidePulse, 1e-12);
        expectSections(rec, c.a, prologueVelBound(c.V, c.v, c.a, c.J));
        expectStateIsLastPoint(rec);
    }
}

// With A < w = 2 root(VJ), node 8's last ramp A -> w has the negative
// duration (A - w)/J: the curve goes back in time and ends above A. That is
// the shape as designed (the tree never reaches it), so it is pinned here.
TEST(PrologueSections, Node8WritesABackwardRampWhenAIsBelowW) {
    auto st = test::freshState();
    AxisPlan rec = makeAxis(0, -5, 0, 5, 1, 1.5, 1);
    EXPECT_FALSE(prologueNode8(*st, rec));
    ASSERT_EQ(rec.pointCount, 4);
    EXPECT_DOUBLE_EQ(rec.secTime[3] - rec.secTime[2], -0.5);
    EXPECT_EQ(rec.curAcc, 2.0);
    EXPECT_NEAR(rec.curVel, -1.0, 1e-12);
    const CurveReport r = checkCurve(rec);
    EXPECT_FALSE(r.timesNonDecreasing);
    EXPECT_LE(r.maxVelMismatch, 1e-12);
    EXPECT_LE(r.maxPosMismatch, 1e-12);
    expectStateIsLastPoint(rec);
}

// --- Node 9 ---

TEST(Step1TreeSnapshot, VariantBSnapshotAndItsDiagnostic) {
    auto st = test::freshState();
    AxisPlan rec = makeAxis(1.5, -0.25, -0.5, 4, 2, 1, 1);
    rec.pointCount = 3;
    rec.planTime = 0.75;
    rec.inv = -1;
    rec.tgtVel = 0.125;
    bool result = false;
    {
        test::StdoutCapture out;
        result = Step1Tree.nodes[9](*st, rec);
        EXPECT_EQ(out.text(), "Variant B error\n");
    }
    EXPECT_TRUE(result);  // 0.125 >= -0.25 + 0.125
    EXPECT_EQ(rec.snapPointCount, 3);
    EXPECT_EQ(rec.snapPlanTime, 0.75);
    EXPECT_EQ(rec.snapPos, 1.5);
    EXPECT_EQ(rec.snapVel, -0.25);
    EXPECT_EQ(rec.snapAcc, -0.5);
    EXPECT_EQ(rec.snapTgtPos, 4);
    EXPECT_EQ(rec.snapTgtVel, 0.125);
    EXPECT_EQ(rec.snapInv, -1);

    rec.curAcc = 0.0;
    test::StdoutCapture quiet;
    Step1Tree.nodes[9](*st, rec);
    EXPECT_EQ(quiet.text(), "");
}

// --- Velocity-mode walk ---

TEST(Step1TreeVelocityWalk, StopsBeforeNode9AndRunsNode6AfterThePulse) {
    struct Case {
        const char* what;
        double v, a;
        std::vector<int> path;
        int appended;  // by the prologue, the pulse and node 6
    };
    const std::vector<Case> cases = {
        {"within the limits", 0.5, 0.5, {1, 2, 3, 4}, 0},
        {"beyond -V", -3, 0, {1, 2, 3, 4, 5, 6}, 3 + 1},
        {"over-speed once released", 1.8, 1, {1, 2, 3, 5, 6}, 1 + 2 + 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        auto st = test::freshState();
        AxisPlan rec = makeAxis(0, c.v, c.a, 5, 2, 1, 1);
        EXPECT_EQ(walkVelocity(*st, rec), c.path);
        EXPECT_EQ(rec.pointCount, 1 + c.appended);
        EXPECT_EQ(rec.snapPointCount, 0) << "node 9 is left to the planning pass";
        expectStateIsLastPoint(rec);
        if (c.path.back() == 6) {
            // After the pulse the axis is at exactly -V with no acceleration,
            // so node 6's ramp has the guard value as its end acceleration.
            EXPECT_EQ(rec.curVel, -rec.maxVel);
            EXPECT_EQ(rec.curAcc, kRootGuard);
        }

        // The position-mode walk of the same state skips 6..8 and goes on at 9.
        AxisPlan pos = makeAxis(0, c.v, c.a, 5, 2, 1, 1);
        const std::vector<int> path = walkPosition(*st, pos);
        for (int n : {6, 7, 8}) EXPECT_EQ(std::count(path.begin(), path.end(), n), 0);
        EXPECT_EQ(std::count(path.begin(), path.end(), 9), 1);
    }
}

// --- Node 23: trial of the release-then-brake solvers ---

// A state that brakes a backward motion (v = -1, a = 0.5; V = 2, A = J = 1)
// with the target between the stop of "release fully, then a triangle"
// (-1.2768) and that of "brake on at once with a trapezoid" (-0.6536). Up to
// -0.7886 a partial release followed by a triangle below A reaches the target
// (id 18); beyond, the closing pulse must hold A (id 20).
AxisPlan brakingAxis(double pt) { return makeAxis(0, -1, 0.5, pt, 2, 1, 1); }

const std::vector<int> kTrialPath = {1, 2, 3, 4, 9, 10, 11, 16, 22, 23};

// Whether the root-finding step-1 solvers are the real ones: a plain PTNT
// rest-to-rest move (peak velocity 1.30 between A^2/J and V) must solve.
bool rootSolversAvailable() {
    AxisPlan probe = makeAxis(0, 0, 0, 3, 2, 1, 1);
    test::StdoutCapture quiet;
    return solveStep1PTNT(probe, false);
}

TEST(Step1TreeTrial, PicksReleaseThenTriangleOrTrapezoid) {
    if (!rootSolversAvailable()) {
        GTEST_SKIP() << "the root-finding step-1 solvers are placeholders in this build";
    }
    const std::pair<double, int> cases[] = {{-1.0, kStep1PLNt}, {-0.7, kStep1PLNT}};
    for (const auto& [pt, id] : cases) {
        SCOPED_TRACE(pt);
        auto st = test::freshState();
        AxisPlan rec = brakingAxis(pt);
        const AxisPlan before = rec;
        std::vector<int> path;
        {
            test::StdoutCapture quiet;
            path = walkPosition(*st, rec);
        }
        EXPECT_EQ(path, kTrialPath);
        EXPECT_EQ(rec.step1Profile, id);
        // The trial ran on copies: the real curve and state are untouched.
        EXPECT_EQ(rec.pointCount, 1);
        EXPECT_EQ(rec.curPos, before.curPos);
        EXPECT_EQ(rec.curVel, before.curVel);
        EXPECT_EQ(rec.curAcc, before.curAcc);
        EXPECT_TRUE(rec.coefDirty);
    }
}

TEST(Step1TreeTrial, BothSolversFailingLeavesIdZero) {
    auto st = test::freshState();
    // Released, the axis still moves forward (vz > 0): no release-then-brake
    // shape exists, and the target is far beyond any of them anyway.
    AxisPlan rec = makeAxis(0, 0, 0.5, 1e6, 2, 1, 1);
    rec.coefDirty = false;
    const AxisPlan before = rec;
    bool result = true;
    {
        test::StdoutCapture quiet;  // the solvers may report why they failed
        result = Step1Tree.nodes[23](*st, rec);
    }
    EXPECT_FALSE(result);
    EXPECT_EQ(rec.step1Profile, 0);
    EXPECT_TRUE(rec.coefDirty);
    EXPECT_EQ(rec.pointCount, 1);
    EXPECT_EQ(rec.curPos, before.curPos);
    EXPECT_EQ(rec.curVel, before.curVel);
    EXPECT_EQ(rec.curAcc, before.curAcc);
    EXPECT_EQ(rec.tgtPos, before.tgtPos);
    EXPECT_EQ(rec.inv, before.inv);
}

// With the placeholders, the walk of a trial state ends on id 0.
TEST(Step1TreeTrial, WalkReachesTheTrial) {
    const bool solvers = rootSolversAvailable();
    auto st = test::freshState();
    AxisPlan rec = brakingAxis(-1.0);
    std::vector<int> path;
    {
        test::StdoutCapture quiet;
        path = walkPosition(*st, rec);
    }
    EXPECT_EQ(path, kTrialPath);
    if (!solvers) {
        EXPECT_EQ(rec.step1Profile, 0);
    }
}

}  // namespace
}  // namespace vekta
