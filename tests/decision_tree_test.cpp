// The walks over a decision tree, on small trees built here: which nodes are
// called in which order, what is counted, and what is printed.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "planner/decision_tree.h"
#include "support/test_support.h"

namespace vekta {
namespace {

constexpr int kNodes = 98;

// Each node logs its number and returns the result scripted for it.
std::vector<int> g_visited;
std::array<bool, kNodes> g_result;

template <int N>
bool logged(PlannerState&, AxisPlan& rec) {
    g_visited.push_back(N);
    rec.step1Profile = N + 1;  // a leaf's id, so "tp" shows the last node
    return g_result[N];
}

template <int... N>
std::array<NodeFn, sizeof...(N)> makeNodes(std::integer_sequence<int, N...>) {
    return {&logged<N>...};
}

const std::array<NodeFn, kNodes> kNodeFns = makeNodes(std::make_integer_sequence<int, kNodes>{});

// A tree whose successors are set per test; everything else stops.
struct TestTree {
    std::array<std::int32_t, 2 * kNodes> succ{};
    void link(int n, int ifTrue, int ifFalse) {
        succ[2 * n] = ifTrue;
        succ[2 * n + 1] = ifFalse;
    }
    DecisionTree tree() const { return {kNodeFns.data(), succ.data(), kNodes}; }
};

void resetScript(bool all) {
    g_visited.clear();
    g_result.fill(all);
}

TEST(DecisionTree, StopsAtSuccessorZero) {
    resetScript(true);
    TestTree t;
    auto st = test::freshState();
    AxisPlan rec{};
    walkTree(*st, t.tree(), rec, 3);
    EXPECT_EQ(g_visited, std::vector<int>({3}));

    // True and false successors are taken from their own slots.
    t.link(3, 4, 5);
    t.link(5, 6, 0);
    g_visited.clear();
    g_result[3] = false;
    walkTree(*st, t.tree(), rec, 3);
    EXPECT_EQ(g_visited, std::vector<int>({3, 5, 6}));
}

// 1 -> 2 -> 5; node 5 leads to 6/7 in the table; 6, 7, 8 -> 9 -> 10 -> stop.
TestTree step1Tree() {
    TestTree t;
    t.link(1, 2, 2);
    t.link(2, 5, 5);
    t.link(5, 6, 7);
    t.link(6, 9, 9);
    t.link(7, 8, 9);
    t.link(8, 9, 9);
    t.link(9, 10, 11);
    return t;
}

TEST(DecisionTree, Step1PositionWalkSkipsToNine) {
    const TestTree t = step1Tree();
    auto st = test::freshState();
    AxisPlan rec{};
    for (bool node5 : {true, false}) {
        resetScript(true);
        g_result[5] = node5;
        test::StdoutCapture cap;
        walkStep1Position(*st, t.tree(), rec);
        EXPECT_EQ(g_visited, std::vector<int>({1, 2, 5, 9, 10})) << "node 5 " << node5;
        EXPECT_EQ(cap.text(), "");  // no trace prints while tracing is off
    }
}

TEST(DecisionTree, Step1PositionWalkTraces) {
    const TestTree t = step1Tree();
    auto st = test::freshState();
    st->traceOn = true;
    AxisPlan rec{};
    rec.tgtPos = 1.5;
    rec.inv = -1;
    resetScript(true);
    test::StdoutCapture cap;
    walkStep1Position(*st, t.tree(), rec);
    std::string want = "step1 start: idx(pt inv) ";
    for (int n : {1, 2, 5, 9, 10}) want += std::to_string(n) + "(1.500000 -1) \t";
    want += "tp 10\n";  // the last node set step1Profile to 11
    EXPECT_EQ(cap.text(), want);
}

TEST(DecisionTree, Step1VelocityWalkFollowsTheTableAndStopsBeforeNine) {
    const TestTree t = step1Tree();
    auto st = test::freshState();
    st->traceOn = true;
    AxisPlan rec{};
    resetScript(true);
    test::StdoutCapture cap;
    walkStep1Velocity(*st, t.tree(), rec);
    EXPECT_EQ(g_visited, std::vector<int>({1, 2, 5, 6}));

    resetScript(true);
    g_result[5] = false;
    walkStep1Velocity(*st, t.tree(), rec);
    EXPECT_EQ(g_visited, std::vector<int>({1, 2, 5, 7, 8}));
    EXPECT_EQ(cap.text(), "");  // never traced
}

// 9 -> 70 (false) -> 71 -> 72 (true) -> stop.
TestTree step2Tree() {
    TestTree t;
    t.link(9, 10, 70);
    t.link(70, 0, 71);
    t.link(71, 72, 0);
    return t;
}

TEST(DecisionTree, Step2WalkCountsVisitsAndAnnouncesNode71) {
    const TestTree t = step2Tree();
    auto st = test::freshState();
    AxisPlan rec{};
    resetScript(true);
    g_result[9] = false;
    g_result[70] = false;
    {
        test::StdoutCapture cap;
        walkStep2(*st, t.tree(), rec);
        EXPECT_EQ(g_visited, std::vector<int>({9, 70, 71, 72}));
        EXPECT_EQ(cap.text(), "D71 branched\n");  // printed without tracing
    }
    {
        st->traceOn = true;
        test::StdoutCapture cap;
        walkStep2(*st, t.tree(), rec);
        EXPECT_EQ(cap.text(), "9-0 \t70-0 \tD71 branched\n71-1 \t72-1 \t\n");
    }
    // Two walks: every node on the path counted twice, at index node - 1.
    EXPECT_EQ(st->nodeVisitCount[8], 2);
    EXPECT_EQ(st->nodeVisitCount[69], 2);
    EXPECT_EQ(st->nodeVisitCount[70], 2);
    EXPECT_EQ(st->nodeVisitCount[71], 2);
    EXPECT_EQ(st->nodeVisitCount[9], 0);
    EXPECT_EQ(st->nodeVisitCount[0], 0);
}

}  // namespace
}  // namespace vekta
