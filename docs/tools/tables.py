"""Tables computed by running the library (through qallib): what each interpolator and search
gives at and around the ends of its data, and what a NaN does in each family. Each
{{table NAME}} marker in a page that reference.py wrote is replaced by the table NAME, so the
numbers in the manual are the library's own and cannot go stale.

Cells hold the status (0 for QAL_OK, the number of the error otherwise) and what the routine
left in its outputs, in the shortest text that reads back to the same number (float32 values
as float32); "untouched" where the routine writes nothing.
"""

from __future__ import annotations

import math
import pathlib
import re

import numpy as np
import qallib

NAN = math.nan

# The small fixed curve of the end tables: uneven steps, rising.
X = [1.0, 2.0, 3.0, 5.0, 6.0]
Y = [1.0, 2.0, 4.0, 7.0, 8.0]


def fmt(value) -> str:
    if value is None:
        return "untouched"
    if isinstance(value, (bool, np.bool_)):
        return str(bool(value))
    if isinstance(value, (int, np.integer)):
        return str(int(value))
    if isinstance(value, np.float32):
        return "NaN" if np.isnan(value) else str(value)
    if isinstance(value, float):
        return "NaN" if math.isnan(value) else repr(value)
    if isinstance(value, np.ndarray):
        return "[" + ", ".join(fmt(v) for v in value) + "]"
    if isinstance(value, tuple):
        return "(" + ", ".join(fmt(v) for v in value) + ")"
    return str(value)


def run(function, *args, **kwargs):
    """(status, outputs) of one call: 0 and the result, or the status and what the routine
    left in its outputs."""
    try:
        return 0, function(*args, **kwargs)
    except qallib.QalError as error:
        return error.status, error.outputs
    except Exception as error:  # what the class side raises, translated by qallib
        return None, f"raises {type(error).__name__}: {error}"


def cell(function, *args, **kwargs) -> str:
    status, outputs = run(function, *args, **kwargs)
    return outputs if status is None else f"{status}, {fmt(outputs)}"


def table(header: list[str], rows: list[list[str]]) -> str:
    lines = ["| " + " | ".join(header) + " |", "|" + "---|" * len(header)]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return "\n".join(lines)


def curve_text(x, y) -> str:
    return f"x = {fmt(tuple(x))}, y = {fmt(tuple(y))}"


def _end_cases(x, dtype=float):
    """(label, argument) pairs at and around the ends of x."""
    first, last = dtype(x[0]), dtype(x[-1])
    up, down = dtype(math.inf), dtype(-math.inf)
    return [
        ("below `x[0]`", dtype(first - 1)),
        ("exactly `x[0]`", first),
        ("just inside `x[0]`", np.nextafter(first, up)),
        ("just inside `x[n-1]`", np.nextafter(last, down)),
        ("exactly `x[n-1]`", last),
        ("above `x[n-1]`", dtype(last + 1)),
        ("NaN", dtype(NAN)),
    ]


END_ROWS = ("rows: the argument below, exactly on, just inside (the next number toward the data) and "
            "above each end, and NaN; each cell: status, value")


def _arg(value) -> str:
    return f"`{fmt(value if isinstance(value, np.float32) else float(value))}`"


# ---- Interpolation -------------------------------------------------------------------------

def spline_ends() -> str:
    y2 = qallib.splines(X, Y)
    rows = [[label, _arg(v), cell(qallib.cubic_spline_interpolation, X, Y, y2, float(v))]
            for label, v in _end_cases(X)]
    return (f"On {curve_text(X, Y)} with its natural table; {END_ROWS}:\n\n"
            + table(["`x_value`", "", "cubic_spline_interpolation"], rows))


def spline_derivative_ends() -> str:
    y2 = qallib.splines(X, Y)
    rows = [[label, _arg(v), cell(qallib.first_derivative, X, Y, y2, float(v)),
             cell(qallib.second_derivative, X, Y, y2, float(v))] for label, v in _end_cases(X)]
    return (f"On {curve_text(X, Y)} with its natural table; {END_ROWS}:\n\n"
            + table(["`x_value`", "", "first_derivative", "second_derivative"], rows))


