// Decision trees: a table of rows, each a predicate over one axis record and
// the nodes its two answers lead to, walked from a start node until node 0.
#ifndef VEKTA_ENGINE_DECISION_TREE_H
#define VEKTA_ENGINE_DECISION_TREE_H

#include "records/decision_tree.h"
#include "output/text_output.h"
#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// The row of node n in a tree: the engine's for the prologue nodes both trees
// share (1-4, 6-8), the tree's own for all others.
const TreeRow& treeRow(const DecisionTree& tree, int node);

// Step-1 walk of a position-mode plan: from node 1, with the trace prints, and
// continuing at node 9 after node 5 whatever node 5 returned.
void walkStep1Position(PlannerState& st, const DecisionTree& tree, AxisPlan& rec);

// Step-1 walk of a velocity-mode plan: nodes 1 to 8 row by row,
// stopping as soon as the next node would be 9 (the planning pass calls node 9
// and what follows itself).
void walkStep1Velocity(PlannerState& st, const DecisionTree& tree, AxisPlan& rec);

// Step-2 walk: from node 9, counting visits per node, with the trace prints
// and the unconditional "D71 branched" line on the way into node 71.
void walkStep2(PlannerState& st, const DecisionTree& tree, AxisPlan& rec);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
