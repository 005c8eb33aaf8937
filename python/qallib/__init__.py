"""qallib: QalLib's routines for sampled curves, for NumPy arrays, with the C++ results to the bit.

Conventions
-----------
* Names are the C++ names in snake_case without the QAL_ prefix (QAL_FilterArray ->
  filter_array, QAL_FindX_at_YThreshold -> find_x_at_y_threshold); the names the library
  spells its own way stay so (kruemmung, trapez, rationial_interpolation,
  savitzky_golay_coeffizient, sum_square_residuen). A float twin (QAL_FilterFloatArray) has
  no name of its own: the dtype of the arrays chooses it.
* Arguments keep the C++ names in snake_case (in becomes in_). Outputs and counts are not
  arguments: the count is the arrays' length, the outputs come back as a new array, a float,
  or a named tuple (Point, Line, Estimate, ...). The order is the C++ order, except that the
  arguments with defaults come last. Arguments that the library never reads are left out.
* dtype is kept: a float32 array goes to the float routine and float32 comes back (scalars
  as numpy.float32), a float64 one to the double routine. Nothing is converted: an array of
  a dtype the routine cannot take raises TypeError naming the argument. Lists become arrays
  by numpy.asarray (so a list of floats is float64). Non-contiguous arrays are copied first.
  Scalar arguments that are float in C++ (thresholds, percentages) are rounded to float32.
* Wrong dimensions, mismatched lengths, and the few short arrays that C++ reports as
  QAL_ERR_MEMORY raise ValueError naming the arguments, before the library reads an element.
* A status other than QAL_OK raises the matching QalError subclass (see qallib._errors):
  .status is the code, .function the function, .outputs what the routine left in its
  outputs (in the form of the normal result) where that is useful: the first sample after
  too few points, the start or far-end sample of a failed search, the midpoint of interpol.
  Searches whose "nothing found" is an ordinary answer take none_if_not_found=True to
  return None instead. Functions that answer with a value in C++ (the derivatives at a
  point, calc_lin_x, root_bisection, ...) return that value, sentinels (1e25, 0.0, 35.0)
  included, and raise no QalError.
* The GIL is released while the library works on arrays, so threads run calls in parallel.
  The callables given to first_derivative_ridder, trapez and root_bisection run with the
  GIL held; an exception they raise propagates after the C++ call.
* Results equal those of the C++ library to the bit: the module is compiled from the same
  sources with the same floating-point flags (-ffp-contract=off, no fast-math, no -march).

What has no separate Python form
--------------------------------
* InitQalLibExtDLL: has no effect on this platform.
* QAL_NewMatrix, QAL_DeleteMatrix: a raw matrix is a 2-D float64 array (lu_decomposition,
  lu_solve_equa take one). QAL_Mt_Swap: a, b = b, a.
* QAL_F2D, QAL_D2F: array.astype(numpy.float64) widens exactly, astype(numpy.float32)
  rounds to nearest (infinity beyond the float range), as they do.
* QAL_ReleaseArray: the array of calc_log is released with the NumPy array that holds it.
* t_QalVector, t_QalMatrix, k_QalExceptionIndex: NumPy arrays take their place in k_qal;
  lengths are checked before the call, so no index error can arise from them.
* The reserved arguments (QAL_SortStraightInsert's reserved, QAL_GetY_at_XDiff's reserved,
  QAL_Find_LastPoint's reserved1 and reserved2) are not read by the library.
* The optional spread of QAL_Mean is always computed; QAL_FilterArray with in == out (the
  left taps then read filtered values) has no Python form.
"""

