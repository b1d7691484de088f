// A six-axis arm on a linear track, seven axes in all, at a 2 ms control
// cycle, through the C++ class of <vekta/planner.hpp>: the track (in metres)
// and the six joints (in radians) move to a pick pose together; half-way the
// cell's light curtain trips and the arm stops as fast as every axis allows,
// from the set-points it was last given. Every status is checked and a
// refusal prints the planner's reason.
#include <vekta/planner.hpp>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::size_t kAxes = 7;  // the track, then joints 1 to 6
using Axes = std::array<double, kAxes>;

void print(const char* what, const Axes& values) {
    std::printf("  %-8s", what);
    for (double x : values) std::printf(" %7.4f", x + 0.0);  // a stop ends at 0, never -0
    std::printf("\n");
}

int refused(const char* what, const vekta::Planner& arm) {
    std::fprintf(stderr, "arm_on_track: %s refused: %s\n", what, arm.error());
    return EXIT_FAILURE;
}

}  // namespace

int main() {
    // The track is slow and heavy; the wrist joints are quick.
    const Axes maxVel{0.8, 1.5, 1.5, 1.8, 2.5, 2.5, 3.0};
    const Axes maxAcc{1.5, 3.0, 3.0, 4.0, 6.0, 6.0, 8.0};
    const Axes maxJerk{6.0, 15.0, 15.0, 25.0, 50.0, 50.0, 80.0};
    const Axes home{0.0, 0.0, -0.4, 1.6, 0.0, 1.2, 0.0};
    const Axes pick{1.5, 0.9, 0.2, 1.1, -0.6, 0.8, 1.4};

    vekta::Planner arm;
    if (!arm) return refused("the planner", arm);
    if (arm.setPeriod(0.002) != vekta::Status::Ok) return refused("the period", arm);
    if (arm.move(pick, maxVel, maxAcc, maxJerk, home) != vekta::Status::Ok) return refused("the move", arm);
    std::printf("arm_on_track: to the pick pose in %.3f s; the track alone needs %.3f s\n", arm.duration(),
                arm.minimumTime(0));

    // The control cycle: one next() a period hands out every axis's set-point.
    Axes pos{}, vel{}, acc{};
    const int halfWay = static_cast<int>(arm.duration() / arm.period() / 2.0);
    for (int cycle = 1; cycle <= halfWay; ++cycle) {
        if (arm.next(pos, vel, acc) < 0) return refused("sampling", arm);
    }
    std::printf("light curtain after %d cycles:\n", halfWay);
    print("pos", pos);
    print("vel", vel);

    // The fastest synchronised stop from the last set-points.
    if (arm.stop(maxVel, maxAcc, maxJerk, pos, vel, acc) != vekta::Status::Ok) return refused("the stop", arm);
    int cycles = 0;
    while (arm.next(pos, vel, acc) == 0) ++cycles;
    std::printf("stopped %d cycles later (%.3f s):\n", cycles + 1, arm.duration());
    print("pos", pos);
    print("vel", vel);

    // A limit the planner cannot use is refused in words, before planning.
    Axes badJerk = maxJerk;
    badJerk[3] = 0.0;
    if (arm.move(pick, maxVel, maxAcc, badJerk, pos) == vekta::Status::InvalidArgument) {
        std::printf("a jerk limit of 0 is refused: %s\n", arm.error());
    }
    return EXIT_SUCCESS;
}
