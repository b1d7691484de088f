/*
 * libvekta's planner handles, with C linkage and C types: compiles as C11 and
 * as C++17.
 *
 * A VektaPlanner holds everything one planner needs (up to VEKTA_MAX_AXES
 * axes, their plans, the sampler's memory, its period, the trace, recovery and
 * output switches). Planners share nothing: each may be driven from its own
 * thread, with the same results as alone. One planner must not be used from
 * two threads at once. The functions of vekta.h act on a planner of their own,
 * the default planner, which no handle reaches.
 *
 * Two sets of calls act on a planner:
 *  - the library's own (Move, Stop, CatchUp and what reads their plans): any
 *    arm of 1 to VEKTA_MAX_AXES axes, a jerk limit per axis, the planner's
 *    period, every argument checked, a VektaStatus and a reason in words for
 *    every failure (vektaPlannerError), recovery mode's repairs and plan check
 *    always on;
 *  - the handle forms of the vekta.h functions (PositionUpdate and the rest):
 *    exactly what the vekta.h function named beside each does (1 or 6 axes, a
 *    jerk ratio), on the planner given.
 * A new planner prints nothing (its output is off); the output functions at
 * the end switch the diagnostic lines on. Nothing allocates except
 * vektaPlannerCreate. Every function takes a NULL planner and returns the
 * failure value its comment names, without crashing.
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

/* The most axes a planner holds (a planner is still a fixed block of memory). */
#define VEKTA_MAX_AXES 16

/*
 * What the library's own calls return.
 */
enum VektaStatus {
    VEKTA_OK = 0,
    VEKTA_INVALID_ARGUMENT = 1,      /* a NULL planner or array, an axis count outside 1..VEKTA_MAX_AXES, a
                                        NaN or infinite value, a limit that is not positive, a period
                                        outside VEKTA_MIN_PERIOD..VEKTA_MAX_PERIOD */
    VEKTA_NO_PROFILE = 2,            /* an axis has no motion profile from its state (the reason names it) */
    VEKTA_PLAN_REFUSED = 3,          /* the plan check found the plan unsafe to sample */
    VEKTA_CONVEYOR_OUT_OF_REACH = 4  /* the catch-up ends beyond the conveyor limit */
};

/* The control periods a planner accepts, in seconds (5 ms until set). */
#define VEKTA_MIN_PERIOD 0.0001
#define VEKTA_MAX_PERIOD 1.0

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

/* A new planner (no plan, a 5 ms period, trace and recovery off, output
 * off), or NULL when out of memory. */
VEKTA_API VektaPlanner* vektaPlannerCreate(void);

/* Frees a planner made by vektaPlannerCreate. NULL is ignored, and so is a
 * planner made by vektaPlannerInit in the caller's memory (the caller frees
 * that memory; the planner keeps working until then). */
VEKTA_API void vektaPlannerDestroy(VektaPlanner* planner);

/* For callers who allocate nothing: the bytes a planner needs. The memory must
 * be aligned to alignof(max_align_t) (malloc's, or _Alignas(max_align_t)). */
VEKTA_API size_t vektaPlannerSize(void);

/* Makes a new planner, as vektaPlannerCreate would, in mem (vektaPlannerSize()
 * bytes, aligned to alignof(max_align_t)) and returns it; NULL when mem is
 * NULL or misaligned. The planner needs no destruction: the caller frees mem
 * whenever it likes after the last call on it. */
VEKTA_API VektaPlanner* vektaPlannerInit(void* mem);

/* ---- The library's own calls: any arm, checked, with reasons
 *
 * Arrays hold one value per axis, axis 0 first; positions in the caller's
 * unit (m or rad), velocities per second, and so on. Every call that plans
 * checks all its arguments first, plans with recovery mode's repairs and
 * refuses a plan the plan check rejects, whatever vektaPlannerSetRecovery
 * said. All axes end together, at vektaPlannerDuration. After any failed call
 * the planner has no plan: Duration returns 0, StateAt and Next -1. */

/* Position mode: every axis from (pos, vel, acc) to target, at rest. vel and
 * acc may be NULL (zero). maxVel, maxAcc and maxJerk must be positive; a
 * velocity or acceleration limit far beyond the motion's reach (DBL_MAX for
 * "no limit") is planned as one just beyond it, with the same curve.
 * Returns a VektaStatus (VEKTA_INVALID_ARGUMENT for a NULL planner). */
VEKTA_API int vektaPlannerMove(VektaPlanner* planner, int axes, const double* target,
                               const double* maxVel, const double* maxAcc,
                               const double* maxJerk, const double* pos, const double* vel,
                               const double* acc);

/* The fastest synchronised stop from (pos, vel, acc): every axis to rest. vel
 * and acc may be NULL (zero). Returns a VektaStatus. */
VEKTA_API int vektaPlannerStop(VektaPlanner* planner, int axes, const double* maxVel,
                               const double* maxAcc, const double* maxJerk, const double* pos,
                               const double* vel, const double* acc);