INTERPOL_OPTIONS = [0, 2, 3, 4, 5, 6, 12, 14]


# Inside the data, where the location ends one position off the enclosing interval.
INSIDE_CASES = [("inside, between `x[1]` and `x[2]`", 2.5), ("inside, between `x[2]` and `x[3]`", 4.0)]


def interpol_ends() -> str:
    rows = [[label, _arg(v)] + [cell(qallib.interpol, float(v), X, Y, None, option) for option in INTERPOL_OPTIONS]
            for label, v in _end_cases(X) + INSIDE_CASES]
    header = ["`x_value`", ""] + [f"{o} {qallib.InterpolOption(o).name}" for o in INTERPOL_OPTIONS]
    return (f"On {curve_text(X, Y)}, without `y2` (the midpoint is 4.5); {END_ROWS}, then two "
            f"abscissae inside; columns: the options:\n\n" + table(header, rows))


def interpol_last() -> str:
    x, y = [0.0, 1.0, 2.0], [0.0, 1.0, 4.0]
    options = [0, 4, 5, 6, 14]
    rows = [[_arg(v), cell(qallib.locate_value, v, x)] + [cell(qallib.interpol, v, x, y, None, o) for o in options]
            for v in (0.5, 0.999, 1.0, 1.001, 1.5)]
    return (f"On {curve_text(x, y)}; rows: abscissae inside the data; each cell: status, value:\n\n"
            + table(["`x_value`", "locate_value"] + [f"{o} {qallib.InterpolOption(o).name}" for o in options], rows))


def interpol_float_ends() -> str:
    xf = np.array(X, np.float32)
    yf = np.array(Y, np.float32)
    rows = []
    for label, v in _end_cases(xf, np.float32):
        row = [label, _arg(v)]
        for option in INTERPOL_OPTIONS:
            status, out = run(qallib.interpol_float_arrays, xf, yf, np.array([v], np.float32), option)
            row.append(f"{status}, {fmt(out[0]) if out is not None else 'untouched'}")
        rows.append(row)
    header = ["`x_new[0]`", ""] + [f"{o}" for o in INTERPOL_OPTIONS]
    return (f"On the same curve in float32, one new abscissa per call (NaN: the value Python "
            f"puts in `y_new` before the call, kept where the point is refused):\n\n" + table(header, rows))


def tableau_ends() -> str:
    rows = [[label, _arg(v), cell(qallib.polynomial_interpolation, X, Y, float(v)),
             cell(qallib.rationial_interpolation, X, Y, float(v))] for label, v in _end_cases(X)]
    return (f"On {curve_text(X, Y)}; {END_ROWS} (value, error estimate):\n\n"
            + table(["`x_value`", "", "polynomial_interpolation", "rationial_interpolation"], rows))


def akima_cases() -> str:
    cases = [
        ("the curve", X, Y),
        ("`x[0]` NaN", [NAN] + X[1:], Y),
        ("`x[n-1]` NaN", X[:-1] + [NAN], Y),
        ("`y[0]` NaN", X, [NAN] + Y[1:]),
        ("`y[2]` NaN", X, Y[:2] + [NAN] + Y[3:]),
        ("`y[n-1]` NaN", X, Y[:-1] + [NAN]),
        ("`x[1]` equal to `x[0]`", [1.0, 1.0] + X[2:], Y),
        ("`x[1]` below `x[0]`", [1.0, 0.5] + X[2:], Y),
        ("two points", X[:2], Y[:2]),
    ]
    rows = [[label, cell(qallib.akima_sub, np.array(x, np.float32), np.array(y, np.float32))]
            for label, x, y in cases]
    return (f"On {curve_text(X, Y)} in float32 and variations of it; the slopes at all five points:\n\n"
            + table(["Curve", "akima_sub"], rows))


