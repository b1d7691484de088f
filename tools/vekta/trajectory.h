// Runs one motion through the library's exported functions as a controller
// would (one update, then one sample per axis and period until every axis has
// finished) and keeps every set-point, with the jerk implied between them.
#ifndef VEKTA_TOOLS_VEKTA_TRAJECTORY_H
#define VEKTA_TOOLS_VEKTA_TRAJECTORY_H

#include <cstdio>
#include <string>
#include <vector>

#include "motion.h"

namespace vekta::cli {

constexpr double kPeriod = 0.005;
constexpr int kMaxPeriods = 40000;  // 200 s: give up on a plan that does not end

// One row: the start state (t = 0) or the set-points of one period. The jerk is
// the change of acceleration since the previous row over one period (0 at t = 0).
struct Row {
    double t;
    double pos[kMaxAxes], vel[kMaxAxes], acc[kMaxAxes], jerk[kMaxAxes];
};

struct AxisSummary {
    double start, target, end;
    // Largest |v|, |a|, |j| over the sampled set-points; the |v| of axis 0 of a
    // conveyor catch-up is taken in the conveyor's frame, where its limit holds.
    double peakVel, peakAcc, peakJerk;
    int finishedPeriod;                 // the period whose sample reported the end, -1 if none
};

// The units of the numbers a motion is given in: positions in `pos`, and so on.
struct Units {
    const char *pos, *vel, *acc, *jerk;
};
// "m" or "rad"; throws std::runtime_error for another name.
Units unitsNamed(const std::string& name);

struct Trajectory {
    Motion motion;
    bool accepted = false;    // the update returned true
    bool finished = false;    // every axis reported its end within kMaxPeriods
    double plannedTime = 0.0;  // axis 0's planned duration, read right after the update
    std::string updateOutput;  // what the library printed during the update
    int checkCode = 0;         // vektaCheckPlan's verdict right after the update (0: passed)
    std::string checkMessage;  // and its message
    std::vector<Row> rows;
    AxisSummary axis[kMaxAxes] = {};
    double jerkLimit(int i) const { return motion.maxAcc[i] * motion.jerkRatio; }
};

// Plans and samples `m`. The library's standard output is sent to /dev/null
// unless `libraryOutput`; `trace` turns the library's trace prints on for this
// run (and implies `libraryOutput`). What the update prints is kept either way.
Trajectory runTrajectory(const Motion& m, bool libraryOutput, bool trace);

// Empty when the plan was made, passed the check and finished; otherwise why
// not, in one line: the library's own error lines and the plan check's verdict.
std::string refusal(const Trajectory& tr);

// The fastest stop (a velocity update) from the state `tr` has reached half-way.
Motion stopHalfWay(const Trajectory& tr);

// "t,pos0,vel0,acc0,jerk0,pos1,..." and one line per row.
void writeCsv(std::FILE* out, const Trajectory& tr);

// The per-axis table: start, target, end, duration, peaks against limits, period.
void printTable(std::FILE* out, const Trajectory& tr, const Units& units);

}  // namespace vekta::cli

#endif
