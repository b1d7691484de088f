// Named numeric constants shared by the trees, the solvers and the sampler.
//
// Each literal here is behaviour: changing one changes which shape a state is
// classified into or which curve is written, so they live in one place and the
// solver bodies use the names.
#ifndef VEKTA_NUMERIC_NUMERICS_H
#define VEKTA_NUMERIC_NUMERICS_H

#include <cmath>
#include <cstdint>
#include <cstring>

#include "records/planning_copy.h"

namespace vekta {
inline namespace VEKTA_COPY {

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

// Cubes: every closed form of the planner takes them as the library's
// pow(x, 3.0), and its decisions depend on the last bit of the result, so
// cube() returns exactly what that pow returns, only faster.
//
// x^3 is formed exactly as a sum of doubles (Dekker's product, which needs no
// fused multiply-add): x x = h1 + l1, h1 x = h2 + l2, so x^3 = h2 + l2 + l1 x;
// the last product's own rounding (2^-106 of x^3) is below anything that
// matters here. r is that sum rounded to a double. pow is accurate to better
// than 0.54 units in the last place, so whenever the exact cube lies within
// 0.46 of a unit of r no other double can be pow's answer: it returns r. The
// rare cube near a rounding midpoint, a cube that is a power of two (where the
// unit below is half the unit above) and every x outside [2^-320, 2^340] in
// magnitude (zero, subnormal, huge, inf, NaN; the products would lose bits
// to underflow or overflow) are handed to pow itself.
namespace cube_detail {

// Veltkamp's split: a = hi + lo with both halves of at most 26 significant bits.
inline void split(double a, double& hi, double& lo) {
    const double c = 134217729.0 * a;  // 2^27 + 1
    hi = c - (c - a);
    lo = a - hi;
}

// Dekker's product: a b = p + e exactly (no overflow or underflow assumed).
// Where the fused multiply-add instruction is part of the target, it gives the
// same exact e in one operation.
#if defined(__FMA__)
inline void twoProduct(double a, double, double, double b, double& p, double& e) {
    p = a * b;
    e = __builtin_fma(a, b, -p);
}
#else
inline void twoProduct(double a, double aHi, double aLo, double b, double& p, double& e) {
    double bHi, bLo;
    split(b, bHi, bLo);
    p = a * b;
    e = ((aHi * bHi - p) + aHi * bLo + aLo * bHi) + aLo * bLo;
}
#endif

// Distance from a rounded cube to the exact one that pow is sure to round
// back to it, in units in the last place of the result: 0.46, less a margin
// for the distance's own error (the neglected product and two roundings, all
// below 2^-50 of a unit).
constexpr double kSafeUlps = 0.46 - 0x1p-40;
constexpr double kMinExact = 0x1p-320;
constexpr double kMaxExact = 0x1p340;

// The rare case, kept out of line so that cube() stays small enough to inline.
[[gnu::noinline, gnu::cold]] inline double powCube(double x) { return std::pow(x, 3.0); }

}  // namespace cube_detail

inline double cube(double x) {
    using namespace cube_detail;
    const double ax = std::fabs(x);
    if (!(ax >= kMinExact && ax <= kMaxExact)) return x == 0.0 ? x : powCube(x);  // pow(+-0, 3) = +-0
    double xHi, xLo, h1, l1, h2, l2;
    split(x, xHi, xLo);
    twoProduct(x, xHi, xLo, x, h1, l1);
    twoProduct(x, xHi, xLo, h1, h2, l2);
    const double tail = l2 + l1 * x;
    const double r = h2 + tail;
    const double offset = (h2 - r) + tail;  // exact cube - r, to a rounding of its own

    std::uint64_t bits;
    std::memcpy(&bits, &r, sizeof bits);
    constexpr std::uint64_t kExponent = 0x7ff0000000000000u, kFraction = 0x000fffffffffffffu;
    const std::uint64_t unitBits = (bits & kExponent) - (std::uint64_t{52} << 52);  // 2^(e - 52)
    double unit;
    std::memcpy(&unit, &unitBits, sizeof unit);
    if ((bits & kFraction) != 0 && std::fabs(offset) <= kSafeUlps * unit) return r;
    return powCube(x);
}

// j * cube(d) / 6.0: the jerk's share of the displacement over a section of
// duration d. A hold or a cruise (j = 0) gives zero with the sign of j * d
// without the cube and the division: cube(d) has the sign of d and is finite
// below 2^340, and a signed zero divided by 6 stays what it is. Beyond that,
// or for a NaN d, the expression is taken as written (0 times an infinite
// cube is NaN).
inline double jerkShare(double j, double d) {
    if (j == 0.0 && std::fabs(d) <= cube_detail::kMaxExact) return j * d;
    return j * cube(d) / 6.0;
}

// A one-entry memory for a chain of sections, which often repeats a duration
// (the two halves of a triangle, the ramps of a trapezoid): a duration with
// the same bits has the same cube. It starts out holding cube(+0) = +0.
struct CubeMemo {
    std::uint64_t bits = 0;
    double value = 0.0;
};

[[gnu::always_inline]] inline double cube(double x, CubeMemo& memo) {
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    if (bits != memo.bits) {
        memo.bits = bits;
        memo.value = cube(x);
    }
    return memo.value;
}

[[gnu::always_inline]] inline double jerkShare(double j, double d, CubeMemo& memo) {
    if (j == 0.0 && std::fabs(d) <= cube_detail::kMaxExact) return j * d;
    return j * cube(d, memo) / 6.0;
}

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
