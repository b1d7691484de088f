// The planner's records: one AxisPlan per axis and the PlannerState that owns
// six of them together with the flags, statistics and solver hints of a plan.
//
// Everything is plain data, zero at load: types and constants only, no code,
// so that both compilations of the planning core take the very same records.
// Internal functions take the record or the state they work on.
#ifndef VEKTA_RECORDS_PLANNER_STATE_H
#define VEKTA_RECORDS_PLANNER_STATE_H

#include <cstdint>

#include "records/output_sink.h"
#include "records/planning_copy.h"

namespace vekta {

// The control period of a planner that was not given one, in seconds: the
// period of every plan made through vekta.h.
constexpr double kCyclePeriod = 0.005;

// The periods a planner accepts (vektaPlannerSetPeriod), in seconds.
constexpr double kMinPeriod = 1e-4;
constexpr double kMaxPeriod = 1.0;

// Curve capacity: point 0 is the start state, so at most 12 sections.
constexpr int kMaxPoints = 13;
// Axes a planner holds; the updates of vekta.h and their handle forms plan
// one axis or kLegacyAxes.
constexpr int kMaxAxes = 16;
constexpr int kLegacyAxes = 6;
// Room for the reason of the last failed call, terminator included.
constexpr int kErrorCapacity = 320;
constexpr int kNodeVisitSlots = 104;
constexpr int kStep2ProfileCount = 28;

// One axis ("freedom"): its inputs, limits, the curve under construction
// (AccelCurve: secTime/secAcc/secVel/secPos), the frame sign, the profile ids,
// the step-1 snapshot and the sampling cursor. The field order is fixed.
struct AxisPlan {
    double curPos;   // working state while a curve is built (possibly mirrored)
    double tgtPos;
    double curVel;
    double tgtVel;
    double curAcc;
    double maxVel;
    double maxAcc;
    double maxJerk;  // maxAcc times the update's jerk ratio
    double planTime;  // time at the end of the curve built so far
    int pointCount;   // valid curve points; point 0 is the start state at t = 0
    double secTime[kMaxPoints];
    double secAcc[kMaxPoints];  // stored in the caller's frame (times inv)
    double secVel[kMaxPoints];
    double secPos[kMaxPoints];
    double coefCache[kMaxPoints];  // residual coefficients of step-1 root solvers
    int inv;                       // +1, or -1 while the working state is mirrored
    double remTime;                // time left to the common end time
    int step1Profile;
    int step2Profile;
    int velProfile;
    int snapPointCount;  // snapshot taken by step-1 node 9
    int snapInv;
    double snapPos;
    double snapVel;
    double snapAcc;
    double snapTgtPos;
    double snapTgtVel;
    double snapPlanTime;
    int writeSections;  // 1: the next residual evaluation writes its sections
    bool step1Ok;
    bool coefDirty;   // coefCache must be recomputed
    int sampleCount;  // control periods sampled since the last update
    int secCursor;    // index of the point that ends the section being sampled
    // The sampler's copy of section secCursor: its start state and time, its
    // jerk and its end time. Stale (a NaN end) after an update and whenever
    // the general sampling path has moved on.
    double sampleT0, sampleA0, sampleV0, sampleP0, sampleJerk, sampleSectionEnd;
    const OutputSink* sink;  // the planner's output, for print sites that see only the record
    // Exact curves (recovery mode and the library's own calls): roots refined
    // to the last bits, the last point the integrated one, the plan check's
    // tolerances relative to the motion. Set by every update.
    bool exact;
};

// What the last accepted update planned, so that a plan can be checked
// against its own end condition; none before the first update.
enum PlanMode : std::int8_t {
    kNoPlanMode = 0,
    kPositionPlan,         // every axis to rest on its target
    kVelocityPlan,         // every axis to rest, no position condition
    kConveyorPlan,         // axis 0 ends moving with the conveyor (tgtVel)
    kConveyorRefusedPlan,  // a catch-up that ends beyond the conveyor limit
};

// What the step-2 tree's nodes leave for the step-2 solvers: bounds and seeds
// of their root searches (and one value for a later node of the same walk).
// Planner-wide, not per axis: zero when the planner is made and never reset
// as a whole, so a solver reads what the last walk that wrote the field left,
// for this axis or another, in this plan or an earlier one; only the three
// flags are cleared, by the solver that reads them.
// Each field's line: the nodes that write it -> what reads it; its reset.
// "42/96": node 96 repeats node 42's test. A solver is named by its profile
// (an odd profile is its even partner's solver on the mirrored state).
struct Step2Hints {
    // Tri peak: nodes 19, 88 -> nodes 24, 91 (no solver); never reset.
    double triPeakAcc;
    // Nodes 42/96, 43, 95, 64/72 -> low bound of the PosTriHldNegLin solver; never reset.
    double hldLinLo;
    // Nodes 12, 44, 57, 73 -> high bound of the PosTrapHldNegLin and PosTriHldNegLin solvers; never reset.
    double hldLinHi;
    // Nodes 48, 50, 64/72, 74, 97 -> low bound of the PosLinHldPosTri and PosLinHldPosTrap solvers; never reset.
    double linHldLo;
    // Nodes 43, 50, 64/72, 74, 95 -> high bound of the PosLinHldPosTri and PosLinHldPosTrap solvers; never reset.
    double linHldHi;
    // Nodes 42/96, 46, 49, 97 -> high bound of the NegLinHldPosTrap and NegLinHldPosTri solvers; never reset.
    double negLinAcc;
    // Node 46 on its id-22 branches (negLinAcc keeps what it held) -> read by nothing; never reset.
    double negLinAccSpare;
    // Nodes 30/40, 56 -> the PosTrapZeroPosTri solver uses trapTriSeed while set; that solver clears it.
    std::uint8_t trapTriSeedSet;
    // Nodes 30/40, 56 -> low bound of the PosTrapZeroPosTri solver while trapTriSeedSet; never reset.
    double trapTriSeed;
    // Nodes 31, 59 -> the PosTriZeroPosTrap solver uses triTrapSeed while set; that solver clears it.
    std::uint8_t triTrapSeedSet;
    // Nodes 31, 59 -> high bound of the PosTriZeroPosTrap solver while triTrapSeedSet; never reset.
    double triTrapSeed;
    // Nodes 38/93, 63/71, 89 (also through 26) -> PosTriZeroPosTri solver, which clears it (see triTriSeed).
    std::uint8_t triTriSeedMode;
    // Same nodes -> PosTriZeroPosTri solver: mode 1 its low bound, other non-zero modes its high; never reset.
    double triTriSeed;
};

// Why the last update failed, for the reason in words.
enum UpdateFailure : std::int8_t {
    kNoFailure = 0,
    kFailedAxisCount,  // an axis count the update does not take
    kFailedProfile,    // an axis got no profile (failedAxis, failedStep)
    kFailedCheck,      // recovery mode: the plan check refused the plan (error holds its message)
    kFailedConveyor,   // the catch-up ends beyond the conveyor limit
    kFailedSpare,      // the conveyor update's spare time is below its minimum
};

// The whole planner: up to kMaxAxes axes, plan flags, statistics, the bracket hints that
// step-2 tree nodes leave for the step-2 solvers, and the sampler's memory.
struct PlannerState {
    AxisPlan records[kMaxAxes];
    std::int8_t slowestAxis;
    bool newPlan;
    std::int8_t axisCount;
    bool planFailed;
    int nodeVisitCount[kNodeVisitSlots];     // step-2 node n counts at n - 1
    int profileUseCount[kStep2ProfileCount];  // per step-2 profile name

