/*
 * libvekta: jerk-limited, time-synchronised point-to-point motions for a robot
 * arm of 1 or 6 axes ("freedoms"), sampled at a fixed 5 ms control period.
 *
 * One process serves one arm. Every function works on one process-wide planner
 * state, without locks: call them from the controller's cycle thread only.
 * Diagnostics are printed to standard output; the lines quoted below are the
 * library's exact output.
 *
 * Usage: after a parameter update, call one sampling function per axis and per
 * period until each axis returns 1.
 */
#ifndef VEKTA_VEKTA_H
#define VEKTA_VEKTA_H

#if defined(_WIN32)
#define VEKTA_API __declspec(dllexport)
#else
#define VEKTA_API __attribute__((visibility("default")))
#endif

/*
 * Plans a position-mode motion: every axis i < n from (curPos[i], curVel[i],
 * curAcc[i]) to rest on tgtPos[i], within maxVel[i] and maxAcc[i], with the
 * jerk limit maxAcc[i] x jerkRatio; with n = 6 all axes end at the same time.
 * n must be 1 or 6; arrays hold one entry per axis and are only read; spare is
 * not used. Sampling restarts on the new plan.
 *
 * Returns true (1) when every axis got a plan, false (0) otherwise; after a
 * false result every sampling call returns 0 until an update succeeds.
 *
 * Prints "vekta: incorrect freedom number-%d!\n" for another n; otherwise,
 * always, "posUpd: 1st pt %f p %f v %f a %f inv %d peroid %f\n" with axis 0's
 * target, state and frame sign and the period, followed by "(%f %f)" with the
 * acceleration and time of every point of axis 0's curve and a newline.
 * A failing plan also prints "step1 error:%d\n" (axis), or
 * "step2 error: mStep2 %d profile %d\n" and/or "step2 error:ts %f idx %d\n"
 * (common end time, axis), after the solver's own line.
 */
VEKTA_API bool vektaPostionModeParaUpd(int n, const double* tgtPos, const double* maxVel,
                                       const double* maxAcc, double jerkRatio,
                                       const double* curPos, const double* curVel,
                                       const double* curAcc, double spare);

/*
 * Plans the fastest synchronised stop: every axis i < n from its present state
 * to zero velocity, without a position condition (target positions are kept
 * from the last position update). Same arguments, result and failure lines as
 * vektaPostionModeParaUpd without tgtPos.
 *
 * Prints, always, "velUpd: pt %f p %f v %f a %f inv %d \n" with axis 0's
 * values, and after a successful pass "Vel Time: max %f %f\t" (common end time,
 * axis 0's end time) with "%f\t" for every further axis's end time ("diffs %f\t"
 * when it differs from axis 0's by more than 0.002 s) and a newline.
 */
VEKTA_API bool vektaVelocityModeParaUpd(int n, const double* maxVel, const double* maxAcc,
                                        double jerkRatio, const double* curPos,
                                        const double* curVel, const double* curAcc,
                                        double spare);

/*
 * Plans a catch-up with a conveyor that moves along axis 0 at conveyorVel: a
 * position-mode plan from rest at 0 (axis 0 moving at -conveyorVel) to
 * tgtPos[i], measured relative to the robot in the conveyor's frame at the
 * moment of the call; axis 0's curve is then shifted back into the fixed frame
 * and ends moving with the conveyor.
 *
 * Returns false at once, silently and without changing anything, when
 * spare < 0.002. Returns false when the position update fails (with its
 * lines), or when tgtPos[0] + (planned time x conveyorVel) >= conveyorLimit,
 * printing "vekta: failed to catch up with conveyor-%f+%f>%f\n"; that plan
 * stays in place and must not be sampled. Returns true otherwise. Prints the
 * position update's "posUpd" line.
 */
VEKTA_API bool vektaPostionModeParaUpdConveyor(int n, double conveyorVel, double conveyorLimit,
                                               const double* tgtPos, const double* maxVel,
                                               const double* maxAcc, double jerkRatio,
                                               double spare);

/*
 * Samples the next periods of one axis's planned motion.
 *
 * Writes up to nSamples set-points (position, velocity, acceleration) taken at
 * (periods sampled so far + 1) x 5 ms, (+ 2) x 5 ms, ... since the last update
 * into pos[k], vel[k], acc[k] and the number written into count. When the end
 * of the curve is reached before nSamples, one final sample with acceleration
 * 0, the target velocity and the last planned position is written instead.
 *
 * Returns 1 when the axis has finished its motion (the periods sampled reach
 * the curve's end time; every later call returns 1 with one end sample), 0
 * otherwise; 0 with count = 0 for a failed plan or an axis at or above the
 * planned axis count. nSamples <= 0 writes nothing and returns the finished
 * flag.
 *
 * Prints:
 *  - on the first call after an update, for every section whose time goes back
 *    by more than 1e-5: "wrong secTime:id %d i %d Ti-1 %f Ti %f\n";
 *  - on every call that wrote samples once the axis is finished:
 *    "ldata:%f %f time %f %f \n" (target, first sample, next time, end time);
 *  - for single-axis plans, when the first sample falls back towards zero or
 *    below it: "s1 overshoot:..." followed by "acc curve:(a, t)=(a,t)..." ;
 *  - for axis 0, "no-stop" when it had less than one period left after one
 *    call and is still not finished after the next.
 */
VEKTA_API int vektaPositionModePerFreedom(int axis, int nSamples, double* pos, double* vel,
                                          double* acc, int& count);

/* The same operation as vektaPositionModePerFreedom, for velocity-mode plans. */
VEKTA_API int vektaVelocityModePerFreedom(int axis, int nSamples, double* pos, double* vel,
                                          double* acc, int& count);

/*
 * Time, in seconds, that axis 0's plan still has to run: its end time minus the
 * periods sampled so far times 5 ms, never negative. Prints nothing.
 */
VEKTA_API double getLeftMoveTime();

/* Switches the planner's trace prints on or off. Returns nothing, prints nothing. */
VEKTA_API void setTestLevel(bool on);

/* Kept for compatibility; does nothing. */
VEKTA_API void vektaDebugInfo();

#endif /* VEKTA_VEKTA_H */
