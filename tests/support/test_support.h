// Helpers shared by the tests: fresh planner states, hand-built records,
// standard-output capture (support/transcript.h) and the physical curve assertions.
#ifndef VEKTA_TESTS_SUPPORT_H
#define VEKTA_TESTS_SUPPORT_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "check/curve_check.h"
#include "records/planner_state.h"
#include "support/transcript.h"

namespace vekta::test {

// A zeroed planner state of the tests' own (never the process-wide one).
inline std::unique_ptr<PlannerState> freshState() { return std::make_unique<PlannerState>(); }

// A record ready for planning: the given state and limits, one curve point
// (the present state at time 0), inv = 1, everything else zero.
AxisPlan makeAxis(double pos, double vel, double acc, double tgtPos, double maxVel,
                  double maxAcc, double maxJerk);

// Captures standard output: text() stops and returns what was printed.
using StdoutCapture = Output;

// Tolerances of the physical check, relative to the size of the motion.
struct CurveTolerance {
    double rel = 1e-9;  // on velocity and position mismatches, relative to scale
    double limitRel = 1e-9;  // slack on |a| <= A, |v| <= V, |jerk| <= J
};

// Asserts that the curve is continuous (every section, integrated with its
// implied jerk, meets the next stored point), that its times do not go back,
// that every value is finite, and that |a| <= A, |jerk| <= J inside every
// section (and |v| <= V when checkVel). Returns the report for further checks.
CurveReport expectPhysicalCurve(const AxisPlan& rec, bool checkVel = true,
                                CurveTolerance tol = CurveTolerance{});

// The record with its limits widened to what a start at (v0, a0) forces on the
// way back inside them: |a0|, and the velocity reached while a0 is ramped out.
AxisPlan widened(AxisPlan rec, double v0, double a0);

// Asserts that the curve's last point is (time, tgt velocity, position) at rest.
void expectEndsAt(const AxisPlan& rec, double time, double pos, double vel, double tol = 1e-9);

// Duration of the time-optimal rest-to-rest move over `distance` (> 0) with
// limits V, A, J: the classic seven-section double-S, in closed form (cruise
// or not, acceleration limit reached or not).
double doubleSDuration(double distance, double V, double A, double J);

}  // namespace vekta::test

#endif
