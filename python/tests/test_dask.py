"""qallib.dask on Dask's local threaded scheduler: the same bits as the direct batch calls,
whatever the chunks, and wrong arguments refused when the graph is built."""

import dask
import dask.array as da
import numpy as np
import pytest

import qallib as q
import qallib.dask as qd
from test_batch import CURVES, X, X_NEW_ROWS, X_ROWS, X_SPLINE, Y_SPLINE, same_bits

f32 = np.float32
# Blocks of uneven size, and curves split along their samples, which qallib.dask joins again.
Y = da.from_array(np.vstack([CURVES] * 3), chunks=((5, 4, 3), (25, 15)))
Y32 = Y.astype(f32)
X_PER_CURVE = da.from_array(np.vstack([X_ROWS] * 3), chunks=(6, 40))
X_NEW = np.vstack([X_NEW_ROWS[:4]] * 3)

CALLS = [
    ("filter_array_batch", (Y32, q.FILTER_SAVITZKY_GOLAY, 9, 4), {}),
    ("filter_array_batch", (Y, q.FILTER_AVERAGE, 5), dict(first=3)),
    ("deriv_array_batch", (X_PER_CURVE.astype(f32), Y32, q.DERIV_SPLINE), {}),
    ("deriv_array_batch", (X, Y, q.DERIV_LINE_FIT, 2, 6), {}),
    ("get_range_extremum_batch", (X_PER_CURVE, Y, 9, q.EXTREMUM_MIN), {}),
    ("get_auto_extremum_batch", (X, Y, q.EXTREMUM_MAX), {}),
    ("find_x_at_y_threshold_batch", (X, Y), dict(threshold=0.5, direction=2)),
    ("get_y_at_x_diff_batch", (X_PER_CURVE, Y, 5.0), {}),
    ("calc_abs_minimum_batch", (X, Y), {}),
    ("interpol_float_arrays_batch", (X.astype(f32), Y32, X_NEW[0]), dict(option=q.INTERPOL_SPLINE)),
    ("interpol_float_arrays_batch", (X_PER_CURVE.astype(f32), Y32, da.from_array(X_NEW, chunks=5)), {}),
]


def computed(value):
    return value.compute() if isinstance(value, da.Array) else value


@pytest.mark.parametrize("name, args, kwargs", CALLS, ids=[c[0] for c in CALLS])
def test_dask_results_equal_the_direct_calls(name, args, kwargs):
    lazy = getattr(qd, name)(*args, **kwargs)
    assert all(isinstance(field, da.Array) for field in lazy)
    with dask.config.set(scheduler="threads", num_workers=2):
        got = dask.compute(*lazy)
    expected = getattr(q, name)(*[computed(a) for a in args], **kwargs)
    assert type(lazy) is type(expected)
    for field, value, direct in zip(lazy, got, expected):
        assert field.dtype == value.dtype == direct.dtype and field.shape == value.shape
        assert same_bits(value, direct)
    assert lazy[0].chunks[0] == Y.chunks[0]


def test_each_block_is_computed_once_for_all_fields(monkeypatch):
    lazy = qd.filter_array_batch(Y, q.FILTER_TRIANGLE, 3)
    calls = []
    batch = q.filter_array_batch
    monkeypatch.setattr(q._qal, "filter_array_batch", lambda *a, **k: calls.append(1) or batch(*a, **k))
    dask.compute(*lazy, scheduler="threads")
    assert len(calls) == len(Y.chunks[0])


@pytest.mark.parametrize("error, match, call", [
    (TypeError, "y must be a float64", lambda: qd.calc_abs_maximum_batch(X, Y32)),
    (TypeError, "x must be a float32", lambda: qd.deriv_array_batch(X, Y32, q.DERIV_SPLINE)),
    (ValueError, "x of shape", lambda: qd.find_last_point_batch(X_PER_CURVE[:4], Y)),
    (ValueError, "two-dimensional", lambda: qd.filter_array_batch(Y[0], 10, 3)),
    (ValueError, "at least 3", lambda: qd.get_next_extremum_batch(X[:2], Y[:, :2], 3, 11)),
])
def test_bad_arguments_raise_when_the_graph_is_built(error, match, call):
    with pytest.raises(error, match=match):
        call()