def spline_nan() -> str:
    cases = [("`y[2]` NaN", X, Y[:2] + [NAN] + Y[3:]), ("`x[2]` NaN", X[:2] + [NAN] + X[3:], Y)]
    rows = []
    for label, x, y in cases:
        y2 = qallib.splines(x, y)
        rows.append([label, fmt(y2), cell(qallib.cubic_spline_interpolation, x, y, y2, 1.5),
                     cell(qallib.cubic_spline_interpolation, x, y, y2, 5.5),
                     cell(qallib.first_derivative, x, y, y2, 5.5)])
    return table(["Curve", "splines (natural)", "at 1.5", "at 5.5", "first_derivative at 5.5"], rows)


def interpol_nan() -> str:
    cases = [("`y[2]` NaN", X, Y[:2] + [NAN] + Y[3:], (1.5, 5.5)),
             ("`x[2]` NaN", X[:2] + [NAN] + X[3:], Y, (1.5, 5.5)),
             ("`x[0]` NaN", [NAN] + X[1:], Y, (1.5, 5.5, 7.0)),
             ("`x[n-1]` NaN", X[:-1] + [NAN], Y, (0.5, 1.5, 5.5))]
    rows = [[label, _arg(at)] + [cell(qallib.interpol, at, x, y, None, o) for o in INTERPOL_OPTIONS]
            for label, x, y, values in cases for at in values]
    return table(["Curve", "`x_value`"] + [str(o) for o in INTERPOL_OPTIONS], rows)


def check_in_out_nan() -> str:
    f = lambda v: np.array(v, np.float32)  # noqa: E731
    return _value_rows([
        ("check_in_out_arrays([NaN], upper=[1], lower=[0])", qallib.check_in_out_arrays, (f([NAN]), f([1]), f([0]))),
        ("check_in_out_arrays([5], upper=[NaN], lower=[0])", qallib.check_in_out_arrays, (f([5]), f([NAN]), f([0]))),
        ("check_in_out_arrays([-1], upper=[NaN], lower=[0])", qallib.check_in_out_arrays, (f([-1]), f([NAN]), f([0]))),
        ("check_in_out_arrays([-1], upper=[1], lower=[NaN])", qallib.check_in_out_arrays, (f([-1]), f([1]), f([NAN]))),
    ])


def tableau_nan() -> str:
    cases = [("`y[0]` NaN", X, [NAN] + Y[1:]), ("`x[0]` NaN", [NAN] + X[1:], Y)]
    rows = [[label, _arg(at), cell(qallib.polynomial_interpolation, x, y, at),
             cell(qallib.rationial_interpolation, x, y, at)] for label, x, y in cases for at in (1.5, 5.5)]
    return table(["Curve", "`x_value`", "polynomial_interpolation", "rationial_interpolation"], rows)


# ---- Searches ------------------------------------------------------------------------------

def locate_ends() -> str:
    rows = [[label, _arg(v), cell(qallib.locate_value, float(v), X), cell(qallib.find_abs_values, float(v), X, Y)]
            for label, v in _end_cases(X)]
    for label, v in [("inside, on `x[2]`", 3.0)] + INSIDE_CASES:
        rows.append([label, _arg(v), cell(qallib.locate_value, v, X), cell(qallib.find_abs_values, v, X, Y)])
    return (f"On {curve_text(X, Y)}; {END_ROWS}, then abscissae inside; `locate_value` gives the "
            f"index, `find_abs_values` the point:\n\n"
            + table(["`value`", "", "locate_value", "find_abs_values"], rows))


