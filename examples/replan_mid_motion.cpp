// Re-planning mid-motion: half-way through a six-axis move the goal of two
// axes changes, and the controller plans again from the set-points it has just
// handed out (position, velocity and acceleration: the state is moving).
#include <vekta/vekta.h>

#include <cstdio>

int main() {
    constexpr int kAxes = 6;
    const double maxVel[kAxes] = {2.0, 1.8, 2.2, 3.0, 3.0, 4.0};
    const double maxAcc[kAxes] = {6.0, 5.0, 7.0, 10.0, 10.0, 14.0};
    double target[kAxes] = {1.2, -0.9, 1.4, -1.0, 0.2, 3.1};
    double pos[kAxes] = {0.0, -0.3, 0.5, 1.0, -0.2, 0.0};
    double vel[kAxes] = {0.0, 0.6, 0.0, 0.0, 0.0, 0.0};
    double acc[kAxes] = {0.0, 1.5, 0.0, 0.0, 0.0, 0.0};

    if (!vektaPostionModeParaUpd(kAxes, target, maxVel, maxAcc, 10.0, pos, vel, acc, 0.0)) return 1;
    const double firstPlan = getLeftMoveTime();
    bool replanned = false;

    for (int period = 1; period <= 100000; ++period) {
        bool allFinished = true;
        for (int axis = 0; axis < kAxes; ++axis) {
            int count = 0;
            allFinished &= vektaPositionModePerFreedom(axis, 1, &pos[axis], &vel[axis], &acc[axis], count) == 1;
        }
        if (allFinished) {
            std::printf("replan: all axes finished after %d periods; axis 3 at %.6f, axis 5 at %.6f\n", period, pos[3],
                        pos[5]);
            return 0;
        }
        if (!replanned && period * 0.005 >= firstPlan / 2.0) {
            replanned = true;
            target[3] = -0.5;
            target[5] = 2.0;
            if (!vektaPostionModeParaUpd(kAxes, target, maxVel, maxAcc, 10.0, pos, vel, acc, 0.0)) return 1;
            std::printf("replan: new goal at t %.3f s, %.3f s to go (was %.3f s)\n", period * 0.005,
                        getLeftMoveTime(), firstPlan - period * 0.005);
        }
    }
    return 1;
}
