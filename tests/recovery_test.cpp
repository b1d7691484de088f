// Recovery mode, one motion per repair and one it must refuse.
//
// Every row is planned with recovery off, on, and off again. Off, the update
// fails or plans a curve the plan check rejects, with the check's verdict of
// the row (also after recovery was on: switching it off restores the default).
// On, the repaired axis plans a curve that passes the check, is physical and
// ends on the target with the step-1 id the repair chose; or, where no valid
// curve exists, the update returns false and prints why.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "api/default_state.h"
#include "support/test_support.h"
#include "vekta/vekta.h"

namespace vekta::test {
namespace {

struct Row {
    const char* what;
    double p, v, a, target, V, A, ratio;
    int defaultCheck;  // vektaCheckPlan after the default update
    int recoveryId;    // step-1 id of the recovered plan; 0: refused
};

const Row kRows[] = {
    {"turning back needs a trapezoid first (node 44)", 0, 0.3, 0, 0, 1, 4, 10, VEKTA_CHECK_NO_PLAN, 11},
    {"braking, eased off part of the way (id 18 via node 33)", 0, -0.5, 0.5, -0.3, 2, 1, 1, VEKTA_CHECK_NO_PLAN, 18},
    {"the same braking mirrored (id 19)", 0, 0.5, -0.5, 0.3, 2, 1, 1, VEKTA_CHECK_NO_PLAN, 19},
    {"beyond -V, back inside by the release (node 5)", 0, -1.1, 0.8, 1, 1, 1, 1, VEKTA_CHECK_TIME_BACK, 2},
    {"an infinite velocity limit has no valid plan", 0, 0, 0, 1, INFINITY, 1, 10, VEKTA_CHECK_BAD_LIMIT, 0},
};

TEST(Recovery, RepairsWhatTheDefaultGetsWrongAndRefusesWhatTheCheckRejects) {
    for (const Row& c : kRows) {
        for (const bool on : {false, true, false}) {
            SCOPED_TRACE(std::string(c.what) + (on ? ", recovery on" : ", recovery off"));
            vektaSetRecovery(on);
            Output out;
            const bool ok = vektaPostionModeParaUpd(1, &c.target, &c.V, &c.A, c.ratio, &c.p, &c.v, &c.a, 0.0);
            const std::string printed = out.text();  // before any failure is printed
            char why[200];
            const int check = vektaCheckPlan(why, sizeof why);
            const int want = !on ? c.defaultCheck : c.recoveryId != 0 ? VEKTA_CHECK_OK : VEKTA_CHECK_NO_PLAN;
            EXPECT_EQ(ok, want != VEKTA_CHECK_NO_PLAN);
            EXPECT_EQ(check, want) << why;
            if (on && !ok) {
                EXPECT_NE(printed.find("vekta: plan refused: axis 0: velocity limit inf is not"), std::string::npos);
            }
            if (!on || !ok) continue;
            const AxisPlan& r = defaultState().records[0];
            EXPECT_EQ(r.step1Profile, c.recoveryId);
            // A start beyond V passes it until the release brings it back.
            const CurveReport rep = expectPhysicalCurve(widened(r, c.v, c.a), true, {1e-6, 1e-9});
            expectEndsAt(r, rep.endTime, c.target, 0.0);
        }
    }
}

}  // namespace
}  // namespace vekta::test
