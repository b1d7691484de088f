// The planning pass.
//
// Phase 1 gives every axis its own minimum-time curve: the step-1 tree
// normalises the state (mirror to a non-negative acceleration, clip, recover
// from over-speed), takes a snapshot and classifies; the solver of that id
// appends the curve. The largest end time becomes the common end time.
// Phase 2 (more than one axis) restores every other axis to its snapshot and re-plans
// it with a step-2 profile that lasts exactly until the common end time.
// Phase 3 reports velocity-mode end times.
#include "planner/planning_pass.h"

#include <cmath>
#include <cstdio>

#include "engine/decision_tree.h"
#include "numeric/axis_curve.h"
#include "numeric/vel_shapes.h"
#include "output/text_output.h"
#include "step1/step1_solvers.h"
#include "step1/step1_tree.h"
#include "step2/step2_solvers.h"
#include "step2/step2_tree.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

constexpr int kStep2LastProfile = 27;
constexpr double kEndTimeReportTolerance = 0.002;
// Nodes the velocity-mode pass calls directly.
constexpr int kStep1SnapshotNode = 9;
constexpr int kStep1TrapezoidNode = 10;
constexpr int kStep2RisingNode = 9;
constexpr int kStep2HoldDownNode = 94;
constexpr int kNoVelProfile = 8;

// Index offset of the mirrored form: 0 in the working frame, 1 when mirrored
// (inv is 1 or -1).
int frameOffset(int inv) { return (1 - inv) / 2; }

// The profile found for a mirrored state is its partner for the real state
// (2 <-> 3, ..., 20 <-> 21); 0 and 1 have no partner and fail anyway.
int partnerProfile(int id) { return id >= 2 ? (id ^ 1) : id; }

double lastTime(const AxisPlan& r) { return r.secTime[r.pointCount - 1]; }

// The curve capacity guard: a curve that needed more points than its arrays
// hold (the point writers dropped the excess) fails the axis, and its count is
// brought back inside the arrays so that everything reading the curve later
// (sampler, getLeftMoveTime, the plan check) stays in bounds.
bool curveFits(AxisPlan& r, int axis) {
    if (r.pointCount <= kMaxPoints) return true;
    printTo(r.sink, "curve overflow:id %d points %d\n", axis, r.pointCount);
    r.pointCount = kMaxPoints;
    return false;
}

// The curve back to its start point (every curve starts at t = 0; the time
// is written all the same, so that the start point is whole here).
void resetCurve(AxisPlan& r) {
    r.secTime[0] = 0.0;
    r.secAcc[0] = r.curAcc;
    r.secVel[0] = r.curVel;
    r.secPos[0] = r.curPos;
    r.pointCount = 1;
    r.step1Ok = false;
    r.coefDirty = true;
}

bool retryStep1Position(PlannerState& st, AxisPlan& r, int axis,
                        double tgtPos);

// Phase 1 of a position-mode plan for one axis.
bool planStep1Position(PlannerState& st, AxisPlan& r, int axis) {
    r.step1Profile = 0;
    r.tgtVel = 0.0;
    resetCurve(r);
    walkStep1Position(st, Step1Tree, r);
    if (!curveFits(r, axis)) return false;

    // The state as the walk left it, and its frame.
    const double tgtPos = r.tgtPos, curPos = r.curPos, curVel = r.curVel;
    const double curAcc = r.curAcc, tgtVel = r.tgtVel;
    const int walkInv = r.inv;

    // Solve in the caller's frame: undo the walk's mirror and take the partner shape.
    if (r.inv == -1) {
        negateState(r);
        r.inv = 1;
        r.step1Profile = partnerProfile(r.step1Profile);
    }
    const bool ok = st.step1Retry ? runStep1RetrySolver(r) : runStep1Solver(r);
    if (ok) {
        const double s = static_cast<double>(walkInv);
        r.tgtPos = tgtPos * s;
        r.curPos = curPos * s;
        r.curVel = curVel * s;
        r.curAcc = curAcc * s;
        r.tgtVel = tgtVel * s;
    }
    r.pointCount += 1;  // the solver's last point
    r.step1Ok = ok;
    const bool fits = curveFits(r, axis);
    if (fits && !ok && st.recovery && !st.step1Retry) {
        return retryStep1Position(st, r, axis, tgtPos * walkInv);
    }
    return fits && ok;
}

