"""The batch calls: every row is the 1-D call on that row, to the bit, with its failure as a
status and what the routine left in the row; wrong arguments raise before any row is read."""

import numpy as np
import pytest

import qallib as q
from test_contract import no_access_array

f32 = np.float32
NAN = float("nan")
X = np.linspace(0.0, 6.0, 40)
# A peak and a trough, a ramp, a NaN first sample, a constant: rows that succeed and fail
# differently in every family.
CURVES = np.stack([np.sin(X), X / 6, np.where(np.arange(40) == 0, NAN, np.cos(X)), np.full(40, 2.0)])
# One axis per curve, the third too short to reach x_diff 5.
X_ROWS = X * np.array([[1.0], [1.5], [0.5], [2.0]])


def bits(values):
    values = np.asarray(values)
    return values.view(np.uint32 if values.dtype == f32 else np.uint64)


def same_bits(a, b):
    a, b = np.asarray(a), np.asarray(b, dtype=np.asarray(a).dtype)
    return a.shape == b.shape and np.array_equal(bits(a), bits(b))


def one_row(call, left):
    """The 1-D call in the batch's terms: its status and outputs, `left` where it gives none."""
    try:
        result = call()
        return 0, left if result is None else result
    except q.QalError as error:
        return error.status, left if error.outputs is None else error.outputs


# name, arguments, the statuses on CURVES with the shared X.
POINTS = [
    ("get_next_extremum", dict(window=9, kind=q.EXTREMUM_MAX), [0, 36, 36, 36]),
    ("get_range_extremum", dict(window=9, kind=q.EXTREMUM_MIN), [0, 36, 0, 36]),
    ("get_auto_range_extremum", dict(window=3, kind=q.EXTREMUM_MAX, use_vertex=False), [0, 36, 36, 36]),
    ("get_auto_extremum", dict(kind=q.EXTREMUM_MAX), [0, 0, 0, 0]),  # nothing accepted in rows 1 and 3
    ("find_x_at_y_threshold", dict(threshold=0.5), [0, 0, 0, 36]),
    ("find_x_at_y_threshold", dict(threshold_kind=5, direction=2, result_mode=0, percent=50.0), [0, 0, 0, 36]),
    ("get_y_at_x_diff", dict(x_diff=5.0, direction=2), [0, 0, 0, 0]),
    ("find_last_point", dict(), [0, 0, 0, 0]),
    ("calc_abs_maximum", dict(), [0, 0, 36, 0]),
    ("calc_abs_minimum", dict(), [0, 0, 36, 0]),
]


@pytest.mark.parametrize("shared", [True, False], ids=["shared-x", "x-per-curve"])
@pytest.mark.parametrize("name, kwargs, statuses", POINTS, ids=[p[0] for p in POINTS])
def test_point_rows_equal_the_1d_calls(name, kwargs, statuses, shared):
    x = X if shared else X_ROWS
    got = getattr(q, name + "_batch")(x, CURVES, **kwargs)
    if shared:
        assert got.status.tolist() == statuses
    for r, y in enumerate(CURVES):
        status, point = one_row(lambda: getattr(q, name)(x if shared else x[r], y, **kwargs), q.Point(NAN, NAN))
        assert got.status[r] == status and same_bits(got.x[r], point[0]) and same_bits(got.y[r], point[1]), r


def test_point_rows_fail_alone():
    # x per curve: only the short third axis leaves x_diff out of reach.
    got = q.get_y_at_x_diff_batch(X_ROWS, CURVES, 5.0)
    assert got.status.tolist() == [0, 0, q.ERR_OUT_OF_RANGE, 0]
    assert got.x[2] == 5.0 and got.y[2] == CURVES[2, -1]


# The same curves twice over, for a float32 and a float64 batch; the last row's axis ends in a
# zero-wide interval, which only the spline refuses.
X_SPLINE = np.vstack([X_ROWS, X])
X_SPLINE[-1, -1] = X_SPLINE[-1, -2]
Y_SPLINE = np.vstack([CURVES[[0, 1, 3]], CURVES[[0, 1]]])
X_NEW_ROWS = np.array([[0.5, 2.5, 5.5], [0.5, 2.5, 9.5], [9.5, 0.5, 1.0], [0.0, 1.0, 2.0], [1.0, 2.0, 3.0]], f32)

