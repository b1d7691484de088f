# The Python package as its users meet it: tables of motions, refusals and threads.
#
# VEKTA_LIBRARY, when set, names the shared library: each motion is then planned
# through its C calls too (ctypes) and must give the same bits.
import ast
import inspect
import os
import re
import threading
import time
from ctypes import CDLL, c_double, c_void_p
from pathlib import Path

import numpy as np
import pytest

import vekta

# Arrays of the same shape and the same bits
same = np.array_equal


# Limits and a start state for n axes, one value per axis.
def draw(n, seed):
    u = np.random.default_rng(seed).uniform
    vel, acc = u(0.5, 2.0, n), u(2.0, 8.0, n)
    return dict(target=u(-2, 2, n), max_vel=vel, max_acc=acc, max_jerk=acc * u(5, 30, n),
                pos=u(-1, 1, n), vel=vel * u(-0.5, 0.5, n), acc=acc * u(-0.5, 0.5, n))


# The positional arguments of each planning call (in the order of its C function too).
def args(call, d):
    lim, state = [d["max_vel"], d["max_acc"], d["max_jerk"]], [d["pos"], d["vel"], d["acc"]]
    return {"move": [d["target"], *lim, *state],
            # Move from rest at 0 (pos, vel and acc left out)
            "rest": [d["target"], *lim],
            "stop": [*lim, *state],
            "catch_up": [0.25, 50.0, d["target"], *lim],
            "position": [d["target"], *lim[:2], 10.0, *state]}[call]


# The motions: axes, period (s), call, seed.
MOTIONS = [
    (1, 0.001, "rest", 1), (1, 0.0001, "move", 2), (7, 0.001, "move", 3), (7, 0.001, "stop", 4),
    (16, 0.002, "move", 5), (16, 0.004, "stop", 6), (6, 0.005, "catch_up", 7), (6, 0.002, "position", 8),
]


# The motion planned through the shared library's C calls, then Next to the end.
def c_level(call, period, a):
    n = len(a[-1])
    lib, arr = CDLL(os.environ["VEKTA_LIBRARY"]), c_double * n
    lib.vektaPlannerCreate.restype = c_void_p
    p = c_void_p(lib.vektaPlannerCreate())
    lib.vektaPlannerSetPeriod(p, c_double(period))
    name = {"rest": "Move", "catch_up": "CatchUp", "position": "PositionUpdate"}.get(call, call.title())
    # From rest: pos zeros, vel and acc NULL.
    rest = [arr(), None, None] if call == "rest" else []
    values = [c_double(x) if np.isscalar(x) else arr(*x) for x in a]
    assert getattr(lib, "vektaPlanner" + name)(p, n, *values, *rest) in (0, 1)
    out, rows, finished = [arr(), arr(), arr()], [], 0
    while not finished:
        finished = lib.vektaPlannerNext(p, *out)
        rows.append([x[:] for x in out])
    lib.vektaPlannerDestroy(p)
    # pos, vel, acc: (3, k, axes)
    return np.array(rows).transpose(1, 0, 2)


@pytest.mark.parametrize("n, period, call, seed", MOTIONS)
def test_motion(n, period, call, seed):
    d, p, q = draw(n, seed), vekta.Planner(period=period), vekta.Planner(period)
    for x in (p, q):
        getattr(x, "move" if call == "rest" else call)(*args(call, d))
    shown = f"<vekta.Planner axes={n} period={period!r} duration={p.duration!r}>"
    assert (p.axes, p.period, repr(p)) == (n, period, shown)
    assert p.minimum_times.shape == (n,) and p.minimum_times.max() == pytest.approx(p.duration, rel=1e-6)
    t, *s = p.sample()
    # pos, vel and acc, each (periods, axes)
    pos, vel, acc = s = np.array(s)
    assert same(t, np.arange(len(t)) * period) and t[-2] < p.duration <= t[-1]
    # The same bits every period at once, at one time, one by one from next() and from the C calls.
    *steps, done = zip(*[q.next() for _ in t[1:]])
    assert done == (False,) * (len(t) - 2) + (True,)
    assert same(p.state_at(t), s) and same(p.state_at(t[5]), s[:, 5]) and same(steps, s[:, 1:])
    if os.environ.get("VEKTA_LIBRARY"):
        assert same(c_level(call, period, args(call, d)), s[:, 1:])
    # next() consumed nothing of sample().
    assert all(map(same, q.sample(), (t, *s)))
    # The conveyor carries axis 0 on at 0.25 (its end velocity); every other motion ends at rest.
    v = (call == "catch_up") * 0.25 * (np.arange(n) == 0)
    assert np.all(pos[0] == (0.0 if call in ("rest", "catch_up") else d["pos"]))
    if call != "stop":
        np.testing.assert_allclose(pos[-1], d["target"] + v * p.duration, atol=1e-6)
    assert np.all(vel[-1] == v) and np.all(acc[-1] == 0)
    # The limits hold (the jerk from differences of acceleration).
    if call != "catch_up":
        jerk = d["max_acc"] * 10.0 if call == "position" else d["max_jerk"]
        assert np.all(np.abs(s[1:]).max(1) <= np.array([d["max_vel"], d["max_acc"]]) * (1 + 1e-9))
        assert np.all(np.abs(np.diff(acc, axis=0)) <= jerk * period * (1 + 1e-6))


