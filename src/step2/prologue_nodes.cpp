// Placeholder: the prologue nodes are being written.
#include "step2/prologue_nodes.h"

namespace vekta {

bool prologueNode1(PlannerState&, AxisPlan&) { return true; }
bool prologueNode2(PlannerState&, AxisPlan&) { return true; }
bool prologueNode3(PlannerState&, AxisPlan&) { return true; }
bool prologueNode4(PlannerState&, AxisPlan&) { return true; }
bool prologueNode6(PlannerState&, AxisPlan&) { return true; }
bool prologueNode7(PlannerState&, AxisPlan&) { return true; }
bool prologueNode8(PlannerState&, AxisPlan&) { return true; }

}  // namespace vekta
