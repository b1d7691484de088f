"""A seven-axis arm at 1 ms, planned with vekta and drawn joint by joint.

    python3 examples/plot_seven_axes.py seven_axes.png

One column per joint: position, velocity, acceleration and jerk over time (the
jerk from differences of the sampled acceleration), the limits dashed. The
arm starts moving and ends at rest on its target; every joint arrives at the
same time. matplotlib draws without a display (Agg).
"""
import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402

import vekta  # noqa: E402

# Joint limits in rad/s, rad/s^2 and rad/s^3: the wrist joints are quicker.
max_vel = np.array([1.5, 1.5, 1.8, 1.8, 2.5, 2.5, 3.0])
max_acc = np.array([3.0, 3.0, 4.0, 4.0, 6.0, 6.0, 8.0])
max_jerk = np.array([15.0, 15.0, 25.0, 25.0, 50.0, 50.0, 80.0])
start = np.array([0.0, -0.4, 0.0, -1.6, 0.0, 1.2, 0.8])  # rad
moving = np.array([0.5, 0.0, -0.3, 0.0, 0.8, 0.0, 0.0])  # rad/s at the start
target = np.array([1.2, 0.3, -0.5, -0.9, 0.7, 0.4, -0.6])  # rad

planner = vekta.Planner(period=0.001)
planner.move(target, max_vel, max_acc, max_jerk, pos=start, vel=moving)
t, pos, vel, acc = planner.sample()
jerk = np.diff(acc, axis=0) / planner.period  # over each period, drawn at its end
print(f"{planner!r}: {len(t)} periods; each joint alone (s): {np.round(planner.minimum_times, 3)}")

rows = [("position (rad)", t, pos, None), ("velocity (rad/s)", t, vel, max_vel),
        ("acceleration (rad/s²)", t, acc, max_acc), ("jerk (rad/s³)", t[1:], jerk, max_jerk)]
fig, axes = plt.subplots(len(rows), 7, sharex=True, figsize=(17, 8), squeeze=False)
for joint in range(7):
    for (label, x, values, limit), ax in zip(rows, axes[:, joint]):
        ax.plot(x, values[:, joint], color=f"C{joint}", lw=1.2)
        for bound in (target[joint],) if limit is None else (limit[joint], -limit[joint]):
            ax.axhline(bound, color="0.4", ls="--", lw=0.8)
        ax.grid(True, alpha=0.3)
        ax.tick_params(labelsize=7)
        if joint == 0:
            ax.set_ylabel(label, fontsize=8)
    axes[0, joint].set_title(f"joint {joint}", fontsize=9)
    axes[-1, joint].set_xlabel("time (s)", fontsize=8)
fig.suptitle(f"vekta: seven joints sampled every 1 ms, all arriving at {planner.duration:.3f} s "
             "(dashed: the target, the limits)", fontsize=10)
fig.tight_layout()
out = sys.argv[1] if len(sys.argv) > 1 else "seven_axes.png"
fig.savefig(out, dpi=60)

within = all(np.all(np.abs(v) <= lim * (1 + 1e-9)) for v, lim in ((vel, max_vel), (acc, max_acc), (jerk, max_jerk)))
arrived = np.allclose(pos[-1], target, atol=1e-9) and not vel[-1].any()
print(f"within the limits: {within}; at rest on the target: {arrived}; wrote {out}")
sys.exit(0 if within and arrived else 1)
