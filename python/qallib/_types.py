"""The named tuples that qallib's functions return.

A field holds a Python float for a double result and a numpy.float32 for a float one, or
an array of the dtype the call was made with.
"""

from typing import NamedTuple, Optional

import numpy as np


class Point(NamedTuple):
    """A point of a curve: abscissa and ordinate."""

    x: float
    y: float


class Extremum(NamedTuple):
    """An extremum of one run of samples.

    kind is EXTREMUM_MAX or EXTREMUM_MIN, or None for the flat outcome (a parabola with
    no curvature: the call succeeds with x = y = 0.0 and no kind).
    """

    x: float
    y: float
    kind: Optional[int]


class Line(NamedTuple):
    """A straight line y = intercept + slope * x."""

    intercept: float
    slope: float


class Estimate(NamedTuple):
    """A value with the routine's error figure (not an error bound)."""

    value: float
    error_estimate: float


class LUDecomposition(NamedTuple):
    """LU factors in one matrix (U on and above the diagonal, L below it with its unit
    diagonal not stored), the row exchange made at each step, and the sign +-1.0."""

    lu: np.ndarray
    pivots: np.ndarray
    sign: float


class MeanSpread(NamedTuple):
    """A mean and the spread about it."""

    mean: float
    spread: float


class Curvature(NamedTuple):
    """First and second difference curves."""

    first_derivative: np.ndarray
    second_derivative: np.ndarray


class Boundaries(NamedTuple):
    """Lower and upper boundary curves."""

    lower: np.ndarray
    upper: np.ndarray


class Sorted(NamedTuple):
    """Sorted keys and the companions moved with them (None where none was given)."""

    keys: np.ndarray
    second: Optional[np.ndarray]
    third: Optional[np.ndarray]


class Located(NamedTuple):
    """An element's position (-1 for none) and its value."""

    index: int
    value: float


class Repaired(NamedTuple):
    """A value after a repair, and whether the repair changed it."""

    value: float
    changed: bool


class GaussJordan(NamedTuple):
    """The inverse of a and the solutions for the columns of b."""

    inverse: np.ndarray
    solutions: np.ndarray


class MeanSquares(NamedTuple):
    """A mean and the plain sum of squared deviations about it."""

    mean: float
    squares: float


class Extrema(NamedTuple):
    """Every extremum of a curve (find_extrema), one array per field, one element per hit,
    in the order of their windows."""

    start: np.ndarray     #: int32, first sample of the window that found it
    index: np.ndarray     #: int32, the extreme sample
    kind: np.ndarray      #: int32, EXTREMUM_MAX or EXTREMUM_MIN
    x: np.ndarray         #: float64, x[index]
    y: np.ndarray         #: float64, y[index]
    vertex_x: np.ndarray  #: float64, vertex of the window's parabola
    vertex_y: np.ndarray  #: float64


class LevelCrossings(NamedTuple):
    """Every pair of neighbouring samples that reaches a level (find_level_crossings), one
    array per field, in ascending order of index."""

    index: np.ndarray    #: int32, first sample of the pair
    x: np.ndarray        #: float64, x[index]
    y: np.ndarray        #: float64, y[index]
    cross_x: np.ndarray  #: float64, where the line through the pair meets the level
    cross_y: np.ndarray  #: float64, the level