// Recovery mode, when the step-1 solver failed: the axis goes back to the
// start state of the update (point 0 and the caller's target) and is walked
// and solved once more with step1Retry set, which lets the repairs of the
// tree and of the solvers act. Only failing axes get here, so every plan that
// succeeds at once stays exactly as it is. A traced plan says so first.
bool retryStep1Position(PlannerState& st, AxisPlan& r, int axis,
                        double tgtPos) {
    if (st.traceOn) printTo(&st.output, "step1 retry:%d\n", axis);
    r.curPos = r.secPos[0];
    r.curVel = r.secVel[0];
    r.curAcc = r.secAcc[0];
    r.tgtPos = tgtPos;
    r.inv = 1;
    r.planTime = 0.0;
    st.step1Retry = true;
    const bool ok = planStep1Position(st, r, axis);
    st.step1Retry = false;
    return ok;
}

// Phase 1 of a velocity-mode plan: the fastest change to tgtVel.
bool planStep1Velocity(PlannerState& st, AxisPlan& r, int axis) {
    r.velProfile = kNoVelProfile;
    resetCurve(r);
    walkStep1Velocity(st, Step1Tree, r);
    if (treeRow(Step1Tree, kStep1SnapshotNode).node(st, r)) {
        // Rising: a trapezoid when the change is large enough to reach the limit.
        const bool trapezoid = treeRow(Step1Tree, kStep1TrapezoidNode).node(st, r);
        r.velProfile = frameOffset(r.inv) + (trapezoid ? 0 : 2);
    } else {
        // Falling: bring the acceleration to zero, then mirror into a rise.
        appendAccToZero(r);
        const double threshold =
            r.curVel - (2.0 * r.maxAcc * r.maxAcc - r.curAcc * r.curAcc) * 0.5 / r.maxJerk;
        const bool trapezoid =
            r.tgtVel < threshold || std::isnan(r.tgtVel) || std::isnan(threshold);
        mirrorAxis(r);
        r.velProfile = frameOffset(r.inv) + (trapezoid ? 0 : 2);
    }
    if (!curveFits(r, axis)) return false;
    const bool ok = velModeSolvers[r.velProfile / 2](r);
    r.pointCount += 1;
    return curveFits(r, axis) && ok;
}

// Phase 2 of a position-mode plan for one axis: end exactly at maxT.
bool planStep2Position(PlannerState& st, AxisPlan& r, int axis,
                       double maxT) {
    r.inv = r.snapInv;
    r.planTime = r.snapPlanTime;
    r.remTime = maxT - lastTime(r);
    walkStep2(st, Step2Tree, r);
    if (!curveFits(r, axis)) {
        printTo(&st.output, "step2 error:ts %f idx %d\n", maxT, axis);
        return false;
    }

    const int id = r.step2Profile;
    if (id > kStep2LastProfile) {
        printTo(&st.output, "step2 error: mStep2 %d profile %d\n", 0, id);
        printTo(&st.output, "step2 error:ts %f idx %d\n", maxT, axis);
        return false;
    }
    // An odd id is the even shape solved on the mirrored state.
    if (id % 2 != 0) {
        r.step2Profile = id - 1;
        mirrorAxis(r);
    }
    const int nameIndex = frameOffset(r.inv) + r.step2Profile;
    countEvent(st.profileUseCount[nameIndex]);
    const bool ok = step2Solvers[r.step2Profile / 2](st, r);
    if (st.traceOn) printTo(&st.output, "%d %s\n", ok ? 1 : 0, step2ProfileNames[nameIndex]);
    if (r.inv == -1) mirrorAxis(r);
    const bool fits = curveFits(r, axis);
    // The root finder's tolerance leaves the shape's end up to 1e-5 from the
    // target; by default the last point is pinned exactly on it. Exact curves
    // refined their root until the end is the target to rounding, and keep
    // the integrated end, so that the last section meets its point.
    if (fits && !r.exact) r.secPos[r.pointCount - 1] = r.tgtPos;
    if (!ok || !fits) {
        printTo(&st.output, "step2 error:ts %f idx %d\n", maxT, axis);
        return false;
    }
    return true;
}

