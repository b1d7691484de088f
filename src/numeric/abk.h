// The root finder shared by the step-1 and step-2 solvers: bisection and
// Anderson-Bjorck regula falsi.
//
// Each iteration first halves the bracket (which guarantees progress however
// badly the residual is shaped) and then takes one secant step through the two
// ends. When the secant step lands on the same side as the newest end twice in
// a row, plain regula falsi would keep the other end forever; Anderson-Bjorck
// scales the retained end's value down instead (w = 1 - fx/fb, or one half
// when that is not positive), so the secant is pulled across the root.
//
// The initial ends are probed slightly inside the bracket, and the probed value
// stands for the end itself; this decides which end is returned when both ends
// already meet the tolerance. The final acceptance after the bracket has
// shrunk compares the kept residual with its sign, on purpose.
//
// The iteration is a template over the residual, so that a solver can hand it
// a residual with the shape's fixed parts worked out once per solve and have
// it inlined; abkSolve is the same iteration over a plain residual function.
#ifndef VEKTA_NUMERIC_ABK_H
#define VEKTA_NUMERIC_ABK_H

#include <cmath>

#include "records/planner_state.h"
#include "output/text_output.h"

namespace vekta {
inline namespace VEKTA_COPY {

// A profile's residual: the end-position error of the shape built from the
// trial value *x. With rec.writeSections = 1 it also writes the shape's
// sections into the curve (and clears the flag); the root finder only ever
// calls it with the flag at 0.
using Step2Residual = double (*)(AxisPlan& rec, const double* x);

constexpr double kAbkTolerance = 1e-5;
constexpr int kAbkMaxIterations = 101;

// Find a zero of `residual` in [lo, hi]. Returns true with the root in *out;
// false on failure, with *out holding the fallback value of the failing path
// (untouched when lo > hi). Clears rec.writeSections first.
bool abkSolve(AxisPlan& rec, Step2Residual residual, double* out, double lo, double hi);

namespace abk_detail {

constexpr double kProbeShift = 1e-8;
constexpr double kAcceptLimit = 1e-4;  // signed: any negative kept residual passes
constexpr double kFallbackWeight = 0.5;

// The two ends of the bracket. `fa` may be a weighted value rather than the
// true residual at `a`; `b` is always the newest point.
struct Bracket {
    double a, b, fa, fb;
};

}  // namespace abk_detail

// abkSolve over any residual callable as residual(x) (x a double); rec is
// only used for its writeSections flag.
template <typename Residual>
bool abkSolveWith(AxisPlan& rec, const Residual& residual, double* out, double lo, double hi) {
    using namespace abk_detail;
    rec.writeSections = 0;
    if (lo > hi) {
        printTo(rec.sink, "abk:error input %f %f\n", lo, hi);
        return false;
    }

    // The ends are probed slightly inside; the probe stands for its end.
    Bracket br{lo, hi, 0.0, 0.0};
    {
        const double d = lo < hi ? kProbeShift : -kProbeShift;
        const double f1 = residual(lo + d);
        const double f2 = residual(hi - d);
        if (std::fabs(f2) > std::fabs(f1)) {
            br.fa = residual(lo);
            br.fb = f2;
        } else {
            br.fa = f1;
            br.fb = residual(hi);
        }
    }

    for (int iter = 0; iter < kAbkMaxIterations; ++iter) {
        if (std::fabs(br.fa) < kAbkTolerance) {
            *out = br.a;
            return true;
        }
        if (std::fabs(br.fb) < kAbkTolerance) {
            *out = br.b;
            return true;
        }
        if (br.fa * br.fb > 0.0) {  // no sign change: nothing to bracket
            *out = (br.a + br.b) / 2.0;
            return false;
        }

        // Bisection; keep the half with the sign change, newest point in b.
        const double m = (br.a + br.b) * 0.5;
        const double fm = residual(m);
        if (std::fabs(fm) < kAbkTolerance) {
            *out = m;
            return true;
        }
        if (br.fb * fm < 0.0) {
            br.a = br.b;
            br.fa = br.fb;
        }
        br.b = m;
        br.fb = fm;

        // Secant step through both ends.
        const double slope = (br.fa - br.fb) / (br.a - br.b);
        const double x = br.b - br.fb / slope;
        const double fx = residual(x);
        if (std::fabs(fx) < kAbkTolerance) {
            *out = x;
            return true;
        }
        if (br.fb * fx < 0.0) {
            br.a = br.b;
            br.fa = br.fb;
        } else {
            // Same side twice: weight the retained end down (Anderson-Bjorck).
            double w = 1.0 - fx / br.fb;
            if (!(w > 0.0)) w = kFallbackWeight;
            br.fa = br.fa * w;
        }
        br.b = x;
        br.fb = fx;

        if (std::fabs(br.b - br.a) <= kAbkTolerance) {
            const bool keepA = std::fabs(br.fb) > std::fabs(br.fa);
            const double kept = keepA ? br.a : br.b;
            const double keptResidual = keepA ? br.fa : br.fb;
            *out = kept;
            if (keptResidual < kAcceptLimit) return true;
            printTo(rec.sink, "ABK fail with error: %f", keptResidual);
            return false;
        }
    }

    printTo(rec.sink, "abk timeout %f %f\n", br.a, br.b);
    *out = (lo + hi) * 0.5;
    return false;
}

// Exact curves (AxisPlan::exact): abkSolve stops once |r| < kAbkTolerance,
// which leaves a shape's end up to 1e-5 from its target; a root good to that
// is fine for choosing and timing a shape, not for where a curve ends (by
// default the last point is then stored on the target: a position step in the
// last period). So an exact curve's root is refined further through the same
// residual with the root finder's own two steps, more iterations: secant
// steps from the root and the search's newest other trial while they gain;
// once two trials have residuals of opposite signs, regula falsi inside that
// bracket (the end kept twice has its residual halved, bisection where a step
// would leave the bracket); until |r| is down to `good` (the rounding of the
// residual itself) or the bracket is two neighbouring doubles. No trial
// leaves [lo, hi]; the trial with the smallest |r| is returned. Where the
// search left no other trial, the first slope is taken over a short probe
// (kRefineProbe of the bracket), lengthened kRefineWiden times over while it
// does not move the end (a shape from rest moves its end by the cube of a
// tiny peak).
constexpr double kRefineProbe = 1e-9;
constexpr double kRefineWiden = 16.0;
constexpr int kRefineSecantSteps = 24;
constexpr int kRefineBracketSteps = 100;

// The two newest trials of a search.
struct RootTrail {
    int n = 0;
    double x[2] = {}, f[2] = {};  // [n - 1 & 1] is the newest
    void push(double t, double r) {
        x[n & 1] = t;
        f[n & 1] = r;
        ++n;
    }
};

template <typename Residual>
double refineRoot(const Residual& residual, const RootTrail& trail, double x, double lo, double hi, double good) {
    const double left = lo < hi ? lo : hi, right = lo < hi ? hi : lo;
    const int newest = (trail.n - 1) & 1, older = trail.n & 1;
    // The root is usually one of the two newest trials, its residual known.
    const int at = trail.n >= 1 && trail.x[newest] == x ? newest : (trail.n >= 2 && trail.x[older] == x ? older : -1);
    const double fx = at >= 0 ? trail.f[at] : residual(x);
    if (!(std::fabs(fx) > good)) return x;  // good already, or no number to improve
    double best = x, fBest = fx;
    double a, fa;
    const int other = at == newest ? older : newest;
    if (trail.n >= 2 && trail.x[other] != x && std::isfinite(trail.f[other])) {
        a = trail.x[other], fa = trail.f[other];
    } else {
        a = x + (x - left < right - x ? 1.0 : -1.0) * (right - left) * kRefineProbe, fa = residual(a);
    }
    double b = x, fb = fx;  // b: the newest trial
    // Secant steps while they gain and find no sign change.
    for (int step = 0; step < kRefineSecantSteps; ++step) {
        if (std::fabs(fa) < std::fabs(fBest)) best = a, fBest = fa;
        if (!(std::fabs(fBest) > good) || (fa < 0.0) != (fb < 0.0)) break;
        const double slope = (fb - fa) / (b - a);
        if (slope == 0.0) {  // a probe too short to move the end: a longer one
            double wider = b + (a - b) * kRefineWiden;
            wider = wider < left ? left : (wider > right ? right : wider);
            if (wider == a) return best;
            a = wider, fa = residual(a);
            continue;
        }
        if (!std::isfinite(slope)) return best;
        double z = b - fb / slope;
        z = z < left ? left : (z > right ? right : z);
        if (z == a || z == b) return best;
        const double fz = residual(z);
        if (!(std::fabs(fz) < std::fabs(fBest)) && (fz < 0.0) == (fb < 0.0)) return best;  // no gain, no bracket
        if (std::fabs(fz) < std::fabs(fBest)) best = z, fBest = fz;
        a = b, fa = fb;
        b = z, fb = fz;
    }
    if (!(std::fabs(fBest) > good) || (fa < 0.0) == (fb < 0.0) || std::isnan(fa) || std::isnan(fb)) return best;
    // Regula falsi in the bracket [a, b] (either order), b the newest trial.
    for (int step = 0; step < kRefineBracketSteps; ++step) {
        double z = b - fb * (b - a) / (fb - fa);
        const double low = a < b ? a : b, high = a < b ? b : a;
        if (!(z > low && z < high)) z = low + (high - low) / 2.0;
        if (z <= low || z >= high) break;  // the ends are neighbouring doubles
        const double fz = residual(z);
        if (std::fabs(fz) < std::fabs(fBest)) best = z, fBest = fz;
        if (!(std::fabs(fz) > good)) break;
        if ((fz < 0.0) != (fb < 0.0)) {
            a = b, fa = fb;
        } else {
            fa *= 0.5;  // the same end kept again: pull the next step towards it
        }
        b = z, fb = fz;
    }
    return best;
}

// abkSolveWith for an exact curve: the same search, remembering its two
// newest trials, then the root refined from them. `good`: the residual that
// is down to the rounding of its own arithmetic.
template <typename Residual>
[[gnu::always_inline]] inline bool abkSolveExact(AxisPlan& rec, const Residual& residual, double* out, double lo, double hi, double good) {
    RootTrail trail;
    const auto traced = [&residual, &trail](double t) __attribute__((always_inline)) {
        const double r = residual(t);
        trail.push(t, r);
        return r;
    };
    if (!abkSolveWith(rec, traced, out, lo, hi)) return false;
    *out = refineRoot(residual, trail, *out, lo, hi, good);
    return true;
}

// The residual of an end position that is the rounding of positions of this
// size: a few units in their last place.
inline double roundingOf(double size) { return std::fabs(size) * 0x1p-46; }

}  // namespace VEKTA_COPY
}  // namespace vekta

#endif
