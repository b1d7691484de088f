// The planning pass: minimum-time profiles for every axis, the common end
// time, and the synchronisation of the other axes to it.
#ifndef VEKTA_PLANNER_PLANNING_PASS_H
#define VEKTA_PLANNER_PLANNING_PASS_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// Plan records[0 .. axisCount - 1] from the inputs copied into them, with this
// compilation of the planning core. positionMode: reach tgtPos at rest;
// otherwise the fastest synchronised change of every axis to tgtVel (a stop).
// Returns true when every axis got a profile; the first failure prints its
// line and ends the pass with false.
bool planAxes(PlannerState& st, bool positionMode);

}  // namespace VEKTA_COPY

// The pass of the other compilation, so that the dispatcher calls both with
// the same record types (fma::planAxes exists only where the library is built
// with the FMA copy).
#if defined(VEKTA_COPY_FMA)
namespace base {
bool planAxes(PlannerState& st, bool positionMode);
}  // namespace base
#else
namespace fma {
bool planAxes(PlannerState& st, bool positionMode);
}  // namespace fma
#endif

}  // namespace vekta

#endif
