// The process-wide planner behind the functions of vekta.h: static storage,
// zero at load, alive for the life of the process. Planner handles carry
// states of their own; nothing below the exported layer knows this one.
#ifndef VEKTA_API_DEFAULT_STATE_H
#define VEKTA_API_DEFAULT_STATE_H

#include "records/planner_state.h"

namespace vekta {

extern PlannerState processState;

inline namespace VEKTA_COPY {
inline PlannerState& defaultState() { return processState; }
}  // namespace VEKTA_COPY

}  // namespace vekta

#endif
