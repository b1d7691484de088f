// A six-axis point-to-point move: one update plans it, then the controller
// hands out one set-point per axis every 5 ms until every axis reports that it
// has finished (all six in the same period).
#include <vekta/vekta.h>

#include <cmath>
#include <cstdio>

int main() {
    constexpr int kAxes = 6;
    const double target[kAxes] = {1.0, -0.5, 0.25, 2.0, -1.5, 0.75};
    const double maxVel[kAxes] = {1.0, 1.5, 2.0, 1.0, 1.2, 0.8};
    const double maxAcc[kAxes] = {4.0, 3.0, 5.0, 2.0, 6.0, 4.0};
    double pos[kAxes] = {}, vel[kAxes] = {}, acc[kAxes] = {};  // at rest at 0

    // Jerk limit of each axis = maxAcc x 10 (1/s); the last argument is unused.
    if (!vektaPostionModeParaUpd(kAxes, target, maxVel, maxAcc, 10.0, pos, vel, acc, 0.0)) {
        std::printf("point_to_point: the move was refused\n");
        return 1;
    }
    std::printf("point_to_point: planned %.3f s\n", getLeftMoveTime());

    for (int period = 1; period <= 100000; ++period) {  // one pass a 5 ms cycle
        bool allFinished = true;
        for (int axis = 0; axis < kAxes; ++axis) {
            int count = 0;
            allFinished &= vektaPositionModePerFreedom(axis, 1, &pos[axis], &vel[axis], &acc[axis], count) == 1;
        }
        if (allFinished) {
            std::printf("point_to_point: all axes finished after %d periods (%.3f s)\n", period, period * 0.005);
            for (int i = 0; i < kAxes; ++i) {
                if (std::fabs(pos[i] - target[i]) > 1e-4 || std::fabs(vel[i]) > 1e-9) return 1;  // on target, at rest
            }
            return 0;
        }
    }
    std::printf("point_to_point: the move did not finish\n");
    return 1;
}
