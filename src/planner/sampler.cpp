// The sampler: integrates one axis's curve (constant jerk per section) at
// multiples of the control period since the last update.
//
// The period time is always formed from the integer counter, never
// accumulated, so a long motion does not drift. The cursor only moves forward:
// each call resumes at the section where the previous call stopped.
#include "planner/sampler.h"

#include <climits>
#include <cmath>
#include <cstdio>

#include "numeric/numerics.h"
#include "output/text_output.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// Index of the last curve point, kept inside the arrays even for a record that
// was never planned (pointCount 0).
int lastIndex(const AxisPlan& rec) { return rec.pointCount > 0 ? rec.pointCount - 1 : 0; }

void countPeriod(AxisPlan& r) { nextPeriod(r.sampleCount); }

// Report every section of every planned axis whose end time lies more than the
// tolerance before its start time. Only a report: sampling goes on.
void validateSectionTimes(const PlannerState& st) {
    for (int b = 0; b < st.axisCount; ++b) {
        const AxisPlan& r = st.records[b];
        for (int i = 1; i < r.pointCount && i < kMaxPoints; ++i) {
            if (r.secTime[i - 1] - kTimeBackTolerance > r.secTime[i]) {
                printTo(&st.output, "wrong secTime:id %d i %d Ti-1 %f Ti %f\n", b, i, r.secTime[i - 1],
                          r.secTime[i]);
            }
        }
    }
}

// Single-axis plans are expected to move away from zero in the positive
// direction; a first sample that falls back or goes negative is reported with
// the whole acceleration curve.
void reportOvershoot(PlannerState& st, const AxisPlan& r, int axis, int finished,
                     const double* pos, const double* vel, const double* acc) {
    if (std::fabs(st.lastFirstPos) > std::fabs(pos[0]) || pos[0] < 0.0) {
        TextOutput out;
        beginText(out, &st.output);
        appendText(out, "s1 overshoot:p %f > %f pt %f v %f a %f ret %d inv %d armIdx %d\n",
                   st.lastFirstPos, pos[0], r.tgtPos, vel[0], acc[0], finished, r.inv, axis);
        appendText(out, "acc curve:(a, t)=");
        for (int i = 0; i < r.pointCount && i < kMaxPoints; ++i) {
            appendText(out, "(%f,%f)", r.secAcc[i], r.secTime[i]);
        }
        appendText(out, "\n");
        writeText(out);
    }
    st.lastFirstPos = pos[0];
}

// Axis 0 with less than one period left after one call must be finished after
// the next; otherwise the motion did not stop where the plan said.
void trackNoStop(PlannerState& st, int finished) {
    const bool lastPeriod = leftMoveTime(st) < samplingPeriod(st);
    if (st.noStopPending) {
        if (finished) {
            // (A finished axis stays finished, and the next plan starts
            // afresh: nothing reads this until then.)
            st.noStopPending = false;
        } else {
            if (lastPeriod) printTo(&st.output, "no-stop\n");
            st.noStopPending = lastPeriod;
        }
    } else if (!finished) {
        st.noStopPending = lastPeriod;
    }
}

// The first sampling call after an update forgets the last plan's sampling
// memory and reports sections whose time goes back.
[[gnu::noinline]] void startSampling(PlannerState& st) {
    st.newPlan = false;
    st.lastFirstPos = 0.0;
    st.noStopPending = false;
    for (AxisPlan& r : st.records) r.sampleSectionEnd = NAN;
    validateSectionTimes(st);
}

// Past the curve's last point: the end state, once per call, after the k
// samples already written (the period counter keeps running). Returns the
// count of the call.
[[gnu::noinline]] int sampleEndState(AxisPlan& r, double step, int k, int c, double t, double* pos,
                                     double* vel, double* acc) {
    const int last = lastIndex(r);
    acc[k] = 0.0;
    vel[k] = r.tgtVel;
    pos[k] = r.secPos[last];
    countPeriod(r);
    // The cursor on the end only spares a later call the scan there: a sample
    // exactly one period past the last point may leave it or move it alike.
    if (c == r.pointCount && r.secTime[last] + step >= t) r.secCursor = r.pointCount;
    return k + 1;
}

// What a sampling call reports and tracks besides its samples: the end of an
// axis's curve, a single-axis plan falling back, axis 0 not stopping.
[[gnu::noinline]] void afterSampling(PlannerState& st, const AxisPlan& r, int axis, int finished,
                                     int count, const double* pos, const double* vel,
                                     const double* acc) {
    if (count > 0 && finished) {
        printTo(&st.output, "ldata:%f %f time %f %f \n", r.tgtPos, pos[0], periodTime(samplingPeriod(st), r.sampleCount + 1),
                  r.secTime[lastIndex(r)]);
    }
    if (st.axisCount == 1 && pos != nullptr && vel != nullptr && acc != nullptr) {
        reportOvershoot(st, r, axis, finished, pos, vel, acc);
    }
    if (axis == 0) trackNoStop(st, finished);
}

}  // namespace

double leftMoveTime(const PlannerState& st) {
    const AxisPlan& r = st.records[0];
    const double left = r.secTime[lastIndex(r)] - periodTime(samplingPeriod(st), r.sampleCount);
    return left > 0.0 ? left : 0.0;
}

