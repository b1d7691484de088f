// Parameter updates: the only way a plan starts.
//
// Every update marks the plan as new before anything else, so that even a
// rejected update makes the next sampling call re-validate; it then copies
// the inputs, resets each axis's sampling cursor, plans, and records the
// outcome, which sampling honours until the next successful update.
#include "planner/updates.h"

#include <cstdio>
#include <cstring>

#include "check/plan_check.h"
#include "numeric/axis_curve.h"
#include "planner/sampler.h"
#include "planner/planning_copy.h"
#include "output/text_output.h"
#include "vekta/vekta.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// Below this the conveyor update is refused without a word.
constexpr double kMinConveyorSpare = 0.002;

// Room for the plan check's message (its longest lines take about 110 characters).
constexpr int kRefusalMessageSize = 256;
static_assert(kRefusalMessageSize <= kErrorCapacity, "the check's message is kept as the reason");

bool acceptAxisCount(PlannerState& st, AxisCounts counts, int n) {
    attachOutput(st);
    st.newPlan = true;
    st.failure = kNoFailure;
    st.error[0] = '\0';
    st.planPeriod = updatePeriod(st);
    const bool taken = counts == kAnyCount ? (n >= 1 && n <= kMaxAxes) : (n == kLegacyAxes || n == 1);
    if (!taken) {
        printTo(&st.output, "vekta: incorrect freedom number-%d!\n", n);
        st.planFailed = true;
        st.failure = kFailedAxisCount;
        return false;
    }
    st.axisCount = static_cast<std::int8_t>(n);
    return true;
}

double jerkOf(JerkLimits jerk, const double* maxAcc, int i) {
    return jerk.maxJerk != nullptr ? jerk.maxJerk[i] : maxAcc[i] * jerk.ratio;
}

void copyAxis(AxisPlan& r, int i, const double* maxVel, const double* maxAcc, JerkLimits jerk,
              const double* curPos, const double* curVel, const double* curAcc, bool exact) {
    r.tgtVel = 0.0;
    r.maxVel = maxVel[i];
    r.maxAcc = maxAcc[i];
    r.maxJerk = jerkOf(jerk, maxAcc, i);
    r.curPos = curPos[i];
    r.curVel = curVel[i];
    r.curAcc = curAcc[i];
    r.sampleCount = 0;
    r.exact = exact;
    r.secCursor = 1;
}

// "%f p %f v %f a %f inv %d" of an axis's target, state and mirror sign: the
// part the posUpd and velUpd lines share.
[[gnu::always_inline]] inline void appendAxisState(TextOutput& out, const AxisPlan& r) {
    appendFixed(out, r.tgtPos);
    appendLiteral(out, " p ");
    appendFixed(out, r.curPos);
    appendLiteral(out, " v ");
    appendFixed(out, r.curVel);
    appendLiteral(out, " a ");
    appendFixed(out, r.curAcc);
    appendLiteral(out, " inv ");
    appendInt(out, r.inv);
}

// The points of a curve that lie inside its arrays (at exactly kMaxPoints
// both branches give the same count).
int printablePoints(const AxisPlan& r) { return r.pointCount < kMaxPoints ? r.pointCount : kMaxPoints; }

// Recovery mode: an update whose plan the plan check rejects fails like one
// that found no plan, so that the controller holds its position rather than
// follow a curve that breaks a limit or misses its end; the check's message
// says why. Without recovery, and for a plan that failed anyway, the result
// stays as it is.
bool refuseUnchecked(PlannerState& st, bool ok) {
    if (!ok || !st.recovery) return ok;
    char why[kRefusalMessageSize];
    if (checkPlan(st, why, kRefusalMessageSize) == VEKTA_CHECK_OK) return true;
    printTo(&st.output, "vekta: plan refused: %s\n", why);
    st.planFailed = true;
    st.failure = kFailedCheck;
    std::memcpy(st.error, why, sizeof why);  // the check's message, for the reason in words
    return false;
}

}  // namespace

