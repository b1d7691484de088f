"""A 1 kHz control loop in Python: one next() per cycle hands out the set-points.

    python3 examples/cycle_loop.py

A seven-axis arm moves to a first target; 0.4 s in, a new target comes and
the planner re-plans from the state it has just handed out, so the motion
goes on without a jump. The loop waits for each cycle's deadline (a soft
real-time loop: a real controller would run on a real-time thread) and ends
when every joint has finished. It reports how long next() and the re-plan
took and how many cycles came late.
"""
import sys
import time

import numpy as np

import vekta

PERIOD = 0.001  # s
limits = dict(max_vel=[1.5, 1.5, 1.8, 1.8, 2.5, 2.5, 3.0],  # rad/s
              max_acc=[3.0, 3.0, 4.0, 4.0, 6.0, 6.0, 8.0],  # rad/s^2
              max_jerk=[15.0, 15.0, 25.0, 25.0, 50.0, 50.0, 80.0])  # rad/s^3
first = [1.2, 0.3, -0.5, -0.9, 0.7, 0.4, -0.6]  # rad
second = [0.2, -0.6, 0.4, -1.2, 1.1, 0.0, 0.5]


def send_to_drives(pos, vel, acc):
    """Where a controller would write the set-points of every joint."""


planner = vekta.Planner(period=PERIOD)
planner.move(first, **limits)  # from rest at 0
cycles, late, slowest, replan = 0, 0, 0.0, 0.0
deadline = time.perf_counter()
while True:
    deadline += PERIOD
    pause = deadline - time.perf_counter()
    if pause > 0:
        time.sleep(pause)
    else:
        late += 1
    began = time.perf_counter()
    pos, vel, acc, finished = planner.next()
    slowest = max(slowest, time.perf_counter() - began)
    send_to_drives(pos, vel, acc)
    cycles += 1
    if cycles == 400:  # a new goal: plan from the set-point just handed out
        began = time.perf_counter()
        planner.move(second, **limits, pos=pos, vel=vel, acc=acc)
        replan = time.perf_counter() - began
    if finished:
        break

arrived = np.allclose(pos, second, atol=1e-9) and not vel.any()
print(f"{cycles} cycles of {PERIOD * 1e3:g} ms, re-planned at cycle 400 in {replan * 1e6:.0f} µs; "
      f"next() took at most {slowest * 1e6:.0f} µs; {late} cycles late; on the second target: {arrived}")
sys.exit(0 if arrived else 1)
