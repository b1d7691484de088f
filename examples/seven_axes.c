/* A seven-axis arm at 1 ms, through the library's own calls: every joint with
 * its own velocity, acceleration and jerk limits, one move planned from rest,
 * then one vektaPlannerNext per control cycle hands out the set-points of all
 * seven joints until every one has arrived. Every status is checked, and a
 * failure prints the planner's reason. Last, a spoiled limit shows a refusal. */
#include <vekta/vekta_c.h>

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define AXES 7

static void printJoints(const char* what, const double* values) {
    printf("  %-9s", what);
    for (int i = 0; i < AXES; ++i) printf(" %7.4f", values[i]);
    printf("\n");
}

int main(void) {
    /* Joint limits in rad/s, rad/s^2 and rad/s^3: the wrist joints are quicker. */
    static const double maxVel[AXES] = {1.5, 1.5, 1.8, 1.8, 2.5, 2.5, 3.0};
    static const double maxAcc[AXES] = {3.0, 3.0, 4.0, 4.0, 6.0, 6.0, 8.0};
    static const double maxJerk[AXES] = {15.0, 15.0, 25.0, 25.0, 50.0, 50.0, 80.0};
    static const double start[AXES] = {0.0, -0.4, 0.0, -1.6, 0.0, 1.2, 0.8};
    static const double target[AXES] = {1.2, 0.3, -0.5, -0.9, 0.7, 0.4, -0.6};

    VektaPlanner* arm = vektaPlannerCreate();
    if (arm == NULL) {
        fputs("seven_axes: out of memory\n", stderr);
        return EXIT_FAILURE;
    }
    int status = vektaPlannerSetPeriod(arm, 0.001);
    if (status == VEKTA_OK) {
        /* From rest: vel and acc may be NULL. */
        status = vektaPlannerMove(arm, AXES, target, maxVel, maxAcc, maxJerk, start, NULL, NULL);
    }
    if (status != VEKTA_OK) {
        fprintf(stderr, "seven_axes: refused (status %d): %s\n", status, vektaPlannerError(arm));
        vektaPlannerDestroy(arm);
        return EXIT_FAILURE;
    }
    const double period = vektaPlannerPeriod(arm), duration = vektaPlannerDuration(arm);
    printf("seven_axes: %d joints, %.3f s at %g ms (joint 0 alone: %.3f s)\n", vektaPlannerAxes(arm), duration,
           period * 1e3, vektaPlannerMinimumTime(arm, 0));

    /* The control cycle: one call a period for all joints. */
    double pos[AXES], vel[AXES], acc[AXES];
    int cycles = 0, result = 0;
    while (result == 0) {
        result = vektaPlannerNext(arm, pos, vel, acc);
        if (result < 0) {
            fprintf(stderr, "seven_axes: no plan to sample: %s\n", vektaPlannerError(arm));
            vektaPlannerDestroy(arm);
            return EXIT_FAILURE;
        }
        if (++cycles % 400 == 0) {
            printf("t = %.3f s\n", cycles * period);
            printJoints("pos", pos);
            printJoints("vel", vel);
        }
    }
    int arrived = fabs(cycles * period - duration) < period; /* the cycle the plan ends in */
    /* The end meets the target to the rounding of the arithmetic. */
    for (int i = 0; i < AXES; ++i) arrived &= fabs(pos[i] - target[i]) <= 1e-12 && vel[i] == 0.0 && acc[i] == 0.0;
    printf("seven_axes: %s after %d cycles\n", arrived ? "every joint on target at rest" : "NOT ARRIVED", cycles);

    /* A limit that is not positive is refused before anything is planned, and
     * the planner says which. */
    double spoiled[AXES];
    memcpy(spoiled, maxJerk, sizeof spoiled);
    spoiled[3] = 0.0;
    status = vektaPlannerMove(arm, AXES, start, maxVel, maxAcc, spoiled, pos, vel, acc);
    printf("seven_axes: a jerk limit of 0 gives status %d: %s\n", status, vektaPlannerError(arm));

    vektaPlannerDestroy(arm);
    return arrived && status == VEKTA_INVALID_ARGUMENT ? EXIT_SUCCESS : EXIT_FAILURE;
}
