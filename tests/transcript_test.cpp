// The transcript: everything the library prints and returns for a fixed set of
// seeded motions, pinned by a digest kept beside this file.
//
// A few hundred motions (1 and 6 axes; from rest, moving, beyond the velocity
// or the acceleration limit; position updates, stops, conveyor catch-ups,
// re-plans half-way, traced plans, batch sampling and refused updates) run
// through the exported functions, one after the other in one process. Every
// call is written down: its result, the text it printed, the plan check's
// verdict, the left time and every sample as exact bits. The transcript is cut
// into units and hashed; transcript.digest holds the hashes (see
// support/transcript.h for the format, and for how a mismatch is shown and a
// deliberate change recorded).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "support/transcript.h"
#include "vekta/vekta.h"
#ifdef VEKTA_TRANSCRIPT_BASELINE  // the same motions planned by the baseline copy of the core
#include "planner/planning_copy.h"
#endif

namespace vekta::test {
namespace {

constexpr int kMotions = 320;
constexpr int kMaxPeriods = 6000;  // 30 s: beyond every drawn motion

struct Rng {
    std::uint64_t s;
    std::uint64_t next() {
        std::uint64_t z = (s += 0x9e3779b97f4a7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return z ^ (z >> 31);
    }
    double uniform(double lo, double hi) { return lo + (hi - lo) * static_cast<double>(next() >> 11) * 0x1.0p-53; }
    double sign() { return (next() & 1) ? 1.0 : -1.0; }
};

enum Kind { Position, Velocity, Conveyor };
enum Start { Rest, Moving, OverVel, OverAcc };
const char* const kKindName[] = {"position", "velocity", "conveyor"};
const char* const kStartName[] = {"rest", "moving", "over-velocity", "over-acceleration"};

struct Motion {
    Kind kind;
    Start start;
    int n;              // the axis count passed (sometimes neither 1 nor 6)
    int batch;          // samples per sampling call
    bool trace, replan;
    double ratio, conveyorVel, conveyorLimit, spare;
    double pos[6], vel[6], acc[6], tgt[6], maxVel[6], maxAcc[6], replanTgt[6];
};

// Motion i: the classes cycle so that every combination is drawn many times.
Motion drawMotion(int i) {
    Rng rng{0x5eed0000ull + static_cast<std::uint64_t>(i) * 0x9e3779b97f4a7c15ull};
    rng.next();
    Motion m{};
    m.kind = i % 9 < 5 ? Position : (i % 9 < 8 ? Velocity : Conveyor);
    m.start = m.kind == Conveyor ? Rest : static_cast<Start>((i / 9) % 4);
    m.n = (i / 2) % 2 ? 6 : 1;
    if (i % 97 == 41) m.n = i % 2 ? 0 : 3;  // refused before anything is read
    m.batch = i % 11 == 3 ? 7 : 1;
    m.trace = i % 13 == 5;
    m.replan = m.kind == Position && i % 7 == 2;
    m.ratio = rng.uniform(2.0, 40.0);
    m.conveyorVel = rng.uniform(0.05, 0.5);
    m.conveyorLimit = i % 4 == 0 ? 0.3 : 50.0;
    m.spare = i % 8 == 7 ? 0.001 : 0.01;
    for (int a = 0; a < 6; ++a) {
        const double V = rng.uniform(0.3, 4.0), A = rng.uniform(0.5, 20.0), J = A * m.ratio;
        m.maxVel[a] = V;
        m.maxAcc[a] = A;
        // Single-axis moves stay mostly on the positive side (the sampler
        // reports every sample that falls back towards zero).
        m.pos[a] = m.n == 1 && rng.uniform(0.0, 1.0) < 0.8 ? rng.uniform(0.5, 4.0) : rng.uniform(-3.0, 3.0);
        const double kind = rng.uniform(0.0, 1.0);
        const double dist = kind < 0.05 ? 0.0 : (kind < 0.15 ? rng.uniform(0.0, 1e-3) : rng.uniform(0.0, 3.0));
        m.tgt[a] = m.pos[a] + rng.sign() * dist;
        m.replanTgt[a] = m.tgt[a] + rng.sign() * rng.uniform(0.0, 2.0);
        if (m.start == Moving) {
            m.acc[a] = rng.sign() * rng.uniform(0.01, 0.95) * A;
            while (m.acc[a] * m.acc[a] / (2.0 * J) > 0.9 * V) m.acc[a] *= 0.5;
            const double drift = m.acc[a] * std::fabs(m.acc[a]) / (2.0 * J);
            m.vel[a] = rng.uniform(0.95 * std::fmax(-V, -V - drift), 0.95 * std::fmin(V, V - drift));
        } else if (m.start == OverVel) {
            m.vel[a] = rng.sign() * rng.uniform(1.01, 1.5) * V;
            m.acc[a] = rng.sign() * rng.uniform(0.0, 0.95) * A;
        } else if (m.start == OverAcc) {
            m.vel[a] = rng.sign() * rng.uniform(0.0, 0.9) * V;
            m.acc[a] = rng.sign() * rng.uniform(1.01, 1.5) * A;
        }
    }
    return m;
}

// The update of `m` from its state to `tgt`, as the transcript shows it.
std::string describe(const Motion& m, const double* tgt) {
    std::ostringstream s;
    s << "update " << kKindName[m.kind] << " n " << m.n << " ratio " << bits(m.ratio);
    if (m.kind == Conveyor) {
        s << " conveyor " << bits(m.conveyorVel) << " limit " << bits(m.conveyorLimit) << " spare " << bits(m.spare);
    }
    const int axes = m.n == 1 ? 1 : 6;
    for (int a = 0; a < axes; ++a) {
        s << "\n  axis " << a << " p " << bits(m.pos[a]) << " v " << bits(m.vel[a]) << " a " << bits(m.acc[a])
          << " target " << bits(tgt[a]) << " V " << bits(m.maxVel[a]) << " A " << bits(m.maxAcc[a]);
    }
    return s.str();
}

bool callUpdate(const Motion& m, const double* tgt) {
    if (m.kind == Conveyor) {
        return vektaPostionModeParaUpdConveyor(m.n, m.conveyorVel, m.conveyorLimit, tgt, m.maxVel, m.maxAcc, m.ratio,
                                               m.spare);
    }
    return m.kind == Position
               ? vektaPostionModeParaUpd(m.n, tgt, m.maxVel, m.maxAcc, m.ratio, m.pos, m.vel, m.acc, m.spare)
               : vektaVelocityModeParaUpd(m.n, m.maxVel, m.maxAcc, m.ratio, m.pos, m.vel, m.acc, m.spare);
}

// Plans one motion and samples every axis period by period until all have
// finished (a refused plan: one round of calls); a re-plan motion makes a new
// position update from the sampled state half-way.
std::vector<std::string> runMotion(int index, Output& out, std::string& problems) {
    Motion m = drawMotion(index);  // its state follows the samples
    const std::string name = "motion " + std::to_string(index);
    Recorder rec(out);
    rec.units.push_back(name + " " + kKindName[m.kind] + " from " + kStartName[m.start] + (m.trace ? " traced" : "") +
                        "\n");
    setTestLevel(m.trace);
    bool ok = callUpdate(m, m.tgt);
    rec.update(describe(m, m.tgt), ok);
    // Every plan made from within the limits is a valid curve: the plan check
    // integrates each section and holds it to the limits and the end state.
    char why[200];
    if (ok && m.start <= Moving && vektaCheckPlan(why, sizeof why) != VEKTA_CHECK_OK) {
        problems += name + ": " + why + "\n";
    }
    if (m.start == Rest && m.kind != Conveyor && (m.n == 1 || m.n == 6) && !ok) {
        problems += name + ": refused from rest\n";
    }
    const int axes = m.n == 6 ? 6 : 1;
    int replanAt = m.replan ? static_cast<int>(getLeftMoveTime() / 0.005 / 2.0) : kMaxPeriods;
    for (int period = 0; period < kMaxPeriods; period += m.batch) {
        if (period >= replanAt && ok) {
            replanAt = kMaxPeriods;
            ok = callUpdate(m, m.replanTgt);
            rec.update("re-plan: " + describe(m, m.replanTgt), ok);
        }
        bool all = true;
        for (int a = 0; a < axes; ++a) {
            all &= rec.sample(a, m.batch, m.kind == Velocity, m.pos[a], m.vel[a], m.acc[a]) == 1;
        }
        if (!ok || all) break;
    }
    rec.flushAll();
    setTestLevel(false);
    problems += rec.problems;
    return rec.units;
}

TEST(Transcript, EveryMotionPrintsAndReturnsExactlyWhatItDidWhenPinned) {
#ifdef VEKTA_TRANSCRIPT_BASELINE
    ASSERT_FALSE(planningCopyIsFma()) << "VEKTA_PLANNING_COPY=baseline must force the baseline copy";
#endif
    std::vector<std::vector<std::string>> transcripts;
    std::string problems;
    {
        Output out;
        for (int i = 0; i < kMotions; ++i) transcripts.push_back(runMotion(i, out, problems));
    }
    EXPECT_EQ(problems, "");
    expectMatchesDigest(transcripts, VEKTA_TRANSCRIPT_DIGEST);
}

}  // namespace
}  // namespace vekta::test
