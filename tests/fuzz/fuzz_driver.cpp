// The fuzz driver.
//
// Input format: a stream of operations, each an opcode byte followed by its
// arguments. Numbers are decoded by a selector byte: a table of hostile values
// (NaN, infinities, zeros, 1e-9 ... 1e9, extremes), a plausible value from two
// bytes, or the raw bits of a double; axis counts, axis indices and sample
// counts come from small tables that mix valid and invalid values. A stream
// that ends early reads zeros, so every byte string is a valid input.
//
// Arrays handed to the library are heap blocks of exactly the size the call
// may use (so AddressSanitizer sees any read or write beyond them); the output
// arrays of a sampling call get guard entries after nSamples and are filled
// with a marker first, so that a write beyond the written count shows.
#include "fuzz_driver.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>

#include "api/default_state.h"
#include "vekta/vekta.h"

namespace vekta::fuzz {

bool traceCalls = false;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

constexpr double kHostile[] = {
    0.0,   -0.0,  1.0,    -1.0,  kNaN,  kInf,    -kInf,  1e-9,   -1e-9,  1e9,  -1e9,
    1e-300, 1e300, 4.9e-324, std::numeric_limits<double>::max(),  -std::numeric_limits<double>::max(),
    0.005, 0.002, 0.0019, 2.0,   10.0,  1e-5,   1e5,    -1e5,   0.5,    3.0, -3.0};
constexpr int kHostileCount = sizeof(kHostile) / sizeof(kHostile[0]);

constexpr int kAxisCounts[] = {1, 6, 1, 6, 1, 6, 0, 2, 5, 7, -1, std::numeric_limits<int>::min()};
constexpr int kSampleCounts[] = {1, 1, 1, 2, 3, 13, 40, 0, -1, std::numeric_limits<int>::min()};

// Guard entries after the caller's arrays, and the marker they hold.
constexpr int kGuard = 4;
constexpr double kMarker = -7.25e77;

// Upper bound on the sampling calls spent on one axis by a "sample to the end"
// operation when the plan did not pass the check (no end is promised then).
constexpr int kBlindSampleCalls = 400;
// Checked plans up to this many periods (100 s) are sampled to their end.
constexpr double kLongPlan = 20000.0;

class Reader {
public:
    Reader(const std::uint8_t* d, std::size_t n) : d_(d), n_(n) {}
    bool done() const { return i_ >= n_; }
    std::uint8_t byte() { return i_ < n_ ? d_[i_++] : 0; }
    std::uint16_t u16() { return static_cast<std::uint16_t>(byte() | (byte() << 8)); }
    double raw() {
        std::uint64_t bits = 0;
        for (int k = 0; k < 8; ++k) bits |= static_cast<std::uint64_t>(byte()) << (8 * k);
        double x;
        std::memcpy(&x, &bits, sizeof x);
        return x;
    }
    // Any double: hostile, plausible (-8 .. 8), or raw.
    double value() {
        const std::uint8_t sel = byte();
        switch (sel % 8) {
            case 0: return kHostile[byte() % kHostileCount];
            case 7: return raw();
            default: return (static_cast<double>(u16()) - 32768.0) / 4096.0;
        }
    }
    // A limit: mostly a plausible positive value, sometimes anything.
    double limit() {
        const std::uint8_t sel = byte();
        switch (sel % 8) {
            case 0: return kHostile[byte() % kHostileCount];
            case 7: return raw();
            default: return 0.05 + static_cast<double>(u16()) / 2048.0;
        }
    }
    int axisCount() { return kAxisCounts[byte() % (sizeof(kAxisCounts) / sizeof(int))]; }
    int sampleCount() { return kSampleCounts[byte() % (sizeof(kSampleCounts) / sizeof(int))]; }
    int axisIndex() {
        const std::uint8_t b = byte();
        if (b == 255) return std::numeric_limits<int>::max();
        if (b == 254) return std::numeric_limits<int>::min();
        return static_cast<int>(b % 10) - 2;  // -2 .. 7
    }

private:
    const std::uint8_t* d_;
    std::size_t n_;
    std::size_t i_ = 0;
};

// One array argument of an update: exactly n entries, or none at all for an
// axis count the library must refuse before reading anything.
struct Array {
    std::unique_ptr<double[]> data;
    const double* get() const { return data.get(); }
};

Array readArray(Reader& in, int n, bool limit) {
    Array a;
    if (n != 1 && n != 6) return a;
    a.data.reset(new double[n]);
    // One value for every axis, or one per axis.
    const bool shared = (in.byte() & 3) == 0;
    for (int i = 0; i < n; ++i) {
        a.data[i] = (shared && i > 0) ? a.data[0] : (limit ? in.limit() : in.value());
    }
    return a;
}

void trace(const char* name, const Array& a, int n) {
    if (!traceCalls) return;
    std::fprintf(stderr, "  %s:", name);
    for (int i = 0; a.get() != nullptr && i < n; ++i) std::fprintf(stderr, " %.17g", a.data[i]);
    std::fprintf(stderr, "\n");
}

// The structure the sampler and the plan check rely on: every record's point
// count stays inside its arrays, whatever the update did.
const char* checkRecords() {
    const PlannerState& st = defaultState();
    for (int i = 0; i < kMaxAxes; ++i) {
        const int pc = st.records[i].pointCount;
        if (pc < 0 || pc > kMaxPoints) return "a record's pointCount left 0 .. 13";
    }
    if (!st.planFailed && (st.axisCount == 1 || st.axisCount == kLegacyAxes)) {
        for (int i = 0; i < st.axisCount; ++i) {
            if (st.records[i].pointCount < 1) return "an accepted plan has an axis without points";
        }
    }
    return nullptr;
}

const char* checkPlanCall(Reader& in) {
    // A small buffer, sometimes none: the message is cut, terminated, and
    // nothing is written past the given size.
    const int size = static_cast<int>(in.byte() % 80) - 2;
    char buf[96];
    std::memset(buf, 'x', sizeof buf);
    const int code = vektaCheckPlan(size > 0 ? buf : nullptr, size);
    if (code < VEKTA_CHECK_OK || code > VEKTA_CHECK_LAST) return "vektaCheckPlan returned an unknown code";
    for (int i = size > 0 ? size : 0; i < static_cast<int>(sizeof buf); ++i) {
        if (buf[i] != 'x') return "vektaCheckPlan wrote past the message size";
    }
    if (size > 0 && std::memchr(buf, '\0', static_cast<std::size_t>(size)) == nullptr) {
        return "vektaCheckPlan left the message unterminated";
    }
    return nullptr;
}

// One sampling call with guarded output arrays; checks the result, the count
// and that nothing beyond the written samples changed.
struct SampleResult {
    const char* failure;
    int finished;
    int count;
    double pos, vel, acc;  // the last sample written
};

SampleResult sampleOnce(int axis, int nSamples, bool velocityName) {
    SampleResult res{nullptr, 0, 0, 0.0, 0.0, 0.0};
    // At least one entry: the single-axis diagnostic reads pos[0] even when
    // nothing is written.
    const int cap = (nSamples > 0 ? nSamples : 1) + kGuard;
    std::unique_ptr<double[]> p(new double[cap]), v(new double[cap]), a(new double[cap]);
    for (int i = 0; i < cap; ++i) p[i] = v[i] = a[i] = kMarker;
    int count = -12345;
    res.finished = velocityName ? vektaVelocityModePerFreedom(axis, nSamples, p.get(), v.get(), a.get(), count)
                                : vektaPositionModePerFreedom(axis, nSamples, p.get(), v.get(), a.get(), count);
    res.count = count;
    if (res.finished != 0 && res.finished != 1) {
        res.failure = "sampling returned neither 0 nor 1";
        return res;
    }
    const int allowed = nSamples > 0 ? nSamples : 0;
    if (count < 0 || count > allowed) {
        res.failure = "sampling reported a count outside 0 .. nSamples";
        return res;
    }
    for (int i = count; i < cap; ++i) {
        if (p[i] != kMarker || v[i] != kMarker || a[i] != kMarker) {
            res.failure = "sampling wrote beyond the samples it reported";
            return res;
        }
    }
    if (count > 0) {
        res.pos = p[count - 1];
        res.vel = v[count - 1];
        res.acc = a[count - 1];
    }
    return res;
}

// Sample every planned axis period by period to its end. A plan that passes
// the check must finish within its planned periods plus one, and its last
// sample must be the curve's end state; any other plan must merely keep every
// call in bounds (a plan whose end time is not a number never finishes).
const char* sampleToEnd(bool velocityName) {
    const PlannerState& st = defaultState();
    const int axes = st.axisCount;
    if (axes != 1 && axes != kLegacyAxes) return nullptr;
    const bool checked = vektaCheckPlan(nullptr, 0) == VEKTA_CHECK_OK;
    for (int axis = 0; axis < axes; ++axis) {
        const AxisPlan& r = st.records[axis];
        // A checked plan of up to kLongPlan periods must finish in time; for
        // a longer one, as for an unchecked one, only bounded calls are checked.
        int budget = kBlindSampleCalls;
        bool mustFinish = false;
        if (checked) {
            const double left = r.secTime[r.pointCount - 1] - r.sampleCount * kCyclePeriod;
            const double periods = left > 0.0 ? std::ceil(left / kCyclePeriod) + 1.0 : 1.0;
            mustFinish = periods <= kLongPlan;
            if (mustFinish) budget = static_cast<int>(periods);
        }
        SampleResult last{};
        int calls = 0;
        bool finished = false;
        while (calls < budget && !finished) {
            last = sampleOnce(axis, 1, velocityName);
            if (last.failure != nullptr) return last.failure;
            ++calls;
            finished = last.finished == 1;
        }
        if (mustFinish) {
            if (!finished) return "a checked plan did not finish within its planned periods";
            if (last.count != 1) return "a finished axis returned no sample";
            // The last sample is the end sample, or a curve sample taken
            // exactly at the end time: the end state up to rounding, and up
            // to the check's position tolerance (a synchronised axis's last
            // section may miss its pinned end by the root finder's 1e-5).
            const double endPos = r.secPos[r.pointCount - 1];
            double pScale = 0.0, vScale = r.maxVel, aScale = r.maxAcc;
            for (int i = 0; i < r.pointCount; ++i) {
                pScale = std::fmax(pScale, std::fabs(r.secPos[i]));
                vScale = std::fmax(vScale, std::fabs(r.secVel[i]));
                aScale = std::fmax(aScale, std::fabs(r.secAcc[i]));
            }
            // The sampler takes a section whose acceleration changes by less
            // than 1e-5 as flat, so a curve sample may keep that much.
            const double end = r.secTime[r.pointCount - 1];
            if (std::fabs(last.acc) > 1e-6 * aScale + 1e-5 ||
                std::fabs(last.vel - r.tgtVel) > 1e-6 * vScale + 1e-5 * end ||
                std::fabs(last.pos - endPos) > 2e-5 + 2e-9 * pScale) {
                if (traceCalls) {
                    std::fprintf(stderr, "axis %d after %d calls: sample (%.17g %.17g %.17g), end (%.17g %.17g 0)\n",
                                 axis, calls, last.pos, last.vel, last.acc, endPos, r.tgtVel);
                }
                return "a checked plan's last sample is not its end state";
            }
        }
    }
    return nullptr;
}

const char* positionUpdate(Reader& in) {
    const int n = in.axisCount();
    const Array tgt = readArray(in, n, false), vmax = readArray(in, n, true), amax = readArray(in, n, true);
    const double ratio = in.limit();
    const Array p = readArray(in, n, false), v = readArray(in, n, false), a = readArray(in, n, false);
    const double spare = in.value();
    if (traceCalls) {
        std::fprintf(stderr, "position update n %d ratio %.17g spare %.17g\n", n, ratio, spare);
        trace("tgt", tgt, n), trace("maxVel", vmax, n), trace("maxAcc", amax, n);
        trace("pos", p, n), trace("vel", v, n), trace("acc", a, n);
    }
    const bool ok = vektaPostionModeParaUpd(n, tgt.get(), vmax.get(), amax.get(), ratio, p.get(), v.get(),
                                            a.get(), spare);
    if (ok && n != 1 && n != 6) return "an update with a bad axis count was accepted";
    return checkRecords();
}

const char* velocityUpdate(Reader& in) {
    const int n = in.axisCount();
    const Array vmax = readArray(in, n, true), amax = readArray(in, n, true);
    const double ratio = in.limit();
    const Array p = readArray(in, n, false), v = readArray(in, n, false), a = readArray(in, n, false);
    const double spare = in.value();
    if (traceCalls) {
        std::fprintf(stderr, "velocity update n %d ratio %.17g spare %.17g\n", n, ratio, spare);
        trace("maxVel", vmax, n), trace("maxAcc", amax, n);
        trace("pos", p, n), trace("vel", v, n), trace("acc", a, n);
    }
    const bool ok = vektaVelocityModeParaUpd(n, vmax.get(), amax.get(), ratio, p.get(), v.get(), a.get(), spare);
    if (ok && n != 1 && n != 6) return "an update with a bad axis count was accepted";
    return checkRecords();
}

const char* conveyorUpdate(Reader& in) {
    const int n = in.axisCount();
    const double conveyorVel = in.value(), conveyorLimit = in.value();
    const Array tgt = readArray(in, n, false), vmax = readArray(in, n, true), amax = readArray(in, n, true);
    const double ratio = in.limit();
    const double spare = (in.byte() & 1) ? 0.01 : in.value();
    if (traceCalls) {
        std::fprintf(stderr, "conveyor update n %d conveyorVel %.17g limit %.17g ratio %.17g spare %.17g\n", n,
                     conveyorVel, conveyorLimit, ratio, spare);
        trace("tgt", tgt, n), trace("maxVel", vmax, n), trace("maxAcc", amax, n);
    }
    const bool ok = vektaPostionModeParaUpdConveyor(n, conveyorVel, conveyorLimit, tgt.get(), vmax.get(),
                                                    amax.get(), ratio, spare);
    if (ok && n != 1 && n != 6) return "an update with a bad axis count was accepted";
    return checkRecords();
}

}  // namespace

