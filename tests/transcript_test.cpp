// The transcript: everything the library prints and returns for a fixed set of
// seeded motions, pinned by a digest kept beside this file.
//
// A few hundred motions (1 and 6 axes; from rest, moving, beyond the velocity
// or the acceleration limit; position updates, stops, conveyor catch-ups,
// re-plans half-way, traced plans, batch sampling and refused updates) run
// through the exported functions, one after the other in one process. Every
// call is written down: its result, the text it printed, the plan check's
// verdict, the left time and every sample as exact bits. The transcript is cut
// into units (an update with what follows it; up to kChunk sampling calls of
// one axis) and each unit is hashed; transcript.digest holds the hashes.
//
// Any change of output fails the test, which names the first motion and unit
// that differ, shows the unit and writes the motion's whole transcript to a
// file. A deliberate change is recorded with VEKTA_TRANSCRIPT_UPDATE=1, in a
// commit that says why the output changed; VEKTA_TRANSCRIPT_DUMP=DIR writes every
// motion's transcript, so that two builds can be compared with diff.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "vekta/vekta.h"

namespace {

constexpr int kMotions = 320;
constexpr int kChunk = 32;        // sampling calls of one axis per unit
constexpr int kMaxPeriods = 6000;  // 30 s: beyond every drawn motion

std::uint64_t fnv(std::uint64_t h, const void* data, std::size_t n) {
    const auto* p = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < n; ++i) h = (h ^ p[i]) * 0x100000001b3ull;
    return h;
}
constexpr std::uint64_t kFnvSeed = 0xcbf29ce484222325ull;

std::string bits(double x) {
    std::uint64_t b;
    std::memcpy(&b, &x, sizeof b);
    char s[40];
    std::snprintf(s, sizeof s, "%016" PRIx64 "(%.9g)", b, x);
    return s;
}

// Everything the library writes to standard output goes to a file; after each
// call the new bytes are read back.
class Output {
public:
    Output() {
        std::fflush(stdout);
        std::snprintf(path_, sizeof path_, "/tmp/vekta-transcript-XXXXXX");
        fd_ = mkstemp(path_);
        saved_ = dup(STDOUT_FILENO);
        dup2(fd_, STDOUT_FILENO);
    }
    ~Output() {
        std::fflush(stdout);
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
        close(fd_);
        unlink(path_);
    }
    std::string take() {
        std::fflush(stdout);
        std::string s;
        char buf[4096];
        for (ssize_t n; (n = pread(fd_, buf, sizeof buf, offset_)) > 0; offset_ += n) s.append(buf, n);
        return s;
    }

private:
    char path_[64];
    int fd_, saved_;
    off_t offset_ = 0;
};

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
    bool chance(double p) { return uniform(0.0, 1.0) < p; }
};

enum class Kind { Position, Velocity, Conveyor };
enum class Start { Rest, Moving, OverVel, OverAcc };
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
    m.kind = i % 9 < 5 ? Kind::Position : (i % 9 < 8 ? Kind::Velocity : Kind::Conveyor);
    m.start = m.kind == Kind::Conveyor ? Start::Rest : static_cast<Start>((i / 9) % 4);
    m.n = (i / 2) % 2 ? 6 : 1;
    if (i % 97 == 41) m.n = i % 2 ? 0 : 3;  // refused before anything is read
    m.batch = i % 11 == 3 ? 7 : 1;
    m.trace = i % 13 == 5;
    m.replan = m.kind == Kind::Position && i % 7 == 2;
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
        m.pos[a] = m.n == 1 && rng.chance(0.8) ? rng.uniform(0.5, 4.0) : rng.uniform(-3.0, 3.0);
        const double kind = rng.uniform(0.0, 1.0);
        const double dist = kind < 0.05 ? 0.0 : (kind < 0.15 ? rng.uniform(0.0, 1e-3) : rng.uniform(0.0, 3.0));
        m.tgt[a] = m.pos[a] + rng.sign() * dist;
        m.replanTgt[a] = m.tgt[a] + rng.sign() * rng.uniform(0.0, 2.0);
        switch (m.start) {
            case Start::Rest:
                break;
            case Start::Moving: {
                m.acc[a] = rng.sign() * rng.uniform(0.01, 0.95) * A;
                while (m.acc[a] * m.acc[a] / (2.0 * J) > 0.9 * V) m.acc[a] *= 0.5;
                const double drift = m.acc[a] * std::fabs(m.acc[a]) / (2.0 * J);
                m.vel[a] = rng.uniform(0.95 * std::fmax(-V, -V - drift), 0.95 * std::fmin(V, V - drift));
                break;
            }
            case Start::OverVel:
                m.vel[a] = rng.sign() * rng.uniform(1.01, 1.5) * V;
                m.acc[a] = rng.sign() * rng.uniform(0.0, 0.95) * A;
                break;
            case Start::OverAcc:
                m.vel[a] = rng.sign() * rng.uniform(0.0, 0.9) * V;
                m.acc[a] = rng.sign() * rng.uniform(1.01, 1.5) * A;
                break;
        }
    }
    return m;
}

