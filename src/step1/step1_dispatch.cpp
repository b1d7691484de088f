// The step-1 dispatch: profile id -> solver and mirror variant.
#include "step1/step1_solvers.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// Ids 18..21 carry no variant: the solver looks at the acceleration's sign.
bool runPLNt(AxisPlan& rec, bool) { return solveStep1PLNt(rec); }
bool runPLNT(AxisPlan& rec, bool) { return solveStep1PLNT(rec); }

const Step1Dispatch kStep1Table[kStep1IdCount] = {
    {nullptr, false},          // 0  none
    {nullptr, false},          // 1  none
    {solveStep1PTZNt, false},  // 2
    {solveStep1PTZNt, true},   // 3
    {solveStep1PtZNt, false},  // 4
    {solveStep1PtZNt, true},   // 5
    {solveStep1PTZNT, false},  // 6
    {solveStep1PTZNT, true},   // 7
    {solveStep1PtZNT, false},  // 8
    {solveStep1PtZNT, true},   // 9
    {solveStep1PTNt, false},   // 10
    {solveStep1PTNt, true},    // 11
    {solveStep1PTNT, false},   // 12
    {solveStep1PTNT, true},    // 13
    {solveStep1PtNT, false},   // 14
    {solveStep1PtNT, true},    // 15
    {solveStep1PtNt, false},   // 16
    {solveStep1PtNt, true},    // 17
    {runPLNt, false},          // 18
    {runPLNt, false},          // 19
    {runPLNT, false},          // 20
    {runPLNT, false},          // 21
};

}  // namespace

const Step1Dispatch* step1DispatchFor(int id) {
    if (id < 0 || id >= kStep1IdCount || kStep1Table[id].solve == nullptr) return nullptr;
    return &kStep1Table[id];
}

bool runStep1Solver(AxisPlan& rec) {
    const Step1Dispatch* row = step1DispatchFor(rec.step1Profile);
    return row != nullptr && row->solve(rec, row->variant);
}

bool runStep1RetrySolver(AxisPlan& rec) {
    if (rec.step1Profile == kStep1PLNt || rec.step1Profile == kStep1PLNt + 1) {
        return solveStep1PLNtWhole(rec);
    }
    return runStep1Solver(rec);
}

}  // namespace VEKTA_COPY
}  // namespace vekta
