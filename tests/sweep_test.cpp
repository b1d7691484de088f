// A fast slice of the randomized end-to-end sweep, through the shared library.
#include <gtest/gtest.h>

#include <cmath>

#include "sweep.h"

namespace vekta::sweep {
namespace {

TEST(Sweep, DoubleSReferenceKnowsItsCases) {
    // Cruise with the acceleration limit reached: T = d/V + V/A + A/J.
    EXPECT_NEAR(doubleSDuration(10.0, 1.0, 2.0, 20.0), 10.0 + 0.5 + 0.1, 1e-12);
    // Tiny move: four ramps of (d / 2J)^(1/3).
    EXPECT_NEAR(doubleSDuration(2e-3, 1.0, 2.0, 20.0), 4.0 * std::cbrt(2e-3 / 40.0), 1e-12);
}

TEST(Sweep, RestToRestMovesAreAcceptedOnTargetAndWithinLimits) {
    QuietStdout quiet;
    int checked = 0;
    for (std::uint64_t i = 0; checked < 300 && i < 5000; ++i) {
        const Motion m = drawMotion(7, i);
        if (m.start != StartClass::Rest) continue;
        ++checked;
        const Outcome o = runMotion(m);
        for (int k = 0; k < kFailureKinds; ++k) {
            EXPECT_FALSE(o.failed[k]) << failureName(k) << ": " << replayCommand("vekta-sweep", 7, i);
        }
    }
    EXPECT_EQ(checked, 300);
}

TEST(Sweep, EveryAcceptedPlanEndsTogetherOnTarget) {
    // Whatever the start, a plan that is accepted must finish: all axes in the
    // same period, on target (or at rest in velocity mode). Within-limit
    // starts must also keep every limit; beyond-limit starts are only held to
    // the limits once they are back within them. A stop (velocity mode) has
    // no position condition and is always planned.
    QuietStdout quiet;
    for (std::uint64_t i = 0; i < 600; ++i) {
        const Motion m = drawMotion(11, i);
        const Outcome o = runMotion(m);
        const std::string where = replayCommand("vekta-sweep", 11, i);
        if (m.mode == Mode::Velocity) {
            EXPECT_FALSE(o.failed[kRejected]) << where;
        }
        if (o.failed[kRejected]) continue;
        EXPECT_FALSE(o.failed[kNoEnd]) << where;
        EXPECT_FALSE(o.failed[kNotSynchronised]) << where;
        EXPECT_FALSE(o.failed[kOffTarget]) << where;
        EXPECT_FALSE(o.failed[kNotMinimal]) << where;
        if (m.start != StartClass::Beyond) {
            EXPECT_FALSE(o.failed[kVelocityLimit]) << where;
            EXPECT_FALSE(o.failed[kAccelerationLimit]) << where;
            EXPECT_FALSE(o.failed[kJerkLimit]) << where;
        }
    }
}

TEST(Sweep, ThePlanCheckPassesExactlyTheCleanPlans) {
    // Checked before any sample is taken, the plan check must agree with what
    // sampling the whole motion finds: a plan it passes is clean, and a plan
    // it refuses shows a sampled failure (or was not made at all).
    // (Disagreements are collected: the library's output, and with it a
    // failure message, goes to /dev/null while the sweep runs.)
    std::string disagreements;
    int refused = 0;
    {
        QuietStdout quiet;
        for (std::uint64_t i = 0; i < 800; ++i) {
            const Motion m = drawMotion(13, i);
            const Outcome o = runMotion(m);
            if ((o.checkCode == 0) != !o.any()) {
                disagreements += std::string(checkCodeName(o.checkCode)) + ": " + replayCommand("vekta-sweep", 13, i) + "\n";
            }
            refused += o.checkCode != 0;
        }
    }
    EXPECT_EQ(disagreements, "");
    EXPECT_GT(refused, 0) << "the slice should hold some refused plans";
}

}  // namespace
}  // namespace vekta::sweep