from . import _errors, _types
from ._errors import (
    AllocationError,
    LogSequenceError,
    NotFoundError,
    OrderError,
    OutOfRangeError,
    ParameterError,
    QalError,
    SingularMatrixError,
    TooFewPointsError,
    ZeroDenominatorError,
)
from ._types import (
    Boundaries,
    Curvature,
    Estimate,
    Extrema,
    Extremum,
    GaussJordan,
    Line,
    Located,
    LevelCrossings,
    LUDecomposition,
    MeanSpread,
    MeanSquares,
    Point,
    Repaired,
    Sorted,
)
from . import _qal
from ._qal import (
    akima_sub,
    calc_abs_maximum,
    calc_abs_minimum,
    calc_boundaries,
    calc_lin_x,
    calc_lin_y,
    calc_log,
    check_in_out_arrays,
    cubic_spline_interpolation,
    deriv_array,
    exp,
    filter_array,
    find_abs_values,
    find_extrema,
    find_last_point,
    find_level_crossings,
    find_x_at_y_threshold,
    first_derivative,
    first_derivative_golay,
    first_derivative_lin_reg,
    first_derivative_ridder,
    get_auto_extremum,
    get_auto_range_extremum,
    get_extremum,
    get_next_extremum,
    get_range_extremum,
    get_y_at_x_diff,
    interpol,
    interpol_float_arrays,
    is_even,
    is_odd,
    k_qal,
    kruemmung,
    kruemmung2,
    lin_fit,
    linear_regression,
    locate_value,
    log,
    log10,
    lu_decomposition,
    lu_solve_equa,
    mean,
    mult,
    normalize,
    polynomial_interpolation,
    pow,
    pow10,
    rationial_interpolation,
    root_bisection,
    savitzky_golay_coeffizient,
    second_derivative,
    set_filter_coefficients,
    sort_straight_insert,
    splines,
    sqrt,
    straight_line_intersection,
    sum_of,
    sum_square_residuen,
    trapez,
)
from ._constants import (
    DerivMethod,
    ExtremumKind,
    FilterKind,
    InterpolOption,
    Status,
)
from ._constants import *  # noqa: F401,F403  the QAL_ names without the prefix
from ._constants import __all__ as _constant_names

__version__ = _qal.version()

__all__ = [
    "__version__",
    # exceptions
    "QalError", "OrderError", "AllocationError", "ZeroDenominatorError", "SingularMatrixError",
    "ParameterError", "NotFoundError", "OutOfRangeError", "TooFewPointsError", "LogSequenceError",
    # result types
    "Point", "Extremum", "Line", "Estimate", "LUDecomposition", "MeanSpread", "MeanSquares",
    "Curvature", "Boundaries", "Sorted", "Located", "Repaired", "GaussJordan", "Extrema", "LevelCrossings",
    # class side
    "k_qal",
    # flat functions
    "exp", "log", "log10", "pow", "pow10", "sqrt", "mult", "calc_log",
    "sum_of", "mean", "sum_square_residuen", "normalize",
    "locate_value", "find_abs_values", "sort_straight_insert", "is_even", "is_odd",
    "lu_decomposition", "lu_solve_equa",
    "lin_fit", "calc_lin_x", "calc_lin_y", "straight_line_intersection", "linear_regression",
    "splines", "cubic_spline_interpolation", "first_derivative", "second_derivative",
    "interpol", "interpol_float_arrays", "check_in_out_arrays",
    "polynomial_interpolation", "rationial_interpolation", "akima_sub",
    "savitzky_golay_coeffizient", "set_filter_coefficients", "filter_array",
    "deriv_array", "first_derivative_ridder", "first_derivative_golay", "first_derivative_lin_reg",
    "kruemmung", "kruemmung2",
    "get_extremum", "get_next_extremum", "get_range_extremum", "get_auto_range_extremum",
    "get_auto_extremum",
    "find_x_at_y_threshold", "get_y_at_x_diff", "find_last_point", "calc_abs_maximum",
    "calc_abs_minimum", "find_extrema", "find_level_crossings", "calc_boundaries", "trapez", "root_bisection",
] + list(_constant_names)

# The many-curves calls: 2-D arrays of curves in, one status per curve instead of an exception.
from ._qal import (  # noqa: E402
    BatchArrays, BatchPoints, calc_abs_maximum_batch, calc_abs_minimum_batch, deriv_array_batch, filter_array_batch,
    find_last_point_batch, find_x_at_y_threshold_batch, get_auto_extremum_batch, get_auto_range_extremum_batch,
    get_next_extremum_batch, get_range_extremum_batch, get_y_at_x_diff_batch, interpol_float_arrays_batch,
)
__all__ += [
    "BatchArrays", "BatchPoints", "filter_array_batch", "deriv_array_batch", "get_next_extremum_batch",
    "get_range_extremum_batch", "get_auto_range_extremum_batch", "get_auto_extremum_batch",
    "find_x_at_y_threshold_batch", "get_y_at_x_diff_batch", "find_last_point_batch", "calc_abs_maximum_batch",
    "calc_abs_minimum_batch", "interpol_float_arrays_batch",
]