def search_nan() -> str:
    xs = X[:2] + [NAN] + X[3:]
    rows = [
        ["`value` NaN", cell(qallib.locate_value, NAN, X)],
        ["`x[2]` NaN, `value` 1.5", cell(qallib.locate_value, 1.5, xs)],
        ["`x[2]` NaN, `value` 5.5", cell(qallib.locate_value, 5.5, xs)],
        ["`x[n-1]` NaN, `value` 1.5", cell(qallib.locate_value, 1.5, X[:-1] + [NAN])],
    ]
    keys = np.array([3.0, NAN, 1.0, 2.0], np.float32)
    status, out = run(qallib.sort_straight_insert, keys)
    sort = f"{status}, {fmt(out[0] if isinstance(out, tuple) else out)}"
    return (table(["Call", "locate_value (status, index)"], rows)
            + "\n\n`sort_straight_insert([3, NaN, 1, 2])` gives " + sort + ".")


LEVEL_CASES = [("on `y[0]`", 1.0), ("on `y[n-1]`", 8.0), ("between `y[1]` and `y[2]`", 3.0),
               ("below every sample", 0.5), ("above every sample", 9.0), ("NaN", NAN)]


def threshold_ends() -> str:
    modes = [(1, 0), (1, 2), (2, 0), (2, 2)]
    rows = [[label, _arg(level)] + [cell(qallib.find_x_at_y_threshold, X, Y, level, 0, d, m) for d, m in modes]
            for label, level in LEVEL_CASES]
    header = ["Level", "", "forward, sample", "forward, crossing", "backward, sample", "backward, crossing"]
    return (f"On {curve_text(X, Y)}, absolute level (`threshold_kind` 0); rows: the level on the "
            f"first sample, on the last, between two samples, beyond each end, NaN; forward is `direction` 1, "
            f"backward 2; sample is `result_mode` 0, crossing 2; each cell: status, the point:\n\n"
            + table(header, rows))


def x_diff_ends() -> str:
    span = np.float32(X[-1] - X[0])
    cases = [("0", np.float32(0.0)), ("one step", np.float32(X[1] - X[0])),
             ("just short of `x[n-1] - x[0]`", np.nextafter(span, np.float32(0))),
             ("exactly `x[n-1] - x[0]`", span), ("beyond", np.float32(span + 1)), ("NaN", np.float32(NAN))]
    modes = [(1, 0), (1, 2), (2, 0), (2, 2)]
    rows = [[label, _arg(v)] + [cell(qallib.get_y_at_x_diff, X, Y, float(v), d, m) for d, m in modes]
            for label, v in cases]
    header = ["`x_diff`", "", "forward, sample", "forward, line", "backward, sample", "backward, line"]
    return (f"On {curve_text(X, Y)}; rows: the distance 0, one step, just short of and exactly the "
            f"length of the axis, beyond it, NaN; forward measures from `x[0]`, backward from `x[n-1]`; "
            f"each cell: status, the point:\n\n"
            + table(header, rows))


def end_point_cases() -> str:
    cases = [("the curve", X, Y), ("`x[n-1]` NaN", X[:-1] + [NAN], Y), ("`y[n-1]` NaN", X, Y[:-1] + [NAN]),
             ("`y[0]` NaN", X, [NAN] + Y[1:]), ("`y[2]` NaN", X, Y[:2] + [NAN] + Y[3:]),
             ("one sample", X[:1], Y[:1])]
    rows = [[label, cell(qallib.find_last_point, x, y), cell(qallib.calc_abs_maximum, x, y),
             cell(qallib.calc_abs_minimum, x, y)] for label, x, y in cases]
    return (f"On {curve_text(X, Y)} and variations of it:\n\n"
            + table(["Curve", "find_last_point", "calc_abs_maximum", "calc_abs_minimum"], rows))


def threshold_nan() -> str:
    y = Y[:2] + [NAN] + Y[3:]
    rows = [[_arg(level)] + [cell(qallib.find_x_at_y_threshold, X, y, level, 0, d, 2) for d in (1, 2)]
            for level in (1.5, 3.0, 7.5)]
    return (f"On the curve with `y[2]` NaN, {curve_text(X, y)}; `result_mode` 2:\n\n"
            + table(["Level", "forward", "backward"], rows))


# ---- Extremum search ---------------------------------------------------------------------

PEAK_N = 12


