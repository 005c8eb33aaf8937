"""qallib's batch calls over Dask arrays of curves, chunked by rows.

Each function here has the name, the arguments and the result of the batch call of the
same name in qallib (filter_array_batch, get_range_extremum_batch, ...), with Dask arrays
in place of NumPy ones: the curves (curves x samples) are split into blocks of rows, each
block goes to the batch call as it is, and the results come back as lazy Dask arrays in
the same BatchArrays or BatchPoints, chunked by the same rows. A block's rows are the
batch call's rows, so every result equals that of the direct call to the bit, whatever
the chunks and the scheduler.

* The curves are rechunked to whole rows first (a block never splits a curve). Shared
  abscissae (one row) go whole to every block; per-curve ones are chunked as the curves.
* The dtype, shape and length checks of the batch call run when the graph is built, on
  empty blocks, so a wrong argument raises at once, not at compute time.
* The batch calls release the GIL while they work, so the threaded scheduler runs blocks
  on all cores: dask.compute(result.values, result.status) computes each block once.
* Plain NumPy arrays are accepted too and wrapped with dask.array.asarray.

Needs Dask (Debian's python3-dask); ``import qallib`` alone does not.

    import dask
    import dask.array as da
    import qallib, qallib.dask

    curves = da.from_array(y, chunks=(16, -1))           # 16 curves per block
    smooth = qallib.dask.filter_array_batch(curves, qallib.FILTER_SAVITZKY_GOLAY, 21)
    values, status = dask.compute(*smooth)                # NumPy arrays
"""

import math
import operator

import dask.array as da
import numpy as np

from . import _qal
from ._constants import INTERPOL_LINE

__all__ = [
    "filter_array_batch", "deriv_array_batch", "get_next_extremum_batch", "get_range_extremum_batch",
    "get_auto_range_extremum_batch", "get_auto_extremum_batch", "find_x_at_y_threshold_batch",
    "get_y_at_x_diff_batch", "find_last_point_batch", "calc_abs_maximum_batch", "calc_abs_minimum_batch",
    "interpol_float_arrays_batch",
]


def _block(function, options, *blocks):
    # A plain tuple: the two or three outputs of one block, taken apart by the getters below.
    return tuple(getattr(_qal, function)(*blocks, **options))


def _curves(array, name):
    array = da.asarray(array)
    if array.ndim != 2:
        raise ValueError(f"{name} must be two-dimensional (curves x samples), got {array.ndim} dimensions")
    return array.rechunk({1: -1})


def _axis(array, name, curves, samples=True):
    """Shared abscissae whole, per-curve ones chunked by the curves' rows. With samples,
    a row must have one element per sample of the curves."""
    array = da.asarray(array)
    if array.ndim not in (1, 2):
        raise ValueError(f"{name} must be one-dimensional (shared by every curve) or two-dimensional "
                         f"(one row per curve), got {array.ndim} dimensions")
    # The message of the batch call, which sees only empty blocks here (see _check).
    if (array.ndim == 2 and array.shape[0] != curves.shape[0]) or (samples and array.shape[-1] != curves.shape[1]):
        raise ValueError(f"{name} of shape {array.shape} does not fit y of shape {curves.shape}")
    if array.ndim == 1:
        return array.rechunk(-1)
    return array.rechunk((curves.chunks[0], -1))


def _check(function, options, arrays):
    """The batch call on no curves: raises what the direct call raises for these dtypes and
    shapes, and gives the result's dtypes."""
    empty = [np.empty((0,) + a.shape[1:] if a.ndim == 2 else a.shape, dtype=a.dtype) for a in arrays]
    return getattr(_qal, function)(*empty, **options)


def _parts(result, template):
    """One lazy array per field of the block tuples in `result` (one tuple per block of
    curves); a field of arrays gets its samples axis back, whole."""
    fields = []
    for index, meta in enumerate(template):
        if meta.ndim == 2:
            # new_axis, not a drop_axis on the way in and out: Dask would try to join
            # the tuples along a dropped axis.
            field = result.map_blocks(operator.itemgetter(index), dtype=meta.dtype, meta=meta, new_axis=1,
                                      chunks=(result.chunks[0], (meta.shape[1],)))
        else:
            field = result.map_blocks(operator.itemgetter(index), dtype=meta.dtype, meta=meta)
        fields.append(field)
    return type(template)(*fields)


def _map_rows(function, options, arrays):
    """The batch call on every block of curves (the last of `arrays`), as one task per
    block that gives a tuple. Shared abscissae (one dimension) line up with the curves'
    samples axis, which is whole, so every block gets them whole."""
    template = _check(function, options, arrays)
    curves = arrays[-1]
    # A 1-D array of one tuple per block: its dtype and meta are placeholders, since only
    # the getters of _parts ever see its blocks.
    result = da.map_blocks(_block, function, options, *arrays, dtype=np.float64, meta=np.empty((0,)),
                           chunks=(curves.chunks[0],), drop_axis=1)
    return _parts(result, template)


