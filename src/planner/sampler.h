// Period-by-period sampling of the planned curves.
#ifndef VEKTA_PLANNER_SAMPLER_H
#define VEKTA_PLANNER_SAMPLER_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// Evaluate axis `axis`'s curve at the next nSamples control periods (see the
// public header for the contract). Returns the finished flag (0 or 1).
int samplePlan(PlannerState& st, int axis, int nSamples, double* pos, double* vel, double* acc,
               int& count);

// Time axis 0's plan still has to run, never negative.
double leftMoveTime(const PlannerState& st);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
