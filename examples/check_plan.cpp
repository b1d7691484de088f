// Checking a plan before using it: vektaCheckPlan verifies the plan the last
// update made (limits, continuity, end state, a common end) without changing
// it. A controller samples only a plan that passes; otherwise it holds its
// present set-point and logs why.
#include <vekta/vekta.h>

#include <cstdio>

namespace {
// Plans one axis and says whether the plan may be sampled.
bool planAndCheck(const char* what, double pos, double vel, double acc, double target, double maxVel,
                  double maxAcc, double jerkRatio) {
    char why[160] = "the update failed";
    const bool ok = vektaPostionModeParaUpd(1, &target, &maxVel, &maxAcc, jerkRatio, &pos, &vel, &acc, 0.0) &&
                    vektaCheckPlan(why, sizeof why) == VEKTA_CHECK_OK;
    std::printf("check_plan: %s: %s\n", what, ok ? "passed, sample it" : why);
    return ok;
}
}  // namespace

int main() {
    const bool good = planAndCheck("from rest", 0.0, 0.0, 0.0, 1.5, 1.0, 4.0, 10.0);
    // A start well beyond the velocity limit, still accelerating away from
    // the target: the check refuses this plan (its section times go back).
    planAndCheck("beyond the limits", -2.5477905490349966, -4.5911863894322282, 10.499526281729274,
                 3.0026357133052834, 3.8673492692011489, 8.4945584045787363, 6.2321253536684109);
    return good ? 0 : 1;
}
