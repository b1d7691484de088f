// Plan and sample times of the shared library, measured with Google Benchmark.
//
// The motions are a fixed set drawn by the sweep (seed 1, position updates of
// every start class: from rest, moving, beyond a limit), so that the numbers
// cover the whole decision tree rather than one lucky shape. Every plan is
// timed on its own: the reported time is the mean over the set, and the
// counters add the mean of every motion's fastest repetition (the planner's
// own cost, without the machine's interrupts and preemption), the slowest
// motion of the set (its fastest repetition) and the slowest single call
// (which also carries the machine's interrupts).
//
// The benchmarks that the speed targets name carry them as their label: the
// six-axis update from rest and from moving starts (the mean, and the max as
// both the slowest motion and the slowest call), the single-axis update, the
// six-axis stop, and the sampling of six-axis motions (ns per sample, that is
// per axis and period).
//
// The library prints on every update; its standard output goes to /dev/null
// here, the report to the original standard output. The output:off rows plan
// on a planner of their own whose output is switched off, which skips the
// formatting of those lines altogether.
//
// The move rows time vektaPlannerMove on a new planner (output off) for arms
// of 6, 7 and 16 axes: the axes of drawn six-axis motions side by side, each
// with maxJerk = maxAcc x its motion's jerk ratio, so that the six-axis arms
// are the same plans as the handle form's position update with recovery on
// (plan/position/axes:6/start:all/recovery/output:off, its twin). They add
// the mean per axis.
#include <benchmark/benchmark.h>
#include <ext/stdio_filebuf.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <deque>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "sweep.h"
#include "vekta/vekta.h"

