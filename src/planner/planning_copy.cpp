// The choice between the two compilations of the planning core, made once.
//
// This file belongs to the baseline compilation only. The choice is a
// constant initialised while the library loads (before any caller can plan)
// and never written again, so reading it needs no synchronisation.
#include "planner/planning_copy.h"

#include <cstdlib>
#include <cstring>

#include "planner/planning_pass.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

bool chooseFmaCopy() {
#if defined(VEKTA_HAVE_FMA_COPY)
    const char* forced = std::getenv("VEKTA_PLANNING_COPY");
    if (forced != nullptr && std::strcmp(forced, "baseline") == 0) return false;
    __builtin_cpu_init();  // this runs among the library's static initialisers
    return __builtin_cpu_supports("fma");
#else
    return false;  // compiled only where there is no FMA copy
#endif
}

const bool kUseFmaCopy = chooseFmaCopy();

}  // namespace

bool planUpdate(PlannerState& st, bool positionMode) {
#if defined(VEKTA_HAVE_FMA_COPY)
    if (kUseFmaCopy) return fma::planAxes(st, positionMode);
#endif
    return base::planAxes(st, positionMode);
}

bool planningCopyIsFma() { return kUseFmaCopy; }

}  // namespace VEKTA_COPY
}  // namespace vekta
