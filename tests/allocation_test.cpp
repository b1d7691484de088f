// Planning and sampling never touch the heap: a controller calls them in its
// real-time cycle. Every allocation of the process is counted, and after a
// first round of calls, which may set up the standard output's buffer or
// resolve symbols, no update and no sample may allocate.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "sweep.h"
#include "vekta/vekta.h"

#if defined(__SANITIZE_ADDRESS__)
#define VEKTA_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEKTA_TEST_ASAN 1
#endif
#endif

#if defined(VEKTA_TEST_ASAN)
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                                         void (*onFree)(const volatile void*));
#endif

namespace {

using namespace vekta::sweep;

long allocations = 0;  // the library is single-threaded, and so is this test

// AddressSanitizer sees every allocation of the process, in this program and
// in the C and C++ libraries alike; the test runs in the sanitized build.
#if defined(VEKTA_TEST_ASAN)
void countMalloc(const volatile void*, std::size_t) { ++allocations; }
void ignoreFree(const volatile void*) {}
const bool hooksInstalled = __sanitizer_install_malloc_and_free_hooks(countMalloc, ignoreFree) != 0;
#else
const bool hooksInstalled = false;
#endif

// Allocations made while `f` runs.
template <typename F>
long allocationsDuring(F&& f) {
    const long before = allocations;
    f();
    return allocations - before;
}

TEST(Allocation, TheCounterSeesEveryWayToTheHeap) {
    if (!hooksInstalled) GTEST_SKIP() << "counted in the sanitized build (preset ci)";
    EXPECT_GE(allocationsDuring([] { delete new volatile int(3); }), 1);
    // Inside another shared library (the C library opening a stream).
    EXPECT_GE(allocationsDuring([] {
                  std::FILE* f = std::fopen("/dev/null", "w");
                  if (f != nullptr) std::fclose(f);
              }),
              1);
}

TEST(Allocation, PlanningAndSamplingAllocateNothingAfterTheFirstCall) {
    if (!hooksInstalled) GTEST_SKIP() << "counted in the sanitized build (preset ci)";
    // The library's output goes to /dev/null while it runs; the verdicts come
    // after, on the real standard output.
    auto quiet = std::make_unique<QuietStdout>();
    // A first round of every entry point sets up what the first calls set up.
    const double tgt[6] = {0.4, -0.2, 0.3, 0.0, 0.5, -0.6};
    const double v[6] = {1.0, 1.0, 1.5, 2.0, 2.0, 3.0}, a[6] = {3.0, 3.0, 4.0, 6.0, 6.0, 9.0};
    auto conveyor = [&](double limit) {
        if (!vektaPostionModeParaUpdConveyor(6, 0.25, limit, tgt, v, a, 8.0, 1.0)) return;
        double p[4], vel[4], acc[4];
        int count = 0;
        for (int period = 0, done = 0; period < 2000 && done < 6; ++period) {
            done = 0;
            for (int axis = 0; axis < 6; ++axis) {
                done += vektaVelocityModePerFreedom(axis, 1 + period % 4, p, vel, acc, count);
            }
        }
    };
    runMotion(drawMotion(1, 1));
    runMotion(drawMotion(1, 0));
    conveyor(2.0);
    getLeftMoveTime();

    // Motions of every kind the sweep draws (1 and 6 axes, position and
    // velocity updates, from rest, moving and beyond a limit, some refused),
    // every tenth with the trace prints on; conveyor catch-ups, accepted and
    // refused, sampled several periods per call.
    const long count = allocationsDuring([&] {
        for (std::uint64_t i = 0; i < 1500; ++i) {
            setTestLevel(i % 10 == 0);
            runMotion(drawMotion(5, i));
        }
        setTestLevel(false);
        conveyor(2.0);
        conveyor(0.5);
    });
    quiet.reset();
    EXPECT_EQ(count, 0);
}

// A planner of one's own, printing into a callback and then switched off;
// every other motion through the library's own calls (Move at 1 ms, Next and
// StateAt).
TEST(Allocation, APlannerOfOnesOwnAllocatesNothingWhateverItsOutput) {
    if (!hooksInstalled) GTEST_SKIP() << "counted in the sanitized build (preset ci)";
    VektaPlanner* p = vektaPlannerCreate();
    long chars = 0;
    vektaPlannerOutputToCallback(p, [](const char*, std::size_t n, void* c) { *static_cast<long*>(c) += n; }, &chars);
    auto run = [&](std::uint64_t i) {
        const Motion m = drawMotion(7, i);
        vektaPlannerSetTrace(p, i % 10 == 0);
        if (i % 2 == 1) {
            double jerk[6], s[3][6];
            for (int k = 0; k < m.axes; ++k) jerk[k] = m.maxAcc[k] * m.jerkRatio;
            if (vektaPlannerSetPeriod(p, 0.001) != VEKTA_OK ||
                vektaPlannerMove(p, m.axes, m.tgt, m.maxVel, m.maxAcc, jerk, m.pos, m.vel, m.acc) != VEKTA_OK) {
                return;
            }
            vektaPlannerStateAt(p, vektaPlannerDuration(p) / 2.0, s[0], s[1], s[2]);
            for (int k = 0; k < 240000 && vektaPlannerNext(p, s[0], s[1], s[2]) == 0; ++k) {
            }
            vektaPlannerSetPeriod(p, 0.005);
            return;
        }
        if (!vektaPlannerPositionUpdate(p, m.axes, m.tgt, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel, m.acc)) return;
        double s[3];
        for (int k = 0, n = 0, done = 0; done < m.axes && k < 240000; ++k) {
            done = (k % m.axes != 0 ? done : 0) + vektaPlannerSample(p, k % m.axes, 1, s, s + 1, s + 2, &n);
        }
    };
    run(0);
    run(1);
    const long count = allocationsDuring([&] {
        for (std::uint64_t i = 0; i < 600; ++i) {
            if (i == 300) vektaPlannerOutputOff(p);
            run(i);
        }
    });
    vektaPlannerDestroy(p);
    EXPECT_GT(chars, 0);
    EXPECT_EQ(count, 0);
}

}  // namespace