    Step2Hints hints;  // left by step-2 nodes for the step-2 solvers, planner-wide

    bool traceOn;
    bool noStopPending;   // sampler memory for the "no-stop" warning
    double lastFirstPos;  // first position of the previous single-axis sample call

    std::int8_t planMode;  // PlanMode of the last update that planned

    // Recovery mode (vektaSetRecovery), off at load. While it is on, a failed
    // step-1 solve is tried once more with the repairs, and an update whose
    // plan the plan check rejects is refused.
    bool recovery;
    bool step1Retry;  // set while that second attempt walks and solves

    OutputSink output;  // where this planner's lines go; zero is standard output

    // The control period: `period` is the planner's setting (0: kCyclePeriod),
    // `planPeriod` the one the current plan is sampled at (set by every update).
    double period;
    double planPeriod;
    // Each axis's end time after step 1: the axis alone, as fast as it can.
    double minimumTime[kMaxAxes];
    // The last update's failure (UpdateFailure) and, for kFailedProfile, the
    // axis and the step (1 or 2) that found no profile.
    std::int8_t failure;
    std::int8_t failedAxis;
    std::int8_t failedStep;
    // The reason of the last failed call, terminated; empty after a success.
    char error[kErrorCapacity];
};

}  // namespace vekta

#endif
