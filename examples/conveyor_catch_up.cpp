// Catching up with a conveyor that moves along axis 0: the update plans from
// rest at 0 to a target given relative to the robot in the conveyor's frame,
// and axis 0 ends moving with the conveyor. It is refused when the conveyor
// would carry the target to its limit before the catch-up ends.
#include <vekta/vekta.h>

#include <cmath>
#include <cstdio>

int main() {
    const double target[1] = {0.4};  // in the conveyor's frame, now
    const double maxVel[1] = {1.0};
    const double maxAcc[1] = {3.0};
    const double conveyorVel = 0.25, spare = 1.0;  // spare: refused below 0.002

    // The conveyor ends at 0.6: the target gets there first, and the plan is refused.
    if (vektaPostionModeParaUpdConveyor(1, conveyorVel, 0.6, target, maxVel, maxAcc, 10.0, spare)) return 1;
    char why[160];
    vektaCheckPlan(why, sizeof why);
    std::printf("conveyor_catch_up: refused as expected: %s\n", why);

    // The conveyor ends at 2.0: plenty of room.
    if (!vektaPostionModeParaUpdConveyor(1, conveyorVel, 2.0, target, maxVel, maxAcc, 10.0, spare)) return 1;
    double pos = 0.0, vel = 0.0, acc = 0.0;
    int periods = 0, count = 0;
    while (vektaPositionModePerFreedom(0, 1, &pos, &vel, &acc, count) == 0 && ++periods < 100000) {
    }
    std::printf("conveyor_catch_up: caught up after %d periods at %.4f, moving with the conveyor at %.4f\n",
                periods + 1, pos, vel);
    return std::fabs(vel - conveyorVel) < 1e-9 ? 0 : 1;
}
