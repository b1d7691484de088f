// The fuzz driver.
//
// Input format: a stream of operations, each an opcode byte followed by its
// arguments. Opcodes below 100 call the functions of vekta.h on the default
// planner; from 100 on they call vekta_c.h on a planner made in the driver's
// own memory (vektaPlannerInit; after a life-cycle operation, one from
// vektaPlannerCreate): the library's own calls (Move, Stop, CatchUp,
// SetPeriod, Next, StateAt, MinimumTime and the getters) and the handle forms
// of the vekta.h functions, interleaved on the same planner, now and then on a
// NULL planner instead. Numbers are decoded by a selector byte: a table of
// hostile values (NaN, infinities, zeros, 1e-9 ... 1e9, extremes), a plausible
// value from two bytes, or the raw bits of a double; axis counts, axis
// indices, sample counts, periods and times come from small tables that mix
// valid and invalid values. A stream that ends early reads zeros, so every
// byte string is a valid input.
//
// Arrays handed to the library are heap blocks of exactly the size the call
// may use (none for an axis count it must refuse; sometimes NULL), so that
// AddressSanitizer sees any read or write beyond them; output arrays get guard
// entries after the entries the call may write and are filled with a marker
// first, so that a write beyond them shows.
#include "fuzz_driver.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <memory>

#include "api/default_state.h"
#include "vekta/vekta.h"
#include "vekta/vekta_c.h"

