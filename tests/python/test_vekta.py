"""The Python package as its users meet it: tables of motions, refusals and threads.

VEKTA_LIBRARY, when set, names the shared library: each motion is then planned
through its C calls too (ctypes) and must give the same bits.
"""
import ast
import ctypes
import inspect
import os
import re
import threading
import time
from pathlib import Path

import numpy as np
import pytest

import vekta

ROOT = Path(__file__).resolve().parents[2]


def draw(n, seed):
    """Limits and a start state for n axes, one value per axis."""
    r = np.random.default_rng(seed)
    vel, acc = r.uniform(0.5, 2.0, n), r.uniform(2.0, 8.0, n)
    return dict(target=r.uniform(-2, 2, n), max_vel=vel, max_acc=acc, max_jerk=acc * r.uniform(5, 30, n),
                pos=r.uniform(-1, 1, n), vel=vel * r.uniform(-0.5, 0.5, n), acc=acc * r.uniform(-0.5, 0.5, n))


def args(call, d):
    """The positional arguments of each planning call (in the order of its C function too)."""
    lim = [d["max_vel"], d["max_acc"], d["max_jerk"]]
    return {"move": [d["target"], *lim, d["pos"], d["vel"], d["acc"]],
            "rest": [d["target"], *lim],  # move from rest at 0 (pos, vel and acc left out)
            "stop": [*lim, d["pos"], d["vel"], d["acc"]],
            "catch_up": [0.25, 50.0, d["target"], *lim],
            "position": [d["target"], d["max_vel"], d["max_acc"], 10.0, d["pos"], d["vel"], d["acc"]]}[call]


MOTIONS = [  # axes, period (s), call, seed
    (1, 0.001, "rest", 1), (1, 0.0001, "move", 2), (7, 0.001, "move", 3), (7, 0.001, "stop", 4),
    (16, 0.002, "move", 5), (16, 0.004, "stop", 6), (6, 0.005, "catch_up", 7), (6, 0.002, "position", 8),
]


def c_level(call, period, a, n):
    """The motion planned through the shared library's C calls, then Next to the end."""
    lib = ctypes.CDLL(os.environ["VEKTA_LIBRARY"])
    lib.vektaPlannerCreate.restype = ctypes.c_void_p
    p = ctypes.c_void_p(lib.vektaPlannerCreate())
    lib.vektaPlannerSetPeriod(p, ctypes.c_double(period))
    name = {"move": "Move", "rest": "Move", "stop": "Stop", "catch_up": "CatchUp", "position": "PositionUpdate"}
    values = [ctypes.c_double(x) if np.isscalar(x) else (ctypes.c_double * n)(*x) for x in a]
    rest = [(ctypes.c_double * n)(), None, None] if call == "rest" else []  # pos zeros, vel and acc NULL
    assert getattr(lib, "vektaPlanner" + name[call])(p, n, *values, *rest) in (0, 1)
    rows, out = [], [(ctypes.c_double * n)() for _ in range(3)]
    while True:
        finished = lib.vektaPlannerNext(p, *out)
        rows.append([list(x) for x in out])
        if finished:
            lib.vektaPlannerDestroy(p)
            return np.array(rows).transpose(1, 0, 2)  # pos, vel, acc: (k, axes)


@pytest.mark.parametrize("n, period, call, seed", MOTIONS)
def test_motion(n, period, call, seed):
    d, p, q = draw(n, seed), vekta.Planner(period=period), vekta.Planner(period)
    for planner in (p, q):
        getattr(planner, "move" if call == "rest" else call)(*args(call, d))
    assert (p.axes, p.period) == (n, period)
    assert repr(p) == f"<vekta.Planner axes={n} period={period!r} duration={p.duration!r}>"
    assert p.minimum_times.shape == (n,) and p.minimum_times.max() == pytest.approx(p.duration, rel=1e-6)
    t, pos, vel, acc = p.sample()
    assert np.array_equal(t, np.arange(len(t)) * period) and t[-2] < p.duration <= t[-1]
    for x, y in zip(p.state_at(t), (pos, vel, acc)):  # every period at once, and one by one from next()
        assert np.array_equal(x, y)
    steps = [q.next() for _ in range(len(t) - 1)]
    assert [s[3] for s in steps] == [False] * (len(t) - 2) + [True]
    for i, x in enumerate((pos, vel, acc)):
        assert np.array_equal(np.array([s[i] for s in steps]), x[1:]) and np.array_equal(p.state_at(t[5])[i], x[5])
    if os.environ.get("VEKTA_LIBRARY"):
        assert np.array_equal(c_level(call, period, args(call, d), n), np.array([pos, vel, acc])[:, 1:])
    for x, y in zip(q.sample(), (t, pos, vel, acc)):  # next() consumed nothing of sample()
        assert np.array_equal(x, y)
    start = {"rest": 0.0, "catch_up": 0.0}.get(call, d["pos"])
    np.testing.assert_array_equal(pos[0], start)
    end = {"stop": pos[-1], "catch_up": np.r_[d["target"][0] + 0.25 * p.duration, d["target"][1:]]}
    np.testing.assert_allclose(pos[-1], end.get(call, d["target"]), atol=1e-6)
    assert np.all(vel[-1] == (0.25 if call == "catch_up" else 0.0) * (np.arange(n) == 0)) and np.all(acc[-1] == 0)
    if call != "catch_up":  # the limits hold (the jerk from differences of acceleration)
        jerk = d["max_acc"] * 10.0 if call == "position" else d["max_jerk"]
        assert np.all(np.abs(vel) <= d["max_vel"] * (1 + 1e-9)) and np.all(np.abs(acc) <= d["max_acc"] * (1 + 1e-9))
        assert np.all(np.abs(np.diff(acc, axis=0)) <= jerk * period * (1 + 1e-6))


