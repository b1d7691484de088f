// The library's own calls on arms of any size: Move, Stop and CatchUp of 1 to
// 16 axes with a jerk limit per axis, at any period, checked argument by
// argument, with reasons in words; the plan read back with Duration,
// MinimumTime, StateAt and Next. Every planned curve is integrated section by
// section (the physical check).
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdarg>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "output/output_sink.h"
#include "output/text_output.h"
#include "support/test_support.h"
#include "vekta/vekta_c.h"

namespace vekta::test {
namespace {

// A planner in the test's own memory, whose state the test may read.
struct Planner {
    alignas(std::max_align_t) unsigned char mem[1 << 16];
    VektaPlanner* p = nullptr;
    Planner() {
        EXPECT_LE(vektaPlannerSize(), sizeof mem);
        p = vektaPlannerInit(mem);
    }
    const PlannerState& state() const { return *reinterpret_cast<const PlannerState*>(mem); }
};

// One arm's motion: start state, target, limits (jerk not a multiple of acc).
struct Arm {
    int axes;
    std::vector<double> target, maxVel, maxAcc, maxJerk, pos, vel, acc;
};

Arm drawArm(int axes, std::uint64_t seed, bool moving) {
    std::mt19937_64 rng(seed);
    auto u = [&](double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); };
    Arm a{axes, {}, {}, {}, {}, {}, {}, {}};
    for (int i = 0; i < axes; ++i) {
        a.maxVel.push_back(u(0.5, 3.0));
        a.maxAcc.push_back(u(1.0, 8.0));
        a.maxJerk.push_back(a.maxAcc[i] * u(3.0, 40.0));
        a.pos.push_back(u(-2.0, 2.0));
        a.target.push_back(u(-2.0, 2.0));
        a.vel.push_back(moving ? u(-0.5, 0.5) * a.maxVel[i] : 0.0);
        a.acc.push_back(moving ? u(-0.3, 0.3) * a.maxAcc[i] : 0.0);
    }
    return a;
}

// Move (call 0), Stop (1) or CatchUp (2, conveyor at 0.2 m/s) with the arm's
// arrays, the one at `null` handed over as NULL.
int plan(VektaPlanner* p, const Arm& a, int call = 0, const std::vector<double>* null = nullptr) {
    auto d = [null](const std::vector<double>& v) { return &v == null ? nullptr : v.data(); };
    if (call == 1) return vektaPlannerStop(p, a.axes, d(a.maxVel), d(a.maxAcc), d(a.maxJerk), d(a.pos), d(a.vel), d(a.acc));
    if (call == 2) return vektaPlannerCatchUp(p, a.axes, 0.2, 10.0, d(a.target), d(a.maxVel), d(a.maxAcc), d(a.maxJerk));
    return vektaPlannerMove(p, a.axes, d(a.target), d(a.maxVel), d(a.maxAcc), d(a.maxJerk), d(a.pos), d(a.vel), d(a.acc));
}

// Exact curves: every section meets its end point within 1e-9 of the
// motion's scale, the limits hold to 1e-9.
constexpr CurveTolerance kExact{1e-9, 1e-9};

void printLong(const OutputSink* sink, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    vprintTo(sink, fmt, ap);
    va_end(ap);
}

bool sameBits(double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0; }

// The curve's position and velocity at t, integrated from the start of its
// section with the jerk its two end points imply; past the end, the end.
void curveAt(const AxisPlan& r, double t, double& pos, double& vel) {
    int c = 1;
    while (c < r.pointCount && t > r.secTime[c]) ++c;
    const int h = c < r.pointCount ? c - 1 : r.pointCount - 1;
    const double dt = c < r.pointCount ? r.secTime[c] - r.secTime[h] : 0.0, tau = dt > 0.0 ? t - r.secTime[h] : 0.0;
    const double a = r.secAcc[h], j = dt > 0.0 ? (r.secAcc[c] - a) / dt : 0.0;
    vel = r.secVel[h] + a * tau + j * tau * tau / 2.0;
    pos = r.secPos[h] + r.secVel[h] * tau + a * tau * tau / 2.0 + j * tau * tau * tau / 6.0;
}

// No plan: every reader says so.
void expectNoPlan(VektaPlanner* p) {
    double x[VEKTA_MAX_AXES], y[VEKTA_MAX_AXES], z[VEKTA_MAX_AXES];
    EXPECT_EQ(vektaPlannerDuration(p), 0.0);
    EXPECT_EQ(vektaPlannerAxes(p), 0);
    EXPECT_EQ(vektaPlannerMinimumTime(p, 0), -1.0);
    EXPECT_EQ(vektaPlannerStateAt(p, 0.0, x, y, z), -1);
    EXPECT_EQ(vektaPlannerNext(p, x, y, z), -1);
}

// Arms of 1, 2, 7 and 16 axes, from rest and moving, at periods from 0.1 ms
// to 1 s: every curve physical and on its target at the common end time, one
// axis setting it; Next at (k + 1) x period as the per-axis sampling gives it,
// StateAt bit for bit the same, the start state at 0 and the end state after.
TEST(AnyArm, EveryArmAndPeriodPlansPhysicalCurvesSampledAlikeByNextStateAtAndSample) {
    const double periods[] = {1e-4, 1e-3, 2e-3, 5e-3, 0.1, 1.0};
    int motion = 0;
    Planner next, sample;  // each plan replaces the last one, of more axes, whole
    for (int axes : {16, 7, 2, 1}) {
        for (double period : periods) {
            SCOPED_TRACE("axes " + std::to_string(axes) + " period " + std::to_string(period));
            const Arm a = drawArm(axes, 1000 + motion, motion % 2 == 1);
            ++motion;
            for (VektaPlanner* p : {next.p, sample.p}) {
                ASSERT_EQ(vektaPlannerSetPeriod(p, period), VEKTA_OK);
                ASSERT_EQ(plan(p, a), VEKTA_OK) << vektaPlannerError(p);
            }
            EXPECT_STREQ(vektaPlannerError(next.p), "");
            EXPECT_EQ(vektaPlannerAxes(next.p), axes);
            EXPECT_EQ(vektaPlannerPeriod(next.p), period);
            const double end = vektaPlannerDuration(next.p);
            bool someAxisSetsTheEnd = false;
            for (int i = 0; i < axes; ++i) {
                const AxisPlan& r = next.state().records[i];
                expectPhysicalCurve(r, true, kExact);
                expectEndsAt(r, end, a.target[i], 0.0, 1e-9);
                double t[kMaxPoints], acc[kMaxPoints];  // the curve as a caller reads it
                ASSERT_EQ(vektaPlannerCurve(next.p, i, t, nullptr, nullptr, acc, kMaxPoints), r.pointCount);
                EXPECT_TRUE(!std::memcmp(t, r.secTime, sizeof(double) * static_cast<std::size_t>(r.pointCount)) &&
                            !std::memcmp(acc, r.secAcc, sizeof(double) * static_cast<std::size_t>(r.pointCount)));
                const double alone = vektaPlannerMinimumTime(next.p, i);
                EXPECT_LE(alone, end);
                someAxisSetsTheEnd |= alone == end;
            }
            EXPECT_TRUE(someAxisSetsTheEnd);
            EXPECT_EQ(vektaPlannerCurve(next.p, axes, nullptr, nullptr, nullptr, nullptr, 0), -1);

            double p[VEKTA_MAX_AXES], v[VEKTA_MAX_AXES], acc[VEKTA_MAX_AXES];
            double sp[VEKTA_MAX_AXES], sv[VEKTA_MAX_AXES], sa[VEKTA_MAX_AXES];
            ASSERT_EQ(vektaPlannerStateAt(next.p, 0.0, p, v, acc), 0);
            for (int i = 0; i < axes; ++i) EXPECT_TRUE(sameBits(p[i], a.pos[i]) && sameBits(v[i], a.vel[i]));
            int k = 0, result = 0;
            for (; result == 0 && k < 100000; ++k) {
                result = vektaPlannerNext(next.p, p, v, acc);
                ASSERT_EQ(vektaPlannerStateAt(next.p, (k + 1) * period, sp, sv, sa), 0);
                int finished = 1, count = 0;
                for (int i = 0; i < axes; ++i) {
                    ASSERT_TRUE(sameBits(p[i], sp[i]) && sameBits(v[i], sv[i]) && sameBits(acc[i], sa[i]))
                        << "period " << k << " axis " << i;
                    double cp, cv;  // and on the curve, section by section
                    curveAt(next.state().records[i], (k + 1) * period, cp, cv);
                    ASSERT_NEAR(p[i], cp, 1e-9 * std::max(1.0, std::fabs(cp))) << "period " << k << " axis " << i;
                    ASSERT_NEAR(v[i], cv, 1e-9 * a.maxVel[i]) << "period " << k << " axis " << i;
                    double q[3];
                    finished &= vektaPlannerSample(sample.p, i, 1, &q[0], &q[1], &q[2], &count);
                    ASSERT_TRUE(sameBits(p[i], q[0]) && sameBits(v[i], q[1]) && sameBits(acc[i], q[2]));
                }
                ASSERT_EQ(result, finished);
            }
            EXPECT_EQ(result, 1);
            EXPECT_GE(k * period, end);
            EXPECT_LT((k - 1) * period, end);
            ASSERT_EQ(vektaPlannerStateAt(next.p, end + 1.0, p, v, acc), 0);
            for (int i = 0; i < axes; ++i) {
                EXPECT_NEAR(p[i], a.target[i], 1e-12) << "axis " << i;
                EXPECT_TRUE(v[i] == 0.0 && acc[i] == 0.0);
            }
        }
    }
}

// Six axes with maxJerk = maxAcc x ratio, at 5 ms: Move is the handle form's
// position update with recovery on, bit for bit, refusals included; Stop the
// velocity update's.
TEST(AnyArm, SixAxesWithTheRatioAsJerkPlanExactlyAsTheHandleFormsInRecoveryMode) {
    int refused = 0;
    for (int m = 0; m < 200; ++m) {
        Arm a = drawArm(6, 5000 + m, true);
        const double ratio = 2.0 + m % 17;
        for (int i = 0; i < 6; ++i) {
            a.maxJerk[i] = a.maxAcc[i] * ratio;
            if (m % 4 == 0) a.vel[i] *= 4.0;  // beyond the velocity limit: the repairs at work
        }
        Planner own, handle;
        vektaPlannerSetRecovery(handle.p, 1);
        for (int stop = 0; stop < 2; ++stop) {
            const int status = plan(own.p, a, stop);
            const int ok = stop ? vektaPlannerVelocityUpdate(handle.p, 6, a.maxVel.data(), a.maxAcc.data(), ratio,
                                                             a.pos.data(), a.vel.data(), a.acc.data())
                                : vektaPlannerPositionUpdate(handle.p, 6, a.target.data(), a.maxVel.data(),
                                                             a.maxAcc.data(), ratio, a.pos.data(), a.vel.data(),
                                                             a.acc.data());
            ASSERT_EQ(status == VEKTA_OK, ok == 1) << "motion " << m << ": " << vektaPlannerError(own.p);
            refused += ok ? 0 : 1;
            for (int i = 0; ok && i < 6; ++i) {
                const AxisPlan& x = own.state().records[i];
                const AxisPlan& y = handle.state().records[i];
                const std::size_t n = sizeof(double) * static_cast<std::size_t>(x.pointCount);
                ASSERT_TRUE(x.pointCount == y.pointCount && !std::memcmp(x.secTime, y.secTime, n) &&
                            !std::memcmp(x.secPos, y.secPos, n) && !std::memcmp(x.secVel, y.secVel, n) &&
                            !std::memcmp(x.secAcc, y.secAcc, n))
                    << "motion " << m << " axis " << i;
            }
        }
    }
    EXPECT_LT(refused, 10);
}

// Every argument spoiled in every way: refused before planning with a reason
// naming the axis and the argument, and no plan left, not even the last one.
TEST(AnyArm, EverySpoiledArgumentIsRefusedWithItsReasonAndLeavesNoPlan) {
    const Arm good = drawArm(3, 7, true);
    const double nan = std::nan(""), inf = HUGE_VAL;
    // Spoiled at axis 2, or the whole array NULL (the rows whose reason says so):
    // each form of reason once; the fuzz target spoils every argument every way.
    std::vector<double> Arm::*const fields[] = {&Arm::target, &Arm::maxVel, &Arm::maxAcc, &Arm::maxJerk,
                                                      &Arm::pos,    &Arm::vel,    &Arm::acc};
    const struct {
        int field;
        double value;
        const char* reason;
    } rows[] = {
        {0, nan, "axis 2: target is nan, it must be a finite number"},
        {0, 0, "target is NULL, it must point to one value per axis"},
        {1, -1.0, "axis 2: maxVel is -1, it must be a positive finite number"},
        {1, 0.0, "axis 2: maxVel is 0, it must be a positive finite number"},
        {2, inf, "axis 2: maxAcc is inf, it must be a positive finite number"},
        {2, -0.0, "axis 2: maxAcc is -0, it must be a positive finite number"},
        {3, nan, "axis 2: maxJerk is nan, it must be a positive finite number"},
        {3, 0, "maxJerk is NULL, it must point to one value per axis"},
        {4, inf, "axis 2: pos is inf, it must be a finite number"},
        {4, 0, "pos is NULL, it must point to one value per axis"},
        {5, nan, "axis 2: vel is nan, it must be a finite number"},
        {6, -inf, "axis 2: acc is -inf, it must be a finite number"},
    };
    for (const auto& row : rows) {
        for (int call = 0; call < 3; ++call) {  // Move, Stop, CatchUp: each with the arrays it reads
            if ((call == 1 && row.field == 0) || (call == 2 && row.field >= 4)) continue;
            SCOPED_TRACE(std::string(row.reason) + " in call " + std::to_string(call));
            Arm a = good;
            std::vector<double>& field = a.*fields[row.field];
            const bool null = std::strstr(row.reason, "NULL") != nullptr;
            field[2] = row.value;
            Planner pl;
            ASSERT_EQ(plan(pl.p, good), VEKTA_OK);
            EXPECT_EQ(plan(pl.p, a, call, null ? &field : nullptr), VEKTA_INVALID_ARGUMENT);
            EXPECT_STREQ(vektaPlannerError(pl.p), row.reason);
            expectNoPlan(pl.p);
        }
    }
    // An axis count and the conveyor's numbers (the fuzz target refuses every
    // other count, time, NULL output and period, each with its name).
    Planner pl;
    EXPECT_EQ(vektaPlannerMove(pl.p, 17, good.target.data(), good.maxVel.data(), good.maxAcc.data(),
                               good.maxJerk.data(), good.pos.data(), nullptr, nullptr),
              VEKTA_INVALID_ARGUMENT);
    EXPECT_STREQ(vektaPlannerError(pl.p), "axes is 17, it must be from 1 to 16");
    EXPECT_EQ(vektaPlannerCatchUp(pl.p, 3, nan, 1.0, good.target.data(), good.maxVel.data(), good.maxAcc.data(),
                                  good.maxJerk.data()),
              VEKTA_INVALID_ARGUMENT);
    EXPECT_STREQ(vektaPlannerError(pl.p), "conveyorVel is nan, it must be a finite number");
    expectNoPlan(pl.p);
}

// A NULL planner, a planner in the caller's memory destroyed, and a new
// planner silent until its output is switched on.
TEST(AnyArm, NullPlannersFailSafelyAndNewPlannersAreQuiet) {
    double x[VEKTA_MAX_AXES] = {}, y[VEKTA_MAX_AXES] = {}, z[VEKTA_MAX_AXES] = {};
    char message[8] = "x";
    // Every other call on a NULL planner is made by the fuzz target's seed
    // null-planner-everywhere, which holds each to its failure value.
    EXPECT_EQ(vektaPlannerCheck(nullptr, message, sizeof message), VEKTA_CHECK_NO_PLAN);
    EXPECT_STREQ(message, "");
    EXPECT_EQ(vektaPlannerCurve(nullptr, 0, x, y, z, x, VEKTA_MAX_AXES), -1);
    vektaPlannerOutputToFile(nullptr, stdout);

    const Arm a = drawArm(2, 3, true);
    StdoutCapture quiet;
    Planner own;
    VektaPlanner* made = vektaPlannerCreate();
    for (VektaPlanner* p : {own.p, made}) {
        ASSERT_EQ(plan(p, a), VEKTA_OK);
        while (vektaPlannerNext(p, x, y, z) == 0) {
        }
    }
    vektaPlannerDestroy(own.p);  // the caller's memory: nothing happens
    EXPECT_EQ(vektaPlannerAxes(own.p), 2);
    EXPECT_EQ(quiet.text(), "");
    StdoutCapture loud;
    vektaPlannerOutputToStdout(made);
    ASSERT_EQ(plan(made, a), VEKTA_OK);
    EXPECT_EQ(loud.text().rfind("posUpd: 1st pt ", 0), 0u);
    vektaPlannerOutputOff(made);  // the handle forms' updates give 1 for a plan, as vekta.h's do
    const double one = 1.0, four = 4.0;
    EXPECT_EQ(vektaPlannerConveyorUpdate(made, 1, 0.1, 100.0, &one, &one, &four, 10.0, 0.01), 1);
    vektaPlannerDestroy(made);

    // A diagnostic as long as the callback's 4 KiB buffer, or longer, reaches
    // it cut to the buffer and its terminator, never beyond it.
    // Each message the callback gets ends in '|' here.
    std::string got;
    const OutputSink sink{kOutputCallback, nullptr,
                          [](const char* t, std::size_t n, void* user) {
                              static_cast<std::string*>(user)->append(t, n).append("|");
                          },
                          &got};
    printLong(&sink, "%4096s", "x");
    EXPECT_EQ(got.size(), 4096u);
    // An empty message is not handed over; a piece longer than a message's
    // buffer is, in buffer-sized parts, whole.
    got.clear();
    printLong(&sink, "%s", "");
    printLong(&sink, "%s", "x");
    const std::string piece(2500, 'p');
    TextOutput out;
    beginText(out, &sink);
    appendLiteral(out, piece.c_str(), static_cast<int>(piece.size()));
    writeText(out);
    EXPECT_EQ(got, "x|" + piece.substr(0, 1024) + "|" + piece.substr(0, 1024) + "|" + piece.substr(0, 452) + "|");
    // The same for a format whose literal text is longer than the buffer.
    got.clear();
    beginText(out, &sink);
    appendText(out, (piece + "%d").c_str(), 7);
    writeText(out);
    EXPECT_EQ(got, piece.substr(0, 1024) + "|" + piece.substr(0, 1024) + "|" + piece.substr(0, 452) + "7|");
}

// Exact curves, in recovery mode and through Move: the time-setting axis of
// the PLNT shape (ids 20/21: a linear ramp of the present acceleration, then a
// trapezoid) ends on its target at the optimal time, and so does every axis of
// six-axis plans over the step-2 Zero family: every section integrated from its
// start meets its end point, the last one the target, within 1e-9 of the
// motion's scale; StateAt just before the end is that close to the target.
TEST(AnyArm, ExactCurvesEndOnTheirTargetsInRecoveryModeAndThroughMove) {
    // One axis whose PLNT root the default mode finds only to 1e-5.
    const double ratio = 8.075613195029904, A = 5.511367886162118, J = A * ratio;
    Arm plnt{1, {2.0093107025998123}, {2.534055825682591}, {A}, {J}, {2.1593704309201005}, {-0.9191887643931749},
             {1.6043801014072256}};
    Planner own;
    ASSERT_EQ(plan(own.p, plnt), VEKTA_OK) << vektaPlannerError(own.p);
    EXPECT_GE(own.state().records[0].step1Profile, 20);
    EXPECT_NEAR(vektaPlannerDuration(own.p), 0.310762485956343468, 1e-11 * 0.31);

    std::vector<Arm> arms = {plnt};
    for (int m = 0; arms.size() < 12 && m < 4000; ++m) {  // moving starts the PLNT shape takes
        Arm a = drawArm(1, 90000 + m, true);
        a.acc[0] = (m % 2 ? 0.9 : -0.9) * a.maxAcc[0];
        a.vel[0] = (m % 2 ? -0.4 : 0.4) * a.maxVel[0];
        if (plan(own.p, a) == VEKTA_OK && own.state().records[0].step1Profile >= 20) arms.push_back(a);
    }
    EXPECT_EQ(arms.size(), 12u);
    int uses[kStep2ProfileCount] = {};  // the step-2 profiles the plans took, mirror images apart
    for (int m = 0; m < 400; ++m) arms.push_back(drawArm(6, 70000 + m, m % 3 != 0));
    for (const Arm& a : arms) {
        Planner viaMove, viaRecovery;
        ASSERT_EQ(plan(viaMove.p, a), VEKTA_OK) << vektaPlannerError(viaMove.p);
        vektaPlannerSetRecovery(viaRecovery.p, 1);
        Arm ratioForm = a;  // the handle form takes one jerk ratio for every axis
        for (int i = 0; i < a.axes; ++i) ratioForm.maxJerk[i] = a.maxAcc[i] * (a.maxJerk[0] / a.maxAcc[0]);
        ASSERT_EQ(vektaPlannerPositionUpdate(viaRecovery.p, a.axes, a.target.data(), a.maxVel.data(), a.maxAcc.data(),
                                             a.maxJerk[0] / a.maxAcc[0], a.pos.data(), a.vel.data(), a.acc.data()),
                  1);
        for (int k = 0; k < kStep2ProfileCount; ++k) uses[k] += viaMove.state().profileUseCount[k];
        for (const Planner* pl : {&viaMove, &viaRecovery}) {
            const double end = vektaPlannerDuration(pl->p);
            double p[VEKTA_MAX_AXES], v[VEKTA_MAX_AXES], acc[VEKTA_MAX_AXES];
            ASSERT_EQ(vektaPlannerStateAt(pl->p, end * (1.0 - 1e-12), p, v, acc), 0);
            for (int i = 0; i < a.axes; ++i) {
                const AxisPlan& r = pl->state().records[i];
                const CurveReport rep = expectPhysicalCurve(r, true, kExact);
                const double scale = std::max({1.0, std::fabs(a.pos[i]), std::fabs(a.target[i])});
                EXPECT_NEAR(rep.endPos, a.target[i], 1e-9 * scale);
                EXPECT_NEAR(p[i], a.target[i], 1e-9 * scale) << "axis " << i;
            }
        }
    }
    // Every shape of the Zero family, either way round (the Hld and Lin shapes
    // need starts of their own: the step-2 tests solve them exactly too).
    for (int id = 0; id < 16; ++id) EXPECT_GT(uses[id], 0) << "no plan of step-2 profile " << id;
}

// Limits far beyond the motion's reach (1e20, DBL_MAX for "no limit"): the
// plan is the one made with limits just above the speed and acceleration it
// uses, to 1e-9, and each axis's minimum time is within its duration. Without
// the bound the tree compares positions of V^2 / A ~ 1e40 and goes wrong.
TEST(AnyArm, LimitsBeyondReachPlanAsLimitsJustAboveTheMotion) {
    const double huge[] = {1e20, 7.5e20, DBL_MAX};
    for (int m = 0; m < 24; ++m) {
        Arm a = drawArm(m % 2 ? 6 : 1, 3000 + m, m % 3 != 0), tight;
        for (int i = 0; i < a.axes; ++i) {
            a.maxVel[i] = m % 5 == 1 ? 2.0 : huge[m % 3];  // one limit in reach, or both beyond
            a.maxAcc[i] = m % 5 == 2 ? 3.0 : huge[m % 3];
        }
        if (m == 0) a = {1, {-0x1.fbfbfbfbfbfbfp-4}, {7.5e20}, {0x1.0d53333333333p+2}, {0x1.12a999999999ap+3},
                         {0x1.91p-2}, {0x1.6f8p+2}, {0.0}};  // found by the fuzz target
        const int call = m % 4 == 3;  // a stop now and then
        Planner far, near;
        ASSERT_EQ(plan(far.p, a, call), VEKTA_OK) << "motion " << m << ": " << vektaPlannerError(far.p);
        const double end = vektaPlannerDuration(far.p);
        tight = a;
        for (int i = 0; i < a.axes; ++i) {
            const CurveReport rep = expectPhysicalCurve(far.state().records[i], true, kExact);
            if (call == 0) {
                EXPECT_NEAR(rep.endPos, a.target[i], 1e-9 * std::max(1.0, std::fabs(a.target[i])));
            }
            const double alone = vektaPlannerMinimumTime(far.p, i);
            EXPECT_TRUE(alone >= 0.0 && alone <= end) << "motion " << m << " axis " << i;
            tight.maxVel[i] = std::min(a.maxVel[i], 1.25 * rep.peakVel + 1e-3);
            tight.maxAcc[i] = std::min(a.maxAcc[i], 1.25 * rep.peakAcc + 1e-3);
        }
        ASSERT_EQ(plan(near.p, tight, call), VEKTA_OK) << "motion " << m << ": " << vektaPlannerError(near.p);
        EXPECT_NEAR(vektaPlannerDuration(near.p), end, 1e-9 * end) << "motion " << m;
        double p[2][VEKTA_MAX_AXES], v[2][VEKTA_MAX_AXES], acc[VEKTA_MAX_AXES];
        ASSERT_EQ(vektaPlannerStateAt(far.p, 0.6 * end, p[0], v[0], acc), 0);
        ASSERT_EQ(vektaPlannerStateAt(near.p, 0.6 * end, p[1], v[1], acc), 0);
        for (int i = 0; i < a.axes; ++i) {
            EXPECT_NEAR(p[0][i], p[1][i], 1e-9 * std::max(1.0, std::fabs(p[1][i]))) << "motion " << m;
            EXPECT_NEAR(v[0][i], v[1][i], 1e-8 * std::max(1.0, tight.maxVel[i])) << "motion " << m;
        }
    }
}

}  // namespace
}  // namespace vekta::test
