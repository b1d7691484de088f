/*
 * libvekta's planner handles, with C linkage and C types: compiles as C11 and
 * as C++17.
 *
 * A VektaPlanner holds everything one planner needs (six axes, their plans,
 * the sampler's memory, the trace, recovery and output switches). Planners
 * share nothing: each may be driven from its own thread, with the same results
 * as alone. One planner must not be used from two threads at once. The
 * functions of vekta.h act on a planner of their own, the default planner,
 * which no handle reaches.
 *
 * Every function below does what the vekta.h function named beside it does,
 * on the planner given (which must not be NULL), prints the same lines into
 * the planner's output (standard output unless switched), and allocates
 * nothing, except vektaPlannerCreate.
 */
#ifndef VEKTA_VEKTA_C_H
#define VEKTA_VEKTA_C_H

#include <stddef.h>
#include <stdio.h>

#if defined(_WIN32)
#define VEKTA_API __declspec(dllexport)
#else
#define VEKTA_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Results of vektaCheckPlan and vektaPlannerCheck: 0 when the plan may be
 * sampled, otherwise the kind of the first violation found.
 */
enum VektaCheckResult {
    VEKTA_CHECK_OK = 0,
    VEKTA_CHECK_NO_PLAN = 1,           /* no update yet, or the last update failed */
    VEKTA_CHECK_CONVEYOR_REFUSED = 2,  /* the catch-up ends beyond the conveyor limit */
    VEKTA_CHECK_POINT_COUNT = 3,       /* an axis has not 1 to 13 curve points */
    VEKTA_CHECK_NOT_FINITE = 4,        /* a curve value is NaN or infinite */
    VEKTA_CHECK_BAD_LIMIT = 5,         /* a limit is not a positive finite number */
    VEKTA_CHECK_TIME_BACK = 6,         /* times do not start at 0 and never decrease */
    VEKTA_CHECK_DISCONTINUOUS = 7,     /* a section does not meet its end point */
    VEKTA_CHECK_JERK_LIMIT = 8,        /* |jerk| > J (or an acceleration step) */
    VEKTA_CHECK_ACC_LIMIT = 9,         /* |a| > A */
    VEKTA_CHECK_VEL_LIMIT = 10,        /* |v| > V */
    VEKTA_CHECK_END_STATE = 11,        /* the last point is not the planned end */
    VEKTA_CHECK_END_TIME = 12,         /* six axes do not end at the same time */
    VEKTA_CHECK_LAST = VEKTA_CHECK_END_TIME
};

typedef struct VektaPlanner VektaPlanner;

/* ---- Life cycle */

/* A new planner in the state of the default planner at load (no plan, trace
 * and recovery off, output to standard output), or NULL when out of memory. */
VEKTA_API VektaPlanner* vektaPlannerCreate(void);

/* Frees a planner made by vektaPlannerCreate; NULL is ignored. */
VEKTA_API void vektaPlannerDestroy(VektaPlanner* planner);

/* For callers who allocate nothing: the bytes a planner needs. The memory must
 * be aligned to alignof(max_align_t) (malloc's, or _Alignas(max_align_t)). */
VEKTA_API size_t vektaPlannerSize(void);

/* Makes a new planner, as vektaPlannerCreate would, in mem (vektaPlannerSize()
 * bytes, aligned to alignof(max_align_t)) and returns it; NULL when mem is
 * NULL or misaligned. The planner needs no destruction: the caller frees mem
 * whenever it likes after the last call on it. */
VEKTA_API VektaPlanner* vektaPlannerInit(void* mem);

/* ---- Planning and sampling: 1 for true, 0 for false */

/* vektaPostionModeParaUpd, without the unused last argument. */
VEKTA_API int vektaPlannerPositionUpdate(VektaPlanner* planner, int n, const double* tgtPos,
                                         const double* maxVel, const double* maxAcc,
                                         double jerkRatio, const double* curPos,
                                         const double* curVel, const double* curAcc);

/* vektaVelocityModeParaUpd, without the unused last argument. */
VEKTA_API int vektaPlannerVelocityUpdate(VektaPlanner* planner, int n, const double* maxVel,
                                         const double* maxAcc, double jerkRatio,
                                         const double* curPos, const double* curVel,
                                         const double* curAcc);

/* vektaPostionModeParaUpdConveyor. */
VEKTA_API int vektaPlannerConveyorUpdate(VektaPlanner* planner, int n, double conveyorVel,
                                         double conveyorLimit, const double* tgtPos,
                                         const double* maxVel, const double* maxAcc,
                                         double jerkRatio, double spare);

/* vektaPositionModePerFreedom and vektaVelocityModePerFreedom (the same
 * operation for plans of either mode); count must not be NULL. */
VEKTA_API int vektaPlannerSample(VektaPlanner* planner, int axis, int nSamples, double* pos,
                                 double* vel, double* acc, int* count);

/* getLeftMoveTime. */
VEKTA_API double vektaPlannerLeftTime(const VektaPlanner* planner);

/* vektaCheckPlan: a VektaCheckResult. */
VEKTA_API int vektaPlannerCheck(const VektaPlanner* planner, char* message, int messageSize);

/* ---- Switches (each prints nothing) */

/* setTestLevel: trace prints on (non-zero) or off. */
VEKTA_API void vektaPlannerSetTrace(VektaPlanner* planner, int on);

/* vektaSetRecovery: recovery mode on (non-zero) or off for the updates that follow. */
VEKTA_API void vektaPlannerSetRecovery(VektaPlanner* planner, int on);

/* ---- Output: where the planner's lines go (the texts are the same everywhere) */

/* Receives each message: length characters (text is not terminated). */
typedef void (*VektaOutputFn)(const char* text, size_t length, void* user);

/* Standard output, through printf's stream (the default). */
VEKTA_API void vektaPlannerOutputToStdout(VektaPlanner* planner);

/* The caller's stream, which must stay open while the planner prints;
 * NULL switches the output off. */
VEKTA_API void vektaPlannerOutputToFile(VektaPlanner* planner, FILE* file);

/* The caller's function, called with user on the planner's thread inside the
 * update or sampling call; NULL switches the output off. */
VEKTA_API void vektaPlannerOutputToCallback(VektaPlanner* planner, VektaOutputFn fn, void* user);

/* Nowhere: the lines are not even formatted. */
VEKTA_API void vektaPlannerOutputOff(VektaPlanner* planner);

#ifdef __cplusplus
}
#endif

#endif /* VEKTA_VEKTA_C_H */
