// Named numeric constants shared by the trees, the solvers and the sampler.
//
// Each literal here is behaviour: changing one changes which shape a state is
// classified into or which curve is written, so they live in one place and the
// solver bodies use the names.
#ifndef VEKTA_STATE_NUMERICS_H
#define VEKTA_STATE_NUMERICS_H

#include <cmath>

namespace vekta {

// Stand-in for the square root of a non-positive radicand: tiny but never zero,
// so that later divisions by a peak or a duration stay finite.
constexpr double kRootGuard = 1e-50;

// Relative slack on a peak acceleration before a closed-form solver rejects it.
constexpr double kPeakSlack = 1.0000000001;

// Section times closer than this to zero are snapped to exactly zero.
constexpr double kSnapTime = 1e-6;

// Curve times may go back by less than this without a "wrong secTime" report.
constexpr double kTimeBackTolerance = 1e-5;

// A section whose acceleration changes by less than this is sampled as a
// constant-acceleration section (this also keeps zero-length sections finite).
constexpr double kFlatAccTolerance = 1e-5;

// Guarded square root: sqrt(x) for x > 0, the tiny guard otherwise (no NaN).
inline double guardedRoot(double x) { return x > 0.0 ? std::sqrt(x) : kRootGuard; }

// Cubes are taken with the library pow, as every closed form of the planner does.
inline double cube(double x) { return std::pow(x, 3.0); }

}  // namespace vekta

#endif
