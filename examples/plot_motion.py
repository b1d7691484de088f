"""A six-axis motion planned and sampled from Python, drawn with matplotlib.

Run from a build tree (the module is in build/<preset>/python):
    PYTHONPATH=build/release/python /usr/bin/python3 examples/plot_motion.py [out.png]
or, after cmake --install, with /usr/bin/python3 alone. Writes plot_motion.png.
"""
# %% The motion: six axes from rest at 0 to their targets.
import sys

import matplotlib

matplotlib.use("Agg")  # no display needed
import matplotlib.pyplot as plt
import numpy as np

import vekta

target = np.array([1.0, -0.5, 0.25, 2.0, -1.5, 0.75])
max_vel = np.array([1.0, 1.5, 2.0, 1.0, 1.2, 0.8])
max_acc = np.array([4.0, 3.0, 5.0, 2.0, 6.0, 4.0])

planner = vekta.Planner()
planner.position(target, max_vel, max_acc, jerk_ratio=10.0, pos=np.zeros(6))
code, reason = planner.check()
print(f"planned {planner.left_time:.3f} s, plan check: {reason}")
t, pos, vel, acc = planner.sample()

# %% Position, velocity and acceleration over time, one colour per axis.
fig, axes = plt.subplots(3, 1, sharex=True, figsize=(9, 8))
for ax, values, label in zip(axes, (pos, vel, acc), ("position", "velocity", "acceleration")):
    ax.plot(t, values)
    ax.set_ylabel(label)
    ax.grid(True, alpha=0.3)
axes[0].legend([f"axis {i}" for i in range(6)], ncol=6, fontsize="small")
axes[-1].set_xlabel("time (s)")
fig.suptitle("libvekta: a synchronised six-axis move, sampled every 5 ms")
out = sys.argv[1] if len(sys.argv) > 1 else "plot_motion.png"
fig.savefig(out, dpi=100)
print(f"{len(t)} periods; every axis on its target: {np.allclose(pos[-1], target, atol=1e-4)}; wrote {out}")
