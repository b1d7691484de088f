// The normalisation prologue shared by both decision trees (nodes 1..8):
// mirror to a non-negative acceleration, pull an acceleration above the limit
// back to it, and recover from a velocity beyond the limit. Node 5 differs
// between the trees and lives with each tree.
#ifndef VEKTA_ENGINE_PROLOGUE_NODES_H
#define VEKTA_ENGINE_PROLOGUE_NODES_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

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