P7 = draw(7, 9)
MOVE = args("move", P7)[:4]


# The call on a planner p holding a plan (evaluated), the error (or the status of the
# VektaError), its message and whether p lost its plan.
FAILURES = [
    ("vekta.Planner(period=0)", ValueError, "^period is 0 s, it must be from 0.0001 to 1 s$", False),
    ("vekta.Planner('0.005')", TypeError, "^period must be a real number, not a string$", False),
    ("p.move('1.5', *MOVE[1:])", TypeError, "^target must be real numbers, not a string$", True),
    ("p.move(['1.5'] * 7, *MOVE[1:])", TypeError, "not strings$", True),
    ("p.move(MOVE[0] + 1j, *MOVE[1:])", TypeError, "^target must be real numbers, not complex$", True),
    ("p.move([None] * 7, *MOVE[1:])", TypeError, "^target must be real numbers, not NoneType$", True),
    ("p.move(*MOVE, vel=[True] * 7)", TypeError, "^vel must be real numbers, not bool$", True),
    ("p.move(*MOVE, pos=np.zeros((7, 1)))", ValueError, r"^pos must be a flat .* not shape \(7, 1\)$", True),
    ("p.move(*[[1.0] * 17] * 4)", ValueError, "^target has 17 values; a planner takes 1 to 16", True),
    ("p.move([], [], [], [])", ValueError, "^target has 0 values", True),
    ("p.move(*MOVE[:3], [1.0] * 6)", ValueError, "^max_jerk has 6 values, target has 7: give one", True),
    ("p.stop(*MOVE[1:], pos=[0.0])", ValueError, "^max_vel has 7 values, pos has 1", True),
    ("p.move(*MOVE[:3], np.r_[MOVE[3][:3], -1, MOVE[3][4:]])", ValueError,
     "^axis 3: maxJerk is -1, it must be a positive finite number$", True),
    ("p.move(np.r_[np.nan, MOVE[0][1:]], *MOVE[1:])", ValueError, "^axis 0: target is nan, it must be", True),
    ("p.catch_up(0.5, 0.6, *MOVE)", vekta.CONVEYOR_OUT_OF_REACH, "^conveyor: the catch-up takes .* limit 0.6$", True),
    ("p.move([1.0], [1e300], [1e300], [1e-300])", vekta.NO_PROFILE,
     "^axis 0: no step-1 motion profile found from pos 0 vel 0 acc 0 to target 1 ", True),
    ("p.move([1e300], [1.0], [1.0], [1.0])", vekta.PLAN_REFUSED, "^the plan check refused the plan: axis 0", True),
    ("p.conveyor(0.25, 2.0, [0.4] * 6, [1.0] * 6, [4.0] * 6, 8.0, spare=0.0)", ValueError,
     "^spare is 0.0 s; the conveyor update refuses a spare below 0.002 s$", True),
    ("p.conveyor(0.5, 0.6, [0.5] * 6, [1.0] * 6, [4.0] * 6, 10.0)", vekta.CONVEYOR_OUT_OF_REACH,
     "^vekta: failed to catch up with conveyor.*; plan check: conveyor", True),
    ("p.position(*[[1.0] * 3] * 3, 10.0, [0.0] * 3)", ValueError, r"position\(\) takes 1 or 6", True),
    ("p.move(*MOVE[:3])", TypeError, r"^move\(\) missing required argument 'max_jerk'$", False),
    ("p.move(*MOVE, speed=1)", TypeError, r"^move\(\) got an unexpected keyword argument 'speed'$", False),
    ("p.state_at('1.5')", TypeError, "^t must be real numbers, not a string$", False),
    ("p.state_at([0.1, np.nan])", ValueError, r"^t\[1\] is nan; times must be seconds$", False),
    ("p.state_at([[0.1]])", ValueError, r"^t must be a flat sequence of numbers, not shape \(1, 1\)$", False),
    ("p.next(1)", TypeError, r"^next\(\) takes 0 arguments \(1 given\)$", False),
    ("setattr(p, 'recovery', 1)", TypeError, "^recovery must be True or False$", False),
    # A million seconds.
    ("[p.move([1e3], [1e-3], [1.0], [1.0]), p.sample()]", ValueError,
     "^the motion lasts 1000000.* too many periods for sample", False),
]


