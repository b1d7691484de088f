// The fourteen step-2 (synchronising) solvers and their residuals.
//
// A step-2 solver re-plans one axis so that, from the record's present state
// (working frame, curAcc >= 0), it takes exactly remTime and ends at tgtPos
// with tgtVel and zero acceleration. Each shape has one free quantity x; the
// solver brackets it from the limits and the tree's hints, finds the root of
// the shape's residual with abkSolve and lets the residual write the sections,
// from index pointCount on, counting every point it writes. Values are stored
// times inv, so a mirrored record (inv = -1) yields the mirrored curve.
#ifndef VEKTA_STEP2_STEP2_SOLVERS_H
#define VEKTA_STEP2_STEP2_SOLVERS_H

#include "numeric/abk.h"
#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// Solve and write one shape. Reads the bracket hints in `st` and clears the
// one-shot ones it uses. False (with its line printed) when no root is found;
// nothing is written then.
using Step2Solver = bool (*)(PlannerState& st, AxisPlan& rec);

constexpr int kStep2SolverCount = 14;

// Indexed by step2Profile / 2.
extern const Step2Solver step2Solvers[kStep2SolverCount];

bool solveStep2PosTrapZeroNegTri(PlannerState& st, AxisPlan& rec);   // 0
bool solveStep2PosTriZeroNegTri(PlannerState& st, AxisPlan& rec);    // 1
bool solveStep2PosTrapZeroNegTrap(PlannerState& st, AxisPlan& rec);  // 2
bool solveStep2PosTriZeroNegTrap(PlannerState& st, AxisPlan& rec);   // 3
bool solveStep2PosTrapZeroPosTri(PlannerState& st, AxisPlan& rec);   // 4
bool solveStep2PosTriZeroPosTri(PlannerState& st, AxisPlan& rec);    // 5
bool solveStep2PosTriZeroPosTrap(PlannerState& st, AxisPlan& rec);   // 6
bool solveStep2PosTrapZeroPosTrap(PlannerState& st, AxisPlan& rec);  // 7
bool solveStep2PosTrapHldNegLin(PlannerState& st, AxisPlan& rec);    // 8
bool solveStep2PosTriHldNegLin(PlannerState& st, AxisPlan& rec);     // 9
bool solveStep2NegLinHldPosTrap(PlannerState& st, AxisPlan& rec);    // 10
bool solveStep2NegLinHldPosTri(PlannerState& st, AxisPlan& rec);     // 11
bool solveStep2PosLinHldPosTri(PlannerState& st, AxisPlan& rec);     // 12
bool solveStep2PosLinHldPosTrap(PlannerState& st, AxisPlan& rec);    // 13

// The residuals: (end position of the shape built from *x) - tgtPos. With
// rec.writeSections = 1 they also write the shape's points, clear the flag
// and advance pointCount by the number of sections (given after each).
double residualPosTrapZeroNegTri(AxisPlan& rec, const double* x);   // x cruise velocity; 6
double residualPosTriZeroNegTri(AxisPlan& rec, const double* x);    // x first peak; 5
double residualPosTrapZeroNegTrap(AxisPlan& rec, const double* x);  // x cruise velocity; 7
double residualPosTriZeroNegTrap(AxisPlan& rec, const double* x);   // x first peak; 6
double residualPosTrapZeroPosTri(AxisPlan& rec, const double* x);   // x cruise velocity; 6
double residualPosTriZeroPosTri(AxisPlan& rec, const double* x);    // x first peak; 5
double residualPosTriZeroPosTrap(AxisPlan& rec, const double* x);   // x first peak; 6
double residualPosTrapZeroPosTrap(AxisPlan& rec, const double* x);  // x cruise velocity; 7
double residualPosTrapHldNegLin(AxisPlan& rec, const double* x);    // x held acceleration; 5
double residualPosTriHldNegLin(AxisPlan& rec, const double* x);     // x first peak; 4
double residualNegLinHldPosTrap(AxisPlan& rec, const double* x);    // x held acceleration; 5
double residualNegLinHldPosTri(AxisPlan& rec, const double* x);     // x held acceleration; 4
double residualPosLinHldPosTri(AxisPlan& rec, const double* x);     // x held acceleration; 4
double residualPosLinHldPosTrap(AxisPlan& rec, const double* x);    // x held acceleration; 5

// Indexed like step2Solvers.
extern const Step2Residual step2Residuals[kStep2SolverCount];

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
