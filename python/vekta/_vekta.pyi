"""The compiled module of vekta: the Planner, over the library's planner handle.

Units: positions in the caller's unit (m or rad), velocities in unit/s,
accelerations in unit/s^2, jerks in unit/s^3, times in seconds.
"""
from typing import Callable, Optional, Sequence, Tuple, Union, overload

import numpy as np
import numpy.typing as npt

#: One value per axis: a flat sequence or array of real numbers (not strings).
Values = Union[Sequence[float], npt.NDArray[np.integer], npt.NDArray[np.floating]]
#: Times in seconds: a flat sequence or array of real numbers.
Times = Values
FloatArray = npt.NDArray[np.float64]

__version__: str
#: The most axes a planner takes.
MAX_AXES: int
#: The shortest period a planner takes, in seconds (0.0001).
MIN_PERIOD: float
#: The longest period a planner takes, in seconds (1.0).
MAX_PERIOD: float
#: The period of a planner made without one, in seconds (0.005).
PERIOD: float
#: VektaError.status values (the library's VektaStatus).
OK: int
INVALID_ARGUMENT: int
NO_PROFILE: int
PLAN_REFUSED: int
CONVEYOR_OUT_OF_REACH: int

class VektaError(RuntimeError):
    """A motion the library could not plan; the planner is left without a plan."""

    #: NO_PROFILE, PLAN_REFUSED or CONVEYOR_OUT_OF_REACH.
    status: int
    #: The library's reason in words, also the message.
    reason: str

