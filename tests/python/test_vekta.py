"""The Python module as its users meet it: plan, sample, refuse, switch."""
import numpy as np
import pytest

import vekta

TARGET = np.array([1.0, -0.5, 0.25, 2.0, -1.5, 0.75])
VEL, ACC = [1.0, 1.5, 2.0, 1.0, 1.2, 0.8], (4.0, 3.0, 5.0, 2.0, 6.0, 4.0)


def test_position_motion_sampled_to_its_target(capfd):
    p = vekta.Planner()
    p.position(TARGET, VEL, ACC, 10.0, np.zeros(6))
    assert p.check() == (0, "ok")
    t, pos, vel, acc = p.sample()
    assert pos.shape == vel.shape == acc.shape == (len(t), 6)
    assert t[0] == pytest.approx(0.005) and t[-1] == pytest.approx(p.left_time + len(t) * 0.005)
    np.testing.assert_allclose(pos[-1], TARGET, atol=1e-4)
    assert np.all(np.abs(vel) <= np.array(VEL) * (1 + 1e-6)) and np.all(np.abs(vel[-1]) < 1e-9)
    assert capfd.readouterr().out == ""  # output off by default


def test_velocity_stop_and_conveyor_catch_up():
    p = vekta.Planner()
    p.velocity(VEL, ACC, 10.0, np.zeros(6), [0.5] * 6)
    assert np.all(np.abs(p.sample()[2][-1]) < 1e-9)
    p.conveyor(0.25, 2.0, [0.4, -0.2, 0.3, 0.0, 0.5, -0.6], VEL, ACC, 8.0)
    assert p.check()[0] == 0 and p.sample()[1][-1][1] == pytest.approx(-0.2, abs=1e-4)


def test_refusals_raise_with_the_reason():
    p = vekta.Planner()
    with pytest.raises(vekta.VektaError, match="failed to catch up with conveyor.*plan check: conveyor"):
        p.conveyor(0.5, 0.6, [0.5] * 6, VEL, ACC, 10.0)
    with pytest.raises(ValueError, match="max_vel: 6 values"):
        p.position(TARGET, [1.0], ACC, 10.0, np.zeros(6))
    with pytest.raises(vekta.VektaError, match="nothing to sample: conveyor"):
        p.sample()


def test_output_recovery_and_trace_switches():
    p, lines = vekta.Planner(), []
    p.output, p.recovery, p.trace = lines.append, True, True
    assert (p.recovery, p.trace) == (True, True)
    p.position([0.0], [1.0], [4.0], 10.0, [0.0], vel=[0.3])
    assert "".join(lines).startswith("step1 start") and "posUpd: 1st pt" in "".join(lines)
    assert vekta.Planner.sample.__doc__ and vekta.Planner.__doc__
