// Planners of one's own: two planners driven from two threads at once give,
// bit for bit, what each gives alone. VEKTA_INSTANCE_MOTIONS sets the motions
// per planner (100000 under the ThreadSanitizer build, preset tsan).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <thread>

#include "sweep.h"
#include "vekta/vekta_c.h"

namespace {

using namespace vekta::sweep;

// FNV-1a over bytes: every result, sample and printed character of a run.
void mix(std::uint64_t& h, const void* data, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) h = (h ^ static_cast<const unsigned char*>(data)[i]) * 0x100000001b3ull;
}
void hashText(const char* text, std::size_t length, void* user) { mix(*static_cast<std::uint64_t*>(user), text, length); }

// Plans and samples `count` motions of the sweep's `seed` on `p`; planner 1
// prints into the hash, planner 2 prints nothing.
std::uint64_t drive(VektaPlanner* p, std::uint64_t seed, long count) {
    std::uint64_t h = 0xcbf29ce484222325ull;
    if (seed == 1) vektaPlannerOutputToCallback(p, hashText, &h);
    if (seed == 2) vektaPlannerOutputOff(p);
    for (long i = 0; i < count; ++i) {
        const Motion m = drawMotion(seed, static_cast<std::uint64_t>(i));
        vektaPlannerSetRecovery(p, i % 3 == 0);
        const int ok = m.mode == Mode::Position
                           ? vektaPlannerPositionUpdate(p, m.axes, m.tgt, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel, m.acc)
                           : vektaPlannerVelocityUpdate(p, m.axes, m.maxVel, m.maxAcc, m.jerkRatio, m.pos, m.vel, m.acc);
        double s[3] = {static_cast<double>(ok), vektaPlannerLeftTime(p)};
        mix(h, s, sizeof s);
        for (int period = 0, done = 0, n = 0; ok && done < m.axes && period < 40000; ++period) {
            done = 0;
            for (int axis = 0; axis < m.axes; ++axis) {
                done += vektaPlannerSample(p, axis, 1, &s[0], &s[1], &s[2], &n);
                mix(h, s, n * sizeof s);
            }
        }
    }
    return h;
}

std::uint64_t alone(std::uint64_t seed, long count) {
    VektaPlanner* p = vektaPlannerCreate();
    const std::uint64_t h = drive(p, seed, count);
    vektaPlannerDestroy(p);
    return h;
}

TEST(Instances, TwoPlannersOnTwoThreadsGiveWhatEachGivesAlone) {
    const char* env = std::getenv("VEKTA_INSTANCE_MOTIONS");
    const long count = env != nullptr ? std::atol(env) : 2000;
    // One on the heap, one in the caller's memory.
    VektaPlanner* heap = vektaPlannerCreate();
    std::unique_ptr<std::max_align_t[]> mem(new std::max_align_t[vektaPlannerSize() / sizeof(std::max_align_t) + 1]);
    VektaPlanner* placed = vektaPlannerInit(mem.get());
    ASSERT_TRUE(heap != nullptr && placed != nullptr);
    std::uint64_t got1 = 0, got2 = 0;
    std::thread t1([&] { got1 = drive(heap, 1, count); });
    std::thread t2([&] { got2 = drive(placed, 2, count); });
    t1.join();
    t2.join();
    vektaPlannerDestroy(heap);
    EXPECT_EQ(got1, alone(1, count));
    EXPECT_EQ(got2, alone(2, count));
}

}  // namespace