bool positionUpdate(PlannerState& st, AxisCounts counts, int n, const double* tgtPos,
                    const double* maxVel, const double* maxAcc, JerkLimits jerk,
                    const double* curPos, const double* curVel, const double* curAcc) {
    if (!acceptAxisCount(st, counts, n)) return false;
    for (int i = 0; i < n; ++i) {
        AxisPlan& r = st.records[i];
        copyAxis(r, i, maxVel, maxAcc, jerk, curPos, curVel, curAcc, st.recovery);
        r.tgtPos = tgtPos[i];
    }
    const bool ok = planUpdate(st, true);
    st.planMode = kPositionPlan;

    const AxisPlan& r0 = st.records[0];
    if (outputOn(&st.output)) {  // off: not even the loop over the points
        TextOutput out;
        beginText(out, &st.output);
        // "posUpd: 1st pt %f p %f v %f a %f inv %d peroid %f\n", then "(%f %f)"
        // per point and "\n", piece by piece.
        appendLiteral(out, "posUpd: 1st pt ");
        appendAxisState(out, r0);
        appendLiteral(out, " peroid ");
        appendFixed(out, st.planPeriod);
        appendLiteral(out, "\n");
        for (int i = 0; i < printablePoints(r0); ++i) {
            appendLiteral(out, "(");
            appendFixed(out, r0.secAcc[i]);
            appendLiteral(out, " ");
            appendFixed(out, r0.secTime[i]);
            appendLiteral(out, ")");
        }
        appendLiteral(out, "\n");
        writeText(out);
    }

    st.planFailed = !ok;
    return refuseUnchecked(st, ok);
}

bool velocityUpdate(PlannerState& st, AxisCounts counts, int n, const double* maxVel,
                    const double* maxAcc, JerkLimits jerk, const double* curPos,
                    const double* curVel, const double* curAcc) {
    if (!acceptAxisCount(st, counts, n)) return false;
    for (int i = 0; i < n; ++i) {
        copyAxis(st.records[i], i, maxVel, maxAcc, jerk, curPos, curVel, curAcc, st.recovery);
    }
    const bool ok = planUpdate(st, false);
    st.planMode = kVelocityPlan;

    const AxisPlan& r0 = st.records[0];
    if (outputOn(&st.output)) {  // "velUpd: pt %f p %f v %f a %f inv %d \n"
        TextOutput out;
        beginText(out, &st.output);
        appendLiteral(out, "velUpd: pt ");
        appendAxisState(out, r0);
        appendLiteral(out, " \n");
        writeText(out);
    }

    st.planFailed = !ok;
    return refuseUnchecked(st, ok);
}

bool conveyorUpdate(PlannerState& st, AxisCounts counts, int n, double conveyorVel,
                    double conveyorLimit, const double* tgtPos, const double* maxVel,
                    const double* maxAcc, JerkLimits jerk, double spare) {
    if (spare < kMinConveyorSpare) {
        st.failure = kFailedSpare;
        return false;
    }

    // In the conveyor's frame the robot starts at rest at 0 on every axis but
    // axis 0, which moves backwards at the conveyor's speed. In recovery mode
    // the position update checks the plan there, before it is shifted.
    const double zeros[kMaxAxes] = {};
    double velocities[kMaxAxes] = {};
    velocities[0] = -conveyorVel;
    if (!positionUpdate(st, counts, n, tgtPos, maxVel, maxAcc, jerk, zeros, velocities, zeros)) {
        return false;
    }

    // The catch-up must end before the conveyor target reaches the limit.
    const double travel = leftMoveTime(st) * conveyorVel;
    if (tgtPos[0] + travel >= conveyorLimit) {
        st.planMode = kConveyorRefusedPlan;
        st.failure = kFailedConveyor;
        printTo(&st.output, "vekta: failed to catch up with conveyor-%f+%f>%f\n", tgtPos[0], travel,
                  conveyorLimit);
        return false;
    }

    // Back to the fixed frame: axis 0 moves with the conveyor on top of its plan.
    // (A point past the curve is read by nothing; only the curve's own move.)
    AxisPlan& r0 = st.records[0];
    for (int i = 0; i < printablePoints(r0); ++i) {
        r0.secPos[i] += r0.secTime[i] * conveyorVel;
        r0.secVel[i] += conveyorVel;
    }
    r0.tgtVel = conveyorVel;
    st.planMode = kConveyorPlan;
    return true;
}

}  // namespace VEKTA_COPY
}  // namespace vekta
