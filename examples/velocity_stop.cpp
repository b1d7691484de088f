// A velocity-mode stop: a six-axis move is under way when the controller is
// told to stop. A velocity update plans the fastest synchronised stop from the
// last set-points (no target: each axis ends at rest wherever that is), and
// the velocity-mode sampler hands it out.
#include <vekta/vekta.h>

#include <cmath>
#include <cstdio>

namespace {
constexpr int kAxes = 6;

// One 5 ms cycle: a set-point for every axis. True once all have finished.
bool sampleAll(bool velocityMode, double* pos, double* vel, double* acc) {
    bool allFinished = true;
    for (int axis = 0; axis < kAxes; ++axis) {
        int count = 0;
        const auto sample = velocityMode ? vektaVelocityModePerFreedom : vektaPositionModePerFreedom;
        allFinished &= sample(axis, 1, &pos[axis], &vel[axis], &acc[axis], count) == 1;
    }
    return allFinished;
}
}  // namespace

int main() {
    const double target[kAxes] = {2.0, -1.0, 1.5, -2.0, 1.0, 3.0};
    const double maxVel[kAxes] = {1.0, 1.5, 2.0, 1.0, 1.2, 0.8};
    const double maxAcc[kAxes] = {4.0, 3.0, 5.0, 2.0, 6.0, 4.0};
    double pos[kAxes] = {}, vel[kAxes] = {}, acc[kAxes] = {};

    if (!vektaPostionModeParaUpd(kAxes, target, maxVel, maxAcc, 10.0, pos, vel, acc, 0.0)) return 1;
    for (int period = 0; period < 100; ++period) sampleAll(false, pos, vel, acc);  // 0.5 s of the move

    // Stop: plan from the state just handed out.
    if (!vektaVelocityModeParaUpd(kAxes, maxVel, maxAcc, 10.0, pos, vel, acc, 0.0)) return 1;
    std::printf("velocity_stop: stopping from axis 0 at %.4f moving %.4f, %.3f s to rest\n", pos[0], vel[0],
                getLeftMoveTime());
    for (int period = 1; period <= 100000; ++period) {
        if (sampleAll(true, pos, vel, acc)) {
            std::printf("velocity_stop: at rest after %d periods, axis 0 at %.4f\n", period, pos[0]);
            for (int i = 0; i < kAxes; ++i) {
                if (std::fabs(vel[i]) > 1e-9) return 1;
            }
            return 0;
        }
    }
    return 1;
}
