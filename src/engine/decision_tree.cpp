// The three walks over a DecisionTree.
//
// All three follow the same rule (call the test of row n, go to its ifTrue
// or ifFalse node, stop at 0); they differ in where they start, where they
// stop early, what they print and what they count. The rows of the shared
// prologue come from the engine's own table, all others from the tree's.
#include "engine/decision_tree.h"
#include "engine/prologue_nodes.h"
#include "numeric/axis_curve.h"

#include <cstdio>

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

constexpr int kStep1Root = 1;
constexpr int kOverspeedNode = 5;  // its successors serve the velocity-mode walk only
constexpr int kSnapshotNode = 9;   // the step-2 root, and where step-1 walks rejoin
constexpr int kBranchedNode = 71;

int successor(const DecisionTree& tree, int node, bool result) {
    const TreeRow& row = treeRow(tree, node);
    return result ? row.ifTrue : row.ifFalse;
}

}  // namespace

const TreeRow& treeRow(const DecisionTree& tree, int node) {
    return prologueHolds(node) ? kPrologueRows[node] : tree.rows[node];
}

void walkStep1Position(PlannerState& st, const DecisionTree& tree, AxisPlan& rec) {
    if (st.traceOn) printTo(&st.output, "step1 start: idx(pt inv) ");
    for (int n = kStep1Root; n != 0;) {
        if (st.traceOn) printTo(&st.output, "%d(%f %d) \t", n, rec.tgtPos, rec.inv);
        const bool result = treeRow(tree, n).node(st, rec);
        n = (n == kOverspeedNode) ? kSnapshotNode : successor(tree, n, result);
    }
    if (st.traceOn) printTo(&st.output, "tp %d\n", rec.step1Profile - 1);
}

void walkStep1Velocity(PlannerState& st, const DecisionTree& tree, AxisPlan& rec) {
    for (int n = kStep1Root; n != 0 && n != kSnapshotNode;) {
        n = successor(tree, n, treeRow(tree, n).node(st, rec));
    }
}

void walkStep2(PlannerState& st, const DecisionTree& tree, AxisPlan& rec) {
    for (int n = kSnapshotNode; n != 0;) {
        countEvent(st.nodeVisitCount[n - 1]);
        const bool result = treeRow(tree, n).node(st, rec);
        if (st.traceOn) printTo(&st.output, "%d-%d \t", n, result ? 1 : 0);
        n = successor(tree, n, result);
        if (n == kBranchedNode) printTo(&st.output, "D71 branched\n");
    }
    if (st.traceOn) printTo(&st.output, "\n");
}

}  // namespace VEKTA_COPY
}  // namespace vekta