def _peak(at: int):
    x = [float(i) for i in range(PEAK_N)]
    y = [10.0 - abs(i - at) for i in range(PEAK_N)]
    return x, y


def _hits(x, y, window) -> str:
    found = qallib.find_extrema(x, y, window)
    if len(found.index) == 0:
        return "none"
    return "; ".join(f"{'max' if k == qallib.EXTREMUM_MAX else 'min'} at {i} (start {s})"
                     for s, i, k in zip(found.start, found.index, found.kind))


def extremum_ends() -> str:
    rows = []
    for at in (0, 1, 2, 5, 8, 9, 11):
        x, y = _peak(at)
        rows.append([str(at), cell(qallib.get_extremum, x, y, 0), _hits(x, y, 6),
                     cell(qallib.get_range_extremum, x, y, 6, qallib.EXTREMUM_MAX, 0)])
    return (f"A tent of {PEAK_N} samples, x = 0, 1, ..., 11 and y = 10 - |i - peak|; `get_extremum` "
            f"judges the whole run (sample, not vertex), `find_extrema` and `get_range_extremum` "
            f"slide a window of 6 over starts 0 .. 5:\n\n"
            + table(["Peak at", "get_extremum", "find_extrema, window 6", "get_range_extremum, window 6, max"], rows))


def extremum_nan() -> str:
    rows = []
    for where in (0, 3, 6, 11):
        x, y = _peak(6)
        y[where] = NAN
        rows.append([f"`y[{where}]` NaN", cell(qallib.get_extremum, x, y, 0), _hits(x, y, 6),
                     cell(qallib.get_range_extremum, x, y, 6, qallib.EXTREMUM_MAX, 0)])
    x, y = _peak(6)
    x[5] = NAN
    rows.append(["`x[5]` NaN", cell(qallib.get_extremum, x, y, 0), _hits(x, y, 6),
                 cell(qallib.get_range_extremum, x, y, 6, qallib.EXTREMUM_MAX, 0)])
    return ("The tent peaking at 6 with one NaN:\n\n"
            + table(["Curve", "get_extremum", "find_extrema, window 6", "get_range_extremum, window 6, max"], rows))


def crossings_nan() -> str:
    y = Y[:2] + [NAN] + Y[3:]
    rows = []
    for level in (1.5, 3.0, 6.0):
        found = qallib.find_level_crossings(X, y, level)
        rows.append([_arg(level), ", ".join(str(int(i)) for i in found.index) or "none"])
    return f"`find_level_crossings` on {curve_text(X, y)}:\n\n" + table(["Level", "pairs found (first index)"], rows)


# ---- Other families ------------------------------------------------------------------------

def _value_rows(calls):
    rows = []
    for text, fn, args in calls:
        result = cell(fn, *args)
        if fn is qallib.calc_log and result.endswith(", untouched"):  # Python hands no array out on failure
            result = result[: -len(", untouched")] + " (in C++ the array up to the offending logarithm)"
        rows.append([f"`{text}`", result])
    return table(["Call", "Status, result"], rows)


def scalars_nan() -> str:
    k = qallib.k_qal
    calls = [
        ("exp(NaN)", qallib.exp, (NAN,)), ("log(NaN)", qallib.log, (NAN,)), ("log10(NaN)", qallib.log10, (NAN,)),
        ("pow10(NaN)", qallib.pow10, (NAN,)), ("pow(NaN, 2)", qallib.pow, (NAN, 2.0)),
        ("pow(2, NaN)", qallib.pow, (2.0, NAN)), ("pow(-2, NaN)", qallib.pow, (-2.0, NAN)),
        ("pow(NaN, 0)", qallib.pow, (NAN, 0.0)), ("sqrt(NaN)", qallib.sqrt, (NAN,)),
        ("mult(NaN, 2)", qallib.mult, (np.float32(NAN), np.float32(2))),
        ("calc_log([1, NaN, 10], mode=1)", qallib.calc_log, (np.array([1, NAN, 10], np.float32), 1)),
        ("calc_log([1, NaN, 10], mode=2)", qallib.calc_log, (np.array([1, NAN, 10], np.float32), 2)),
        ("calc_log([10, NaN, 1, 0.1], mode=2)", qallib.calc_log, (np.array([10, NAN, 1, 0.1], np.float32), 2)),
        ("k_qal.power(NaN, 2)", k.power, (NAN, 2.0)), ("k_qal.power(2, NaN)", k.power, (2.0, NAN)),
        ("k_qal.log(NaN)", k.log, (NAN,)), ("k_qal.sqrt(NaN)", k.sqrt, (NAN,)),
        ("k_qal.inf_repair(NaN)", k.inf_repair, (NAN,)), ("k_qal.zero_repair(NaN)", k.zero_repair, (NAN,)),
    ]
    return _value_rows(calls)


