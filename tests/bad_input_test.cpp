// Bad inputs through the exported functions: what each one does, and that
// none of them crashes, hangs, writes outside the caller's arrays or hands out
// a plan the plan check would pass when it should not.
//
// Every update row is run from the state at load, and then sampled axis by
// axis to its end (or for a bounded number of calls when no end is promised)
// through output arrays with guard entries. The row gives the outcome the
// library's behaviour prescribes: the returned value, the first printed line
// (or the line that must be printed) and the plan check's verdict.
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <vector>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "planner/decision_tree.h"
#include "state/planner_state.h"
#include "step1/step1_tree.h"
#include "step2/step2_tree.h"
#include "support/test_support.h"
#include "vekta/vekta.h"

namespace vekta {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// Guard entries after the caller's arrays and the marker they hold.
constexpr int kGuard = 8;
constexpr double kMarker = 6.25e77;
// Sampling calls spent on an axis whose plan the check refuses (no end is
// promised for it: an end time that is not a number never finishes).
constexpr int kBlindCalls = 2000;
// Plans longer than this many periods are not sampled to their end.
constexpr double kLongPlan = 100000.0;

enum class Kind { Position, Velocity, Conveyor };

// One update's arguments: a plausible six-axis motion, changed by the row.
struct Update {
    Kind kind = Kind::Position;
    int n = 6;
    double tgt[6] = {1.0, -0.5, 0.25, 2.0, -1.5, 0.75};
    double maxVel[6] = {1.0, 1.5, 2.0, 1.0, 1.2, 0.8};
    double maxAcc[6] = {4.0, 3.0, 5.0, 2.0, 6.0, 4.0};
    double ratio = 10.0;
    double pos[6] = {0.1, 0.0, -0.2, 0.0, 0.3, 0.0};
    double vel[6] = {0.2, -0.3, 0.0, 0.1, 0.0, -0.2};
    double acc[6] = {0.5, 0.0, -1.0, 0.0, 0.0, 0.4};
    double conveyorVel = 0.2, conveyorLimit = 100.0, spare = 0.01;
    bool nullArrays = false;  // for an axis count the library must refuse unread
};

bool call(const Update& u) {
    const double* t = u.nullArrays ? nullptr : u.tgt;
    const double* V = u.nullArrays ? nullptr : u.maxVel;
    const double* A = u.nullArrays ? nullptr : u.maxAcc;
    const double* p = u.nullArrays ? nullptr : u.pos;
    const double* v = u.nullArrays ? nullptr : u.vel;
    const double* a = u.nullArrays ? nullptr : u.acc;
    switch (u.kind) {
        case Kind::Position: return vektaPostionModeParaUpd(u.n, t, V, A, u.ratio, p, v, a, 0.0);
        case Kind::Velocity: return vektaVelocityModeParaUpd(u.n, V, A, u.ratio, p, v, a, 0.0);
        case Kind::Conveyor:
            return vektaPostionModeParaUpdConveyor(u.n, u.conveyorVel, u.conveyorLimit, t, V, A, u.ratio, u.spare);
    }
    return false;
}

// One sampling call through guarded arrays. What went wrong (a write beyond
// the reported count, a count outside 0 .. nSamples, a result neither 0 nor 1)
// is added to `problems`, to be reported once the library's output is no
// longer captured.
struct Sample {
    int finished, count;
    double pos, vel, acc;  // the last sample written
};

Sample sampleGuarded(int axis, int nSamples, std::string& problems, bool velocityName = false) {
    const int cap = (nSamples > 0 ? nSamples : 1) + kGuard;
    std::vector<double> p(cap, kMarker), v(cap, kMarker), a(cap, kMarker);
    int count = -1;
    const int finished = velocityName ? vektaVelocityModePerFreedom(axis, nSamples, p.data(), v.data(), a.data(), count)
                                      : vektaPositionModePerFreedom(axis, nSamples, p.data(), v.data(), a.data(), count);
    const std::string where = " (axis " + std::to_string(axis) + ", nSamples " + std::to_string(nSamples) + ")\n";
    if (finished != 0 && finished != 1) problems += "result " + std::to_string(finished) + where;
    if (count < 0 || count > (nSamples > 0 ? nSamples : 0)) problems += "count " + std::to_string(count) + where;
    const int written = count > 0 ? count : 0;
    for (int i = written; i < cap; ++i) {
        if (p[i] != kMarker || v[i] != kMarker || a[i] != kMarker) {
            problems += "write beyond the samples at entry " + std::to_string(i) + where;
        }
    }
    Sample s{finished, count, 0.0, 0.0, 0.0};
    if (written > 0 && written <= cap) s = {finished, count, p[written - 1], v[written - 1], a[written - 1]};
    return s;
}

// Samples every planned axis period by period. A plan the check passes must
// finish within its planned periods (+1) on its end state; a failed plan must
// give nothing at all; any other plan is sampled for a bounded number of calls.
std::string sampleToTheEnd(int checkCode) {
    std::string problems;
    const PlannerState& st = defaultState();
    const int axes = st.axisCount == 1 || st.axisCount == kMaxAxes ? st.axisCount : 0;
    for (int axis = 0; axis < axes; ++axis) {
        const AxisPlan& r = st.records[axis];
        // A failed pass leaves the axes it did not reach as they were: maybe
        // never planned (no point at all).
        const double end = r.pointCount > 0 ? r.secTime[r.pointCount - 1] : 0.0;
        const bool mustFinish = checkCode == VEKTA_CHECK_OK && end / CYCLE_TIME < kLongPlan;
        const int budget = mustFinish ? static_cast<int>(std::ceil(end / CYCLE_TIME)) + 1 : kBlindCalls;
        const std::string where = " (axis " + std::to_string(axis) + ")\n";
        Sample s{};
        int calls = 0;
        while (calls < budget && s.finished == 0) {
            s = sampleGuarded(axis, 1, problems);
            ++calls;
            if (st.planFailed && (s.finished != 0 || s.count != 0)) problems += "a failed plan gave samples" + where;
            if (!st.planFailed && s.count != 1) problems += "no sample from a plan" + where;
        }
        if (mustFinish) {
            if (s.finished != 1) problems += "not finished in " + std::to_string(budget) + " calls" + where;
            // The end sample, or a curve sample exactly at the end time: the
            // sampler takes a section whose acceleration changes by less than
            // 1e-5 as flat, so such a sample may keep that much.
            if (std::fabs(s.acc) > 1e-6 * r.maxAcc + 1e-5 ||
                std::fabs(s.vel - r.tgtVel) > 1e-6 * r.maxVel + 1e-5 * end) {
                problems += "not at rest" + where;
            }
        }
    }
    return problems;
}

struct Outcome {
    bool ok;
    std::string printed;
    int checkCode;
    std::string checkMessage;
    std::string samplingProblems;
};

Outcome runFromLoad(const Update& u, bool sample = true) {
    defaultState() = PlannerState{};
    Outcome o{};
    {
        test::StdoutCapture out;
        o.ok = call(u);
        o.printed = out.text();
    }
    char message[256];
    o.checkCode = vektaCheckPlan(message, sizeof message);
    o.checkMessage = message;
    if (sample) {
        test::StdoutCapture quiet;
        o.samplingProblems = sampleToTheEnd(o.checkCode);
    }
    return o;
}

// The line that tells what happened: the update's own "posUpd"/"velUpd" line
// for an accepted update; for a refused one the last error line (or, when
// there is none, the last line printed).
std::string keyLine(const std::string& printed, bool ok) {
    std::string last, key, error;
    std::size_t at = 0;
    while (at < printed.size()) {
        std::size_t end = printed.find('\n', at);
        if (end == std::string::npos) end = printed.size();
        const std::string line = printed.substr(at, end - at);
        if (!line.empty()) last = line;
        if (key.empty() && (line.rfind("posUpd:", 0) == 0 || line.rfind("velUpd:", 0) == 0)) key = line;
        if (line.find("error") != std::string::npos) error = line;
        at = end + 1;
    }
    if (ok) return key.empty() ? last : key;
    return error.empty() ? last : error;
}

// A row: how the update is spoiled, and what must come of it: the result, the
// plan check's code, and a line that must be printed.
struct Row {
    const char* what;
    void (*spoil)(Update& u);
    bool ok;
    int checkCode;
    const char* line;
};

// `line` is printed as a whole line of the output; an empty one: nothing is.
bool printedLine(const std::string& printed, const std::string& line) {
    if (line.empty()) return printed.empty();
    const std::string text = "\n" + printed;
    return text.find("\n" + line + "\n") != std::string::npos ||
           (text.size() >= line.size() && text.compare(text.size() - line.size(), line.size(), line) == 0);
}

void runRows(const Row* rows, int count) {
    const bool show = std::getenv("VEKTA_SHOW_OUTCOMES") != nullptr;
    for (int i = 0; i < count; ++i) {
        const Row& row = rows[i];
        Update u;
        row.spoil(u);
        const Outcome o = runFromLoad(u);
        if (show) {
            std::fprintf(stderr, "ROW %s\x1f%s\x1f%d\x1f%s\x1f%s\n", row.what, o.ok ? "true" : "false", o.checkCode,
                         keyLine(o.printed, o.ok).c_str(), o.checkMessage.c_str());
        }
        EXPECT_EQ(o.ok, row.ok) << row.what << "\n" << o.printed;
        EXPECT_EQ(o.samplingProblems, "") << row.what;
        EXPECT_EQ(o.checkCode, row.checkCode) << row.what << ": " << o.checkMessage;
        EXPECT_TRUE(printedLine(o.printed, row.line)) << row.what << ": expected \"" << row.line << "\" in\n"
                                                      << o.printed;
        // An accepted update whose plan holds NaN must never pass the check.
        if (o.checkCode == VEKTA_CHECK_OK) {
            EXPECT_TRUE(o.ok) << row.what;
        }
    }
}

#define ROWS(table) runRows(table, static_cast<int>(sizeof(table) / sizeof(table[0])))

// ---------------------------------------------------------------------------
// NaN or infinite positions, velocities, accelerations, targets
// ---------------------------------------------------------------------------

const Row kNonFinite[] = {
    {"NaN tgt, 1 axis", [](Update& u) { u.n = 1, u.tgt[0] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"+inf tgt, 1 axis", [](Update& u) { u.n = 1, u.tgt[0] = kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "posUpd: 1st pt inf p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"-inf tgt, 1 axis", [](Update& u) { u.n = 1, u.tgt[0] = -kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "posUpd: 1st pt -inf p 0.102526 v 0.203125 a 0.000000 inv 1 peroid 0.005000"},
    {"NaN pos, 1 axis", [](Update& u) { u.n = 1, u.pos[0] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"+inf pos, 1 axis", [](Update& u) { u.n = 1, u.pos[0] = kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "posUpd: 1st pt 1.000000 p inf v 0.203125 a 0.000000 inv 1 peroid 0.005000"},
    {"-inf pos, 1 axis", [](Update& u) { u.n = 1, u.pos[0] = -kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "posUpd: 1st pt 1.000000 p -inf v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"NaN vel, 1 axis", [](Update& u) { u.n = 1, u.vel[0] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"+inf vel, 1 axis", [](Update& u) { u.n = 1, u.vel[0] = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"-inf vel, 1 axis", [](Update& u) { u.n = 1, u.vel[0] = -kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"NaN acc, 1 axis", [](Update& u) { u.n = 1, u.acc[0] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"+inf acc, 1 axis", [](Update& u) { u.n = 1, u.acc[0] = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"-inf acc, 1 axis", [](Update& u) { u.n = 1, u.acc[0] = -kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"NaN tgt, 6 axis", [](Update& u) { u.n = 6, u.tgt[3] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:3"},
    {"+inf tgt, 6 axis", [](Update& u) { u.n = 6, u.tgt[3] = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step2 error:ts inf idx 0"},
    {"-inf tgt, 6 axis", [](Update& u) { u.n = 6, u.tgt[3] = -kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step2 error:ts inf idx 0"},
    {"NaN pos, 6 axis", [](Update& u) { u.n = 6, u.pos[3] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:3"},
    {"+inf pos, 6 axis", [](Update& u) { u.n = 6, u.pos[3] = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step2 error:ts inf idx 0"},
    {"-inf pos, 6 axis", [](Update& u) { u.n = 6, u.pos[3] = -kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step2 error:ts inf idx 0"},
    {"NaN vel, 6 axis", [](Update& u) { u.n = 6, u.vel[3] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:3"},
    {"+inf vel, 6 axis", [](Update& u) { u.n = 6, u.vel[3] = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:3"},
    {"-inf vel, 6 axis", [](Update& u) { u.n = 6, u.vel[3] = -kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:3"},
    {"NaN acc, 6 axis", [](Update& u) { u.n = 6, u.acc[3] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:3"},
    {"+inf acc, 6 axis", [](Update& u) { u.n = 6, u.acc[3] = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:3"},
    {"-inf acc, 6 axis", [](Update& u) { u.n = 6, u.acc[3] = -kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:3"},
    {"NaN pos, stop of 6 axes", [](Update& u) { u.kind = Kind::Velocity, u.pos[2] = kNaN; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"+inf pos, stop of 6 axes", [](Update& u) { u.kind = Kind::Velocity, u.pos[2] = kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"NaN vel, stop of 6 axes", [](Update& u) { u.kind = Kind::Velocity, u.vel[2] = kNaN; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"+inf vel, stop of 6 axes", [](Update& u) { u.kind = Kind::Velocity, u.vel[2] = kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"NaN acc, stop of 6 axes", [](Update& u) { u.kind = Kind::Velocity, u.acc[2] = kNaN; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"+inf acc, stop of 6 axes", [](Update& u) { u.kind = Kind::Velocity, u.acc[2] = kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"NaN conveyor velocity", [](Update& u) { u.kind = Kind::Conveyor, u.conveyorVel = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"infinite conveyor velocity", [](Update& u) { u.kind = Kind::Conveyor, u.conveyorVel = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"NaN conveyor limit", [](Update& u) { u.kind = Kind::Conveyor, u.conveyorLimit = kNaN; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1.000000 p 0.000000 v -0.200000 a 0.000000 inv 1 peroid 0.005000"},
    {"NaN conveyor target", [](Update& u) { u.kind = Kind::Conveyor, u.tgt[0] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"NaN spare", [](Update& u) { u.kind = Kind::Conveyor, u.spare = kNaN; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1.000000 p 0.000000 v -0.200000 a 0.000000 inv 1 peroid 0.005000"},
};

TEST(BadInput, NonFiniteStatesAndTargets) { ROWS(kNonFinite); }

// The conveyor update's own refusals: a catch-up ending beyond the limit
// (planned, printed, refused by the check: it must not be sampled) and a
// spare below 0.002 (nothing happens at all).
const Row kConveyor[] = {
    {"catch-up beyond the conveyor limit", [](Update& u) { u.kind = Kind::Conveyor, u.conveyorLimit = 1.2; }, false,
     VEKTA_CHECK_CONVEYOR_REFUSED, "vekta: failed to catch up with conveyor-1.000000+0.520000>1.200000"},
    {"catch-up exactly at the limit is refused too", [](Update& u) { u.kind = Kind::Conveyor, u.conveyorLimit = 1.0, u.conveyorVel = 0.0; },
     false, VEKTA_CHECK_CONVEYOR_REFUSED, "vekta: failed to catch up with conveyor-1.000000+0.000000>1.000000"},
    {"spare below 0.002", [](Update& u) { u.kind = Kind::Conveyor, u.spare = 0.0019; }, false, VEKTA_CHECK_NO_PLAN, ""},
    {"negative conveyor velocity", [](Update& u) { u.kind = Kind::Conveyor, u.conveyorVel = -0.3; }, true,
     VEKTA_CHECK_OK, "posUpd: 1st pt 1.000000 p 0.000000 v 0.300000 a 0.000000 inv 1 peroid 0.005000"},
};

TEST(BadInput, ConveyorRefusals) { ROWS(kConveyor); }

// ---------------------------------------------------------------------------
// Zero, negative or non-finite limits; a jerk ratio of 0 or below
// ---------------------------------------------------------------------------

const Row kLimits[] = {
    {"maxVel 0.0, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.maxVel[0] = 0.0; }, true, VEKTA_CHECK_NOT_FINITE,
     "posUpd: 1st pt 1.000000 p 0.117001 v -0.000000 a -0.000000 inv 1 peroid 0.005000"},
    {"maxVel -1.0, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.maxVel[0] = -1.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "posUpd: 1st pt 1.000000 p -0.057160 v -1.000000 a -0.000000 inv 1 peroid 0.005000"},
    {"maxVel kNaN, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.maxVel[0] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"maxVel kInf, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.maxVel[0] = kInf; }, true, VEKTA_CHECK_BAD_LIMIT,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"maxAcc 0.0, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.maxAcc[0] = 0.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"maxAcc -1.0, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.maxAcc[0] = -1.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "posUpd: 1st pt 1.000000 p 0.070000 v 0.237500 a -1.000000 inv 1 peroid 0.005000"},
    {"maxAcc kNaN, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.maxAcc[0] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"maxAcc kInf, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.maxAcc[0] = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"maxVel 0.0, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.maxVel[2] = 0.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step2 error:ts inf idx 0"},
    {"maxVel -1.0, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.maxVel[2] = -1.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step2 error:ts 2.547500 idx 2"},
    {"maxVel kNaN, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.maxVel[2] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:2"},
    {"maxVel kInf, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.maxVel[2] = kInf; }, true, VEKTA_CHECK_BAD_LIMIT,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"maxAcc 0.0, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.maxAcc[2] = 0.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:2"},
    {"maxAcc -1.0, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.maxAcc[2] = -1.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step2 error:ts 2.547500 idx 2"},
    {"maxAcc kNaN, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.maxAcc[2] = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:2"},
    {"maxAcc kInf, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.maxAcc[2] = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:2"},
    {"maxVel 0.0, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.maxVel[0] = 0.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt 0.000000 p 0.117001 v -0.000000 a -0.000000 inv 1 "},
    {"maxVel -1.0, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.maxVel[0] = -1.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt 0.000000 p -0.057160 v -1.000000 a -0.000000 inv 1 "},
    {"maxVel kNaN, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.maxVel[0] = kNaN; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt 0.000000 p nan v nan a -0.000000 inv 1 "},
    {"maxVel kInf, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.maxVel[0] = kInf; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"maxAcc 0.0, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.maxAcc[0] = 0.0; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt 0.000000 p nan v nan a -0.000000 inv 1 "},
    {"maxAcc -1.0, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.maxAcc[0] = -1.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt -0.000000 p -0.090417 v -0.187500 a -0.000000 inv -1 "},
    {"maxAcc kNaN, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.maxAcc[0] = kNaN; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt 0.000000 p -nan v -nan a -0.000000 inv 1 "},
    {"maxAcc kInf, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.maxAcc[0] = kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p nan v -0.200000 a -0.000000 inv -1 "},
    {"maxVel 0.0, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.maxVel[2] = 0.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"maxVel -1.0, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.maxVel[2] = -1.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"maxVel kNaN, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.maxVel[2] = kNaN; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"maxVel kInf, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.maxVel[2] = kInf; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"maxAcc 0.0, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.maxAcc[2] = 0.0; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"maxAcc -1.0, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.maxAcc[2] = -1.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"maxAcc kNaN, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.maxAcc[2] = kNaN; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"maxAcc kInf, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.maxAcc[2] = kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
};

TEST(BadInput, ZeroNegativeAndNonFiniteLimits) { ROWS(kLimits); }

TEST(BadInput, ACurveThatNeedsMoreThanThirteenPointsFailsItsAxis) {
    // Found by the fuzzer: with negative limits the step-1 walk and solver
    // wanted 14 points; the 14th went past the curve's arrays.
    Update u;
    u.n = 1;
    u.tgt[0] = u.pos[0] = u.vel[0] = u.acc[0] = 0.0;
    u.maxVel[0] = u.maxAcc[0] = -1e9;
    u.ratio = 0.073925781250000003;
    const Outcome o = runFromLoad(u);
    EXPECT_FALSE(o.ok);
    EXPECT_EQ(o.printed.rfind("curve overflow:id 0 points 14\nstep1 error:0\nposUpd: ", 0), 0u) << o.printed;
    EXPECT_EQ(defaultState().records[0].pointCount, kMaxPoints) << "brought back inside the arrays";
    EXPECT_EQ(o.checkCode, VEKTA_CHECK_NO_PLAN);
    EXPECT_EQ(o.samplingProblems, "");
    EXPECT_EQ(getLeftMoveTime(), defaultState().records[0].secTime[kMaxPoints - 1]);
}

const Row kJerkRatio[] = {
    {"jerk ratio 0.0, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.ratio = 0.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio -1.0, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.ratio = -1.0; }, false, VEKTA_CHECK_NO_PLAN,
     "S1 PtNT error: (amin=4.114000e+00) >= (Am=4.000000e+00)step1 error:0"},
    {"jerk ratio -10.0, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.ratio = -10.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"jerk ratio kNaN, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.ratio = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio kInf, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1, u.ratio = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio 0.0, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.ratio = 0.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio -1.0, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.ratio = -1.0; }, false, VEKTA_CHECK_NO_PLAN,
     "S1 PtNT error: (amin=4.114000e+00) >= (Am=4.000000e+00)step1 error:0"},
    {"jerk ratio -10.0, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.ratio = -10.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step2_PTZPT t45 < 0step2 error:ts 2.357500 idx 1"},
    {"jerk ratio kNaN, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.ratio = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio kInf, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6, u.ratio = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio 0.0, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.ratio = 0.0; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt 0.000000 p nan v nan a -0.000000 inv 1 "},
    {"jerk ratio -1.0, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.ratio = -1.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt -0.000000 p -0.077604 v -0.168750 a -0.000000 inv -1 "},
    {"jerk ratio -10.0, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.ratio = -10.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt -0.000000 p -0.097526 v -0.196875 a -0.000000 inv -1 "},
    {"jerk ratio kNaN, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.ratio = kNaN; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt 0.000000 p -nan v -nan a -0.000000 inv 1 "},
    {"jerk ratio kInf, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1, u.ratio = kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p nan v -0.200000 a -0.000000 inv -1 "},
    {"jerk ratio 0.0, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.ratio = 0.0; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt 0.000000 p nan v nan a -0.000000 inv 1 "},
    {"jerk ratio -1.0, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.ratio = -1.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt -0.000000 p -0.077604 v -0.168750 a -0.000000 inv -1 "},
    {"jerk ratio -10.0, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.ratio = -10.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "velUpd: pt -0.000000 p -0.097526 v -0.196875 a -0.000000 inv -1 "},
    {"jerk ratio kNaN, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.ratio = kNaN; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt 0.000000 p -nan v -nan a -0.000000 inv 1 "},
    {"jerk ratio kInf, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6, u.ratio = kInf; }, true, VEKTA_CHECK_NOT_FINITE,
     "velUpd: pt -0.000000 p nan v -0.200000 a -0.000000 inv -1 "},
    {"jerk ratio 0.0, conveyor 1 axis", [](Update& u) { u.kind = Kind::Conveyor, u.n = 1, u.ratio = 0.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio -1.0, conveyor 1 axis", [](Update& u) { u.kind = Kind::Conveyor, u.n = 1, u.ratio = -1.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio -10.0, conveyor 1 axis", [](Update& u) { u.kind = Kind::Conveyor, u.n = 1, u.ratio = -10.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "posUpd: 1st pt 1.000000 p 0.000000 v -0.200000 a 0.000000 inv 1 peroid 0.005000"},
    {"jerk ratio kNaN, conveyor 1 axis", [](Update& u) { u.kind = Kind::Conveyor, u.n = 1, u.ratio = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio kInf, conveyor 1 axis", [](Update& u) { u.kind = Kind::Conveyor, u.n = 1, u.ratio = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio 0.0, conveyor 6 axis", [](Update& u) { u.kind = Kind::Conveyor, u.n = 6, u.ratio = 0.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio -1.0, conveyor 6 axis", [](Update& u) { u.kind = Kind::Conveyor, u.n = 6, u.ratio = -1.0; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio -10.0, conveyor 6 axis", [](Update& u) { u.kind = Kind::Conveyor, u.n = 6, u.ratio = -10.0; }, true, VEKTA_CHECK_BAD_LIMIT,
     "posUpd: 1st pt 1.000000 p 0.000000 v -0.200000 a 0.000000 inv 1 peroid 0.005000"},
    {"jerk ratio kNaN, conveyor 6 axis", [](Update& u) { u.kind = Kind::Conveyor, u.n = 6, u.ratio = kNaN; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
    {"jerk ratio kInf, conveyor 6 axis", [](Update& u) { u.kind = Kind::Conveyor, u.n = 6, u.ratio = kInf; }, false, VEKTA_CHECK_NO_PLAN,
     "step1 error:0"},
};

TEST(BadInput, JerkRatioOfZeroOrBelow) { ROWS(kJerkRatio); }

// ---------------------------------------------------------------------------
// Enormous and tiny limits and distances (1e-9 ... 1e9)
// ---------------------------------------------------------------------------

const Row kScales[] = {
    {"all limits 1e-9, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; for (int i = 0; i < 6; ++i) u.maxVel[i] = u.maxAcc[i] = 1e-9; u.ratio = 1e-9; }, true, VEKTA_CHECK_DISCONTINUOUS,
     "posUpd: 1st pt 1.000000 p 7812500041666664521658664061076310581051392.000000 v 0.000000 a -0.000000 inv 1 peroid 0.005000"},
    {"all limits 1e9, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; for (int i = 0; i < 6; ++i) u.maxVel[i] = u.maxAcc[i] = 1e9; u.ratio = 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"velocity limit 1e-9, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; u.maxVel[0] = 1e-9; }, true, VEKTA_CHECK_DISCONTINUOUS,
     "posUpd: 1st pt 1.000000 p 0.117001 v 0.000000 a -0.000000 inv 1 peroid 0.005000"},
    {"velocity limit 1e9, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; u.maxVel[0] = 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"acceleration limit 1e-9, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; u.maxAcc[0] = 1e-9; }, true, VEKTA_CHECK_JERK_LIMIT,
     "posUpd: 1st pt 1.000000 p 78125002916666194001920.000000 v 1.000000 a -0.000000 inv 1 peroid 0.005000"},
    {"acceleration limit 1e9, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; u.maxAcc[0] = 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"jerk ratio 1e-9, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; u.ratio = 1e-9; }, true, VEKTA_CHECK_DISCONTINUOUS,
     "posUpd: 1st pt 1.000000 p 5366302626387293.000000 v 1.000000 a -0.000000 inv 1 peroid 0.005000"},
    {"jerk ratio 1e9, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; u.ratio = 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"distance 1e-9 from rest, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; for (int i = 0; i < 6; ++i) u.pos[i] = u.vel[i] = u.acc[i] = 0.0, u.tgt[i] = 1e-9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 0.000000 p 0.000000 v 0.000000 a 0.000000 inv 1 peroid 0.005000"},
    {"distance 1e9 from rest, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; for (int i = 0; i < 6; ++i) u.pos[i] = u.vel[i] = u.acc[i] = 0.0, u.tgt[i] = 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1000000000.000000 p 0.000000 v 0.000000 a 0.000000 inv 1 peroid 0.005000"},
    {"state 1e9 beyond the limits, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; u.vel[0] = 1e9, u.acc[0] = -1e9; }, true, VEKTA_CHECK_DISCONTINUOUS,
     "posUpd: 1st pt 1.000000 p -19531247083333432241290039263232.000000 v -1.000000 a 0.000000 inv 1 peroid 0.005000"},
    {"positions around 1e9, position 1 axis", [](Update& u) { u.kind = Kind::Position, u.n = 1; for (int i = 0; i < 6; ++i) u.pos[i] += 1e9, u.tgt[i] += 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1000000001.000000 p 1000000000.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"all limits 1e-9, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; for (int i = 0; i < 6; ++i) u.maxVel[i] = u.maxAcc[i] = 1e-9; u.ratio = 1e-9; }, false, VEKTA_CHECK_NO_PLAN,
     "step2 error:ts 125000000333333300351305069206287783174270394411515904.000000 idx 0"},
    {"all limits 1e9, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; for (int i = 0; i < 6; ++i) u.maxVel[i] = u.maxAcc[i] = 1e9; u.ratio = 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"velocity limit 1e-9, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; u.maxVel[0] = 1e-9; }, true, VEKTA_CHECK_DISCONTINUOUS,
     "posUpd: 1st pt 1.000000 p 0.117001 v 0.000000 a -0.000000 inv 1 peroid 0.005000"},
    {"velocity limit 1e9, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; u.maxVel[0] = 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"acceleration limit 1e-9, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; u.maxAcc[0] = 1e-9; }, false, VEKTA_CHECK_NO_PLAN,
     "step2 error:ts 78125015416667943993344.000000 idx 3"},
    {"acceleration limit 1e9, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; u.maxAcc[0] = 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"jerk ratio 1e-9, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; u.ratio = 1e-9; }, true, VEKTA_CHECK_DISCONTINUOUS,
     "posUpd: 1st pt 1.000000 p 5366302626387293.000000 v 1.000000 a -0.000000 inv 1 peroid 0.005000"},
    {"jerk ratio 1e9, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; u.ratio = 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1.000000 p 0.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"distance 1e-9 from rest, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; for (int i = 0; i < 6; ++i) u.pos[i] = u.vel[i] = u.acc[i] = 0.0, u.tgt[i] = 1e-9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 0.000000 p 0.000000 v 0.000000 a 0.000000 inv 1 peroid 0.005000"},
    {"distance 1e9 from rest, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; for (int i = 0; i < 6; ++i) u.pos[i] = u.vel[i] = u.acc[i] = 0.0, u.tgt[i] = 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1000000000.000000 p 0.000000 v 0.000000 a 0.000000 inv 1 peroid 0.005000"},
    {"state 1e9 beyond the limits, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; u.vel[0] = 1e9, u.acc[0] = -1e9; }, false, VEKTA_CHECK_NO_PLAN,
     "step2 error:ts 19531247083333434493089852948480.000000 idx 3"},
    {"positions around 1e9, position 6 axis", [](Update& u) { u.kind = Kind::Position, u.n = 6; for (int i = 0; i < 6; ++i) u.pos[i] += 1e9, u.tgt[i] += 1e9; }, true, VEKTA_CHECK_OK,
     "posUpd: 1st pt 1000000001.000000 p 1000000000.100000 v 0.200000 a 0.500000 inv 1 peroid 0.005000"},
    {"all limits 1e-9, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1; for (int i = 0; i < 6; ++i) u.maxVel[i] = u.maxAcc[i] = 1e-9; u.ratio = 1e-9; }, true, VEKTA_CHECK_DISCONTINUOUS,
     "velUpd: pt -0.000000 p -7812500041666664521658664061076310581051392.000000 v -0.000000 a 0.000000 inv -1 "},
    {"all limits 1e9, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1; for (int i = 0; i < 6; ++i) u.maxVel[i] = u.maxAcc[i] = 1e9; u.ratio = 1e9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -0.100000 v -0.200000 a -0.000000 inv -1 "},
    {"velocity limit 1e-9, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1; u.maxVel[0] = 1e-9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -0.117001 v -0.000000 a 0.000000 inv -1 "},
    {"velocity limit 1e9, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1; u.maxVel[0] = 1e9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"acceleration limit 1e-9, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1; u.maxAcc[0] = 1e-9; }, true, VEKTA_CHECK_JERK_LIMIT,
     "velUpd: pt -0.000000 p -78125002916666194001920.000000 v -1.000000 a 0.000000 inv -1 "},
    {"acceleration limit 1e9, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1; u.maxAcc[0] = 1e9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -0.100000 v -0.200000 a -0.000000 inv -1 "},
    {"jerk ratio 1e-9, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1; u.ratio = 1e-9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -5366302626387293.000000 v -1.000000 a 0.000000 inv -1 "},
    {"jerk ratio 1e9, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1; u.ratio = 1e9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -0.100000 v -0.200000 a -0.000000 inv -1 "},
    {"state 1e9 beyond the limits, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1; u.vel[0] = 1e9, u.acc[0] = -1e9; }, true, VEKTA_CHECK_DISCONTINUOUS,
     "velUpd: pt 0.000000 p -19531247083333432241290039263232.000000 v -1.000000 a 0.000000 inv 1 "},
    {"positions around 1e9, velocity 1 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 1; for (int i = 0; i < 6; ++i) u.pos[i] += 1e9, u.tgt[i] += 1e9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -1000000000.102526 v -0.203125 a -0.000000 inv -1 "},
    {"all limits 1e-9, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6; for (int i = 0; i < 6; ++i) u.maxVel[i] = u.maxAcc[i] = 1e-9; u.ratio = 1e-9; }, true, VEKTA_CHECK_DISCONTINUOUS,
     "velUpd: pt -0.000000 p -7812500041666664521658664061076310581051392.000000 v -0.000000 a 0.000000 inv -1 "},
    {"all limits 1e9, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6; for (int i = 0; i < 6; ++i) u.maxVel[i] = u.maxAcc[i] = 1e9; u.ratio = 1e9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -0.100000 v -0.200000 a -0.000000 inv -1 "},
    {"velocity limit 1e-9, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6; u.maxVel[0] = 1e-9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -0.117001 v -0.000000 a 0.000000 inv -1 "},
    {"velocity limit 1e9, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6; u.maxVel[0] = 1e9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -0.102526 v -0.203125 a -0.000000 inv -1 "},
    {"acceleration limit 1e-9, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6; u.maxAcc[0] = 1e-9; }, true, VEKTA_CHECK_JERK_LIMIT,
     "velUpd: pt -0.000000 p -78125002916666194001920.000000 v -1.000000 a 0.000000 inv -1 "},
    {"acceleration limit 1e9, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6; u.maxAcc[0] = 1e9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -0.100000 v -0.200000 a -0.000000 inv -1 "},
    {"jerk ratio 1e-9, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6; u.ratio = 1e-9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -5366302626387293.000000 v -1.000000 a 0.000000 inv -1 "},
    {"jerk ratio 1e9, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6; u.ratio = 1e9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -0.100000 v -0.200000 a -0.000000 inv -1 "},
    {"state 1e9 beyond the limits, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6; u.vel[0] = 1e9, u.acc[0] = -1e9; }, true, VEKTA_CHECK_DISCONTINUOUS,
     "velUpd: pt 0.000000 p -19531247083333432241290039263232.000000 v -1.000000 a 0.000000 inv 1 "},
    {"positions around 1e9, velocity 6 axis", [](Update& u) { u.kind = Kind::Velocity, u.n = 6; for (int i = 0; i < 6; ++i) u.pos[i] += 1e9, u.tgt[i] += 1e9; }, true, VEKTA_CHECK_OK,
     "velUpd: pt -0.000000 p -1000000000.102526 v -0.203125 a -0.000000 inv -1 "},
};

TEST(BadInput, EnormousAndTinyLimitsAndDistances) { ROWS(kScales); }

// ---------------------------------------------------------------------------
// An axis count other than 1 or 6: refused before any array is read
// ---------------------------------------------------------------------------

TEST(BadInput, AxisCountsOtherThanOneOrSix) {
    const int counts[] = {0, 2, 3, 4, 5, 7, -1, -6, INT_MIN, INT_MAX};
    for (const Kind kind : {Kind::Position, Kind::Velocity, Kind::Conveyor}) {
        for (const int n : counts) {
            Update u;
            u.kind = kind;
            u.n = n;
            u.nullArrays = true;  // the library must not read them
            const Outcome o = runFromLoad(u);
            const std::string what = "n = " + std::to_string(n);
            EXPECT_FALSE(o.ok) << what;
            EXPECT_EQ(o.printed, "vekta: incorrect freedom number-" + std::to_string(n) + "!\n") << what;
            EXPECT_EQ(o.checkCode, VEKTA_CHECK_NO_PLAN) << what;
            EXPECT_EQ(o.samplingProblems, "") << what;
            EXPECT_TRUE(defaultState().planFailed) << what;
            EXPECT_TRUE(defaultState().newPlan) << what;
            EXPECT_EQ(defaultState().axisCount, 0) << what << ": the axis count is kept";
        }
    }
    // After a good plan, a refused count stops sampling until the next good update.
    Update good;
    runFromLoad(good, false);
    Update bad;
    bad.n = 7;
    bad.nullArrays = true;
    bool ok = true;
    {
        test::StdoutCapture quiet;
        ok = call(bad);
    }
    EXPECT_FALSE(ok);
    std::string problems;
    for (int axis = 0; axis < 6; ++axis) {
        test::StdoutCapture quiet;
        const Sample s = sampleGuarded(axis, 3, problems);
        const std::string printed = quiet.text();
        EXPECT_EQ(printed, "");
        EXPECT_EQ(s.finished, 0);
        EXPECT_EQ(s.count, 0);
    }
    EXPECT_EQ(problems, "");
    EXPECT_EQ(defaultState().axisCount, 6);
}

// ---------------------------------------------------------------------------
// Axis indices at or above the axis count, and negative ones
// ---------------------------------------------------------------------------

TEST(BadInput, AxisIndicesOutsideThePlan) {
    for (const int n : {1, 6}) {
        Update u;
        u.n = n;
        runFromLoad(u, false);
        const int axes[] = {n, n + 1, 6, 7, 100, INT_MAX, -1, -2, -6, -7, INT_MIN};
        for (const int axis : axes) {
            for (const int nSamples : {1, 5}) {
                std::string problems;
                test::StdoutCapture out;
                const Sample s = sampleGuarded(axis, nSamples, problems, nSamples == 5);
                const std::string printed = out.text();
                EXPECT_EQ(printed, "") << "axis " << axis;
                EXPECT_EQ(s.finished, 0) << "axis " << axis;
                EXPECT_EQ(s.count, 0) << "axis " << axis;
                EXPECT_EQ(problems, "");
            }
        }
        // The planned axes were not disturbed: each still starts at period 1.
        for (int axis = 0; axis < n; ++axis) EXPECT_EQ(defaultState().records[axis].sampleCount, 0);
    }
}

// ---------------------------------------------------------------------------
// nSamples <= 0: nothing written, the finished flag returned
// ---------------------------------------------------------------------------

TEST(BadInput, SampleCountsOfZeroOrBelow) {
    Update u;  // six axes
    runFromLoad(u, false);
    const double end = defaultState().records[0].secTime[defaultState().records[0].pointCount - 1];
    for (const int nSamples : {0, -1, -1000, INT_MIN}) {
        for (int axis = 0; axis < 6; ++axis) {
            std::string problems;
            test::StdoutCapture out;
            const Sample s = sampleGuarded(axis, nSamples, problems);
            const std::string printed = out.text();
            EXPECT_EQ(printed, "");
            EXPECT_EQ(s.finished, 0);
            EXPECT_EQ(s.count, 0);
            EXPECT_EQ(problems, "");
            // Null arrays are never touched either.
            int count = -1;
            EXPECT_EQ(vektaPositionModePerFreedom(axis, nSamples, nullptr, nullptr, nullptr, count), 0);
            EXPECT_EQ(count, 0);
            EXPECT_EQ(defaultState().records[axis].sampleCount, 0) << "no period passes";
        }
    }
    // Once the axes are finished, nSamples <= 0 returns 1, still writing nothing.
    std::string toTheEnd;
    {
        test::StdoutCapture quiet;
        toTheEnd = sampleToTheEnd(VEKTA_CHECK_OK);
    }
    EXPECT_EQ(toTheEnd, "");
    for (int axis = 0; axis < 6; ++axis) {
        std::string problems;
        test::StdoutCapture out;
        const Sample s = sampleGuarded(axis, 0, problems);
        const std::string printed = out.text();
        EXPECT_EQ(printed, "");
        EXPECT_EQ(s.finished, 1);
        EXPECT_EQ(s.count, 0);
        EXPECT_EQ(problems, "");
    }
    EXPECT_GT(end, 0.0);
}

// ---------------------------------------------------------------------------
// Sampling before any update
// ---------------------------------------------------------------------------

TEST(BadInput, SamplingBeforeAnyUpdate) {
    defaultState() = PlannerState{};
    std::string problems;
    int given = 0;
    test::StdoutCapture out;
    for (int axis = -2; axis < 8; ++axis) {
        for (const int nSamples : {-1, 0, 1, 4}) {
            const Sample s = sampleGuarded(axis, nSamples, problems, axis % 2 == 0);
            given += s.finished + s.count;
        }
    }
    const double left = getLeftMoveTime();
    char message[64];
    const int code = vektaCheckPlan(message, sizeof message);
    const std::string printed = out.text();
    EXPECT_EQ(given, 0);
    EXPECT_EQ(left, 0.0);
    EXPECT_EQ(code, VEKTA_CHECK_NO_PLAN);
    EXPECT_EQ(printed, "");
    EXPECT_EQ(problems, "");
}

// ---------------------------------------------------------------------------
// A new update in the middle of sampling
// ---------------------------------------------------------------------------

TEST(BadInput, ANewUpdateInTheMiddleOfSampling) {
    Update first;  // six axes
    runFromLoad(first, false);
    // Sample every axis for 20 periods, keeping the last set-points.
    double pos[6], vel[6], acc[6];
    std::string problems;
    {
        test::StdoutCapture quiet;
        for (int period = 0; period < 20; ++period) {
            for (int axis = 0; axis < 6; ++axis) {
                const Sample s = sampleGuarded(axis, 1, problems);
                pos[axis] = s.pos, vel[axis] = s.vel, acc[axis] = s.acc;
            }
        }
    }
    ASSERT_EQ(problems, "");

    // Re-plan from the last set-points to new targets; sampling restarts on
    // the new plan, which passes the check, starts where the old one was and
    // runs to its end.
    Update second = first;
    for (int i = 0; i < 6; ++i) {
        second.pos[i] = pos[i], second.vel[i] = vel[i], second.acc[i] = acc[i];
        second.tgt[i] = first.tgt[i] + 0.5;
    }
    bool ok = false;
    {
        test::StdoutCapture quiet;
        ok = call(second);
    }
    ASSERT_TRUE(ok);
    EXPECT_EQ(vektaCheckPlan(nullptr, 0), VEKTA_CHECK_OK);
    for (int axis = 0; axis < 6; ++axis) {
        const AxisPlan& r = defaultState().records[axis];
        EXPECT_EQ(r.sampleCount, 0);
        EXPECT_EQ(r.secPos[0], pos[axis]);
        EXPECT_EQ(r.secVel[0], vel[axis]);
        EXPECT_EQ(r.secAcc[0], acc[axis]);
    }
    // The first new set-point is one period of the new curve away from the last old one.
    Sample next{};
    {
        test::StdoutCapture quiet;
        next = sampleGuarded(0, 1, problems);
    }
    EXPECT_NEAR(next.pos, pos[0], 2.0 * first.maxVel[0] * CYCLE_TIME);
    EXPECT_NEAR(next.acc, acc[0], first.maxAcc[0] * first.ratio * CYCLE_TIME * (1.0 + 1e-9));
    {
        test::StdoutCapture quiet;
        problems += sampleToTheEnd(VEKTA_CHECK_OK);
    }
    EXPECT_EQ(problems, "");

    // A refused update in the middle stops sampling at once; a plan with NaN
    // in it is refused by the check and samples only within bounds.
    runFromLoad(first, false);
    Update nan = first;
    nan.vel[1] = kNaN;
    int given = 0;
    {
        test::StdoutCapture quiet;
        for (int axis = 0; axis < 6; ++axis) sampleGuarded(axis, 2, problems);
        ok = call(nan);
        for (int axis = 0; axis < 6; ++axis) {
            const Sample s = sampleGuarded(axis, 2, problems);
            given += s.count + s.finished;
        }
    }
    EXPECT_FALSE(ok);
    EXPECT_EQ(given, 0);
    EXPECT_EQ(vektaCheckPlan(nullptr, 0), VEKTA_CHECK_NO_PLAN);
    EXPECT_EQ(problems, "");
}

// ---------------------------------------------------------------------------
// A plan without a reachable end: every call is bounded, the axis never ends
// ---------------------------------------------------------------------------

TEST(BadInput, APlanWithoutAnEndNeverFinishesButEveryCallIsBounded) {
    // An infinite target is accepted with an infinite end time: the finished
    // flag compares the periods sampled with it and never becomes 1. Each
    // call still writes its nSamples samples and returns; the plan check
    // refuses the plan, which is how a caller learns not to wait for it.
    Update u;
    u.n = 1;
    u.tgt[0] = kInf;
    const Outcome o = runFromLoad(u, false);
    ASSERT_TRUE(o.ok);
    EXPECT_EQ(o.checkCode, VEKTA_CHECK_NOT_FINITE);
    std::string problems;
    int finished = 0, samples = 0;
    {
        test::StdoutCapture quiet;
        for (int i = 0; i < 1000; ++i) {
            const Sample s = sampleGuarded(0, 7, problems);
            finished += s.finished;
            samples += s.count;
        }
    }
    EXPECT_EQ(problems, "");
    EXPECT_EQ(finished, 0);
    EXPECT_EQ(samples, 7000);
}

// ---------------------------------------------------------------------------
// Sampling a finished axis for ever: the period counter never overflows
// ---------------------------------------------------------------------------

TEST(BadInput, ThePeriodCounterStopsBeforeItOverflows) {
    Update u;
    u.n = 1;
    runFromLoad(u, false);
    // As after some 124 days of sampling at 5 ms.
    defaultState().records[0].sampleCount = INT_MAX - 3;
    std::string problems;
    int finished = 0, count = 0;
    {
        test::StdoutCapture quiet;
        for (int i = 0; i < 6; ++i) {
            const Sample s = sampleGuarded(0, 2, problems);
            finished += s.finished;
            count += s.count;
        }
    }
    EXPECT_EQ(problems, "");
    EXPECT_EQ(finished, 6);
    EXPECT_EQ(count, 6) << "one end sample per call";
    EXPECT_EQ(defaultState().records[0].sampleCount, INT_MAX - 1);
    EXPECT_EQ(getLeftMoveTime(), 0.0);
}

TEST(BadInput, StatisticsCountersStopBeforeTheyOverflow) {
    // As after weeks of re-planning every period: the next six-axis plan
    // passes node 9 and uses a profile once more, and nothing overflows.
    Update u;
    runFromLoad(u, false);
    PlannerState& st = defaultState();
    for (int& c : st.nodeVisitCount) c = INT_MAX;
    for (int& c : st.profileUseCount) c = INT_MAX;
    bool ok = false;
    {
        test::StdoutCapture quiet;
        ok = call(u);
    }
    EXPECT_TRUE(ok);
    EXPECT_EQ(st.nodeVisitCount[9 - 1], INT_MAX);
    for (const int c : st.profileUseCount) EXPECT_EQ(c, INT_MAX);
}

// ---------------------------------------------------------------------------
// Bounded work: every tree walk ends, whatever its nodes decide
// ---------------------------------------------------------------------------

// True when no successor path from `start` comes back to a node on it, and
// every successor is a node of the tree.
bool acyclicFrom(const DecisionTree& t, int node, std::vector<int>& state) {
    if (node == 0) return true;
    if (node < 0 || node >= t.nodeCount || state[node] == 1) return false;
    if (state[node] == 2) return true;
    state[node] = 1;
    const bool ok = acyclicFrom(t, t.successors[2 * node], state) && acyclicFrom(t, t.successors[2 * node + 1], state);
    state[node] = 2;
    return ok;
}

TEST(BadInput, TreeWalksVisitEveryNodeAtMostOnce) {
    // A NaN makes every comparison false and may steer a walk anywhere its
    // successor table allows; with no cycle in the table the walk ends within
    // nodeCount calls whatever the record holds. With the root finder's 101
    // iterations and the sampler's nSamples + 13 steps, every call is bounded.
    for (const DecisionTree* t : {&Step1Tree, &Step2Tree}) {
        std::vector<int> state(static_cast<std::size_t>(t->nodeCount), 0);
        for (int start = 1; start < t->nodeCount; ++start) EXPECT_TRUE(acyclicFrom(*t, start, state)) << start;
    }
}

}  // namespace
}  // namespace vekta
