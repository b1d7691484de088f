/* Planners from C: one planner on the heap and one in the caller's own memory,
 * each planning a six-axis move and handing out one set-point per axis every
 * 5 ms; the first one's lines go to a callback that counts them, the second's
 * are switched off. */
#include <vekta/vekta_c.h>

#include <math.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

#define AXES 6

static void countLines(const char* text, size_t length, void* user) {
    for (size_t i = 0; i < length; ++i) *(int*)user += text[i] == '\n';
}

/* Plans the move on planner and samples it to the end; returns the periods, or -1. */
static int move(VektaPlanner* planner, const double* target) {
    static const double maxVel[AXES] = {1.0, 1.5, 2.0, 1.0, 1.2, 0.8};
    static const double maxAcc[AXES] = {4.0, 3.0, 5.0, 2.0, 6.0, 4.0};
    double pos[AXES] = {0}, vel[AXES] = {0}, acc[AXES] = {0};
    if (!vektaPlannerPositionUpdate(planner, AXES, target, maxVel, maxAcc, 10.0, pos, vel, acc)) return -1;
    for (int period = 1; period <= 100000; ++period) {
        int finished = 0;
        for (int axis = 0; axis < AXES; ++axis) {
            int count = 0;
            finished += vektaPlannerSample(planner, axis, 1, &pos[axis], &vel[axis], &acc[axis], &count);
        }
        if (finished == AXES) {
            for (int i = 0; i < AXES; ++i) {
                if (fabs(pos[i] - target[i]) > 1e-4 || fabs(vel[i]) > 1e-9) return -1; /* on target, at rest */
            }
            return period;
        }
    }
    return -1;
}

int main(void) {
    static const double there[AXES] = {1.0, -0.5, 0.25, 2.0, -1.5, 0.75};
    static const double back[AXES] = {-0.5, 0.5, 0.0, 1.0, 0.0, -0.25};

    int lines = 0;
    VektaPlanner* heap = vektaPlannerCreate();
    if (heap == NULL) return 1;
    vektaPlannerOutputToCallback(heap, countLines, &lines);

    /* No allocation: the planner lives in memory the caller provides. */
    static _Alignas(max_align_t) unsigned char memory[1 << 16];
    if (vektaPlannerSize() > sizeof memory) return 1;
    VektaPlanner* placed = vektaPlannerInit(memory);
    if (placed == NULL) return 1;
    vektaPlannerOutputOff(placed);

    const int a = move(heap, there), b = move(placed, back);
    char verdict[128];
    const int check = vektaPlannerCheck(placed, verdict, (int)sizeof verdict);
    printf("c_planner: %d and %d periods, %d lines printed by the first planner, check %d (%s)\n", a, b,
           lines, check, verdict);
    vektaPlannerDestroy(heap);
    return a > 0 && b > 0 && lines > 0 && check == VEKTA_CHECK_OK ? EXIT_SUCCESS : EXIT_FAILURE;
}
