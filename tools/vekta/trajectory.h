// Runs one motion through the library's exported functions as a controller
// would and keeps every set-point, with the jerk implied between them: through
// the vekta.h functions one update, then one sample per axis and period until
// every axis has finished; through the library's own calls one Move, Stop or
// CatchUp on a planner of its own, then vektaPlannerNext once a period until
// the plan ends.
#ifndef VEKTA_TOOLS_VEKTA_TRAJECTORY_H
#define VEKTA_TOOLS_VEKTA_TRAJECTORY_H

#include <cstdio>
#include <string>
#include <vector>

#include "motion.h"

namespace vekta::cli {

// How many periods are sampled before giving up on a plan that does not end:
// 200 s of motion, and never more than 200,000 samples.
int periodBudget(double period);

// One row: the start state (t = 0) or the set-points of one period. The jerk is
// the change of acceleration since the previous row over one period (0 at t = 0).
struct Row {
    double t;
    double pos[VEKTA_MAX_AXES], vel[VEKTA_MAX_AXES], acc[VEKTA_MAX_AXES], jerk[VEKTA_MAX_AXES];
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
    bool accepted = false;    // the update returned true (the own call VEKTA_OK)
    bool finished = false;    // every axis reported its end within the period budget
    double plannedTime = 0.0;  // axis 0's planned duration, read right after the update
    std::string updateOutput;  // what the vekta.h update printed
    int status = 0;            // what the own call returned (a VektaStatus)
    std::string reason;        // and vektaPlannerError's words for a refusal
    int checkCode = 0;         // the plan check's verdict right after the update (0: passed)
    std::string checkMessage;  // and its message
    std::vector<Row> rows;
    AxisSummary axis[VEKTA_MAX_AXES] = {};
    double jerkLimit(int i) const { return motion.jerkLimit(i); }
    double period() const { return motion.period; }
};

// "position update, 6 axes, jerk ratio 10" (the vekta.h functions) or
// "position move (vektaPlannerMove), 7 axes, jerk limit per axis, period 0.001 s".
std::string describe(const Motion& m);

// The decimals that write every multiple of the period exactly (3 for 5 ms).
int timeDecimals(double period);

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

// The per-axis table: start, target, end, duration, peaks against limits, period
// (the same for every axis of the library's own calls, which all end together).
void printTable(std::FILE* out, const Trajectory& tr, const Units& units);

}  // namespace vekta::cli

#endif
