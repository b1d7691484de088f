// The library's own calls: checked arguments, statuses, reasons in words.
//
// A request is checked whole before anything is planned, so a refused
// request plans nothing; then it runs the same update as the handle forms
// (one jerk limit per axis instead of a ratio), with recovery mode on for the
// call, and turns the update's failure into a status and a sentence that
// names the axis and its values. Whatever fails, the planner is left without
// a plan: a controller never samples a previous plan by mistake.
#include "planner/requests.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "planner/sampler.h"
#include "planner/updates.h"
#include "vekta/vekta_c.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

const double kZeros[kMaxAxes] = {};

// Write the reason, printf style, always terminated.
void setError(PlannerState& st, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
void setError(PlannerState& st, const char* fmt, ...) {
    std::va_list ap;
    va_start(ap, fmt);
    std::vsnprintf(st.error, sizeof st.error, fmt, ap);
    va_end(ap);
}

// A failed call: no plan, and the status.
int fail(PlannerState& st, int status) {
    st.planFailed = true;
    st.newPlan = true;
    return status;
}

// The argument checks of one request, first failure wins.
class Arguments {
public:
    explicit Arguments(PlannerState& st) : st_(st) {}

    bool axes(int n) {
        if (n >= 1 && n <= kMaxAxes) return true;
        setError(st_, "axes is %d, it must be from 1 to %d", n, kMaxAxes);
        return false;
    }
    bool given(const char* name, const double* values) {
        if (values != nullptr) return true;
        setError(st_, "%s is NULL, it must point to one value per axis", name);
        return false;
    }
    bool finite(int axis, const char* name, double x) {
        if (std::isfinite(x)) return true;
        setError(st_, "axis %d: %s is %g, it must be a finite number", axis, name, x);
        return false;
    }
    bool limit(int axis, const char* name, double x) {
        if (std::isfinite(x) && x > 0.0) return true;
        setError(st_, "axis %d: %s is %g, it must be a positive finite number", axis, name, x);
        return false;
    }
    bool scalar(const char* name, double x) {
        if (std::isfinite(x)) return true;
        setError(st_, "%s is %g, it must be a finite number", name, x);
        return false;
    }

    // Everything a request of this kind reads.
    bool motion(const MotionRequest& m, bool target, bool state) {
        if (!axes(m.axes)) return false;
        if (target && !given("target", m.target)) return false;
        if (!given("maxVel", m.maxVel) || !given("maxAcc", m.maxAcc) || !given("maxJerk", m.maxJerk)) return false;
        if (state && !given("pos", m.pos)) return false;
        for (int i = 0; i < m.axes; ++i) {
            if (target && !finite(i, "target", m.target[i])) return false;
            if (!limit(i, "maxVel", m.maxVel[i]) || !limit(i, "maxAcc", m.maxAcc[i]) ||
                !limit(i, "maxJerk", m.maxJerk[i])) {
                return false;
            }
            if (!state) continue;
            if (!finite(i, "pos", m.pos[i])) return false;
            if (m.vel != nullptr && !finite(i, "vel", m.vel[i])) return false;
            if (m.acc != nullptr && !finite(i, "acc", m.acc[i])) return false;
        }
        return true;
    }

private:
    PlannerState& st_;
};

// Recovery mode for the length of one call, the planner's switch restored after.
class RecoveryOn {
public:
    explicit RecoveryOn(PlannerState& st) : st_(st), was_(st.recovery) { st.recovery = true; }
    ~RecoveryOn() { st_.recovery = was_; }
    RecoveryOn(const RecoveryOn&) = delete;
    RecoveryOn& operator=(const RecoveryOn&) = delete;

private:
    PlannerState& st_;
    bool was_;
};

double valueOr0(const double* values, int i) { return values != nullptr ? values[i] : 0.0; }

// How far beyond what a motion can reach a velocity or acceleration limit may
// lie before it is brought down. The margin is wide on purpose: a term of the
// bound a little off changes only a limit the motion never comes near.
constexpr double kUnreachable = 100.0;

// A velocity and an acceleration that one axis's fastest motion from (v, a)
// to rest, dist away (0 for a stop), cannot exceed. Any motion the limits
// allow bounds the fastest one's time T: release the acceleration, brake to
// rest, then move rest to rest, with an acceleration Ar <= A of the size the
// distance and the speed call for. After the release the acceleration is at
// most A, and at most |a| + J t, so the speed stays within s0 + A T; and an
// acceleration pulse up to alpha and back changes the velocity by
// (alpha - |a|)^2 / J, which the speed range 2 s bounds. {inf, inf} at rest
// on the target: nothing moves, nothing to bound.
struct Reach {
    double vel, acc;
};

Reach reachBound(double dist, double v, double a, double A, double J) {
    const double aAbs = std::fabs(a);
    const double s0 = std::fabs(v) + a * a / (2.0 * J);  // the speed once the acceleration is released
    const double Ar = std::fmin(A, aAbs + std::sqrt(J * s0) + std::cbrt(J * J * dist));
    // (>= would give the same: at Ar = 0 the bound below is 0/0, which
    // fmin passes over in favour of the caller's limit.)
    if (!(Ar > 0.0)) return {HUGE_VAL, HUGE_VAL};
    const double brake = s0 / Ar + Ar / J;
    const double far = dist + s0 * (aAbs / J + brake);
    const double T = aAbs / J + brake + 4.0 * Ar / J + 2.0 * std::sqrt(far / Ar);
    const double vel = s0 + std::fmin(A, aAbs + J * T) * T;
    return {vel, aAbs + std::sqrt(2.0 * J * vel)};
}

// The limits an update plans with: the caller's, but a velocity or an
// acceleration limit far beyond what the axis can reach in this motion (1e20,
// or DBL_MAX for "no limit") is brought down to kUnreachable times the bound.
// The curve is the same, for it never comes near either; but the tree's tests
// and the plan check's tolerances measure distances like V^2 / A, and at 1e40
// the motion's own few metres are lost in their rounding: the tree takes a
// wrong branch, the curve misses its target or its times go back.
struct ReachableLimits {
    double vel[kMaxAxes], acc[kMaxAxes];
    ReachableLimits(const MotionRequest& m, const double* target, const double* pos, const double* vel,
                    const double* acc) {
        for (int i = 0; i < m.axes; ++i) {
            const double dist = target != nullptr ? std::fabs(target[i] - pos[i]) : 0.0;
            const Reach r = reachBound(dist, vel[i], acc[i], m.maxAcc[i], m.maxJerk[i]);
            this->vel[i] = std::fmin(m.maxVel[i], kUnreachable * r.vel);
            this->acc[i] = std::fmin(m.maxAcc[i], kUnreachable * r.acc);
        }
    }
};

// The latest end of the axes' curves, plan or not (t >= end would pick the
// same value: the comparison only keeps the larger of two equal ends).
double latestEnd(const PlannerState& st) {
    double end = 0.0;
    for (int i = 0; i < st.axisCount; ++i) {
        const AxisPlan& r = st.records[i];
        const double t = r.secTime[r.pointCount > 0 ? r.pointCount - 1 : 0];
        if (t > end) end = t;
    }
    return end;
}

// The status and reason of an update that returned false.
int explainFailure(PlannerState& st, const MotionRequest& m, const char* goal) {
    switch (st.failure) {
    case kFailedProfile: {
        const int i = st.failedAxis;
        char to[64];
        if (m.target != nullptr) {
            std::snprintf(to, sizeof to, "target %g", m.target[i]);
        } else {
            std::snprintf(to, sizeof to, "%s", goal);
        }
        setError(st, "axis %d: no step-%d motion profile found from pos %g vel %g acc %g to %s with maxVel %g "
                     "maxAcc %g maxJerk %g",
                 i, st.failedStep, valueOr0(m.pos, i), valueOr0(m.vel, i), valueOr0(m.acc, i), to, m.maxVel[i],
                 m.maxAcc[i], m.maxJerk[i]);
        return fail(st, VEKTA_NO_PROFILE);
    }
    case kFailedCheck: {
        char why[kErrorCapacity];
        std::snprintf(why, sizeof why, "%s", st.error);
        setError(st, "the plan check refused the plan: %s", why);
        return fail(st, VEKTA_PLAN_REFUSED);
    }
    default:
        setError(st, "the update failed");
        return fail(st, VEKTA_NO_PROFILE);
    }
}

}  // namespace

