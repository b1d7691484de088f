// The four closed-form velocity changes (no position condition).
#ifndef VEKTA_NUMERIC_VEL_SHAPES_H
#define VEKTA_NUMERIC_VEL_SHAPES_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

using VelShapeFn = bool (*)(AxisPlan& rec);

// Minimum-time change to tgtVel: a0 -> A, hold A, A -> 0. Writes 3 points,
// counts 2. The hold is not checked: the caller picks it for large changes.
bool velTrapPulse(AxisPlan& rec);

// Minimum-time change to tgtVel below the limit: a0 -> peak -> 0. Writes 2
// points, counts 1.
bool velTriPulse(AxisPlan& rec);

// Change to tgtVel in exactly remTime, first raising the acceleration to a
// hold level: ramp, hold, ramp to 0. Writes 3 points, counts 2.
bool velHoldUp(AxisPlan& rec);

// Change to tgtVel in exactly remTime, first lowering the acceleration to a
// hold level. Writes 3 points, counts 2. remTime = curAcc / maxJerk divides
// by zero; nothing guards it.
bool velHoldDown(AxisPlan& rec);

// Indexed by velProfile / 2: 0, 1 minimum time; 2, 3 given duration.
extern const VelShapeFn velModeSolvers[4];

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