/* The conveyor catch-up: the arm starts at rest at 0 in the conveyor's frame
 * and reaches target there, axis 0 ending with the conveyor's velocity
 * conveyorVel; the samples are in the fixed frame. A catch-up that ends with
 * the conveyor target at or beyond conveyorLimit is refused with
 * VEKTA_CONVEYOR_OUT_OF_REACH. Returns a VektaStatus. */
VEKTA_API int vektaPlannerCatchUp(VektaPlanner* planner, int axes, double conveyorVel,
                                  double conveyorLimit, const double* target,
                                  const double* maxVel, const double* maxAcc,
                                  const double* maxJerk);

/* Why the last call of the library's own (or an update's handle form, when
 * the plan check refused its plan) failed, in words naming the axis ("axis 3:
 * maxJerk is -1, it must be a positive finite number"); "" after a success.
 * Always terminated; "planner is NULL" for a NULL planner. Valid until the
 * next call on the planner. */
VEKTA_API const char* vektaPlannerError(const VektaPlanner* planner);

/* The control period for the plans that follow, VEKTA_MIN_PERIOD to
 * VEKTA_MAX_PERIOD seconds; a plan made before keeps its period. Returns
 * VEKTA_OK, or VEKTA_INVALID_ARGUMENT with the period unchanged (and no plan). */
VEKTA_API int vektaPlannerSetPeriod(VektaPlanner* planner, double seconds);

/* The period set for the plans that follow; 0 for a NULL planner. */
VEKTA_API double vektaPlannerPeriod(const VektaPlanner* planner);

/* The axis count of the current plan; 0 without a plan or for a NULL planner. */
VEKTA_API int vektaPlannerAxes(const VektaPlanner* planner);

/* The common end time of the current plan in seconds; 0 without a plan or
 * for a NULL planner. */
VEKTA_API double vektaPlannerDuration(const VektaPlanner* planner);

/* How long axis `axis` of the current plan would take alone, as fast as its
 * limits allow (the slowest axis sets the Duration); -1 without a plan, for
 * an axis outside the plan or a NULL planner. */
VEKTA_API double vektaPlannerMinimumTime(const VektaPlanner* planner, int axis);

/* Every axis of the current plan at time t (seconds after the call that
 * planned): the start state for t <= 0, the end state past the end. For
 * t = (k + 1) * period it gives exactly what the k-th call of
 * vektaPlannerNext gives. Does not move the sampling cursor. Returns 0, or
 * -1 without a plan, for a NaN t or a NULL array (nothing written). */
VEKTA_API int vektaPlannerStateAt(const VektaPlanner* planner, double t, double* pos, double* vel,
                                  double* acc);

/* Every axis at the next period: the k-th call (0-based) after a plan gives
 * the state at (k + 1) * period, as vektaPlannerSample gives it axis by axis
 * (it moves the same cursor). Writes vektaPlannerAxes() values into each
 * array. Returns 0 while moving, 1 once every axis has finished (the end
 * state), -1 without a plan or for a NULL array (nothing written). */
VEKTA_API int vektaPlannerNext(VektaPlanner* planner, double* pos, double* vel, double* acc);

/* The curve of axis `axis` of the current plan, for inspection: its points
 * (time in seconds since the update, position, velocity, acceleration), with
 * a section of constant jerk between each two. Copies min(points, capacity)
 * points into the arrays (any of them may be NULL) and returns how many
 * points the curve has (1 to 13); -1 without a plan (a plan of the handle
 * forms too), for an axis outside it or a NULL planner. */
VEKTA_API int vektaPlannerCurve(const VektaPlanner* planner, int axis, double* time, double* pos,
                                double* vel, double* acc, int capacity);

/* ---- The handle forms of the vekta.h functions: 1 for true, 0 for false
 * (0 for a NULL planner) */

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
 * operation for plans of either mode, at the planner's period); -1 for a NULL
 * planner or count. */
VEKTA_API int vektaPlannerSample(VektaPlanner* planner, int axis, int nSamples, double* pos,
                                 double* vel, double* acc, int* count);

/* getLeftMoveTime; 0 for a NULL planner. */
VEKTA_API double vektaPlannerLeftTime(const VektaPlanner* planner);

/* vektaCheckPlan: a VektaCheckResult (VEKTA_CHECK_NO_PLAN for a NULL planner). */
VEKTA_API int vektaPlannerCheck(const VektaPlanner* planner, char* message, int messageSize);

/* ---- Switches (each prints nothing; a NULL planner is ignored) */

/* setTestLevel: trace prints on (non-zero) or off. */
VEKTA_API void vektaPlannerSetTrace(VektaPlanner* planner, int on);

/* vektaSetRecovery: recovery mode on (non-zero) or off for the updates that follow. */
VEKTA_API void vektaPlannerSetRecovery(VektaPlanner* planner, int on);

/* ---- Output: where the planner's diagnostic lines go (the texts are the same
 * everywhere; off for a new planner; a NULL planner is ignored) */

/* Receives each message: length characters (text is not terminated). */
typedef void (*VektaOutputFn)(const char* text, size_t length, void* user);

/* Standard output, through printf's stream (the default planner's output). */
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