bool hasPlan(const PlannerState& st) {
    return !st.planFailed && st.axisCount >= 1 && st.axisCount <= kMaxAxes && st.planMode != kNoPlanMode &&
           st.planMode != kConveyorRefusedPlan;
}

int requestMove(PlannerState& st, const MotionRequest& m) {
    st.error[0] = '\0';
    if (!Arguments(st).motion(m, true, true)) return fail(st, VEKTA_INVALID_ARGUMENT);
    RecoveryOn recovery(st);
    const double* vel = m.vel != nullptr ? m.vel : kZeros;
    const double* acc = m.acc != nullptr ? m.acc : kZeros;
    const ReachableLimits lim(m, m.target, m.pos, vel, acc);
    if (!positionUpdate(st, kAnyCount, m.axes, m.target, lim.vel, lim.acc, {m.maxJerk, 0.0}, m.pos, vel, acc)) {
        return explainFailure(st, m, "");
    }
    return VEKTA_OK;
}

int requestStop(PlannerState& st, const MotionRequest& m) {
    st.error[0] = '\0';
    if (!Arguments(st).motion(m, false, true)) return fail(st, VEKTA_INVALID_ARGUMENT);
    RecoveryOn recovery(st);
    const double* vel = m.vel != nullptr ? m.vel : kZeros;
    const double* acc = m.acc != nullptr ? m.acc : kZeros;
    const ReachableLimits lim(m, nullptr, m.pos, vel, acc);
    if (!velocityUpdate(st, kAnyCount, m.axes, lim.vel, lim.acc, {m.maxJerk, 0.0}, m.pos, vel, acc)) {
        const MotionRequest stop = {m.axes, nullptr, m.maxVel, m.maxAcc, m.maxJerk, m.pos, m.vel, m.acc};
        return explainFailure(st, stop, "rest");
    }
    return VEKTA_OK;
}