def statistics_nan() -> str:
    v = [1.0, NAN, 3.0]
    k = qallib.k_qal
    calls = [
        ("sum_of([1, NaN, 3])", qallib.sum_of, (v,)), ("mean([1, NaN, 3])", qallib.mean, (v,)),
        ("mean([NaN])", qallib.mean, ([NAN],)),
        ("sum_square_residuen([1, NaN, 3])", qallib.sum_square_residuen, (v,)),
        ("normalize([1, NaN, 3])", qallib.normalize, (v,)),
        ("k_qal.sum_div([1, 2, 3], [1, NaN, 3])", k.sum_div, ([1.0, 2.0, 3.0], v)),
        ("k_qal.sum_inv([1, NaN, 3])", k.sum_inv, (v,)),
        ("k_qal.min([NaN, 2, 1])", k.min, ([NAN, 2.0, 1.0],)), ("k_qal.max([1, NaN, 3])", k.max, (v,)),
        ("k_qal.max_fraction([1, 2, 3], [1, NaN, 3])", k.max_fraction, ([1.0, 2.0, 3.0], v)),
        ("k_qal.index_max_fraction([1, 2, 3], [1, NaN, 3])", k.index_max_fraction, ([1.0, 2.0, 3.0], v)),
    ]
    return _value_rows(calls)


def solvers_nan() -> str:
    a = np.array([[2.0, 1.0], [NAN, 3.0]])
    b = np.array([[1.0], [2.0]])
    k = qallib.k_qal
    calls = [
        ("lu_decomposition([[2, 1], [NaN, 3]])", qallib.lu_decomposition, (a,)),
        ("lu_decomposition([[NaN, 0], [0, 0]])", qallib.lu_decomposition, (np.array([[NAN, 0.0], [0.0, 0.0]]),)),
        ("k_qal.gauss_jordan([[2, 1], [NaN, 3]], [[1], [2]])", k.gauss_jordan, (a, b)),
    ]
    return _value_rows(calls)


def lines_nan() -> str:
    y = [1.0, NAN, 3.0]
    x = [0.0, 1.0, 2.0]
    xf = np.array(x, np.float32)
    calls = [
        ("lin_fit([0, 1, 2], [1, NaN, 3])", qallib.lin_fit, (x, y)),
        ("lin_fit([0, NaN, 2], [1, 2, 3])", qallib.lin_fit, ([0.0, NAN, 2.0], [1.0, 2.0, 3.0])),
        ("lin_fit (float32) [0, 1, 2], [1, NaN, 3]", qallib.lin_fit, (xf, np.array(y, np.float32))),
        ("calc_lin_x(NaN, [0, 1, 2], [1, 2, 3])", qallib.calc_lin_x, (NAN, x, [1.0, 2.0, 3.0])),
        ("calc_lin_x(1, [0, 1, 2], [1, NaN, 3])", qallib.calc_lin_x, (1.0, x, y)),
        ("calc_lin_y(2, [0, 1, 2], [1, NaN, 3])", qallib.calc_lin_y, (2.0, x, y)),
        ("calc_lin_y(NaN, [0, 1, 2], [1, 2, 3])", qallib.calc_lin_y, (NAN, x, [1.0, 2.0, 3.0])),
        ("linear_regression([0, 1, 2], [1, NaN, 3])", qallib.linear_regression, (x, y)),
        ("straight_line_intersection(0, NaN, 1, 2)", qallib.straight_line_intersection, (0.0, NAN, 1.0, 2.0)),
        ("straight_line_intersection(NaN, 1, 1, 2)", qallib.straight_line_intersection, (NAN, 1.0, 1.0, 2.0)),
    ]
    return _value_rows(calls)