// The transcript of one motion: its units, in the order they were written.
class Recorder {
public:
    explicit Recorder(Output& out) : out_(out) {}
    std::vector<std::string> units;

    void note(const std::string& s) { units.push_back(s); }

    // An update: its result, what it printed, the plan check and the left time.
    void update(const std::string& call, bool ok) {
        flushAll();
        char why[200];
        const int code = vektaCheckPlan(why, sizeof why);
        units.push_back(call + " -> " + std::to_string(ok) + "\n" + out_.take() + "\ncheck " +
                        std::to_string(code) + " " + why + "\nleft " + bits(getLeftMoveTime()) + "\n");
    }

    // One sampling call of one axis, added to that axis's open unit.
    // The last sample written is left in (pos, vel, acc).
    int sample(int axis, int nSamples, bool velocityName, double& pos, double& vel, double& acc) {
        double p[8], v[8], a[8];
        for (int k = 0; k < 8; ++k) p[k] = v[k] = a[k] = -7.0;
        int count = -1;
        const int done = velocityName ? vektaVelocityModePerFreedom(axis, nSamples, p, v, a, count)
                                      : vektaPositionModePerFreedom(axis, nSamples, p, v, a, count);
        std::string& u = open_[axis];
        u += "s" + std::to_string(axis) + " " + std::to_string(done) + " " + std::to_string(count);
        for (int k = 0; k < count && k < 8; ++k) u += " " + bits(p[k]) + " " + bits(v[k]) + " " + bits(a[k]);
        if (axis == 0) u += " left " + bits(getLeftMoveTime());
        if (count > 0) pos = p[count - 1], vel = v[count - 1], acc = a[count - 1];
        u += "\n" + out_.take();
        if (++calls_[axis] == kChunk) flush(axis);
        return done;
    }

    void flushAll() {
        for (int a = 0; a < 6; ++a) flush(a);
    }

private:
    void flush(int axis) {
        if (!open_[axis].empty()) units.push_back(open_[axis]);
        open_[axis].clear();
        calls_[axis] = 0;
    }
    Output& out_;
    std::string open_[6];
    int calls_[6] = {};
};

std::string describe(const Motion& m, const double* pos, const double* vel, const double* acc, const double* tgt) {
    std::ostringstream s;
    s << "update " << kKindName[static_cast<int>(m.kind)] << " n " << m.n << " ratio " << bits(m.ratio);
    if (m.kind == Kind::Conveyor) {
        s << " conveyor " << bits(m.conveyorVel) << " limit " << bits(m.conveyorLimit) << " spare " << bits(m.spare);
    }
    const int axes = m.n == 1 ? 1 : 6;
    for (int a = 0; a < axes; ++a) {
        s << "\n  axis " << a << " p " << bits(pos[a]) << " v " << bits(vel[a]) << " a " << bits(acc[a]) << " target "
          << bits(tgt[a]) << " V " << bits(m.maxVel[a]) << " A " << bits(m.maxAcc[a]);
    }
    return s.str();
}

bool callUpdate(const Motion& m, const double* tgt, const double* pos, const double* vel, const double* acc) {
    switch (m.kind) {
        case Kind::Position:
            return vektaPostionModeParaUpd(m.n, tgt, m.maxVel, m.maxAcc, m.ratio, pos, vel, acc, m.spare);
        case Kind::Velocity:
            return vektaVelocityModeParaUpd(m.n, m.maxVel, m.maxAcc, m.ratio, pos, vel, acc, m.spare);
        case Kind::Conveyor:
            return vektaPostionModeParaUpdConveyor(m.n, m.conveyorVel, m.conveyorLimit, tgt, m.maxVel, m.maxAcc,
                                                   m.ratio, m.spare);
    }
    return false;
}

