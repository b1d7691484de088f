// Re-planning every cycle: a three-axis gantry at a 1 ms control cycle follows
// a part that a camera sees drifting, and plans a new move in every cycle
// from the set-points it handed out the cycle before. The library's own calls
// plan exact curves (every section meets the next point, the last one the
// target), so a plan made in every cycle stays as smooth as one plan: the
// acceleration changes by at most the jerk limit times the period from one
// set-point to the next. The part stops after 0.6 s; the gantry arrives on it
// at rest.
//
// A refused call leaves its planner without a plan, so the new plan is made
// in a spare planner and taken only when it is accepted; a refusal (here the
// plan check refuses a few synchronised curves whose last pulse would need a
// hold of negative length, close to the end) keeps the motion already under
// way.
#include <vekta/planner.hpp>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

constexpr std::size_t kAxes = 3;  // x, y, z in metres
using Axes = std::array<double, kAxes>;
constexpr double kPeriod = 0.001;

// Where the camera sees the part at time t: it drifts along x and y, then
// lies still from 0.6 s on.
Axes partAt(double t) {
    const double s = std::fmin(t, 0.6);
    return {0.40 + 0.25 * s, 0.10 + 0.05 * std::sin(5.0 * s), 0.05};
}

}  // namespace

int main() {
    const Axes maxVel{1.0, 1.0, 0.5}, maxAcc{4.0, 4.0, 2.0}, maxJerk{40.0, 40.0, 20.0};
    Axes pos{0.0, 0.0, 0.3}, vel{}, acc{};

    vekta::Planner active, spare;
    for (vekta::Planner* p : {&active, &spare}) {
        if (!*p || p->setPeriod(kPeriod) != vekta::Status::Ok) return EXIT_FAILURE;
    }
    double worstJerk[kAxes] = {};  // the largest change of acceleration per cycle, over the period
    int cycle = 0, refused = 0;
    for (; cycle < 5000; ++cycle) {
        const Axes target = partAt(cycle * kPeriod);
        if (spare.move(target, maxVel, maxAcc, maxJerk, pos, vel, acc) == vekta::Status::Ok) {
            std::swap(active, spare);
        } else if (active.duration() == 0.0) {
            std::fprintf(stderr, "follow_moving_target: no plan in cycle %d: %s\n", cycle, spare.error());
            return EXIT_FAILURE;
        } else {
            ++refused;
        }
        const Axes before = acc;
        const int finished = active.next(pos, vel, acc);  // this cycle's set-points
        for (std::size_t i = 0; i < kAxes; ++i) {
            worstJerk[i] = std::fmax(worstJerk[i], std::fabs(acc[i] - before[i]) / kPeriod);
        }
        if (finished == 1) break;
    }
    const Axes part = partAt(cycle * kPeriod);
    std::printf("follow_moving_target: on the part after %d cycles (re-plans refused: %d, the plan before kept)\n",
                cycle + 1, refused);
    for (std::size_t i = 0; i < kAxes; ++i) {
        std::printf("  axis %zu: at %.6f m (part %.6f m), largest jerk between set-points %.1f of %.1f m/s^3\n", i,
                    pos[i], part[i], worstJerk[i], maxJerk[i]);
    }
    return EXIT_SUCCESS;
}