SMOOTH_Y = [1.0, 2.0, 3.0, NAN, 5.0, 6.0, 7.0, 8.0, 9.0]
SMOOTH_X = [float(i) for i in range(len(SMOOTH_Y))]


def _smooth_rows(calls) -> str:
    return f"With y = {fmt(tuple(SMOOTH_Y))} at x = 0, 1, ..., 8:\n\n" + _value_rows(calls)


def filter_nan() -> str:
    y = SMOOTH_Y
    return _smooth_rows([
        ("filter_array(y, FILTER_AVERAGE, 3)", qallib.filter_array, (y, qallib.FILTER_AVERAGE, 3)),
        ("filter_array(y, FILTER_SAVITZKY_GOLAY, 5)", qallib.filter_array, (y, qallib.FILTER_SAVITZKY_GOLAY, 5)),
    ])


def deriv_array_nan() -> str:
    x, y = SMOOTH_X, SMOOTH_Y
    y2 = qallib.splines(x, y)
    return _smooth_rows([
        ("deriv_array(x, y, DERIV_LINE_FIT, 1, 2)", qallib.deriv_array, (x, y, qallib.DERIV_LINE_FIT, 1, 2)),
        ("deriv_array(x, y, DERIV_LINE_FIT, 2, 4)", qallib.deriv_array, (x, y, qallib.DERIV_LINE_FIT, 2, 4)),
        ("deriv_array(x, y, DERIV_SPLINE, 1)", qallib.deriv_array, (x, y, qallib.DERIV_SPLINE, 1)),
        ("first_derivative(x, y, splines(x, y), 7.5)", qallib.first_derivative, (x, y, y2, 7.5)),
        ("first_derivative(x, [0, 1, ..., 8], y2, NaN)", qallib.first_derivative,
         (x, x, qallib.splines(x, x), NAN)),
    ])


def point_nan() -> str:
    x, y = SMOOTH_X, SMOOTH_Y
    return _smooth_rows([
        ("first_derivative_golay(x, y, 7.5)", qallib.first_derivative_golay, (x, y, 7.5)),
        ("first_derivative_golay(x, [0, 1, ..., 8], NaN)", qallib.first_derivative_golay, (x, x, NAN)),
        ("first_derivative_lin_reg(x, y, 2, 7.5)", qallib.first_derivative_lin_reg, (x, y, 2, 7.5)),
        ("first_derivative_lin_reg(x, y, 2, NaN)", qallib.first_derivative_lin_reg, (x, y, 2, NAN)),
        ("first_derivative_ridder(lambda t: NaN, 1, 0.1)", qallib.first_derivative_ridder, (lambda t: NAN, 1.0, 0.1)),
        ("first_derivative_ridder(sin, 1, NaN)", qallib.first_derivative_ridder, (math.sin, 1.0, NAN)),
        ("first_derivative_ridder(sin, NaN, 0.1)", qallib.first_derivative_ridder, (math.sin, NAN, 0.1)),
    ])


def curvature_nan() -> str:
    x, y = np.array(SMOOTH_X, np.float32), np.array(SMOOTH_Y, np.float32)
    return _smooth_rows([
        ("kruemmung(x, y)", qallib.kruemmung, (x, y)),
        ("kruemmung2(x, y, 0, 2)", qallib.kruemmung2, (x, y, 0, 2)),
    ]) + "\n\nBoth in float32; `kruemmung` gives (first derivative, second derivative)."


