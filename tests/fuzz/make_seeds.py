#!/usr/bin/env python3
"""Writes the seed corpus of the fuzz target (tests/fuzz/corpus/), in the
driver's input format (see fuzz_driver.cpp): a few plain motions of every
kind, each sampled to its end, and a few hostile ones. Run it from anywhere;
the fuzzer grows its own corpus from these."""
import os
import struct

HOSTILE = {"nan": 4, "inf": 5, "-inf": 6, "0": 0, "-1": 3, "1e-9": 7, "1e9": 9}
AXES = {1: 0, 6: 1, 0: 6, 2: 7, 7: 9, -1: 10}
POS, VEL, CONVEYOR, SAMPLE, TO_END, CHECK, LEFT = 0, 2, 3, 4, 6, 7, 8


def value(x):
    if isinstance(x, str):
        return bytes([0, HOSTILE[x]])
    return bytes([1]) + struct.pack("<H", int(round(x * 4096 + 32768)))


def limit(x):
    if isinstance(x, str):
        return bytes([0, HOSTILE[x]])
    return bytes([1]) + struct.pack("<H", int(round((x - 0.05) * 2048)))


def array(xs, n, lim=False):
    if n not in (1, 6):
        return b""
    enc = limit if lim else value
    return bytes([1]) + b"".join(enc(xs[i % len(xs)]) for i in range(n))


def position(n, tgt, vmax, amax, ratio, pos=(0,), vel=(0,), acc=(0,)):
    return (bytes([POS, AXES[n]]) + array(tgt, n) + array(vmax, n, True) + array(amax, n, True) + limit(ratio)
            + array(pos, n) + array(vel, n) + array(acc, n) + value(0))


def velocity(n, vmax, amax, ratio, pos=(0,), vel=(0,), acc=(0,)):
    return (bytes([VEL, AXES[n]]) + array(vmax, n, True) + array(amax, n, True) + limit(ratio)
            + array(pos, n) + array(vel, n) + array(acc, n) + value(0))


def conveyor(n, cv, limitPos, tgt, vmax, amax, ratio):
    return (bytes([CONVEYOR, AXES[n]]) + value(cv) + value(limitPos) + array(tgt, n) + array(vmax, n, True)
            + array(amax, n, True) + limit(ratio) + bytes([1]))


def sample(axis, count_index=0):
    return bytes([SAMPLE, axis + 2, count_index, 0])


TO_END_POS = bytes([TO_END, 0])
CHECK_PLAN = bytes([CHECK, 60])

SEEDS = {
    "one-axis-rest-to-rest": position(1, [1.5], [1.0], [4.0], 10.0) + CHECK_PLAN + TO_END_POS,
    "six-axes-rest-to-rest": position(6, [1, -0.5, 0.25, 2, -1.5, 0.75], [1, 1.5, 2, 1, 1.2, 0.8],
                                      [4, 3, 5, 2, 6, 4], 10.0) + CHECK_PLAN + TO_END_POS,
    "six-axes-moving-start": position(6, [1, -2, 0.5, 3, -1, 0], [1, 2, 1.5, 1, 2, 1], [4, 3, 5, 2, 6, 4], 8.0,
                                      pos=[0.5], vel=[0.5, -0.8, 0.2, 0.9, -1.5, 0.1],
                                      acc=[1, -2, 0.5, 1.5, -3, 2]) + CHECK_PLAN + TO_END_POS,
    "stop-from-beyond-the-limits": velocity(6, [1, 1, 1, 1, 1, 1], [2, 2, 2, 2, 2, 2], 10.0,
                                            vel=[1.3, -0.5, 0.9, -1.2, 0.1, 0.0], acc=[2.5, -1, 0, 3, -2.4, 0])
                                   + CHECK_PLAN + TO_END_POS,
    "conveyor-catch-up": conveyor(6, 0.3, 7.5, [1, 0.5, -0.5, 0.2, 0, 0.1], [1, 1, 1, 1, 1, 1],
                                  [3, 3, 3, 3, 3, 3], 10.0) + CHECK_PLAN + TO_END_POS,
    "update-while-sampling": position(1, [2.0], [1.0], [3.0], 10.0) + sample(0) * 6
                             + position(1, [-1.0], [1.0], [3.0], 10.0, pos=[0.01], vel=[0.2], acc=[2.0])
                             + CHECK_PLAN + TO_END_POS,
    "bad-axis-count-then-sampling": bytes([POS, AXES[7]]) + value(0) + sample(0) + sample(-1) + CHECK_PLAN
                                    + bytes([LEFT]),
    "nan-target": position(1, ["nan"], [1.0], [2.0], 10.0) + CHECK_PLAN + sample(0) + TO_END_POS,
    "zero-limits": position(6, [1.0], ["0", 1.0], ["0", 1.0, "-1"], 10.0) + CHECK_PLAN + TO_END_POS,
    "tiny-and-huge-limits": position(6, [1.0, 2.0], ["1e-9", "1e9"], ["1e9", "1e-9"], 10.0) + CHECK_PLAN
                            + TO_END_POS,
}

if __name__ == "__main__":
    out = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus")
    os.makedirs(out, exist_ok=True)
    for name, data in SEEDS.items():
        with open(os.path.join(out, name), "wb") as f:
            f.write(data)
    print(f"{len(SEEDS)} seeds in {out}")
