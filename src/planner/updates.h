// The parameter updates: copy the caller's arrays into the records and plan.
#ifndef VEKTA_PLANNER_UPDATES_H
#define VEKTA_PLANNER_UPDATES_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// The jerk limit of each axis: maxJerk[i], or maxAcc[i] * ratio (in double,
// as the updates of vekta.h form it) when maxJerk is null.
struct JerkLimits {
    const double* maxJerk;
    double ratio;
};

// The axis counts an update takes: 1 or kLegacyAxes for the updates of
// vekta.h and their handle forms (they print "incorrect freedom number" for
// any other), 1 to kMaxAxes for the library's own calls, which check their
// arguments before they get here.
enum AxisCounts : bool { kLegacyCounts = false, kAnyCount = true };

// Plan a position-mode motion of n axes to tgtPos. See the public header for
// the contract and the printed lines.
bool positionUpdate(PlannerState& st, AxisCounts counts, int n, const double* tgtPos,
                    const double* maxVel, const double* maxAcc, JerkLimits jerk,
                    const double* curPos, const double* curVel, const double* curAcc);

// Plan the fastest synchronised stop of n axes; target positions are kept.
bool velocityUpdate(PlannerState& st, AxisCounts counts, int n, const double* maxVel,
                    const double* maxAcc, JerkLimits jerk, const double* curPos,
                    const double* curVel, const double* curAcc);

// Plan a catch-up with a conveyor moving along axis 0 at conveyorVel.
bool conveyorUpdate(PlannerState& st, AxisCounts counts, int n, double conveyorVel,
                    double conveyorLimit, const double* tgtPos, const double* maxVel,
                    const double* maxAcc, JerkLimits jerk, double spare);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