def boundaries_nan() -> str:
    base = np.array([1.0, NAN, 3.0], np.float32)
    spread = np.array([1.0, 1.0, NAN], np.float32)
    return _value_rows([
        ("calc_boundaries([1, NaN, 3], 3, 1, 3, 1)", qallib.calc_boundaries, (base, 3, 1.0, 3, 1.0)),
        ("calc_boundaries([1, 2, 3], 1, 1, 2, NaN, spread=[1, 1, NaN])", qallib.calc_boundaries,
         (np.array([1, 2, 3], np.float32), 1, 1.0, 2, NAN, spread)),
    ]) + "\n\nEach result is (lower, upper)."


def integration_nan() -> str:
    return _value_rows([
        ("trapez(lambda t: NaN, 0, 1, 1)", qallib.trapez, (lambda t: NAN, 0.0, 1.0, 1)),
        ("trapez(lambda t: t, 0, NaN, 1)", qallib.trapez, (lambda t: t, 0.0, NAN, 1)),
        ("root_bisection(lambda t: t - 0.5, 0, 1, NaN)", qallib.root_bisection, (lambda t: t - 0.5, 0.0, 1.0, NAN)),
        ("root_bisection(lambda t: t - 0.3, 0, 1, NaN)", qallib.root_bisection, (lambda t: t - 0.3, 0.0, 1.0, NAN)),
        ("root_bisection(lambda t: NaN, 0, 1, 1e-6)", qallib.root_bisection, (lambda t: NAN, 0.0, 1.0, 1e-6)),
        ("root_bisection(lambda t: t - 0.5, 0, NaN, 1e-6)", qallib.root_bisection, (lambda t: t - 0.5, 0.0, NAN, 1e-6)),
    ])


def lines_offset() -> str:
    rows = []
    for offset in (0.0, 1e6, 1e8, 1e9):
        x = [offset + i for i in range(5)]
        y = [2.0 * i + 1.0 for i in range(5)]
        xf, yf = np.array(x, np.float32), np.array(y, np.float32)
        rows.append([f"`{fmt(offset)}`", cell(qallib.lin_fit, x, y), cell(qallib.linear_regression, x, y),
                     cell(qallib.lin_fit, xf, yf)])
    return ("The samples (offset + i, 2 i + 1), i = 0 .. 4: slope 2 at every offset. Each cell: status, "
            "(intercept, slope):\n\n"
            + table(["Offset", "lin_fit", "linear_regression", "lin_fit, float32"], rows))


def status_codes() -> str:
    """The codes with the meanings of the header's comments and the exceptions Python raises."""
    import reference

    header = {name: meaning for name, _, meaning in
              reference.sections(pathlib.Path(__file__).resolve().parents[2])["Status codes"].constants}
    rows = [[str(int(s)), f"`QAL_{s.name}`", f"`{s.name}`",
             "none" if s == 0 else f"`{qallib._errors.ERRORS[int(s)].__name__}`",
             reference.prose(header[f"QAL_{s.name}"])]
            for s in qallib.Status]
    return table(["Value", "C++", "Python constant", "Python exception", "Meaning"], rows)


TABLES = {name: fn for name, fn in globals().items()
          if callable(fn) and fn.__module__ == __name__ and name not in
          ("fmt", "run", "cell", "table", "curve_text", "build") and not name.startswith("_")}

_MARKER = re.compile(r"^\{\{table ([\w-]+)\}\}$", re.M)


def build(out_dir: pathlib.Path, repo: pathlib.Path) -> list[pathlib.Path]:
    written = []
    for page in sorted(out_dir.glob("*.md")):
        text = page.read_text(encoding="utf-8")
        if not _MARKER.search(text):
            continue

        def replace(match: re.Match) -> str:
            name = match.group(1).replace("-", "_")
            if name not in TABLES:
                raise KeyError(f"{page.name}: no table named {match.group(1)!r}")
            return TABLES[name]()

        page.write_text(_MARKER.sub(replace, text), encoding="utf-8")
        written.append(page)
    return written