// The jerk of the section that ends at point c. A change of acceleration
// below kFlatAccTolerance is taken as none. An exact curve (recovery mode,
// the library's own calls) keeps every change, however small: its limits may
// be as small as that tolerance (1e-9 m/s), and a section taken as flat would
// leave them; only a section of no length (or one whose jerk overflows) is.
static double sectionJerk(const AxisPlan& r, int c) {
    const double dA = r.secAcc[c] - r.secAcc[c - 1], dt = r.secTime[c] - r.secTime[c - 1];
    if (!r.exact) return std::fabs(dA) < kFlatAccTolerance ? 0.0 : dA / dt;
    // (A section of no length is stepped over, or read at its start: its jerk
    // changes no sample.)
    const double jerk = dt > 0.0 ? dA / dt : 0.0;
    return std::isfinite(jerk) ? jerk : 0.0;
}

void evaluateAxis(const AxisPlan& r, double t, double& pos, double& vel, double& acc) {
    const int points = r.pointCount;
    int c = 1;
    while (c < points && t > r.secTime[c]) ++c;
    if (c >= points) {  // past the last point: the end state (as sampleEndState)
        acc = 0.0;
        vel = r.tgtVel;
        pos = r.secPos[lastIndex(r)];
        return;
    }
    const double t0 = r.secTime[c - 1], a0 = r.secAcc[c - 1];
    const double v0 = r.secVel[c - 1], p0 = r.secPos[c - 1];
    const double jerk = sectionJerk(r, c);
    const double tau = t - t0;
    const double halfTau2 = tau * tau / 2.0;
    acc = a0 + jerk * tau;
    vel = v0 + a0 * tau + jerk * halfTau2;
    pos = p0 + v0 * tau + a0 * halfTau2 + jerk * (halfTau2 * tau / 3.0);
}

// samplePlan, every case.
[[gnu::noinline]] int sampleAnyCall(PlannerState& st, int axis, int nSamples, double* pos,
                                    double* vel, double* acc, int& count) {
    count = 0;
    if (st.newPlan) startSampling(st);
    if (st.planFailed) return 0;
    if (axis >= st.axisCount || axis < 0) return 0;

    AxisPlan& r = st.records[axis];
    const double step = samplingPeriod(st);
    const int points = r.pointCount;
    int period = r.sampleCount;
    int cursor = r.secCursor;
    int c = cursor;
    int k = 0;
    bool curveEnded = false;
    double t = 0.0;
    while (k < nSamples) {
        t = periodTime(step, period + 1);
        // Strictly greater: a time exactly on a point is sampled in the
        // section that ends there, and zero-length sections are skipped.
        while (c < points && t > r.secTime[c]) ++c;
        if (c >= points) {
            curveEnded = true;
            break;
        }
        // The section from point c - 1 to point c.
        const double t0 = r.secTime[c - 1], a0 = r.secAcc[c - 1];
        const double v0 = r.secVel[c - 1], p0 = r.secPos[c - 1];
        const double jerk = sectionJerk(r, c);
        const double tau = t - t0;
        const double halfTau2 = tau * tau / 2.0;
        acc[k] = a0 + jerk * tau;
        vel[k] = v0 + a0 * tau + jerk * halfTau2;
        pos[k] = p0 + v0 * tau + a0 * halfTau2 + jerk * (halfTau2 * tau / 3.0);
        nextPeriod(period);
        cursor = c;
        k += 1;
    }
    r.sampleCount = period;
    r.secCursor = cursor;
    r.sampleSectionEnd = NAN;  // its cursor may have passed sections whose times go back
    count = curveEnded ? sampleEndState(r, step, k, c, t, pos, vel, acc) : k;

    const int finished = periodTime(step, r.sampleCount) >= r.secTime[points > 0 ? points - 1 : 0] ? 1 : 0;
    if ((count > 0 && finished) || st.axisCount == 1 || axis == 0) {
        afterSampling(st, r, axis, finished, count, pos, vel, acc);
    }
    return finished;
}

// The end of a call that took one sample in the middle of a six-axis curve:
// the reports such a call can make, in their order, and its result.
[[gnu::noinline]] int finishOneSample(PlannerState& st, const AxisPlan& r, int axis, int finished,
                                      const double* pos) {
    if (finished) {
        printTo(&st.output, "ldata:%f %f time %f %f \n", r.tgtPos, pos[0], periodTime(samplingPeriod(st), r.sampleCount + 1),
                  r.secTime[lastIndex(r)]);
    }
    if (axis == 0) trackNoStop(st, finished);
    return finished;
}

// Move the cursor to the section that time t falls in, as sampleAnyCall
// does, and copy that section's start state, jerk and end time into the
// record. False, with the cursor untouched, when t lies past the curve.
[[gnu::noinline]] bool enterSection(AxisPlan& r, double t) {
    const double* times = r.secTime;
    int c = r.secCursor;
    while (c < r.pointCount && t > times[c]) ++c;
    if (c >= r.pointCount) return false;
    const double t0 = times[c - 1], a0 = r.secAcc[c - 1];
    r.secCursor = c;
    r.sampleT0 = t0;
    r.sampleA0 = a0;
    r.sampleV0 = r.secVel[c - 1];
    r.sampleP0 = r.secPos[c - 1];
    r.sampleJerk = sectionJerk(r, c);
    r.sampleSectionEnd = times[c];
    return true;  // false would send the caller the long way to the same sample
}

int samplePlan(PlannerState& st, int axis, int nSamples, double* pos, double* vel, double* acc,
               int& count) {
    return sampleAxis(st, axis, nSamples, pos, vel, acc, count,
                      [&] { return sampleAnyCall(st, axis, nSamples, pos, vel, acc, count); });
}

}  // namespace VEKTA_COPY
}  // namespace vekta
