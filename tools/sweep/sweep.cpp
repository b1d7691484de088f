#include "sweep.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "double_s.h"
#include "vekta/vekta.h"

namespace vekta::sweep {

namespace {

constexpr double kPeriod = 0.005;
constexpr double kLimitRel = 1e-6;    // relative slack on |v| <= V, |a| <= A, |da| <= J T
constexpr double kLimitAbs = 1e-9;
constexpr double kTargetTol = 1e-6;   // position of the last sample, relative to max(1, |target|)
constexpr double kRestTol = 1e-9;     // velocity and acceleration of the last sample
constexpr double kMinimalRel = 1e-6;  // planned duration against the double-S optimum
constexpr int kMaxPeriods = 40000;    // 200 s: far beyond any drawn motion

// splitmix64: a small, well-mixed generator; one stream per motion index.
struct Rng {
    std::uint64_t s;
    std::uint64_t next() {
        std::uint64_t z = (s += 0x9e3779b97f4a7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return z ^ (z >> 31);
    }
    double uniform(double lo, double hi) {
        return lo + (hi - lo) * static_cast<double>(next() >> 11) * 0x1.0p-53;
    }
    double sign() { return (next() & 1) ? 1.0 : -1.0; }
};

bool within(double x, double limit) { return std::fabs(x) <= limit * (1.0 + kLimitRel) + kLimitAbs; }

// A state from which the velocity limit can be kept: within it now, and still
// within it once the acceleration has been ramped to zero at full jerk (the
// velocity keeps changing by a|a|/(2J) on the way, whatever the planner does).
bool recoverable(double v, double a, double V, double J) {
    return within(v, V) && within(v + a * std::fabs(a) / (2.0 * J), V);
}

}  // namespace

const char* failureName(int kind) {
    static const char* const names[kFailureKinds] = {
        "rejected",         "no-end",           "not-synchronised", "off-target",
        "velocity-limit",   "acceleration-limit", "jerk-limit",     "not-minimal"};
    return kind >= 0 && kind < kFailureKinds ? names[kind] : "?";
}

const char* checkCodeName(int code) {
    static const char* const names[kCheckCodes] = {
        "ok",           "no-plan",   "conveyor-refused", "point-count", "not-finite",
        "bad-limit",    "time-back", "discontinuous",    "jerk-limit",  "acc-limit",
        "vel-limit",    "end-state", "end-time"};
    return code >= 0 && code < kCheckCodes ? names[code] : "?";
}

bool Outcome::any() const { return std::any_of(failed, failed + kFailureKinds, [](bool b) { return b; }); }

Motion drawMotion(std::uint64_t seed, std::uint64_t index) {
    Rng rng{seed * 0x100000001b3ull ^ (index + 1) * 0x9e3779b97f4a7c15ull};
    rng.next();
    Motion m{};
    m.axes = (rng.next() & 1) ? 6 : 1;
    m.mode = rng.uniform(0.0, 1.0) < 0.7 ? Mode::Position : Mode::Velocity;
    const double c = rng.uniform(0.0, 1.0);
    m.start = c < 0.4 ? StartClass::Rest : (c < 0.8 ? StartClass::Moving : StartClass::Beyond);
    m.jerkRatio = rng.uniform(2.0, 40.0);
    for (int i = 0; i < 6; ++i) {
        const double V = rng.uniform(0.2, 4.0), A = rng.uniform(0.5, 20.0);
        m.maxVel[i] = V;
        m.maxAcc[i] = A;
        m.pos[i] = rng.uniform(-3.0, 3.0);
        // Mostly real moves, sometimes tiny ones and sometimes none at all.
        const double kind = rng.uniform(0.0, 1.0);
        const double dist = kind < 0.05 ? 0.0 : (kind < 0.15 ? rng.uniform(0.0, 1e-3) : rng.uniform(0.0, 6.0));
        m.tgt[i] = m.pos[i] + rng.sign() * dist;
        switch (m.start) {
            case StartClass::Rest:
                break;
            case StartClass::Moving: {
                // Within the limits and able to stay there: once the
                // acceleration is ramped to zero the velocity is still within
                // V (otherwise no jerk-limited motion can avoid passing V).
                m.acc[i] = rng.sign() * rng.uniform(0.01, 0.95) * A;
                const double J = A * m.jerkRatio;
                while (m.acc[i] * m.acc[i] / (2.0 * J) > 0.9 * V) m.acc[i] *= 0.5;
                const double drift = m.acc[i] * std::fabs(m.acc[i]) / (2.0 * J);
                m.vel[i] = rng.uniform(0.95 * std::max(-V, -V - drift), 0.95 * std::min(V, V - drift));
                break;
            }
            case StartClass::Beyond: {
                const double which = rng.uniform(0.0, 1.0);
                const bool overVel = which < 0.67, overAcc = which >= 0.33;
                m.vel[i] = (overVel ? rng.uniform(1.01, 1.5) : rng.uniform(-0.95, 0.95)) * V * rng.sign();
                m.acc[i] = (overAcc ? rng.uniform(1.01, 1.5) : rng.uniform(0.0, 0.95)) * A * rng.sign();
                break;
            }
        }
    }
    return m;
}

Outcome runMotion(const Motion& m) {
    Outcome o{};
    const bool ok =
        m.mode == Mode::Position
            ? vektaPostionModeParaUpd(m.axes, m.tgt, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel, m.acc, 0.0)
            : vektaVelocityModeParaUpd(m.axes, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel, m.acc, 0.0);
    o.checkCode = vektaCheckPlan(nullptr, 0);
    if (!ok) {
        o.failed[kRejected] = true;
        return o;
    }
    o.plannedTime = getLeftMoveTime();

    if (m.axes == 1 && m.mode == Mode::Position && m.start == StartClass::Rest && m.tgt[0] != m.pos[0]) {
        const double J = m.maxAcc[0] * m.jerkRatio;
        const double best = doubleSDuration(std::fabs(m.tgt[0] - m.pos[0]), m.maxVel[0], m.maxAcc[0], J);
        o.minimalError = std::fabs(o.plannedTime - best);
        if (!(o.minimalError <= kMinimalRel * std::max(1.0, best))) o.failed[kNotMinimal] = true;
    }

    int finishedAt[6];
    double lastPos[6] = {}, lastVel[6] = {}, lastAcc[6] = {}, prevAcc[6];
    bool velInside[6], accInside[6];
    for (int i = 0; i < m.axes; ++i) {
        finishedAt[i] = -1;
        prevAcc[i] = m.acc[i];
        // A start beyond a limit is brought back first; from then on it must hold.
        velInside[i] = recoverable(m.vel[i], m.acc[i], m.maxVel[i], m.maxAcc[i] * m.jerkRatio);
        accInside[i] = within(m.acc[i], m.maxAcc[i]);
    }
    int remaining = m.axes;
    int period = 0;
    while (remaining > 0 && period < kMaxPeriods) {
        ++period;
        for (int i = 0; i < m.axes; ++i) {
            if (finishedAt[i] >= 0) continue;
            double p, v, a;
            int count = 0;
            const int done = vektaPositionModePerFreedom(i, 1, &p, &v, &a, count);
            if (count != 1) {
                o.failed[kNoEnd] = true;
                return o;
            }
            const double J = m.maxAcc[i] * m.jerkRatio;
            velInside[i] = velInside[i] || recoverable(v, a, m.maxVel[i], J);
            accInside[i] = accInside[i] || within(a, m.maxAcc[i]);
            if (velInside[i] && !within(v, m.maxVel[i])) o.failed[kVelocityLimit] = true;
            if (accInside[i] && !within(a, m.maxAcc[i])) o.failed[kAccelerationLimit] = true;
            if (!within(a - prevAcc[i], J * kPeriod)) o.failed[kJerkLimit] = true;
            prevAcc[i] = a;
            lastPos[i] = p;
            lastVel[i] = v;
            lastAcc[i] = a;
            if (done) {
                finishedAt[i] = period;
                --remaining;
            }
        }
    }
    o.periods = period;
    if (remaining > 0) {
        o.failed[kNoEnd] = true;
        return o;
    }
    for (int i = 0; i < m.axes; ++i) {
        if (finishedAt[i] != finishedAt[0]) o.failed[kNotSynchronised] = true;
        const bool atRest = std::fabs(lastVel[i]) <= kRestTol && std::fabs(lastAcc[i]) <= kRestTol;
        const bool onTarget = m.mode == Mode::Velocity ||
                              std::fabs(lastPos[i] - m.tgt[i]) <= kTargetTol * std::max(1.0, std::fabs(m.tgt[i]));
        if (!atRest || !onTarget) o.failed[kOffTarget] = true;
    }
    return o;
}

void Summary::add(std::uint64_t index, const Motion& m, const Outcome& o) {
    ++cases;
    ClassTally& t = byClass[static_cast<int>(m.start)][static_cast<int>(m.mode)];
    ++t.cases;
    const bool accepted = !o.failed[kRejected] && !o.failed[kNoEnd];
    t.accepted += accepted;
    t.synchronised += accepted && !o.failed[kNotSynchronised];
    t.onTarget += accepted && !o.failed[kOffTarget];
    t.withinLimits += accepted && !o.failed[kVelocityLimit] && !o.failed[kAccelerationLimit] &&
                      !o.failed[kJerkLimit];
    t.clean += !o.any();
    const bool checked = o.checkCode == 0;
    t.checked += checked;
    if (o.checkCode >= 0 && o.checkCode < kCheckCodes) ++t.byCheckCode[o.checkCode];
    t.checkedNotClean += checked && o.any();
    t.cleanNotChecked += !checked && !o.any();
    worstMinimalError = std::max(worstMinimalError, o.minimalError);
    for (int k = 0; k < kFailureKinds; ++k) {
        if (!o.failed[k]) continue;
        ++failures[k];
        keepExample(index, k);
    }
    // An accepted plan the check refuses: keep one of each code as well.
    if (!o.failed[kRejected] && !checked) keepExample(index, kFailureKinds + o.checkCode);
}

void Summary::keepExample(std::uint64_t index, int kind) {
    if (examples >= kKeptExamples) return;
    // Keep the first example of each kind before a second of any.
    for (int e = 0; e < examples; ++e) {
        if (exampleKind[e] == kind) return;
    }
    exampleIndex[examples] = index;
    exampleKind[examples] = kind;
    ++examples;
}

std::string replayCommand(const char* program, std::uint64_t seed, std::uint64_t index) {
    return std::string(program) + " --seed " + std::to_string(seed) + " --case " + std::to_string(index);
}

void printMotion(std::FILE* out, const Motion& m) {
    std::fprintf(out, "%s update, %d axes, jerk ratio %.17g\n",
                 m.mode == Mode::Position ? "position" : "velocity", m.axes, m.jerkRatio);
    for (int i = 0; i < m.axes; ++i) {
        std::fprintf(out, "  axis %d: pos %.17g vel %.17g acc %.17g target %.17g maxVel %.17g maxAcc %.17g\n", i,
                     m.pos[i], m.vel[i], m.acc[i], m.tgt[i], m.maxVel[i], m.maxAcc[i]);
    }
}

void printSummary(std::FILE* out, const Summary& s, const char* program) {
    static const char* const classNames[kStartClasses] = {"rest", "moving", "beyond"};
    static const char* const modeNames[kModes] = {"position", "velocity"};
    std::fprintf(out, "sweep: seed %llu, %ld motions\n", static_cast<unsigned long long>(s.seed), s.cases);
    std::fprintf(out, "%-7s %-9s %8s %9s %13s %10s %14s %8s\n", "start", "mode", "cases", "accepted",
                 "synchronised", "on-target", "within-limits", "clean");
    for (int c = 0; c < kStartClasses; ++c) {
        for (int md = 0; md < kModes; ++md) {
            const ClassTally& t = s.byClass[c][md];
            if (t.cases == 0) continue;
            auto pct = [&](long n) { return 100.0 * static_cast<double>(n) / static_cast<double>(t.cases); };
            std::fprintf(out, "%-7s %-9s %8ld %8.2f%% %12.2f%% %9.2f%% %13.2f%% %7.2f%%\n", classNames[c],
                         modeNames[md], t.cases, pct(t.accepted), pct(t.synchronised), pct(t.onTarget),
                         pct(t.withinLimits), pct(t.clean));
        }
    }
    std::fprintf(out, "plan check (vektaCheckPlan right after the update):\n");
    std::fprintf(out, "%-7s %-9s %8s %8s %12s %12s  %s\n", "start", "mode", "cases", "pass", "pass-unclean",
                 "clean-refused", "codes of the refused plans");
    for (int c = 0; c < kStartClasses; ++c) {
        for (int md = 0; md < kModes; ++md) {
            const ClassTally& t = s.byClass[c][md];
            if (t.cases == 0) continue;
            std::fprintf(out, "%-7s %-9s %8ld %7.2f%% %12ld %12ld ", classNames[c], modeNames[md], t.cases,
                         100.0 * static_cast<double>(t.checked) / static_cast<double>(t.cases), t.checkedNotClean,
                         t.cleanNotChecked);
            for (int code = 1; code < kCheckCodes; ++code) {
                if (t.byCheckCode[code] > 0) std::fprintf(out, " %s %ld", checkCodeName(code), t.byCheckCode[code]);
            }
            std::fprintf(out, "\n");
        }
    }
    std::fprintf(out, "failures by kind:");
    for (int k = 0; k < kFailureKinds; ++k) std::fprintf(out, " %s %ld", failureName(k), s.failures[k]);
    std::fprintf(out, "\nworst single-axis rest-to-rest duration error: %.3g s\n", s.worstMinimalError);
    if (s.examples > 0) {
        std::fprintf(out, "first failing inputs:\n");
        for (int e = 0; e < s.examples; ++e) {
            const int kind = s.exampleKind[e];
            const std::string name = kind < kFailureKinds ? failureName(kind)
                                                          : std::string("check ") + checkCodeName(kind - kFailureKinds);
            std::fprintf(out, "  %-18s %s\n", name.c_str(),
                         replayCommand(program, s.seed, s.exampleIndex[e]).c_str());
        }
    }
}

QuietStdout::QuietStdout() : savedFd_(-1), saved_(nullptr) {
    std::fflush(stdout);
    savedFd_ = dup(STDOUT_FILENO);
    const int devNull = open("/dev/null", O_WRONLY);
    if (devNull >= 0) {
        dup2(devNull, STDOUT_FILENO);
        close(devNull);
    }
    saved_ = savedFd_ >= 0 ? fdopen(dup(savedFd_), "w") : stderr;
}

QuietStdout::~QuietStdout() {
    std::fflush(stdout);
    if (saved_ != nullptr && saved_ != stderr) std::fclose(saved_);
    if (savedFd_ >= 0) {
        dup2(savedFd_, STDOUT_FILENO);
        close(savedFd_);
    }
}

}  // namespace vekta::sweep