const char* runInput(const std::uint8_t* data, std::size_t size) {
    // Every input starts from the state at load: no plan, no update yet.
    defaultState() = PlannerState{};
    Reader in(data, size);
    int ops = 0;
    while (!in.done() && ops < 64) {
        ++ops;
        const char* failure = nullptr;
        switch (in.byte() % 10) {
            case 0:
            case 1: failure = positionUpdate(in); break;
            case 2: failure = velocityUpdate(in); break;
            case 3: failure = conveyorUpdate(in); break;
            case 4:
            case 5: {
                const int axis = in.axisIndex();
                const int nSamples = in.sampleCount();
                const bool velocityName = (in.byte() & 1) != 0;
                if (traceCalls) std::fprintf(stderr, "sample axis %d nSamples %d\n", axis, nSamples);
                failure = sampleOnce(axis, nSamples, velocityName).failure;
                break;
            }
            case 6:
                if (traceCalls) std::fprintf(stderr, "sample to the end\n");
                failure = sampleToEnd((in.byte() & 1) != 0);
                break;
            case 7:
                if (traceCalls) std::fprintf(stderr, "check plan: %d\n", vektaCheckPlan(nullptr, 0));
                failure = checkPlanCall(in);
                break;
            case 8: {
                const double left = getLeftMoveTime();
                if (!(left >= 0.0)) failure = "getLeftMoveTime returned a negative value or NaN";
                break;
            }
            case 9: setTestLevel((in.byte() & 1) != 0); break;
        }
        if (failure != nullptr) return failure;
    }
    return nullptr;
}

}  // namespace vekta::fuzz
