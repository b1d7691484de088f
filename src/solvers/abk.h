// The root finder shared by the step-1 and step-2 solvers.
#ifndef VEKTA_SOLVERS_ABK_H
#define VEKTA_SOLVERS_ABK_H

#include "state/planner_state.h"

namespace vekta {

// A profile's residual: the end-position error of the shape built from the
// trial value *x. With rec.writeSections = 1 it also writes the shape's
// sections into the curve (and clears the flag); the root finder only ever
// calls it with the flag at 0.
using Step2Residual = double (*)(AxisPlan& rec, const double* x);

constexpr double ABK_TOL = 1e-5;
constexpr int ABK_MAX_ITER = 101;

// Find a zero of `residual` in [lo, hi]. Returns true with the root in *out;
// false on failure, with *out holding the fallback value of the failing path
// (untouched when lo > hi). Clears rec.writeSections first.
bool abkSolve(AxisPlan& rec, Step2Residual residual, double* out, double lo, double hi);

}  // namespace vekta

#endif