class Planner:
    """A planner of its own: any arm of 1 to 16 axes, one plan at a time.

    Sampled every ``period`` seconds (0.0001 to 1 s, fixed for the planner's
    life). move, stop and catch_up plan a motion in which every axis ends at
    the same time; state_at, next and sample read it. An argument the library
    refuses raises ValueError with its reason, a motion it cannot plan
    VektaError; after any failure the planner has no plan. Wrong shapes raise
    ValueError, strings, complex numbers and other non-numbers TypeError. The
    GIL is released while the library plans and samples; a planner shared by
    threads serves one call at a time.
    """

    def __init__(self, period: float = 0.005) -> None:
        """A planner with no plan sampling every ``period`` seconds.

        ValueError, with the library's reason, for a period outside
        0.0001 to 1 s.
        """
    def move(
        self,
        target: Values,
        max_vel: Values,
        max_acc: Values,
        max_jerk: Values,
        pos: Optional[Values] = None,
        vel: Optional[Values] = None,
        acc: Optional[Values] = None,
    ) -> None:
        """Plans every axis from (pos, vel, acc) to rest on target (unit).

        One value per axis in each array (1 to 16 axes): max_vel (unit/s),
        max_acc (unit/s^2) and max_jerk (unit/s^3) positive; pos (unit) None
        for all zeros; vel (unit/s) and acc (unit/s^2) None for rest. All
        axes end together, at ``duration``.
        """
    def stop(
        self,
        max_vel: Values,
        max_acc: Values,
        max_jerk: Values,
        pos: Values,
        vel: Optional[Values] = None,
        acc: Optional[Values] = None,
    ) -> None:
        """Plans the fastest synchronised stop from (pos, vel, acc): every axis to rest.

        Limits as for move (unit/s, unit/s^2, unit/s^3); vel and acc None
        for zeros.
        """
    def catch_up(
        self,
        conveyor_vel: float,
        conveyor_limit: float,
        target: Values,
        max_vel: Values,
        max_acc: Values,
        max_jerk: Values,
    ) -> None:
        """Plans a catch-up with a conveyor moving along axis 0 at conveyor_vel (unit/s).

        The arm starts at rest at 0 and reaches target (unit) in the
        conveyor's frame, axis 0 ending with the conveyor's velocity; the
        states are in the fixed frame. VektaError (CONVEYOR_OUT_OF_REACH)
        when the target would reach conveyor_limit (unit) first.
        """
    @overload
    def state_at(self, t: float) -> Tuple[FloatArray, FloatArray, FloatArray]:
        """(pos, vel, acc) of every axis at t seconds, each of shape (axes,)."""
    @overload
    def state_at(self, t: Times) -> Tuple[FloatArray, FloatArray, FloatArray]:
        """(pos, vel, acc) of every axis at k times (s), each of shape (k, axes).

        The start state before 0, the end state past the end; at
        t = (k + 1) * period exactly what the k-th next() gives. Moves
        nothing. RuntimeError without a plan.
        """
    def next(self) -> Tuple[FloatArray, FloatArray, FloatArray, bool]:
        """(pos, vel, acc, finished) at the next period.

        The k-th call after a plan gives the state at (k + 1) * period, each
        array of shape (axes,) (unit, unit/s, unit/s^2); finished is True
        from the period at or past the end on. RuntimeError without a plan.
        """
    def sample(self) -> Tuple[FloatArray, FloatArray, FloatArray, FloatArray]:
        """The whole motion as (t, pos, vel, acc).

        t (s) of shape (k,) at 0, period, 2 * period, ... through the first
        period at or past the end (where next() reports finished); pos, vel
        and acc of shape (k, axes). Moves nothing. RuntimeError without a plan.
        """
    @property
    def duration(self) -> float:
        """Seconds from the call that planned to the end of every axis; 0.0 without a plan."""
    @property
    def period(self) -> float:
        """The sampling period in seconds."""
    @property
    def axes(self) -> int:
        """The axis count of the plan; 0 without a plan."""
    @property
    def minimum_times(self) -> FloatArray:
        """Seconds each axis would take alone, as fast as its limits allow, shape (axes,).

        The slowest sets the duration. Empty without a plan.
        """
    # ---- The handle forms: 1 or 6 axes, the jerk limit max_acc * jerk_ratio.
    def position(
        self,
        target: Values,
        max_vel: Values,
        max_acc: Values,
        jerk_ratio: float,
        pos: Values,
        vel: Optional[Values] = None,
        acc: Optional[Values] = None,
    ) -> None:
        """The handle form of a move: every axis from (pos, vel, acc) to rest on target.

        The jerk limit of an axis is max_acc * jerk_ratio (unit/s^3).
        VektaError with the library's lines and the plan check's verdict when
        refused.
        """
    def velocity(
        self,
        max_vel: Values,
        max_acc: Values,
        jerk_ratio: float,
        pos: Values,
        vel: Values,
        acc: Optional[Values] = None,
    ) -> None:
        """The handle form of a stop: the fastest synchronised stop from (pos, vel, acc)."""
    def conveyor(
        self,
        conveyor_vel: float,
        conveyor_limit: float,
        target: Values,
        max_vel: Values,
        max_acc: Values,
        jerk_ratio: float,
        spare: float = 1.0,
    ) -> None:
        """The handle form of a catch-up.

        ValueError for a spare below 0.002 s, which the conveyor update refuses.
        """
    def check(self) -> Tuple[int, str]:
        """The plan check's verdict: (code, reason), (0, 'ok') when the plan may be sampled."""
    @property
    def left_time(self) -> float:
        """Seconds axis 0's plan still has to run after the periods next() handed out."""
    @property
    def recovery(self) -> bool:
        """Recovery mode for the handle forms that follow (False by default)."""
    @recovery.setter
    def recovery(self, on: bool) -> None: ...
    @property
    def trace(self) -> bool:
        """The planner's trace lines (False by default)."""
    @trace.setter
    def trace(self, on: bool) -> None: ...
    @property
    def output(self) -> Optional[Callable[[str], object]]:
        """None (nothing printed) or a callable given the library's lines of each planning call."""
    @output.setter
    def output(self, output: Optional[Callable[[str], object]]) -> None: ...
