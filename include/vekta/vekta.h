/*
 * libvekta: jerk-limited, time-synchronised point-to-point motions for a robot
 * arm of 1 or 6 axes ("freedoms"), sampled at a fixed 5 ms control period.
 *
 * Every function here works on one process-wide planner, the default planner,
 * without locks: call them from one thread only. For planners of your own
 * (several arms, several threads, C callers) see vekta/vekta_c.h.
 * Diagnostics are printed to standard output; the lines quoted below are the
 * library's exact output.
 *
 * Usage: after a parameter update, call one sampling function per axis and per
 * period until each axis returns 1.
 */
#ifndef VEKTA_VEKTA_H
#define VEKTA_VEKTA_H

/* The planner handles, the export macro and the VektaCheckResult codes. */
#include "vekta_c.h"

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
 *
 * Guard: a curve holds at most 13 points. Inputs the planner is not made for
 * (NaN, infinite or non-positive limits, for example) can need more; such an
 * axis fails with "curve overflow:id %d points %d\n" (axis, points needed)
 * before its step-1 or step-2 error line, and nothing is written beyond the
 * curve's arrays. Plans of valid inputs never get there.
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
 * otherwise; 0 with count = 0 for a failed plan, an axis at or above the
 * planned axis count, a negative axis, or before any update. nSamples <= 0
 * writes nothing and returns the finished flag. pos, vel and acc must hold
 * nSamples entries, and at least one: with a single-axis plan the overshoot
 * diagnostic below reads pos[0], vel[0] and acc[0] even when nothing was
 * written (null arrays are never read or written with nSamples <= 0).
 *
 * Guard: the period counter stops one below the largest int (after some 124
 * days of sampling one axis), so that it never overflows.
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

/* Results of vektaCheckPlan: enum VektaCheckResult, in vekta/vekta_c.h. */

/*
 * Checks the current plan of every planned axis, as the sampler will hand it
 * out, and returns VEKTA_CHECK_OK or the code of the first violation: axis by
 * axis, the point count, finite values, positive finite limits, times from 0
 * never decreasing, then section by section in time order continuity (each
 * section integrated from its start with its implied constant jerk meets its
 * end point), |jerk| <= J, |a| <= A and |v| <= V anywhere inside, then the
 * end state; last, for several axes, the common end time.
 *
 * The end state is the target at rest (position mode), rest (velocity mode),
 * or, for axis 0 of a conveyor plan, the target moving with the conveyor.
 * Conveyor plans are checked in the conveyor's frame, in which the limits
 * were planned. A start beyond a limit is held to that limit from the first
 * curve point from which it can be kept: |a| <= A for the acceleration;
 * |v| <= V, also once the acceleration is ramped to zero at full jerk, for
 * the velocity.
 *
 * Tolerances: the limits 1e-6 relative. Continuity and the end position
 * 2e-5 absolute (twice the root finder's tolerance: synchronised axes are
 * solved to 1e-5 on position and then pinned on the target, so their last
 * section may miss it by that much) plus 1e-9 of the positions joined.
 * Velocities and accelerations at the joins and at the end 1e-6 of the limit
 * or of the values joined when larger. Times may go back by their rounding
 * (1e-14 relative: late points of very long plans), and the jerk of a
 * section of positive length is allowed what J makes of that rounding; a
 * section of zero length may not change the acceleration at all, whatever
 * the limits (the sampler steps over it: what changes across it is handed
 * out as a jump). Six axes end within 1e-9 of the end time.
 *
 * A plan made in recovery mode has exact curves: its continuity and end
 * position are held to 1e-9 of the motion's scale where that is tighter (the
 * larger of its start and end positions, the distance V covers in the plan's
 * time and V^2 / A), and its velocities at the joins and at the end to 1e-9
 * of V or of the start's velocity when larger.
 *
 * When message is not null and messageSize > 0, writes a line (no newline,
 * cut to messageSize - 1 characters and terminated) naming the axis, the
 * quantity, the value, the limit or expected value and the time, or "ok".
 * Changes nothing in the plan and prints nothing.
 */
VEKTA_API int vektaCheckPlan(char* message, int messageSize);

/* Switches the planner's trace prints on or off. Returns nothing, prints nothing. */
VEKTA_API void setTestLevel(bool on);

/*
 * Switches recovery mode on or off for the updates that follow. It is off at
 * load, and off means exactly the behaviour described above. Returns nothing,
 * prints nothing.
 *
 * With recovery on, an axis beyond the velocity limit whose velocity comes
 * back inside by releasing its acceleration alone releases it (one ramp to
 * zero acceleration, then plans from there) instead of taking the over-speed
 * pulse, whose first ramp would run backwards in time there.
 *
 * With recovery on, an axis whose minimum-time plan fails (position and
 * conveyor updates) is planned once more from its start state, with two
 * repairs that act only on that second attempt:
 *  - an axis that must turn back to its target, where the turning pulse needs
 *    more velocity change than a triangle below the acceleration limit gives
 *    (more than A^2/J), gets a shape that starts with a trapezoid instead of
 *    a failing triangle-first one (e.g. at 0 moving at 0.3, target 0, V 1,
 *    A 4, jerk ratio 10);
 *  - an axis that brakes towards a target lying between the stop it would
 *    make by braking harder at once and the one it would make by releasing
 *    its acceleration and braking again eases its acceleration off part of
 *    the way first; that easing is searched over all it may be, not only
 *    near a full release.
 * A traced update (setTestLevel) prints "step1 retry:%d\n" (axis) before the
 * second attempt, then the trace of its walk. The first attempt's own lines
 * (the solver's, the root finder's) are printed as usual; a repaired axis
 * prints no "step1 error" line.
 *
 * With recovery on, the plan of every update that planned is checked as
 * vektaCheckPlan does; when the check fails the update returns false, as for
 * a plan that was not found (sampling returns 0 until an update succeeds,
 * vektaCheckPlan reports no plan), and prints "vekta: plan refused: %s\n"
 * with the check's message. A conveyor update is checked in the conveyor's
 * frame, after its "posUpd" lines and before the conveyor limit.
 *
 * Every update that plans without these repairs and passes the check
 * returns the same plan, samples and lines in both modes.
 */
VEKTA_API void vektaSetRecovery(bool on);

/* Kept for compatibility; does nothing. */
VEKTA_API void vektaDebugInfo();

#endif /* VEKTA_VEKTA_H */