namespace {

using vekta::sweep::Mode;
using vekta::sweep::Motion;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kSetSize = 1000;
constexpr std::uint64_t kSeed = 1;
constexpr int kMaxPeriods = 40000;

// Which starts a set holds: one class of the sweep, or all of them mixed as
// the sweep draws them.
enum class Starts { Rest, Moving, Beyond, All };

// The first `size` motions of the sweep with this axis count, mode and start.
std::vector<Motion> drawSet(int axes, Mode mode, Starts starts, std::size_t size = kSetSize) {
    std::vector<Motion> set;
    for (std::uint64_t i = 0; set.size() < size; ++i) {
        const Motion m = vekta::sweep::drawMotion(kSeed, i);
        if (m.axes != axes || m.mode != mode) continue;
        if (starts != Starts::All && static_cast<int>(m.start) != static_cast<int>(starts)) continue;
        set.push_back(m);
    }
    return set;
}

// When set, the updates go to this planner, whose output is off, instead of
// the default planner.
VektaPlanner* quietPlanner = nullptr;

bool plan(const Motion& m) {
    if (quietPlanner != nullptr) {
        return m.mode == Mode::Position
                   ? vektaPlannerPositionUpdate(quietPlanner, m.axes, m.tgt, m.maxVel, m.maxAcc, m.jerkRatio,
                                                m.pos, m.vel, m.acc) != 0
                   : vektaPlannerVelocityUpdate(quietPlanner, m.axes, m.maxVel, m.maxAcc, m.jerkRatio, m.pos,
                                                m.vel, m.acc) != 0;
    }
    return m.mode == Mode::Position
               ? vektaPostionModeParaUpd(m.axes, m.tgt, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel, m.acc, 0.0)
               : vektaVelocityModeParaUpd(m.axes, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel, m.acc, 0.0);
}

// The arguments of one vektaPlannerMove.
struct Arm {
    int axes;
    double target[VEKTA_MAX_AXES], maxVel[VEKTA_MAX_AXES], maxAcc[VEKTA_MAX_AXES], maxJerk[VEKTA_MAX_AXES];
    double pos[VEKTA_MAX_AXES], vel[VEKTA_MAX_AXES], acc[VEKTA_MAX_AXES];
};

// kSetSize arms of `axes` axes, each made of the axes of the next drawn
// six-axis position motions (all starts) in turn; arm k of six axes is motion k.
std::vector<Arm> drawArms(int axes) {
    const std::size_t perArm = static_cast<std::size_t>((axes + 5) / 6);
    const std::vector<Motion> six = drawSet(6, Mode::Position, Starts::All, kSetSize * perArm);
    std::vector<Arm> set(kSetSize);
    for (std::size_t k = 0; k < kSetSize; ++k) {
        Arm& a = set[k];
        a.axes = axes;
        for (int i = 0; i < axes; ++i) {
            const Motion& m = six[k * perArm + static_cast<std::size_t>(i / 6)];
            const int j = i % 6;
            a.target[i] = m.tgt[j];
            a.maxVel[i] = m.maxVel[j];
            a.maxAcc[i] = m.maxAcc[j];
            a.maxJerk[i] = m.maxAcc[j] * m.jerkRatio;
            a.pos[i] = m.pos[j];
            a.vel[i] = m.vel[j];
            a.acc[i] = m.acc[j];
        }
    }
    return set;
}

double seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

// The targets, by benchmark name.
const char* targetOf(const std::string& name) {
    static const char* const targets[][2] = {
        {"plan/position/axes:1/start:all", "target: mean <= 0.5 us"},
        {"plan/position/axes:6/start:rest", "target: mean <= 4.5 us, max <= 40 us"},
        {"plan/position/axes:6/start:moving", "target: mean <= 4.5 us, max <= 40 us"},
        {"plan/stop/axes:6/start:all", "target: mean <= 1.0 us"},
        {"sample/position/axes:6/start:all", "target: <= 5 ns per sample"},
        {"move/axes:6/start:all", "target: mean <= 1.15 x plan/position/axes:6/start:all/recovery/output:off"},
    };
    for (const auto& t : targets) {
        if (name == t[0]) return t[1];
    }
    return "";
}

// One iteration plans one element of the set, in turn, with planOne; axes,
// when not 0, adds the mean per axis.
template <class Element, class Plan>
void timeEach(benchmark::State& state, const std::vector<Element>& set, Plan planOne, const char* target,
              int axes = 0) {
    std::vector<double> best(set.size(), 1e300);
    double total = 0.0, slowestCall = 0.0;
    std::size_t k = 0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        const bool ok = planOne(set[k]);
        const double s = seconds(Clock::now() - t0);
        benchmark::DoNotOptimize(ok);
        state.SetIterationTime(s);
        total += s;
        best[k] = std::min(best[k], s);
        slowestCall = std::max(slowestCall, s);
        if (++k == set.size()) k = 0;
    }
    double worst = 0.0, bestSum = 0.0;
    int timed = 0;
    for (double b : best) {
        if (b >= 1e300) continue;
        worst = std::max(worst, b);
        bestSum += b;
        ++timed;
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["mean_us"] = total / n * 1e6;
    state.counters["mean_of_best_us"] = timed > 0 ? bestSum / timed * 1e6 : 0.0;
    state.counters["worst_motion_us"] = worst * 1e6;
    state.counters["slowest_call_us"] = slowestCall * 1e6;
    state.counters["motions"] = timed;
    if (axes > 0) state.counters["mean_us_per_axis"] = total / n * 1e6 / axes;
    state.SetLabel(target);
}

// One iteration plans one motion of the set, in turn.
void planTimes(benchmark::State& state, const std::vector<Motion>& set, const char* target) {
    timeEach(state, set, plan, target);
}

// The same with recovery mode on: the plan check after every update, and a
// second attempt for the axes whose plan fails by default.
void planTimesRecovering(benchmark::State& state, const std::vector<Motion>& set) {
    vektaSetRecovery(true);
    planTimes(state, set, "");
    vektaSetRecovery(false);
}

// The same on a planner of its own with its output off: no line is formatted.
void planTimesOutputOff(benchmark::State& state, const std::vector<Motion>& set) {
    quietPlanner = vektaPlannerCreate();
    vektaPlannerOutputOff(quietPlanner);
    planTimes(state, set, "");
    vektaPlannerDestroy(quietPlanner);
    quietPlanner = nullptr;
}

// The handle form with recovery on, on a new planner (output off): Move's twin.
void planTimesRecoveringOutputOff(benchmark::State& state, const std::vector<Motion>& set) {
    quietPlanner = vektaPlannerCreate();
    vektaPlannerSetRecovery(quietPlanner, 1);
    timeEach(state, set, plan, "", 6);
    vektaPlannerDestroy(quietPlanner);
    quietPlanner = nullptr;
}

// vektaPlannerMove on a new planner (output off).
void moveTimes(benchmark::State& state, const std::vector<Arm>& set) {
    VektaPlanner* planner = vektaPlannerCreate();
    const std::string name = "move/axes:" + std::to_string(set.front().axes) + "/start:all";
    timeEach(
        state, set,
        [planner](const Arm& a) {
            return vektaPlannerMove(planner, a.axes, a.target, a.maxVel, a.maxAcc, a.maxJerk, a.pos, a.vel,
                                    a.acc) == VEKTA_OK;
        },
        targetOf(name), set.front().axes);
    vektaPlannerDestroy(planner);
}

// One iteration samples one planned motion of the set to its end, every axis
// once per period; the update before it is not timed.
void sampleTimes(benchmark::State& state, const std::vector<Motion>& set, const char* target) {
    double total = 0.0;
    long samples = 0;
    std::size_t k = 0;
    double pos = 0.0, vel = 0.0, acc = 0.0;
    for (auto _ : state) {
        while (!plan(set[k])) k = (k + 1) % set.size();
        const Motion& m = set[k];
        long calls = 0;
        const auto t0 = Clock::now();
        bool done = false;
        for (int period = 0; !done && period < kMaxPeriods; ++period) {
            done = true;
            for (int i = 0; i < m.axes; ++i) {
                int count = 0;
                done &= vektaPositionModePerFreedom(i, 1, &pos, &vel, &acc, count) == 1;
                benchmark::DoNotOptimize(pos);
            }
            calls += m.axes;
        }
        const double s = seconds(Clock::now() - t0);
        state.SetIterationTime(s);
        total += s;
        samples += calls;
        k = (k + 1) % set.size();
    }
    state.SetItemsProcessed(samples);
    state.counters["ns_per_sample"] = total / static_cast<double>(samples) * 1e9;
    state.SetLabel(target);
}

void registerAll() {
    static const char* const startNames[4] = {"rest", "moving", "beyond", "all"};
    static std::deque<std::vector<Motion>> sets;  // grows without moving: the benchmarks keep references
    for (int axes : {1, 6}) {
        for (int s = 0; s < 4; ++s) {
            sets.push_back(drawSet(axes, Mode::Position, static_cast<Starts>(s)));
            const std::string name = "plan/position/axes:" + std::to_string(axes) + "/start:" + startNames[s];
            benchmark::RegisterBenchmark(name.c_str(), planTimes, std::cref(sets.back()),
                                         targetOf(name))
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
            benchmark::RegisterBenchmark((name + "/recovery").c_str(), planTimesRecovering, std::cref(sets.back()))
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
            if (s != static_cast<int>(Starts::All)) continue;
            benchmark::RegisterBenchmark((name + "/output:off").c_str(), planTimesOutputOff, std::cref(sets.back()))
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
            if (axes != 6) continue;
            benchmark::RegisterBenchmark((name + "/recovery/output:off").c_str(), planTimesRecoveringOutputOff,
                                         std::cref(sets.back()))
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
        }
    }
    static std::deque<std::vector<Arm>> arms;
    for (int axes : {6, 7, 16}) {
        arms.push_back(drawArms(axes));
        benchmark::RegisterBenchmark(("move/axes:" + std::to_string(axes) + "/start:all").c_str(), moveTimes,
                                     std::cref(arms.back()))
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
    for (int axes : {1, 6}) {
        sets.push_back(drawSet(axes, Mode::Velocity, Starts::All));
        const std::string name = "plan/stop/axes:" + std::to_string(axes) + "/start:all";
        benchmark::RegisterBenchmark(name.c_str(), planTimes, std::cref(sets.back()), targetOf(name))
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((name + "/recovery").c_str(), planTimesRecovering, std::cref(sets.back()))
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
    for (int axes : {1, 6}) {
        sets.push_back(drawSet(axes, Mode::Position, Starts::All));
        const std::string name = "sample/position/axes:" + std::to_string(axes) + "/start:all";
        benchmark::RegisterBenchmark(name.c_str(), sampleTimes, std::cref(sets.back()), targetOf(name))
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
    // A single-axis plan reports every sample that lies below zero or falls
    // back towards it; the same moves from 0 upwards show the sampler alone.
    std::vector<Motion> upwards = drawSet(1, Mode::Position, Starts::Rest);
    for (Motion& m : upwards) {
        m.tgt[0] = std::fabs(m.tgt[0] - m.pos[0]);
        m.pos[0] = 0.0;
    }
    sets.push_back(upwards);
    benchmark::RegisterBenchmark("sample/position/axes:1/start:rest-from-zero-upwards", sampleTimes,
                                 std::cref(sets.back()), "")
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    registerAll();

    // The library's prints to /dev/null, the report to where stdout was.
    std::fflush(stdout);
    const int reportFd = dup(STDOUT_FILENO);
    const int devNull = open("/dev/null", O_WRONLY);
    if (reportFd < 0 || devNull < 0) return 1;
    const bool colour = isatty(reportFd) != 0;
    dup2(devNull, STDOUT_FILENO);
    close(devNull);
    __gnu_cxx::stdio_filebuf<char> reportBuf(reportFd, std::ios::out);
    std::ostream report(&reportBuf);

    benchmark::ConsoleReporter console(colour ? benchmark::ConsoleReporter::OO_ColorTabular
                                              : benchmark::ConsoleReporter::OO_Tabular);
    console.SetOutputStream(&report);
    console.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&console);
    benchmark::Shutdown();
    report.flush();
    return 0;
}
