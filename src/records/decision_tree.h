// The record of a decision tree: its node functions and their successors.
// The walks over it are the tree engine's (engine/decision_tree.h).
#ifndef VEKTA_RECORDS_DECISION_TREE_H
#define VEKTA_RECORDS_DECISION_TREE_H

#include <cstdint>

#include "records/planner_state.h"

namespace vekta {

// A tree node: a predicate that may also change the record on the way (mirror
// it, append a section, set a profile id) or leave hints in the planner state.
using NodeFn = bool (*)(PlannerState& st, AxisPlan& rec);

// nodes[n] is node n; successors[2n] follows a true result, successors[2n + 1]
// a false one; 0 stops the walk. Node 0 is a placeholder.
struct DecisionTree {
    const NodeFn* nodes;
    const std::int32_t* successors;
    int nodeCount;
};

}  // namespace vekta

#endif
