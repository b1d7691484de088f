// The plan check offered to callers: verifies the current plan of every axis
// without changing it or printing anything.
#ifndef VEKTA_CHECK_PLAN_CHECK_H
#define VEKTA_CHECK_PLAN_CHECK_H

#include "records/planner_state.h"

namespace vekta {
inline namespace VEKTA_COPY {

// Check st's current plan (see vektaCheckPlan in the public header for the
// order, the tolerances and the codes); the message, if any, goes to
// message[0 .. messageSize - 1], always terminated.
int checkPlan(const PlannerState& st, char* message, int messageSize);

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
