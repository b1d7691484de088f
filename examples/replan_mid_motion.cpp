// A minimal controller loop around libvekta: plan a six-axis move, hand out
// one set-point per axis every 5 ms, and re-plan half-way to a new target from
// the state last handed out, as a controller does when its goal changes.
//
// Build against an installed library, either way:
//   cmake -S examples -B build-example -DCMAKE_PREFIX_PATH=<prefix> && cmake --build build-example
//   g++ -std=c++17 controller_loop.cpp $(pkg-config --cflags --libs vekta)
#include <vekta/vekta.h>

#include <cstdio>

namespace {

constexpr int kAxes = 6;
constexpr double kPeriod = 0.005;  // the library's control period
constexpr int kMaxPeriods = 20000;

// Where the drives would get their set-points.
void sendToDrives(int period, const double* pos) {
    if (period % 40 == 0) {  // show one cycle in forty (every 0.2 s)
        std::printf("controller: t %6.3f s  pos", period * kPeriod);
        for (int i = 0; i < kAxes; ++i) std::printf(" %8.4f", pos[i]);
        std::printf("\n");
    }
}

}  // namespace

int main() {
    const double maxVel[kAxes] = {2.0, 1.8, 2.2, 3.0, 3.0, 4.0};
    const double maxAcc[kAxes] = {6.0, 5.0, 7.0, 10.0, 10.0, 14.0};
    const double jerkRatio = 10.0;  // jerk limit = 10 x acceleration limit
    double target[kAxes] = {1.2, -0.9, 1.4, -1.0, 0.2, 3.1};
    double pos[kAxes] = {0.0, -0.3, 0.5, 1.0, -0.2, 0.0};
    double vel[kAxes] = {0.0, 0.6, 0.0, 0.0, 0.0, 0.0};
    double acc[kAxes] = {0.0, 1.5, 0.0, 0.0, 0.0, 0.0};

    if (!vektaPostionModeParaUpd(kAxes, target, maxVel, maxAcc, jerkRatio, pos, vel, acc, 0.0)) {
        std::printf("controller: the move was rejected\n");
        return 1;
    }
    const double firstPlan = getLeftMoveTime();
    bool replanned = false;

    for (int period = 1; period <= kMaxPeriods; ++period) {
        // Here a real controller waits for its next 5 ms tick.
        bool allFinished = true;
        for (int axis = 0; axis < kAxes; ++axis) {
            int count = 0;
            const int finished = vektaPositionModePerFreedom(axis, 1, &pos[axis], &vel[axis], &acc[axis], count);
            allFinished = allFinished && finished == 1;
        }
        sendToDrives(period, pos);
        if (allFinished) {
            std::printf("controller: all %d axes finished after %d periods (%.3f s)\n", kAxes, period,
                        period * kPeriod);
            for (int i = 0; i < kAxes; ++i) {
                std::printf("controller: axis %d at %.6f (target %.6f)\n", i, pos[i], target[i]);
            }
            return 0;
        }
        // Half-way, the goal of the wrist axes changes: re-plan from the
        // set-points just handed out.
        if (!replanned && period * kPeriod >= firstPlan / 2.0) {
            replanned = true;
            target[3] = -0.5;
            target[5] = 2.0;
            if (!vektaPostionModeParaUpd(kAxes, target, maxVel, maxAcc, jerkRatio, pos, vel, acc, 0.0)) {
                std::printf("controller: the new goal was rejected\n");
                return 1;
            }
            std::printf("controller: new goal at t %.3f s, %.3f s to go\n", period * kPeriod, getLeftMoveTime());
        }
    }
    std::printf("controller: the move did not finish\n");
    return 1;
}
