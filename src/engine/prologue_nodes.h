// The normalisation prologue shared by both decision trees (nodes 1..8):
// mirror to a non-negative acceleration, pull an acceleration above the limit
// back to it, and recover from a velocity beyond the limit. Node 5 differs
// between the trees and lives with each tree; the engine holds the other
// seven rows for both.
#ifndef VEKTA_ENGINE_PROLOGUE_NODES_H
#define VEKTA_ENGINE_PROLOGUE_NODES_H

#include "records/decision_tree.h"
#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// Rows 0..8, indexed by node number; rows 0 and 5 are kNoRow.
constexpr int kPrologueRowCount = 9;
extern const TreeRow kPrologueRows[kPrologueRowCount];

// Whether node n is one of the prologue nodes the engine holds (1-4, 6-8).
constexpr bool prologueHolds(int node) { return node >= 1 && node < kPrologueRowCount && node != 5; }

bool prologueNode1(PlannerState& st, AxisPlan& rec);
bool prologueNode2(PlannerState& st, AxisPlan& rec);
bool prologueNode3(PlannerState& st, AxisPlan& rec);
bool prologueNode4(PlannerState& st, AxisPlan& rec);
bool prologueNode6(PlannerState& st, AxisPlan& rec);
bool prologueNode7(PlannerState& st, AxisPlan& rec);
bool prologueNode8(PlannerState& st, AxisPlan& rec);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
