// The planning pass: minimum-time profiles for every axis, the common end
// time, and the synchronisation of the other axes to it.
#ifndef VEKTA_PLANNER_PLANNING_PASS_H
#define VEKTA_PLANNER_PLANNING_PASS_H

#include "engine/decision_tree.h"
#include "step2/step2_solvers.h"
#include "numeric/vel_shapes.h"
#include "records/planner_state.h"

namespace vekta {

// Everything the pass dispatches to: the two trees and the solver tables.
struct PlannerTables {
    const DecisionTree* step1Tree;
    const DecisionTree* step2Tree;
    bool (*step1Solver)(AxisPlan& rec);       // by rec.step1Profile
    bool (*step1RetrySolver)(AxisPlan& rec);  // the same on recovery's second attempt
    const Step2Solver* step2Solvers;          // 14, by step-2 profile / 2
    const VelShapeFn* velModeSolvers;         // 4, by velProfile / 2
};

// The library's own trees and solvers.
const PlannerTables& defaultTables();

// Plan records[0 .. axisCount - 1] from the inputs copied into them.
// positionMode: reach tgtPos at rest; otherwise the fastest synchronised
// change of every axis to tgtVel (a stop). Returns true when every axis got
// a profile; the first failure prints its line and ends the pass with false.
bool planAxes(PlannerState& st, bool positionMode);

// Which compilation of the planning core planAxes runs: the one for processors
// with the fused multiply-add instruction (the default where the processor
// has it and the library was built with that copy) or the baseline one; both
// give the same bits. Returns whether the FMA copy is now in use.
bool selectPlanningCopy(bool fma);

// The same pass over other trees and solvers (tests provoke failures with it).
bool planAxesWith(PlannerState& st, bool positionMode, const PlannerTables& tables);

}  // namespace vekta

#endif
