// The record of a decision tree: one row per node, the node's test together
// with where each of its answers leads. The walks over it are the tree
// engine's (engine/decision_tree.h).
#ifndef VEKTA_RECORDS_DECISION_TREE_H
#define VEKTA_RECORDS_DECISION_TREE_H

#include <cstdint>

#include "records/planner_state.h"

namespace vekta {

// A tree node: a predicate that may also change the record on the way (mirror
// it, append a section, set a profile id) or leave hints in the planner state.
using NodeFn = bool (*)(PlannerState& st, AxisPlan& rec);

// One node: its test, the node that follows a true result and the one that
// follows a false result; 0 stops the walk.
struct TreeRow {
    NodeFn node;
    std::int16_t ifTrue;
    std::int16_t ifFalse;
};

// The slot of a node a table does not hold: in a step's table the prologue
// nodes the tree engine holds for both trees, in the engine's table node 5,
// which each tree holds itself. No walk reads it.
constexpr TreeRow kNoRow = {nullptr, 0, 0};

// rows[n] is node n. Row 0 is a placeholder: no walk calls it.
struct DecisionTree {
    const TreeRow* rows;
    int rowCount;
};

}  // namespace vekta

#endif