P7 = draw(7, 9)
MOVE = args("move", P7)[:4]


def long_motion():
    p = vekta.Planner(1e-4)
    p.move([1e3], [1e-3], [1.0], [1.0])  # a million seconds
    return p


FAILURES = [  # call on a planner holding a plan, error, message, whether the plan is gone
    (lambda p: vekta.Planner(period=0), ValueError, r"^period is 0 s, it must be from 0.0001 to 1 s$", False),
    (lambda p: vekta.Planner("0.005"), TypeError, r"^period must be a real number, not a string$", False),
    (lambda p: p.move("1.5", *MOVE[1:]), TypeError, r"^target must be real numbers, not a string$", True),
    (lambda p: p.move(["1.5"] * 7, *MOVE[1:]), TypeError, r"not strings$", True),
    (lambda p: p.move(MOVE[0] + 1j, *MOVE[1:]), TypeError, r"^target must be real numbers, not complex$", True),
    (lambda p: p.move([None] * 7, *MOVE[1:]), TypeError, r"^target must be real numbers, not NoneType$", True),
    (lambda p: p.move(*MOVE, vel=[True] * 7), TypeError, r"^vel must be real numbers, not bool$", True),
    (lambda p: p.move(*MOVE, pos=np.zeros((7, 1))), ValueError, r"^pos must be a flat .* not shape \(7, 1\)$", True),
    (lambda p: p.move(*[[1.0] * 17] * 4), ValueError, r"^target has 17 values; a planner takes 1 to 16", True),
    (lambda p: p.move([], [], [], []), ValueError, r"^target has 0 values", True),
    (lambda p: p.move(*MOVE[:3], [1.0] * 6), ValueError, r"^max_jerk has 6 values, target has 7: give one", True),
    (lambda p: p.stop(*MOVE[1:], pos=[0.0]), ValueError, r"^max_vel has 7 values, pos has 1", True),
    (lambda p: p.move(*MOVE[:3], np.r_[MOVE[3][:3], -1, MOVE[3][4:]]), ValueError,
     r"^axis 3: maxJerk is -1, it must be a positive finite number$", True),
    (lambda p: p.move(np.r_[np.nan, MOVE[0][1:]], *MOVE[1:]), ValueError, r"^axis 0: target is nan, it must be", True),
    (lambda p: p.catch_up(0.5, 0.6, *MOVE), vekta.VektaError, r"^conveyor: the catch-up takes .* limit 0.6$", True),
    (lambda p: p.move([1.0], [1e300], [1e300], [1e-300]), vekta.VektaError, r"^axis 0: no step-1 motion profile", True),
    (lambda p: p.move([1e300], [1.0], [1.0], [1.0]), vekta.VektaError, r"^the plan check refused the plan: axis 0", True),
    (lambda p: p.conveyor(0.25, 2.0, [0.4] * 6, [1.0] * 6, [4.0] * 6, 8.0, spare=0.0), ValueError,
     r"^spare is 0.0 s; the conveyor update refuses a spare below 0.002 s$", True),
    (lambda p: p.conveyor(0.5, 0.6, [0.5] * 6, [1.0] * 6, [4.0] * 6, 10.0), vekta.VektaError,
     r"^vekta: failed to catch up with conveyor.*; plan check: conveyor", True),
    (lambda p: p.position(*[[1.0] * 3] * 3, 10.0, [0.0] * 3), ValueError, r"position\(\) takes 1 or 6", True),
    (lambda p: p.move(*MOVE[:3]), TypeError, r"^move\(\) missing required argument 'max_jerk'$", False),
    (lambda p: p.move(*MOVE, speed=1), TypeError, r"^move\(\) got an unexpected keyword argument 'speed'$", False),
    (lambda p: p.state_at("1.5"), TypeError, r"^t must be real numbers, not a string$", False),
    (lambda p: p.state_at([0.1, np.nan]), ValueError, r"^t\[1\] is nan; times must be seconds$", False),
    (lambda p: p.state_at([[0.1]]), ValueError, r"^t must be a flat sequence of numbers, not shape \(1, 1\)$", False),
    (lambda p: p.next(1), TypeError, r"^next\(\) takes 0 arguments \(1 given\)$", False),
    (lambda p: setattr(p, "recovery", 1), TypeError, r"^recovery must be True or False$", False),
    (lambda p: long_motion().sample(), ValueError, r"^the motion lasts 1000000.* too many periods for sample", False),
]


