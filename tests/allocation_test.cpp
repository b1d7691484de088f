// Planning and sampling never touch the heap: a controller calls them in its
// real-time cycle. Every allocation of the process is counted — through
// AddressSanitizer's allocation hooks in a sanitized build, otherwise by
// interposing the malloc family (operator new goes through malloc too) — and
// after a first round of calls, which may set up the standard output's buffer
// or resolve symbols, no update and no sample may allocate.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "sweep.h"
#include "vekta/vekta.h"

namespace {
long allocations = 0;  // the library is single-threaded, and so is this test
}

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

namespace {
void countMalloc(const volatile void*, std::size_t) { ++allocations; }
void ignoreFree(const volatile void*) {}
const bool hooksInstalled = __sanitizer_install_malloc_and_free_hooks(countMalloc, ignoreFree) != 0;
}  // namespace

#else

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);

void* malloc(std::size_t n) {
    ++allocations;
    return __libc_malloc(n);
}
void* calloc(std::size_t n, std::size_t size) {
    ++allocations;
    return __libc_calloc(n, size);
}
void* realloc(void* p, std::size_t n) {
    ++allocations;
    return __libc_realloc(p, n);
}
void* aligned_alloc(std::size_t alignment, std::size_t n) {
    ++allocations;
    return __libc_memalign(alignment, n);
}
void* memalign(std::size_t alignment, std::size_t n) {
    ++allocations;
    return __libc_memalign(alignment, n);
}
int posix_memalign(void** out, std::size_t alignment, std::size_t n) {
    ++allocations;
    void* p = __libc_memalign(alignment, n);
    if (p == nullptr) return ENOMEM;
    *out = p;
    return 0;
}
}

namespace {
const bool hooksInstalled = true;
}

#endif

namespace {

using namespace vekta::sweep;

// Allocations made while `f` runs.
template <typename F>
long allocationsDuring(F&& f) {
    const long before = allocations;
    f();
    return allocations - before;
}

TEST(Allocation, TheCounterSeesEveryWayToTheHeap) {
    ASSERT_TRUE(hooksInstalled);
    EXPECT_GE(allocationsDuring([] { delete new volatile int(3); }), 1);
    // Inside another shared library (the C library opening a stream).
    EXPECT_GE(allocationsDuring([] {
                  std::FILE* f = std::fopen("/dev/null", "w");
                  if (f != nullptr) std::fclose(f);
              }),
              1);
}

TEST(Allocation, PlanningAndSamplingAllocateNothingAfterTheFirstCall) {
    ASSERT_TRUE(hooksInstalled);
    // The library's output goes to /dev/null while it runs; the verdicts come
    // after, on the real standard output.
    auto quiet = std::make_unique<QuietStdout>();
    // A first round of every entry point sets up what the first calls set up.
    const double tgt[6] = {0.4, -0.2, 0.3, 0.0, 0.5, -0.6};
    const double v[6] = {1.0, 1.0, 1.5, 2.0, 2.0, 3.0}, a[6] = {3.0, 3.0, 4.0, 6.0, 6.0, 9.0};
    auto conveyor = [&](double limit) {
        if (!vektaPostionModeParaUpdConveyor(6, 0.25, limit, tgt, v, a, 8.0, 1.0)) return;
        for (int period = 0, done = 0; period < 2000 && done < 6; ++period) {
            done = 0;
            for (int axis = 0; axis < 6; ++axis) {
                double p[4], vel[4], acc[4];
                int count = 0;
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

}  // namespace