// Phase 2 of a velocity-mode plan for one axis: reach tgtVel exactly at maxT.
bool planStep2Velocity(PlannerState& st, AxisPlan& r, int axis,
                       double maxT) {
    r.planTime = r.snapPlanTime;
    r.inv = r.snapInv;
    r.remTime = maxT - r.snapPlanTime;
    if (treeRow(Step2Tree, kStep2RisingNode).node(st, r)) {
        const int holdDown = treeRow(Step2Tree, kStep2HoldDownNode).node(st, r) ? 6 : 4;
        r.velProfile = holdDown + frameOffset(r.snapInv);
    } else {
        appendAccToZero(r);
        mirrorAxis(r);
        r.velProfile = 4 + frameOffset(r.inv);
    }
    bool ok = curveFits(r, axis);
    if (ok) {
        ok = velModeSolvers[r.velProfile / 2](r);
        r.pointCount += 1;
        ok = curveFits(r, axis) && ok;
    }
    if (!ok) {
        printTo(&st.output, "step2 error:ts %f idx %d\n", maxT, axis);
        return false;
    }
    return true;
}

// Velocity mode: how far each axis's end time lies from axis 0's.
void reportVelocityEndTimes(const PlannerState& st, double maxT) {
    const double t0 = lastTime(st.records[0]);
    TextOutput out;
    beginText(out, &st.output);
    // "Vel Time: max %f %f\t", then "diffs %f\t" or "%f\t" per axis, "\n".
    appendLiteral(out, "Vel Time: max ");
    appendFixed(out, maxT);
    appendLiteral(out, " ");
    appendFixed(out, t0);
    appendLiteral(out, "\t");
    for (int i = 1; i < st.axisCount; ++i) {
        const double t = lastTime(st.records[i]);
        if (std::fabs(t0 - t) > kEndTimeReportTolerance) appendLiteral(out, "diffs ");
        appendFixed(out, t);
        appendLiteral(out, "\t");
    }
    appendLiteral(out, "\n");
    writeText(out);
}

// Note which axis and step found no profile, for the reason in words.
bool failAxis(PlannerState& st, int axis, int step) {
    st.failure = kFailedProfile;
    st.failedAxis = static_cast<std::int8_t>(axis);
    st.failedStep = static_cast<std::int8_t>(step);
    return false;
}

}  // namespace

bool planAxes(PlannerState& st, bool positionMode) {
    double maxT = -1.0;

    // Phase 1: every axis's minimum-time curve; the slowest sets the end time.
    for (int i = 0; i < st.axisCount; ++i) {
        AxisPlan& r = st.records[i];
        r.inv = 1;
        r.planTime = 0.0;
        const bool ok = positionMode ? planStep1Position(st, r, i) : planStep1Velocity(st, r, i);
        if (!ok) {
            printTo(&st.output, "step1 error:%d\n", i);
            return failAxis(st, i, 1);
        }
        const double t = lastTime(r);
        st.minimumTime[i] = t;
        if (t > maxT) {  // strictly: of equal times the lower axis wins
            maxT = t;
            st.slowestAxis = static_cast<std::int8_t>(i);
        }
    }

    // Phase 2: the other axes end together with the slowest.
    if (st.axisCount > 1) {
        if (st.traceOn) {
            printTo(&st.output, "step1:ts %f idx %d\n", maxT, st.slowestAxis);
            printTo(&st.output, "--------------------\n");
        }
        for (int i = 0; i < st.axisCount; ++i) {
            if (i == st.slowestAxis) continue;
            AxisPlan& r = st.records[i];
            restoreSnapshot(r);
            const bool ok = positionMode ? planStep2Position(st, r, i, maxT)
                                         : planStep2Velocity(st, r, i, maxT);
            if (!ok) return failAxis(st, i, 2);
        }
    }

    // Phase 3.
    if (!positionMode && outputOn(&st.output)) reportVelocityEndTimes(st, maxT);
    return true;
}

}  // namespace VEKTA_COPY
}  // namespace vekta
