// The parameter updates: copy the caller's arrays into the records and plan.
#ifndef VEKTA_PLANNER_UPDATES_H
#define VEKTA_PLANNER_UPDATES_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// Plan a position-mode motion of n axes (1 or 6) to tgtPos. See the public
// header for the contract and the printed lines.
bool positionUpdate(PlannerState& st, int n, const double* tgtPos, const double* maxVel,
                    const double* maxAcc, double jerkRatio, const double* curPos,
                    const double* curVel, const double* curAcc);

// Plan the fastest synchronised stop of n axes; target positions are kept.
bool velocityUpdate(PlannerState& st, int n, const double* maxVel, const double* maxAcc,
                    double jerkRatio, const double* curPos, const double* curVel,
                    const double* curAcc);

// Plan a catch-up with a conveyor moving along axis 0 at conveyorVel.
bool conveyorUpdate(PlannerState& st, int n, double conveyorVel, double conveyorLimit,
                    const double* tgtPos, const double* maxVel, const double* maxAcc,
                    double jerkRatio, double spare);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
