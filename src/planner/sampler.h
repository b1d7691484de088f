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

// The period a planner samples its plan at, and the one its next update takes.
inline double samplingPeriod(const PlannerState& st) { return st.planPeriod > 0.0 ? st.planPeriod : kCyclePeriod; }
inline double updatePeriod(const PlannerState& st) { return st.period > 0.0 ? st.period : kCyclePeriod; }

// Axis `axis`'s curve at time t (seconds since the update), computed as the
// sampler computes a sample at that time: the section t falls in (a time on a
// point belongs to the section that ends there), constant jerk within it, the
// end state past the last point. t must not be NaN.
void evaluateAxis(const AxisPlan& r, double t, double& pos, double& vel, double& acc);

// Time axis 0's plan still has to run, never negative.
double leftMoveTime(const PlannerState& st);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
