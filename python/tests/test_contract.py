"""What the package promises beyond the numbers: statuses as exceptions with their outputs,
dtypes kept and refused, arguments checked before the library reads them, the GIL released,
the README example, the version."""

import mmap
import re
import sys
import threading
import time

import numpy as np
import pytest

import qallib as q
from conftest import ROOT

f32 = np.float32
X = np.arange(9.0)
Y = 100 - (X - 4) ** 2



def throw(error):
    raise error


# Every status, raised by a call that gives it. No input provokes a failing allocation in
# the installed module, so status 8 goes through the mapping the binding uses.
STATUSES = [
    (1, q.OrderError, ValueError, lambda: q.akima_sub(np.array([0, 2, 1], f32), np.zeros(3, f32))),
    (8, q.AllocationError, MemoryError, lambda: throw(q._errors._error_for(8, "filter_array", None))),
    (11, q.ZeroDenominatorError, ZeroDivisionError, lambda: q.normalize(np.array([1.0, -1.0]))),
    (12, q.SingularMatrixError, ArithmeticError, lambda: q.lu_decomposition(np.zeros((2, 2)))),
    (35, q.ParameterError, ValueError, lambda: q.get_extremum(X[:4], Y[:4])),
    (36, q.NotFoundError, LookupError, lambda: q.get_range_extremum(X, Y, 3, q.EXTREMUM_MIN)),
    (37, q.OutOfRangeError, ValueError, lambda: q.locate_value(9.0, X)),
    (38, q.TooFewPointsError, ValueError, lambda: q.find_last_point(X[:1], Y[:1])),
    (39, q.LogSequenceError, ValueError, lambda: q.calc_log(np.array([2, 1, 3, 1], f32), 1)),
]


@pytest.mark.parametrize("status, error, builtin, call", STATUSES, ids=[str(s[0]) for s in STATUSES])
def test_every_status_raises_its_own_exception(status, error, builtin, call):
    with pytest.raises(error) as raised:
        call()
    assert isinstance(raised.value, (q.QalError, builtin))
    assert raised.value.status == status == q.Status(status)
    assert q.Status(status).name in str(raised.value)


def test_failures_carry_what_the_routine_left():
    with pytest.raises(q.NotFoundError) as raised:
        q.get_range_extremum(X, Y, 3, q.EXTREMUM_MIN)
    assert raised.value.outputs == q.Point(0.0, 1e25) and raised.value.function == "get_range_extremum"
    with pytest.raises(q.OutOfRangeError) as raised:
        q.interpol(9.0, X, Y)
    assert raised.value.outputs == (Y[0] + Y[-1]) * 0.5
    with pytest.raises(q.TooFewPointsError) as raised:
        q.calc_abs_maximum(X[:1], Y[:1])
    assert raised.value.outputs == q.Point(0.0, 84.0)
    assert q.find_x_at_y_threshold(X, Y, 500.0, none_if_not_found=True) is None
    assert q.get_extremum(X, Y, min_height_percent=50.0, none_if_not_found=True) is None
    assert q.get_auto_extremum(np.arange(12.0), np.arange(12.0), q.EXTREMUM_MAX) is None
    with pytest.raises(q.SingularMatrixError) as raised:
        q.k_qal.gauss_jordan(np.ones((2, 2)))
    assert raised.value.status == 2


@pytest.mark.parametrize("dtype", [np.float32, np.float64])
def test_dtype_is_kept(dtype):
    y = Y.astype(dtype)
    assert q.filter_array(y, q.FILTER_SAVITZKY_GOLAY, 5).dtype == dtype
    assert q.deriv_array(X.astype(dtype), y, q.DERIV_SPLINE).dtype == dtype
    assert type(q.lin_fit(X.astype(dtype), y).slope) is (f32 if dtype is np.float32 else float)


def test_scalar_functions_work_element_by_element():
    values = np.array([[30.0, 30.0000001], [np.nan, -800.0]])
    assert np.array_equal(q.exp(values), [[q.exp(v) for v in row] for row in values.tolist()], equal_nan=True)
    assert np.array_equal(q.pow(values, 2.0), [[q.pow(v, 2.0) for v in row] for row in values.tolist()],
                          equal_nan=True)
    assert q.mult(np.array([3e12, 2], f32), f32(1e13)).dtype == f32


def no_access_array(n, dtype):
    """An array whose memory faults on any read: a call that checks its arguments before
    the library reads an element raises instead of crashing."""
    size = max(np.dtype(dtype).itemsize * n, mmap.PAGESIZE)
    memory = mmap.mmap(-1, size, prot=0)  # PROT_NONE
    return np.frombuffer(memory, dtype=dtype, count=n)


