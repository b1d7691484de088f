// The plan check: a caller's last line of defence before set-points go out.
//
// Every section of every planned axis is integrated from its start point with
// the constant jerk its two end points imply (the same integration the curve
// checker does) and held to what the sampler will make of it: it must meet its
// end point, and inside it |jerk|, |a| and |v| must stay within the limits.
// Acceleration is linear inside a section, so |a| peaks at an end; velocity
// may also peak where the acceleration crosses zero. The first violation in
// axis order, and in time order within an axis, is reported.
//
// Starts beyond a limit cannot keep it at once: the planner first brings the
// state back (ramps the acceleration to A, or slows to V). Each limit is
// therefore held from the first curve point from which it can be kept.
#include "check/plan_check.h"

#include <cfloat>
#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "check/curve_check.h"
#include "vekta/vekta.h"

namespace vekta {
inline namespace VEKTA_COPY {

namespace {

// Slack on |v| <= V, |a| <= A, |jerk| <= J: rounding of the closed forms.
constexpr double kLimitRel = 1e-6;
// Position continuity and the end position: the root finder's tolerance on
// position is 1e-5 and a synchronised axis is pinned on its target after it,
// so its last section may miss by that much; twice it, plus rounding.
constexpr double kPosAbs = 2e-5;
constexpr double kPosRel = 1e-9;
// Velocity and acceleration at the joins and at the end, relative to the
// limit or to the values joined when they are larger (a start beyond it).
constexpr double kJoinRel = 1e-6;
// Rounding of a curve time, relative to the time: a point late in a long plan
// is only known to a few units in the last place, so times may go back by
// that much, and the jerk of a section is allowed what J makes of it. Never
// positions or velocities: a large acceleration times that rounding would
// excuse a jump the sampler hands out.
constexpr double kTimeEps = 1e-14;
// Exact curves (recovery mode, the library's own calls): section joins and the
// end within this much of the motion's own scale, not the absolute kPosAbs.
constexpr double kExactRel = 1e-9;
// Units in the last place a conveyor frame's shift may round away, for the
// joins of an exact conveyor curve (stored positions of 1e16 in the fixed
// frame leave a few units of 2 in the conveyor's).
constexpr double kFrameUlps = 8.0;
// The axes of a plan end together: relative to the end time, or absolute for short plans.
constexpr double kEndTimeRel = 1e-9;
constexpr double kEndTimeAbs = 1e-12;

// The message writer: formats into the caller's buffer when there is one.
struct Report {
    char* buf;
    int size;
    int code(int result, const char* fmt, ...) __attribute__((format(printf, 3, 4))) {
        if (buf != nullptr && size > 0) {
            va_list ap;
            va_start(ap, fmt);
            std::vsnprintf(buf, static_cast<std::size_t>(size), fmt, ap);
            va_end(ap);
        }
        return result;
    }
};

bool positiveFinite(double x) { return std::isfinite(x) && x > 0.0; }
bool within(double x, double limit) { return std::fabs(x) <= limit * (1.0 + kLimitRel); }

// A state from which |v| <= V can be kept: within it now and still within it
// once the acceleration is ramped to zero at full jerk.
bool velocityKeepable(double v, double a, double V, double J) {
    return within(v, V) && within(v + a * std::fabs(a) / (2.0 * J), V);
}

// (On a tie either side is the same value, so > and >= pick alike.)
double largest(double a, double b, double c) { return a > b ? (a > c ? a : c) : (b > c ? b : c); }

// The tolerances where the section from point h to point i meets point i (h =
// i - 1; at the end of a one-point curve h = i): rounding relative to the
// sizes involved, and the root finder's miss on position.
struct JoinTolerance {
    double time, pos, vel, acc;
    double jerkTime;  // the rounding of the section's duration, times J
};

// An exact curve's scale: in length, the larger of its start and end
// positions, the distance its velocity limit covers in the plan's time and
// while that velocity is reached (V^2 / A); in velocity, the limit or the
// start's velocity when that is beyond it (the curve brings it back). A
// conveyor plan is checked in the conveyor's frame but stored in the fixed
// one: the positions of both frames count (the rounding of the shift between
// them is that of the larger).
struct MotionScale {
    double pos, vel;
    // What taking a conveyor's motion off the stored positions and
    // velocities rounds away: a few units in the last place of the fixed
    // frame's values (zero for any other curve).
    double framePos, frameVel;
};

MotionScale motionScale(const AxisPlan& r, const AxisPlan& stored, bool shifted) {
    const int last = r.pointCount - 1;
    const double V = r.maxVel;
    MotionScale s{V * r.secTime[last], std::fabs(r.secVel[0]) > V ? std::fabs(r.secVel[0]) : V, 0.0, 0.0};
    const double vels[2] = {stored.secVel[0], stored.secVel[last]};
    for (const double v : vels) s.vel = std::fabs(v) > s.vel ? std::fabs(v) : s.vel;
    const double ends[5] = {V * V / r.maxAcc, std::fabs(r.secPos[0]), std::fabs(r.secPos[last]),
                            std::fabs(stored.secPos[0]), std::fabs(stored.secPos[last])};
    for (const double e : ends) s.pos = e > s.pos ? e : s.pos;
    if (shifted) {
        // The ends only: the conveyor moves at one velocity and the arm's own
        // positions are small beside it (else the join tolerance is large
        // anyway), so the fixed-frame positions run monotonically and the
        // largest is at an end.
        s.framePos = kFrameUlps * DBL_EPSILON * std::fmax(std::fabs(stored.secPos[0]), std::fabs(stored.secPos[last]));
        s.frameVel = kFrameUlps * DBL_EPSILON * std::fmax(std::fabs(stored.secVel[0]), std::fabs(stored.secVel[last]));
    }
    return s;
}

JoinTolerance joinTolerance(const AxisPlan& r, int h, int i, const MotionScale* exact) {
    const double t = std::fabs(r.secTime[i]) * kTimeEps;
    const double a0 = std::fabs(r.secAcc[h]), a1 = std::fabs(r.secAcc[i]);
    const double v0 = std::fabs(r.secVel[h]), v1 = std::fabs(r.secVel[i]);
    JoinTolerance tol;
    tol.time = t > kTimeEps ? t : kTimeEps;
    // Scaled before they are added, so that values near the largest double
    // give a large tolerance rather than an infinite one.
    tol.pos = kPosAbs + kPosRel * std::fabs(r.secPos[h]) + kPosRel * std::fabs(r.secPos[i]);
    tol.vel = kJoinRel * largest(r.maxVel, v0, v1);
    tol.acc = kJoinRel * largest(r.maxAcc, a0, a1);
    tol.jerkTime = t * r.maxJerk;
    if (exact != nullptr) {  // tighter where the motion's scale allows, never looser
        if (kExactRel * exact->pos < tol.pos) tol.pos = kExactRel * exact->pos;
        if (kExactRel * exact->vel < tol.vel) tol.vel = kExactRel * exact->vel;
        tol.pos += exact->framePos;
        tol.vel += exact->frameVel;
    }
    return tol;
}

const char* const kQuantity[4] = {"time", "acceleration", "velocity", "position"};

int checkAxis(const AxisPlan& rec, int axis, int mode, Report& rep) {
    const int n = rec.pointCount;
    if (n < 1 || n > kMaxPoints) {
        return rep.code(VEKTA_CHECK_POINT_COUNT, "axis %d: %d curve points, outside 1 .. %d", axis, n, kMaxPoints);
    }
    for (int i = 0; i < n; ++i) {
        const double values[4] = {rec.secTime[i], rec.secAcc[i], rec.secVel[i], rec.secPos[i]};
        for (int q = 0; q < 4; ++q) {
            if (!std::isfinite(values[q])) {
                return rep.code(VEKTA_CHECK_NOT_FINITE, "axis %d: %s %g at point %d is not finite", axis,
                                kQuantity[q], values[q], i);
            }
        }
    }
    const double V = rec.maxVel, A = rec.maxAcc, J = rec.maxJerk;
    const double limits[3] = {V, A, J};
    const char* const limitNames[3] = {"velocity", "acceleration", "jerk"};
    for (int q = 0; q < 3; ++q) {
        if (!positiveFinite(limits[q])) {
            return rep.code(VEKTA_CHECK_BAD_LIMIT, "axis %d: %s limit %g is not a positive finite number", axis,
                            limitNames[q], limits[q]);
        }
    }
    if (rec.secTime[0] != 0.0) {
        return rep.code(VEKTA_CHECK_TIME_BACK, "axis %d: the curve starts at t = %g s, not at 0", axis,
                        rec.secTime[0]);
    }

    // A conveyor plan is checked in the conveyor's frame: take its motion off.
    AxisPlan r = rec;
    double tgtVel = rec.tgtVel;
    if (mode == kConveyorPlan && axis == 0) {
        for (int i = 0; i < n; ++i) {
            r.secPos[i] -= r.secTime[i] * tgtVel;
            r.secVel[i] -= tgtVel;
        }
        tgtVel = 0.0;
    }
    MotionScale scale{};
    const MotionScale* exact = nullptr;
    if (rec.exact) {
        scale = motionScale(r, rec, mode == kConveyorPlan && axis == 0);
        exact = &scale;
    }
    bool accHeld = within(r.secAcc[0], A);
    bool velHeld = velocityKeepable(r.secVel[0], r.secAcc[0], V, J);
    for (int i = 1; i < n; ++i) {
        const double t0 = r.secTime[i - 1], t1 = r.secTime[i];
        const JoinTolerance tol = joinTolerance(r, i - 1, i, exact);
        if (t1 < t0 - tol.time) {
            return rep.code(VEKTA_CHECK_TIME_BACK, "axis %d: time goes back from %g s to %g s at point %d", axis,
                            t0, t1, i);
        }
        const SectionReport s = integrateSection(r, i);
        // Every test below is written so that a NaN (an integration that
        // overflowed) counts as a violation.
        if (!(std::fabs(s.posEnd - r.secPos[i]) <= tol.pos)) {
            return rep.code(VEKTA_CHECK_DISCONTINUOUS,
                            "axis %d: position %.9g at t = %g s, its section arrives at %.9g (tolerance %g)", axis,
                            r.secPos[i], t1, s.posEnd, tol.pos);
        }
        if (!(std::fabs(s.velEnd - r.secVel[i]) <= tol.vel)) {
            return rep.code(VEKTA_CHECK_DISCONTINUOUS,
                            "axis %d: velocity %.9g at t = %g s, its section arrives at %.9g (tolerance %g)", axis,
                            r.secVel[i], t1, s.velEnd, tol.vel);
        }
        // The acceleration may change by J per second, plus rounding; a
        // section of zero length (or one back by a rounding) may not change
        // it at all, whatever J: the sampler steps over it, and a step at
        // the end time is never handed out.
        const double dA = r.secAcc[i] - r.secAcc[i - 1];
        const double dt = s.dt > 0.0 ? s.dt : 0.0;
        const double allowed = dt > 0.0 ? J * dt * (1.0 + kLimitRel) + tol.jerkTime + tol.acc : tol.acc;
        if (!(std::fabs(dA) <= allowed)) {
            if (dt > 0.0) {
                return rep.code(VEKTA_CHECK_JERK_LIMIT, "axis %d: jerk %g beyond the limit %g at t = %g s", axis,
                                s.jerk, J, t0);
            }
            return rep.code(VEKTA_CHECK_JERK_LIMIT,
                            "axis %d: acceleration steps from %g to %g at t = %g s (jerk limit %g)", axis,
                            r.secAcc[i - 1], r.secAcc[i], t0, J);
        }
        if (accHeld && !within(r.secAcc[i], A)) {
            return rep.code(VEKTA_CHECK_ACC_LIMIT, "axis %d: acceleration %g beyond the limit %g at t = %g s", axis,
                            r.secAcc[i], A, t1);
        }
        if (velHeld && !within(s.peakVel, V)) {
            return rep.code(VEKTA_CHECK_VEL_LIMIT, "axis %d: velocity %g beyond the limit %g at t = %g s", axis,
                            s.peakVel, V, s.peakVelTime);
        }
        accHeld = accHeld || within(r.secAcc[i], A);
        velHeld = velHeld || velocityKeepable(r.secVel[i], r.secAcc[i], V, J);
    }

    const int last = n - 1;
    const double tEnd = r.secTime[last];
    const JoinTolerance tol = joinTolerance(r, last > 0 ? last - 1 : 0, last, exact);
    if (!(std::fabs(r.secAcc[last]) <= tol.acc)) {
        return rep.code(VEKTA_CHECK_END_STATE, "axis %d: ends with acceleration %g instead of 0 at t = %g s", axis,
                        r.secAcc[last], tEnd);
    }
    if (!(std::fabs(r.secVel[last] - tgtVel) <= tol.vel)) {
        return rep.code(VEKTA_CHECK_END_STATE, "axis %d: ends with velocity %g instead of %g at t = %g s", axis,
                        r.secVel[last] + (rec.tgtVel - tgtVel), rec.tgtVel, tEnd);
    }
    if (mode != kVelocityPlan && !(std::fabs(r.secPos[last] - r.tgtPos) <= tol.pos)) {
        // Back to the fixed frame; zero for every curve but a conveyor's axis 0,
        // whose tgtVel here is 0, so the difference could as well be a sum.
        const double shift = tEnd * (rec.tgtVel - tgtVel);
        return rep.code(VEKTA_CHECK_END_STATE, "axis %d: ends at position %.9g instead of %.9g at t = %g s", axis,
                        r.secPos[last] + shift, r.tgtPos + shift, tEnd);
    }
    return VEKTA_CHECK_OK;
}

}  // namespace

int checkPlan(const PlannerState& st, char* message, int messageSize) {
    Report rep{message, messageSize};
    const int axes = st.axisCount;
    if (st.planMode == kNoPlanMode || axes < 1 || axes > kMaxAxes) {
        return rep.code(VEKTA_CHECK_NO_PLAN, "no plan: no update has planned yet");
    }
    if (st.planFailed) return rep.code(VEKTA_CHECK_NO_PLAN, "no plan: the last update failed");
    if (st.planMode == kConveyorRefusedPlan) {
        return rep.code(VEKTA_CHECK_CONVEYOR_REFUSED,
                        "conveyor: the catch-up ends beyond the conveyor limit; the plan must not be sampled");
    }
    for (int axis = 0; axis < axes; ++axis) {
        const int code = checkAxis(st.records[axis], axis, st.planMode, rep);
        if (code != VEKTA_CHECK_OK) return code;
    }
    const AxisPlan& r0 = st.records[0];
    const double t0 = r0.secTime[r0.pointCount - 1];
    for (int axis = 1; axis < axes; ++axis) {
        const AxisPlan& r = st.records[axis];
        const double t = r.secTime[r.pointCount - 1];
        if (!(std::fabs(t - t0) <= kEndTimeRel * (t > t0 ? t : t0) + kEndTimeAbs)) {
            return rep.code(VEKTA_CHECK_END_TIME, "axis %d: ends at t = %.9g s, axis 0 at t = %.9g s", axis, t, t0);
        }
    }
    return rep.code(VEKTA_CHECK_OK, "ok");
}

}  // namespace VEKTA_COPY
}  // namespace vekta
