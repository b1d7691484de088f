// The ten step-1 (minimum-time) profile solvers and their dispatch by id.
//
// Each solver appends the fastest jerk-limited curve of its shape from the
// record's present state (real frame, inv = 1) to tgtPos, arriving with tgtVel.
// It writes one point at the end of every section, the last one exactly
// (tgtVel, tgtPos) with zero acceleration, and counts all written points but
// the last: the planning pass counts that one after the call.
#ifndef VEKTA_STEP1_STEP1_SOLVERS_H
#define VEKTA_STEP1_STEP1_SOLVERS_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// Step-1 profile ids: each even id is a shape starting with a positive pulse,
// the odd id above it is its mirror image.
enum Step1Shape : int {
    kStep1None = 0,         // not classified: a step-1 failure
    kStep1Unreachable = 1,  // only from dead tree nodes: a failure too
    kStep1PTZNt = 2,        // trapezoid up to V, cruise, triangle down
    kStep1PtZNt = 4,        // triangle up to V, cruise, triangle down
    kStep1PTZNT = 6,        // trapezoid up to V, cruise, trapezoid down
    kStep1PtZNT = 8,        // triangle up to V, cruise, trapezoid down
    kStep1PTNt = 10,        // trapezoid up, triangle down, no cruise
    kStep1PTNT = 12,        // trapezoid up, trapezoid down, no cruise
    kStep1PtNT = 14,        // triangle up, trapezoid down, no cruise
    kStep1PtNt = 16,        // triangle up, triangle down, no cruise
    kStep1PLNt = 18,        // linear ramp of the present acceleration, then a triangle
    kStep1PLNT = 20,        // linear ramp, then a trapezoid
    kStep1IdCount = 22,
};

// Solvers of ids 2..17: `variant` is false for the even id and true for the
// odd one (solve the mirrored state, store every value negated).
using Step1SolverFn = bool (*)(AxisPlan& rec, bool variant);

bool solveStep1PTZNt(AxisPlan& rec, bool variant);  // ids 2, 3
bool solveStep1PtZNt(AxisPlan& rec, bool variant);  // ids 4, 5
bool solveStep1PTZNT(AxisPlan& rec, bool variant);  // ids 6, 7
bool solveStep1PtZNT(AxisPlan& rec, bool variant);  // ids 8, 9
bool solveStep1PTNt(AxisPlan& rec, bool variant);   // ids 10, 11
bool solveStep1PTNT(AxisPlan& rec, bool variant);   // ids 12, 13
bool solveStep1PtNT(AxisPlan& rec, bool variant);   // ids 14, 15
bool solveStep1PtNt(AxisPlan& rec, bool variant);   // ids 16, 17

// Solvers of ids 18..21 take no flag: they mirror the state themselves when
// the present acceleration is positive, whatever the id.
bool solveStep1PLNt(AxisPlan& rec);  // ids 18, 19
bool solveStep1PLNT(AxisPlan& rec);  // ids 20, 21

// PLNt with its peak searched over the whole range a valid shape allows,
// [max(a, -sqrt(A^2 - d)), 0], where the table bracket of solveStep1PLNt
// keeps only [-1e-50, 0] whenever the first bound is the larger one (every
// state of node 33). Recovery mode's second attempt uses it.
bool solveStep1PLNtWhole(AxisPlan& rec);  // ids 18, 19

// One row of the dispatch by step1Profile.
struct Step1Dispatch {
    Step1SolverFn solve;  // nullptr: no solver (ids 0 and 1)
    bool variant;
};

// The row for `id`, or nullptr when the id has no solver (0, 1, above 21, negative).
const Step1Dispatch* step1DispatchFor(int id);

// Run the solver of rec.step1Profile; false when it has none or it fails.
bool runStep1Solver(AxisPlan& rec);

// The same for recovery mode's second attempt: ids 18 and 19 with the whole
// bracket (solveStep1PLNtWhole), every other id as runStep1Solver.
bool runStep1RetrySolver(AxisPlan& rec);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