// Plans one motion and samples every axis period by period until all have
// finished (a refused plan: one round of calls); a re-plan motion makes a new
// position update from the sampled state half-way.
std::vector<std::string> runMotion(int index, Output& out) {
    const Motion m = drawMotion(index);
    Recorder rec(out);
    rec.note("motion " + std::to_string(index) + " " + kKindName[static_cast<int>(m.kind)] + " from " +
             kStartName[static_cast<int>(m.start)] + (m.trace ? " traced" : "") + "\n");
    setTestLevel(m.trace);
    bool ok = callUpdate(m, m.tgt, m.pos, m.vel, m.acc);
    rec.update(describe(m, m.pos, m.vel, m.acc, m.tgt), ok);
    const int axes = m.n == 6 ? 6 : 1;
    double pos[6], vel[6], acc[6];
    for (int a = 0; a < 6; ++a) pos[a] = m.pos[a], vel[a] = m.vel[a], acc[a] = m.acc[a];
    int replanAt = m.replan ? static_cast<int>(getLeftMoveTime() / 0.005 / 2.0) : kMaxPeriods;
    for (int period = 0; period < kMaxPeriods; period += m.batch) {
        if (period >= replanAt && ok) {
            replanAt = kMaxPeriods;
            Motion again = m;
            again.kind = Kind::Position;
            ok = callUpdate(again, m.replanTgt, pos, vel, acc);
            rec.update("re-plan: " + describe(again, pos, vel, acc, m.replanTgt), ok);
        }
        bool all = true;
        for (int a = 0; a < axes; ++a) {
            all &= rec.sample(a, m.batch, m.kind == Kind::Velocity, pos[a], vel[a], acc[a]) == 1;
        }
        if (!ok || all) break;
    }
    rec.flushAll();
    setTestLevel(false);
    return rec.units;
}

std::string hex(std::uint64_t h) {
    char s[20];
    std::snprintf(s, sizeof s, "%016" PRIx64, h);
    return s;
}

// transcript.digest: a line per motion, "index digest units hash hash ...",
// each unit's hash cut to 8 hex digits.
struct Digest {
    std::string motion;
    std::vector<std::string> units;
};

Digest digestOf(const std::vector<std::string>& units) {
    Digest d;
    std::uint64_t all = kFnvSeed;
    for (const std::string& u : units) {
        const std::uint64_t h = fnv(kFnvSeed, u.data(), u.size());
        all = fnv(all, &h, sizeof h);
        d.units.push_back(hex(h).substr(8));
    }
    d.motion = hex(all);
    return d;
}

std::string digestLine(int index, const Digest& d) {
    std::string s = std::to_string(index) + " " + d.motion;
    for (const std::string& u : d.units) s += " " + u;
    return s;
}

TEST(Transcript, EveryMotionPrintsAndReturnsExactlyWhatItDidWhenPinned) {
    std::vector<std::vector<std::string>> transcripts;
    {
        Output out;
        for (int i = 0; i < kMotions; ++i) transcripts.push_back(runMotion(i, out));
    }
    std::vector<std::string> lines;
    for (int i = 0; i < kMotions; ++i) lines.push_back(digestLine(i, digestOf(transcripts[i])));

    // VEKTA_TRANSCRIPT_DUMP=DIR writes every motion's transcript, to compare two builds with diff.
    if (const char* dir = std::getenv("VEKTA_TRANSCRIPT_DUMP")) {
        for (int i = 0; i < kMotions; ++i) {
            std::ofstream dump(std::string(dir) + "/motion-" + std::to_string(i) + ".txt");
            for (const std::string& u : transcripts[i]) dump << u;
        }
    }
    const char* update = std::getenv("VEKTA_TRANSCRIPT_UPDATE");
    if (update != nullptr && std::string(update) == "1") {
        std::ofstream f(VEKTA_TRANSCRIPT_DIGEST);
        for (const std::string& l : lines) f << l << "\n";
        GTEST_SKIP() << "wrote " << VEKTA_TRANSCRIPT_DIGEST;
    }

    std::ifstream f(VEKTA_TRANSCRIPT_DIGEST);
    ASSERT_TRUE(f) << "no digest at " << VEKTA_TRANSCRIPT_DIGEST;
    std::vector<std::string> pinned;
    for (std::string l; std::getline(f, l);) pinned.push_back(l);
    ASSERT_EQ(pinned.size(), lines.size()) << "the digest pins another number of motions";

    for (int i = 0; i < kMotions; ++i) {
        if (pinned[i] == lines[i]) continue;
        std::istringstream words(pinned[i]);
        std::string word;
        words >> word >> word;
        std::size_t unit = 0;
        const Digest now = digestOf(transcripts[i]);
        while (words >> word && unit < now.units.size() && word == now.units[unit]) ++unit;
        const std::string file = "transcript-motion-" + std::to_string(i) + ".txt";
        std::ofstream dump(file);
        for (const std::string& u : transcripts[i]) dump << u;
        const std::string shown = unit < transcripts[i].size() ? transcripts[i][unit].substr(0, 3000) : "(none)";
        FAIL() << "motion " << i << " differs from unit " << unit << " of " << transcripts[i].size()
               << " on.\nThe motion:\n" << transcripts[i][0] << transcripts[i][1] << "\nIts unit " << unit
               << " now reads:\n" << shown << "\nWhole transcript written to " << file
               << " (run the pinned build with the same name to compare).";
    }
}

}  // namespace