def _points(function, x, y, **options):
    curves = _curves(y, "y")
    return _map_rows(function, options, [_axis(x, "x", curves), curves])


def filter_array_batch(in_, kind, width, degree=2, first=0, last=None):
    """qallib.filter_array_batch over a Dask array of curves; BatchArrays of Dask arrays."""
    options = {"kind": kind, "width": width, "degree": degree, "first": first, "last": last}
    return _map_rows("filter_array_batch", options, [_curves(in_, "in_")])


def deriv_array_batch(x, y, method, order=1, span=0):
    """qallib.deriv_array_batch over a Dask array of curves; BatchArrays of Dask arrays."""
    curves = _curves(y, "y")
    options = {"method": method, "order": order, "span": span}
    return _map_rows("deriv_array_batch", options, [_axis(x, "x", curves), curves])


def get_next_extremum_batch(x, y, window, kind, use_vertex=True, min_height_percent=0.0):
    """qallib.get_next_extremum_batch over a Dask array of curves; BatchPoints of Dask arrays."""
    return _points("get_next_extremum_batch", x, y, window=window, kind=kind, use_vertex=use_vertex,
                   min_height_percent=min_height_percent)


def get_range_extremum_batch(x, y, window, kind, use_vertex=True, min_height_percent=0.0):
    """qallib.get_range_extremum_batch over a Dask array of curves; BatchPoints of Dask arrays."""
    return _points("get_range_extremum_batch", x, y, window=window, kind=kind, use_vertex=use_vertex,
                   min_height_percent=min_height_percent)


def get_auto_range_extremum_batch(x, y, window, kind, use_vertex=True, min_height_percent=0.0):
    """qallib.get_auto_range_extremum_batch over a Dask array of curves; BatchPoints of Dask arrays."""
    return _points("get_auto_range_extremum_batch", x, y, window=window, kind=kind, use_vertex=use_vertex,
                   min_height_percent=min_height_percent)


def get_auto_extremum_batch(x, y, kind, use_vertex=True, min_height_percent=0.0):
    """qallib.get_auto_extremum_batch over a Dask array of curves; BatchPoints of Dask arrays."""
    return _points("get_auto_extremum_batch", x, y, kind=kind, use_vertex=use_vertex,
                   min_height_percent=min_height_percent)


def find_x_at_y_threshold_batch(x, y, threshold=0.0, threshold_kind=1, direction=1, result_mode=2, percent=0.0):
    """qallib.find_x_at_y_threshold_batch over a Dask array of curves; BatchPoints of Dask arrays."""
    return _points("find_x_at_y_threshold_batch", x, y, threshold=threshold, threshold_kind=threshold_kind,
                   direction=direction, result_mode=result_mode, percent=percent)


def get_y_at_x_diff_batch(x, y, x_diff, direction=1, result_mode=2):
    """qallib.get_y_at_x_diff_batch over a Dask array of curves; BatchPoints of Dask arrays."""
    return _points("get_y_at_x_diff_batch", x, y, x_diff=x_diff, direction=direction, result_mode=result_mode)


def find_last_point_batch(x, y):
    """qallib.find_last_point_batch over a Dask array of curves; BatchPoints of Dask arrays."""
    return _points("find_last_point_batch", x, y)


def calc_abs_maximum_batch(x, y):
    """qallib.calc_abs_maximum_batch over a Dask array of curves; BatchPoints of Dask arrays."""
    return _points("calc_abs_maximum_batch", x, y)


def calc_abs_minimum_batch(x, y):
    """qallib.calc_abs_minimum_batch over a Dask array of curves; BatchPoints of Dask arrays."""
    return _points("calc_abs_minimum_batch", x, y)


def interpol_float_arrays_batch(x, y, x_new, option=INTERPOL_LINE, fill=math.nan):
    """qallib.interpol_float_arrays_batch over a Dask array of curves; BatchArrays of Dask arrays.

    x_new (shared or one row per curve) may have any length, which map_blocks cannot line
    up with the curves' samples, so this one call is built with dask.array.blockwise,
    indexed explicitly.
    """
    curves = _curves(y, "y")
    axis = _axis(x, "x", curves)
    at = _axis(x_new, "x_new", curves, samples=False)
    options = {"option": option, "fill": fill}
    template = _check("interpol_float_arrays_batch", options, [axis, curves, at])
    result = da.blockwise(_block, "i", "interpol_float_arrays_batch", None, options, None,
                          axis, "k" if axis.ndim == 1 else "ik", curves, "ik", at, "j" if at.ndim == 1 else "ij",
                          dtype=np.float64, meta=np.empty((0,)), concatenate=True)
    return _parts(result, template)
