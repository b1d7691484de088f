// The library's own calls (vektaPlannerMove and the rest of vekta_c.h's
// any-arm API): every argument checked before planning, a status and a reason
// in words for every failure, no plan left behind by a failed call, recovery
// mode's repairs and plan check whatever the planner's recovery switch says.
#ifndef VEKTA_PLANNER_REQUESTS_H
#define VEKTA_PLANNER_REQUESTS_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// The caller's arrays of one request, one value per axis. vel and acc may be
// null (zero); target is not read by a stop.
struct MotionRequest {
    int axes;
    const double* target;
    const double* maxVel;
    const double* maxAcc;
    const double* maxJerk;
    const double* pos;
    const double* vel;
    const double* acc;
};

// Each returns a VektaStatus and leaves the reason in st.error ("" on success).
int requestMove(PlannerState& st, const MotionRequest& m);
int requestStop(PlannerState& st, const MotionRequest& m);
int requestCatchUp(PlannerState& st, double conveyorVel, double conveyorLimit, const MotionRequest& m);
int requestPeriod(PlannerState& st, double seconds);

// True when st holds a plan that may be sampled.
bool hasPlan(const PlannerState& st);

// The plan's common end time; 0 without a plan.
double planDuration(const PlannerState& st);

// Axis `axis`'s end time when planned alone; -1 without a plan or for an axis
// outside it.
double axisMinimumTime(const PlannerState& st, int axis);

// Every axis at time t (seconds since the update): 0, or -1 without a plan,
// for a NaN t or a null array. Does not move the sampling cursor.
int planStateAt(const PlannerState& st, double t, double* pos, double* vel, double* acc);

// Every axis at the next period: 0 while moving, 1 once every axis has
// finished, -1 without a plan or for a null array.
int planNext(PlannerState& st, double* pos, double* vel, double* acc);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
