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
