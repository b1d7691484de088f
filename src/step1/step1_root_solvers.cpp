// Placeholder: the root-finding step-1 solvers (ids 10..21) are being written.
#include "step1/step1_solvers.h"

namespace vekta {

bool solveStep1PTNt(AxisPlan&, bool) { return false; }
bool solveStep1PTNT(AxisPlan&, bool) { return false; }
bool solveStep1PtNT(AxisPlan&, bool) { return false; }
bool solveStep1PtNt(AxisPlan&, bool) { return false; }
bool solveStep1PLNt(AxisPlan&) { return false; }
bool solveStep1PLNT(AxisPlan&) { return false; }

}  // namespace vekta