@pytest.mark.parametrize("call, error, message, gone", FAILURES)
def test_failure(call, error, message, gone):
    p = vekta.Planner(0.001)
    p.move(*MOVE)
    with pytest.raises(error, match=message) as raised:
        call(p)
    assert "\n" not in str(raised.value) and len(str(raised.value)) < 200
    if error is vekta.VektaError:  # the status names the kind of failure
        kinds = {"profile": vekta.NO_PROFILE, "refused": vekta.PLAN_REFUSED, "conveyor": vekta.CONVEYOR_OUT_OF_REACH}
        status = next(kinds[k] for k in kinds if k in message)
        assert (raised.value.status, raised.value.reason) == (status, str(raised.value))
    assert (p.duration == 0.0, p.axes == 0) == (gone, gone)
    if gone:
        for read in (p.next, p.sample, lambda: p.state_at(0.0)):
            with pytest.raises(RuntimeError, match="^no plan"):
                read()


def test_threads_run_while_the_library_samples():
    p, q = vekta.Planner(0.001), vekta.Planner(0.001)
    p.move(*MOVE)
    q.move(*args("move", P7))
    t = np.linspace(0.0, p.duration, 1_000_000)
    alone = q.state_at(t[::1000])
    ticks, stop, beside = [], threading.Event(), []

    def tick():  # a second thread ticks and samples another planner while the first is inside state_at
        while not stop.is_set():
            ticks.append(time.perf_counter())
            beside.append(q.state_at(t[::1000]))
    ticker = threading.Thread(target=tick)
    ticker.start()
    start = time.perf_counter()
    pos, _, _ = p.state_at(t)
    end = time.perf_counter()
    stop.set()
    ticker.join()
    # Ticks in the middle half of the call: none if it held the GIL (Python switches threads every 5 ms).
    during = [x for x in ticks if start + (end - start) / 4 < x < end - (end - start) / 4]
    assert pos.shape == (len(t), 7) and len(during) >= 3 and end - start > 0.04
    assert all(np.array_equal(x, y) for b in beside for x, y in zip(b, alone))


def test_package_is_typed_documented_and_versioned():
    version = re.search(r"project\(vekta VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text()).group(1)
    assert vekta.__version__ == version and issubclass(vekta.VektaError, RuntimeError)
    here = Path(vekta.__file__).parent
    assert (here / "py.typed").exists()
    stub = ast.parse((here / "_vekta.pyi").read_text())
    stubbed = {f.name: f for c in stub.body if isinstance(c, ast.ClassDef) and c.name == "Planner" for f in c.body
               if isinstance(f, ast.FunctionDef)}
    public = {name for name in dir(vekta.Planner) if not name.startswith("_")}
    assert public == set(stubbed) - {"__init__"} and vekta.Planner.__doc__
    p, lines = vekta.Planner(), []  # the switches: each planning call's lines go to the output
    p.output, p.recovery, p.trace = lines.append, True, True
    p.position([0.0], [1.0], [4.0], 10.0, [0.0], vel=[0.3])
    p.move([1.0], [1.0], [4.0], [40.0])
    p.output = None
    p.move([1.0], [1.0], [4.0], [40.0])
    assert (p.recovery, p.trace, len(lines)) == (True, True, 2) and all(x.startswith("step1 start") for x in lines)
    for name in public:  # the signature and the stub agree, each is documented
        member = getattr(vekta.Planner, name)
        if callable(member):
            assert list(inspect.signature(member).parameters) == [a.arg for a in stubbed[name].args.args]
        assert len(member.__doc__) > 20, name