# name, the batch call, the 1-D call on row r, what a failing row holds where the 1-D call
# gives no outputs, the statuses.
ARRAYS = [
    ("filter_array-f64", lambda: q.filter_array_batch(CURVES, q.FILTER_SAVITZKY_GOLAY, 7, 4, first=2, last=30),
     lambda r: q.filter_array(CURVES[r], q.FILTER_SAVITZKY_GOLAY, 7, 4, first=2, last=30), None, [0] * 4),
    ("filter_array-f32", lambda: q.filter_array_batch(CURVES.astype(f32), q.FILTER_TRIANGLE, 5),
     lambda r: q.filter_array(CURVES[r].astype(f32), q.FILTER_TRIANGLE, 5), None, [0] * 4),
    ("filter_array-refused", lambda: q.filter_array_batch(CURVES.astype(f32), q.FILTER_AVERAGE, 101),
     lambda r: q.filter_array(CURVES[r].astype(f32), q.FILTER_AVERAGE, 101),
     lambda r: CURVES[r].astype(f32), [35] * 4),
    ("deriv_array-f32-spline", lambda: q.deriv_array_batch(X_SPLINE.astype(f32), Y_SPLINE.astype(f32), q.DERIV_SPLINE),
     lambda r: q.deriv_array(X_SPLINE[r].astype(f32), Y_SPLINE[r].astype(f32), q.DERIV_SPLINE),
     lambda r: np.full(40, NAN, f32), [0, 0, 0, 0, 11]),
    ("deriv_array-f64-line", lambda: q.deriv_array_batch(X, Y_SPLINE, q.DERIV_LINE_FIT, 2, 6),
     lambda r: q.deriv_array(X, Y_SPLINE[r], q.DERIV_LINE_FIT, 2, 6), None, [0] * 5),
    ("interpol_float_arrays", lambda: q.interpol_float_arrays_batch(X_SPLINE.astype(f32), Y_SPLINE.astype(f32),
                                                                    X_NEW_ROWS, q.INTERPOL_LOCAL_LINE, fill=-1.0),
     lambda r: q.interpol_float_arrays(X_SPLINE[r].astype(f32), Y_SPLINE[r].astype(f32), X_NEW_ROWS[r],
                                       q.INTERPOL_LOCAL_LINE, fill=-1.0), None, [0, 37, 0, 0, 0]),
]


@pytest.mark.parametrize("name, batch, row, left, statuses", ARRAYS, ids=[a[0] for a in ARRAYS])
def test_array_rows_equal_the_1d_calls(name, batch, row, left, statuses):
    got = batch()
    assert got.status.tolist() == statuses
    for r, status in enumerate(statuses):
        expected_status, values = one_row(lambda: row(r), left and left(r))
        assert got.status[r] == expected_status and same_bits(got.values[r], values), r


def test_a_failing_float64_spline_row_keeps_what_the_routine_wrote():
    got = q.deriv_array_batch(X_SPLINE, Y_SPLINE, q.DERIV_SPLINE)
    assert got.status.tolist() == [0, 0, 0, 0, q.ERR_ZERO_DIVISION]
    # The 1-D call raises without outputs; the preset NaN would stand here had nothing been written.
    assert got.values[4, -2:].tolist() == [1e15, 1e15]


def test_empty_and_non_contiguous_batches():
    got = q.calc_abs_maximum_batch(X, np.empty((0, 40)))
    assert got.x.shape == got.status.shape == (0,)
    assert q.filter_array_batch(np.empty((0, 5), f32), 10, 3).values.shape == (0, 5)
    columns = np.asfortranarray(CURVES)
    assert same_bits(q.filter_array_batch(columns, 10, 3).values, q.filter_array_batch(CURVES, 10, 3).values)
    got = q.get_range_extremum_batch(np.asfortranarray(X_ROWS), columns, 9, q.EXTREMUM_MIN)
    assert same_bits(got.x, q.get_range_extremum_batch(X_ROWS, CURVES, 9, q.EXTREMUM_MIN).x)


def unreadable(rows, cols, dtype=np.float64):
    return no_access_array(rows * cols, dtype).reshape(rows, cols)


BAD_ARGUMENTS = [
    (TypeError, "in_", lambda: q.filter_array_batch(np.zeros((2, 9), np.int64), 10, 5)),
    (TypeError, "y", lambda: q.get_range_extremum_batch(X.astype(f32), unreadable(2, 40, f32), 9, 11)),
    (TypeError, "x", lambda: q.deriv_array_batch(X, unreadable(2, 40, f32), q.DERIV_SPLINE)),
    (TypeError, "x_new", lambda: q.interpol_float_arrays_batch(X.astype(f32), unreadable(2, 40, f32), X)),
    (ValueError, "two-dimensional", lambda: q.filter_array_batch(no_access_array(9, np.float64), 10, 3)),
    (ValueError, "two-dimensional", lambda: q.find_last_point_batch(X, np.zeros((1, 2, 40)))),
    (ValueError, "x of shape", lambda: q.calc_abs_maximum_batch(X[:39], unreadable(2, 40))),
    (ValueError, "x of shape", lambda: q.calc_abs_maximum_batch(X_ROWS, unreadable(2, 40))),
    (ValueError, "x_new of shape", lambda: q.interpol_float_arrays_batch(X.astype(f32), unreadable(2, 40, f32),
                                                                         X_NEW_ROWS)),
    (ValueError, "at least 3", lambda: q.get_next_extremum_batch(X[:2], unreadable(4, 2), 3, 11)),
    (ValueError, "at least 1", lambda: q.deriv_array_batch(X[:0].astype(f32), unreadable(4, 0, f32), 4)),
]


@pytest.mark.parametrize("error, match, call", BAD_ARGUMENTS, ids=[f"{e.__name__}-{m}" for e, m, _ in BAD_ARGUMENTS])
def test_bad_arguments_raise_before_any_row_is_read(error, match, call):
    with pytest.raises(error, match=match):
        call()