namespace vekta::fuzz {

bool traceCalls = false;

namespace {

using Arr = std::unique_ptr<double[]>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kIntMin = std::numeric_limits<int>::min(), kIntMax = std::numeric_limits<int>::max();

constexpr double kHostile[] = {0.0,   -0.0,   1.0,   -1.0,     kNaN,    kInf,     -kInf, 1e-9, -1e-9, 1e9,
                               -1e9,  1e-300, 1e300, 4.9e-324, DBL_MAX, -DBL_MAX, 0.005, 0.002, 0.0019, 2.0,
                               10.0,  1e-5,   1e5,   -1e5,     0.5,     3.0,      -3.0};
constexpr int kAxisCounts[] = {1, 6, 1, 6, 1, 6, 0, 2, 5, 7, -1, kIntMin};
constexpr int kSampleCounts[] = {1, 1, 1, 2, 3, 13, 40, 0, -1, kIntMin};

// Guard entries after the caller's arrays, and the marker they hold.
constexpr int kGuard = 4;
constexpr double kMarker = -7.25e77;
// Upper bound on the sampling calls spent on one axis by a "sample to the end"
// operation when the plan did not pass the check (no end is promised then).
constexpr int kBlindSampleCalls = 400;
// Checked plans up to this many periods (100 s) are sampled to their end.
constexpr double kLongPlan = 20000.0;
// The check's slack on |v| <= V and |a| <= A (plan_check.cpp's kLimitRel).
constexpr double kLimitSlack = 1e-6;
// Sampling calls spent on a plan the check does not pass, or on one longer
// than kLongPlan periods, by a "Next to the end" operation.
constexpr int kBlindNextCalls = 50;
// Axis-periods that the "Next to the end" operations of one input may sample
// (each checked against StateAt), so that no input takes seconds: some
// eight plans of 16 axes and 1.5 s at 0.1 ms.
constexpr double kToEndAxisPeriods = 2e6;

bool sameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }
// The same bits, or both not a number: a NaN's sign and payload depend on how
// the compiler ordered the arithmetic, so two ways to the same NaN may differ.
bool sameValue(double a, double b) { return sameBits(a, b) || (std::isnan(a) && std::isnan(b)); }
bool withinLimit(double x, double limit) { return std::fabs(x) <= limit * (1.0 + kLimitSlack); }

class Reader {
public:
    Reader(const std::uint8_t* d, std::size_t n) : d_(d), n_(n) {}
    bool done() const { return i_ >= n_; }
    std::uint8_t byte() { return i_ < n_ ? d_[i_++] : 0; }
    std::uint16_t u16() { return static_cast<std::uint16_t>(byte() | (byte() << 8)); }
    template <class T, std::size_t N>
    T from(const T (&table)[N]) { return table[byte() % N]; }
    double raw() {
        std::uint64_t bits = 0;
        for (int k = 0; k < 8; ++k) bits |= static_cast<std::uint64_t>(byte()) << (8 * k);
        double x;
        std::memcpy(&x, &bits, sizeof x);
        return x;
    }
    // Any double: hostile, plausible (-8 .. 8), or raw; a limit: mostly a
    // plausible positive value, sometimes anything.
    double value(bool limit = false) {
        switch (byte() % 8) {
            case 0: return from(kHostile);
            case 7: return raw();
            default: return limit ? 0.05 + u16() / 2048.0 : (u16() - 32768.0) / 4096.0;
        }
    }
    int axisIndex() {
        const std::uint8_t b = byte();
        return b == 255 ? kIntMax : b == 254 ? kIntMin : b % 10 - 2;  // -2 .. 7
    }
    // An axis count for the library's own calls: 0 .. 17, hostile ints, and
    // the usual arms once more.
    int ownAxisCount() {
        constexpr int more[] = {kIntMin, -1, 1 << 30, 6, 7, 16};
        const int b = byte() % 24;
        return b < 18 ? b : more[b - 18];
    }
    // A control period: hostile, an edge of the accepted range or just
    // outside it, or a plausible one (0.1 .. 65.6 ms).
    double period() {
        static const double edges[] = {0.0,    -0.001, kNaN, 1e-9, 1e9, 1e-4, 1.0, std::nextafter(1e-4, 0.0),
                                       std::nextafter(1.0, 2.0), 0.001, 0.0005, 0.25};
        switch (byte() % 4) {
            case 0: return from(kHostile);
            case 1: return from(edges);
            default: return 1e-4 + u16() * 1e-6;
        }
    }
    // A time for StateAt: hostile, the plan's end and its neighbours, an
    // exact multiple of the period (early or near the end), or inside the plan.
    double time(double period, double d) {
        const double edges[] = {kNaN, kInf,    -kInf, -1.0, -0.0, 1e300, DBL_MAX, d, d / 2.0, std::nextafter(d, kInf),
                                std::nextafter(d, -kInf)};
        switch (byte() % 6) {
            case 0: return from(kHostile);
            case 1: return from(edges);
            case 2: return (byte() + 1.0) * period;
            case 3:  // the period the plan ends in, and its neighbours
                return (std::floor(std::fmax(0.0, std::fmin(d / period, 1e9))) + byte() % 4 - 1) * period;
            default: return d * u16() / 40000.0;
        }
    }

private:
    const std::uint8_t* d_;
    std::size_t n_, i_ = 0;
};

// One array argument of a vekta.h update: exactly n entries (one value for
// every axis, or one per axis), or none at all for an axis count the library
// must refuse before reading anything.
Arr readArray(Reader& in, int n, bool limit) {
    if (n != 1 && n != 6) return nullptr;
    Arr a(new double[n]);
    const bool shared = (in.byte() & 3) == 0;
    for (int i = 0; i < n; ++i) a[i] = (shared && i > 0) ? a[0] : in.value(limit);
    return a;
}

// Output arrays of the sampling calls: n entries and guard entries after
// them, all holding the marker; any of the three may be NULL (sel % 8 == 0).
struct Outputs {
    Arr a[3];
    int cap;
    Outputs(int n, std::uint8_t sel) : cap(n + kGuard) {
        const int nulls = sel % 8 == 0 ? 1 + (sel >> 3) % 7 : 0;
        for (int k = 0; k < 3; ++k) {
            if ((nulls >> k) & 1) continue;
            a[k].reset(new double[cap]);
            for (int i = 0; i < cap; ++i) a[k][i] = kMarker;
        }
    }
    bool anyNull() const { return !a[0] || !a[1] || !a[2]; }
    double* get(int k) { return a[k].get(); }
    bool untouchedFrom(int from) const {
        for (int k = 0; k < 3; ++k) {
            for (int i = from; a[k] && i < cap; ++i) {
                if (!sameBits(a[k][i], kMarker)) return false;
            }
        }
        return true;
    }
};

// A sampling call that must fail: -1, and nothing written.
const char* noSample(int r, const Outputs& o, const char* what) {
    return r != -1 || !o.untouchedFrom(0) ? what : nullptr;
}

// ---- The default planner

// The structure the sampler and the plan check rely on: every record's point
// count stays inside its arrays, whatever the update did.
const char* checkRecords() {
    const PlannerState& st = defaultState();
    const bool accepted = !st.planFailed && (st.axisCount == 1 || st.axisCount == kLegacyAxes);
    for (int i = 0; i < kMaxAxes; ++i) {
        const int pc = st.records[i].pointCount;
        if (pc < 0 || pc > kMaxPoints) return "a record's pointCount left 0 .. 13";
        if (accepted && i < st.axisCount && pc < 1) return "an accepted plan has an axis without points";
    }
    return nullptr;
}

// The plan check of the default planner, or of a handle (onHandle; h may be
// NULL); the code through `code`. A small buffer, sometimes none: the message
// is cut, terminated, and nothing is written past the given size.
const char* checkPlanCall(Reader& in, bool onHandle = false, const VektaPlanner* h = nullptr, int* code = nullptr) {
    const int size = static_cast<int>(in.byte() % 80) - 2;
    char buf[96];
    std::memset(buf, 'x', sizeof buf);
    char* msg = size > 0 ? buf : nullptr;
    const int c = onHandle ? vektaPlannerCheck(h, msg, size) : vektaCheckPlan(msg, size);
    if (code != nullptr) *code = c;
    if (c < VEKTA_CHECK_OK || c > VEKTA_CHECK_LAST) return "vektaCheckPlan returned an unknown code";
    for (int i = size > 0 ? size : 0; i < static_cast<int>(sizeof buf); ++i) {
        if (buf[i] != 'x') return "vektaCheckPlan wrote past the message size";
    }
    if (size > 0 && std::memchr(buf, '\0', size) == nullptr) return "vektaCheckPlan left the message unterminated";
    return nullptr;
}

// What any sampling call of one axis must keep: its result, the count it
// reports, and nothing written beyond the samples counted.
const char* sampleBounds(int r, int count, int nSamples, const Outputs& o) {
    if (r != 0 && r != 1) return "sampling returned neither 0 nor 1";
    if (count < 0 || count > (nSamples > 0 ? nSamples : 0)) return "sampling reported a count outside 0 .. nSamples";
    return o.untouchedFrom(count) ? nullptr : "sampling wrote beyond the samples it reported";
}

// One sampling call of the default planner into o. At least one entry: the
// single-axis diagnostic reads pos[0] even when nothing is written.
const char* sampleOnce(int axis, int nSamples, bool velocityName, int& finished, int& count, Outputs& o) {
    o = Outputs(nSamples > 0 ? nSamples : 1, 1);
    count = -12345;
    const auto sample = velocityName ? vektaVelocityModePerFreedom : vektaPositionModePerFreedom;
    finished = sample(axis, nSamples, o.get(0), o.get(1), o.get(2), count);
    return sampleBounds(finished, count, nSamples, o);
}

// Sample every planned axis period by period to its end. A plan that passes
// the check must finish within its planned periods plus one (when that is at
// most kLongPlan), and its last sample must be the curve's end state; any
// other plan must merely keep every call in bounds (a plan whose end time is
// not a number never finishes).
const char* sampleToEnd(bool velocityName) {
    const PlannerState& st = defaultState();
    if (st.axisCount != 1 && st.axisCount != kLegacyAxes) return nullptr;
    const bool checked = vektaCheckPlan(nullptr, 0) == VEKTA_CHECK_OK;
    for (int axis = 0; axis < st.axisCount; ++axis) {
        const AxisPlan& r = st.records[axis];
        const int last = r.pointCount - 1;  // an axis of a checked plan has points
        const double left = checked ? r.secTime[last] - r.sampleCount * kCyclePeriod : 0.0;
        const double periods = left > 0.0 ? std::ceil(left / kCyclePeriod) + 1.0 : 1.0;
        const bool mustFinish = checked && periods <= kLongPlan;
        const int budget = mustFinish ? static_cast<int>(periods) : kBlindSampleCalls;
        int finished = 0, count = 0;
        Outputs o(1, 1);
        for (int calls = 0; calls < budget && finished != 1; ++calls) {
            if (const char* f = sampleOnce(axis, 1, velocityName, finished, count, o)) return f;
        }
        if (!mustFinish) continue;
        if (finished != 1) return "a checked plan did not finish within its planned periods";
        if (count != 1) return "a finished axis returned no sample";
        // The last sample is the end sample, or a curve sample taken exactly
        // at the end time: the end state up to rounding, and up to the check's
        // position tolerance (a synchronised axis's last section may miss its
        // pinned end by the root finder's 1e-5). The sampler takes a section
        // whose acceleration changes by less than 1e-5 as flat, so a curve
        // sample may keep that much.
        double pScale = 0.0, vScale = r.maxVel, aScale = r.maxAcc;
        for (int i = 0; i < r.pointCount; ++i) {
            pScale = std::fmax(pScale, std::fabs(r.secPos[i]));
            vScale = std::fmax(vScale, std::fabs(r.secVel[i]));
            aScale = std::fmax(aScale, std::fabs(r.secAcc[i]));
        }
        if (std::fabs(o.a[2][0]) > 1e-6 * aScale + 1e-5 ||
            std::fabs(o.a[1][0] - r.tgtVel) > 1e-6 * vScale + 1e-5 * r.secTime[last] ||
            std::fabs(o.a[0][0] - r.secPos[last]) > 2e-5 + 2e-9 * pScale) {
            return "a checked plan's last sample is not its end state";
        }
    }
    return nullptr;
}

// ---- A planner of the driver's own, and what the driver knows of its plan

// One axis of a plan: its limits, the frame they hold in, from when they hold
// (as the plan check sees it: a start beyond a limit is held to it from the
// first curve point from which it can be kept; +inf: never), and for a call
// of the library's own, the start and end state it asked for.
struct AxisModel {
    double maxVel, maxAcc, frameVel, velFrom, accFrom;
    double startPos, startVel, startAcc;
    double endPos, endVel, posTol;  // endPos NaN: a stop, no position asked for
};

// The plan: whether the planner holds one (Axes > 0), whether the plan check
// passes it, whether Move, Stop or CatchUp made it (start and end known); its
// axes, duration and period; the planner's period setting, for the plans that
// follow; the periods sampled on each axis since the plan.
struct Model {
    bool has = false, checked = false, own = false;
    int axes = 0;
    double duration = 0.0, period = 0.0, setting = kCyclePeriod;
    int sampled[kMaxAxes] = {};
    AxisModel axis[kMaxAxes];
};

// A planner begins with its PlannerState (api/planner_handles.cpp): the driver
// reads a plan's curve points there, as it reads the default planner's.
const PlannerState& stateOf(const VektaPlanner* p) { return *reinterpret_cast<const PlannerState*>(p); }

void outputReceived(const char* text, std::size_t length, void* user) {
    if (text == nullptr || length == 0 || std::memchr(text, '\0', length) != nullptr) *static_cast<bool*>(user) = true;
}

struct Session {
    void* mem = std::malloc(vektaPlannerSize());  // malloc's alignment is max_align_t's
    VektaPlanner* inMem = vektaPlannerInit(mem);
    VektaPlanner* made = nullptr;
    VektaPlanner* cur = inMem;  // the planner the operations act on
    // Recovery mode on; the output callback got a malformed message.
    bool recovery = false, badOutput = false;
    double toEndLeft = kToEndAxisPeriods;
    Model m;
    ~Session() { vektaPlannerDestroy(made), std::free(mem); }
    // The planner of one call: now and then the NULL planner.
    VektaPlanner* pick(Reader& in) const { return in.byte() % 16 == 0 ? nullptr : cur; }
};

// The properties of one state of the plan, axis i at time t.
const char* checkState(const Model& m, int i, double t, double p, double v, double a) {
    if (!m.checked) return nullptr;
    const AxisModel& x = m.axis[i];
    if (!std::isfinite(p) || !std::isfinite(v) || !std::isfinite(a)) {
        return "a plan the check passes handed out a value that is not finite";
    }
    const double frameRounding = 4.0 * DBL_EPSILON * std::fabs(x.frameVel);
    if ((t > x.velFrom || x.velFrom == 0.0) &&
        !(std::fabs(v - x.frameVel) <= x.maxVel * (1.0 + kLimitSlack) + frameRounding)) {
        return "a plan the check passes went beyond its velocity limit";
    }
    if ((t > x.accFrom || x.accFrom == 0.0) && !withinLimit(a, x.maxAcc)) {
        return "a plan the check passes went beyond its acceleration limit";
    }
    if (!m.own) return nullptr;
    // The start as asked for, within the check's tolerances at a join (the
    // planner may nudge a start by a rounding: 5e-51 on a zero acceleration).
    if (t <= 0.0 && !(std::fabs(p - x.startPos) <= x.posTol &&
                      std::fabs(v - x.startVel) <= 1e-6 * std::fmax(x.maxVel, std::fabs(x.startVel)) &&
                      std::fabs(a - x.startAcc) <= 1e-6 * std::fmax(x.maxAcc, std::fabs(x.startAcc)))) {
        return "the state at a time up to 0 is not the start state asked for";
    }
    // The end likewise: a stop from a subnormal velocity plans sections of
    // some 1e-155 s, whose times the check lets go back by its floor of
    // 1e-14 s, so a time past the end may still fall inside the curve, at
    // rest but for 5e-51 of acceleration.
    if (t > m.duration && !(std::fabs(a) <= 1e-6 * x.maxAcc &&
                            std::fabs(v - x.endVel) <= 1e-6 * std::fmax(x.maxVel, std::fabs(x.endVel)) &&
                            (std::isnan(x.endPos) || std::fabs(p - x.endPos) <= x.posTol))) {
        return "the state past the end is not the end state asked for";
    }
    return nullptr;
}

// The planner's properties after every operation.
const char* checkSession(const Session& s) {
    if (strnlen(vektaPlannerError(s.cur), kErrorCapacity) >= kErrorCapacity) {
        return "the reason is not terminated within its capacity";
    }
    if (vektaPlannerAxes(s.cur) != (s.m.has ? s.m.axes : 0) ||
        !sameBits(vektaPlannerDuration(s.cur), s.m.has ? s.m.duration : 0.0)) {
        return "the plan's axis count or duration changed by itself";
    }
    if (vektaPlannerPeriod(s.cur) != s.m.setting) return "the planner's period changed by itself";
    return s.badOutput ? "the output callback got an empty or unterminated message" : nullptr;
}

// A new planner: no plan, the default period, no reason.
const char* newPlanner(Session& s) {
    s.m = Model{};
    s.recovery = s.badOutput = false;
    if (s.cur == nullptr) return "a planner could not be made";
    const bool empty = vektaPlannerAxes(s.cur) == 0 && vektaPlannerDuration(s.cur) == 0.0 &&
                       vektaPlannerError(s.cur)[0] == '\0' &&
                       vektaPlannerCheck(s.cur, nullptr, 0) == VEKTA_CHECK_NO_PLAN;
    return empty ? nullptr : "a new planner is not empty";
}

// After a call on the NULL planner: its failure value, and the words for it;
// checkSession then sees that the driver's planner did not change.
const char* nullPlannerCall(bool failureValue) {
    if (!failureValue) return "a call on a NULL planner did not return its failure value";
    if (std::strcmp(vektaPlannerError(nullptr), "planner is NULL") != 0) {
        return "the NULL planner's reason is not \"planner is NULL\"";
    }
    const bool failures = vektaPlannerAxes(nullptr) == 0 && vektaPlannerDuration(nullptr) == 0.0 &&
                          vektaPlannerPeriod(nullptr) == 0.0 && vektaPlannerMinimumTime(nullptr, 0) == -1.0 &&
                          vektaPlannerLeftTime(nullptr) == 0.0;
    return failures ? nullptr : "a getter on a NULL planner did not return its failure value";
}

// ---- The library's own calls

enum OwnCall { kMove, kStop, kCatchUp };
enum ArrayArg { kTarget, kMaxVel, kMaxAcc, kMaxJerk, kPos, kVel, kAcc, kArrayArgs };
const char* const kArrayNames[kArrayArgs] = {"target", "maxVel", "maxAcc", "maxJerk", "pos", "vel", "acc"};
// The arrays Move, Stop and CatchUp take.
constexpr bool kTakes[3][kArrayArgs] = {{1, 1, 1, 1, 1, 1, 1}, {0, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 0, 0, 0}};

struct Request {
    int call, axes = 0;
    double conveyorVel = 0.0, conveyorLimit = 0.0;
    Arr arrays[kArrayArgs];
    const char* bad[kArrayArgs + 3];  // the arguments the call must refuse
    int badCount = 0;
    const double* get(int k) const { return arrays[k].get(); }
    double value(int k, int i) const { return arrays[k] ? arrays[k][i] : 0.0; }
    Request(Reader& in, int call);
};

Request::Request(Reader& in, int c) : call(c), axes(in.ownAxisCount()) {
    if (call == kCatchUp) conveyorVel = in.value(), conveyorLimit = in.value();
    const bool validAxes = axes >= 1 && axes <= kMaxAxes;
    const int n = validAxes ? axes : 0;  // nothing to read for a count the call must refuse
    // The driver's own judgement: what the call must refuse (in any order).
    const auto bad = [this](const char* name) { this->bad[badCount++] = name; };
    if (call == kCatchUp && !std::isfinite(conveyorVel)) bad("conveyorVel");
    if (call == kCatchUp && !std::isfinite(conveyorLimit)) bad("conveyorLimit");
    if (!validAxes) bad("axes");
    for (int k = 0; k < kArrayArgs; ++k) {
        if (!kTakes[call][k]) continue;
        const std::uint8_t sel = in.byte();
        if (sel % 16 == 0 || (k >= kVel && sel % 4 == 1)) {  // NULL (vel and acc more often)
            if (k < kVel && validAxes) bad(kArrayNames[k]);
            continue;
        }
        arrays[k].reset(new double[n]);
        const bool shared = (sel & 0x30) == 0, limit = k >= kMaxVel && k <= kMaxJerk;
        bool valid = true;
        for (int i = 0; i < n; ++i) {
            const double x = arrays[k][i] = (shared && i > 0) ? arrays[k][0] : in.value(limit);
            valid = valid && std::isfinite(x) && (!limit || x > 0.0);
        }
        if (!valid) bad(kArrayNames[k]);
    }
}

int callOwn(VektaPlanner* h, const Request& q) {
    const double *T = q.get(kTarget), *V = q.get(kMaxVel), *A = q.get(kMaxAcc), *J = q.get(kMaxJerk);
    if (q.call == kCatchUp) return vektaPlannerCatchUp(h, q.axes, q.conveyorVel, q.conveyorLimit, T, V, A, J);
    if (q.call == kStop) return vektaPlannerStop(h, q.axes, V, A, J, q.get(kPos), q.get(kVel), q.get(kAcc));
    return vektaPlannerMove(h, q.axes, T, V, A, J, q.get(kPos), q.get(kVel), q.get(kAcc));
}

// A refused call (or a refused period): a reason, and no plan left behind.
const char* refused(Session& s, const char* reason) {
    s.m.has = false;
    if (reason[0] == '\0') return "a refused call left no reason";
    if (vektaPlannerAxes(s.cur) != 0 || vektaPlannerDuration(s.cur) != 0.0 ||
        vektaPlannerMinimumTime(s.cur, 0) != -1.0 || vektaPlannerCheck(s.cur, nullptr, 0) == VEKTA_CHECK_OK) {
        return "a refused call left a plan";
    }
    Outputs next(0, 1), at(0, 1);
    const char* f = "a refused call left a plan to sample";
    if (const char* g = noSample(vektaPlannerNext(s.cur, next.get(0), next.get(1), next.get(2)), next, f)) return g;
    return noSample(vektaPlannerStateAt(s.cur, 0.0, at.get(0), at.get(1), at.get(2)), at, f);
}

// The plan a call has just made. q: the call of the library's own that made
// it (the arrays it asked with), or null for a handle form's update.
const char* learnPlan(Session& s, const Request* q) {
    Model& m = s.m;
    const PlannerState& st = stateOf(s.cur);
    m.has = true, m.own = q != nullptr, m.period = m.setting;
    m.axes = vektaPlannerAxes(s.cur), m.duration = vektaPlannerDuration(s.cur);
    m.checked = vektaPlannerCheck(s.cur, nullptr, 0) == VEKTA_CHECK_OK;
    for (int i = 0; i < m.axes; ++i) {
        const AxisPlan& r = st.records[i];
        AxisModel& x = m.axis[i];
        m.sampled[i] = 0;
        x.maxVel = r.maxVel, x.maxAcc = r.maxAcc;
        x.frameVel = st.planMode == kConveyorPlan && i == 0 ? r.tgtVel : 0.0;
        x.velFrom = x.accFrom = kInf;
        double pScale = 0.0;
        for (int k = 0; k < r.pointCount && k < kMaxPoints; ++k) {
            const double v = r.secVel[k] - x.frameVel, a = r.secAcc[k];
            if (x.accFrom == kInf && withinLimit(a, x.maxAcc)) x.accFrom = r.secTime[k];
            if (x.velFrom == kInf && withinLimit(v, x.maxVel) &&
                withinLimit(v + a * std::fabs(a) / (2.0 * r.maxJerk), x.maxVel)) {
                x.velFrom = r.secTime[k];
            }
            pScale = std::fmax(pScale, std::fabs(r.secPos[k]));
        }
        // The check's position tolerance (the root finder's miss, twice, and rounding).
        x.posTol = 2e-5 + 2e-9 * pScale;
        if (q == nullptr) continue;
        // A velocity or acceleration limit far beyond the motion's reach is brought down, never up.
        if (!(r.maxVel <= q->get(kMaxVel)[i]) || !(r.maxAcc <= q->get(kMaxAcc)[i]) || r.maxJerk != q->get(kMaxJerk)[i]) {
            return "a plan of the library's own is planned with limits above those asked for";
        }
        const bool catchUp = q->call == kCatchUp;
        x.startPos = catchUp ? 0.0 : q->get(kPos)[i], x.startVel = catchUp ? 0.0 : q->value(kVel, i);
        x.startAcc = catchUp ? 0.0 : q->value(kAcc, i);
        x.endVel = catchUp && i == 0 ? q->conveyorVel : 0.0;
        x.endPos = q->call == kStop ? kNaN : q->get(kTarget)[i];
        // A catch-up's axis 0 ends on its target in the conveyor's frame.
        if (catchUp && i == 0) x.endPos += r.secTime[r.pointCount - 1] * q->conveyorVel;
    }
    return nullptr;
}

// The state StateAt gives at t <= 0 and past the end of every axis.
const char* checkStartAndEnd(Session& s) {
    double p[kMaxAxes], v[kMaxAxes], a[kMaxAxes];
    for (const double t : {-1.0, 0.0, kInf}) {
        if (vektaPlannerStateAt(s.cur, t, p, v, a) != 0) return "StateAt failed on a plan";
        for (int i = 0; i < s.m.axes; ++i) {
            if (const char* f = checkState(s.m, i, t, p[i], v[i], a[i])) return f;
        }
    }
    return nullptr;
}

const char* ownCall(Session& s, Reader& in, int call) {
    VektaPlanner* h = s.pick(in);
    const Request q(in, call);
    const int status = callOwn(h, q);
    if (h == nullptr) return nullPlannerCall(status == VEKTA_INVALID_ARGUMENT);
    const char* reason = vektaPlannerError(h);
    if (status < VEKTA_OK || status > VEKTA_CONVEYOR_OUT_OF_REACH) return "a call returned no VektaStatus";
    if ((status == VEKTA_INVALID_ARGUMENT) != (q.badCount > 0)) {
        return q.badCount > 0 ? "a call with an invalid argument was not refused as such"
                              : "a call with valid arguments was refused as invalid";
    }
    bool named = status != VEKTA_INVALID_ARGUMENT;
    for (int k = 0; k < q.badCount && !named; ++k) {
        char is[32];
        std::snprintf(is, sizeof is, "%s is ", q.bad[k]);
        named = std::strstr(reason, is) != nullptr;
    }
    if (!named) return "the reason of an invalid argument does not name it";
    if (status == VEKTA_CONVEYOR_OUT_OF_REACH && call != kCatchUp) {
        return "a call without a conveyor was out of its reach";
    }
    if (status != VEKTA_OK) return refused(s, reason);
    if (reason[0] != '\0') return "a successful call left a reason";
    if (vektaPlannerAxes(h) != q.axes) return "Axes is not the axis count of the call";
    const double d = vektaPlannerDuration(h);
    if (!(d >= 0.0 && d < kInf)) return "Duration is negative or not finite";
    if (vektaPlannerCheck(h, nullptr, 0) != VEKTA_CHECK_OK) return "the plan check refuses a plan of the library's own";
    if (const char* f = learnPlan(s, &q)) return f;
    return checkStartAndEnd(s);
}

// The vekta.h updates: form 0 position, 1 velocity, 2 conveyor. s: null for
// the default planner, else the handle form on the session's planner.
const char* update(Reader& in, Session* s, int form) {
    VektaPlanner* h = s != nullptr ? s->pick(in) : nullptr;
    const int n = in.from(kAxisCounts);
    double conveyorVel = 0.0, conveyorLimit = 0.0;
    if (form == 2) conveyorVel = in.value(), conveyorLimit = in.value();
    const Arr tgt = form != 1 ? readArray(in, n, false) : nullptr;
    const Arr vmax = readArray(in, n, true), amax = readArray(in, n, true);
    const double ratio = in.value(true);
    Arr p, v, a;
    if (form != 2) p = readArray(in, n, false), v = readArray(in, n, false), a = readArray(in, n, false);
    const double spare = form == 2 && (in.byte() & 1) ? 0.01 : in.value();
    const double *T = tgt.get(), *V = vmax.get(), *A = amax.get(), *P = p.get(), *PV = v.get(), *PA = a.get();
    int ok;
    if (s == nullptr) {
        ok = form == 0   ? vektaPostionModeParaUpd(n, T, V, A, ratio, P, PV, PA, spare)
             : form == 1 ? vektaVelocityModeParaUpd(n, V, A, ratio, P, PV, PA, spare)
                         : vektaPostionModeParaUpdConveyor(n, conveyorVel, conveyorLimit, T, V, A, ratio, spare);
        if (ok && n != 1 && n != 6) return "an update with a bad axis count was accepted";
        return checkRecords();
    }
    ok = form == 0   ? vektaPlannerPositionUpdate(h, n, T, V, A, ratio, P, PV, PA)
         : form == 1 ? vektaPlannerVelocityUpdate(h, n, V, A, ratio, P, PV, PA)
                     : vektaPlannerConveyorUpdate(h, n, conveyorVel, conveyorLimit, T, V, A, ratio, spare);
    if (h == nullptr) return nullPlannerCall(ok == 0);
    if (ok != 0 && ok != 1) return "a handle form's update returned neither 0 nor 1";
    // A failed update leaves no plan, or (a conveyor update refused for its
    // spare time) the previous one as it was.
    if (ok == 0) {
        if (vektaPlannerAxes(h) == 0) s->m.has = false;
        return nullptr;
    }
    if (n != 1 && n != kLegacyAxes) return "an update with a bad axis count was accepted";
    if (vektaPlannerAxes(h) != n) return "Axes is not the updated axis count";
    if (const char* f = learnPlan(*s, nullptr)) return f;
    return s->recovery && !s->m.checked ? "recovery mode accepted a plan the check refuses" : nullptr;
}

const char* setPeriod(Session& s, Reader& in) {
    VektaPlanner* h = s.pick(in);
    const double seconds = in.period();
    const int status = vektaPlannerSetPeriod(h, seconds);
    if (h == nullptr) return nullPlannerCall(status == VEKTA_INVALID_ARGUMENT);
    if (std::isfinite(seconds) && seconds >= VEKTA_MIN_PERIOD && seconds <= VEKTA_MAX_PERIOD) {
        if (status != VEKTA_OK || vektaPlannerError(h)[0] != '\0') return "a period in the accepted range was refused";
        s.m.setting = seconds;  // the plan keeps its own
        return nullptr;
    }
    if (status != VEKTA_INVALID_ARGUMENT) return "a period outside the accepted range was not refused as invalid";
    const char* reason = vektaPlannerError(h);
    return std::strstr(reason, "period is ") ? refused(s, reason) : "the reason of a bad period does not name it";
}

// ---- Sampling the driver's planner

// Axis i's sample at the next period of its cursor: StateAt's value at that
// time, bit for bit (any NaN for a NaN), and within what the plan promises.
// `at` caches StateAt (position, velocity, acceleration of every axis) at
// time `atTime`.
const char* sampledAt(Session& s, int i, double p, double v, double a, double* at, double& atTime) {
    const double t = (s.m.sampled[i] + 1.0) * s.m.period;
    if (!sameBits(t, atTime)) {
        if (vektaPlannerStateAt(s.cur, t, at, at + kMaxAxes, at + 2 * kMaxAxes) != 0) return "StateAt failed on a plan";
        atTime = t;
    }
    if (!sameValue(p, at[i]) || !sameValue(v, at[kMaxAxes + i]) || !sameValue(a, at[2 * kMaxAxes + i])) {
        return "a sample differs from StateAt at its period's time";
    }
    if (s.m.sampled[i] < kIntMax - 2) ++s.m.sampled[i];
    return checkState(s.m, i, t, p, v, a);
}

const char* nextCall(Session& s, VektaPlanner* h, std::uint8_t sel, int& result) {
    const int axes = vektaPlannerAxes(h);
    Outputs o(axes, sel);
    result = vektaPlannerNext(h, o.get(0), o.get(1), o.get(2));
    if (h == nullptr || !s.m.has || o.anyNull()) {
        return noSample(result, o, "Next without a planner, a plan or an array wrote or did not return -1");
    }
    if (result != 0 && result != 1) return "Next returned neither 0 nor 1";
    if (!o.untouchedFrom(axes)) return "Next wrote beyond the plan's axes";
    double at[3 * kMaxAxes], atTime = kNaN;
    bool allPast = true, anyShort = false;
    const double lower = s.m.duration - (1e-9 * s.m.duration + 1e-12);  // the earliest end of an axis
    for (int i = 0; i < axes; ++i) {
        const double t = (s.m.sampled[i] + 1.0) * s.m.period;
        allPast = allPast && t >= s.m.duration;
        anyShort = anyShort || t < lower;
        if (const char* f = sampledAt(s, i, o.a[0][i], o.a[1][i], o.a[2][i], at, atTime)) return f;
    }
    if (s.m.checked && allPast && result != 1) return "Next did not report the end once every axis was past it";
    if (s.m.checked && anyShort && result == 1) return "Next reported the end before an axis got there";
    return nullptr;
}

// Next until it reports the end: a plan the check passes must get there
// within its duration's periods plus two (when that is at most kLongPlan,
// and the input's allowance has room for it).
const char* nextToEnd(Session& s) {
    const double periods = s.m.duration / s.m.period;
    const double axisPeriods = (std::ceil(periods) + 2.0) * s.m.axes;
    const bool mustEnd = s.m.has && s.m.checked && periods <= kLongPlan && axisPeriods <= s.toEndLeft;
    const int budget = mustEnd ? static_cast<int>(std::ceil(periods)) + 2 : kBlindNextCalls;
    if (mustEnd) s.toEndLeft -= axisPeriods;
    int result = 0;
    for (int c = 0; c < budget && result != 1; ++c) {
        if (const char* f = nextCall(s, s.cur, 1, result)) return f;
        if (result == -1) return nullptr;
    }
    return mustEnd && result != 1 ? "a checked plan did not end within its duration's periods plus two" : nullptr;
}

const char* stateAtCall(Session& s, Reader& in) {
    VektaPlanner* h = s.pick(in);
    const double t = in.time(s.m.has ? s.m.period : s.m.setting, s.m.duration);
    const int axes = vektaPlannerAxes(h);
    Outputs o(axes, in.byte());
    const int r = vektaPlannerStateAt(h, t, o.get(0), o.get(1), o.get(2));
    if (h == nullptr || !s.m.has || o.anyNull() || std::isnan(t)) {
        return noSample(r, o, "StateAt without a planner, a plan, an array or a time wrote or did not return -1");
    }
    if (r != 0) return "StateAt failed on a plan";
    if (!o.untouchedFrom(axes)) return "StateAt wrote beyond the plan's axes";
    for (int i = 0; i < axes; ++i) {
        if (const char* f = checkState(s.m, i, t, o.a[0][i], o.a[1][i], o.a[2][i])) return f;
    }
    return nullptr;
}

// The handle form's sampling, one axis, on the same cursor as Next.
const char* sampleCall(Session& s, Reader& in) {
    VektaPlanner* h = s.pick(in);
    const int axis = in.axisIndex(), nSamples = in.from(kSampleCounts);
    const bool nullCount = in.byte() % 16 == 0;
    Outputs o(nSamples > 0 ? nSamples : 1, 1);
    int count = -12345;
    const int r = vektaPlannerSample(h, axis, nSamples, o.get(0), o.get(1), o.get(2), nullCount ? nullptr : &count);
    if (h == nullptr || nullCount) {
        return noSample(r, o, "sampling without a planner or count wrote or did not return -1");
    }
    if (const char* f = sampleBounds(r, count, nSamples, o)) return f;
    // Without a plan it may still sample a refused catch-up (as the default
    // planner's sampling does), which no caller should; only bounds hold then.
    if (!s.m.has || axis < 0 || axis >= s.m.axes) return nullptr;
    double at[3 * kMaxAxes], atTime = kNaN;
    for (int j = 0; j < count; ++j) {
        if (const char* f = sampledAt(s, axis, o.a[0][j], o.a[1][j], o.a[2][j], at, atTime)) return f;
    }
    return nullptr;
}

// The getters and the plan check on the driver's planner (or the NULL one).
const char* query(Session& s, Reader& in) {
    VektaPlanner* h = s.pick(in);
    const int which = in.byte() % 3;
    if (which == 0) {
        constexpr int kAxes[] = {-1, 0, 1, 5, 6, 15, 16, 17, kIntMin, kIntMax};
        const int b = in.byte() % 12;
        const int axis = b < 10 ? kAxes[b] : s.m.axes - (b - 10);  // the last axis, or one past it
        const double t = vektaPlannerMinimumTime(h, axis);
        if (h == nullptr || !s.m.has || axis < 0 || axis >= s.m.axes) {
            return t == -1.0 ? nullptr : "MinimumTime without a planner, a plan or the axis did not return -1";
        }
        if (s.m.own && !(t >= 0.0 && t <= s.m.duration * (1.0 + 1e-9) + 1e-12)) {
            return "an axis's minimum time is not within 0 .. Duration";
        }
    } else if (which == 1) {
        const double left = vektaPlannerLeftTime(h);
        if (!(left >= 0.0)) return "LeftTime returned a negative value or NaN";
        if (h == nullptr && left != 0.0) return "LeftTime of a NULL planner is not 0";
    } else {
        int code = -1;
        if (const char* f = checkPlanCall(in, true, h, &code)) return f;
        if ((code == VEKTA_CHECK_OK) != (h != nullptr && s.m.has && s.m.checked)) {
            return "the plan check changed its verdict on a plan";
        }
    }
    return h == nullptr ? nullPlannerCall(true) : nullptr;
}

// Switches, output and the planner's life cycle.
const char* switches(Session& s, Reader& in) {
    VektaPlanner* h = s.pick(in);
    const std::uint8_t b = in.byte();
    const int on = b & 8;
    switch (b % 8) {
        case 0:
            vektaPlannerSetRecovery(h, on);
            if (h != nullptr) s.recovery = on != 0;
            return nullptr;
        case 1: vektaPlannerSetTrace(h, on); return nullptr;
        case 2: vektaPlannerOutputToCallback(h, on ? outputReceived : nullptr, &s.badOutput); return nullptr;
        case 3: on ? vektaPlannerOutputToStdout(h) : vektaPlannerOutputOff(h); return nullptr;
        case 4: s.cur = s.inMem = vektaPlannerInit(s.mem); return newPlanner(s);  // in the driver's memory
        case 5:  // a new planner from the heap, the last one made there freed
            vektaPlannerDestroy(s.made);
            s.made = vektaPlannerCreate();
            s.cur = s.made != nullptr ? s.made : s.inMem;
            return newPlanner(s);
        case 6:  // destroying a planner in the caller's memory does nothing
            vektaPlannerDestroy(s.inMem), vektaPlannerDestroy(nullptr);
            return nullptr;
        default:  // no planner in no memory, nor in misaligned memory
            if (vektaPlannerInit(nullptr) != nullptr) return "vektaPlannerInit made a planner without memory";
            return vektaPlannerInit(static_cast<char*>(s.mem) + 1 + 7 * (b % 2)) == nullptr
                       ? nullptr
                       : "vektaPlannerInit made a planner in misaligned memory";
    }
}

// One operation on the driver's planner (op >= 100).
const char* ownOperation(Session& s, Reader& in, int op) {
    switch (op % 13) {
        case 0:
        case 1: return ownCall(s, in, kMove);
        case 2: return ownCall(s, in, kStop);
        case 3: return ownCall(s, in, kCatchUp);
        case 4: return setPeriod(s, in);
        case 5:
        case 6: {
            VektaPlanner* h = s.pick(in);
            int result = 0;
            const char* f = nextCall(s, h, in.byte(), result);
            return f == nullptr && h == nullptr ? nullPlannerCall(result == -1) : f;
        }
        case 7: return nextToEnd(s);
        case 8: return stateAtCall(s, in);
        case 9: return update(in, &s, in.byte() % 3);
        case 10: return sampleCall(s, in);
        case 11: return query(s, in);
        default: return switches(s, in);
    }
}

// One operation on the default planner (op < 100).
const char* defaultOperation(Reader& in, int op) {
    switch (op % 10) {
        case 0:
        case 1: return update(in, nullptr, 0);
        case 2: return update(in, nullptr, 1);
        case 3: return update(in, nullptr, 2);
        case 4:
        case 5: {
            const int axis = in.axisIndex(), nSamples = in.from(kSampleCounts);
            int finished, count;
            Outputs o(0, 1);
            return sampleOnce(axis, nSamples, (in.byte() & 1) != 0, finished, count, o);
        }
        case 6: return sampleToEnd((in.byte() & 1) != 0);
        case 7: return checkPlanCall(in);
        case 8: return getLeftMoveTime() >= 0.0 ? nullptr : "getLeftMoveTime returned a negative value or NaN";
        default: setTestLevel((in.byte() & 1) != 0); return nullptr;
    }
}

}  // namespace

const char* runInput(const std::uint8_t* data, std::size_t size) {
    // Every input starts from the state at load: no plan, no update yet; and
    // with a new planner of the driver's own.
    defaultState() = PlannerState{};
    Session session;
    if (const char* failure = newPlanner(session)) return failure;
    Reader in(data, size);
    for (int ops = 0; ops < 64 && !in.done(); ++ops) {
        const std::uint8_t op = in.byte();
        if (traceCalls) std::fprintf(stderr, "operation %d\n", op);
        const char* failure = op < 100 ? defaultOperation(in, op) : ownOperation(session, in, op - 100);
        // The driver's planner's properties after every operation on it.
        if (failure == nullptr && op >= 100) failure = checkSession(session);
        if (failure != nullptr) return failure;
    }
    return nullptr;
}

}  // namespace vekta::fuzz
