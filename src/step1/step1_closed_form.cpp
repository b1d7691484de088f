// Placeholder: the closed-form step-1 solvers (ids 2..9) are being written.
#include "step1/step1_solvers.h"

namespace vekta {

bool solveStep1PTZNt(AxisPlan&, bool) { return false; }
bool solveStep1PtZNt(AxisPlan&, bool) { return false; }
bool solveStep1PTZNT(AxisPlan&, bool) { return false; }
bool solveStep1PtZNT(AxisPlan&, bool) { return false; }

}  // namespace vekta
