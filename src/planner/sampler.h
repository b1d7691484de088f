// Period-by-period sampling of the planned curves.
#ifndef VEKTA_PLANNER_SAMPLER_H
#define VEKTA_PLANNER_SAMPLER_H

#include <climits>

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

// ---- The pieces of samplePlan, for a caller that samples one planner state
// known at compile time (the default planner of vekta.h) through sampleAxis.

// The time of period number `period` at the plan's period `step`.
inline double periodTime(double step, int period) { return period * step; }

// The period counter keeps running after the end of the curve; it stops one
// below the largest int (after some 124 days of sampling one axis) so that
// neither it nor the next period's number ever overflows.
constexpr int kLastPeriod = INT_MAX - 1;

inline void nextPeriod(int& period) {
    if (period < kLastPeriod) period += 1;
}

// samplePlan, every case.
int sampleAnyCall(PlannerState& st, int axis, int nSamples, double* pos, double* vel, double* acc, int& count);

// The end of a call that took one sample in the middle of a curve: the
// reports such a call can make, in their order, and its result.
int finishOneSample(PlannerState& st, const AxisPlan& r, int axis, int finished, const double* pos);

// Move the cursor to the section that time t falls in, as sampleAnyCall
// does, and copy that section's start state, jerk and end time into the
// record. False, with the cursor untouched, when t lies past the curve.
bool enterSection(AxisPlan& r, double t);

// The call a controller makes for every axis in every period: one sample,
// inside the curve of a plan of several axes, no report due. It does what
// sampleAnyCall does for it, from the record's copy of the current section
// while the sample time stays inside it (within a section the cursor does
// not move); anything else (and a sample past the curve's end) goes to
// `other` (sampleAnyCall) before touching the state.
template <typename OtherCall>
[[gnu::always_inline]] inline int sampleAxis(PlannerState& st, int axis, int nSamples, double* pos,
                                             double* vel, double* acc, int& count,
                                             const OtherCall& other) {
    if (nSamples != 1 || st.newPlan || st.planFailed || st.axisCount < 2 || axis < 0 ||
        axis >= st.axisCount) {
        return other();
    }
    AxisPlan& r = st.records[axis];
    const double step = samplingPeriod(st);
    const double t = periodTime(step, r.sampleCount + 1);
    if (!(t <= r.sampleSectionEnd) && !enterSection(r, t)) return other();
    int period = r.sampleCount;
    nextPeriod(period);
    const int finished = periodTime(step, period) >= r.secTime[r.pointCount - 1] ? 1 : 0;
    r.sampleCount = period;
    count = 1;

    const double a0 = r.sampleA0, v0 = r.sampleV0, p0 = r.sampleP0, jerk = r.sampleJerk;
    const double tau = t - r.sampleT0;
    const double halfTau2 = tau * tau / 2.0;
    acc[0] = a0 + jerk * tau;
    vel[0] = v0 + a0 * tau + jerk * halfTau2;
    pos[0] = p0 + v0 * tau + a0 * halfTau2 + jerk * (halfTau2 * tau / 3.0);
    if (finished || axis == 0) return finishOneSample(st, r, axis, finished, pos);
    return 0;
}


}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
