// Which compilation of the planning core plans an update.
#ifndef VEKTA_PLANNER_PLANNING_COPY_H
#define VEKTA_PLANNER_PLANNING_COPY_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// Plan with the compilation chosen for this process: the FMA copy where the
// library has it and the processor has the instruction, the baseline copy
// otherwise, or when the environment variable VEKTA_PLANNING_COPY is
// "baseline" at load. The choice is made once, while the library loads, and
// only read afterwards, so any thread may plan. Both give the same bits.
bool planUpdate(PlannerState& st, bool positionMode);

// True when planUpdate runs the FMA copy.
bool planningCopyIsFma();

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