int requestCatchUp(PlannerState& st, double conveyorVel, double conveyorLimit, const MotionRequest& m) {
    st.error[0] = '\0';
    Arguments args(st);
    if (!args.scalar("conveyorVel", conveyorVel) || !args.scalar("conveyorLimit", conveyorLimit) ||
        !args.motion(m, true, false)) {
        return fail(st, VEKTA_INVALID_ARGUMENT);
    }
    RecoveryOn recovery(st);
    // The conveyor's frame: every axis starts at rest at 0, axis 0 moving back.
    double vel[kMaxAxes] = {};
    vel[0] = -conveyorVel;
    const ReachableLimits lim(m, m.target, kZeros, vel, kZeros);
    // No spare time to respect: the smallest the conveyor update takes.
    constexpr double kAnySpare = 1.0;
    if (conveyorUpdate(st, kAnyCount, m.axes, conveyorVel, conveyorLimit, m.target, lim.vel, lim.acc,
                       {m.maxJerk, 0.0}, kAnySpare)) {
        return VEKTA_OK;
    }
    if (st.failure == kFailedConveyor) {
        const double duration = latestEnd(st);
        setError(st, "conveyor: the catch-up takes %g s, by then the target is at %g, not before the limit %g",
                 duration, m.target[0] + duration * conveyorVel, conveyorLimit);
        return fail(st, VEKTA_CONVEYOR_OUT_OF_REACH);
    }
    const MotionRequest start = {m.axes, m.target, m.maxVel, m.maxAcc, m.maxJerk, kZeros, vel, kZeros};
    return explainFailure(st, start, "");
}

int requestPeriod(PlannerState& st, double seconds) {
    st.error[0] = '\0';
    if (std::isfinite(seconds) && seconds >= kMinPeriod && seconds <= kMaxPeriod) {
        st.period = seconds;
        return VEKTA_OK;
    }
    setError(st, "period is %g s, it must be from %g to %g s", seconds, kMinPeriod, kMaxPeriod);
    return fail(st, VEKTA_INVALID_ARGUMENT);
}

double planDuration(const PlannerState& st) { return hasPlan(st) ? latestEnd(st) : 0.0; }

double axisMinimumTime(const PlannerState& st, int axis) {
    if (!hasPlan(st) || axis < 0 || axis >= st.axisCount) return -1.0;
    return st.minimumTime[axis];
}

int planStateAt(const PlannerState& st, double t, double* pos, double* vel, double* acc) {
    if (!hasPlan(st) || std::isnan(t) || pos == nullptr || vel == nullptr || acc == nullptr) return -1;
    const double from = t > 0.0 ? t : 0.0;  // before the update: the start state
    for (int i = 0; i < st.axisCount; ++i) evaluateAxis(st.records[i], from, pos[i], vel[i], acc[i]);
    return 0;
}

int planNext(PlannerState& st, double* pos, double* vel, double* acc) {
    if (!hasPlan(st) || pos == nullptr || vel == nullptr || acc == nullptr) return -1;
    int finished = 1;
    for (int i = 0; i < st.axisCount; ++i) {
        int count = 0;
        finished &= samplePlan(st, i, 1, pos + i, vel + i, acc + i, count);
    }
    return finished;
}

}  // namespace VEKTA_COPY
}  // namespace vekta
