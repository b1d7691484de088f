// Writing an axis's curve: the point writers, the snapshot both planning steps
// start from, the working-frame mirror, and the small helpers every layer of
// the planning core shares (event counters, the output hook-up).
#ifndef VEKTA_NUMERIC_AXIS_CURVE_H
#define VEKTA_NUMERIC_AXIS_CURVE_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// Count one more event in a statistics counter. The counters grow across
// plans for the life of the process; they stop at the largest int instead of
// overflowing (re-planning every period would get there within weeks).
inline void countEvent(int& counter) {
    if (counter < 0x7fffffff) counter += 1;
}

// Point every record's sink at the planner's output (done by every update,
// so that a copied state prints into its own output).
inline void attachOutput(PlannerState& st) {
    for (AxisPlan& r : st.records) r.sink = &st.output;
}

// Curve capacity guard. Every point writer below stores nothing at an index
// beyond the arrays (it still counts the point, so pointCount > kMaxPoints
// shows the overflow); the planning pass then fails the axis. Only inputs the
// planner is not made for (NaN, non-positive limits) need more than 13 points.
inline bool pointFits(int k) { return k >= 0 && k < kMaxPoints; }

// Store curve point k: time as given, acceleration, velocity and position each
// multiplied by `sign` (the frame sign, or -1 for a mirrored solver variant).
inline void storePoint(AxisPlan& rec, int k, double t, double a, double v, double p,
                       double sign) {
    if (!pointFits(k)) return;
    rec.secTime[k] = t;
    rec.secAcc[k] = a * sign;
    rec.secVel[k] = v * sign;
    rec.secPos[k] = p * sign;
}

// Overwrite point k's acceleration with a plain +0, whatever the frame.
inline void storeZeroAcc(AxisPlan& rec, int k, double zeroSign = 1.0) {
    if (pointFits(k)) rec.secAcc[k] = 0.0 * zeroSign;
}

// Store the working state as the next curve point (values times inv) and count it.
void appendPoint(AxisPlan& rec);

// Append a section that ramps curAcc down to zero at jerk -maxJerk, advance the
// working state over it, store its end point and shorten remTime by its length.
// Returns the new pointCount.
int appendAccToZero(AxisPlan& rec);

// Record the prepared state (point count, plan time, the five state fields and
// the frame sign) as the snapshot both planning steps start from.
void takeSnapshot(AxisPlan& rec);

// Go back to the snapshot's state and point count (dropping the points written
// after it); the frame sign and plan time are restored by the caller.
void restoreSnapshot(AxisPlan& rec);

// Negate the five state fields (curPos, tgtPos, curVel, tgtVel, curAcc).
void negateState(AxisPlan& rec);

// The working-frame mirror: negate the five state fields and the frame sign.
void mirrorAxis(AxisPlan& rec);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