@pytest.mark.parametrize("call, error, message, gone", FAILURES)
def test_failure(call, error, message, gone):
    p = vekta.Planner(0.001)
    p.move(*MOVE)
    kind = vekta.VektaError if isinstance(error, int) else error
    with pytest.raises(kind, match=message) as raised:
        eval(call)
    e = raised.value
    assert "\n" not in str(e) and len(str(e)) < 200
    # The status names the kind of failure.
    if kind is not error:
        assert (e.status, e.reason) == (error, str(e))
    assert (p.duration == 0.0, p.axes == 0) == (gone, gone)
    for read in (p.next, p.sample, lambda: p.state_at(0.0)) if gone else ():
        assert str(pytest.raises(RuntimeError, read).value).startswith("no plan")


def test_threads_run_while_the_library_samples():
    p, q = vekta.Planner(0.001), vekta.Planner(0.001)
    p.move(*MOVE)
    q.move(*args("move", P7))
    t = np.linspace(0.0, p.duration, 1_000_000)
    alone, ticks, stop = q.state_at(t[::1000]), [], threading.Event()

    # A second thread ticks and samples another planner while the first is inside state_at.
    def tick():
        while not stop.is_set():
            ticks.append((time.perf_counter(), q.state_at(t[::1000])))
    ticker = threading.Thread(target=tick)
    ticker.start()
    start = time.perf_counter()
    pos = p.state_at(t)[0]
    end = time.perf_counter()
    stop.set()
    ticker.join()
    # Ticks in the middle half of the call: none if it held the GIL (Python switches threads every 5 ms).
    during = [x for x, _ in ticks if abs(2 * x - start - end) < (end - start) / 2]
    assert pos.shape == (len(t), 7) and len(during) >= 3 and end - start > 0.04
    assert all(same(b, alone) for _, b in ticks)


def test_package_is_typed_documented_and_versioned():
    cmake = (Path(__file__).parents[2] / "CMakeLists.txt").read_text()
    assert f"project(vekta VERSION {vekta.__version__} " in cmake and issubclass(vekta.VektaError, RuntimeError)
    here = Path(vekta.__file__).parent
    stub = ast.parse((here / "_vekta.pyi").read_text())
    stubbed = {f.name: f for f in ast.walk(stub) if isinstance(f, ast.FunctionDef)}
    public = {name for name in dir(vekta.Planner) if name[0] != "_"}
    assert (here / "py.typed").exists() and public == set(stubbed) - {"__init__"} and vekta.Planner.__doc__
    # The switches: each planning call's lines go to the output while one is set.
    p, lines, m = vekta.Planner(), [], ([1.0], [1.0], [4.0], [40.0])
    p.output, p.recovery, p.trace = lines.append, True, True
    p.position([0.0], [1.0], [4.0], 10.0, [0.0], vel=[0.3])
    p.move(*m)
    p.output = None
    p.move(*m)
    assert (p.recovery, p.trace, len(lines)) == (True, True, 2) and all(x.startswith("step1 start") for x in lines)
    # The signature and the stub agree, each is documented.
    for name in public:
        member = getattr(vekta.Planner, name)
        if callable(member):
            assert list(inspect.signature(member).parameters) == [a.arg for a in stubbed[name].args.args]
        assert len(member.__doc__) > 20, name
