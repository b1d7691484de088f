// A fast slice of the randomized end-to-end sweep, through the shared library:
// every sampled property (accepted, synchronised, on target, within the
// limits, minimal in time for rest-to-rest moves) against the plan check.
#include <gtest/gtest.h>

#include <cmath>

#include "sweep.h"

namespace vekta::sweep {
namespace {

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