BAD_ARGUMENTS = [
    (TypeError, "in_", lambda: q.filter_array(np.arange(9), 10, 5)),
    (TypeError, "y", lambda: q.lin_fit(X, no_access_array(9, f32))),
    (TypeError, "x", lambda: q.interpol(1.0, no_access_array(9, f32), Y)),
    (TypeError, "x", lambda: q.find_last_point(X.astype(">f8"), Y)),
    (TypeError, "keys", lambda: q.sort_straight_insert(X)),
    (TypeError, "third", lambda: q.sort_straight_insert(X.astype(f32), third=np.arange(9))),
    (ValueError, "x and y", lambda: q.get_range_extremum(X, no_access_array(8, np.float64), 3, 11)),
    (ValueError, "x and y", lambda: q.get_range_extremum(X[:2], Y[:2], 3, 11)),
    (ValueError, "y2", lambda: q.cubic_spline_interpolation(X, Y, no_access_array(4, np.float64), 1.0)),
    (ValueError, "one-dimensional", lambda: q.filter_array(no_access_array(9, np.float64).reshape(3, 3), 10, 3)),
    (ValueError, "square", lambda: q.lu_decomposition(np.zeros((2, 3)))),
    (ValueError, "pivots", lambda: q.lu_solve_equa(np.eye(2), np.array([0, 5], np.int32), np.ones(2))),
    (ValueError, "width", lambda: q.set_filter_coefficients(10, 2)),
    (ValueError, "b", lambda: q.k_qal.sum_mult(X, no_access_array(3, np.float64))),
    (TypeError, "function", lambda: q.trapez(None, 0.0, 1.0, 1)),
]


@pytest.mark.parametrize("error, name, call", BAD_ARGUMENTS, ids=[f"{e.__name__}-{n}" for e, n, _ in BAD_ARGUMENTS])
def test_bad_arguments_raise_before_the_library_reads(error, name, call):
    with pytest.raises(error, match=name):
        call()


def test_non_contiguous_input_and_lists_give_the_array_result():
    y = np.repeat(Y, 2)[::2]
    assert not y.flags.c_contiguous
    assert np.array_equal(q.filter_array(y, 20, 5), q.filter_array(Y, 20, 5))
    assert np.array_equal(q.filter_array(Y.tolist(), 20, 5), q.filter_array(Y, 20, 5))


def test_python_exceptions_in_callables_propagate():
    with pytest.raises(ZeroDivisionError):
        q.root_bisection(lambda t: 1 / 0, 0.0, 1.0, 1e-9)


def test_the_gil_is_released_while_the_library_works():
    y = np.random.default_rng(1).normal(size=2_000_000)
    calls = []  # (enter, leave) of each call in the worker thread
    done = threading.Event()

    def work():
        for _ in range(3):
            enter = time.perf_counter()
            q.filter_array(y, q.FILTER_SAVITZKY_GOLAY, 299)
            calls.append((enter, time.perf_counter()))
        done.set()

    woke = []  # when this thread ran Python code while the worker was busy
    worker = threading.Thread(target=work)
    interval = sys.getswitchinterval()
    sys.setswitchinterval(0.0005)
    try:
        worker.start()
        while not done.is_set():
            woke.append(time.perf_counter())
            time.sleep(0.002)
        worker.join()
    finally:
        sys.setswitchinterval(interval)
    # The interpreter may switch threads between taking a time and the call next to it, for
    # a few switch intervals at most; held through the call itself, the GIL would keep this
    # thread from waking anywhere well inside it, in each of the calls. No speed is assumed
    # beyond calls that take longer than four times the slack.
    slack = 10 * 0.0005
    assert all(leave - enter > 4 * slack for enter, leave in calls), calls
    for enter, leave in calls:
        assert any(enter + slack < t < leave - slack for t in woke), (enter, leave, woke)


def test_the_readme_example_runs_as_written(monkeypatch, capsys):
    readme = (ROOT / "README.md").read_text()
    example = re.search(r"<!-- python-example -->\s*```python\n(.*?)```", readme, re.S).group(1)
    assert len(example.strip().splitlines()) <= 6
    monkeypatch.chdir(ROOT)
    exec(compile(example, "README.md", "exec"), {})
    printed = capsys.readouterr().out
    peaks = [float(v) for v in re.findall(r"\d+\.\d*", printed)]
    # The sample curve's two peaks, near x = 32 and x = 104.
    assert any(abs(v - 32) < 2 for v in peaks) and any(abs(v - 104) < 2 for v in peaks), printed


def test_the_version_is_the_library_version():
    version = re.search(r"project\(QalLib VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text()).group(1)
    assert q.__version__ == q._qal.version() == version
