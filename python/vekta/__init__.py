"""Jerk-limited, time-synchronised point-to-point motions for arms of 1 to 16 axes.

    >>> import vekta
    >>> p = vekta.Planner(period=0.001)
    >>> p.move([1.0, -0.5], max_vel=[1.0, 1.0], max_acc=[4.0, 4.0], max_jerk=[40.0, 40.0])
    >>> t, pos, vel, acc = p.sample()

Positions are in the caller's unit (m or rad), velocities per second and so on;
times in seconds. See help(vekta.Planner).
"""
try:
    import numpy as _numpy  # noqa: F401  (the planner's arrays; checked here, at import)
except ImportError as error:  # pragma: no cover
    raise ImportError("vekta needs numpy (Debian: apt install python3-numpy)") from error

from ._vekta import (
    CONVEYOR_OUT_OF_REACH,
    INVALID_ARGUMENT,
    MAX_AXES,
    MAX_PERIOD,
    MIN_PERIOD,
    NO_PROFILE,
    OK,
    PERIOD,
    PLAN_REFUSED,
    Planner,
    VektaError,
    __version__,
)

Planner.__module__ = __name__

__all__ = [
    "Planner",
    "VektaError",
    "MAX_AXES",
    "MIN_PERIOD",
    "MAX_PERIOD",
    "PERIOD",
    "OK",
    "INVALID_ARGUMENT",
    "NO_PROFILE",
    "PLAN_REFUSED",
    "CONVEYOR_OUT_OF_REACH",
    "__version__",
]
